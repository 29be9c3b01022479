"use strict";
// The lanes under the time axis: what goes on at which time.

/** Of the session; set by readSession(). */
let sessionEnd = 1;

/** Microseconds as seconds: "3.3", with at least one decimal. */
function seconds(time) {
  const text = (time / 1e6).toFixed(3).replace(/0+$/, "");
  return text.endsWith(".") ? text + "0" : text;
}

/** Position on the axis, in percent. */
const percent = time => 100 * Math.min(Math.max(time / sessionEnd, 0), 1);

/** A line's fields as a short text. */
function shortened(fields) {
  const parts = [];
  for (const [key, value] of Object.entries(fields))
    if (key !== "what" && value !== null && value !== undefined)
      parts.push(
        (key === "url" || key === "do" || key === "name" || key === "event" || key === "text" ? "" : key + " ") +
          (typeof value === "string" ? value : JSON.stringify(value))
      );
  return parts.join("  ");
}

const lineText = ([at, fields]) => `${seconds(at)} s  ${fields.what}  ${shortened(fields)}`;

/** Names for people of the controls, by the controller's field. */
const labels = new Map();
function readLabels() {
  labels.clear();
  for (const view of data.views)
    if (view.name && (view.label || view.text))
      labels.set(view.name, (labels.get(view.name) ?? new Set()).add(view.label || view.text));
}
const mostLabels = 2;
/** "Play / Pause" for a control whose name changes, "Brand icon" for one without a name. */
function labelOf(name) {
  const found = [...(labels.get(name) ?? [])].slice(0, mostLabels).join(" / ");
  const words = name
    .replace(/^btn/, "")
    .replace(/([a-z])([A-Z])/g, "$1 $2")
    .toLowerCase();
  return found || words[0].toUpperCase() + words.slice(1);
}

/** The times during which something is so, as [from, to, key]: adjoining ones with the same key are one. */
function spans(entries, keyOf) {
  const found = [];
  entries.forEach(([at, ...rest], n) => {
    const to = n + 1 < entries.length ? entries[n + 1][0] : sessionEnd;
    const key = keyOf(...rest);
    const last = found[found.length - 1];
    if (key === null || key === false || to <= at) return;
    if (last && last[2] === key && last[1] === at) last[1] = to;
    else found.push([at, to, key]);
  });
  return found;
}

// --------------------------------------------------------------------------------------------------------------- lanes

/** What a scenario does to the video and to the servers. */
const isDisturbance = fields => "player" in fields || "servers" in fields;

/** The lines of the trace that belong to a lane. */
const lanesOfLines = [
  ["Viewer", fields => fields.what === "step" && !("device" in fields) && !isDisturbance(fields)],
  ["Disturbances", fields => fields.what === "step" && isDisturbance(fields)],
  [
    "Device",
    fields =>
      fields.what === "device" ||
      (fields.what === "step" && "device" in fields && Object.keys(fields.device ?? {}).length > 0) ||
      fields.what === "volume",
  ],
  ["Events to the page", fields => fields.what === "js" || fields.what === "mraid"],
  ["Network", fields => ["request", "fetch"].includes(fields.what) && fields.for !== "tracking"],
  [
    "Faults",
    fields =>
      ["fault", "guard", "page.error"].includes(fields.what) ||
      (fields.what === "web" && fields.do !== undefined) ||
      (fields.what === "player" && fields.do === "failed"),
  ],
];

/** An item: {from, to, className, text, lines, label}; without "to" it is a point. */
function pointsOf(matches) {
  const items = [];
  const near = sessionEnd / 130;
  data.lines.forEach((line, n) => {
    if (!matches(line[1])) return;
    const last = items[items.length - 1];
    if (last && line[0] - last.from <= near) last.lines.push(n);
    else items.push({from: line[0], className: "point", lines: [n]});
  });
  for (const item of items)
    item.label =
      item.lines.length === 1
        ? lineText(data.lines[item.lines[0]])
        : `${seconds(item.from)} s: ${item.lines.length} events`;
  return items;
}

/** The points of a lane of lines. */
const pointsIn = name => pointsOf(lanesOfLines.find(([each]) => each === name)[1]);

/** The lines of the trace at a time. */
function linesAt(time, matches = () => true) {
  const found = [];
  data.lines.forEach(([at, fields], n) => {
    if (at === time && matches(fields)) found.push(n);
  });
  return found;
}

function spanItems(found, className, textOf) {
  return found.map(([from, to, key]) => ({
    from,
    to,
    className: className(key),
    text: textOf(key),
    lines: linesAt(from),
    label: `${textOf(key)}: ${seconds(from)} s to ${seconds(to)} s`,
  }));
}

function trackerItems() {
  const items = [];
  const isRequest = fields => fields.what === "request" || fields.what === "vast";
  for (const {kind, url, due, sent} of data.trackers) {
    const name = kind || url;
    if (due === null && sent === null) continue;
    if (sent === null) {
      items.push({
        from: due,
        className: "point missing",
        lines: [],
        label: `${name}: due at ${seconds(due)} s, never sent`,
      });
      continue;
    }
    const lines = linesAt(sent, isRequest).filter(n => sameAddress(data.lines[n][1].url, url));
    const late = due !== null && sent > due;
    if (late)
      items.push({
        from: due,
        to: sent,
        className: "late",
        lines,
        text: "",
        label: `${name}: due at ${seconds(due)} s, sent ${seconds(sent - due)} s later`,
        decoration: true,
      });
    items.push({
      from: sent,
      className: "point",
      lines,
      label: `${name}: sent at ${seconds(sent)} s` + (late ? `, ${seconds(sent - due)} s after it was due` : ""),
    });
  }
  return items.sort((a, b) => a.from - b.from);
}

