// Curves over time as plain SVG: scales, ticks, lines, marks. A chart is drawn into an <svg> whose size is given in pixels, so that
// text keeps its size on any screen.

import { raised, short } from "./run.js";

const NAMESPACE = "http://www.w3.org/2000/svg";
const TOP = 14;
const BOTTOM = 42;
const RIGHT = 14;
// Pixels of a find's letter, and of its ring.
const LETTER = { wide: 11, high: 12, away: 5 };
const RING = 4;
const TIMES = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400, 172800, 604800, 1209600];

export function element(name, attributes = {}, content = "") {
  const found = document.createElementNS(NAMESPACE, name);
  for (const [key, value] of Object.entries(attributes)) found.setAttribute(key, value);
  if (content !== "") found.textContent = content;
  return found;
}

// ------------------------------------------------------------- scales

function niceStep(raw) {
  const power = 10 ** Math.floor(Math.log10(raw));
  return [1, 2, 2.5, 5, 10].map((k) => k * power).find((step) => step >= raw * 0.999);
}

function steps(low, high, step) {
  const found = [];
  for (let k = Math.ceil(low / step - 1e-9); k <= Math.floor(high / step + 1e-9) && found.length < 50; k++) found.push(k * step);
  return found;
}

// Texts that differ from tick to tick, whatever the values.
function texts(values, step) {
  const size = Math.max(...values.map(Math.abs));
  if (size >= 1e9 || (size < 1e-3 && size > 0)) {
    const exponent = Math.floor(Math.log10(size));
    const digits = Math.min(15, Math.max(0, exponent - Math.floor(Math.log10(step) + 1e-9) + (step.toExponential().startsWith("2.5") ? 1 : 0)));
    return values.map((v) => (v === 0 ? "0" : (v / 10 ** exponent).toFixed(digits).replace("-", "−") + "·10" + raised(exponent)));
  }
  const digits = Math.max(0, -Math.floor(Math.log10(step) + 1e-9) + (/^2\.5/.test(step.toExponential()) ? 1 : 0));
  return values.map((v) => {
    const [whole, part] = Math.abs(v).toFixed(digits).split(".");
    return (v < 0 ? "−" : "") + whole.replace(/\B(?=(\d{3})+$)/g, "\u202f") + (part ? "." + part : "");
  });
}

// {low, high, ticks: [[value, text]], place(value) in 0..1}
export function valueScale(values, { whole = false, log = false, share = false, zero = false }, height) {
  const wanted = Math.max(3, Math.round(height / 45));
  if (log) return logScale(values, wanted);
  let low = values.length ? values[0] : 0;
  let high = low;
  for (const value of values) {
    if (value < low) low = value;
    if (value > high) high = value;
  }
  if (whole || share || zero) low = Math.min(low, 0);
  if (whole) high = Math.max(high, 1);
  if (share && high <= 0) high = 1;
  if (high - low < 1e-12 * Math.max(Math.abs(high), Math.abs(low), 1e-300)) {
    const room = Math.max(1, Math.abs(high) * 1e-6);
    [low, high] = [low - room, high + room];
  }
  let step = niceStep((high - low) / wanted);
  if (whole) step = Math.max(1, step === 2.5 ? 2 : step);
  // The ends are ticks too: the curve stays within them.
  low = Math.floor(low / step + 1e-9) * step;
  high = Math.ceil(high / step - 1e-9) * step;
  const ticks = steps(low, high, step);
  const labels = texts(ticks, step);
  return { low, high, ticks: ticks.map((v, i) => [v, labels[i]]), place: (v) => (v - low) / (high - low) };
}

function logScale(values, wanted) {
  const sizes = values.filter((v) => v > 0).map(Math.log10);
  let low = Math.min(...sizes.length ? [sizes.reduce((a, b) => Math.min(a, b))] : [0]);
  let high = sizes.length ? sizes.reduce((a, b) => Math.max(a, b)) : 1;
  if (high - low < 0.7) {
    // Within a factor of five even steps are easier to read.
    const plain = valueScale(values, {}, wanted * 45);
    return plain;
  }
  low = Math.floor(low);
  high = Math.ceil(high);
  const stride = Math.max(1, Math.ceil((high - low) / wanted));
  const ticks = [];
  for (let e = low; e <= high; e += stride) {
    ticks.push(e);
    if (high - low <= 2) for (const k of [2, 5]) if (e < high) ticks.push(e + Math.log10(k));
  }
  const label = (e) => {
    const whole = Math.floor(e + 1e-9);
    const factor = Math.round(10 ** (e - whole));
    if (whole >= -3 && whole < 6) return short(Number((factor * 10 ** whole).toPrecision(3)));
    return (factor === 1 ? "" : factor + "·") + "10" + raised(whole);
  };
  return { low, high, ticks: ticks.map((e) => [10 ** e, label(e)]), place: (v) => (Math.log10(Math.max(v, 1e-300)) - low) / (high - low) };
}

