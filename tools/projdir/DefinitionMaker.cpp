#include "tools/projdir/DefinitionMaker.h"

#include <utility>

#include "QSHelpers/NumericText.h"
#include "tools/projdir/Line.h"

namespace ProjDir {
namespace {

constexpr std::size_t LARGEST_FAR_PART = 10;

// Parts of the text are the database's own words.
std::string requireWholeDefinition(const std::string& text) {
    if (!isWholeDefinition(text)) throw NotExpressible("its definition holds a character that ends a definition");
    return text;
}

bool hasUnit(CrsKind kind) {
    return kind == CrsKind::GEOGRAPHIC || kind == CrsKind::GEOCENTRIC || kind == CrsKind::PROJECTED;
}

void readUnit(const ProjContext& context, const PJ* crs, CrsDescription& description) {
    const ProjPtr<PJ> axes(proj_crs_get_coordinate_system(context.get(), crs));
    const char* name = nullptr;
    if (axes != nullptr)
        proj_cs_get_axis_info(context.get(), axes.get(), 0, nullptr, nullptr, nullptr, &description.unitLength, &name,
                              nullptr, nullptr);
    description.unit = textOrEmpty(name);
}

std::vector<unsigned int> findReplacements(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ_OBJ_LIST> list(proj_get_non_deprecated(context.get(), crs));
    std::vector<unsigned int> codes;
    const int count = list == nullptr ? 0 : proj_list_get_count(list.get());
    for (int i = 0; i < count; ++i) {
        const ProjPtr<PJ> replacement(proj_list_get(context.get(), list.get(), i));
        if (textOrEmpty(proj_get_id_auth_name(replacement.get(), 0)) == "EPSG")
            codes.push_back(readRegistryCode(textOrEmpty(proj_get_id_code(replacement.get(), 0))));
    }
    return codes;
}

std::string nameShift(const ShiftChoice& shift) {
    if (shift.kind == ShiftKind::FITTED) return "fitted";
    return shift.kind == ShiftKind::PUBLISHED ? shift.source : "none";
}

std::string toText(double metres) { return QSHelpers::convertNumericToText(metres, -1, false); }

}  // namespace

DefinitionMaker::DefinitionMaker(const DefinitionOptions& definitionOptions)
    : options(definitionOptions), context(GridUse::NONE) {
    context.openDatabaseUnshared();
    if (!options.withCheckPoints) return;
    installed.emplace();
    installed->openDatabaseUnshared();
}

CrsOutcome DefinitionMaker::make(const RegistryCrs& crs) {
    CrsOutcome outcome;
    outcome.crs = crs;
    outcome.description = describe(crs);
    try {
        if (crs.horizontal != nullptr)
            defineCompound(crs, outcome);
        else
            define(crs, outcome);
    } catch (const NotExpressible& reason) {
        outcome.omission = reason.what();
    }
    requireSoundDatabase(context, "EPSG:" + std::to_string(crs.code));
    if (installed) requireSoundDatabase(*installed, "EPSG:" + std::to_string(crs.code));
    return outcome;
}

// Heights pass through: the definition is that of the horizontal part.
void DefinitionMaker::defineCompound(const RegistryCrs& crs, CrsOutcome& outcome) {
    try {
        define(*crs.horizontal, outcome);
    } catch (const NotExpressible& reason) {
        throw NotExpressible("its horizontal part EPSG:" + std::to_string(crs.horizontal->code) +
                             " is left out: " + reason.what());
    }
}

void DefinitionMaker::define(const RegistryCrs& crs, CrsOutcome& outcome) {
    requireExpressibleKind(crs.kind);
    Base& geodetic = baseOf(crs);
    const Survey survey(context, crs, geodetic.reference);
    const ShiftEvidence evidence = survey.gatherEvidence();
    ClassicDefinition definition;
    definition.isNorthFirst = survey.isNorthFirst();
    definition.shift = chooseShiftOf(survey, geodetic, evidence);
    definition.hasUnknownPart = survey.hasUnknownPart();
    requireCloseShift(definition.shift, evidence, definition);
    definition.text = requireWholeDefinition(survey.text().write(writeDatumShift(definition.shift)));
    outcome.shares = survey.countShares();
    outcome.shiftAccuracy = definition.shift.accuracy;
    const ShiftKind kind = definition.shift.kind;
    if (!evidence.samples.empty() && kind != ShiftKind::GRID)
        outcome.largestDistance = definition.shift.residual.largest;
    if (installed) {
        InstalledEvidence proj = survey.surveyInstalled(*installed);
        outcome.shares = std::move(proj.shares);
        outcome.checkPoints = std::move(proj.checkPoints);
    }
    outcome.definition = std::move(definition);
}

DefinitionMaker::Base& DefinitionMaker::baseOf(const RegistryCrs& crs) {
    if (base != nullptr && base->code == crs.geodeticCode) return *base;
    base.reset();
    ProjPtr<PJ> geodeticCrs = createCrs(context, crs.geodeticCode);
    Reference reference(context, geodeticCrs.get(), PROJ_GRID_AVAILABILITY_DISCARD_OPERATION_IF_MISSING_GRID);
    std::optional<Reference> withGrids;
    if (options.useGrids) withGrids.emplace(context, geodeticCrs.get(), PROJ_GRID_AVAILABILITY_IGNORED);
    base.reset(
        new Base{crs.geodeticCode, std::move(geodeticCrs), std::move(reference), std::move(withGrids), std::nullopt});
    return *base;
}

ShiftChoice DefinitionMaker::chooseShiftOf(const Survey& survey, Base& geodetic, const ShiftEvidence& surveyed) {
    ShiftChoice choice;
    choice.kind = ShiftKind::WGS_84;
    if (survey.text().isWgs84) return choice;
    ShiftEvidence evidence = surveyed;
    evidence.mayFit = options.fit;
    if (geodetic.withGrids)
        if (const auto grid = survey.findCommonGrid(*geodetic.withGrids)) {
            evidence.grid = grid->gridShift;
            evidence.gridAccuracy = grid->accuracy;
        }
    return chooseShift(evidence, [this, &geodetic] { return publishedShiftsOf(geodetic); });
}

const std::vector<PublishedShift>& DefinitionMaker::publishedShiftsOf(Base& geodetic) {
    if (!geodetic.published) geodetic.published = findPublishedShifts(context, geodetic.crs.get());
    return *geodetic.published;
}

void DefinitionMaker::requireCloseShift(const ShiftChoice& shift, const ShiftEvidence& evidence,
                                        ClassicDefinition& definition) const {
    if (shift.kind == ShiftKind::GRID) return;
    definition.farPoints = countBeyond(shift.helmert, evidence.samples, options.worst);
    if (LARGEST_FAR_PART * definition.farPoints <= evidence.samples.size()) return;
    throw NotExpressible("its best shift (" + nameShift(shift) + ") is farther than " + toText(options.worst) +
                         " m from PROJ's operations at " + std::to_string(definition.farPoints) + " of " +
                         std::to_string(evidence.samples.size()) + " points; --worst allows it");
}

CrsDescription DefinitionMaker::describe(const RegistryCrs& crs) const {
    CrsDescription description;
    description.kind = crs.kind;
    description.area = crs.areaName;
    description.datum = crs.datum.name;
    description.datumId = crs.datum.id;
    if (crs.isDeprecated) description.replacedBy = findReplacements(context, createCrs(context, crs.code).get());
    const RegistryCrs& horizontal = crs.horizontal == nullptr ? crs : *crs.horizontal;
    if (hasUnit(horizontal.kind)) readUnit(context, createCrs(context, horizontal.code).get(), description);
    return description;
}

}  // namespace ProjDir
