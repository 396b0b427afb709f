#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "text/InitFile.h"

namespace CoordinateTransformation {
namespace {

using testing::ElementsAre;

// "line code text" for each definition, line ends in the text as "|".
std::vector<std::string> definitionsIn(const std::string& text) {
    std::vector<std::string> definitions;
    for (const InitFileDefinition& definition : readInitFileText(text)) {
        std::string written = std::to_string(definition.line) + " " + definition.code + definition.text;
        for (char& character : written) character = character == '\n' ? '|' : character;
        definitions.push_back(written);
    }
    return definitions;
}

TEST(AnInitFile, HasItsDefinitionsInOrderWithTheirLines) {
    EXPECT_THAT(definitionsIn("# <9> +z <>\n<2> +a <>\n\n<1> +b\n+c <> <3> +d"),
                ElementsAre("2 2 +a |", "4 1 +b|+c |", "5 3 +d|"));
    EXPECT_THAT(definitionsIn("<1>\n<>\n"), ElementsAre("1 1|"));
}

TEST(AnInitFile, MayDefineACodeTwice) {
    EXPECT_THAT(definitionsIn("<1> +a <>\n# comment\n<1> +b <>\n"), ElementsAre("1 1 +a |", "3 1 +b |"));
}

TEST(AnInitFile, LosesItsComments) {
    EXPECT_THAT(definitionsIn("<1> +a # <2> +b\n+c <>\n"), ElementsAre("1 1 +a |+c |"));
}

}  // namespace
}  // namespace CoordinateTransformation
