#include "tools/projdir/DirectoryFiles.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <boost/property_tree/xml_parser.hpp>
#include <openssl/evp.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "text/FileText.h"
#include "text/NumericText.h"
#include "tools/common/Process.h"

namespace ProjDir {

using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsConfigData;
using CoordinateTransformation::writeDouble;

namespace {

// Code 0 is the unknown and the default CRS. Its coordinates are longitude and latitude of WGS 84.
constexpr char UNKNOWN_CRS_ENTRY[] = "# Unknown and default CRS\n<0> +proj=longlat +datum=WGS84 +no_defs <>\n";
constexpr char UNKNOWN_CRS_AXIS_ORDER[] = "0;en\n";

constexpr int DECIMALS_OF_DISTANCE = 2;
constexpr char CODE_PREFIX[] = "EPSG:";
constexpr mode_t FILE_MODE = 0666;

std::string quoteCell(const std::string& text) {
    std::string line = toOneLine(text);
    if (line.find_first_of(",\"") == std::string::npos) return line;
    std::string quoted;
    for (const char c : line) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return "\"" + quoted + "\"";
}

std::string writeCells(const std::vector<std::string>& cells) {
    std::string line;
    for (const std::string& cell : cells) line += (line.empty() ? "" : ",") + quoteCell(cell);
    return line + "\n";
}

std::string writeShiftSource(const ShiftChoice& shift) {
    if (shift.kind == ShiftKind::FITTED) return "fitted";
    if (shift.kind == ShiftKind::GRID) return "grid " + shift.source;
    return shift.kind == ShiftKind::PUBLISHED ? shift.source : "";
}

std::string writeCodes(const std::vector<unsigned int>& codes) {
    std::string text;
    for (const unsigned int code : codes) text += (text.empty() ? "" : " ") + std::to_string(code);
    return text;
}

std::string writeDescription(const CrsOutcome& outcome) {
    const RegistryCrs& crs = outcome.crs;
    const ShiftChoice& shift = outcome.definition->shift;
    const std::optional<double>& distance = outcome.largestDistance;
    const auto bound = [&crs](double Area::*side) { return crs.area ? writeDouble((*crs.area).*side) : ""; };
    return writeCells({std::to_string(crs.code), crs.name, nameOfKind(crs.kind), crs.areaName, bound(&Area::west),
                       bound(&Area::south), bound(&Area::east), bound(&Area::north), outcome.unit,
                       writeDouble(outcome.unitLength), crs.datum.name, crs.datum.id, writeShiftSource(shift),
                       shift.accuracy ? writeDouble(*shift.accuracy) : "",
                       distance ? QSHelpers::convertNumericToText(*distance, DECIMALS_OF_DISTANCE, false) : "",
                       writeCodes(outcome.replacedBy)});
}

std::string writeComment(const CrsOutcome& outcome) {
    const ClassicDefinition& definition = *outcome.definition;
    const std::string shift = describeShift(definition.shift);
    std::string text = "# " + outcome.crs.name + (shift.empty() ? "" : "; " + shift);
    if (definition.hasUnknownPart && definition.shift.kind != ShiftKind::UNKNOWN)
        text += "; PROJ knows no shift in part of the area";
    if (definition.farPoints > 0) text += "; far off at " + std::to_string(definition.farPoints) + " points";
    return writeLine(text);
}

// Empty for a grid that is not installed.
std::string findGridPath(const ProjContext& installed, const std::string& name) {
    const char* path = nullptr;
    int isAvailable = 0;
    const int isKnown = proj_grid_get_info_from_database(installed.get(), name.c_str(), &path, nullptr, nullptr,
                                                         nullptr, nullptr, &isAvailable);
    return isKnown != 0 && isAvailable != 0 ? textOrEmpty(path) : "";
}

unsigned int readListedCode(const std::string& text, const std::string& place) {
    const bool hasPrefix = text.rfind(CODE_PREFIX, 0) == 0;
    const std::optional<unsigned int> code = readCode(hasPrefix ? text.substr(sizeof CODE_PREFIX - 1) : text);
    if (!code) throw FileError(place + ": \"" + text + "\" is not an EPSG code");
    return *code;
}

ListedCode readEntry(const CrsConfig& config, const CrsConfigData& entry, const std::string& name) {
    const std::string identifier = entry.getIdentifier();
    const unsigned int code = config.getCreator().explainName(identifier).primaryCode;
    if (code == 0) throw FileError(name + ": \"" + identifier + "\" names no code");
    return {code, name + ", entry " + entry.getAliasOrIdentifier()};
}

bool isBefore(const RegistryCrs& crs, unsigned int code) { return crs.code < code; }

void requireUsable(const std::vector<RegistryCrs>& registry, const ListedCode& listed, bool includeDeprecated) {
    const std::string code = CODE_PREFIX + std::to_string(listed.code);
    const auto crs = std::lower_bound(registry.begin(), registry.end(), listed.code, isBefore);
    if (crs == registry.end() || crs->code != listed.code)
        throw FileError(listed.place + ": the registry has no CRS " + code);
    if (crs->isDeprecated && !includeDeprecated)
        throw FileError(listed.place + ": " + code + " is deprecated; --include-deprecated admits it");
}

[[noreturn]] void failToWrite(const std::string& target, int error) {
    throw FileError("cannot write \"" + target + "\": " + std::generic_category().message(error));
}

// `target` is the name for messages.
int openToWrite(const std::string& path, const std::string& target, int flags) {
    const int descriptor = open(path.c_str(), flags | O_WRONLY | O_CLOEXEC, FILE_MODE);
    if (descriptor < 0) failToWrite(target, errno);
    return descriptor;
}

// Some file systems report a full disk only in close().
void writeAndClose(int descriptor, const std::string& text, const std::string& target, bool isFile) {
    const bool isWritten =
        Tools::writeAll(descriptor, text) == Tools::WriteOutcome::WRITTEN && (!isFile || fsync(descriptor) == 0);
    const int error = isWritten ? 0 : errno;
    const bool isClosed = close(descriptor) == 0;
    if (!isWritten || !isClosed) failToWrite(target, isWritten ? errno : error);
}

// The file behind a symbolic link is replaced, not the link.
std::string followLinks(const std::string& path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}

std::string temporaryNameOf(const std::string& target) { return target + ".tmp-" + std::to_string(getpid()); }

}  // namespace

std::string readText(const std::string& path) {
    CoordinateTransformation::FileText file = CoordinateTransformation::readFile(path);
    if (!file.failure.empty()) throw FileError("cannot read \"" + path + "\": " + file.failure);
    return std::move(file.content);
}

std::string writeInitFile(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                          const std::string& maker) {
    std::string text = writeLine("# " + describe(version));
    if (!maker.empty()) text += writeLine("# Made by " + maker);
    text += UNKNOWN_CRS_ENTRY;
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition)
            text += writeComment(outcome) + "<" + std::to_string(outcome.crs.code) + "> " + outcome.definition->text +
                    " <>\n";
    return text;
}

