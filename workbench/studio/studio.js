"use strict";
// The live page: asks its server for the session, sends edits, and follows the ad's files.

const token = new URLSearchParams(location.search).get("token") ?? "";

/**
 * What the page knows of its server. "touched" is when a touch that has no picture yet was made, "redrawn" how long the
 * last one took to become a picture, in ms. "plays": the ad, in its window; "fetches": the tag, anew.
 */
const live = {
  revision: 0,
  version: 0,
  state: {events: []},
  chosen: null,
  busy: Promise.resolve(),
  touched: null,
  redrawn: null,
  plays: false,
  fetches: false
};

/** The matrix's own tables of views and pictures, under keys that the session's do not use. */
const matrixTables = {views: {}, pictures: {}};

/** Frames of the videos, and the addresses of the videos that the numbers in them mean. */
const videoFrames = {stills: [], sources: []};

/** Gives the frames the numbers of the session's videos. */
function numberFrames() {
  const place = source => data.sources.indexOf(videoFrames.sources[source]);
  data.stills = videoFrames.stills
    .map(([at, picture, source]) => [at, picture, place(source)])
    .filter(([, , source]) => source >= 0);
}

const say = text => (byId("studio-said").textContent = text);

/** @return the answer, as an object; throws the server's complaint */
async function ask(method, path, body) {
  let response;
  try {
    response = await fetch(path, {
      method,
      headers: {"X-Token": token, ...(method === "POST" ? {"Content-Type": "application/json"} : {})},
      body: body && JSON.stringify(body),
      cache: "no-store",
    });
  } catch {
    throw new Error("The studio does not answer: has it ended?");
  }
  if (response.ok) return response.json();
  const text = await response.text();
  let complaint = text;
  try {
    complaint = JSON.parse(text).complaint;
  } catch {
    // A plain text.
  }
  throw new Error(complaint);
}

/** One after the other, so that each answer is newer than what the page shows. */
function inTurn(work) {
  live.busy = live.busy.then(work).catch(error => say(error.message));
  return live.busy;
}

// ------------------------------------------------------------------------------------------------------------- session

/** When the next frame is on the screen; soon, where no frames are drawn. */
const nextFrame = () =>
  new Promise(done => {
    requestAnimationFrame(() => setTimeout(done, 0));
    setTimeout(done, 200);
  });

/** Shows a session at a time: the device's screen at once, the rest after that. */
async function takeSession({news, tag, state, data: fresh}, time) {
  const {findings, remarks, matrix, pending} = data;
  Object.assign(data, fresh, {findings, remarks, matrix, pending});
  numberFrames();
  Object.assign(data.views, matrixTables.views);
  Object.assign(data.pictures, matrixTables.pictures);
  live.revision = news.revision;
  live.state = state;
  byId("studio-fetch").hidden = !tag;
  readSession();
  session.now = Math.min(time, sessionEnd);
  drawScreen();
  await nextFrame();
  if (live.touched !== null) live.redrawn = performance.now() - live.touched;
  live.touched = null;
  const focused = document.activeElement?.dataset?.id;
  addSession();
  showTrackers();
  setTime(session.now);
  showEvents();
  fillKinds();
  filterTrace();
  loadFindingsSoon();
  if (focused) document.querySelector(`.event[data-id="${live.chosen ?? focused}"]`)?.focus();
}

const loadSession = () => inTurn(async () => takeSession(await ask("GET", "session"), session.now));

/**
 * @param request an object, or a function that makes it of the session as it is then; null: nothing is done
 * @param said for the status line, or a function of the event that has been added
 */
function edit(request, said, time = session.now) {
  return inTurn(async () => {
    const before = new Set(live.state.events.map(({id}) => id));
    const body = typeof request === "function" ? request() : request;
    if (!body) return;
    const answer = await ask("POST", "edit", body);
    const added = answer.state.events.find(({id}) => !before.has(id));
    if (added) live.chosen = added.id;
    await takeSession(answer, time);
    say(typeof said === "function" ? said(added) : said);
  });
}

