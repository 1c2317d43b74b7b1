// The index is read at once: the tree of names, and what of the objects the tree shows. Everything else
// stands in lines of JSON, in comments of hidden elements behind this script, and is parsed when it is
// asked for. The browser reads them while the tree can already be used.
//
// Index:
//   file, own: {messages, leftOut}, leftOut
//   segments, depths, classOf   one for each name of the tree, parents before what is below them;
//                               classOf is -1 for a name that no object has
//   classes                     what classOf counts
//   marks                       [{name, sign, objects, counts}]: objects that stand out
// Lines "objects", one for each object in the order of the tree:
//   [name, class, operation, version, pairs, [[list, value or pairs, ...], ...], [[extension, pairs], ...]]
//   where pairs are [n, value, ...] with the names in line n of "names"
// Lines "names": [name, ...]
// Lines that have the name of a mark, one for each of its objects.

const index = JSON.parse(document.getElementById("index").firstChild.data);
const ownViolations = index.own.messages.length + index.own.leftOut;  // of no object
const NONE = -1;

class Lines {
  constructor(kind) {
    this.blocks = Array.from(document.querySelectorAll(`[data-lines="${kind}"]`), element =>
      ({first: Number(element.dataset.first), text: element.firstChild.data, starts: null}));
  }

  // Where the lines of a block begin, and where one behind the last would.
  startsOf(block) {
    if (block.starts) return block.starts;
    block.starts = [0];
    for (let end = block.text.indexOf("\n"); end >= 0; end = block.text.indexOf("\n", end + 1)) block.starts.push(end + 1);
    block.starts.push(block.text.length + 1);
    return block.starts;
  }

  parse(block, number) {
    const starts = this.startsOf(block);
    return JSON.parse(block.text.slice(starts[number], starts[number + 1] - 1));
  }

  at(number) {
    let low = 0;
    for (let high = this.blocks.length; high - low > 1;) {
      const middle = (low + high) >> 1;
      if (this.blocks[middle].first <= number) low = middle; else high = middle;
    }
    return this.parse(this.blocks[low], number - this.blocks[low].first);
  }
}

// Resolves when the browser has read all lines.
const lines = new Promise(resolve => {
  document.addEventListener("DOMContentLoaded", () => {
    const names = new Lines("names");
    const known = [];
    resolve({
      objects: new Lines("objects"),
      names,
      namesOf: number => known[number] ??= names.at(number),
      ofMark: new Map(index.marks.map(mark => [mark, new Lines(mark.name)])),
    });
    document.body.dataset.complete = "yes";
  });
});

// Sums over what is before each name, so that the sum of a name and all below it is a difference.
function sumsOf(count, valueOf) {
  const sums = new Float64Array(count + 1);
  for (let node = 0; node < count; ++node) sums[node + 1] = sums[node] + valueOf(node);
  return sums;
}

// A name of the tree is its number; all below it follow, up to end.
const tree = (() => {
  const {segments, depths, classOf} = index;
  const count = segments.length;
  const parent = new Int32Array(count), end = new Int32Array(count);
  const place = new Int32Array(count), children = new Int32Array(count + 1);  // the last is of the top
  const objectOf = new Int32Array(count).fill(NONE), nodeOf = [];
  const latest = [];  // by depth
  for (let node = 0; node < count; ++node) {
    const depth = depths[node];
    latest[depth] = node;
    parent[node] = depth > 0 ? latest[depth - 1] : NONE;
    place[node] = ++children[depth > 0 ? parent[node] : count];
    if (classOf[node] !== NONE) objectOf[node] = nodeOf.push(node) - 1;
  }
  for (let node = count - 1; node >= 0; --node) {
    end[node] = Math.max(end[node], node + 1);
    if (parent[node] !== NONE) end[parent[node]] = Math.max(end[parent[node]], end[node]);
  }
  return {segments, depths, classOf, count, parent, end, place, children, objectOf, nodeOf,
          objectsBefore: sumsOf(count, node => objectOf[node] !== NONE ? 1 : 0)};
})();

for (const mark of index.marks) {
  mark.placeOf = new Map(mark.objects.map((object, place) => [object, place]));
  mark.before = sumsOf(tree.count, node => mark.counts[mark.placeOf.get(tree.objectOf[node])] ?? 0);
}

function objectsBelow(node) { return tree.objectsBefore[tree.end[node]] - tree.objectsBefore[node + 1]; }

function siblings(node) { return tree.children[tree.parent[node] === NONE ? tree.count : tree.parent[node]]; }

function nameOf(node) {
  const segments = [];
  for (; node !== NONE; node = tree.parent[node]) segments.push(tree.segments[node]);
  return segments.reverse().join("/");
}

// The object of that name, or NONE.
function objectNamed(name) {
  let first = 0, end = tree.count, node = NONE;
  for (const segment of name.split("/")) {
    for (node = first; node < end && tree.segments[node] !== segment;) node = tree.end[node];
    if (node >= end) return NONE;
    first = node + 1;
    end = tree.end[node];
  }
  return tree.objectOf[node];
}
