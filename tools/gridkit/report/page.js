
(() => {
  "use strict";

  // The map shows the first layer's picture where it lies.
  const first = document.getElementById("picture0");
  for (const draped of document.querySelectorAll("image.draped")) {
    if (first) draped.setAttribute("href", first.src);
  }

  const tree = document.getElementById("tree");
  const search = document.getElementById("search");
  const found = document.getElementById("found");
  const expand = document.getElementById("expand");
  const number = new Intl.NumberFormat("en");

  // The tree as data: what can be found at each leaf is its own text and the names above it.
  const leaves = [];
  const branches = [];
  const collect = (element, above) => {
    for (const child of element.children) {
      if (child.localName === "details") {
        const path = above + " " + child.firstElementChild.textContent.toLowerCase();
        branches.push(child);
        collect(child, path);
      } else if (child.localName === "div") {
        leaves.push({ element: child, text: above + " " + child.textContent.toLowerCase() });
      }
    }
  };
  collect(tree, "");
  const total = number.format(leaves.length) + " values";

  const close = () => {
    for (const branch of branches) {
      branch.hidden = false;
      branch.open = branch.parentElement === tree;
    }
  };

  const filter = () => {
    const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
    if (words.length === 0) {
      for (const leaf of leaves) {
        leaf.element.hidden = false;
        leaf.element.classList.remove("hit");
      }
      close();
      found.textContent = total;
      return;
    }
    const shown = new Set();
    let count = 0;
    for (const leaf of leaves) {
      const matches = words.every(word => leaf.text.includes(word));
      leaf.element.hidden = !matches;
      leaf.element.classList.toggle("hit", matches);
      if (!matches) continue;
      ++count;
      for (let up = leaf.element.parentElement; up !== tree && !shown.has(up); up = up.parentElement) {
        shown.add(up);
      }
    }
    for (const branch of branches) {
      branch.hidden = !shown.has(branch);
      branch.open = shown.has(branch);
    }
    found.textContent = number.format(count) + " of " + total;
  };

  let waiting = 0;
  search.addEventListener("input", () => {
    clearTimeout(waiting);
    waiting = setTimeout(filter, 120);
  });
  search.addEventListener("keydown", event => {
    if (event.key === "Escape") {
      search.value = "";
      filter();
    }
  });
  expand.addEventListener("click", () => {
    const open = expand.textContent === "Open all";
    for (const branch of branches) branch.open = open || branch.parentElement === tree;
    expand.textContent = open ? "Close all" : "Open all";
  });
  found.textContent = total;
})();
