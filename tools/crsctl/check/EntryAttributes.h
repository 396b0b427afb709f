#pragma once

#include <boost/property_tree/ptree.hpp>

#include "tools/crsctl/check/Finding.h"

namespace crsctl {

// What is suspicious about the text and the attributes of one entry element.
void examineEntry(const boost::property_tree::ptree& entry, const Place& place, Findings& findings);

}  // namespace crsctl
