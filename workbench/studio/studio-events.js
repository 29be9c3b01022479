"use strict";
// What a person adds to the session: names, places on the axis, and the form of the chosen one. No network.

const eventKinds = {
  stall: {name: "Stall", add: () => ({seconds: 3})},
  turn: {name: "Turn", add: time => ({orientation: isTurned(time) ? 1 : 3})},
  servers: {name: "Servers fail", add: () => ({server: "*", seconds: 0})},
  videoFails: {name: "Video fails", add: () => ({})},
  call: {name: "Call", add: () => ({seconds: 4})},
  leave: {name: "Leave the app", add: () => ({seconds: 4})},
  volume: {name: "Volume", add: () => ({volume: 0})},
};

const orientations = {1: "upright", 2: "upside down", 3: "landscape, left", 4: "landscape, right"};

function isTurned(time) {
  return Math.abs(screenAt(time).turn) % 180 === 90;
}

/** Seconds for people: "5", "5.25". */
const short = number => String(Math.round(number * 1000) / 1000);

/** What an event is, in a few words. */
function eventName(event) {
  const lasts = event.seconds > 0 ? ` ${short(event.seconds)} s` : "";
  switch (event.kind) {
    case "touch":
      return `Tap ${event.label || "the screen"}`;
    case "turn":
      return `Turn: ${orientations[event.orientation]}`;
    case "stall":
      return `Stall${lasts || " without end"}`;
    case "servers":
      return (event.server === "*" ? "Servers fail" : `${event.server.replace(/^https?:\/\//, "")} fails`) + lasts;
    case "call":
      return `Call${lasts}`;
    case "leave":
      return `Away${lasts}`;
    case "volume":
      return `Volume ${Math.round(event.volume * 100)} %`;
    case "videoFails":
      return "Video fails";
    default:
      return ownStepName(event);
  }
}

/** A step as the ad's scenario has it. */
function ownStepName({key, value}) {
  if (key === "open") return "Opens";
  if (key === "release") return "Released";
  if (key === "tap") return `Tap ${labelOf(String(value))}`;
  if (key === "device" && value.orientation) return `Turn: ${orientations[value.orientation] ?? value.orientation}`;
  if (key === "device" && "outputVolume" in value) return `Volume ${Math.round(value.outputVolume * 100)} %`;
  if (key === "device") return "End";
  const text = typeof value === "string" ? value : JSON.stringify(value);
  return `${key[0].toUpperCase()}${key.slice(1)} ${text.length > 24 ? text.slice(0, 23) + "…" : text}`;
}

/** The servers that the session asks, as origins. */
function serversOf() {
  const found = new Set();
  for (const [, fields] of data.lines)
    if (typeof fields.url === "string" && /^https?:/.test(fields.url))
      try {
        found.add(new URL(fields.url).origin);
      } catch {
        // The ad's own mistake; the findings have it.
      }
  return [...found].sort();
}

// --------------------------------------------------------------------------------------------------------------- lane

const axisTrack = () => document.querySelector("#lanes .axis .track").getBoundingClientRect();

/** The time at a place of the window, in microseconds, to a hundredth of a second. */
function timeAt(clientX) {
  const {left, width} = axisTrack();
  const part = Math.min(Math.max((clientX - left) / width, 0), 1);
  return Math.min(Math.round((part * sessionEnd) / 1e4) * 1e4, sessionEnd);
}

/**
 * The lane of the steps, directly under the axis. Each is a button; labels that would overlap are below each other.
 * @param actions choose(event), move(event, time), nudge(event, by), remove(event)
 */
