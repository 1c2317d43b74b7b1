// The right side: what one object holds.

const MOST_COLUMNS = 10;
const right = document.getElementById("right");

function pairTable(pairs) {
  return appendInSteps(make("table"), pairs.length, place => {
    const row = make("tr");
    row.append(makeText("th", pairs[place][0] || "(no name)"), makeText("td", pairs[place][1]));
    row.firstChild.scope = "row";
    return row;
  }, "tr");
}

// A row an item, a column a component; on a narrow screen a block an item.
function itemTable(items, columns) {
  const table = make("table", "items"), head = make("tr", "head");
  for (const name of columns) {
    head.append(makeText("th", name));
    head.lastChild.scope = "col";
  }
  table.append(head);
  return appendInSteps(table, items.length, place => {
    const values = new Map(items[place]), row = make("tr");
    for (const name of columns) {
      row.append(makeText("td", values.get(name) ?? ""));
      row.lastChild.dataset.name = printable(name);
    }
    return row;
  }, "tr");
}

// Items with many components stand one below the other.
function itemsOf(items) {
  const columns = new Set();
  for (const item of items) {
    for (const [name] of item) columns.add(name);
    if (columns.size > MOST_COLUMNS) return appendInSteps(make("div"), items.length, place => pairTable(items[place]), "p");
  }
  return itemTable(items, columns);
}

function violationList(messages, leftOut) {
  const element = make("ul", "violations");
  for (const message of messages) element.append(makeText("li", message));
  if (leftOut > 0) element.append(make("li", "left-out", `${counted(leftOut, "more violation")} left out`));
  return element;
}

// What lines of a mark say about an object, by the name of the mark.
const markDetails = {violation: ([leftOut, messages]) => [make("h3", "", "Violations"), violationList(messages, leftOut)]};

function sectionsOf(found, read) {
  const sections = [() => [pairTable([["class", found.class], ["version", found.version], ["operation", found.operation]]
    .filter(pair => pair[1] !== ""))]];
  for (const mark of index.marks) {
    const place = mark.placeOf.get(chosen);
    if (place !== undefined) sections.push(() => markDetails[mark.name](read.ofMark.get(mark).at(place)));
  }
  const parameters = found.parameters();
  if (parameters.length > 0) sections.push(() => [make("h3", "", "Parameters"), pairTable(parameters)]);
  for (const [name, ...values] of found.lists) {
    sections.push(() => {
      const plain = values.filter(value => typeof value === "string");
      const items = values.filter(value => typeof value !== "string").map(pairs => found.pairsOf(pairs));
      return [makeText("h3", "List " + name), ...plain.length > 0 ? [pairTable(plain.map((value, i) => [String(i + 1), value]))] : [],
              ...items.length > 0 ? [itemsOf(items)] : []];
    });
  }
  for (const [name, pairs] of found.extensions) sections.push(() => [makeText("h3", "Extension " + name), pairTable(found.pairsOf(pairs))]);
  return sections;
}

async function showObject(object) {
  const read = await lines;
  if (object !== chosen) return;
  const found = new Found(read.objects.at(object), read.namesOf);
  const sections = sectionsOf(found, read);
  right.replaceChildren(makeText("h2", found.name || "(no name)"));
  right.scrollTop = 0;
  appendInSteps(right, sections.length, place => {
    const section = make("section");
    section.append(...sections[place]());
    return section;
  }, "p");
  announce(`${lineOf(found.name)} is shown`);
}

function showNothing(message) {
  if (ownViolations > 0) {
    right.replaceChildren(make("h3", "", "Violations of the document"), violationList(index.own.messages, index.own.leftOut));
  } else {
    right.replaceChildren();
  }
  right.prepend(makeText("p", message));
  right.firstChild.className = "faint";
}
