// SPDX-License-Identifier: MIT
// Texts and profile for the finished file: those that the options give, else the picture's own.
#pragma once

#include <string>
#include <vector>

#include "order/options.h"
#include "pictures/picture.h"

namespace host {

// The bytes of --icc FILE; empty without one. Throws a Failure when it cannot be read or is no profile.
std::vector<uint8_t> givenProfile(const Options &options);

// For a picture whose request is settled. The record borrows from all three. A note tells of what the
// picture has and the file will not; a profile of --icc that does not fit the mode is a Failure.
RaxelMetadata metadataFor(const Options &options, const std::vector<uint8_t> &profile,
                          const Picture &picture, const RaxelRequest &request,
                          std::vector<std::string> &notes);

}  // namespace host
