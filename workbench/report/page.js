"use strict";
// Puts the page together, and moves through the session.

const byId = id => document.getElementById(id);
const calm = matchMedia("(prefers-reduced-motion: reduce)");

/** Times at which something happens, for steps from one to the next. */
let moments = [];
/** What the viewer touches: [time, point]. */
let touches = [];
const touchLasts = 700000;

const session = {now: 0, playing: false, frame: -1, drawn: ""};

/** Reads what follows from data; again when they have changed. */
function readSession() {
  sessionEnd = Math.max(data.end, 1);
  moments = [...new Set([0, ...data.lines.map(([at]) => at), ...data.frames.map(([at]) => at), sessionEnd])]
    .filter(at => at <= sessionEnd)
    .sort((a, b) => a - b);
  touches = data.lines
    .filter(([, fields]) => fields.what === "step" && Array.isArray(fields.touch))
    .map(([at, fields]) => [at, fields.touch]);
  byId("scrubber").max = sessionEnd;
  readLabels();
  session.drawn = "";
  session.line = undefined;
}

function sightAt(time) {
  const entry = data.sights[indexAt(data.sights, time)];
  return entry ? entry[1] : {open: false, close: false, tap: []};
}

/** The session's screen at a time, for drawDevice(). */
function screenAt(time) {
  const frame = data.frames[Math.max(indexAt(data.frames, time), 0)];
  const turned = Math.abs(frame[1]) % 180 === 90;
  return {
    screen: data.device.screen,
    turn: frame[1],
    views: frame[2],
    video: videoAt(time),
    phone: data.device.phone,
    insets: turned ? data.device.landscape : data.device.portrait,
  };
}

/** One sentence on what the viewer sees and hears. */
function sentenceAt(time) {
  const sight = sightAt(time);
  if (!sight.open) return "No ad is open.";
  const video = videoAt(time);
  const parts = [
    video.state === "absent"
      ? "no video"
      : `video ${video.state}` +
        (video.duration ? ` at ${video.position.toFixed(1)} of ${video.duration.toFixed(1)} s` : ""),
  ];
  if (sight.sound) parts.push("with sound");
  parts.push(sight.close ? "close can be tapped" : "close cannot be tapped");
  if (sight.other) parts.push("another screen covers the ad");
  const text = parts.join(", ") + ".";
  return text[0].toUpperCase() + text.slice(1);
}

// -------------------------------------------------------------------------------------------------------------- screen

/** Rectangles of the named controls in a frame: from their views' places. */
function framesOf(names, views) {
  return views
    .map(n => data.views[n])
    .filter(view => names.includes(view.name))
    .map(view => {
      const [x, y, width, height] = view.at;
      const [w, h] = Math.abs(view.turn ?? 0) % 180 === 90 ? [height, width] : [width, height];
      return [view.name, [x - w / 2, y - h / 2, w, h]];
    });
}

function drawScreen() {
  const shown = screenAt(session.now);
  const sight = sightAt(session.now);
  const touch = touches.find(([at]) => session.now >= at && session.now - at < touchLasts);
  const video = stillOf(shown.video) ?? shown.video.position.toFixed(1);
  const options = `${byId("show-taps").checked} ${byId("show-safe").checked}`;
  const state = [shown.turn, shown.views, touch, sight.tap, options].join("|");
  if (state === session.drawn && video === session.video) return;
  session.drawn = state;
  session.video = video;
  if (!byId("show-safe").checked) shown.insets = undefined;
  if (byId("show-taps").checked)
    shown.marks = framesOf(sight.tap, shown.views).map(([name, frame]) => [
      frame,
      name === "btnClose" ? "tappable close" : "tappable",
    ]);
  shown.touch = touch && touch[1];
  const device = drawDevice(shown, "The device's screen");
  device.setAttribute("aria-describedby", "now");
  byId("screen").replaceChildren(device);
  byId("screen").className = Math.abs(shown.turn) % 180 === 90 ? "turned" : "";
}

