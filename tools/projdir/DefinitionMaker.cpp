#include "tools/projdir/DefinitionMaker.h"

#include <utility>

#include "tools/projdir/Line.h"

namespace ProjDir {

namespace {

// Parts of the text are the database's own words.
std::string requireOneDefinition(const std::string& text) {
    if (!isOneDefinition(text)) throw NotExpressible("its definition holds a character that ends a definition");
    return text;
}

}  // namespace

DefinitionMaker::DefinitionMaker(const MakingRules& makingRules) : rules(makingRules) { context.openDatabaseAlone(); }

Outcome DefinitionMaker::make(const RegistryCrs& crs) {
    Outcome outcome;
    outcome.crs = crs;
    try {
        define(outcome);
    } catch (const NotExpressible& reason) {
        outcome.omission = reason.what();
    }
    requireSoundDatabase(context, "EPSG:" + std::to_string(crs.code));
    return outcome;
}

void DefinitionMaker::define(Outcome& outcome) {
    Survey survey(context, outcome.crs);
    Definition definition;
    definition.isNorthFirst = survey.isNorthFirst();
    definition.shift = chooseFor(survey);
    definition.hasUnknownPart = survey.hasUnknownPart();
    definition.text = requireOneDefinition(survey.text().write(writeDatumShift(definition.shift)));
    outcome.shares = survey.countShares();
    if (rules.withCheckPoints) outcome.checkPoints = survey.makeCheckPoints();
    outcome.definition = std::move(definition);
}

ShiftChoice DefinitionMaker::chooseFor(const Survey& survey) {
    ShiftChoice choice;
    choice.kind = ShiftKind::WGS_84;
    if (survey.text().isWgs84) return choice;
    ShiftEvidence evidence = survey.gatherEvidence();
    if (rules.useGrids) evidence.grid = survey.findCommonGrid();
    return chooseShift(evidence, [this, &survey] { return listPublished(survey.crs()); });
}

const std::vector<PublishedShift>& DefinitionMaker::listPublished(const PJ* crs) {
    const PjPtr geodeticCrs = openGeodeticCrs(context, crs);
    const auto [entry, isNew] = published.try_emplace(textOrEmpty(proj_get_id_code(geodeticCrs.get(), 0)));
    if (isNew) entry->second = findPublishedShifts(context, geodeticCrs.get());
    return entry->second;
}

}  // namespace ProjDir
