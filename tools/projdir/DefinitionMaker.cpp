#include "tools/projdir/DefinitionMaker.h"

#include <utility>

#include "tools/projdir/Line.h"

namespace ProjDir {
namespace {

// Parts of the text are the database's own words.
std::string requireWholeDefinition(const std::string& text) {
    if (!isWholeDefinition(text)) throw NotExpressible("its definition holds a character that ends a definition");
    return text;
}

}  // namespace

DefinitionMaker::DefinitionMaker(const DefinitionOptions& definitionOptions) : options(definitionOptions) {
    context.openDatabaseUnshared();
}

CrsOutcome DefinitionMaker::make(const RegistryCrs& crs) {
    CrsOutcome outcome;
    outcome.crs = crs;
    try {
        define(outcome);
    } catch (const NotExpressible& reason) {
        outcome.omission = reason.what();
    }
    requireSoundDatabase(context, "EPSG:" + std::to_string(crs.code));
    return outcome;
}

void DefinitionMaker::define(CrsOutcome& outcome) {
    Survey survey(context, outcome.crs);
    ClassicDefinition definition;
    definition.isNorthFirst = survey.isNorthFirst();
    definition.shift = chooseShiftOf(survey);
    definition.hasUnknownPart = survey.hasUnknownPart();
    definition.text = requireWholeDefinition(survey.text().write(writeDatumShift(definition.shift)));
    outcome.shares = survey.countShares();
    if (options.withCheckPoints) outcome.checkPoints = survey.makeCheckPoints();
    outcome.definition = std::move(definition);
}

ShiftChoice DefinitionMaker::chooseShiftOf(const Survey& survey) {
    ShiftChoice choice;
    choice.kind = ShiftKind::WGS_84;
    if (survey.text().isWgs84) return choice;
    ShiftEvidence evidence = survey.gatherEvidence();
    if (options.useGrids) evidence.grid = survey.findCommonGrid();
    return chooseShift(evidence, [this, &survey] { return publishedShiftsOf(survey.crs()); });
}

const std::vector<PublishedShift>& DefinitionMaker::publishedShiftsOf(const PJ* crs) {
    const ProjPtr<PJ> geodeticCrs = createGeodeticCrs(context, crs);
    const auto [entry, isNew] = shiftCache.try_emplace(textOrEmpty(proj_get_id_code(geodeticCrs.get(), 0)));
    if (isNew) entry->second = findPublishedShifts(context, geodeticCrs.get());
    return entry->second;
}

}  // namespace ProjDir
