// The list on the left. Only rows in view are elements, and the current one, which has the focus or
// gets it. What it shows is a view: {role, label, rows, key, make, refresh, act, keys}.

const MOST_HEIGHT = 15e6;  // pixels; some browsers cut elements off at 17 million
const AROUND = 10;  // rows above and below those in view

const list = {
  box: document.getElementById("list"),
  space: make("div", "space"),
  made: new Map(),  // elements by key
  view: null,
  current: 0,

  rowHeight() { return parseFloat(getComputedStyle(this.box).getPropertyValue("--row")); },

  // Rows higher than MOST_HEIGHT are scrolled by a scale.
  scale() {
    const height = this.view.rows.length * this.rowHeight(), view = this.box.clientHeight;
    return height <= MOST_HEIGHT ? 1 : (height - view) / (MOST_HEIGHT - view);
  },

  show(view) {
    this.view = view;
    this.current = 0;
    this.made.clear();
    this.box.replaceChildren(this.space);
    this.box.setAttribute("role", view.role);
    this.box.setAttribute("aria-label", view.label);
    this.box.scrollTop = 0;
    this.update();
  },

  // Renders again after the rows of the view have changed.
  update() {
    this.current = Math.max(0, Math.min(this.current, this.view.rows.length - 1));
    this.space.style.height = `${Math.min(MOST_HEIGHT, this.view.rows.length * this.rowHeight())}px`;
    this.render();
  },

  render() {
    const {rows} = this.view, height = this.rowHeight(), top = this.box.scrollTop * this.scale();
    const first = Math.max(0, Math.floor(top / height) - AROUND);
    const last = Math.min(rows.length, Math.ceil((top + this.box.clientHeight) / height) + AROUND);
    const places = [];
    if (this.current < first && rows.length > 0) places.push(this.current);
    for (let place = first; place < last; ++place) places.push(place);
    if (this.current >= last && rows.length > 0) places.push(this.current);
    this.place(places, place => place * height - top + this.box.scrollTop);
  },

  // Elements that stay are never moved, so that the focus stays, too.
  place(places, topOf) {
    const wanted = new Set(places.map(place => this.view.key(place)));
    for (const [key, element] of this.made) {
      if (!wanted.has(key)) { element.remove(); this.made.delete(key); }
    }
    let next = this.space.nextSibling;
    for (const place of places) {
      const element = this.elementOf(place);
      element.style.top = `${topOf(place)}px`;
      if (element === next) next = next.nextSibling; else this.box.insertBefore(element, next);
    }
  },

  elementOf(place) {
    const key = this.view.key(place);
    let element = this.made.get(key);
    if (!element) {
      element = this.view.make(place);
      element.classList.add("row");
      this.made.set(key, element);
    }
    element.tabIndex = place === this.current ? 0 : -1;
    element.dataset.place = place;
    this.view.refresh(element, place);
    return element;
  },

  goTo(place, takesFocus) {
    if (this.view.rows.length === 0) return;
    this.current = Math.max(0, Math.min(place, this.view.rows.length - 1));
    const height = this.rowHeight(), scale = this.scale(), top = this.current * height;
    const viewTop = this.box.scrollTop * scale, inView = this.box.clientHeight - height;
    if (top < viewTop) this.box.scrollTop = top / scale;
    else if (top > viewTop + inView) this.box.scrollTop = (top - inView) / scale;
    this.render();
    if (takesFocus) this.focus();
  },

  // Brings a row into the middle of the view, unless it is in view.
  bring(place) {
    const height = this.rowHeight(), top = place * height - this.box.scrollTop * this.scale();
    if (top < 0 || top > this.box.clientHeight - height) {
      this.box.scrollTop = (place * height - this.box.clientHeight / 2) / this.scale();
    }
    this.goTo(place, false);
  },

  focus() { this.made.get(this.view.rows.length > 0 ? this.view.key(this.current) : null)?.focus({preventScroll: true}); },

  onKey(event) {
    if (event.altKey || event.ctrlKey || event.metaKey) return;
    const page = Math.max(1, Math.floor(this.box.clientHeight / this.rowHeight()) - 1);
    const moves = {ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -Infinity, End: Infinity};
    if (event.key in moves) this.goTo(this.current + moves[event.key], true);
    else if (event.key === "Enter" || event.key === " ") this.view.act(this.current, false);
    else if (this.view.keys[event.key]) this.view.keys[event.key](this.current);
    else return;
    event.preventDefault();
  },

  onClick(event) {
    const row = event.target.closest(".row");
    if (!row) return;
    this.goTo(Number(row.dataset.place), true);
    this.view.act(this.current, event.target.classList.contains("toggle"));
  },
};
list.box.addEventListener("scroll", () => list.render(), {passive: true});
list.box.addEventListener("keydown", event => list.onKey(event));
list.box.addEventListener("click", event => list.onClick(event));
new ResizeObserver(() => { if (list.view) list.update(); }).observe(list.box);

