// What is known of a run, from its events; and how numbers and times are written. Nothing here touches the page.

const KEPT_POINTS = 8; // whose values are kept, as the server does
const MOST_SILENT = 30; // seconds without a word; a run that works speaks five times a second
const THIN = "\u202f"; // between groups of digits
const TIED = "\u00a0"; // between a number and its unit

// ------------------------------------------------------------- numbers and times

// A value of the JSON lines, a number or a text "p/q", as a number to draw.
export function number(value) {
  if (value === null || value === undefined) return null;
  if (typeof value === "number") return value;
  const [above, below] = String(value).split("/");
  const found = Number(above) / (below === undefined ? 1 : Number(below));
  return Number.isFinite(found) ? found : null;
}

const EXACT = /^-?\d+(\/\d+)?$/;

const parts = (value) => {
  const [above, below] = String(value).split("/");
  return [BigInt(above), BigInt(below === undefined ? 1 : below)];
};

const isExact = (value) => EXACT.test(String(value));
const isValue = (value) => number(value) !== null || (value !== null && value !== undefined && isExact(value));

// The difference of two values as a number, and its sign, which is exact however long they are.
export function difference(a, b) {
  if ((typeof a === "number" && typeof b === "number") || !isExact(a) || !isExact(b)) {
    const found = number(a) - number(b);
    return { amount: found, sign: Math.sign(found) };
  }
  const [[p, q], [r, s]] = [parts(a), parts(b)];
  const found = p * s - r * q;
  return { amount: number(`${found}/${q * s}`), sign: found < 0n ? -1 : found > 0n ? 1 : 0 };
}

// The same to be read: exact as long as it is short, "≈" before what was rounded.
export function text(value) {
  if (value === null || value === undefined) return "–";
  const digits = String(value);
  if (/^-?\d{1,16}$/.test(digits)) return grouped(digits);
  if (/^-?\d+\/\d+$/.test(digits) && digits.length <= 12) return digits.replace("-", "−");
  const found = number(value);
  if (found === null) return digits.length > 24 ? digits.slice(0, 12) + "… (" + digits.length + " digits)" : digits;
  return (typeof value === "number" ? "" : "≈ ") + short(found);
}

// The same with all its digits, as long as they can be read at all.
export function exactText(value) {
  const digits = String(value);
  return isExact(value) && digits.length <= 80 ? digits.split("/").map(grouped).join("/") : text(value);
}

export function grouped(digits) {
  const sign = digits.startsWith("-") ? "−" : "";
  return sign + digits.replace("-", "").replace(/\B(?=(\d{3})+$)/g, THIN);
}

// A number with about four digits.
export function short(value) {
  if (value === null) return "–";
  const size = Math.abs(value);
  if (size !== 0 && (size >= 1e9 || size < 1e-3)) return power(value);
  if (size >= 1000 || Number.isInteger(value)) return grouped(String(Math.round(value)));
  return String(Number(value.toPrecision(4))).replace("-", "−");
}

function power(value) {
  const [factor, exponent] = value.toExponential(2).split("e");
  return Number(factor).toString().replace("-", "−") + "·10" + raised(Number(exponent));
}

export function raised(exponent) {
  return String(exponent).replace(/./g, (c) => (c === "-" ? "⁻" : "⁰¹²³⁴⁵⁶⁷⁸⁹"[c]));
}

const UNITS = [[31557600, "year"], [86400, "d"], [3600, "h"], [60, "min"], [1, "s"]];

// A length of time in its two largest units.
export function span(seconds) {
  if (seconds < 10) return (Math.round(seconds * 10) / 10).toFixed(1) + TIED + "s";
  let rest = Math.round(seconds);
  const first = UNITS.findIndex(([size]) => rest >= size);
  const parts = [];
  for (const [size, name] of UNITS.slice(first, first + 2)) {
    const count = Math.floor(rest / size);
    rest -= count * size;
    if (count) parts.push(grouped(String(count)) + TIED + (name === "year" && count > 1 ? "years" : name));
  }
  return parts.join(" ");
}

