// SPDX-License-Identifier: MIT
// What the user of options can do about a failure: the rooms that know none tell only what is wrong.
#pragma once

#include <cstdint>
#include <string>

#include "failure.h"
#include "order/options.h"

namespace host {

// The failure, with a hint at the option that helps behind its sentence. `output` is the file that was to
// be written, if there is one.
Failure advised(const Failure &failure, const Options &options, const std::string &output);

// What a note says, with the option that would have it otherwise.
std::string noteText(uint32_t note);

}  // namespace host
