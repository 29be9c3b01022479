"use strict";
// Draws what a screen shows. Coordinates are points of the upright screen; the whole is turned as the viewer holds it.

const data = JSON.parse(document.getElementById("data").textContent);
const fontFamily = '"Liberation Sans", Arial, Helvetica, sans-serif';
const svgNamespace = "http://www.w3.org/2000/svg";

/** An SVG element with attributes and children; children that are not nodes become texts. */
function svg(name, attributes = {}, ...children) {
  const element = document.createElementNS(svgNamespace, name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.append(...children.filter(child => child !== null && child !== undefined));
  return element;
}

/** An HTML element; "on…" keys are listeners, and true is an attribute without a value. */
function html(name, attributes = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes))
    if (key.startsWith("on")) element.addEventListener(key.slice(2), value);
    else if (value === true) element.setAttribute(key, "");
    else if (value !== false && value !== null && value !== undefined) element.setAttribute(key, value);
  element.append(...children.filter(child => child !== null && child !== undefined));
  return element;
}

/** Index of the last entry that begins at or before a time; -1 before the first. */
function indexAt(entries, time) {
  let low = 0;
  let high = entries.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (entries[middle][0] <= time) low = middle + 1;
    else high = middle;
  }
  return low - 1;
}

/** What the video does at a time of the session. */
function videoAt(time) {
  const point = data.video[indexAt(data.video, time)];
  if (!point) return {state: "absent", position: 0, duration: 0, source: 0};
  const [at, state, position, duration, source] = point;
  const now = data.advances && state === "playing" ? position + (time - at) / 1e6 : position;
  return {state, position: now, duration, source};
}

/** The frame of a video, as videoAt(), nearest to its position; absent without frames. */
function stillOf({position, source}) {
  let best;
  for (const still of data.stills)
    if (still[2] === source && (!best || Math.abs(still[0] - position) < Math.abs(best[0] - position))) best = still;
  return best && best[1];
}

function pageTitle() {
  const line = data.lines.find(([, fields]) => fields.what === "page" && fields.html);
  const found = line && /<title>[^<]*/i.exec(line[1].html);
  // Only to read entities: the whole page would break this one's policy with its styles.
  return found ? new DOMParser().parseFromString(found[0], "text/html").title : "";
}

// ------------------------------------------------------------------------------------------------------------- texts

const ruler = document.createElement("canvas").getContext("2d");

function widthOf(text, [, size]) {
  ruler.font = `${size}px ${fontFamily}`;
  return ruler.measureText(text).width;
}

/** The text as long as it fits; the end, or another part of it (as for UILabel), becomes an ellipsis. */
function elided(text, font, width, mode) {
  if (widthOf(text, font) <= width + 0.5) return text;
  const letters = [...text];
  for (let keep = letters.length - 1; keep > 0; --keep) {
    const head = mode === 3 ? 0 : mode === 5 ? Math.ceil(keep / 2) : keep;
    const short = letters.slice(0, head).join("") + "…" + letters.slice(letters.length - (keep - head)).join("");
    if (widthOf(short, font) <= width) return short;
  }
  return "…";
}

/** Lines of at most a width, broken between words or, if need be, letters. */
function wrapped(text, font, width) {
  const lines = [];
  for (const paragraph of text.split("\n")) {
    let line = "";
    for (const word of paragraph.split(/(?<=\s)/))
      for (const piece of widthOf(word, font) > width ? [...word] : [word]) {
        if (line && widthOf((line + piece).trimEnd(), font) > width) {
          lines.push(line.trimEnd());
          line = "";
        }
        line += piece;
      }
    lines.push(line.trimEnd());
  }
  return lines;
}

function drawText(view, width, height) {
  const font = view.font;
  const middle = {center: width / 2, right: width}[view.align] ?? 0;
  const anchor = {center: "middle", right: "end"}[view.align] ?? "start";
  let lines = [view.text];
  if (view.lines !== undefined) lines = wrapped(view.text, font, width);
  else if (view.kind === "button") lines = [elided(view.text, font, width, 5)];
  else if (view.break >= 3) lines = [elided(view.text, font, width, view.break)];
  const step = font[1] * 1.15;
  const first = height / 2 - ((lines.length - 1) * step) / 2 + font[1] * 0.35;
  const at = (dx, dy, ink) =>
    svg(
      "text",
      {"font-family": fontFamily, "font-size": font[1], "text-anchor": anchor, fill: ink},
      ...lines.map((line, n) => svg("tspan", {x: middle + dx, y: first + n * step + dy}, line))
    );
  const group = svg("g");
  if (view.shadow) group.append(at(...view.shadow));
  group.append(at(0, 0, view.ink));
  // A label clips its text; a nested picture does it for us.
  return svg("svg", {width, height, overflow: "hidden"}, group);
}

// ------------------------------------------------------------------------------------------------------------- shapes