// About so long, for an estimate.
export function about(seconds) {
  for (const [size, name] of UNITS) {
    if (seconds >= size || size === 1) {
      const count = seconds / size;
      const shown = count >= 1e6 ? "more than a million" : count >= 10 ? grouped(String(Math.round(count))) : String(Number(count.toPrecision(2)));
      return shown + TIED + (name === "year" && count !== 1 ? "years" : name);
    }
  }
  return "";
}

export function percent(share) {
  const value = 100 * share;
  if (value >= 10 || value === 0) return Math.floor(value * 10) / 10 + TIED + "%";
  return value >= 0.001 ? Number(value.toPrecision(2)) + TIED + "%" : "below 0.001" + TIED + "%";
}

export function count(value, word) {
  return grouped(String(value)) + " " + word + (value === 1 ? "" : "s");
}

// ------------------------------------------------------------- the run

export class Run {
  constructor() {
    this.reset();
  }

  reset() {
    this.events = [];
    this.start = null;
    this.end = null;
    this.failure = null;
    this.last = null; // progress
    this.time = 0; // seconds of work, as last told
    this.told = 0; // when, by the clock of the page
    this.isPaused = false;
    this.best = null;
    this.lastFind = undefined; // its time
    this.bestBy = ""; // its finder's letter
    this.bestHolder = null; // its point, with values
    this.bound = null;
    this.points = []; // the last ones, with their values
    this.pointCount = 0;
    this.finds = []; // {t, v, letter}
    this.series = { best: [], bound: [], points: [], violated: [], share: [], rate: [], basis: [], collected: [] };
    this.options = new Map(); // key: {…, value, asked}
  }

  get sense() {
    return this.start ? this.start.sense : null;
  }

  // Seconds of work by now: between two events the clock of the page goes on.
  now(isLive) {
    const goesOn = isLive && this.start && !this.end && !this.failure && !this.isPaused;
    const since = (performance.now() - this.told) / 1000;
    return this.time + (goesOn && since < MOST_SILENT ? since : 0);
  }

  take(event) {
    this.events.push(event);
    this.time = Math.max(this.time, event.time);
    this.told = performance.now();
    const take = this["_" + event.event];
    if (take) take.call(this, event);
  }

  _start(event) {
    this.start = event;
    for (const option of event.options || []) this.options.set(option.key, { ...option, asked: null });
  }

  _progress(event) {
    this.last = event;
    this.pointCount = Math.max(this.pointCount, event.points || 0);
    this._better(event.time, event.best, null);
    this._bounded(event.time, event.bound);
    const { series } = this;
    this._add(series.violated, event.time, event.violated);
    this._add(series.share, event.time, event.share === null || event.share === undefined ? null : 100 * event.share);
    this._add(series.rate, event.time, event.rate);
    this._add(series.basis, event.time, event.basis);
    this._add(series.collected, event.time, event.collected);
    this._add(series.points, event.time, event.points);
  }

  _add(series, time, value) {
    const found = number(value);
    if (found !== null) series.push([time, found]);
  }

  _point(event) {
    this.points.push(event);
    this.pointCount = Math.max(this.pointCount, this.points.length);
    this._better(event.time, event.objective, event);
    if (event.values && isValue(event.objective) && difference(event.objective, this.best).sign === 0) this._hold(event);
    if (this.points.length > KEPT_POINTS) this._forget(this.points.shift());
    if (event.objective === null) {
      this.lastFind = event.time;
    }
  }

  // The best point's values stay, however many worse ones come after it.
  _hold(point) {
    const old = this.bestHolder;
    this.bestHolder = point;
    if (old && !this.points.includes(old)) this._forget(old);
  }

  _forget(point) {
    if (point.values && point !== this.bestHolder) Object.assign(point, { values: null, omitted: true });
  }

