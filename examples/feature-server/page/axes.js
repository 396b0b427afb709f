// Axes and numbers of a CRS. Points of the map have easting or longitude first, whatever the axis order of the CRS.

export function isAngular(crs) {
    return crs.unit.startsWith("degree");
}

// The names of the axes in the order of the CRS.
export function axisNames(crs) {
    const names = isAngular(crs) ? ["longitude", "latitude"] : ["easting", "northing"];
    return crs.northFirst ? names.reverse() : names;
}

// Exchanges the two ordinates if northing or latitude is first. Converts in both directions.
export function exchange([first, second], crs) {
    return crs.northFirst ? [second, first] : [first, second];
}

// The same for an array of points, in place.
export function exchangeAll(ordinates, crs, stride) {
    if (!crs.northFirst) return;
    for (let i = 0; i + 1 < ordinates.length; i += stride)
        [ordinates[i], ordinates[i + 1]] = [ordinates[i + 1], ordinates[i]];
}

// The least number of decimal places that tells numbers at this distance apart.
function places(distance) {
    return Math.max(0, Math.ceil(-Math.log10(distance) - 1e-9));
}

export function formatNumber(number, distance) {
    const text = number.toFixed(places(distance)).replace(/^-(?=[0.]*$)/, "").replace("-", "\u2212");
    return text.replace(/\B(?<!\.\d*)(?=(\d{3})+(?!\d))/g, "\u202f");
}

export function formatPosition(point, crs, distance) {
    const names = axisNames(crs);
    const unit = isAngular(crs) ? "°" : "\u00a0m";
    return exchange(point, crs).map((ordinate, i) => `${names[i]} ${formatNumber(ordinate, distance)}${unit}`);
}
