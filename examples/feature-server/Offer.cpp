#include <fstream>
#include <sstream>

#include "QuarvelSrv/SrsFormattingOptions.h"
#include "Service.h"

namespace FeatureServer {
namespace {

const QuarvelSrv::SrsFormattingOptions URN{"", "", 0}, URL{"0", "", 2};

std::unique_ptr<const CrsConfig> start(const std::string& fragmentFile, const std::string& projDirectory,
                                       const char* axisOrderConvention) {
    std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    config->setConfigProperty("Proj4ConfigDir", projDirectory);
    config->setConfigProperty("AcceptSafeCuries", "true");
    config->setConfigProperty("AxisOrderConvention", axisOrderConvention);
    std::ifstream file(fragmentFile);
    std::istringstream fragment(std::string(std::istreambuf_iterator<char>(file), {}));
    config->configure(fragment);
    config->init();
    return config;
}

bool isUrn(const std::string& name) { return name.rfind("urn:", 0) == 0; }
bool isUrl(const std::string& name) { return name.rfind("http:", 0) == 0; }

}  // namespace

Refusal invalid(const std::string& parameter, const std::string& text) {
    return {"InvalidParameterValue", parameter, text};
}

std::string currentFailure() {
    try {
        throw;
    } catch (const TransformationException& failure) {
        return failure.getServiceExceptionCode() + ": " + failure.what();
    } catch (const QSHelpers::Exception& failure) {
        return failure.getServiceExceptionCode() + ": " + failure.what();
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

Offer::Offer(const std::string& fragmentFile, const std::string& projDirectory)
    : established(start(fragmentFile, projDirectory, "established")),
      registry(start(fragmentFile, projDirectory, "registry")) {
    for (const CrsConfigData& entry : *registry->getConfiguredCrs()) {
        const std::string alias = entry.getAlias();
        const Crs crs = named(Protocol::API, entry.getAliasOrIdentifier(), "");
        const CrsDescription* const known = CrsDescriptions::ofProjDirectory().find(crs->getPrimaryCode());
        list.push_back({alias.empty() ? urnOf(crs) : (isUrn(alias) ? alias : ""),
                        alias.empty() ? urlOf(crs) : (isUrl(alias) ? alias : ""), crs->isAxisOrderEastNorthOrLonLat(),
                        known != nullptr ? *known : CrsDescription()});
    }
    if (list.empty() || list.front().url != CRS84)
        throw std::runtime_error("The first CRS in " + fragmentFile + " must be " + CRS84);
}

Crs Offer::named(Protocol protocol, const std::string& name, const std::string& locator) const {
    const CrsCreator& creator = of(protocol).getCreator();
    try {
        return creator.createFromName(name, true, true);
    } catch (const std::exception&) {
        throw invalid(locator, currentFailure() + " (" + creator.explainName(name).text + ")");
    }
}

Crs Offer::written(Protocol protocol, const std::string& name, const Crs& crs, std::size_t dimension) const {
    Crs target = of(protocol).getCreator().createInOrderOf(name, *crs.get());
    if (dimension == 2) target.forceDim2D();
    return target;
}

std::string Offer::nameLike(const std::string& requested, const Crs& crs) {
    if (!isUrl(requested) && !isUrn(requested)) return crs->getAliasOrIdentifier(true);
    return crs->getAliasOrAsOgcURN(isUrl(requested) ? &URL : &URN, true);
}

std::string Offer::urlOf(const Crs& crs) { return crs->getAliasOrAsOgcURN(&URL, false); }

int Offer::decimalPlaces(const Crs& crs) const {
    const CrsConfigData* const entry = registry->getEntryFor(*crs.get());
    const int usual = crs->isGeographic() ? CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE
                                          : CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER;
    return entry == nullptr ? usual : entry->getNumberOfDecimalPlaces().get_value_or(usual);
}

Bounds Offer::geographicBox(unsigned int code, const Bounds& extent) const {
    const Crs geographic = named(Protocol::API, CRS84, "");
    return PointTransformer(*stored(code).get(), *geographic.get()).transformBounds(extent);
}

}  // namespace FeatureServer
