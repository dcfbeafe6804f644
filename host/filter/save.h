// SPDX-License-Identifier: MIT
// --save: the settings of the command line on their way into the profile.
#pragma once

#include "filter/given.h"
#include "order/report.h"

namespace host {

// Throws a Failure before any work when the library would refuse to store what the command line gives.
void checkSave(const Library &library, const Options &options);

// Stores the settings of the command line in the profile. Notes tell of those that cannot be stored and of
// those that the next run will not heed. Throws a Failure when the profile does not hold them afterwards.
void saveGiven(const Library &library, Given &given, const Options &options,
               std::vector<std::string> &notes);

}  // namespace host
