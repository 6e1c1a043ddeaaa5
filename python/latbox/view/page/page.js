// The page: what comes from the server goes into the run, and what is known of the run is shown, twice a second at most.

import { draw, picture } from "./chart.js";
import { Run, about, count, difference, exactText, grouped, logText, number, percent, short, span, story, text } from "./run.js";

const $ = (id) => document.getElementById(id);
const BETWEEN_LOOKS = 400; // milliseconds between two drawings
const MOST_ROWS = 500; // of values shown
const MOST_LOG = 300;
const TABLE_ROWS = 40;
const MOST_UNHEARD = 15; // seconds; the server beats every two
const MAKERS = { search: "the search", complete: "the complete search", presolve: "presolve" };

const run = new Run();
const link = { connected: false, more: true, steered: false, isLog: false, silent: 0, heard: performance.now(), unheard: 0 };
const sorting = { by: null, descending: false };
let shownValues = null; // the point whose values the table has
let logged = 0; // events that the log has seen
let lastSaid = "";

// ------------------------------------------------------------- small helpers

function make(name, attributes = {}, ...children) {
  const found = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (key === "class") found.className = value;
    else if (value !== false && value !== null) found.setAttribute(key, value === true ? "" : value);
  }
  found.append(...children);
  return found;
}

// Writes only what has changed: so that a selection stays, and a screen reader is not disturbed.
function put(node, content) {
  if (node.textContent !== content) node.textContent = content;
}

function say(words) {
  put($("said"), words);
}

// For who listens: what the page shows large as it is.
function hear(words) {
  put($("heard"), words);
  say("");
}

function beginning() {
  const began = run.start && run.start.began ? new Date(run.start.began * 1000) : null;
  const day = began && began.toDateString() !== new Date().toDateString() ? { month: "short", day: "numeric" } : {};
  return began ? "since " + began.toLocaleString([], { ...day, hour: "2-digit", minute: "2-digit" }) : "";
}

// ------------------------------------------------------------- from the server

let source = null;

function connect() {
  if (source) source.close();
  source = new EventSource("events");
  link.heard = performance.now();
  const on = (kind, take) => source.addEventListener(kind, (event) => {
    link.connected = true;
    link.heard = performance.now();
    take(JSON.parse(event.data));
    look();
  });
  on("state", (state) => Object.assign(link, { more: state.more, steered: state.steered, isLog: state.log }));
  on("whole", (events) => {
    run.reset();
    logged = 0;
    $("log").replaceChildren();
    events.forEach((event) => run.take(event));
  });
  on("news", (events) => {
    link.silent = 0;
    events.forEach((event) => run.take(event));
  });
  on("beat", (beat) => {
    link.silent = beat.silent;
  });
  source.onerror = (event) => {
    if (event.target !== source) return;
    link.connected = false;
    if (source.readyState === EventSource.CLOSED && !run.end) setTimeout(connect, 3000);
    if (run.end) source.close();
    look();
  };
}

// A connection that is there and brings nothing breaks without a word: a server that stands still, a machine that sleeps.
setInterval(() => {
  if (source.readyState === EventSource.CLOSED || performance.now() - link.heard < 1000 * MOST_UNHEARD) return;
  link.connected = false;
  connect();
  look();
}, 1000);

async function act(order, words) {
  say(words);
  try {
    const answer = await fetch("act", { method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify(order) });
    if (!answer.ok) say(`Refused: ${(await answer.text()).trim() || answer.status}`);
  } catch {
    say("The run cannot be reached.");
  }
}

// ------------------------------------------------------------- looking

let isDue = false;
let lastLook = 0;

function look() {
  if (isDue) return;
  isDue = true;
  setTimeout(show, Math.max(0, lastLook + BETWEEN_LOOKS - performance.now()));
}

