"use strict";
// The ledger of the trackers, and the matrix of devices.

// -------------------------------------------------------------------------------------------------------------- ledger

const ledgerColumns = [
  {name: "Tracker", of: entry => entry.kind || "(not named by the ad)"},
  {name: "Due, s", of: entry => entry.due, time: true},
  {name: "Sent, s", of: entry => entry.sent, time: true},
  {
    name: "Late, s",
    of: entry => (entry.due !== null && entry.sent !== null ? entry.sent - entry.due : null),
    time: true,
  },
  {name: "Outcome", of: entry => outcomeOf(entry)},
  {name: "Address", of: entry => entry.url, address: true},
];

function outcomeOf({due, sent}) {
  if (sent === null) return due === null ? "not due" : "never sent";
  return due !== null && sent - due > 1000000 ? "late" : "sent";
}

const cellText = (column, entry) => {
  const value = column.of(entry);
  return value === null ? "" : column.time ? seconds(value) : value;
};

/** Comma-separated values (RFC 4180). */
function ledgerAsCsv(entries) {
  const quoted = text => (/[",\r\n]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text);
  return (
    [
      ledgerColumns.map(column => column.name),
      ...entries.map(entry => ledgerColumns.map(column => cellText(column, entry))),
    ]
      .map(row => row.map(quoted).join(","))
      .join("\r\n") + "\r\n"
  );
}

/**
 * @param go called with the time of a tracker that is chosen
 * @return a function that shows the trackers of data again, in the order that the reader has chosen
 */
function addLedger(go) {
  const table = document.getElementById("ledger");
  let entries = [...data.trackers];
  let sorted = null;
  let descending = false;
  const body = html("tbody");
  const heads = ledgerColumns.map(column => {
    const head = html("th", {scope: "col", class: column.time ? "number" : ""});
    head.append(html("button", {type: "button", onclick: () => sortBy(column)}, column.name));
    return head;
  });

  function sortBy(column) {
    descending = sorted === column && !descending;
    sorted = column;
    entries.sort((a, b) => {
      const [x, y] = [column.of(a), column.of(b)];
      // What did not happen is last, either way.
      if (x === null || y === null) return (x === null) - (y === null);
      const order = column.time ? x - y : x.localeCompare(y, "en", {numeric: true});
      return descending ? -order : order;
    });
    heads.forEach((head, n) => {
      if (ledgerColumns[n] === column) head.setAttribute("aria-sort", descending ? "descending" : "ascending");
      else head.removeAttribute("aria-sort");
    });
    fill();
  }

  function fill() {
    body.replaceChildren(
      ...entries.map(entry => {
        const row = html("tr", {class: outcomeOf(entry).replace(" ", "-")});
        for (const column of ledgerColumns) {
          const text = cellText(column, entry);
          const isFirst = column === ledgerColumns[0];
          const cell = html(isFirst ? "th" : "td", {
            class: column.time ? "number" : column.address ? "address" : "",
            scope: isFirst && "row",
          });
          if (column.time && text && column.name !== "Late, s")
            cell.append(html("a", {href: "#session", onclick: event => go(column.of(entry), event)}, text));
          else cell.append(column.name === "Outcome" ? html("span", {class: "outcome"}, text) : text || "–");
          row.append(cell);
        }
        return row;
      })
    );
  }

  function refill() {
    entries = [...data.trackers];
    if (!sorted) {
      fill();
      return;
    }
    // Choosing the column again turns the order round.
    descending = !descending;
    sortBy(sorted);
  }

  fill();
  table.append(html("thead", {}, html("tr", {}, ...heads)), body);
  document.getElementById("copy").addEventListener("click", async () => {
    const text = ledgerAsCsv(entries);
    const status = document.getElementById("copied");
    const area = document.getElementById("csv");
    try {
      await navigator.clipboard.writeText(text);
      status.textContent = `${entries.length} rows copied`;
    } catch {
      // A browser may refuse the clipboard to a file: then the text is there to be copied by hand.
      area.hidden = false;
      area.value = text;
      area.select();
      status.textContent = "press Ctrl+C to copy the selected rows";
    }
  });
  return refill;
}

// -------------------------------------------------------------------------------------------------------------- matrix

const faultTexts = {
  outside: "Outside the screen",
  covered: "Covered",
  unsafe: "Under camera, corner or bar",
  small: "Smaller than 44 points",
};

const modelName = name =>
  name
    .split("-")
    .map(word =>
      /^(iphone|ipad)$/.test(word)
        ? "i" + word[1].toUpperCase() + word.slice(2)
        : word === "se"
          ? "SE"
          : word[0].toUpperCase() + word.slice(1)
    )
    .join(" ");

/** The faults of each kind, as [kind, names]. */
function faultsByKind(faults) {
  return Object.keys(faultTexts)
    .map(kind => [kind, [...new Set(faults.filter(({fault}) => fault === kind).map(({name}) => labelOf(name)))]])
    .filter(([, names]) => names.length > 0);
}

function deviceCard(entry) {
  const name = entry.models.map(modelName).join(", ");
  const kinds = faultsByKind(entry.faults);
  const drawing = drawDevice({
    screen: entry.screen,
    turn: entry.drawing[0],
    views: entry.drawing[1],
    video: {state: "paused", position: entry.position, duration: 0, source: entry.source},
    phone: entry.phone,
    insets: entry.insets,
    marks: entry.faults.filter(fault => fault.frame).map(fault => [fault.frame, `mark ${fault.fault}`]),
  });
  const list = html(
    "ul",
    {},
    ...kinds.map(([kind, names]) =>
      html("li", {class: kind}, html("strong", {}, faultTexts[kind] + ": "), names.join(", "))
    )
  );
  return html(
    "li",
    {class: kinds.length > 0 ? "card faulty" : "card"},
    html("h3", {}, name),
    html("p", {class: "quiet"}, `${entry.screen[0]} × ${entry.screen[1]} points, ${seconds(entry.at)}\u00a0s`),
    drawing,
    kinds.length > 0 ? list : html("p", {class: "good"}, "all controls in place")
  );
}

function addMatrix() {
  const place = document.getElementById("matrix");
  const choices = document.getElementById("holdings");
  const only = document.getElementById("only-faults");
  const holdings = [...new Set(data.matrix.map(entry => entry.holding))];

  function show() {
    const holding = choices.querySelector("input:checked").value;
    const entries = data.matrix.filter(entry => entry.holding === holding);
    const shown = only.checked ? entries.filter(entry => entry.faults.length > 0) : entries;
    const models = entries.flatMap(entry => entry.models).length;
    const faulty = entries
      .filter(entry => entry.faults.some(fault => fault.fault !== "small"))
      .flatMap(entry => entry.models).length;
    const small = entries
      .filter(entry => entry.faults.some(fault => fault.fault === "small"))
      .flatMap(entry => entry.models).length;
    document.getElementById("matrix-summary").textContent =
      `${models} phones and tablets, ${holding}: on ${faulty || "none"} a control ` +
      `is outside the screen, covered, or under a camera, a corner or a bar; on ${small || "none"} one is smaller than 44 ` +
      "points. Tinted: what camera, corners and system bars may cover.";
    place.className = holding === "upright" ? "" : "turned";
    place.replaceChildren(...shown.map(deviceCard));
  }

  choices.querySelectorAll("label").forEach(label => label.remove());
  holdings.forEach((holding, n) => {
    const input = html("input", {type: "radio", name: "holding", value: holding, checked: n === 0, onchange: show});
    choices.append(html("label", {}, input, ` ${holding}`));
  });
  only.onchange = show;
  show();
}