const eventActions = {
  choose(event) {
    live.chosen = event.id;
    go(event.at * 1e6);
    showEvents();
    document.querySelector(`.event[data-id="${event.id}"]`)?.focus();
  },
  move: (event, time) => eventActions.change(event, {at: time / 1e6}),
  /** By so many microseconds from where it is then: keys come faster than answers. */
  nudge(event, by) {
    edit(() => {
      const {events} = live.state;
      // The ad's own step has become one of the viewer's when it has been moved.
      const now = events.find(({id}) => id === event.id) ?? events.find(({id}) => id === live.chosen);
      const at = now && Math.min(Math.max(now.at * 1e6 + by, 0), sessionEnd) / 1e6;
      return now && !now.fixed && {do: "change", id: now.id, event: {at}};
    }, `${eventName(event)} moved.`);
  },
  change(event, values) {
    edit({do: "change", id: event.id, event: values}, `${eventName({...event, ...values})} changed.`);
  },
  remove(event) {
    live.chosen = null;
    edit({do: "remove", id: event.id}, `${eventName(event)} removed.`).then(() =>
      document.querySelector('.event[tabindex="0"]')?.focus()
    );
  },
};

function showEvents() {
  const {events, undo, redo} = live.state;
  addEventsLane(events, live.chosen, eventActions);
  showEditor(
    events.find(({id}) => id === live.chosen),
    eventActions
  );
  byId("undo").disabled = !undo;
  byId("redo").disabled = !redo;
  byId("reset").disabled = !events.some(({id}) => id > 0) && !undo;
  showTaps();
}

function addEvent(kind, time) {
  edit({do: "add", event: {kind, at: time / 1e6, ...eventKinds[kind].add(time)}}, added =>
    added ? `${eventName(added)}: added at ${short(added.at)} s.` : ""
  );
}

// ------------------------------------------------------------------------------------------------------------- touches

/** The controls that can be tapped now, the topmost last: [name, frame]. */
function tappableNow() {
  return framesOf(sightAt(session.now).tap, screenAt(session.now).views);
}

function touch(point, label) {
  live.touched = performance.now();
  const time = session.now;
  pause();
  return edit({do: "add", event: {kind: "touch", at: time / 1e6, point, label}}, `Tapped ${label || "the screen"}.`, time);
}

/** A place of the window on the upright screen, in points; null beside it. */
function pointAt({clientX, clientY}) {
  const upright = document.querySelector("#screen svg > g > g");
  if (!upright) return null;
  const {x, y} = new DOMPoint(clientX, clientY).matrixTransform(upright.getScreenCTM().inverse());
  const [width, height] = data.device.screen;
  return x >= 0 && y >= 0 && x <= width && y <= height ? [Math.round(x * 10) / 10, Math.round(y * 10) / 10] : null;
}

const isIn = ([x, y], [left, top, width, height]) =>
  x >= left && y >= top && x <= left + width && y <= top + height;

function addTouches() {
  const screen = byId("screen");
  screen.addEventListener("click", event => {
    const point = pointAt(event);
    if (!point) return;
    const hit = tappableNow().findLast(([, frame]) => isIn(point, frame));
    touch(point, hit ? labelOf(hit[0]) : "");
  });
  // What a click would tap.
  screen.addEventListener("pointermove", event => {
    const point = pointAt(event);
    const hit = point && tappableNow().findLast(([, frame]) => isIn(point, frame));
    screen.querySelector(".aimed")?.remove();
    if (hit) document.querySelector("#screen svg > g > g").append(drawMark(hit[1], "aimed"));
  });
  screen.addEventListener("pointerleave", () => screen.querySelector(".aimed")?.remove());
}

