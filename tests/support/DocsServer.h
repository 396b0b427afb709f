#pragma once

#include <sstream>
#include <string>

#include "tests/support/IntegrationServer.h"

// Servers with the configurations of the pages.
namespace DocsTest {

using IntegrationTest::Crs;
using IntegrationTest::Raised;
using IntegrationTest::raisedBy;
using IntegrationTest::Server;

inline Server givenServer(const std::string& fragment) { return Server(std::istringstream(fragment)); }

}  // namespace DocsTest
