// What connects the parts: the chosen object with its link, the search field, keys.

const MOST_OF_LINK = 100000;  // characters; browsers refuse links of megabytes
const CHOOSE = "Choose an object to see what it holds.";
const search = document.getElementById("search");
const count = document.getElementById("count");
let chosen = NONE;
let pressed = null;  // the button of a mark whose objects are listed

function announce(text) { document.getElementById("news").textContent = text; }

function showCount(text, isNews) {
  count.hidden = text === "";
  count.textContent = text;
  if (isNews) announce(text);
}

function showResults(label, objects) { list.show(resultView(label, objects)); }

// The chosen object stays chosen, and its row comes into view.
function showTree() {
  ++searches;
  showCount("", false);
  treeView.fill();
  list.show(treeView);
  if (chosen !== NONE) treeView.reveal(tree.nodeOf[chosen]);
}

function press(button) {
  pressed?.setAttribute("aria-pressed", "false");
  pressed = button;
  pressed?.setAttribute("aria-pressed", "true");
}

function runFromField() {
  press(null);
  const text = search.value.trim();
  if (text === "") showTree(); else runSearch(text);
}

function clearSearch() {
  search.value = "";
  press(null);
  if (list.view !== treeView) showTree();
  else ++searches;
}

function linkOf(name) { return "#" + encodeURIComponent(name).replaceAll("%2F", "/"); }

// From a row: its list stays as it is.
function choose(object) {
  const link = linkOf(nameOf(tree.nodeOf[object]));
  if (link.length <= MOST_OF_LINK && link !== location.hash) history.pushState(null, "", link);
  setChosen(object);
}

function setChosen(object) {
  chosen = object;
  list.render();
  showObject(object);
}

// An object without a name has the link "#".
function chooseFromLink() {
  if (!location.href.includes("#")) return chooseNothing(CHOOSE);
  let name = location.hash.slice(1);
  try { name = decodeURIComponent(name); } catch { /* not encoded: the name as it is */ }
  const object = objectNamed(name);
  if (object === NONE) return chooseNothing(name === "" ? CHOOSE : `No object has the name "${name}".`);
  setChosen(object);
  if (list.view === treeView) treeView.reveal(tree.nodeOf[object]);
}

function chooseNothing(message) {
  chosen = NONE;
  list.render();
  showNothing(message);
}

function showMarked(mark, button) {
  if (button === pressed) return clearSearch();
  search.value = "";
  ++searches;
  press(button);
  showResults(`Objects with ${mark.name}s`, mark.objects);
  showCount(`${counted(mark.objects.length, "object")} with ${mark.name}s`, true);
  if (mark.name !== "violation" || ownViolations === 0 || chosen === NONE) return;
  // Those of the document stand where the chosen object is.
  history.pushState(null, "", location.href.split("#")[0]);
  chooseNothing(CHOOSE);
}

function addMarkButton(mark) {
  const isViolation = mark.name === "violation";
  const sum = mark.before[tree.count] + (isViolation ? ownViolations : 0);
  if (sum === 0) return;
  const leftOut = isViolation ? index.leftOut : 0;
  const button = make("button", "bad", counted(sum, mark.name) + (leftOut > 0 ? `, ${leftOut} left out` : ""));
  button.setAttribute("aria-pressed", "false");
  button.onclick = () => showMarked(mark, button);
  document.getElementById("marks").append(button);
}

function onSearchKey(event) {
  if (event.key === "ArrowDown") list.goTo(list.current, true);
  else if (event.key === "Enter") { clearTimeout(timer); runFromField(); }
  else return;
  event.preventDefault();
}

function onKey(event) {
  if (event.altKey || event.ctrlKey || event.metaKey) return;
  if (event.key === "/" && event.target !== search) {
    search.focus();
    search.select();
  } else if (event.key === "Escape") {
    clearTimeout(timer);
    const isInField = event.target === search && search.value !== "";
    clearSearch();
    if (!isInField) list.focus();
  } else {
    return;
  }
  event.preventDefault();
}

let timer = null;
search.addEventListener("input", () => { clearTimeout(timer); timer = setTimeout(runFromField, 50); });
search.addEventListener("keydown", onSearchKey);
document.addEventListener("keydown", onKey);
window.addEventListener("popstate", chooseFromLink);

document.getElementById("title").textContent = printable(index.file);
document.getElementById("summary").textContent = counted(tree.nodeOf.length, "object");
index.marks.forEach(addMarkButton);
if (tree.children[tree.count] === 1) treeView.open[0] = 1;
showTree();
chooseFromLink();
document.body.dataset.ready = "yes";