function addEventsLane(events, chosen, actions) {
  const list = html("ol", {class: "track", "aria-label": "Steps"});
  const lane = html("div", {class: "lane steps"}, html("span", {class: "name", "aria-hidden": "true"}, "Steps"), list);
  document.querySelector("#lanes .lane.steps")?.remove();
  document.querySelector("#lanes .lane.axis").after(lane);
  const width = axisTrack().width;
  const ends = [];
  const buttons = events.map(event => {
    const name = eventName(event);
    const estimated = widthOf(name, ["", 12]) + 26;
    const place = (Math.min(event.at * 1e6, sessionEnd) / sessionEnd) * width;
    const left = Math.max(Math.min(place, width - estimated), 0);
    let row = ends.findIndex(end => end <= left);
    if (row < 0) row = ends.length;
    ends[row] = left + estimated;
    const own = event.id < 0;
    const button = html("button", {
      type: "button",
      class: `event ${event.kind}${own ? " own" : ""}${event.fixed ? " fixed" : ""}`,
      tabindex: -1,
      "data-id": event.id,
      "aria-label": `${name}, at ${short(event.at)} s`,
      "aria-current": event.id === chosen ? "true" : null,
      "aria-keyshortcuts": event.fixed ? null : "Delete Shift+ArrowLeft Shift+ArrowRight",
      title: event.fixed ? name : `${name}: drag to move, Delete removes`,
    });
    button.append(name);
    button.style.left = `${left}px`;
    button.style.top = `${row * 1.8}rem`;
    const item = html("li", {}, button);
    if (event.seconds > 0) {
      const span = html("span", {class: `event-span ${event.kind}`});
      span.style.left = percent(event.at * 1e6) + "%";
      span.style.width = percent((event.at + event.seconds) * 1e6) - percent(event.at * 1e6) + "%";
      span.style.top = `${row * 1.8 + 1.72}rem`;
      item.append(span);
    }
    list.append(item);
    makeMovable(button, event, actions);
    return button;
  });
  lane.style.setProperty("--rows", Math.max(ends.length, 1));
  (buttons.find((_, n) => events[n].id === chosen) ?? buttons[0])?.setAttribute("tabindex", 0);
  list.addEventListener("keydown", event => {
    const at = buttons.indexOf(document.activeElement);
    const to = {ArrowLeft: at - 1, ArrowRight: at + 1, Home: 0, End: buttons.length - 1}[event.key];
    if (event.shiftKey || to === undefined || at < 0) return;
    event.preventDefault();
    event.stopPropagation();
    const next = buttons[Math.min(Math.max(to, 0), buttons.length - 1)];
    buttons.forEach(button => (button.tabIndex = -1));
    next.tabIndex = 0;
    next.focus();
  });
}

/** With the pointer: drag. With keys: Shift and the arrow keys move by a tenth of a second, Delete removes. */
function makeMovable(button, event, {choose, move, nudge, remove}) {
  let from = null;
  button.addEventListener("pointerdown", down => {
    if (down.button !== 0 || event.fixed) return;
    from = down.clientX;
    button.setPointerCapture(down.pointerId);
  });
  button.addEventListener("pointermove", moved => {
    if (from === null || (Math.abs(moved.clientX - from) < 4 && !button.classList.contains("dragged"))) return;
    button.classList.add("dragged");
    button.style.left = `${moved.clientX - axisTrack().left - 8}px`;
    showDropLine(moved.clientX);
  });
  const end = (up, dropped) => {
    const was = button.classList.contains("dragged");
    from = null;
    button.classList.remove("dragged");
    showDropLine(null);
    if (was) {
      ignoreClick(button);
      if (dropped) move(event, timeAt(up.clientX));
    }
  };
  button.addEventListener("pointerup", up => end(up, true));
  button.addEventListener("pointercancel", up => end(up, false));
  button.addEventListener("click", () => choose(event));
  button.addEventListener("keydown", pressed => {
    const by = {ArrowLeft: -1, ArrowRight: 1}[pressed.key] * (pressed.ctrlKey ? 1e6 : 1e5);
    if (event.fixed) return;
    if (pressed.shiftKey && by) nudge(event, by);
    else if (pressed.key === "Delete" || pressed.key === "Backspace") remove(event);
    else return;
    pressed.preventDefault();
    pressed.stopPropagation();
  });
}

/** The click that follows a drag chooses nothing. */
function ignoreClick(button) {
  const stop = click => click.stopImmediatePropagation();
  button.addEventListener("click", stop, {capture: true});
  setTimeout(() => button.removeEventListener("click", stop, {capture: true}), 0);
}

/** A line through all lanes where something would be dropped; null removes it. */
function showDropLine(clientX) {
  document.querySelector(".drop-line")?.remove();
  if (clientX === null) return;
  const lanes = byId("lanes");
  const track = axisTrack();
  const line = html("div", {class: "drop-line", "aria-hidden": "true"});
  const x = Math.min(Math.max(clientX, track.left), track.right);
  line.style.left = `${x - lanes.getBoundingClientRect().left - 1}px`;
  lanes.append(line);
}

// ------------------------------------------------------------------------------------------------------------- palette

/**
 * The palette. A kind is dragged onto the axis; or chosen, and placed by Enter at the current time or by a click there.
 * @param add called with a kind and a time
 */
