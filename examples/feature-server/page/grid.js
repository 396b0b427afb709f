// Draws lines at round coordinates of the CRS, with their numbers at the left and lower edges of the map.

import Layer from "ol/layer/Layer.js";

import {formatNumber} from "./axes.js";

const SPACING = 90;  // pixels

// The least of 1, 2 and 5 times a power of ten that is not below `least`.
function roundStep(least) {
    const power = 10 ** Math.floor(Math.log10(least));
    return [1, 2, 5, 10].map((factor) => factor * power).find((step) => step >= least);
}

function multiples(step, from, to) {
    const first = Math.ceil(from / step);
    return Array.from({length: Math.max(0, Math.floor(to / step) - first + 1)}, (_, i) => (first + i) * step);
}

// The lines of a frame: each has its place in pixels and the text of its coordinate.
function gridLines({extent: [west, south, east, north], viewState: {resolution, projection}}) {
    const step = roundStep(resolution * SPACING);
    const sign = projection.getUnits() === "degrees" ? "°" : "";
    const line = (at, coordinate) => ({
        at: Math.round(at / resolution) + 0.5,
        text: formatNumber(coordinate, step) + sign,
    });
    return {
        columns: multiples(step, west, east).map((x) => line(x - west, x)),
        rows: multiples(step, south, north).map((y) => line(north - y, y)),
    };
}

function drawLines(context, {columns, rows}, [width, height]) {
    context.beginPath();
    for (const {at} of columns) context.rect(at, -1, 0, height + 2);
    for (const {at} of rows) context.rect(-1, at, width + 2, 0);
    context.stroke();
}

function drawNumbers(context, {columns, rows}, [, height]) {
    const write = (text, x, y) => {
        context.strokeText(text, x, y);
        context.fillText(text, x, y);
    };
    for (const {at, text} of columns.filter(({at}) => at > SPACING / 2)) write(text, at + 4, height - 6);
    for (const {at, text} of rows.filter(({at}) => at < height - SPACING / 4)) write(text, 6, at - 4);
}

function draw(canvas, frame, theme) {
    canvas.width = Math.round(frame.size[0] * frame.pixelRatio);
    canvas.height = Math.round(frame.size[1] * frame.pixelRatio);
    const context = canvas.getContext("2d");
    const lines = gridLines(frame);
    context.scale(frame.pixelRatio, frame.pixelRatio);
    Object.assign(context, {strokeStyle: theme.color("grid"), lineWidth: 1});
    drawLines(context, lines, frame.size);
    Object.assign(context, {strokeStyle: theme.color("sea"), fillStyle: theme.color("quiet"), lineWidth: 3});
    Object.assign(context, {font: theme.font(11), lineJoin: "round"});
    drawNumbers(context, lines, frame.size);
}

export function gridLayer(theme) {
    const canvas = document.createElement("canvas");
    canvas.className = "grid";
    const render = (frame) => {
        draw(canvas, frame, theme);
        return canvas;
    };
    return new Layer({render, zIndex: 1});
}
