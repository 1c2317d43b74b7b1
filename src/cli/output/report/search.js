// A search goes through the lines as they are, block by block and in slices of time, and parses only
// lines that may match. Letters are compared in lower case.

const SLICE = 20;  // milliseconds
// What lines hold as codes although JSON would not need it.
const ESCAPED = /[<>\u007f-\u009f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g;
const CODES = /\\u[0-9a-f]{4}|\\./g;
const NUMBERS_OF_NAMES = /\[\d+/g;
// The number of the names of an object's parameters. Most lines match; others are parsed.
const FIRST_NUMBER = /^\[(?:"[^"\\]*",){4}\[(\d+)[,\]]/;
const MOST_BEFORE_NUMBER = 1000;  // characters

// `text` as it stands in a line, in lower case.
function rawOf(text) {
  return JSON.stringify(text).replace(ESCAPED, each => `\\u${each.charCodeAt(0).toString(16).padStart(4, "0")}`);
}

function textQuery(text) {
  const raw = rawOf(text).slice(1, -1);
  const mayBeBetween = /[,[\]\\]/.test(raw);
  return {
    raw,
    ofNames: names => names.some(name => name.toLowerCase().includes(text)),
    // False when the text may stand between values, or is a part of a code or of a number of names.
    isCertain: line => !mayBeBetween && line.toLowerCase().replace(CODES, "\0").replace(NUMBERS_OF_NAMES, "[").includes(raw),
    matches: object => object.texts().some(each => each.toLowerCase().includes(text)),
  };
}

function valueQuery(name, value) {
  return {
    raw: value === "" ? null : rawOf(value),
    ofNames: () => false,
    isCertain: () => false,
    matches: object => object.values().some(([path, its]) => (value === "" || its.toLowerCase() === value)
      && path.some(each => each.toLowerCase() === name)),
  };
}

// `text` in lower case.
function queryOf(text) {
  if (text.length > 2 && text.startsWith('"') && text.endsWith('"')) return textQuery(text.slice(1, -1));
  if (text.length > 1 && text.startsWith("/")) return {segments: text.slice(1).replace(/\/$/, "").split("/")};
  const equals = text.indexOf("=");
  return equals > 0 ? valueQuery(text.slice(0, equals).trim(), text.slice(equals + 1).trim()) : textQuery(text);
}

// What a line says about an object, with the names that belong to its values.
class Found {
  constructor(line, namesOf) {
    [this.name, this.class, this.operation, this.version, this.pairs, this.lists, this.extensions] = line;
    this.namesOf = namesOf;
  }

  // [[name, value]]
  pairsOf(pairs) {
    const names = this.namesOf(pairs[0]);
    return names.map((name, place) => [name, pairs[place + 1]]);
  }

  parameters() { return this.pairsOf(this.pairs); }

  // [[names that the value may be asked for by, value]]
  values() {
    const values = [[["class"], this.class], [["operation"], this.operation], [["version"], this.version]];
    const add = (pairs, prefix) => {
      for (const [name, value] of this.pairsOf(pairs)) values.push([prefix === null ? [name] : [name, `${prefix}.${name}`], value]);
    };
    add(this.pairs, null);
    for (const [name, ...its] of this.lists) {
      for (const value of its) {
        if (typeof value === "string") values.push([[name], value]); else add(value, name);
      }
    }
    for (const [name, pairs] of this.extensions) add(pairs, name);
    return values;
  }

  hasNames(numbers) {
    return numbers.has(this.pairs[0]) || this.extensions.some(([, pairs]) => numbers.has(pairs[0]))
      || this.lists.some(([, ...values]) => values.some(value => typeof value !== "string" && numbers.has(value[0])));
  }

  texts() {
    const texts = [this.name, this.class, this.operation, this.version];
    const add = pairs => { for (const pair of this.pairsOf(pairs)) texts.push(...pair); };
    add(this.pairs);
    for (const [name, ...its] of this.lists) {
      texts.push(name);
      for (const value of its) if (typeof value === "string") texts.push(value); else add(value);
    }
    for (const [name, pairs] of this.extensions) { texts.push(name); add(pairs); }
    return texts;
  }
}

// Numbers of the lines of a block that hold `raw`, in lower case; of all when it is null.
function* linesWith(block, starts, raw) {
  const text = block.text.toLowerCase();
  if (raw === null) {
    for (let line = 0; line + 1 < starts.length; ++line) yield line;
    return;
  }
  // A few letters get longer when they are made small; then only the lines themselves have known places.
  if (text.length !== block.text.length) {
    for (let line = 0; line + 1 < starts.length; ++line) {
      if (block.text.slice(starts[line], starts[line + 1] - 1).toLowerCase().includes(raw)) yield line;
    }
    return;
  }
  for (let line = 0, place = text.indexOf(raw); place >= 0; place = text.indexOf(raw, starts[line])) {
    while (starts[line + 1] <= place) ++line;
    yield line++;
  }
}

// Numbers of the lists of names that have the text, which objects name only by that number.
function* namesWith(read, query) {
  for (const block of read.names.blocks) {
    for (let line = 0; line + 1 < read.names.startsOf(block).length; ++line) {
      yield query.ofNames(read.names.parse(block, line)) ? block.first + line : null;
    }
  }
}

// Yields numbers of objects, and null now and then so that the caller can pause.
function* matchesIn(read, query) {
  const names = new Set();
  for (const number of namesWith(read, query)) {
    if (number !== null) names.add(number);
    yield null;
  }
  for (const block of read.objects.blocks) {
    const starts = read.objects.startsOf(block);
    const textOf = line => block.text.slice(starts[line], starts[line + 1] - 1);
    const found = line => new Found(read.objects.parse(block, line), read.namesOf);
    const holds = line => query.isCertain(textOf(line)) || query.matches(found(line));
    const hasNames = line => names.has(Number(FIRST_NUMBER.exec(textOf(line).slice(0, MOST_BEFORE_NUMBER))?.[1]))
      || found(line).hasNames(names);
    if (names.size === 0) {
      for (const line of linesWith(block, starts, query.raw)) yield holds(line) ? block.first + line : null;
    } else {
      const candidates = new Set(linesWith(block, starts, query.raw));
      for (let line = 0; line + 1 < starts.length; ++line) {
        yield hasNames(line) || candidates.has(line) && holds(line) ? block.first + line : null;
      }
    }
    yield null;
  }
}

// Objects at and below each name that ends in these segments.
function* matchesOfSegments(segments) {
  const isThere = node => {
    for (let place = segments.length - 1; place >= 0; --place, node = tree.parent[node]) {
      if (node === NONE || tree.segments[node].toLowerCase() !== segments[place]) return false;
    }
    return true;
  };
  for (let node = 0; node < tree.count;) {
    if (!isThere(node)) {
      ++node;
      yield null;
      continue;
    }
    for (const end = tree.end[node]; node < end; ++node) if (tree.objectOf[node] !== NONE) yield tree.objectOf[node];
  }
}

let searches = 0;  // a later search ends an earlier one

async function runSearch(text) {
  const mine = ++searches;
  const read = await lines;
  if (mine !== searches) return;
  const query = queryOf(text.toLowerCase());
  const found = [];
  let isShown = false;
  const show = isDone => {
    if (isShown) list.update(); else showResults("Found objects", found);
    isShown = true;
    showCount(`${counted(found.length, "object")} found${isDone ? "" : " so far …"}`, isDone);
  };
  let until = performance.now() + SLICE;
  for (const object of query.segments ? matchesOfSegments(query.segments) : matchesIn(read, query)) {
    if (object !== null) found.push(object);
    if (performance.now() < until) continue;
    show(false);
    await new Promise(resolve => setTimeout(resolve));
    if (mine !== searches) return;
    until = performance.now() + SLICE;
  }
  show(true);
}
