"use strict";
const data = JSON.parse(document.getElementById("data").textContent);
const tree = document.querySelector(".tree");
const bytes = document.querySelector(".bytes");
const detail = document.querySelector(".detail");

// By number of the node: its line of the tree, its runs of bytes, and the first node behind all under it.
const lines = [];
for (const line of tree.querySelectorAll("[data-n]")) lines[line.dataset.n] = line;
const runs = Array.from({length: data.nodes.length}, () => []);
const cursorStops = [...bytes.querySelectorAll(".hex i[data-n]")];
for (const run of bytes.querySelectorAll("i[data-n]")) runs[run.dataset.n].push(run);
const depth = n => data.nodes[n].d;
const end = new Array(data.nodes.length);
const open = [];
for (let n = 0; n <= data.nodes.length; ++n) {
    while (open.length && (n === data.nodes.length || depth(n) <= depth(open[open.length - 1]))) end[open.pop()] = n;
    open.push(n);
}

// --- what is lit up ---

let lit = [];
let picked = [];
let hovered = -1;
let current = -1;

// A field's own bytes, and those of all that it holds.
function elementsOf(n) {
    const elements = lines[n] ? [lines[n]] : [];
    for (let i = n; i < end[n]; ++i) elements.push(...runs[i]);
    return elements;
}

function light(n) {
    if (n === hovered) return;
    hovered = n;
    for (const element of lit) element.classList.remove("on");
    lit = n < 0 ? [] : elementsOf(n);
    for (const element of lit) element.classList.add("on");
    show(n < 0 ? current : n);
}

function pick(n, options = {}) {
    light(-1);
    for (const element of picked) element.classList.remove("picked");
    if (current >= 0 && lines[current]) {
        lines[current].tabIndex = -1;
        lines[current].setAttribute("aria-selected", "false");
    }
    current = n;
    picked = elementsOf(n);
    for (const element of picked) element.classList.add("picked");
    reveal(n);
    lines[n].tabIndex = 0;
    lines[n].setAttribute("aria-selected", "true");
    if (options.focus) lines[n].focus({preventScroll: true});
    bring(lines[n], tree);
    const own = picked.find(element => element.tagName === "I");
    if (own && !options.keepBytes) bring(own, bytes);
    show(n);
}

// Into the middle, where it is not in sight.
function bring(element, pane) {
    const inner = element.getBoundingClientRect();
    const outer = pane.getBoundingClientRect();
    if (inner.top < outer.top || inner.bottom > outer.bottom) element.scrollIntoView({block: "center"});
}

// --- the detail of one field ---

function add(list, term, text, className) {
    if (text === undefined || text === "") return;
    const dt = document.createElement("dt");
    const dd = document.createElement("dd");
    dt.textContent = term;
    dd.textContent = text;
    if (className) dd.className = className;
    list.append(dt, dd);
}

function show(n) {
    detail.replaceChildren();
    if (n < 0) return;
    const node = data.nodes[n];
    const title = document.createElement("h2");
    title.textContent = node.p;
    const list = document.createElement("dl");
    add(list, "stands at", node.at);
    add(list, "kind", node.k);
    add(list, "leads to", node.to);
    add(list, "limit", node.l);
    add(list, "value", node.v, "wide");
    for (const f of node.f || []) {
        const fault = data.faults[f];
        add(list, fault.r ? "refused" : "tolerated", fault.w, "wide " + (fault.r ? "r" : "t"));
        add(list, "reader", fault.x, "wide r");
    }
    detail.append(title, list);
}

// --- the tree ---

const isOpen = n => lines[n].getAttribute("aria-expanded") !== "false";

function parentOf(n) {
    for (let i = n - 1; i >= 0; --i) if (depth(i) < depth(n)) return i;
    return -1;
}

// Shows or hides what lies under a node, as its own nodes are open or closed.
function update(n) {
    let skip = isOpen(n) ? 0 : end[n];
    for (let line = lines[n].nextElementSibling || following(lines[n]); line; line = following(line)) {
        const i = Number(line.dataset.n ?? line.dataset.under);
        if (line.dataset.n ? i >= end[n] : i < n || i >= end[n]) break;
        line.hidden = i < skip || (line.dataset.under !== undefined && !isOpen(i));
        if (line.dataset.n && i >= skip && !isOpen(i)) skip = end[i];
    }
}
function following(line) {
    return line.nextElementSibling || line.parentElement.nextElementSibling?.firstElementChild;
}

