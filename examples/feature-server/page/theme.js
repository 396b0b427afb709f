// The colours and fonts of the map, from the style sheet.

import CircleStyle from "ol/style/Circle.js";
import Fill from "ol/style/Fill.js";
import Stroke from "ol/style/Stroke.js";
import Style from "ol/style/Style.js";
import Text from "ol/style/Text.js";

// Reads the style sheet anew whenever the reader changes between light and dark.
export class Theme {
    #computed = getComputedStyle(document.documentElement);

    color(name) {
        return this.#computed.getPropertyValue(`--${name}`).trim();
    }

    font(pixels) {
        return `${pixels}px ${getComputedStyle(document.body).fontFamily}`;
    }

    onChange(listener) {
        matchMedia("(prefers-color-scheme: dark)").addEventListener("change", listener);
    }
}

const polygonStyles = (theme) => [
    new Style({
        fill: new Fill({color: theme.color("land")}),
        stroke: new Stroke({color: theme.color("border"), width: 1}),
    }),
];

const lineStyles = (theme) => [new Style({stroke: new Stroke({color: theme.color("river"), width: 1.5})})];

// The map places what has the higher index first: names avoid all marks.
function pointStyles(theme) {
    const mark = new CircleStyle({
        radius: 3.5,
        fill: new Fill({color: theme.color("place")}),
        stroke: new Stroke({color: theme.color("land"), width: 1}),
        declutterMode: "obstacle",
    });
    const name = new Text({
        font: theme.font(12),
        fill: new Fill({color: theme.color("text")}),
        stroke: new Stroke({color: theme.color("land"), width: 3}),
        textAlign: "left",
        offsetX: 8,
    });
    return [new Style({image: mark, zIndex: 1}), new Style({text: name, zIndex: 0})];
}

const BY_GEOMETRY = [
    {kind: /Polygon/, styles: polygonStyles, zIndex: 0, reach: 0},
    {kind: /LineString/, styles: lineStyles, zIndex: 2, reach: 4},
    {kind: /Point/, styles: pointStyles, zIndex: 4, reach: 6},
];

// How features of a geometry type are drawn: a style function, the place of their layer among the others, and the
// distance in pixels from which the pointer touches them.
export function drawing(type, theme) {
    const {styles, zIndex, reach} = BY_GEOMETRY.find(({kind}) => kind.test(type)) ?? BY_GEOMETRY[0];
    const made = styles(theme);
    const style = (feature) => {
        for (const part of made) part.getText()?.setText(feature.get("name") ?? "");
        return made;
    };
    return {style, zIndex, reach};
}