std::string writeAxisOrderFile(const std::vector<CrsOutcome>& outcomes) {
    std::string text = UNKNOWN_CRS_AXIS_ORDER;
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition)
            text += std::to_string(outcome.crs.code) + (outcome.definition->isNorthFirst ? ";ne\n" : ";en\n");
    return text;
}

std::string writeDescriptionFile(const std::vector<CrsOutcome>& outcomes) {
    const auto& columns = CoordinateTransformation::DESCRIPTION_COLUMNS;
    std::string text = writeCells({columns.begin(), columns.end()});
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition) text += writeDescription(outcome);
    return text;
}

std::string computeSha256(const std::string& path) {
    const std::string content = readText(path);
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned int size = 0;
    if (EVP_Digest(content.data(), content.size(), bytes.data(), &size, EVP_sha256(), nullptr) != 1)
        throw FileError("cannot compute the checksum of \"" + path + "\"");
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < size; ++i) text += {DIGITS[bytes[i] >> 4U], DIGITS[bytes[i] & 0x0FU]};
    return text;
}

std::vector<GridFile> listGridFiles(const ProjContext& installed, const std::vector<CrsOutcome>& outcomes) {
    std::set<std::string> names;
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition && outcome.definition->shift.kind == ShiftKind::GRID)
            names.insert(outcome.definition->shift.source);
    std::vector<GridFile> files;
    for (const std::string& name : names) {
        const std::string path = findGridPath(installed, name);
        files.push_back({name, path.empty() ? "" : computeSha256(path)});
    }
    return files;
}