// --------------------------------------------------------------------------------------------------------------- trace

const rows = [];

function addTrace() {
  rows.length = 0;
  data.lines.forEach(([at, fields], n) => {
    const row = html(
      "li",
      {
        onclick: () => {
          go(at);
          showLines([n]);
        },
      },
      html("span", {class: "at"}, (at / 1e6).toFixed(3)),
      html("span", {class: "what"}, fields.what),
      html("span", {class: "rest"}, shortened(fields))
    );
    rows.push(row);
  });
  byId("trace").replaceChildren(...rows);
}

/** Shows lines of the trace whole, below a label. */
function showLines(lines, label = "") {
  const most = 8;
  const texts = lines.slice(0, most).map(n => lineText(data.lines[n]));
  if (lines.length > most) texts.push(`and ${lines.length - most} more`);
  // The label of a single line is the line itself.
  if (label && label !== texts[0]) texts.unshift(label);
  byId("line").textContent = texts.join("\n");
}

function followTrace() {
  const last = indexAt(data.lines, session.now);
  if (last === session.line) return;
  const before = session.line ?? -1;
  for (let n = Math.min(before, last) + 1; n <= Math.max(before, last); ++n)
    rows[n].classList.toggle("past", n <= last);
  rows[session.line]?.classList.remove("current");
  rows[session.line]?.removeAttribute("aria-current");
  session.line = last;
  const row = rows[last];
  if (!row) return;
  row.classList.add("current");
  row.setAttribute("aria-current", "time");
  // Within its own list only: the page must stay where it is.
  const list = byId("trace");
  list.scrollTop = row.offsetTop - list.clientHeight / 2;
}

// ---------------------------------------------------------------------------------------------------------------- time

function setTime(time) {
  session.now = Math.min(Math.max(time, 0), sessionEnd);
  const scrubber = byId("scrubber");
  scrubber.value = session.now;
  const sentence = sentenceAt(session.now);
  scrubber.setAttribute("aria-valuetext", `${seconds(session.now)} seconds, ${sentence}`);
  byId("clock").textContent = `${(session.now / 1e6).toFixed(3)} of ${(sessionEnd / 1e6).toFixed(3)} s`;
  byId("now").textContent = sentence;
  byId("lanes").style.setProperty("--now", percent(session.now) / 100);
  drawScreen();
  followTrace();
}

function step(direction) {
  pause();
  // A slider says its own value; the buttons beside it say nothing of the moment to which they lead.
  const byButton = ["back", "on"].includes(document.activeElement?.id);
  byId("now").setAttribute("aria-live", byButton ? "polite" : "off");
  const next = direction > 0 ? moments.find(at => at > session.now) : moments.findLast(at => at < session.now);
  setTime(next ?? session.now);
}

function pause() {
  session.playing = false;
  byId("play").setAttribute("aria-label", "Play");
  byId("play").classList.remove("playing");
}

function play() {
  if (session.now >= sessionEnd) setTime(0);
  session.playing = true;
  byId("now").setAttribute("aria-live", "off");
  byId("play").setAttribute("aria-label", "Pause");
  byId("play").classList.add("playing");
  let before = performance.now();
  let exact = session.now;
  function advance(time) {
    if (!session.playing) return;
    exact += (time - before) * 1000 * Number(byId("speed").value);
    before = time;
    // Without motion the picture changes only where the session does.
    setTime(
      calm.matches
        ? moments[
            indexAt(
              moments.map(at => [at]),
              exact
            )
          ]
        : exact
    );
    if (exact >= sessionEnd) pause();
    else requestAnimationFrame(advance);
  }
  requestAnimationFrame(advance);
}

/** To a moment, from anywhere on the page. */
function go(time) {
  pause();
  setTime(time);
}

function goThere(time, event) {
  event?.preventDefault();
  go(time);
  byId("session").scrollIntoView({behavior: calm.matches ? "auto" : "smooth"});
  byId("scrubber").focus({preventScroll: true});
}