  // `point`: the event that brings it, if one does.
  _better(time, value, point) {
    if (!isValue(value)) return;
    const sign = this.best === null ? 1 : difference(value, this.best).sign * (this.sense === "max" ? 1 : -1);
    const isNews = sign > 0;
    if (!isNews && (sign < 0 || this.bestBy || !point)) return;
    if (isNews) {
      this.best = value;
      this.bestBy = "";
      this._hold(null);
      this.lastFind = time;
      this._add(this.series.best, time, value);
    }
    if (point) {
      this.bestBy = point.letter;
      this.finds.push({ t: time, v: number(value), letter: point.letter, by: point.by });
    }
  }

  _bounded(time, value) {
    if (!isValue(value) || (this.bound !== null && difference(value, this.bound).sign === 0)) return;
    this.bound = value;
    this._add(this.series.bound, time, value);
  }

  _bound(event) {
    this._bounded(event.time, event.bound);
  }

  _action(event) {
    if (event.action === "pause") this.isPaused = true;
    if (event.action === "go on") this.isPaused = false;
    if (event.action === "set" && this.options.has(event.key)) this.options.get(event.key).asked = event.value;
  }

  _setting(event) {
    const option = this.options.get(event.key);
    if (option) Object.assign(option, { value: Number(event.value), asked: null });
  }

  _failure(event) {
    this.failure = event;
  }

  _end(event) {
    this.end = event;
    this._better(event.time, event.objective, null);
    this._bounded(event.time, event.bound);
    this.pointCount = Math.max(this.pointCount, event.points || 0);
  }

  // The best point's values: those of the answer, or of the best point so far.
  get bestPoint() {
    if (this.end && this.end.values) return { values: this.end.values, objective: this.end.objective };
    return this.best === null ? this.points.find((p) => p.values) || null : this.bestHolder;
  }

  // How far the best value is from the bound: {isMet, amount, share}, or null; of what no number can hold amount and share are null.
  get gap() {
    if (this.best === null || this.bound === null) return null;
    const { amount, sign } = difference(this.best, this.bound);
    const size = number(this.best);
    const share = amount === null || size === null ? null : Math.abs(amount) / Math.max(1, Math.abs(size));
    return { isMet: sign === 0, amount: amount === null ? null : Math.abs(amount), share };
  }
}

// ------------------------------------------------------------- in words

const ENDS = {
  optimal: (run) => (run.best === null ? ["A point was found.", "It is all that was asked for."]
    : [`${text(run.best)} is the best value there is.`, "That is proven."]),
  all: (run) => [`All points are known: ${grouped(String(run.end.points))}.`, "That there are no others is proven."],
  feasible: (run) => [run.best === null ? "It ended with a point." : `It ended with the value ${text(run.best)}.`, "Whether there is a better one stays open."],
  interrupted: (run) => [run.end.values ? (run.best === null ? "Stopped, with a point." : `Stopped, with the value ${text(run.best)}.`)
    : "Stopped before a point was known.", run.end.values ? "Whether there is a better one stays open." : "Whether there is one stays open."],
  unknown: () => ["It ended without a point.", "That there is none is not proven either."],
  unbounded: () => ["There are better and better points, without end.", "The ray that leads to them is proven."],
  infeasible: () => ["There is no point.", "That is proven."],
};