const symbolPaths = {
  close: "M-7-7L7 7M7-7L-7 7",
  closeOnDisc: "M-5-5L5 5M5-5L-5 5",
  back: "M4-8L-4 0L4 8",
  forward: "M-4-8L4 0L-4 8",
  reload: "M7.4 1A7.5 7.5 0 1 1 4.8-5.8M6.5-9.5L5.5-4.5L.5-5.5",
  lock: "M-5-1h10v8h-10zM-3-1v-2a3 3 0 0 1 6 0v2",
  openLock: "M-5-1h10v8h-10zM2-1v-2a3 3 0 0 1 6 0v2",
};

function drawSymbol(view, width, height) {
  const group = svg("g", {transform: `translate(${width / 2} ${height / 2})`});
  if (view.symbol === "closeOnDisc")
    group.append(svg("circle", {r: 15, fill: "#000000a6", stroke: "#ffffffd9", "stroke-width": 1.5}));
  group.append(
    svg("path", {
      d: symbolPaths[view.symbol],
      fill: "none",
      stroke: view.ink,
      "stroke-width": 2,
      "stroke-linecap": "round",
      "stroke-linejoin": "round",
    })
  );
  return group;
}

function drawCountdown([seconds, full, ring], width, height) {
  const radius = Math.min(width, height) / 2;
  const line = Math.min(ring || 3, radius / 2);
  const middle = radius - line / 2;
  const group = svg("g", {transform: `translate(${width / 2} ${height / 2})`});
  group.append(
    svg("circle", {r: radius, fill: "#000000ad"}),
    svg("circle", {r: middle, fill: "none", stroke: "#ffffff38", "stroke-width": line})
  );
  const left = full > 0 ? Math.min(Math.max(seconds / full, 0), 1) : 0;
  if (left > 0) {
    const all = 2 * Math.PI * middle;
    group.append(
      svg("circle", {
        r: middle,
        fill: "none",
        stroke: "#fff",
        "stroke-width": line,
        "stroke-dasharray": `${all * left} ${all}`,
        transform: `rotate(${-90 + 360 * (1 - left)})`,
      })
    );
  }
  group.append(
    svg(
      "text",
      {"font-family": fontFamily, "font-size": radius * 0.95, "text-anchor": "middle", y: radius * 0.34, fill: "#fff"},
      String(Math.max(Math.ceil(seconds), 1))
    )
  );
  return group;
}

function drawSpinner(width, height) {
  const radius = Math.min(width, height) / 2 - 2;
  const group = svg("g", {transform: `translate(${width / 2} ${height / 2})`, "stroke-linecap": "round"});
  if (radius <= 0) return group;
  for (let spoke = 0; spoke < 12; ++spoke)
    group.append(
      svg("path", {
        d: `M0 ${-radius * 0.5}V${-radius * 0.9}`,
        transform: `rotate(${spoke * 30})`,
        stroke: "#fff",
        "stroke-opacity": 0.25 + (0.75 * spoke) / 11,
        "stroke-width": radius / 4,
      })
    );
  return group;
}

function drawVideo(view, width, height, video) {
  const still = view.playable && stillOf(video);
  if (still)
    return svg("image", {
      href: still,
      width,
      height,
      preserveAspectRatio: {cover: "xMidYMid slice", stretch: "none"}[view.fit] ?? "xMidYMid meet",
    });
  const group = svg("g");
  const text = !view.playable
    ? "video: loading"
    : `video: ${video.position.toFixed(1)} s` + (video.duration ? ` of ${video.duration.toFixed(1)} s` : "");
  if (view.playable) {
    // The picture's own area, as far as the ad gives its proportions.
    const [w, h] = data.size[0] > 0 && data.size[1] > 0 ? data.size : [width, height];
    const scale = view.fit === "contain" ? Math.min(width / w, height / h) : Math.max(width / w, height / h);
    const [pw, ph] = [Math.min(w * scale, width), Math.min(h * scale, height)];
    group.append(svg("rect", {x: (width - pw) / 2, y: (height - ph) / 2, width: pw, height: ph, fill: "#20305c"}));
  }
  group.append(
    svg(
      "text",
      {
        x: width / 2,
        // Above the button in the middle.
        y: height * 0.3,
        "font-size": 14,
        "font-family": fontFamily,
        fill: "#c9d3f5",
        "text-anchor": "middle",
      },
      text
    )
  );
  return group;
}

