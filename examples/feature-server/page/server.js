// Reads what the server offers, and its features.

const PAGE_SIZE = 10000;

async function reasonOf(response) {
    const text = await response.text();
    try {
        return JSON.parse(text).description ?? text;
    } catch {
        return text;
    }
}

async function get(url, type, signal) {
    const response = await fetch(url, {headers: {Accept: type}, signal});
    if (!response.ok) throw new Error(`${response.status}: ${await reasonOf(response)}`);
    return response;
}

// A list of CRS may refer to the list that all collections share.
function resolve(list, shared) {
    return (list ?? ["#/crs"]).flatMap((crs) => (crs === "#/crs" ? shared : [crs]));
}

// "EPSG:25832" for "http://www.opengis.net/def/crs/EPSG/0/25832". A compound CRS has two parts.
function nameOf(uri) {
    const parts = [...uri.matchAll(/crs\/([^/]+)\/[^/]+\/([^/,&]+)/g)];
    return parts.map(([, authority, code]) => `${authority}:${code}`).join("+") || uri;
}

const described = ({uri, title, unit, axisOrder}) => ({
    uri,
    name: nameOf(uri),
    title,
    unit,
    northFirst: axisOrder.startsWith("northing"),
});

const json = async (url) => (await get(url, "application/json")).json();

// Returns the layers, and the CRS that at least one of them has.
export async function readOffer() {
    const [{collections, crs: shared}, {crs: known}] = await Promise.all([json("collections"), json("crs")]);
    const layers = collections.map(({id, title, crs}) => ({id, title: title ?? id, crs: resolve(crs, shared ?? [])}));
    const offered = known.filter(({uri}) => layers.some((layer) => layer.crs.includes(uri)));
    return {layers, offered: offered.map(described)};
}

export function itemsUrl(layer, crs) {
    return `collections/${encodeURIComponent(layer.id)}/items?crs=${encodeURIComponent(crs)}&limit=${PAGE_SIZE}`;
}

// The address of the next page, on the host that served this one, or null.
function nextPage(collection) {
    const next = collection.links?.find(({rel}) => rel === "next");
    if (!next) return null;
    const {pathname, search} = new URL(next.href, location.href);
    return pathname + search;
}

// Returns all features of a layer as GeoJSON, with coordinates in the axis order of the CRS.
export async function readFeatures(layer, crs, signal) {
    const features = [];
    for (let url = itemsUrl(layer, crs); url !== null; ) {
        const response = await get(url, "application/geo+json", signal);
        const answered = response.headers.get("Content-Crs");
        if (answered !== `<${crs}>`) throw new Error(`the answer is in ${answered}`);
        const collection = await response.json();
        for (const feature of collection.features) features.push(feature);
        url = nextPage(collection);
    }
    return {type: "FeatureCollection", features};
}
