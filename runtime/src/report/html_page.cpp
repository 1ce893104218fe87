#include "report/html_page.h"

namespace lumos {

const char html_head[] = R"html(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Test results</title>
<meta name="viewport" content="width=device-width">
<style>
:root { color-scheme: light dark; --line: #d4d7dd; --soft: #f4f5f7; --ink: #1d2330; --dim: #687083; --paper: #fff; --mark: #2458c5; }
@media (prefers-color-scheme: dark) {
  :root { --line: #3a4050; --soft: #232834; --ink: #e4e7ee; --dim: #98a1b5; --paper: #181c25; --mark: #86adff; } }
* { box-sizing: border-box; }
body { margin: 0; font: 14px/1.45 system-ui, sans-serif; color: var(--ink); background: var(--paper);
  height: 100vh; display: grid; grid-template: auto 1fr / minmax(260px, 30%) 1fr; }
header { grid-column: 1 / 3; padding: 10px 16px; border-bottom: 1px solid var(--line); display: flex; gap: 14px;
  align-items: center; flex-wrap: wrap; }
h1 { font-size: 17px; margin: 0 8px 0 0; } h2 { font-size: 15px; margin: 0; }
nav { overflow: auto; border-right: 1px solid var(--line); position: relative; }
main { overflow: hidden; display: flex; flex-direction: column; min-width: 0; }
.case { position: absolute; left: 0; right: 0; height: 46px; padding: 4px 12px; border-bottom: 1px solid var(--line);
  cursor: pointer; overflow: hidden; white-space: nowrap; text-overflow: ellipsis; }
.case:hover, .case.chosen { background: var(--soft); }
.case small { display: block; color: var(--dim); overflow: hidden; text-overflow: ellipsis; }
.v { display: inline-block; min-width: 50px; text-align: center; border-radius: 4px; color: #fff; font-size: 12px;
  padding: 0 6px; margin-right: 6px; }
.pass { background: #25803a; } .none { background: #6a7180; } .inconc { background: #a06600; }
.fail { background: #c22f2f; } .error { background: #7d1f8a; }
label { cursor: pointer; user-select: none; }
input[type=search] { font: inherit; padding: 3px 8px; border: 1px solid var(--line); border-radius: 4px;
  background: var(--paper); color: inherit; min-width: 180px; }
#about { padding: 10px 16px; border-bottom: 1px solid var(--line); }
#tabs button { font: inherit; border: 1px solid var(--line); background: none; color: inherit; padding: 3px 12px;
  cursor: pointer; border-radius: 4px; margin: 6px 6px 0 0; }
#tabs button.chosen { background: var(--mark); color: var(--paper); border-color: var(--mark); }
#view { flex: 1; overflow: auto; position: relative; }
#log { margin: 0; padding: 10px 16px; font: 12px/1.5 ui-monospace, monospace; white-space: pre-wrap; }
#names { position: sticky; top: 0; z-index: 1; background: var(--paper); display: block; }
#detail { max-height: 35%; overflow: auto; border-top: 1px solid var(--line); background: var(--soft);
  padding: 8px 16px; font: 12px/1.5 ui-monospace, monospace; white-space: pre-wrap; overflow-wrap: anywhere; }
#detail:empty { display: none; }
svg text { font: 11px system-ui, sans-serif; fill: var(--ink); } svg .dim { fill: var(--dim); }
svg .row { cursor: pointer; } svg .row:hover .hit, svg .row.chosen .hit { fill: var(--soft); } .hit { fill: transparent; }
svg .life { stroke: var(--line); stroke-width: 1.5; } svg .arrow { stroke: var(--mark); stroke-width: 1.3; fill: none; }
svg .made { stroke-dasharray: 4 3; } svg .box { fill: var(--soft); stroke: var(--dim); }
svg .times { fill: var(--paper); }
@media (max-width: 700px) {
  body { grid-template: auto 35vh 1fr / 1fr; } header { grid-column: 1; gap: 6px; padding: 6px 12px; }
  nav { border-right: 0; border-bottom: 1px solid var(--line); } #about { padding: 6px 12px; } }
@media print {
  body { display: block; height: auto; } nav, main, #view, #detail { overflow: visible; max-height: none; border: 0; }
  nav > div:first-child, input, select, #tabs { display: none; } .case { position: static; height: auto; white-space: normal; }
  .v { print-color-adjust: exact; -webkit-print-color-adjust: exact; } main { display: block; } #names { position: static; } }
</style></head><body>
<header><h1>Test results</h1><span id="counts"></span><span id="seed"></span><input type="search" id="search" placeholder="name or reason" aria-label="Part of a name or reason">
<select id="order" aria-label="Order"><option value="">as they ran</option><option value="verdict">worst first</option><option value="duration">longest first</option><option value="name">by name</option></select></header>
<nav id="list" role="listbox" tabindex="0" aria-label="Test cases"></nav>
<main><div id="about"></div><div id="view" tabindex="0" aria-label="Events"></div><div id="detail" aria-live="polite"></div></main>
)html";

const char html_tail[] = R"html(<script>
"use strict";
// A test case is [name, verdict, time, place, reason]; an event
// [kind, time, component, name, peer, text, octets, place]. Times are nanoseconds. Stored are [spot, time since the last,
// text, octets], where a spot is [kind, component, name, peer, place]; spots and texts that the test case had before are their numbers.
const stored = document.querySelectorAll("script[type='application/json']");  // events of each test case
const seconds = (time, digits) => (time / 1e9).toFixed(digits);
const $ = id => document.getElementById(id);
const verdicts = ["pass", "none", "inconc", "fail", "error"];
const shown = new Set(verdicts);
let visible = [], events = [], chosen = -1, tab = "chart", chosenRow = -1, printing = false;
const escapes = { "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;" };
const safe = text => String(text).replace(/[&<>"]/g, c => escapes[c]);
const cut = (text, n) => text.length > n ? text.slice(0, n - 1) + "…" : text;
// Names that begin alike are told apart by their ends.
const short = (name, n) => name.length > n ? name.slice(0, n / 2) + "…" + name.slice(1 - n / 2) : name;
const badge = v => `<span class="v ${v}">${v}</span>`;
const caseHeight = 46, rowHeight = 24, column = 170, left = 90;

function read(list) {
  const spots = [], texts = [];
  let time = 0;
  const had = (all, x) => typeof x === "number" ? all[x] : (all.push(x), x);
  return list.map(stored => {
    const [kind, component, name, peer, place] = had(spots, stored[0]);
    return [kind, time += stored[1], component, name, peer, stored.length > 2 ? had(texts, stored[2]) : "", stored[3] || "", place];
  });
}
function filter() {
  const text = $("search").value.toLowerCase();
  visible = cases.map((c, i) => i).filter(i => shown.has(cases[i][1]) &&
    (!text || (cases[i][0] + " " + cases[i][4]).toLowerCase().includes(text)));
  const orders = { verdict: (a, b) => verdicts.indexOf(b[1]) - verdicts.indexOf(a[1]), duration: (a, b) => b[2] - a[2],
    name: (a, b) => a[0] < b[0] ? -1 : a[0] > b[0] ? 1 : 0 }, order = orders[$("order").value];
  if (order) visible.sort((a, b) => order(cases[a], cases[b]) || a - b);
  drawList();
}
// What is out of sight is not drawn, but on paper.
function inSight(element, height, count, more) {
  if (printing) return [0, count];
  const from = Math.min(count, Math.max(0, Math.floor(element.scrollTop / height) - more));
  return [from, Math.min(count, from + Math.ceil(element.clientHeight / height) + 2 * more)];
}
function drawList() {
  const list = $("list"), [from, to] = inSight(list, caseHeight, visible.length, 10);
  let html = `<div style="height:${visible.length * caseHeight}px"></div>`;
  for (let k = from; k < to; ++k) {
    const i = visible[k], c = cases[i];
    html += `<div class="case${i === chosen ? " chosen" : ""}" data-i="${i}" id="case${i}" role="option" aria-selected="${i === chosen}" style="top:${k * caseHeight}px">${badge(c[1])}` +
      `${safe(c[0])} <small>${seconds(c[2], 3)} s ${safe(c[3])} ${safe(c[4])}</small></div>`;
  }
  list.innerHTML = html;
  list.setAttribute("aria-activedescendant", `case${chosen}`);
}
function drawCounts() {
  const n = Object.fromEntries(verdicts.map(v => [v, 0]));
  for (const c of cases) ++n[c[1]];
  $("seed").textContent = seed && `seed ${seed}`;
  $("counts").innerHTML = verdicts.map(v =>
    `<label><input type="checkbox" data-v="${v}" checked>${badge(v)}${n[v]}</label>`).join(" ");
}
function choose(i) {
  chosen = i; chosenRow = -1;
  events = read(JSON.parse(stored[i].textContent));
  const c = cases[i];
  $("about").innerHTML = `<h2>${badge(c[1])}${safe(c[0])}</h2><div>${seconds(c[2], 6)} s ${safe(c[3])} ${safe(c[4])}</div>` +
    `<div id="tabs" role="tablist"><button role="tab" data-tab="chart">Sequence chart</button><button role="tab" data-tab="log">Log</button></div>`;
  $("detail").textContent = "";
  location.replace(`#${i + 1}-${encodeURIComponent(c[0])}`);
  document.title = `${c[0]}: ${c[1]}`;
  drawList(); drawTab();
}
// The test case that the address names; in the report of another run it may have another number.
function addressed() {
  const [, number, name] = /^#(\d+)-(.*)$/.exec(location.hash) || [];
  const is = c => c && encodeURIComponent(c[0]) === name;
  return is(cases[number - 1]) ? number - 1 : cases.findIndex(is);
}
// By keys: the number of lines to go on, and nothing for other keys.
function steps(e, element, height) {
  const page = Math.max(1, Math.floor(element.clientHeight / height) - 1);
  const by = { ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -Infinity, End: Infinity }[e.key];
  if (by && !e.ctrlKey && !e.altKey && !e.metaKey) e.preventDefault(); else return 0;
  return by;
}
const within = (i, count) => Math.max(0, Math.min(count - 1, i));
function scrollTo(element, top, height, head) {
  element.scrollTop = Math.max(top + height + head - element.clientHeight, Math.min(element.scrollTop, top));
}
function drawTab() {
  for (const b of document.querySelectorAll("#tabs button")) {
    b.className = b.dataset.tab === tab ? "chosen" : "";
    b.setAttribute("aria-selected", b.dataset.tab === tab);
  }
  $("view").scrollTop = 0;
  tab === "log" ? drawLog() : prepareChart();
}
function drawLog() {
  const lines = events.filter(e => e[0] === "log").map(e =>
    `${seconds(e[1], 6)} ${e[3]} ${e[2]} ${e[7]} ${e[5]}`);
  $("view").innerHTML = '<pre id="log"></pre>';
  $("log").textContent = lines.join("\n") || "nothing was logged";
}

// --- the chart: only the rows in sight are drawn
let chart = null;
const owner = port => port.split(":")[0];
function prepareChart() {
  const rows = events.filter(e => e[0] !== "log"), lives = new Map();
  const live = (name, row) => { if (!lives.has(name)) lives.set(name, { begin: row, end: rows.length, x: 0 }); };
  live("mtc", 0);
  rows.forEach((e, r) => {
    if (e[0] === "create") live(e[3], r);
    if ((e[0] === "send" || e[0] === "arrive") && e[4]) live(owner(e[4]), 0);
    if (e[0] === "send" || e[0] === "arrive" || e[0] === "receive" || e[0] === "lost") live(owner(e[3]), 0);
    if (e[0] === "end" && lives.has(e[3])) lives.get(e[3]).end = r;
  });
  const names = [...lives.keys()].filter(n => n !== "system");
  if (lives.has("system")) names.push("system");
  names.forEach((n, k) => lives.get(n).x = left + column * (k + 0.5));
  chart = { rows, lives, names, width: left + column * Math.max(names.length, 1) + 90 };
  const heads = names.map(n => `<rect class="box" x="${lives.get(n).x - 60}" y="4" width="120" height="22" rx="4"/>` +
    `<text x="${lives.get(n).x}" y="19" text-anchor="middle">${safe(short(n, 16))}<title>${safe(n)}</title></text>`).join("");
  $("view").innerHTML = `<svg id="names" width="${chart.width}" height="30">${heads}</svg>` +
    `<div style="height:${rows.length * rowHeight + 20}px;width:${chart.width}px;position:relative">` +
    `<svg id="rows" width="${chart.width}" style="position:absolute;left:0"></svg></div>`;
  drawChart();
}
function drawChart() {
  if (!chart || !$("rows")) return;
  const view = $("view"), [from, to] = inSight(view, rowHeight, chart.rows.length, 20);
  let svg = "";
  for (const n of chart.names) {
    const l = chart.lives.get(n), a = Math.max(l.begin, from), b = Math.min(l.end + 0.5, to);
    if (a < b) svg += `<line class="life" x1="${l.x}" x2="${l.x}" y1="${(a - from) * rowHeight}" y2="${(b - from) * rowHeight}"/>`;
  }
  for (let r = from; r < to; ++r) svg += drawRow(chart.rows[r], r, (r - from) * rowHeight, printing ? 0 : view.scrollLeft);
  const rows = $("rows");
  rows.style.top = from * rowHeight + "px";
  rows.setAttribute("height", (to - from) * rowHeight + 10);
  rows.innerHTML = svg;
}
function drawRow(e, r, y, scrolled) {
  const at = name => (chart.lives.get(name) || chart.lives.get("mtc")).x, middle = y + rowHeight / 2;
  const text = (x, t, anchor) => `<text x="${x}" y="${middle + 4}" text-anchor="${anchor || "start"}">${safe(t)}</text>`;
  const box = (x, t) => `<rect class="box" x="${x - 62}" y="${y + 3}" width="124" height="18" rx="3"/>` + text(x, cut(t, 18), "middle");
  const arrow = (x1, x2, t, more) => x1 === x2
    ? `<path class="arrow ${more}" d="M${x1} ${y + 5}h26v14h-22m5 -4l-6 4l6 4"/>` + text(x1 + 32, cut(t, 24))
    : `<path class="arrow ${more}" d="M${x1} ${middle + 7}H${x2}m${x2 > x1 ? "-6 -4l6 4l-6 4" : "6 -4l-6 4l6 4"}"/>` +
      overArrow(Math.min(x1, x2), Math.max(x1, x2), t);
  // In the middle of what is in sight of it.
  const overArrow = (x1, x2, t) => {
    const a = Math.max(x1, scrolled && scrolled + left), b = printing ? x2 : Math.min(x2, scrolled + $("view").clientWidth);
    return b - a < 60 ? "" : `<text x="${(a + b) / 2}" y="${middle + 3}" text-anchor="middle">${safe(cut(t, Math.floor((b - a) / 6.6)))}</text>`;
  };
  let s = "";
  switch (e[0]) {
    case "send": s = arrow(at(owner(e[3])), at(owner(e[4])), e[5], ""); break;
    case "arrive": s = arrow(at(owner(e[4])), at(owner(e[3])), e[5] || e[6], ""); break;
    case "create": s = arrow(at(e[2]), at(e[3]), "create", "made"); break;
    case "start": s = arrow(at(e[2]), at(e[3]), "start " + e[5], "made"); break;
    case "receive": s = `<circle cx="${at(owner(e[3]))}" cy="${middle}" r="4" fill="var(--mark)"/>` +
      text(at(owner(e[3])) + 9, cut("receive " + e[5], 24)); break;
    case "lost": s = text(at(owner(e[3])) + 9, "✕ lost " + cut(e[5], 20)); break;
    case "end": s = text(at(e[3]), "✕", "middle"); break;
    case "verdict": s = `<foreignObject x="${at(e[2]) - 30}" y="${y + 2}" width="62" height="20">${badge(e[3])}</foreignObject>` +
      text(at(e[2]) + 36, cut(e[5], 22)); break;
    default: s = box(at(e[2]), e[0].replace("timer_", "") + " " + e[3] + " " + e[5].replace(/\.?0+ s$/, " s"));
  }
  return `<g class="row${r === chosenRow ? " chosen" : ""}" data-r="${r}"><rect class="hit" x="0" y="${y}" ` +
    `width="${chart.width}" height="${rowHeight}" opacity=".6"/>${s}` +
    (scrolled ? `<rect class="times" x="${scrolled}" y="${y}" width="${left - 10}" height="${rowHeight}"/>` : "") +
    `<text class="dim" x="${scrolled + 8}" y="${middle + 4}">${seconds(e[1], 6)}</text></g>`;
}
function showDetail(r) {
  const e = chart.rows[r], parts = [["event", e[0]], ["time", seconds(e[1], 9)], ["component", e[2]], ["place", e[7]],
    ["name", e[3]], ["peer", e[4]], ["value", e[5]], ["octets", e[6]]];
  chosenRow = r;
  $("detail").textContent = parts.filter(p => p[1]).map(p => p[0].padEnd(10) + p[1]).join("\n");
  drawChart();
}
const closest = (event, selector) => event.target.closest(selector);
$("list").addEventListener("click", e => { const c = closest(e, ".case"); if (c) choose(+c.dataset.i); });
$("list").addEventListener("scroll", drawList);
$("list").addEventListener("keydown", e => {
  const by = steps(e, $("list"), caseHeight), k = within(visible.indexOf(chosen) + by, visible.length);
  if (!by || !visible.length) return;
  scrollTo($("list"), k * caseHeight, caseHeight, 0);
  choose(visible[k]);
});
$("view").addEventListener("keydown", e => {
  if (tab !== "chart" || !chart.rows.length) return;
  const by = steps(e, $("view"), rowHeight), r = within(chosenRow + by, chart.rows.length);
  if (!by) return;
  showDetail(r);
  scrollTo($("view"), r * rowHeight, rowHeight, 30);
});
$("search").addEventListener("input", filter);
$("order").addEventListener("change", filter);
$("counts").addEventListener("change", e => {
  shown[e.target.checked ? "add" : "delete"](e.target.dataset.v);
  filter();
});
$("about").addEventListener("click", e => { const b = closest(e, "button"); if (b) { tab = b.dataset.tab; drawTab(); } });
$("view").addEventListener("scroll", () => { if (tab === "chart") drawChart(); });
$("view").addEventListener("click", e => { const g = closest(e, ".row"); if (g) showDetail(+g.dataset.r); });
addEventListener("resize", () => { drawList(); if (tab === "chart") drawChart(); });
addEventListener("hashchange", () => { const i = addressed(); if (i >= 0 && i !== chosen) choose(i); });
for (const [event, begins] of [["beforeprint", true], ["afterprint", false]])
  addEventListener(event, () => { printing = begins; drawList(); if (tab === "chart") drawChart(); });
drawCounts(); filter();
const firstBad = cases.findIndex(c => c[1] !== "pass" && c[1] !== "none"), wanted = addressed();
if (cases.length) choose(wanted < 0 ? Math.max(firstBad, 0) : wanted);
scrollTo($("list"), visible.indexOf(chosen) * caseHeight, caseHeight, 0);
</script></body></html>
)html";

}  // namespace lumos
