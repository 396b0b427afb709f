// The page: the user picks a CRS, and the map shows the layers in it.

import {axisNames, formatPosition} from "./axes.js";
import {FeatureMap} from "./map.js";
import {itemsUrl, readFeatures, readOffer} from "./server.js";

const element = (id) => document.getElementById(id);

// make("li", {className: "layer"}, child, "text"): an element with properties and children.
function make(tag, properties, ...children) {
    const made = Object.assign(document.createElement(tag), properties);
    made.append(...children);
    return made;
}

class Page {
    #map = new FeatureMap(element("map"));
    #layers = [];
    #offered = [];
    #chosen = null;
    #shown = null;
    #pointer = null;
    #request = new AbortController();

    constructor() {
        // The tests compare places with pixels.
        window.featureMap = this.#map.map;
        this.#followPointer();
    }

    async start() {
        const {layers, offered} = await readOffer();
        this.#offered = offered;
        for (const layer of layers) this.#addLayer(layer);
        for (const crs of offered) this.#addCrs(crs);
        const choose = () => this.#choose(this.#named(decodeURIComponent(location.hash.slice(1))) ?? offered[0]);
        addEventListener("hashchange", choose);
        await choose();
    }

    #named(name) {
        return this.#offered.find((crs) => crs.name === name);
    }

    #addLayer(layer) {
        const shown = make("input", {type: "checkbox", checked: true, id: `layer-${layer.id}`});
        const count = make("span", {className: "count"});
        const link = make("a", {textContent: "GeoJSON", ariaLabel: `${layer.title} as GeoJSON`});
        shown.addEventListener("change", () => this.#map.setVisible(layer.id, shown.checked));
        const label = make("label", {}, shown, make("span", {}, layer.title), count);
        element("layers").querySelector("ul").append(make("li", {}, label, link));
        this.#map.addLayer(layer.id);
        this.#layers.push({...layer, count, link});
    }

    #addCrs(crs) {
        const radio = make("input", {type: "radio", name: "crs", value: crs.name});
        radio.addEventListener("change", () => this.#choose(crs));
        const axes = make("small", {}, axisNames(crs).join(", "));
        const label = make("label", {}, radio, make("b", {}, crs.name), make("span", {}, crs.title), axes);
        element("offered").append(label);
    }

    async #choose(crs) {
        if (crs === this.#chosen) return;
        this.#chosen = crs;
        this.#label(crs);
        this.#request.abort();
        this.#request = new AbortController();
        const {signal} = this.#request;
        element("map").ariaBusy = "true";
        const collections = await this.#load(crs, signal);
        if (signal.aborted) return;
        this.#map.map.once("rendercomplete", () => this.#finish(signal));
        this.#map.show(crs, collections);
        this.#shown = crs;
    }

    #finish(signal) {
        this.#writePosition();
        if (!signal.aborted) element("map").ariaBusy = "false";
    }

    #label(crs) {
        const radio = document.querySelector(`input[value="${crs.name}"]`);
        radio.checked = true;
        radio.parentElement.scrollIntoView({block: "nearest"});
        history.replaceState(null, "", `#${encodeURIComponent(crs.name)}`);
        document.title = `${crs.name} – Feature server`;
        element("code").textContent = crs.name;
        element("title").textContent = crs.title;
        element("axes").textContent = axisNames(crs).map((name, i) => `${i + 1} ${name}`).join(", ");
        element("unit").textContent = crs.unit;
    }

    // Returns the features of the layers by their ids. A layer that fails is left out and named on the page.
    async #load(crs, signal) {
        const failures = [];
        const loaded = await Promise.all(
            this.#layers.map(async (layer) => {
                layer.link.href = itemsUrl(layer, crs.uri);
                layer.count.textContent = "";
                try {
                    const collection = await readFeatures(layer, crs.uri, signal);
                    layer.count.textContent = collection.features.length;
                    return [layer.id, collection];
                } catch (failure) {
                    failures.push(`${layer.title}: ${failure.message}`);
                    return [layer.id, undefined];
                }
            })
        );
        if (!signal.aborted) element("failure").textContent = failures.join("\n");
        return new Map(loaded);
    }

    #followPointer() {
        const {map} = this.#map;
        const point = (pixel) => {
            this.#pointer = pixel;
            this.#writePosition();
        };
        map.on("pointermove", (event) => point(event.pixel));
        map.on("moveend", () => this.#writePosition());
        element("whole").addEventListener("click", () => this.#map.showWhole());
        map.getViewport().addEventListener("pointerleave", () => point(null));
        element("map").addEventListener("keydown", () => point(null));
    }

    // Writes the position and the features under the pointer, or in the centre if there is no pointer.
    #writePosition() {
        if (!this.#shown) return;
        const {map} = this.#map;
        const [width, height] = map.getSize();
        const pixel = this.#pointer ?? [width / 2, height / 2];
        const point = map.getCoordinateFromPixel(pixel);
        if (!point) return;
        element("source").textContent = this.#pointer ? "Pointer" : "Centre";
        const parts = formatPosition(point, this.#shown, map.getView().getResolution());
        element("position").replaceChildren(...parts.map((part) => make("span", {}, part)));
        element("under").textContent = this.#map.namesAt(point).join(" · ");
    }
}

new Page().start().catch((failure) => {
    element("map").ariaBusy = "false";
    element("failure").textContent = `The server's offer cannot be read: ${failure.message}`;
});