// {from, to, ticks: [[seconds, text]], unit}
export function timeScale(from, to, width) {
  if (to - from < 0.5) to = from + 0.5;
  const wanted = Math.max(2, Math.floor(width / 90));
  const raw = (to - from) / wanted;
  const step = raw < 1 ? niceStep(raw) : TIMES.find((t) => t >= raw) || niceStep(raw / 604800) * 604800;
  const [size, unit] = to < 180 ? [1, "seconds"] : to < 3 * 3600 ? [60, "minutes"] : to < 3 * 86400 ? [3600, "hours"] : [86400, "days"];
  const ticks = steps(from, to, step);
  const labels = texts(ticks.map((t) => t / size), step / size).map((label) => label.replace(/(\.\d*?)0+$/, "$1").replace(/\.$/, ""));
  return { from, to, unit, ticks: ticks.map((t, i) => [t, labels[i]]), place: (t) => (t - from) / (to - from) };
}

// ------------------------------------------------------------- drawing

// The part of a series within a time, with the value that holds at its beginning.
export function within(points, from, to) {
  let first = 0;
  while (first < points.length && points[first][0] < from) first++;
  const found = points.slice(first).filter(([t]) => t <= to);
  return first > 0 ? [[from, points[first - 1][1]], ...found] : found;
}

// At most the first, least, greatest and last of what falls on a pixel.
function thin(pixels) {
  const kept = [];
  for (let i = 0; i < pixels.length; ) {
    const column = Math.floor(pixels[i][0]);
    let j = i;
    let [least, most] = [i, i];
    while (j < pixels.length && Math.floor(pixels[j][0]) === column) {
      if (pixels[j][1] < pixels[least][1]) least = j;
      if (pixels[j][1] > pixels[most][1]) most = j;
      j++;
    }
    for (const k of [...new Set([i, least, most, j - 1])].sort((a, b) => a - b)) kept.push(pixels[k]);
    i = j;
  }
  return kept;
}

const coordinate = (value) => String(Math.round(value * 10) / 10);

function path(pixels, isStep, end) {
  let data = "";
  let last = null;
  for (const [x, y] of thin(pixels)) {
    if (last === null) data = `M${coordinate(x)} ${coordinate(y)}`;
    else if (isStep) data += coordinate(y) === coordinate(last) ? "" : `H${coordinate(x)}V${coordinate(y)}`;
    else data += `L${coordinate(x)} ${coordinate(y)}`;
    last = y;
  }
  return data + (isStep && last !== null ? `H${coordinate(end)}` : "");
}

// Draws a chart: {unit, series: [{label, style, points, step}], marks: [{t, v, letter}], rises, scale: options of valueScale, from, to}.
// Returns what a cursor needs: {left, width, top, height, time, value}.
export function draw(svg, chart, width, height) {
  const shown = chart.series.map((series) => ({ ...series, points: within(series.points, chart.from, chart.to) }));
  const value = valueScale(shown.flatMap((series) => series.points.map(([, v]) => v)), chart.scale || {}, height - TOP - BOTTOM);
  const left = 16 + 6.9 * Math.max(2, ...value.ticks.map(([, label]) => label.length));
  const [inner, tall] = [Math.max(40, width - left - RIGHT), height - TOP - BOTTOM];
  const time = timeScale(chart.from, chart.to, inner);
  const x = (t) => left + Math.max(0, Math.min(1, time.place(t))) * inner;
  const y = (v) => TOP + tall - value.place(v) * tall;

  const parts = [];
  for (const [v, label] of value.ticks) {
    parts.push(element("path", { class: "grid", d: `M${coordinate(left)} ${coordinate(y(v))}h${coordinate(inner)}` }));
    parts.push(element("text", { class: "tick", x: coordinate(left - 7), y: coordinate(y(v) + 4), "text-anchor": "end" }, label));
  }
  for (const [t, label] of time.ticks) {
    parts.push(element("path", { class: "grid", d: `M${coordinate(x(t))} ${TOP}v${coordinate(tall)}` }));
    parts.push(element("text", { class: "tick", x: coordinate(x(t)), y: coordinate(TOP + tall + 16), "text-anchor": "middle" }, label));
  }
  parts.push(element("path", { class: "axis", d: `M${coordinate(left)} ${TOP}v${coordinate(tall)}h${coordinate(inner)}` }));
  parts.push(element("text", { class: "unit", x: coordinate(left + inner / 2), y: coordinate(height - 6), "text-anchor": "middle" }, "time of work, " + time.unit));
  for (const series of shown) {
    const pixels = series.points.map(([t, v]) => [x(t), y(v)]);
    if (!pixels.length) continue;
    parts.push(element("path", { class: "curve " + series.style, d: path(pixels, series.step, x(chart.to)) }));
    const [endX, endY] = [series.step ? x(chart.to) : pixels[pixels.length - 1][0], pixels[pixels.length - 1][1]];
    parts.push(element("circle", { class: "tip " + series.style, cx: coordinate(endX), cy: coordinate(endY), r: 3 }));
  }
  parts.push(...marks(chart, x, y, left, TOP + tall));
  svg.replaceChildren(...parts);
  svg.setAttribute("viewBox", `0 0 ${width} ${height}`);
  svg.setAttribute("width", width);
  svg.setAttribute("height", height);
  return { left, width: inner, top: TOP, height: tall, time, x, y };
}