function show() {
  isDue = false;
  lastLook = performance.now();
  const time = run.now(link.connected && link.more && !link.isLog);
  link.unheard = (performance.now() - run.told) / 1000;
  const told = story(run, link, time);
  document.documentElement.dataset.state = told.state;
  document.documentElement.dataset.events = run.events.length;
  put($("model"), run.start ? run.start.model : "");
  put($("pill"), told.pill);
  put($("sentence"), told.sentence);
  put($("lead"), told.lead);
  put($("advice"), told.advice);
  document.title = `${{ running: "▸ ", paused: "‖ ", over: "■ " }[told.state] || ""}${run.best === null ? told.pill : text(run.best)} · ${run.start ? run.start.model.split("/").pop() : "latbox"}`;
  showControls(told);
  showFacts(time, told);
  if (!document.hidden) showCharts(time); // the title of a hidden window tells enough
  showBest();
  showPoints();
  showOptions();
  showModel();
  showLog();
  if (told.state === "running" || told.state === "lost") look.later = look.later || setTimeout(() => { look.later = null; look(); }, 1000);
}

function showControls(told) {
  $("steering").hidden = !link.steered || Boolean(run.end || run.failure);
  put($("pause"), run.isPaused ? "Go on" : "Pause");
  $("pause").disabled = !run.start || !link.connected;
  $("stop").disabled = !link.connected;
  $("save-answer").disabled = !(run.bestPoint || (run.end && !run.end.omitted));
  $("save-lines").disabled = !run.events.length;
  $("save-picture").disabled = !charts.some((chart) => !chart.figure.hidden);
  if (lastSaid && told.state !== lastSaid && ["paused", "over", "failed", "lost", "silent"].includes(told.state)) hear(told.sentence);
  if (told.state === "running" && ["paused", "lost", "silent"].includes(lastSaid)) hear("The run goes on.");
  lastSaid = run.start || link.connected ? told.state : ""; // that it is not yet there is no news
}

// ------------------------------------------------------------- facts

const facts = new Map();

function fact(name, value, note, share = null) {
  let entry = facts.get(name);
  if (!entry) {
    const bar = make("progress", { max: 1, hidden: true, "aria-label": name });
    entry = { box: make("div"), value: make("span", { class: "value" }), note: make("span", { class: "note" }), bar };
    const term = make("dt", {}, name);
    entry.box.append(term, make("dd", {}, entry.value, bar, entry.note));
    facts.set(name, entry);
    $("facts").append(entry.box);
  }
  entry.box.hidden = value === null;
  put(entry.value, value || "");
  put(entry.note, note);
  entry.bar.hidden = share === null;
  if (share !== null) entry.bar.value = share;
}

function showFacts(time) {
  const last = run.last || {};
  const limit = run.start && run.start.limit;
  const pause = last.paused >= 1 ? `and paused for ${span(last.paused)}` : "";
  fact("Time of work", run.start || run.end ? span(time) : null, [pause, limit && !run.end ? `of ${span(limit)} at most` : ""].filter(Boolean).join(", ") || beginning());
  const sense = { min: "smaller is better", max: "greater is better" }[run.sense] || "";
  const ago = run.lastFind !== undefined && run.lastFind <= time && !run.end ? `${run.bestBy ? run.bestBy + ", " : ""}${span(time - run.lastFind)} ago` : "";
  fact("Best value", run.sense && run.start ? text(run.best) : null, [ago, sense].filter(Boolean).join("; "));
  fact("Points", run.sense ? null : run.start ? text(run.pointCount) : null, run.pointCount ? "" : last.violated ? `the nearest breaks ${count(last.violated, "bound")}` : "");
  const gap = run.gap;
  fact("Proven bound", run.sense && run.start && run.start.threads ? text(run.bound) : null,
    !gap ? (run.bound === null ? "nothing is proven yet" : "") : gap.isMet ? "met by the best value" : gap.share === null ? "" : `${percent(gap.share)} from the best value`);
  const hasShare = number(last.share) !== null;
  const left = number(last.left_seconds);
  fact("Complete search", run.start && run.start.threads && !run.end ? (hasShare ? percent(last.share) : "at work") : null,
    [left !== null ? `about ${about(left)} left` : "", last.rate ? `${short(last.rate)} nodes a second` : ""].filter(Boolean).join("; "), hasShare ? last.share : null);
  fact("Search", last.iteration !== null && last.iteration !== undefined && !run.end ? text(last.iteration) : null,
    ["iterations", last.idle ? `${last.idle} without progress` : "", run.sense && !last.points && last.violated ? `nearest breaks ${count(last.violated, "bound")}` : ""].filter(Boolean).join("; "));
}