/** Whether a sent address may be the ad's, whose macros are in braces, or in brackets. */
function sameAddress(sent, written) {
  const begin = written.split(/[{[]/)[0];
  return typeof sent === "string" && sent.startsWith(begin);
}

function networkItems() {
  const items = pointsIn("Network");
  data.lines.forEach(([at, fields], n) => {
    const answer = ["request", "fetch"].includes(fields.what) && data.answers[fields.url];
    if (answer)
      items.push({
        from: at,
        to: at + Math.max(answer.after, sessionEnd / 200),
        className: answer.ok ? "waits" : "fails",
        text: "",
        lines: [n],
        label: `${fields.url}: ${answer.ok ? "answered" : "failed"} after ${seconds(answer.after)} s`,
      });
  });
  return items.sort((a, b) => a.from - b.from);
}

function allLanes() {
  const lanes = [];
  const add = (name, items, className = "", kept = false) => {
    if (kept || items.length > 0) lanes.push({name, items, className});
  };
  add("Viewer", pointsIn("Viewer"), "viewer");
  add("Device", pointsIn("Device"));
  add("Disturbances", pointsIn("Disturbances"));
  add(
    "Video",
    spanItems(
      spans(data.video, state => (state === "absent" ? null : state)),
      key => `video ${key}`,
      key => key
    ),
    "tall"
  );
  add(
    "Sound",
    spanItems(
      spans(data.sights, sight => sight.sound),
      () => "sound",
      () => "sound"
    ),
    "thin"
  );
  add(
    "Close can be tapped",
    [
      ...spanItems(
        spans(data.sights, sight => sight.open && !sight.close),
        () => "no-close",
        () => "not yet"
      ),
      ...spanItems(
        spans(data.sights, sight => sight.open && sight.close),
        () => "close",
        () => "can be tapped"
      ),
    ].sort((a, b) => a.from - b.from),
    "tall closes",
    true
  );
  const controls = [...new Set(data.sights.flatMap(([, sight]) => sight.tap))].filter(name => name !== "btnClose");
  for (const name of controls)
    add(
      labelOf(name),
      spanItems(
        spans(data.sights, sight => sight.tap.includes(name)),
        () => "tap",
        () => labelOf(name)
      ),
      "thin"
    );
  add("Trackers", trackerItems(), "trackers", true);
  add("Events to the page", pointsIn("Events to the page"));
  add("Network", networkItems(), "", true);
  add(
    "Main thread blocked",
    data.blocked.map(([at, lasts]) => ({
      from: at,
      to: at + lasts,
      className: "blocks",
      text: "",
      lines: linesAt(at),
      label: `main thread blocked for ${seconds(lasts)} s at ${seconds(at)} s`,
    })),
    "thin",
    true
  );
  add("Faults", pointsIn("Faults"));
  return lanes;
}

// --------------------------------------------------------------------------------------------------------------- view

/**
 * Adds the lanes to the page. Each is one stop of the tab key; the arrow keys move within it.
 * @param show called with an item that is hovered or focused
 * @param go called with the time of an item that is chosen
 */
function addLanes(show, go) {
  const place = document.getElementById("lanes");
  for (const old of place.querySelectorAll(".lane:not(.axis)")) old.remove();
  for (const lane of allLanes()) {
    const list = html("ol", {class: "track", "aria-label": lane.name});
    lane.items.forEach((item, n) => {
      const button = html("button", {
        type: "button",
        class: `item ${item.className}`,
        tabindex: -1,
        "aria-label": item.label,
        onclick: () => go(item.from),
        onpointerenter: () => show(item),
        onfocus: () => show(item),
      });
      button.style.left = percent(item.from) + "%";
      if (item.to !== undefined) button.style.width = `max(3px, ${percent(item.to) - percent(item.from)}%)`;
      // A text that would be cut off says nothing.
      if (item.text && percent(item.to) - percent(item.from) > 0.85 * item.text.length)
        button.append(html("span", {}, item.text));
      // A figure needs room before the next point.
      const room = (n + 1 < lane.items.length ? percent(lane.items[n + 1].from) : 101) - percent(item.from);
      if (item.lines.length > 1 && item.to === undefined && room > 0.9)
        button.append(html("span", {class: "count"}, String(item.lines.length)));
      list.append(html("li", {}, button));
    });
    const buttons = [...list.querySelectorAll("button")];
    if (buttons.length > 0) buttons[0].tabIndex = 0;
    list.addEventListener("keydown", event => {
      const at = buttons.indexOf(document.activeElement);
      const to = {ArrowLeft: at - 1, ArrowRight: at + 1, Home: 0, End: buttons.length - 1}[event.key];
      if (to === undefined || at < 0) return;
      event.preventDefault();
      event.stopPropagation();
      const next = buttons[Math.min(Math.max(to, 0), buttons.length - 1)];
      buttons[at].tabIndex = -1;
      next.tabIndex = 0;
      next.focus();
    });
    const none = lane.items.length === 0 ? html("span", {class: "none"}, "nothing") : null;
    if (none) list.replaceChildren(html("li", {}, none));
    place.append(
      html(
        "div",
        {class: `lane ${lane.className}`},
        html("span", {class: "name", "aria-hidden": "true"}, lane.name),
        list
      )
    );
  }
}

/** Marks on the axis at round times. */
function addTicks() {
  const place = document.getElementById("ticks");
  place.replaceChildren();
  const steps = [0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 1800, 3600, 86400];
  const step = (steps.find(each => sessionEnd / 1e6 / each <= 12) ?? sessionEnd / 12e6) * 1e6;
  for (let time = 0; time <= sessionEnd; time += step) {
    const tick = html("span", {}, String(Math.round(time / 1e5) / 10));
    tick.style.left = percent(time) + "%";
    place.append(tick);
  }
}
