#include "tools/projdir/ShiftChoice.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "QSHelpers/NumericText.h"

namespace ProjDir {
namespace {

// In metres. Nothing that is closer than this to what PROJ uses can be told from it.
constexpr double SAME_SHIFT = 0.01;
constexpr double GOOD_SHIFT = 1;
// Seven parameters must lower the mean residual to this part of what three leave, and by more than SAME_SHIFT.
constexpr double PART_LEFT_BY_SEVEN = 0.8;

// Of the 340 seven-parameter shifts that the registry publishes (v10.076), 336, 322 and 321 are within these bounds. A
// fitted shift beyond them follows what is no shift between two datums. Metres, arc-seconds, parts per million.
constexpr double LARGEST_TRANSLATION = 1000;
constexpr double LARGEST_ROTATION = 15;
constexpr double LARGEST_SCALE = 25;

// Accuracies that make a difference to users, in metres.
constexpr std::array<double, 4> GRADES = {1, 2, 5, 10};

std::size_t gradeOf(const Residual& residual) {
    return static_cast<std::size_t>(std::lower_bound(GRADES.begin(), GRADES.end(), residual.largest) - GRADES.begin());
}

// The grade decides, then the mean: a single corner in which PROJ uses another operation must not spoil a shift
// that is right everywhere else.
bool isBetter(const Residual& left, const Residual& right) {
    if (gradeOf(left) != gradeOf(right)) return gradeOf(left) < gradeOf(right);
    return left.mean < right.mean;
}

bool justifiesSevenParameters(const Residual& seven, const Residual& three) {
    if (gradeOf(seven) != gradeOf(three)) return gradeOf(seven) < gradeOf(three);
    return seven.mean < PART_LEFT_BY_SEVEN * three.mean && seven.mean < three.mean - SAME_SHIFT;
}

void preferBest(const std::vector<PublishedShift>& candidates, const std::vector<ShiftSample>& samples,
                ShiftChoice& choice) {
    for (const PublishedShift& candidate : candidates) {
        const Residual residual = measureResidual(candidate.helmert, samples);
        if (choice.kind == ShiftKind::PUBLISHED && !isBetter(residual, choice.residual)) continue;
        choice.kind = ShiftKind::PUBLISHED;
        choice.helmert = candidate.helmert;
        choice.source = candidate.source;
        choice.accuracy = candidate.accuracy;
        choice.residual = residual;
    }
}

bool agreesWithin(const ShiftChoice& choice, double metres) {
    return choice.kind == ShiftKind::PUBLISHED && choice.residual.largest <= metres;
}

ShiftChoice fit(const std::vector<ShiftSample>& samples, FitParameters parameters, const Helmert& start) {
    ShiftChoice choice;
    choice.kind = ShiftKind::FITTED;
    choice.fitted = parameters;
    choice.helmert = roundForWriting(fitHelmert(samples, parameters, start));
    choice.residual = measureResidual(choice.helmert, samples);
    return choice;
}

// Seven parameters fitted to the smaller part of an area would run wild in the rest of it.
ShiftChoice fitBest(const ShiftEvidence& evidence, const ShiftChoice& published) {
    std::vector<ShiftSample> samples = evidence.samples;
    adoptHeights(samples, published.helmert);
    ShiftChoice three = fit(samples, FitParameters::TRANSLATION, Helmert{});
    if (!evidence.coversHalf) return three;
    const Helmert& start = published.kind == ShiftKind::PUBLISHED ? published.helmert : three.helmert;
    const ShiftChoice seven = fit(samples, FitParameters::ALL_SEVEN, start);
    return isSane(seven.helmert) && justifiesSevenParameters(seven.residual, three.residual) ? seven : three;
}

ShiftChoice improveByFitting(const ShiftEvidence& evidence, const ShiftChoice& published) {
    const ShiftChoice fitted = fitBest(evidence, published);
    if (!isSane(fitted.helmert)) return published;
    const bool isImproved = published.kind != ShiftKind::PUBLISHED || isBetter(fitted.residual, published.residual);
    return isImproved ? fitted : published;
}

std::string describeResidual(const Residual& residual) {
    const auto toCentimetres = [](double metres) { return QSHelpers::convertNumericToText(metres, 2, false); };
    return ", residual " + toCentimetres(residual.rootMeanSquare) + " m, at most " + toCentimetres(residual.largest) +
           " m";
}

std::string describeFit(const ShiftChoice& choice) {
    const char* const count = choice.fitted == FitParameters::ALL_SEVEN ? "7" : "3";
    return std::string("shift fitted, ") + count + " parameters" + describeResidual(choice.residual);
}

std::string describePublished(const ShiftChoice& choice) {
    const std::string text = "shift " + choice.source;
    return choice.residual.largest <= GOOD_SHIFT ? text : text + describeResidual(choice.residual);
}

}  // namespace

bool isSane(const Helmert& helmert) {
    return helmert.translation.cwiseAbs().maxCoeff() <= LARGEST_TRANSLATION &&
           helmert.rotation.cwiseAbs().maxCoeff() <= LARGEST_ROTATION && std::fabs(helmert.scale) <= LARGEST_SCALE;
}

ShiftChoice chooseShift(const ShiftEvidence& evidence,
                        const std::function<std::vector<PublishedShift>()>& listPublished) {
    ShiftChoice choice;
    if (!evidence.grid.empty()) {
        choice.kind = ShiftKind::GRID;
        choice.source = evidence.grid;
        choice.accuracy = evidence.gridAccuracy;
        return choice;
    }
    if (evidence.samples.empty()) return choice;
    preferBest(evidence.used, evidence.samples, choice);
    if (agreesWithin(choice, SAME_SHIFT)) return choice;
    preferBest(listPublished(), evidence.samples, choice);
    if (choice.kind == ShiftKind::UNKNOWN) choice.residual = measureResidual(Helmert{}, evidence.samples);
    return agreesWithin(choice, GOOD_SHIFT) || !evidence.mayFit ? choice : improveByFitting(evidence, choice);
}

std::string writeDatumShift(const ShiftChoice& choice) {
    switch (choice.kind) {
        case ShiftKind::WGS_84:
            return "+datum=WGS84";
        case ShiftKind::UNKNOWN:
            return "";
        case ShiftKind::GRID:
            return "+nadgrids=" + choice.source;
        default:
            return "+towgs84=" + writeHelmert(choice.helmert);
    }
}

std::string describeShift(const ShiftChoice& choice) {
    switch (choice.kind) {
        case ShiftKind::WGS_84:
            return "";
        case ShiftKind::UNKNOWN:
            return choice.residual.largest > 0 ? "no published shift" + describeResidual(choice.residual)
                                               : "PROJ knows no shift";
        case ShiftKind::GRID:
            return "shift by grid " + choice.source;
        case ShiftKind::FITTED:
            return describeFit(choice);
        default:
            return describePublished(choice);
    }
}

}  // namespace ProjDir
