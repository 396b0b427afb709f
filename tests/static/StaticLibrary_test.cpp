// Uses only the public headers and the static library, in a program that refers to few sources of the library.

#include <string>

#include <gtest/gtest.h>

#include "CoordinateTransformation/Misconfigured.h"

namespace {

using CoordinateTransformation::Misconfigured;

TEST(StaticLibraryTest, RegistersTheCatalogueEntryOfPlatformFaults) {
    const structured_exception fault("access violation", false, "exception", "default", 0, nullptr, false);
    EXPECT_EQ(std::string(fault.getCatalogMessage()).rfind("Meldung: Das Subsystem [&0] hat", 0), 0U)
        << fault.getCatalogMessage();
}

TEST(StaticLibraryTest, HasNoCatalogueEntryForItsOwnFailures) {
    EXPECT_EQ(std::string(Misconfigured("text").getCatalogMessage()).find("Meldung:"), std::string::npos);
}

}  // namespace