// Rings, each with the letter of who found it: on the side where neither a curve that only gets better comes nor its bound. Where two
// would lie on each other the newer one stands; the table behind the curve has all of them.
function marks(chart, x, y, left, bottom) {
  const found = [];
  const rings = [];
  const letters = [];
  const meet = (a, b) => a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
  const shown = (chart.marks || []).filter((mark) => mark.v !== null && mark.t >= chart.from && mark.t <= chart.to);
  for (const mark of shown.reverse()) {
    const [cx, cy] = [x(mark.t), y(mark.v)];
    const ring = { left: cx - RING, right: cx + RING, top: cy - RING, bottom: cy + RING, cx, cy, letter: mark.letter };
    if (rings.some((other) => Math.abs(other.cx - cx) < RING && Math.abs(other.cy - cy) < RING)) continue;
    rings.push(ring);
    found.push(element("circle", { class: "find", cx: coordinate(cx), cy: coordinate(cy), r: 2.8 }));
  }
  for (const ring of rings) {
    // Below a curve that rises; at its foot, where the axis has its numbers, before it.
    const isBelow = chart.rises && ring.cy + LETTER.away + LETTER.high <= bottom;
    const isLeft = chart.rises && !isBelow && ring.cx - LETTER.away - LETTER.wide > left;
    const edge = ring.cx + (isLeft ? -LETTER.away : LETTER.away);
    const foot = isBelow ? ring.cy + LETTER.away + LETTER.high - 3 : Math.max(10, ring.cy - LETTER.away);
    const box = { left: isLeft ? edge - LETTER.wide : edge, right: isLeft ? edge : edge + LETTER.wide, top: foot - LETTER.high + 2, bottom: foot + 1 };
    if (letters.some((other) => meet(box, other)) || rings.some((other) => other !== ring && meet(box, other))) continue;
    letters.push(box);
    found.push(element("text", { class: "letter", x: coordinate(edge), y: coordinate(foot), ...(isLeft ? { "text-anchor": "end" } : {}) }, ring.letter));
  }
  return found.reverse();
}

// ------------------------------------------------------------- the picture

const STYLE = `text{font:12px system-ui,"DejaVu Sans",sans-serif;fill:#59636e}.title{font-size:16px;font-weight:600;fill:#1f2328}
.head{font-weight:600;fill:#1f2328}.ground{fill:#fff}.grid{stroke:#e3e7eb;fill:none}.axis{stroke:#59636e;fill:none}
.curve{fill:none;stroke-width:1.8;stroke-linejoin:round}.one{stroke:#0b62a8}.two{stroke:#b04a00;stroke-dasharray:6 3}
.tip{stroke:none}.tip.one{fill:#0b62a8}.tip.two{fill:#b04a00}.find{fill:#fff;stroke:#0b62a8;stroke-width:1.4}.letter{font-size:11px;font-weight:600;fill:#0b62a8;stroke:#fff;stroke-width:3px;paint-order:stroke}`;

// All charts in one file that stands for itself.
export function picture(title, facts, charts) {
  const [width, each] = [960, 260];
  const whole = element("svg", { xmlns: NAMESPACE, viewBox: `0 0 ${width} ${60 + each * charts.length}`, width, height: 60 + each * charts.length, role: "img" });
  whole.append(element("title", {}, title), element("desc", {}, facts), element("style", {}, STYLE),
    element("rect", { class: "ground", width: "100%", height: "100%" }),
    element("text", { class: "title", x: 16, y: 28 }, title), element("text", { x: 16, y: 48 }, facts));
  charts.forEach((chart, i) => {
    const group = element("g", { transform: `translate(0 ${60 + i * each})` });
    const inner = element("svg");
    draw(inner, chart, width, each - 30);
    const names = [chart.series.length > 1 ? ": " + chart.series.map((s) => s.label + (s.style === "two" ? " (dashed)" : "")).join(", ") : "",
      chart.makers ? "; " + chart.makers : ""].join("");
    group.append(element("text", { class: "head", x: 16, y: 14 }, `${chart.title}, ${chart.unit}${names}`));
    const body = element("g", { transform: "translate(0 20)" });
    body.append(...inner.childNodes);
    group.append(body);
    whole.append(group);
  });
  return '<?xml version="1.0" encoding="UTF-8"?>\n' + new XMLSerializer().serializeToString(whole) + "\n";
}
