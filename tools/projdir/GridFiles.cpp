#include "tools/projdir/GridFiles.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <memory>
#include <set>
#include <system_error>

#include <openssl/evp.h>

#include "tools/projdir/Line.h"
#include "tools/projdir/OutputFile.h"

namespace ProjDir {
namespace {

constexpr std::size_t BLOCK = std::size_t{1} << 16;

struct FreeDigest {
    void operator()(EVP_MD_CTX* digest) const { EVP_MD_CTX_free(digest); }
};

void require(bool success, const std::string& path) {
    if (!success) throw OutputError("cannot compute the checksum of \"" + path + "\"");
}

std::string toHexadecimal(const unsigned char* bytes, std::size_t count) {
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += DIGITS[bytes[i] >> 4U];
        text += DIGITS[bytes[i] & 0xFU];
    }
    return text;
}

// Empty for a grid that is not there.
std::string findPath(const ProjContext& installed, const std::string& name) {
    const char* path = nullptr;
    int isAvailable = 0;
    const int isKnown = proj_grid_get_info_from_database(installed.get(), name.c_str(), &path, nullptr, nullptr,
                                                         nullptr, nullptr, &isAvailable);
    return isKnown != 0 && isAvailable != 0 ? textOrEmpty(path) : "";
}

}  // namespace

std::string computeSha256(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw OutputError("cannot read \"" + path + "\": " + std::generic_category().message(errno));
    const std::unique_ptr<EVP_MD_CTX, FreeDigest> digest(EVP_MD_CTX_new());
    require(digest != nullptr && EVP_DigestInit_ex(digest.get(), EVP_sha256(), nullptr) == 1, path);
    std::array<char, BLOCK> block{};
    while (file.read(block.data(), block.size()), file.gcount() > 0)
        require(EVP_DigestUpdate(digest.get(), block.data(), static_cast<std::size_t>(file.gcount())) == 1, path);
    if (file.bad()) throw OutputError("cannot read \"" + path + "\"");
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned int size = 0;
    require(EVP_DigestFinal_ex(digest.get(), bytes.data(), &size) == 1, path);
    return toHexadecimal(bytes.data(), size);
}

std::vector<GridFile> listGridFiles(const ProjContext& installed, const std::vector<CrsOutcome>& outcomes) {
    std::set<std::string> names;
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition && outcome.definition->shift.kind == ShiftKind::GRID)
            names.insert(outcome.definition->shift.source);
    std::vector<GridFile> files;
    for (const std::string& name : names) {
        const std::string path = findPath(installed, name);
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

}  // namespace ProjDir