// ------------------------------------------------------------- charts

class Chart {
  constructor(title, unit, build, isLarge = false) {
    Object.assign(this, { title, unit, build, isLarge, cursor: null, frame: null, spec: null });
    const name = "chart-" + title.toLowerCase().replace(/[^a-z]+/g, "-");
    this.legend = make("span", { class: "legend" });
    this.readout = make("output", { class: "readout", "aria-live": "off" });
    this.svg = document.createElementNS("http://www.w3.org/2000/svg", "svg");
    this.svg.setAttribute("role", "img");
    this.svg.setAttribute("tabindex", "0");
    this.table = make("table");
    this.details = make("details", {}, make("summary", {}, `Table of ${title.toLowerCase()}`), make("div", { class: "scroll", tabindex: 0, role: "region", "aria-label": `Table: ${title}` }, this.table));
    this.figure = make("figure", { id: name, class: isLarge ? "large" : "", hidden: true },
      make("figcaption", {}, make("h3", {}, title, make("span", { class: "axis-unit" }, unit)), this.legend, this.readout), this.svg, this.details);
    this.details.addEventListener("toggle", () => this.tabulate());
    this.svg.addEventListener("pointermove", (event) => this.point({ place: event.offsetX }));
    this.svg.addEventListener("pointerleave", () => this.point(null));
    this.svg.addEventListener("blur", () => this.point(null));
    this.svg.addEventListener("keydown", (event) => this.step(event));
    $("charts").append(this.figure);
  }

  show(time) {
    const spec = this.build();
    const has = spec && spec.series.some((series) => series.points.length);
    this.figure.hidden = !has;
    if (!has) return;
    const length = Number($("window").value);
    this.spec = { title: this.title, unit: this.unit, ...spec, from: length ? Math.max(0, time - length) : 0, to: Math.max(time, 0.5) };
    const width = Math.floor(this.svg.parentElement.clientWidth);
    this.frame = draw(this.svg, this.spec, width, this.isLarge ? 300 : 200);
    if (this.cursor !== null) this.point(this.cursor);
    const ends = spec.series.filter((s) => s.points.length).map((s) => `${s.label} ${short(s.points[s.points.length - 1][1])}`);
    this.svg.setAttribute("aria-label", `${this.title}, ${this.unit}, over the time of work: now ${ends.join(", ")}. The table below has the numbers; the arrow keys read the curve.`);
    const keys = spec.series.length > 1 ? spec.series.map((s) => [s.label, "key " + s.style]) : [];
    if (spec.makers) keys.push([spec.makers, "makers"]);
    if (this.legend.shown !== String(keys)) {
      this.legend.shown = String(keys);
      this.legend.replaceChildren(...keys.map(([label, name]) => make("span", { class: name }, label)));
    }
    if (this.details.open) this.tabulate();
  }

  // The values at {place} of the screen, under a pointer, or at {t}, a time, which stays while the curve grows; null: none.
  point(cursor) {
    this.cursor = cursor;
    this.svg.querySelector(".cursor")?.remove();
    if (cursor === null || !this.frame) return put(this.readout, "");
    // Read aloud is what a key asks for, not what moves under a pointer.
    this.readout.setAttribute("aria-live", cursor.t === undefined ? "off" : "polite");
    const { top, height } = this.frame;
    const t = this.timeOf(cursor);
    const line = document.createElementNS("http://www.w3.org/2000/svg", "path");
    line.setAttribute("class", "cursor");
    line.setAttribute("d", `M${this.frame.x(t)} ${top}v${height}`);
    this.svg.append(line);
    const values = this.spec.series.map((s) => [s.label, at(s.points, t)]).filter(([, v]) => v !== null);
    put(this.readout, `${span(t)}: ${values.map(([label, v]) => (values.length > 1 ? label + " " : "") + short(v)).join(", ") || "nothing yet"}`);
  }

