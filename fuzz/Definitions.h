#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "proj/classic/ClassicProj.h"

namespace Fuzz {

// Returns the definition of a text, or null if it is refused. Definitions are never released, so each text has only
// one. Beyond a limit, new texts are refused too, so that a long run does not fill the memory.
inline ClassicProj::projPJ definitionOf(const std::string& text) {
    constexpr std::size_t MOST_TEXTS = 100000;
    static auto& known = *new std::unordered_map<std::string, ClassicProj::projPJ>;
    const auto found = known.find(text);
    if (found != known.end()) return found->second;
    if (known.size() >= MOST_TEXTS) return nullptr;
    return known[text] = ClassicProj::pj_init_plus_ctx(nullptr, text.c_str());
}

}  // namespace Fuzz
