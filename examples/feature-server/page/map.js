// The map. Its view is in the chosen CRS, and it draws coordinates as the server writes them.

import OlMap from "ol/Map.js";
import View from "ol/View.js";
import Zoom from "ol/control/Zoom.js";
import {buffer, createEmpty, extend, isEmpty} from "ol/extent.js";
import GeoJSON from "ol/format/GeoJSON.js";
import {defaults as defaultInteractions} from "ol/interaction/defaults.js";
import VectorLayer from "ol/layer/Vector.js";
import Projection from "ol/proj/Projection.js";
import {METERS_PER_UNIT} from "ol/proj/Units.js";
import VectorSource from "ol/source/Vector.js";

import {exchangeAll, isAngular} from "./axes.js";
import {gridLayer} from "./grid.js";
import {drawing, Theme} from "./theme.js";

const NOTHING = {type: "FeatureCollection", features: []};

// The server makes all transformations: the map knows the CRS by its axes and unit alone.
function projectionOf(crs, extent) {
    return new Projection({
        code: crs.uri,
        units: isAngular(crs) ? "degrees" : "m",
        axisOrientation: crs.northFirst ? "neu" : "enu",
        extent,
    });
}

function drawable(collection, crs) {
    const features = new GeoJSON().readFeatures(collection ?? NOTHING).filter((feature) => feature.getGeometry());
    for (const feature of features)
        feature.getGeometry().applyTransform((input, output, dimension, stride) => exchangeAll(output, crs, stride));
    return features;
}

// The map can show anything between a metre and fifty kilometres to a pixel.
function viewOf(crs, extent) {
    const metre = isAngular(crs) ? 1 / METERS_PER_UNIT.degrees : 1;
    return new View({
        projection: projectionOf(crs, extent),
        minResolution: metre,
        maxResolution: 50000 * metre,
        enableRotation: false,
    });
}

export class FeatureMap {
    #theme = new Theme();
    #grid = gridLayer(this.#theme);
    #layers = new Map();
    #whole = null;

    constructor(target) {
        this.map = new OlMap({
            target,
            controls: [new Zoom()],
            interactions: defaultInteractions({altShiftDragRotate: false, pinchRotate: false}),
            layers: [this.#grid],
        });
        this.#theme.onChange(() => this.#restyle());
        this.#restyle();
    }

    addLayer(id) {
        const layer = new VectorLayer({source: new VectorSource(), declutter: true});
        this.#layers.set(id, layer);
        this.map.addLayer(layer);
    }

    setVisible(id, visible) {
        this.#layers.get(id).setVisible(visible);
    }

    // Shows a CRS. `collections` has the GeoJSON of each layer by its id; a layer without any is empty.
    show(crs, collections) {
        for (const [id, layer] of this.#layers)
            layer.setSource(new VectorSource({features: drawable(collections.get(id), crs)}));
        this.#restyle();
        this.#whole = this.#extent();
        this.map.setView(viewOf(crs, this.#whole));
        this.showWhole();
    }

    showWhole() {
        this.map.getView().fit(this.#whole, {padding: [16, 16, 16, 16]});
    }

    // The names of the features at a point, topmost first.
    namesAt(point) {
        const touched = [...this.#layers.values()]
            .filter((layer) => layer.getVisible())
            .sort((one, other) => other.getZIndex() - one.getZIndex())
            .flatMap((layer) => this.#touched(layer, point));
        return touched.map((feature) => feature.get("name")).filter(Boolean);
    }

    #touched(layer, point) {
        const extent = buffer([...point, ...point], layer.get("reach") * this.map.getView().getResolution());
        const features = layer.getSource().getFeaturesInExtent(extent);
        return features.filter((feature) => feature.getGeometry().intersectsExtent(extent));
    }

    // The extent of all features; of something if there are none.
    #extent() {
        const all = createEmpty();
        for (const layer of this.#layers.values()) extend(all, layer.getSource().getExtent());
        return isEmpty(all) ? [-1, -1, 1, 1] : all;
    }

    #restyle() {
        for (const layer of this.#layers.values()) {
            const type = layer.getSource().getFeatures()[0]?.getGeometry().getType() ?? "Polygon";
            const {style, zIndex, reach} = drawing(type, this.#theme);
            layer.setStyle(style);
            layer.setZIndex(zIndex);
            layer.set("reach", reach);
        }
        this.#grid.changed();
    }
}