  step(event) {
    const steps = { ArrowLeft: -0.02, ArrowRight: 0.02, Home: -1, End: 1 };
    if (!(event.key in steps) || !this.frame) return;
    event.preventDefault();
    const { from, to } = this.frame.time;
    const before = this.cursor === null ? to : this.timeOf(this.cursor);
    this.point({ t: Math.max(from, Math.min(to, before + steps[event.key] * (to - from))) });
  }

  timeOf(cursor) {
    const { left, width, time } = this.frame;
    if (cursor.t !== undefined) return Math.max(time.from, Math.min(time.to, cursor.t));
    return time.from + Math.max(0, Math.min(1, (cursor.place - left) / width)) * (time.to - time.from);
  }

  tabulate() {
    if (!this.details.open || !this.spec) return;
    const { series, from, to } = this.spec;
    const times = [...new Set(series.flatMap((s) => s.points.map(([t]) => t)))].filter((t) => t >= from && t <= to).sort((a, b) => b - a);
    const stride = Math.max(1, times.length / TABLE_ROWS);
    const chosen = [];
    for (let i = 0; i < times.length; i += stride) chosen.push(times[Math.floor(i)]);
    const letters = new Map((this.spec.marks || []).map((mark) => [mark.t, mark.letter]));
    const head = make("tr", {}, make("th", { scope: "col" }, "Time of work"), ...series.map((s) => make("th", { scope: "col", class: "number" }, `${s.label}, ${this.unit}`)),
      ...(letters.size ? [make("th", { scope: "col" }, "Found by")] : []));
    const rows = chosen.map((t) => make("tr", {}, make("th", { scope: "row" }, span(t)), ...series.map((s) => make("td", { class: "number" }, short(at(s.points, t)))),
      ...(letters.size ? [make("td", {}, letters.get(t) || "")] : [])));
    this.table.replaceChildren(make("thead", {}, head), make("tbody", {}, ...rows));
  }
}

// The value that holds at a time.
function at(points, t) {
  let [low, high] = [0, points.length];
  while (low < high) {
    const middle = (low + high) >> 1;
    if (points[middle][0] <= t) low = middle + 1;
    else high = middle;
  }
  return low ? points[low - 1][1] : null;
}

// What the letters of the finds mean.
function makers() {
  const found = new Map();
  for (const { letter, by } of run.finds) found.set(by, (found.get(by) || new Set()).add(letter));
  return [...found].map(([by, letters]) => `${[...letters].sort().join(", ")} found by ${MAKERS[by] || by}`).join("; ");
}

const one = (label, points, step, scale = {}) => ({ series: [{ label, style: "one", points, step }], scale });
const charts = [
  new Chart("Value and bound", "objective", () => ({
    series: [{ label: "best value", style: "one", points: run.series.best, step: true },
      ...(run.series.bound.length ? [{ label: "proven bound", style: "two", points: run.series.bound, step: true }] : [])],
    marks: run.finds,
    rises: run.sense === "max",
    makers: makers(),
  }), true),
  new Chart("Points found", "count", () => (run.sense === null && run.pointCount ? one("points", run.series.points, true, { whole: true }) : null), true),
  new Chart("Violation of the nearest point", "bounds broken", () => one("bounds broken", run.series.violated, true, { whole: true })),
  new Chart("Share of the complete search", "percent of the tree", () => one("done", run.series.share, true, { share: true })),
  new Chart("Speed of the complete search", "nodes a second", () => one("nodes a second", run.series.rate, false, { zero: true })),
  new Chart("Quality of the basis", "length of its first vector", () => one("length", run.series.basis, true, { log: true })),
  new Chart("Collections of the search", "vectors collected", () => one("vectors", run.series.collected.some(([, v]) => v) ? run.series.collected : [], false, { whole: true })),
];

function showCharts(time) {
  for (const chart of charts) chart.show(time);
  $("no-charts").hidden = charts.some((chart) => !chart.figure.hidden);
}