/** The same for the keyboard and for assistive technology: a button for each control. */
function showTaps() {
  const found = tappableNow();
  const key = JSON.stringify(found);
  const place = byId("taps");
  if (place.dataset.key === key) return;
  place.dataset.key = key;
  const focused = document.activeElement?.dataset?.tap;
  place.replaceChildren(
    ...found.map(([name, [x, y, width, height]]) =>
      html(
        "button",
        {type: "button", "data-tap": name, onclick: () => touch([x + width / 2, y + height / 2], labelOf(name))},
        labelOf(name)
      )
    )
  );
  if (focused) place.querySelector(`[data-tap="${focused}"]`)?.focus();
}

// --------------------------------------------------------------------------------------------------------------- trace

function fillKinds() {
  const counts = new Map();
  for (const [, {what}] of data.lines) counts.set(what, (counts.get(what) ?? 0) + 1);
  const select = byId("trace-kind");
  const chosen = select.value;
  select.replaceChildren(
    html("option", {value: ""}, "all"),
    ...[...counts].sort().map(([what, count]) => html("option", {value: what}, `${what} (${count})`))
  );
  select.value = counts.has(chosen) ? chosen : "";
}

const isShown = ([, fields]) => {
  const kind = byId("trace-kind").value;
  const text = byId("trace-text").value.toLowerCase();
  return (!kind || fields.what === kind) && (!text || JSON.stringify(fields).toLowerCase().includes(text));
};

function filterTrace() {
  let shown = 0;
  data.lines.forEach((line, n) => {
    rows[n].hidden = !isShown(line);
    shown += !rows[n].hidden;
  });
  byId("trace-count").textContent = shown === rows.length ? `${shown} lines` : `${shown} of ${rows.length} lines`;
}

function addTraceFilter() {
  byId("trace-kind").addEventListener("change", filterTrace);
  byId("trace-text").addEventListener("input", filterTrace);
  // As on the page, but to the next line that the filter leaves.
  byId("trace").addEventListener(
    "keydown",
    event => {
      const direction = {ArrowUp: -1, ArrowDown: 1}[event.key];
      if (!direction) return;
      event.preventDefault();
      event.stopPropagation();
      let next = (session.line ?? -1) + direction;
      while (rows[next]?.hidden) next += direction;
      if (!rows[next]) return;
      pause();
      setTime(data.lines[next][0]);
      markLine(next);
      showLines([next]);
    },
    {capture: true}
  );
}

/** Of several lines with the same time, the one that was chosen. */
function markLine(n) {
  rows[session.line]?.classList.remove("current");
  rows[session.line]?.removeAttribute("aria-current");
  session.line = n;
  rows[n].classList.add("current");
  rows[n].setAttribute("aria-current", "time");
  rows[n].scrollIntoView({block: "nearest"});
}

// ---------------------------------------------------------------------------------------------------------------- news

async function loadRest() {
  const {pending, stills, sources, ...matrix} = await ask("GET", "rest");
  if (!pending) {
    Object.assign(videoFrames, {stills, sources});
    numberFrames();
    const own = n => `m${n}`;
    matrixTables.views = Object.fromEntries(
      matrix.views.map((view, n) => [
        own(n),
        view.picture === undefined ? view : {...view, picture: own(view.picture)},
      ])
    );
    matrixTables.pictures = Object.fromEntries(matrix.pictures.map((picture, n) => [own(n), picture]));
    Object.assign(data.views, matrixTables.views);
    Object.assign(data.pictures, matrixTables.pictures);
    data.matrix = matrix.matrix.map(entry => ({
      ...entry,
      source: data.sources.indexOf(sources[entry.source]),
      drawing: [entry.drawing[0], entry.drawing[1].map(own)],
    }));
    addMatrix();
    addStory();
    session.drawn = "";
    drawScreen();
  }
  await loadFindings();
}

/** The findings with their moments in the session that is shown. */
async function loadFindings() {
  const {pending, ...lists} = await ask("GET", "lists");
  data.pending = Boolean(pending);
  Object.assign(data, lists);
  addFindings();
  addHead();
}

