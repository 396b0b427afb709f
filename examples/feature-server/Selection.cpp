#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

#include "Features.h"

namespace FeatureServer {

using namespace CoordinateTransformation;

namespace {

constexpr std::size_t CHUNK_SIZE = 1000;

std::size_t transform(PointTransformer& transformer, std::vector<double>& ordinates, std::size_t dimension) {
    double* const x = ordinates.data();
    return transformer.transform(ordinates.size() / dimension, x, x + 1, dimension == 3 ? x + 2 : nullptr,
                                 static_cast<std::ptrdiff_t>(dimension));
}

// Whether two ranges of an axis overlap. Longitudes across the antimeridian have min > max in the first.
bool overlap(double min, double max, double otherMin, double otherMax) {
    if (min > max) return otherMax >= min || otherMin <= max;
    return otherMin <= max && otherMax >= min;
}

// Cuts a range to another one, unless one of them goes across the antimeridian. Returns false if nothing is left.
bool cut(double& min, double& max, double otherMin, double otherMax) {
    if (min > max || otherMin > otherMax) return true;
    min = std::max(min, otherMin);
    max = std::min(max, otherMax);
    return min <= max;
}

// Finds the features that intersect a box: those that intersect its image in the CRS of the layer, less those whose own
// image lies outside the box.
class BoxFilter {
public:
    BoxFilter(const Box& box, const Crs& stored, const Layer& layer)
        : bounds(box.bounds),
          toBox(*stored.get(), *box.crs.get()),
          exact(stored->isCompatible(box.crs.get()) && bounds.minX <= bounds.maxX) {
        PointTransformer fromBox(*box.crs.get(), *stored.get());
        search = fromBox.transformBounds(bounds);
        // The image of a box that is larger than what the CRS of the layer is made for need not lie inside the image of
        // its edges, so only the part of the box that has features counts.
        const Bounds extent = toBox.transformBounds(layer.extent);
        Bounds part = bounds;
        empty = !cut(part.minX, part.maxX, extent.minX, extent.maxX) ||
                !cut(part.minY, part.maxY, extent.minY, extent.maxY);
        if (!empty) search = fromBox.transformBounds(part);
        if (search.minX > search.maxX) search = {-HUGE_VAL, search.minY, HUGE_VAL, search.maxY};
    }

    bool isEmpty() const { return empty; }
    // Whether the source finds exactly the features of the box, because the box is in the CRS of the layer.
    bool isExact() const { return exact; }
    const Bounds& searchBox() const { return search; }

    void removeOthers(Chunk& chunk) {
        image = chunk.ordinates;
        transform(toBox, image, chunk.dimension);
        const auto isOutside = [&](const Chunk::Entry& entry) { return !touches(entry, chunk.dimension); };
        chunk.entries.erase(std::remove_if(chunk.entries.begin(), chunk.entries.end(), isOutside), chunk.entries.end());
    }

private:
    bool touches(const Chunk::Entry& entry, std::size_t dimension) const {
        Bounds own{HUGE_VAL, HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
        for (std::size_t i = entry.begin; i < entry.end; i += dimension)
            own = {std::fmin(own.minX, image[i]), std::fmin(own.minY, image[i + 1]), std::fmax(own.maxX, image[i]),
                   std::fmax(own.maxY, image[i + 1])};
        return overlap(bounds.minX, bounds.maxX, own.minX, own.maxX) &&
               overlap(bounds.minY, bounds.maxY, own.minY, own.maxY);
    }

    Bounds bounds;
    PointTransformer toBox;
    bool exact;
    Bounds search{};
    bool empty = false;
    std::vector<double> image;
};

std::optional<BoxFilter> makeFilter(const Selection& selection, const Crs& stored) {
    if (!selection.box) return {};
    try {
        return BoxFilter(*selection.box, stored, selection.layer);
    } catch (const TransformationException&) {
        throw Refusal{400, "InvalidParameterValue", "bbox", currentFailure()};
    }
}

void requireTransformed(const Chunk::Entry& entry, const Chunk& chunk, const Selection& selection) {
    for (std::size_t i = entry.begin; i < entry.end; ++i)
        if (std::isnan(chunk.ordinates[i]))
            throw TransExecException("A feature of " + selection.layer.name + " cannot be transformed to " +
                                     selection.target->getAliasOrIdentifier(true));
}

}  // namespace

Bounds parseBox(const std::string& text, std::string& crsName) {
    std::vector<double> numbers;
    std::size_t begin = 0;
    while (numbers.size() < 6 && begin < text.size()) {
        double number = 0;
        const auto [end, error] = std::from_chars(&text[begin], text.data() + text.size(), number);
        const auto after = static_cast<std::size_t>(end - text.data());
        if (error != std::errc() || !std::isfinite(number) || (after < text.size() && text[after] != ',')) break;
        numbers.push_back(number);
        begin = after + 1;
    }
    if (numbers.size() == 5) {  // the name of the CRS is a number
        numbers.pop_back();
        begin = text.rfind(',') + 1;
    }
    crsName = begin < text.size() ? text.substr(begin) : "";
    if (numbers.size() != 4 && numbers.size() != 6)
        throw Refusal{400, "InvalidParameterValue", "bbox", "A box has four or six numbers, not " + text};
    const std::size_t half = numbers.size() / 2;
    return {numbers[0], numbers[1], numbers[half], numbers[half + 1]};
}

Outcome select(const Store& store, const Offer& offer, const Selection& selection, FeatureWriter* writer) {
    const Crs stored = offer.stored(selection.layer.crsCode);
    PointTransformer toTarget(*stored.get(), *selection.target.get());
    std::optional<BoxFilter> filter = makeFilter(selection, stored);
    if (filter && filter->isEmpty()) return {0, 0, false};
    const bool exact = !filter || filter->isExact();
    Cursor cursor(store, selection.layer, filter ? &filter->searchBox() : nullptr, selection.id);
    if (writer == nullptr && exact) return {0, cursor.count(), false};
    const std::size_t enough = selection.limit + std::min(selection.offset, SIZE_MAX - selection.limit);
    Outcome outcome;
    std::size_t found = 0;
    Chunk chunk;
    while (!outcome.more && cursor.read(chunk, exact ? std::min(enough - found, CHUNK_SIZE) + 1 : CHUNK_SIZE)) {
        if (!exact) filter->removeOthers(chunk);
        const bool failed = writer != nullptr && transform(toTarget, chunk.ordinates, chunk.dimension) > 0;
        for (const Chunk::Entry& entry : chunk.entries) {
            outcome.more = found == enough && writer != nullptr;
            if (outcome.more) break;
            if (found++ < selection.offset || writer == nullptr) continue;
            if (failed) requireTransformed(entry, chunk, selection);
            writer->write(chunk, entry);
            ++outcome.written;
        }
    }
    if (!outcome.more) outcome.matched = found;
    if (outcome.more && exact) outcome.matched = cursor.count();
    return outcome;
}

}  // namespace FeatureServer