// ------------------------------------------------------------- points

function entries(point) {
  const found = Object.entries(point.values).filter(([, value]) => $("zeros").checked || value !== 0);
  if (sorting.by === "name") found.sort(([a], [b]) => a.localeCompare(b, undefined, { numeric: true }));
  if (sorting.by === "value") found.sort(([, a], [, b]) => difference(a, b).sign);
  return sorting.descending ? found.reverse() : found;
}

function showBest(isForced = false) {
  const point = run.bestPoint;
  $("best").hidden = !point;
  if (!point || (!isForced && point.values === shownValues)) return;
  shownValues = point.values;
  const all = Object.keys(point.values).length;
  const found = entries(point);
  const hidden = all - found.length;
  put($("best-note"), [point.objective !== null && point.objective !== undefined ? `Value ${exactText(point.objective)}` : "", count(all, "variable") + (hidden ? `, of which ${grouped(String(hidden))} ${hidden === 1 ? "is" : "are"} 0` : ""),
    found.length > MOST_ROWS ? `the first ${MOST_ROWS} of ${grouped(String(found.length))} are shown; copy or save the answer for all` : ""].filter(Boolean).join("; ") + ".");
  $("values").tBodies[0].replaceChildren(...found.slice(0, MOST_ROWS).map(([name, value]) =>
    make("tr", {}, make("th", { scope: "row" }, name), make("td", { class: "number" }, exactText(value)))));
}

function showPoints() {
  const list = $("last-points");
  $("points").hidden = !run.points.length;
  const newest = run.points[run.points.length - 1];
  if (list.newest === newest) return;
  list.newest = newest;
  list.replaceChildren(...[...run.points].reverse().map((point) => {
    const values = Object.entries(point.values || {}).filter(([, value]) => value !== 0);
    const names = values.slice(0, 24).map(([name, value]) => `${name} = ${text(value)}`).join(", ");
    const more = values.length > 24 ? `, and ${values.length - 24} more` : "";
    return make("li", {}, make("span", { class: "who", title: point.by }, point.letter), make("span", { class: "when" }, span(point.time)),
      make("span", { class: "what" }, make("strong", {}, point.objective === null ? "a point" : text(point.objective)), " ",
        make("span", { class: "names" }, point.values ? names + more || "all are 0" : "too many values to show")));
  }));
}

// ------------------------------------------------------------- options

const optionRows = new Map();

function showOptions() {
  $("options").hidden = !run.options.size;
  const canSet = link.steered && link.connected && !run.end && !run.failure;
  put($("options-note"), canSet ? "A new value counts while the search goes on; it changes the way there, never what is an answer." : "As the search has them.");
  for (const option of run.options.values()) {
    const row = optionRows.get(option.key) || makeOption(option);
    put(row.value, String(option.value));
    put(row.note, option.asked !== null ? `${option.asked} is asked for` : option.value === option.default ? "default" : `default ${option.default}`);
    row.box.classList.toggle("changed", option.value !== option.default);
    row.form.hidden = !canSet;
    if (row.shown !== option.value) {
      row.shown = option.value;
      row.input.value = option.value;
    }
  }
}

function makeOption(option) {
  const name = "option-" + option.key;
  const isSwitch = option.least === 0 && option.most === 1;
  const range = isSwitch ? "0 is off, 1 on" : `${option.least} to ${option.most >= 1e9 ? "10⁹" : option.most}`;
  const input = isSwitch ? make("select", { id: name }, make("option", { value: 0 }, "0, off"), make("option", { value: 1 }, "1, on"))
    : make("input", { id: name, type: "number", min: option.least, max: option.most, step: 1, required: true, inputmode: "numeric" });
  input.setAttribute("aria-describedby", name + "-text");
  const row = { value: make("output"), note: make("span", { class: "note" }), input, shown: null };
  row.form = make("form", { hidden: true }, input, make("button", { type: "submit", "aria-label": `Set ${option.key}` }, "Set"));
  row.form.addEventListener("submit", (event) => {
    event.preventDefault();
    act({ action: "set", key: option.key, value: Number(input.value) }, `${option.key} = ${input.value} is asked for.`);
  });
  row.box = make("li", {}, make("label", { for: name }, option.key), make("span", { class: "present" }, row.value, row.note),
    make("span", { class: "text", id: name + "-text" }, `${option.text}. ${range}; counts ${option.from_when}.`), row.form);
  optionRows.set(option.key, row);
  $("option-list").append(row.box);
  return row;
}

