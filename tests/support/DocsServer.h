#pragma once

#include <sstream>
#include <string>

#include "tests/support/IntegrationServer.h"

// A server with a configuration from a page.
namespace DocsTest {

using IntegrationTest::Crs;
using IntegrationTest::Raised;
using IntegrationTest::raisedBy;
using IntegrationTest::Server;

inline Server givenServer(const std::string& fragment) { return Server(std::istringstream(fragment)); }

}  // namespace DocsTest
