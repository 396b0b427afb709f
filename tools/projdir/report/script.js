"use strict";

const CLASSES = [
  { most: 0.01, words: "within 1 cm" },
  { most: 1, words: "within 1 m" },
  { most: 2, words: "within 2 m" },
  { most: 5, words: "within 5 m" },
  { most: 10, words: "within 10 m" },
  { most: 100, words: "within 100 m" },
  { most: Infinity, words: "beyond 100 m" },
  { most: NaN, words: "not known" },
];
const UNKNOWN = CLASSES.length - 1;
const LEAST_DISTANCES = [0.01, 1, 2, 5, 10, 100];
const ROWS_AT_ONCE = 100;
const ROWS_PRINTED_AT_MOST = 2000;
const SVG = "http://www.w3.org/2000/svg";

const data = JSON.parse(document.getElementById("data").textContent);
const form = document.getElementById("filter");
const isVerified = data.crs.some((crs) => crs.verification);

function element(name, text, className) {
  const made = document.createElement(name);
  if (text !== undefined) made.textContent = text;
  if (className) made.className = className;
  return made;
}

function shape(name, attributes) {
  const made = document.createElementNS(SVG, name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  return made;
}

function metresOf(crs) {
  if (!crs.definition) return NaN;
  if (!crs.verification) return crs.largest_distance === undefined ? NaN : crs.largest_distance;
  return crs.verification.largest === null ? Infinity : crs.verification.largest;
}

function classOf(metres) {
  const found = CLASSES.findIndex((one) => metres <= one.most);
  return found < 0 ? UNKNOWN : found;
}

function writeMetres(metres) {
  if (Number.isNaN(metres)) return "";
  if (metres === Infinity) return "refused";
  return metres.toFixed(metres < 1 ? 3 : 2);
}

// What the filters and the table look at, once for each CRS.
const entries = data.crs.map((crs) => {
  const metres = metresOf(crs);
  const shift = crs.shift || { kind: "left out" };
  return {
    crs,
    code: crs.code,
    name: crs.name,
    kind: crs.kind,
    area: crs.area.text || "",
    shift: shift.source || shift.kind,
    accuracy: shift.accuracy === undefined ? NaN : shift.accuracy,
    distance: metres,
    rank: classOf(metres),
    searchedName: crs.name.toLowerCase(),
    searchedArea: (crs.area.text || "").toLowerCase(),
  };
});

// Filters

function hasAllWords(text, words) {
  return words.every((word) => text.includes(word));
}

function wordsOf(text) {
  return text.toLowerCase().split(/\s+/).filter((word) => word !== "");
}

function isAt(area, [longitude, latitude]) {
  if (area.west === undefined || latitude < area.south || latitude > area.north) return false;
  const inside = [longitude >= area.west, longitude <= area.east];
  return area.west <= area.east ? inside[0] && inside[1] : inside[0] || inside[1];
}

function readPlace(text) {
  const numbers = text.split(/[\s,;]+/).filter((part) => part !== "").map(Number);
  return numbers.length === 2 && numbers.every(Number.isFinite) ? numbers : null;
}

function readFilter() {
  const values = Object.fromEntries(new FormData(form));
  return {
    name: wordsOf(values.name),
    code: values.code.trim().replace(/^EPSG:/i, ""),
    country: wordsOf(values.country),
    place: readPlace(values.place),
    kind: values.kind,
    distance: values.distance === "" ? null : Number(values.distance),
  };
}

function passes(entry, filter) {
  return (
    String(entry.code).startsWith(filter.code) &&
    hasAllWords(entry.searchedName, filter.name) &&
    hasAllWords(entry.searchedArea, filter.country) &&
    (filter.kind === "" || (filter.kind === "left out" ? !entry.crs.definition : entry.kind === filter.kind)) &&
    (filter.distance === null || entry.distance > filter.distance) &&
    (filter.place === null || isAt(entry.crs.area, filter.place))
  );
}

// The table

const COLUMNS = [
  { key: "code", title: "Code", className: "right" },
  { key: "name", title: "Name", className: "name" },
  { key: "kind", title: "Kind", className: "wide" },
  { key: "area", title: "Area of use" },
  { key: "shift", title: "Shift", className: "wide" },
  { key: "accuracy", title: "Accuracy, m", className: "wide right" },
  { key: "distance", title: "Distance, m", className: "right" },
];
let sort = { key: "code", descending: false };
let found = entries;
let shown = ROWS_AT_ONCE;

// What is not known comes last in either direction.
function compare(left, right) {
  const [a, b] = [left[sort.key], right[sort.key]];
  if (Number.isNaN(a) || Number.isNaN(b)) return Number.isNaN(a) - Number.isNaN(b);
  const order = typeof a === "number" ? (a > b) - (a < b) : a.localeCompare(b);
  return sort.descending ? -order : order;
}

function detailsOf(crs) {
  const lines = [];
  if (crs.left_out) lines.push(`left out: ${crs.left_out}`);
  if (crs.definition) lines.push(crs.definition);
  if (crs.area.text) lines.push(`area: ${crs.area.text}`);
  if (crs.datum) lines.push(`datum: ${crs.datum} (${crs.datum_id})`);
  if (crs.unit) lines.push(`unit: ${crs.unit}`);
  if (crs.replaced_by) lines.push(`replaced by: ${crs.replaced_by.join(", ")}`);
  const measured = crs.verification;
  if (measured) lines.push(measured.failure ? `refused: ${measured.failure}` : measured.proj);
  for (const one of (measured && measured.conversions) || [])
    lines.push(`to EPSG:${one.to}: ${one.distance === null ? one.failure || "no coordinates" : `${(one.distance * 1000).toFixed(3)} mm off`}`);
  return lines.join("\n");
}

function nameCell(entry) {
  const cell = element("td", undefined, "name");
  const details = element("details");
  details.append(element("summary", entry.name));
  details.addEventListener("toggle", () => {
    if (details.childElementCount === 1) details.append(element("pre", detailsOf(entry.crs)));
  });
  cell.append(details);
  return cell;
}

// Some areas are lists of fifty countries; all of them stand in the details.
function areaCell(entry) {
  const cell = element("td");
  cell.append(element("div", entry.area, "short"));
  return cell;
}

function cellOf(entry, column) {
  if (column.key === "name") return nameCell(entry);
  if (column.key === "area") return areaCell(entry);
  const value = entry[column.key];
  if (column.key === "distance") return element("td", entry.crs.left_out ? "left out" : writeMetres(value), column.className);
  if (column.key === "accuracy") return element("td", Number.isNaN(value) ? "" : String(value), column.className);
  return element("td", value, column.className);
}

function rowOf(entry) {
  const row = element("tr");
  row.append(...COLUMNS.map((column) => cellOf(entry, column)));
  return row;
}

function drawRows() {
  document.getElementById("rows").replaceChildren(...found.slice(0, shown).map(rowOf));
  document.getElementById("more").hidden = shown >= found.length;
  document.getElementById("count").textContent =
    `${found.length} of ${entries.length} CRS` + (shown < found.length ? `, the first ${shown} shown` : "");
}

function drawHeads() {
  const heads = COLUMNS.map((column) => {
    const head = element("th", undefined, column.className);
    const button = element("button", column.title + (column.key === sort.key ? (sort.descending ? " ▼" : " ▲") : ""));
    head.scope = "col";
    if (column.key === sort.key) head.setAttribute("aria-sort", sort.descending ? "descending" : "ascending");
    button.type = "button";
    button.addEventListener("click", () => {
      sort = { key: column.key, descending: column.key === sort.key && !sort.descending };
      update();
    });
    head.append(button);
    return head;
  });
  document.getElementById("heads").replaceChildren(...heads);
}

// The map

function boxesOf(area) {
  const wide = area.west <= area.east ? [[area.west, area.east]] : [[area.west, 180], [-180, area.east]];
  return wide.map(([west, east]) => ({
    x: (west + 180) * 10,
    y: (90 - area.north) * 10,
    width: Math.max((east - west) * 10, 4),
    height: Math.max((area.north - area.south) * 10, 4),
  }));
}

// Many CRS share an area: the farthest gives the colour.
function drawAreas() {
  const areas = new Map();
  for (const entry of found) {
    const { west, south, east, north } = entry.crs.area;
    if (west === undefined || !entry.crs.definition) continue;
    const key = [west, south, east, north].join();
    const known = areas.get(key) || { area: entry.crs.area, rank: -1, codes: [] };
    if (entry.rank !== UNKNOWN || known.rank < 0) known.rank = known.rank === UNKNOWN ? entry.rank : Math.max(known.rank, entry.rank);
    known.codes.push(entry.code);
    areas.set(key, known);
  }
  const boxes = [...areas.values()].flatMap((one) => boxesOf(one.area).map((box) => ({ ...one, box })));
  boxes.sort((a, b) => b.box.width * b.box.height - a.box.width * a.box.height);
  document.getElementById("areas").replaceChildren(...boxes.map(drawBox));
}

function drawBox({ box, rank, codes }) {
  const rect = shape("rect", { ...box, class: `c${rank}` });
  const title = shape("title", {});
  title.textContent = `${CLASSES[rank].words}: EPSG ${codes.slice(0, 8).join(", ")}${codes.length > 8 ? ", ..." : ""}`;
  rect.append(title);
  return rect;
}

function drawGraticule() {
  let lines = "";
  for (let longitude = -150; longitude < 180; longitude += 30) lines += `M${(longitude + 180) * 10} 0v1800`;
  for (let latitude = -60; latitude < 90; latitude += 30) lines += `M0 ${(90 - latitude) * 10}h3600`;
  document.getElementById("graticule").append(shape("path", { d: lines }));
}

function drawPlace(place) {
  const mark = document.getElementById("place-mark");
  if (place === null) {
    mark.setAttribute("hidden", "");
    return;
  }
  mark.removeAttribute("hidden");
  mark.setAttribute("cx", (place[0] + 180) * 10);
  mark.setAttribute("cy", (90 - place[1]) * 10);
}

function listPlace(event) {
  const map = document.getElementById("map").getBoundingClientRect();
  const longitude = ((event.clientX - map.left) / map.width) * 360 - 180;
  const latitude = 90 - ((event.clientY - map.top) / map.height) * 180;
  form.elements.place.value = `${longitude.toFixed(1)}, ${latitude.toFixed(1)}`;
  update();
}

// Summary, legend and histogram

function swatch(rank) {
  return element("span", undefined, `swatch c${rank}`);
}

function drawLegend() {
  const items = CLASSES.map((one, rank) => {
    const item = element("li");
    item.append(swatch(rank), one.words);
    return item;
  });
  document.getElementById("legend").replaceChildren(...items);
}

function drawHistogram() {
  const counts = CLASSES.map((one, rank) => found.filter((entry) => entry.rank === rank && entry.crs.definition).length);
  const most = Math.max(...counts, 1);
  const whole = counts.reduce((sum, count) => sum + count, 0);
  const parts = counts.flatMap((count, rank) => {
    const track = element("div", undefined, "track");
    const bar = element("div", undefined, `bar c${rank}`);
    bar.style.width = `${(100 * count) / most}%`;
    if (count > 0) track.append(bar);
    const share = whole === 0 ? "" : `${count} (${((100 * count) / whole).toFixed(1)} %)`;
    return [element("div", CLASSES[rank].words), track, element("div", share, "number")];
  });
  document.getElementById("histogram").replaceChildren(...parts);
}

function addFigure(title, value) {
  const figure = element("div");
  figure.append(element("dt", title), element("dd", value));
  document.getElementById("figures").append(figure);
}

function drawSummary() {
  const { dataset, date, proj } = data.registry;
  document.getElementById("registry").textContent = `EPSG Geodetic Parameter Dataset ${dataset} of ${date}, from the database of PROJ ${proj}`;
  const defined = entries.filter((entry) => entry.crs.definition);
  const known = defined.filter((entry) => !Number.isNaN(entry.distance));
  addFigure("definitions", defined.length);
  addFigure("left out", entries.length - defined.length);
  for (const metres of [2, 10]) {
    const within = known.filter((entry) => entry.distance <= metres).length;
    addFigure(`within ${metres} m of PROJ`, known.length === 0 ? "not known" : `${((100 * within) / known.length).toFixed(1)} %`);
  }
  if (isVerified) {
    const conversions = defined.flatMap((entry) => (entry.crs.verification && entry.crs.verification.conversions) || []);
    const exact = conversions.filter((one) => one.distance !== null && one.distance <= 0.001).length;
    addFigure("exact within the datum", `${exact} of ${conversions.length}`);
  }
  document.getElementById("basis").textContent = isVerified
    ? "Largest distance of each definition from PROJ's best operation with the grids that were installed, where PROJ knows one."
    : "Largest distance of each definition from PROJ's best operation that needs no grid. Nothing was verified.";
}

// The fragment of the address holds filter and order, so that a view can be kept and sent: #country=norway&sort=-distance

function readFragment() {
  const fragment = new URLSearchParams(location.hash.slice(1));
  for (const field of form.elements) if (field.name) field.value = fragment.get(field.name) || "";
  const order = fragment.get("sort") || "code";
  const key = order.replace(/^-/, "");
  if (COLUMNS.some((column) => column.key === key)) sort = { key, descending: order.startsWith("-") };
}

function writeFragment() {
  const fragment = new URLSearchParams();
  for (const [key, value] of new FormData(form)) if (value !== "") fragment.set(key, value);
  if (sort.key !== "code" || sort.descending) fragment.set("sort", (sort.descending ? "-" : "") + sort.key);
  history.replaceState(null, "", `#${fragment}`);
}

function draw() {
  const filter = readFilter();
  found = entries.filter((entry) => passes(entry, filter)).sort(compare);
  shown = ROWS_AT_ONCE;
  drawHeads();
  drawRows();
  drawAreas();
  drawPlace(filter.place);
  drawHistogram();
}

function update() {
  draw();
  writeFragment();
}

function addOptions() {
  for (const kind of [...new Set(entries.map((entry) => entry.kind)), "left out"]) form.elements.kind.append(new Option(kind, kind));
  for (const metres of LEAST_DISTANCES)
    form.elements.distance.append(new Option(metres < 1 ? `beyond ${metres * 100} cm` : `beyond ${metres} m`, metres));
}

addOptions();
drawSummary();
drawLegend();
drawGraticule();
readFragment();
draw();
form.addEventListener("input", update);
form.addEventListener("submit", (event) => event.preventDefault());
form.addEventListener("reset", () => setTimeout(update));
document.getElementById("map").addEventListener("click", listPlace);
document.getElementById("more").addEventListener("click", () => {
  shown += 5 * ROWS_AT_ONCE;
  drawRows();
});
addEventListener("hashchange", () => {
  readFragment();
  draw();
});
addEventListener("beforeprint", () => {
  shown = Math.max(shown, ROWS_PRINTED_AT_MOST);
  drawRows();
});