let findingsTimer;
/** Not after each edit of several: the rules are asked again. */
function loadFindingsSoon() {
  clearTimeout(findingsTimer);
  if (!data.pending) findingsTimer = setTimeout(() => inTurn(loadFindings), 400);
}

function complain(text, lead) {
  const place = byId("studio-complaint");
  place.hidden = !text;
  place.replaceChildren(...(text ? [lead, html("code", {}, text)] : []));
}

function takeNews({revision, version, complaint, plays, play}) {
  complain(complaint, "The ad cannot be read; the page shows its last version.");
  if (plays !== live.plays) say(plays ? "The ad plays in its window." : play || "The ad's window is closed.");
  live.plays = plays;
  // Other news may come first: of the findings, of the played ad.
  if (live.fetches && (complaint || revision > live.revision)) {
    say(complaint ? "" : "The tag has been fetched again.");
    live.fetches = false;
  }
  // After what is under way: an edit's answer may hold the same news.
  inTurn(async () => {
    if (revision > live.revision) await takeSession(await ask("GET", "session"), session.now);
    if (version !== live.version) await loadRest();
    live.version = version;
  });
}

function followNews() {
  const news = new EventSource(`news?token=${token}`);
  news.onmessage = ({data: text}) => takeNews(JSON.parse(text));
  news.onerror = () => complain("The studio does not answer: has it ended?", "");
}

// --------------------------------------------------------------------------------------------------------------- page

function addParts() {
  const parts = byId("studio-parts").content;
  const part = id => parts.getElementById(id);
  document.querySelector("header").after(part("studio-complaint"), part("studio-bar"));
  // What a person works on is first.
  document.querySelector("main").prepend(byId("session"));
  byId("now").after(part("taps"));
  document.querySelector(".player").after(part("palette"));
  byId("lanes").after(part("event-editor"));
  byId("line-heading").after(part("trace-filter"));
  document.querySelector(".kind").textContent = "Studio";
  document.title = `${data.title}: studio`;
  for (const [id, path] of [
    ["save-scenario", "scenario.json"],
    ["save-report", "report.html"],
    ["save-findings", "findings.txt"],
    ["save-findings-json", "findings.json"],
  ])
    byId(id).href = `${path}?token=${token}`;
}

function addStudioControls() {
  byId("undo").addEventListener("click", () => edit({do: "undo"}, "Undone."));
  byId("redo").addEventListener("click", () => edit({do: "redo"}, "Done again."));
  byId("reset").addEventListener("click", () => edit({do: "reset"}, "The ad's own course."));
  byId("studio-play").addEventListener("click", () => {
    say("The ad opens in its window…");
    inTurn(() => ask("POST", "play", {}));
  });
  byId("studio-fetch").addEventListener("click", () => {
    say("The tag is being fetched…");
    inTurn(async () => {
      live.fetches = true;
      try {
        await ask("POST", "fetch", {});
      } catch (error) {
        live.fetches = false;
        throw error;
      }
    });
  });
  byId("event-editor").addEventListener("submit", event => event.preventDefault());
  document.addEventListener("keydown", event => {
    if (!(event.ctrlKey || event.metaKey) || event.altKey || /^(INPUT|TEXTAREA)$/.test(event.target.tagName)) return;
    const key = event.key.toLowerCase();
    const what = key === "y" || (key === "z" && event.shiftKey) ? "redo" : key === "z" ? "undo" : null;
    if (!what) return;
    event.preventDefault();
    byId(what).click();
  });
  // The taps are those of the moment that is shown.
  new MutationObserver(showTaps).observe(byId("clock"), {childList: true, characterData: true, subtree: true});
  addEventListener("resize", () => requestAnimationFrame(showEvents));
}

data.pending = true;
addParts();
addStudioControls();
addTouches();
addPalette(addEvent);
addTraceFilter();
addFindings();
addHead();
fillKinds();
filterTrace();
loadSession();
followNews();