/** The page itself is not known: its place, and its title. */
function drawPage(view, width, height) {
  const group = svg("g");
  if (!view.loaded) return group;
  if (view.opaque) group.append(svg("rect", {width, height, fill: "#eceaf3"}));
  const inset = Math.min(12, width / 8, height / 8);
  group.append(
    svg("rect", {
      x: inset,
      y: inset,
      width: width - 2 * inset,
      height: height - 2 * inset,
      rx: 10,
      fill: "#8a87a830",
      stroke: "#8a87a8",
      "stroke-width": 1.5,
      "stroke-dasharray": "5 5",
    })
  );
  const ink = view.opaque ? "#4b4965" : "#dedbf0";
  if (height > 60 && width > 120) {
    group.append(
      svg(
        "text",
        {
          x: width / 2,
          y: height / 2,
          "font-size": 17,
          "font-weight": "bold",
          "font-family": fontFamily,
          fill: ink,
          "text-anchor": "middle",
        },
        elided(pageTitle() || "page", ["", 18], width - 60, 4)
      )
    );
    group.append(
      svg(
        "text",
        {
          x: width / 2,
          y: height / 2 + 20,
          "font-size": 12,
          "font-family": fontFamily,
          fill: ink,
          "text-anchor": "middle",
        },
        "the ad's page"
      )
    );
  }
  return group;
}

function drawView(view, video) {
  const [x, y, width, height] = view.at;
  const turn = view.turn ? ` rotate(${view.turn})` : "";
  const group = svg("g", {transform: `translate(${x} ${y})${turn} translate(${-width / 2} ${-height / 2})`});
  if (view.alpha !== undefined) group.setAttribute("opacity", view.alpha);
  if (view.fill && width > 0 && height > 0)
    group.append(svg("rect", {width, height, rx: view.radius ?? 0, fill: view.fill}));
  if (width <= 0 || height <= 0) return group;
  if (view.kind === "video") group.append(drawVideo(view, width, height, video));
  if (view.kind === "page") group.append(drawPage(view, width, height));
  const picture = view.picture !== undefined && data.pictures[view.picture];
  if (picture)
    group.append(
      svg("image", {href: picture, width, height, preserveAspectRatio: view.fit ? "xMidYMid meet" : "none"})
    );
  else if (view.picture !== undefined) group.append(svg("rect", {width, height, fill: "#8888", stroke: "#aaa"}));
  if (view.text) group.append(drawText(view, width, height));
  if (view.symbol) group.append(drawSymbol(view, width, height));
  if (view.count) group.append(drawCountdown(view.count, width, height));
  if (view.spins) group.append(drawSpinner(width, height));
  return group;
}

// ------------------------------------------------------------------------------------------------------------- screens

function drawSafeArea([top, left, bottom, right], width, height) {
  const path = `M0 0H${width}V${height}H0ZM${left} ${top}V${height - bottom}H${width - right}V${top}Z`;
  return svg("path", {d: path, "fill-rule": "evenodd", class: "unsafe"});
}

/** A rectangle around what lies at [x, y, width, height], numbered n from 1 if several are marked. */
function drawMark([x, y, width, height], className) {
  const grow = 2;
  return svg("rect", {
    x: x - grow,
    y: y - grow,
    width: width + 2 * grow,
    height: height + 2 * grow,
    rx: 6,
    class: className,
  });
}

/**
 * The whole device.
 * @param shown screen: its size; turn: in degrees; views: places in data.views; video: as videoAt(); phone;
 *        insets: as the viewer holds it, absent to leave them out; marks: [rectangle, class] on the upright screen;
 *        touch: point on the upright screen
 * @param label for assistive technology; absent for a decoration
 */
function drawDevice(shown, label) {
  const [w, h] = shown.screen;
  const turned = Math.abs(shown.turn) % 180 === 90;
  const [width, height] = turned ? [h, w] : [w, h];
  const edge = Math.max(w, h) * 0.016;
  const corner = shown.phone ? Math.min(w, h) * 0.1 : Math.min(w, h) * 0.03;
  const device = svg("svg", {viewBox: `${-edge} ${-edge} ${width + 2 * edge} ${height + 2 * edge}`, class: "device"});
  if (label) {
    device.setAttribute("role", "img");
    device.setAttribute("aria-label", label);
  } else {
    device.setAttribute("aria-hidden", "true");
  }
  device.append(
    svg("rect", {
      x: -edge,
      y: -edge,
      width: width + 2 * edge,
      height: height + 2 * edge,
      rx: corner + edge,
      class: "case",
    })
  );
  const id = `screen${++drawDevice.serial}`;
  device.append(svg("clipPath", {id}, svg("rect", {width, height, rx: corner})));
  const inside = svg("g", {"clip-path": `url(#${id})`}, svg("rect", {width, height, class: "glass"}));
  const upright = svg("g", {
    transform: `translate(${width / 2} ${height / 2}) rotate(${shown.turn}) translate(${-w / 2} ${-h / 2})`,
  });
  for (const view of shown.views) upright.append(drawView(data.views[view], shown.video));
  for (const [frame, className] of shown.marks ?? []) upright.append(drawMark(frame, className));
  if (shown.touch) upright.append(svg("circle", {cx: shown.touch[0], cy: shown.touch[1], r: 22, class: "touch"}));
  inside.append(upright);
  if (shown.insets && shown.insets.some(inset => inset > 0)) inside.append(drawSafeArea(shown.insets, width, height));
  device.append(inside);
  return device;
}
drawDevice.serial = 0;