// ------------------------------------------------------------- model and log

function showModel() {
  $("about").hidden = !run.start || !(run.start.size || []).length;
  if ($("about").hidden || $("about").shown === run.start) return;
  $("about").shown = run.start;
  $("size").replaceChildren(...run.start.size.map((line) => make("p", {}, line)));
  $("warnings").replaceChildren(...(run.start.warnings || []).map((line) => make("li", {}, line)));
}

function showLog() {
  const list = $("log");
  for (; logged < run.events.length; logged++) {
    const event = run.events[logged];
    const words = logText(event, run);
    if (words) list.prepend(make("li", { class: event.event }, make("time", {}, span(event.time)), make("span", {}, words)));
  }
  while (list.childElementCount > MOST_LOG) list.lastElementChild.remove();
}

// ------------------------------------------------------------- files

function save(name, type, content) {
  const address = URL.createObjectURL(new Blob([content], { type }));
  make("a", { href: address, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(address), 10000);
  say(`${name} is saved.`);
  $("log").prepend(make("li", { class: "action" }, make("time", {}, span(run.now(false))), make("span", {}, `${name} was saved in this window.`)));
}

const stem = () => (run.start ? run.start.model.split("/").pop().replace(/\.[^.]*$/, "") : "") || "run";

// As latbox-solve --output writes it.
function answerText() {
  const point = run.bestPoint;
  const lines = [`# status: ${run.end ? run.end.status : "feasible"}`];
  if (point && point.objective !== null && point.objective !== undefined) lines.push(`# objective: ${point.objective}`);
  if (point) lines.push("# point 1", ...Object.entries(point.values).map(([name, value]) => `${name} = ${value}`));
  return lines.join("\n") + "\n";
}

const linesText = () => run.events.map((event) => JSON.stringify(event) + "\n").join("");

function pictureText() {
  const shown = charts.filter((chart) => !chart.figure.hidden);
  return picture(run.start ? run.start.model : "a run", story(run, link, run.time).sentence, shown.map((chart) => chart.spec));
}

// ------------------------------------------------------------- what is pressed

$("pause").addEventListener("click", () => act({ action: run.isPaused ? "go on" : "pause" }, run.isPaused ? "Going on is asked for." : "A pause is asked for."));
$("stop").addEventListener("click", () => act({ action: "stop" }, "The answer is asked for."));
$("save-answer").addEventListener("click", () => save(stem() + ".txt", "text/plain", answerText()));
$("save-lines").addEventListener("click", () => save(stem() + ".json", "application/json", linesText()));
$("save-picture").addEventListener("click", () => save(stem() + ".svg", "image/svg+xml", pictureText()));
$("zeros").addEventListener("change", () => showBest(true));
$("window").addEventListener("change", look);
$("copy").addEventListener("click", async () => {
  const all = entries(run.bestPoint).map(([name, value]) => `${name} = ${value}\n`).join("");
  try {
    await navigator.clipboard.writeText(all);
    say("The values are copied.");
  } catch {
    say("The browser does not let the page copy: save the answer instead.");
  }
});
for (const button of document.querySelectorAll("button.sort")) {
  button.addEventListener("click", () => {
    sorting.descending = sorting.by === button.dataset.by && !sorting.descending;
    sorting.by = button.dataset.by;
    for (const head of document.querySelectorAll("#values th[aria-sort]")) head.setAttribute("aria-sort", "none");
    button.closest("th").setAttribute("aria-sort", sorting.descending ? "descending" : "ascending");
    showBest(true);
  });
}
document.addEventListener("visibilitychange", look);
new ResizeObserver(look).observe($("charts"));
connect();