std::string writeGridFiles(const std::vector<GridFile>& files) {
    std::string text = "file,sha256\n";
    for (const GridFile& file : files) text += file.name + "," + file.sha256 + "\n";
    return text;
}

std::string writeMissingGrids(const std::vector<GridFile>& files) {
    std::string text;
    for (const GridFile& file : files)
        if (file.sha256.empty()) text += writeLine("grid file not installed: " + file.name);
    return text;
}

std::vector<ListedCode> readCodeList(const std::string& text, const std::string& name) {
    std::istringstream lines(text);
    std::vector<ListedCode> codes;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::string place = name + ", line " + std::to_string(++number);
        const std::string code = QSHelpers::trimWhitespace(line.substr(0, line.find('#')), QSHelpers::TRIM_BOTH);
        if (!code.empty()) codes.push_back({readListedCode(code, place), place});
    }
    if (codes.empty()) throw FileError(name + " names no code");
    return codes;
}

std::vector<ListedCode> readConfigurationCodes(const std::string& fragment, const std::string& name) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    std::istringstream document(fragment);
    try {
        config->configure(document);
    } catch (const boost::property_tree::xml_parser_error& failure) {
        throw FileError(name + " is not a configuration: " + failure.message() + ", line " +
                        std::to_string(failure.line()));
    }
    std::vector<ListedCode> codes;
    for (const CrsConfigData& entry : *config->getConfiguredCrs()) codes.push_back(readEntry(*config, entry, name));
    if (codes.empty()) throw FileError(name + " names no code");
    return codes;
}

void requireListed(const std::vector<RegistryCrs>& registry, const std::vector<ListedCode>& codes,
                   bool includeDeprecated) {
    for (const ListedCode& listed : codes) requireUsable(registry, listed, includeDeprecated);
}

std::vector<RegistryCrs> selectListed(const std::vector<RegistryCrs>& list, const std::vector<ListedCode>& codes) {
    std::set<unsigned int> wanted;
    for (const ListedCode& listed : codes) wanted.insert(listed.code);
    std::vector<RegistryCrs> selected;
    std::copy_if(list.begin(), list.end(), std::back_inserter(selected),
                 [&wanted](const RegistryCrs& crs) { return wanted.count(crs.code) != 0; });
    return selected;
}

BlockedSignals::BlockedSignals() {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) sigaddset(&blocked, signal);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
}

BlockedSignals::~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }

OutputFile::OutputFile(const std::string& targetPath, bool mayOverwrite) : target(followLinks(targetPath)) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(target, error);
    if (std::filesystem::is_directory(status)) throw FileError("\"" + targetPath + "\" is a directory");
    isDirect = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
    if (std::filesystem::is_regular_file(status) && !mayOverwrite)
        throw FileError("\"" + targetPath + "\" exists already; --force overwrites it");
}

OutputFile::~OutputFile() {
    if (!temporary.empty()) unlink(temporary.c_str());
}

void OutputFile::probe() const {
    if (isDirect) return;
    const std::string probed = temporaryNameOf(target);
    const int descriptor = openToWrite(probed, target, O_CREAT | O_EXCL);
    unlink(probed.c_str());
    writeAndClose(descriptor, "", target, false);
}

void OutputFile::write(const std::string& text) {
    if (isDirect) {
        directText = text;
        return;
    }
    std::string name = temporaryNameOf(target);
    const int descriptor = openToWrite(name, target, O_CREAT | O_EXCL);
    temporary = std::move(name);
    writeAndClose(descriptor, text, target, true);
}

void OutputFile::publish() {
    if (isDirect) return writeAndClose(openToWrite(target, target, 0), directText, target, false);
    if (std::rename(temporary.c_str(), target.c_str()) != 0) failToWrite(target, errno);
    temporary.clear();
}

OutputDirectory::OutputDirectory(std::string directoryPath) : path(std::move(directoryPath)) {
    std::error_code error;
    isMade = std::filesystem::create_directory(path, error);
    if (error) throw FileError("cannot create directory \"" + path + "\": " + error.message());
}

OutputDirectory::~OutputDirectory() {
    if (isMade) rmdir(path.c_str());
}

std::string OutputDirectory::file(const std::string& name) const {
    return (std::filesystem::path(path) / name).string();
}

}  // namespace ProjDir