function setOpen(n, opens) {
    if (!lines[n].hasAttribute("aria-expanded")) return;
    lines[n].setAttribute("aria-expanded", String(opens));
    lines[n].querySelector(".tw").textContent = opens ? "\u25be" : "\u25b8";
    update(n);
}

function reveal(n) {
    for (let i = parentOf(n); i >= 0; i = parentOf(i)) if (!isOpen(i)) setOpen(i, true);
}

function step(n, by) {
    do n += by;
    while (n >= 0 && n < lines.length && lines[n].hidden);
    return n >= 0 && n < lines.length ? n : -1;
}

tree.addEventListener("keydown", event => {
    const n = current < 0 ? 0 : current;
    const expanded = lines[n].getAttribute("aria-expanded");
    let to = -1;
    switch (event.key) {
    case "ArrowDown": to = step(n, 1); break;
    case "ArrowUp": to = step(n, -1); break;
    case "Home": to = 0; break;
    case "End": to = step(lines.length, -1); break;
    case "ArrowRight":
        if (expanded === "false") setOpen(n, true);
        else if (expanded === "true") to = step(n, 1);
        break;
    case "ArrowLeft":
        if (expanded === "true") setOpen(n, false);
        else to = parentOf(n);
        break;
    case "Enter": case " ": if (expanded) setOpen(n, expanded === "false"); break;
    default: return;
    }
    event.preventDefault();
    if (to >= 0) pick(to, {focus: true});
});

tree.addEventListener("click", event => {
    const line = event.target.closest("[data-n]");
    if (!line) return;
    const n = Number(line.dataset.n);
    if (event.target.classList.contains("tw")) setOpen(n, !isOpen(n));
    pick(n, {focus: true});
});

// --- the bytes ---

bytes.addEventListener("click", event => {
    const run = event.target.closest("i[data-n]");
    if (run) pick(Number(run.dataset.n), {keepBytes: true});
});

bytes.addEventListener("keydown", event => {
    const by = {ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1}[event.key];
    if (!by) return;
    event.preventDefault();
    const isRow = event.key === "ArrowDown" || event.key === "ArrowUp";
    const own = picked.find(element => element.tagName === "I");
    let at = own ? cursorStops.indexOf(own) : -1;
    const from = at;
    do at += by;
    while (cursorStops[at] && from >= 0 &&
        (Number(cursorStops[at].dataset.n) === current ||
            (isRow && cursorStops[at].parentElement === cursorStops[from].parentElement)));
    if (cursorStops[at]) pick(Number(cursorStops[at].dataset.n));
});

// --- under the pointer ---

// Where a pane scrolls below a pointer that rests, nobody has pointed at what comes there.
let rested = "";
for (const pane of [tree, bytes]) {
    pane.addEventListener("pointerover", event => {
        const at = `${event.clientX} ${event.clientY}`;
        if (at === rested) return;
        rested = at;
        const element = event.target.closest("[data-n]");
        light(element ? Number(element.dataset.n) : -1);
    });
    pane.addEventListener("pointerleave", () => light(-1));
}

// --- the faults ---

const faults = [...document.querySelectorAll(".faults button")];
let fault = -1;
function goTo(index) {
    if (!faults.length) return;
    if (fault >= 0) faults[fault].classList.remove("on");
    fault = (index + faults.length) % faults.length;
    faults[fault].classList.add("on");
    faults[fault].scrollIntoView({block: "nearest"});
    const n = Number(faults[fault].dataset.node);
    if (n >= 0) {
        pick(n, {focus: true});
    } else {
        const region = bytes.querySelector(`[data-at="${faults[fault].dataset.at}"]`);
        if (region) bring(region, bytes);
    }
}
faults.forEach((button, index) => button.addEventListener("click", () => goTo(index)));
document.addEventListener("keydown", event => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.key === "f") goTo(fault + 1);
    if (event.key === "F") goTo(fault - 1);
});

lines[0].tabIndex = 0;
current = 0;
show(0);
