#pragma once

#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <boost/property_tree/xml_parser.hpp>
#include <gtest/gtest.h>

#include "tests/support/IntegrationServer.h"
#include "tests/support/NameTable.h"

// Compares the rows of tests/docs/failures.csv, which docs/failures.md shows, with the exceptions that the library
// raises.
namespace DocsTest {

using IntegrationTest::Raised;
using IntegrationTest::raisedBy;
using IntegrationTest::Server;

inline Server givenServer(const std::string& fragment) { return Server(std::istringstream(fragment)); }

struct Failure {
    std::string name;
    Raised raised;
};

using Provocations = std::map<std::string, std::function<void()>>;

// The rows of `stage`: "request", "start" or "directory".
inline std::vector<Failure> failuresOf(const std::string& stage) {
    enum { STAGE, NAME, CLASS, CODE, TEXT };
    std::istringstream file = IntegrationTest::readSourceFile("tests/docs/failures.csv");
    std::vector<Failure> failures;
    for (std::string line; std::getline(file, line);) {
        const std::vector<std::string> cells = TestSupport::NameRowReader(line).readCells();
        if (cells[STAGE] == stage)
            failures.push_back({cells.at(NAME), {cells.at(CLASS), cells.at(TEXT), cells.at(CODE)}});
    }
    return failures;
}

// Like raisedBy, but also catches the failure of the XML reader.
inline Raised failureOf(const std::function<void()>& action) {
    try {
        return raisedBy(action);
    } catch (const boost::property_tree::xml_parser_error& failure) {
        return {"boost::property_tree::xml_parser_error", failure.what(), ""};
    }
}

// Requires one provocation for each failure, and one failure for each provocation.
inline void expectFailures(const std::vector<Failure>& failures, const Provocations& provocations) {
    EXPECT_EQ(failures.size(), provocations.size());
    for (const Failure& failure : failures) {
        const auto provocation = provocations.find(failure.name);
        if (provocation == provocations.end())
            ADD_FAILURE() << "no test provokes " << failure.name;
        else
            EXPECT_EQ(failureOf(provocation->second), failure.raised) << failure.name;
    }
}

}  // namespace DocsTest