// {state, pill, sentence, lead, advice}: what a glance must tell. `link`: {connected, more, isLog, silent, unheard}; `time`: of work, by now.
export function story(run, link, time) {
  if (run.end) {
    const [sentence, advice] = (ENDS[run.end.status] || (() => [`It ended: ${run.end.status}.`, ""]))(run);
    return { state: "over", pill: "over", sentence, lead: `Over after ${span(run.end.time)}.`, advice: [advice, gapText(run)].filter(Boolean).join(" ") };
  }
  if (run.failure) return { state: "failed", pill: "failed", sentence: "The run has failed.", lead: "", advice: run.failure.text };
  if (!link.connected) {
    return { state: "lost", pill: "no connection", sentence: run.start ? "The page has lost the run." : "Connecting to the run",
      lead: "", advice: run.start ? `The last word came ${span(link.unheard)} ago, and what it shows is as old. It goes on asking.` : "The page shows what happens as it happens." };
  }
  if (!link.more) return { state: "failed", pill: "gone", sentence: "The run is gone.", lead: "", advice: "It ended without an answer: killed, perhaps." };
  if (!run.start) {
    return link.isLog ? { state: "reading", pill: "no run yet", sentence: "The log holds no run yet.", lead: "", advice: "The page goes on as soon as it does." }
      : { state: "reading", pill: "reading", sentence: "The model is being read.", lead: "", advice: "Large ones take a while." };
  }
  const value = run.best !== null ? `best value ${text(run.best)}` : run.pointCount ? count(run.pointCount, "point") + " so far" : "no point yet";
  if (run.isPaused) {
    return { state: "paused", pill: "paused", sentence: `Paused, ${value}.`, lead: "Nothing moves.", advice: "Its clock stands still too, until it goes on." };
  }
  if (link.silent > MOST_SILENT) {
    return { state: "silent", pill: "silent", sentence: `No word for ${span(link.silent)}, ${value}.`, lead: "",
      advice: link.isLog ? "The log does not grow, and holds no end: paused, or ended without one." : "The run is there, but does not speak: stopped from outside, perhaps." };
  }
  return { state: "running", pill: "running", sentence: `Running, ${value}.`, ...waiting(run, time) };
}

function gapText(run) {
  const gap = run.gap;
  if (!gap || gap.isMet || gap.share === null) return "";
  return `At most ${short(gap.amount)} (${percent(gap.share)}) could be gained.`;
}

// Whether waiting pays.
function waiting(run, now) {
  const left = run.last ? number(run.last.left_seconds) : null;
  const since = run.lastFind === undefined ? null : now - run.lastFind;
  const gap = gapText(run);
  const limit = run.start.limit;
  const ends = limit ? ` It ends by itself in ${span(Math.max(0, limit - now))} at the latest.` : "";
  const isNear = left !== null && left < 14 * 86400 && (!limit || now + left < 1.5 * limit);
  if (isNear && run.last.share >= 0.01) {
    const what = run.best !== null ? "it is proven what is best" : run.pointCount ? "all points are known" : "it is certain whether there is a point";
    return { lead: "Waiting pays:", advice: `in about ${about(left)} ${what}. ${gap}${ends}` };
  }
  const far = left !== null ? ` A proof would take about ${about(left)}.` : "";
  if (since === null) {
    const near = run.last && run.last.violated ? ` The nearest one breaks ${count(run.last.violated, "bound")}.` : "";
    return { lead: "Too early to tell whether waiting pays.", advice: `No point is known, nor that there is none.${near}${far}${ends}` };
  }
  if (since < Math.max(60, now / 4)) {
    return { lead: "Waiting pays:", advice: `${run.best === null ? "" : "better "}points still come, the last one ${span(since)} ago. ${gap}${far}${ends}` };
  }
  return { lead: "Waiting may bring little:", advice: `${run.best === null ? "no other point" : "nothing better"} for ${span(since)}, and no end is in sight. ${gap}${far}${ends}` };
}

// A line of the log, or "" for what is no news.
export function logText(event, run) {
  switch (event.event) {
    case "start": return `The engines begin: ${[event.searches ? count(event.searches, "process").replace("processs", "processes") + " of the search" : "",
      event.threads ? count(event.threads, "thread") + " of the complete search" : ""].filter(Boolean).join(", ")}.`;
    case "point": return event.objective === null ? `${event.letter} has a point.` : `${event.letter} has a point of value ${text(event.objective)}.`;
    case "bound": return `Proven: none is ${run.sense === "max" ? "above" : "below"} ${text(event.bound)}.`;
    case "action": return { pause: "Paused from the page.", "go on": "Goes on.", stop: "Stopped from the page, with the answer.",
      set: `${event.key} = ${event.value} is asked for.` }[event.action] || "";
    case "setting": return `The search has taken ${event.key} = ${event.value}.`;
    case "failure": return `Failed: ${event.text}`;
    case "end": return [`End: ${event.status}.`, ...(event.notes || [])].join(" ");
    default: return "";
  }
}
