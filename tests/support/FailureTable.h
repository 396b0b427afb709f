#pragma once

#include <functional>
#include <map>
#include <string>

#include <boost/property_tree/xml_parser.hpp>
#include <gtest/gtest.h>

#include "tests/support/DocsServer.h"
#include "tests/support/Page.h"

// Compares the tables of docs/failures.md with the exceptions that the library raises.
namespace DocsTest {

using Provocations = std::map<std::string, std::function<void()>>;

// Like raisedBy, but also catches the failure of the XML reader.
inline Raised failureOf(const std::function<void()>& action) {
    try {
        return raisedBy(action);
    } catch (const boost::property_tree::xml_parser_error& failure) {
        return {"boost::property_tree::xml_parser_error", failure.what(), ""};
    }
}

// Requires one provocation for each row, and one row for each provocation.
inline void expectTable(const Table& table, const Provocations& provocations) {
    EXPECT_EQ(table.rows.size(), provocations.size());
    for (const Row& row : table.rows) {
        const auto provocation = provocations.find(row.at("failure"));
        if (provocation == provocations.end()) {
            ADD_FAILURE() << "nothing provokes " << row.at("failure");
            continue;
        }
        const Raised expected{row.at("class"), row.at("text"), row.at("code") == "none" ? "" : row.at("code")};
        EXPECT_EQ(failureOf(provocation->second), expected) << row.at("failure");
    }
}

}  // namespace DocsTest