function addControls() {
  const scrubber = byId("scrubber");
  scrubber.addEventListener("input", () => {
    pause();
    setTime(Number(scrubber.value));
  });
  byId("back").addEventListener("click", () => step(-1));
  byId("on").addEventListener("click", () => step(1));
  byId("play").addEventListener("click", () => (session.playing ? pause() : play()));
  for (const id of ["show-taps", "show-safe"]) byId(id).addEventListener("change", drawScreen);
  byId("trace").addEventListener("keydown", event => {
    const direction = {ArrowUp: -1, ArrowDown: 1}[event.key];
    const line = data.lines[(session.line ?? 0) + direction];
    if (!direction || !line) return;
    event.preventDefault();
    event.stopPropagation();
    pause();
    // Several lines may have the same time.
    const target = (session.line ?? 0) + direction;
    setTime(line[0]);
    showLines([target]);
  });
  document.addEventListener("keydown", event => {
    const inField =
      /^(SELECT|TEXTAREA)$/.test(event.target.tagName) ||
      (event.target.tagName === "INPUT" && event.target !== scrubber);
    if (inField || event.altKey || event.ctrlKey || event.metaKey) return;
    const actions = {
      ArrowLeft: () => step(-1),
      ArrowRight: () => step(1),
      " ": () => (session.playing ? pause() : play()),
    };
    if (event.target === scrubber)
      Object.assign(actions, {
        ArrowUp: actions.ArrowRight,
        ArrowDown: actions.ArrowLeft,
        Home: () => go(0),
        End: () => go(sessionEnd),
        PageUp: () => go(session.now + 1e6),
        PageDown: () => go(session.now - 1e6),
      });
    if (event.key === " " && /^(BUTTON|A|SUMMARY)$/.test(event.target.tagName)) return;
    const action = actions[event.key];
    if (!action) return;
    event.preventDefault();
    action();
  });
}

// ---------------------------------------------------------------------------------------------------------------- head

function addHead() {
  const {summary, device} = data;
  const time = value => (value === null || value === undefined ? "never" : `${value} s`);
  byId("title").textContent = data.title;
  byId("device").textContent =
    `${device.name ? modelName(device.name) : device.phone ? "Phone" : "Tablet"}, ` +
    `${device.screen[0]} × ${device.screen[1]} points. ` +
    `${data.lines.length} lines of trace, ${seconds(sessionEnd)}\u00a0s.`;
  const closed = closedAt();
  const due = data.trackers.filter(({due, sent}) => due !== null || sent !== null);
  const sent = data.trackers.filter(entry => entry.sent !== null).length;
  const lost = due.filter(entry => entry.sent === null).length;
  const figures = [
    [
      "Close can be tapped",
      time(summary.closeButtonTappable),
      data.sights.some(([, sight]) => sight.close) ? "" : "bad",
    ],
    ["Closed", closed === undefined ? "never" : `${seconds(closed)} s`, ""],
    ["Requests of trackers", String(sent), ""],
    ["Due, never sent", String(lost), lost > 0 ? "bad" : ""],
    ["Main thread blocked", `${summary.mainThreadBlocked ?? 0} s`, summary.mainThreadBlocked > 0.1 ? "bad" : ""],
    [
      "Findings",
      data.pending ? "…" : String(data.findings.length),
      data.findings.some(({severity}) => severity !== "note") ? "bad" : "",
    ],
  ];
  byId("figures").replaceChildren(
    ...figures.map(([name, value, className]) =>
      html("div", {class: className}, html("dt", {}, name), html("dd", {}, value))
    )
  );
}

/** When the session's last ad closed; absent if it stays open, or never opened. */
function closedAt() {
  const last = data.sights.map(([, sight]) => sight.open).lastIndexOf(true);
  return last < 0 ? undefined : data.sights[last + 1]?.[0];
}