function addPalette(add) {
  const place = byId("palette");
  const hint = byId("palette-hint");
  const usual = hint.textContent;
  const buttons = new Map();
  let chosen = null;

  function choose(kind) {
    chosen = kind;
    for (const [each, button] of buttons) button.setAttribute("aria-pressed", each === kind);
    hint.textContent = kind
      ? `${eventKinds[kind].name}: go to a time and press Enter, or click the axis. Escape cancels.`
      : usual;
  }
  function put(time) {
    const kind = chosen;
    choose(null);
    add(kind, time);
  }

  for (const [kind, {name}] of Object.entries(eventKinds)) {
    const button = html("button", {type: "button", class: kind, "aria-pressed": "false", "data-kind": kind}, name);
    buttons.set(kind, button);
    hint.before(button);
    let from = null;
    let ghost = null;
    button.addEventListener("pointerdown", down => {
      if (down.button !== 0) return;
      from = [down.clientX, down.clientY];
      button.setPointerCapture(down.pointerId);
    });
    button.addEventListener("pointermove", moved => {
      if (!from || (!ghost && Math.hypot(moved.clientX - from[0], moved.clientY - from[1]) < 5)) return;
      if (!ghost) document.body.append((ghost = html("div", {class: "ghost", "aria-hidden": "true"})));
      const inside = isOverLanes(moved);
      ghost.textContent = inside ? `${name} at ${seconds(timeAt(moved.clientX))} s` : name;
      ghost.style.left = `${moved.clientX}px`;
      ghost.style.top = `${moved.clientY}px`;
      showDropLine(inside ? moved.clientX : null);
    });
    const end = (up, dropped) => {
      const was = ghost;
      from = ghost = null;
      was?.remove();
      showDropLine(null);
      if (!was) return;
      ignoreClick(button);
      if (dropped && isOverLanes(up)) add(kind, timeAt(up.clientX));
    };
    button.addEventListener("pointerup", up => end(up, true));
    button.addEventListener("pointercancel", up => end(up, false));
    button.addEventListener("click", () => {
      choose(chosen === kind ? null : kind);
      // From here the arrow keys choose the time.
      if (chosen) byId("scrubber").focus({preventScroll: true});
    });
  }
  document.addEventListener(
    "keydown",
    event => {
      if (!chosen || !["Enter", "Escape"].includes(event.key)) return;
      // Enter on another button is that button's.
      if (event.key === "Enter" && /^(BUTTON|A|SELECT)$/.test(event.target.tagName)) return;
      event.preventDefault();
      event.stopPropagation();
      if (event.key === "Enter") put(session.now);
      else choose(null);
    },
    {capture: true}
  );
  byId("lanes").addEventListener(
    "click",
    event => {
      // The keyboard's click on an item has no place.
      if (!chosen || event.detail === 0) return;
      event.preventDefault();
      event.stopPropagation();
      put(timeAt(event.clientX));
    },
    {capture: true}
  );
  place.hidden = false;
}

function isOverLanes({clientX, clientY}) {
  const {left, right, top, bottom} = byId("lanes").getBoundingClientRect();
  return clientX >= left && clientX <= right && clientY >= top && clientY <= bottom;
}

// -------------------------------------------------------------------------------------------------------------- editor

/**
 * The form of an event; hides it for none.
 * @param actions change(event, values), remove(event)
 */
function showEditor(event, {change, remove}) {
  const form = byId("event-editor");
  form.hidden = !event;
  if (!event) {
    form.replaceChildren();
    return;
  }
  const field = (label, input) => html("label", {}, `${label} `, input);
  const number = (key, most, unit) =>
    html("input", {
      type: "number",
      min: 0,
      max: most,
      step: "any",
      value: short(event[key]),
      name: key,
      "aria-label": unit,
      onchange: ({target}) => target.reportValidity() && change(event, {[key]: Number(target.value)}),
    });
  const choice = (key, options) =>
    html(
      "select",
      {name: key, onchange: ({target}) => change(event, {[key]: key === "server" ? target.value : +target.value})},
      ...options.map(([value, text]) =>
        html("option", {value, selected: String(value) === String(event[key])}, String(text))
      )
    );
  const parts = [html("h3", {}, eventName(event))];
  if (!event.fixed) parts.push(field("at, s", number("at", 1e6, "Time in seconds")));
  if ("seconds" in event) {
    parts.push(field("for, s", number("seconds", 1e6, "Length in seconds")));
    if (event.kind === "stall" || event.kind === "servers") parts.push(html("span", {class: "quiet"}, "0: for good"));
  }
  if (event.kind === "servers") {
    const servers = [...new Set(["*", event.server, ...serversOf()])];
    parts.push(field("server", choice("server", servers.map(each => [each, each === "*" ? "all of them" : each]))));
  }
  if (event.kind === "turn") parts.push(field("to", choice("orientation", Object.entries(orientations))));
  if (event.kind === "volume")
    parts.push(field("to", choice("volume", [0, 0.25, 0.5, 0.6, 0.75, 1].map(each => [each, `${each * 100} %`]))));
  if (!event.fixed) parts.push(html("button", {type: "button", onclick: () => remove(event)}, "Remove"));
  form.replaceChildren(...parts);
}
