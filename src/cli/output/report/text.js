// How texts of the document are shown: as texts, whatever they hold.

const MOST_OF_VALUE = 20000, MOST_OF_ROW = 300;  // characters
const STEP = 500;  // rows that are made at once
// Control characters, marks for the direction of writing; values keep tabs and line ends.
const UNPRINTABLE = /[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g;

function counted(number, noun) { return `${number} ${noun}${number === 1 ? "" : "s"}`; }

function make(tag, className, text) {
  const element = document.createElement(tag);
  if (className) element.className = className;
  if (text !== undefined) element.textContent = text;
  return element;
}

function printable(text) {
  return text.replace(UNPRINTABLE, each => `⟨U+${each.charCodeAt(0).toString(16).toUpperCase().padStart(4, "0")}⟩`);
}

function lineOf(text) {
  const start = text.length > MOST_OF_ROW ? text.slice(0, MOST_OF_ROW) + "…" : text;
  return printable(start).replace(/[\t\n]/g, each => each === "\t" ? "⟨U+0009⟩" : "⟨U+000A⟩");
}

// An element with a text of any length; a button shows the rest of a long one.
function makeText(tag, text) {
  const element = make(tag, "", printable(text.slice(0, MOST_OF_VALUE)));
  if (text.length <= MOST_OF_VALUE) return element;
  const more = make("button", "more", `${text.length - MOST_OF_VALUE} more characters …`);
  more.onclick = () => { element.textContent = printable(text); };
  element.append(" ", more);
  return element;
}

// Appends makePart(0) to makePart(count - 1), STEP of them now and others by a button in a `tag`.
function appendInSteps(parent, count, makePart, tag) {
  let next = 0;
  const step = () => {
    for (const end = Math.min(next + STEP, count); next < end; ++next) parent.append(makePart(next));
    if (next === count) return;
    const place = make(tag);
    const more = make("button", "more", `${count - next} more …`);
    more.onclick = () => { place.remove(); step(); };
    if (tag === "tr") place.append(make("td"));
    (place.firstChild ?? place).append(more);
    parent.append(place);
  };
  step();
  return parent;
}