/** The moments that a person would ask for first: [time, caption, time of the picture]. */
function storyMoments() {
  const found = [];
  const add = (time, caption, picture = time) => {
    const near = found.find(([other]) => Math.abs(other - time) < 30000);
    if (time === undefined || time === null) return;
    if (near) near[1] += ", " + caption;
    else found.push([time, caption, picture]);
  };
  const first = test => data.sights.find(([, sight]) => test(sight))?.[0];
  add(
    first(sight => sight.open),
    "opened"
  );
  add(
    first(sight => sight.video),
    "first picture"
  );
  add(
    first(sight => sight.close),
    "close can be tapped"
  );
  let turn = data.frames[0]?.[1];
  for (const [at, now] of data.frames) {
    if (now !== turn && at > 0 && found.length < 7)
      add(at, Math.abs(now) % 180 === 90 ? "turned to landscape" : "turned upright");
    turn = now;
  }
  const stall = data.video.find(([, state]) => state === "stalled");
  add(stall?.[0], "video stalls");
  const other = first(sight => sight.other);
  add(other, "another screen opens");
  const end = data.video.find(
    ([, state, position, duration]) => state !== "playing" && duration > 0 && position >= duration - 0.01
  );
  add(end?.[0], "video ends");
  data.video.forEach(([at, , , , source], n) => {
    if (n === 0 || source === data.video[n - 1][4] || found.length > 9) return;
    const plays = data.video.find(([later, state], m) => m >= n && later >= at && state === "playing");
    add(at, "next video", plays?.[0]);
  });
  const closed = closedAt();
  if (closed !== undefined) found.push([closed, "closed", closed - 1]);
  return found.sort((a, b) => a[0] - b[0]);
}

function addStory() {
  byId("story").replaceChildren(
    ...storyMoments().map(([time, caption, picture]) =>
      html(
        "li",
        {},
        html(
          "button",
          {type: "button", onclick: () => goThere(time)},
          drawDevice({...screenAt(picture), insets: undefined}),
          html("span", {class: "at"}, `${seconds(time)} s`),
          html("span", {}, caption)
        )
      )
    )
  );
}

function addFindings() {
  const place = byId("findings");
  place.replaceChildren();
  if (data.pending) place.append(html("p", {class: "quiet"}, "The check is under way."));
  else if (data.findings.length === 0) place.append(html("p", {class: "good"}, "None."));
  else
    place.append(
      html(
        "ul",
        {class: "findings"},
        ...data.findings.map(({rule, severity, sentence, at}) =>
          html(
            "li",
            {class: severity},
            html("span", {class: "severity"}, severity),
            " ",
            at === null
              ? sentence
              : html("a", {href: `#t=${at / 1e6}`, onclick: event => goThere(at, event)}, `${sentence} (${seconds(at)} s)`),
            " ",
            html("code", {}, rule)
          )
        )
      )
    );
  if (data.remarks.length > 0)
    place.append(
      html(
        "details",
        {},
        html("summary", {}, `${data.remarks.length} remarks on the ad`),
        html("ul", {}, ...data.remarks.map(remark => html("li", {}, remark)))
      )
    );
}

/** Shows the session of data; again when they have changed. */
function addSession() {
  readSession();
  addHead();
  addStory();
  addTicks();
  addLanes(item => showLines(item.lines, item.label), go);
  addTrace();
}

addSession();
addControls();
addFindings();
const showTrackers = addLedger(goThere);
if (data.matrix.length > 0) addMatrix();
/** The time that the address names ("#t=9.8"), in microseconds; null without one. */
function namedTime() {
  const named = /^#t=([\d.]+)$/.exec(location.hash);
  return named && Number(named[1]) * 1e6;
}

// Begins where the address says, or else with a picture that shows something.
setTime(
  namedTime() ?? storyMoments().find(([, caption]) => /close can/.test(caption))?.[0] ?? moments.at(-1) / 2
);
addEventListener("hashchange", () => {
  const time = namedTime();
  if (time !== null) goThere(time);
});