function appendMarks(row, sumOf) {
  for (const mark of index.marks) {
    const sum = sumOf(mark);
    if (sum === 0) continue;
    row.append(make("span", "bad", `${sum} ${mark.sign}`));
    row.lastChild.title = counted(sum, mark.name);
  }
}

const treeView = {
  role: "tree",
  label: "Tree of objects",
  rows: [],
  open: new Uint8Array(tree.count),
  key(place) { return this.rows[place]; },

  fill() {
    this.rows = [];
    for (let node = 0; node < tree.count; node = this.open[node] ? node + 1 : tree.end[node]) this.rows.push(node);
  },

  make(place) {
    const node = this.rows[place], row = make("div"), object = tree.objectOf[node];
    row.setAttribute("role", "treeitem");
    row.setAttribute("aria-level", tree.depths[node] + 1);
    row.setAttribute("aria-posinset", tree.place[node]);
    row.setAttribute("aria-setsize", siblings(node));
    row.style.paddingLeft = `${8 + 16 * Math.min(tree.depths[node], 12)}px`;
    row.append(make("span", "toggle"), make("span", "name", lineOf(tree.segments[node]) || "(no name)"),
      make("span", "class", object === NONE ? "(no object)" : lineOf(index.classes[tree.classOf[node]])));
    row.firstChild.setAttribute("aria-hidden", "true");
    if (tree.children[node] > 0) row.append(make("span", "below", `${objectsBelow(node)} below`));
    appendMarks(row, mark => mark.before[tree.end[node]] - mark.before[node]);
    return row;
  },

  refresh(row, place) {
    const node = this.rows[place];
    row.setAttribute("aria-selected", tree.objectOf[node] !== NONE && tree.objectOf[node] === chosen);
    if (tree.children[node] === 0) return;
    row.setAttribute("aria-expanded", this.open[node] === 1);
    row.firstChild.textContent = this.open[node] ? "▾" : "▸";
  },

  setOpen(place, isOpen) {
    this.open[this.rows[place]] = isOpen ? 1 : 0;
    this.fill();
    list.update();
  },

  act(place, isToggle) {
    const node = this.rows[place];
    if (isToggle || tree.objectOf[node] === NONE) {
      if (tree.children[node] > 0) this.setOpen(place, !this.open[node]);
    } else {
      choose(tree.objectOf[node]);
    }
  },

  keys: {
    ArrowRight(place) {
      const node = treeView.rows[place];
      if (tree.children[node] === 0) return;
      if (treeView.open[node]) list.goTo(place + 1, true); else treeView.setOpen(place, true);
    },
    ArrowLeft(place) {
      const node = treeView.rows[place];
      if (treeView.open[node]) treeView.setOpen(place, false);
      else if (tree.parent[node] !== NONE) list.goTo(treeView.placeOf(tree.parent[node]), true);
    },
  },

  // Rows are in the order of their numbers.
  placeOf(node) {
    let low = 0;
    for (let high = this.rows.length; high - low > 1;) {
      const middle = (low + high) >> 1;
      if (this.rows[middle] <= node) low = middle; else high = middle;
    }
    return low;
  },

  reveal(node) {
    for (let above = tree.parent[node]; above !== NONE; above = tree.parent[above]) this.open[above] = 1;
    this.fill();
    list.update();
    list.bring(this.placeOf(node));
  },
};

// Objects one below the other, with their whole names.
function resultView(label, objects) {
  return {
    role: "listbox",
    label,
    rows: objects,
    key(place) { return this.rows[place]; },
    make(place) {
      const object = this.rows[place], node = tree.nodeOf[object], row = make("div");
      row.setAttribute("role", "option");
      row.style.paddingLeft = "16px";
      if (tree.parent[node] !== NONE) row.append(make("span", "above", lineOf(nameOf(tree.parent[node])) + "/"));
      row.append(make("span", "name", lineOf(tree.segments[node]) || "(no name)"),
        make("span", "class", lineOf(index.classes[tree.classOf[node]])));
      appendMarks(row, mark => mark.counts[mark.placeOf.get(object)] ?? 0);
      return row;
    },
    refresh(row, place) {
      row.setAttribute("aria-selected", this.rows[place] === chosen);
      row.setAttribute("aria-posinset", place + 1);
      row.setAttribute("aria-setsize", this.rows.length);
    },
    act(place) { choose(this.rows[place]); },
    keys: {},
  };
}
