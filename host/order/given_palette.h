// SPDX-License-Identifier: MIT
// The colours that --palette asks for.
#pragma once

#include "order/options.h"
#include "pictures/palette.h"

namespace host {

// Of its name, or of the file. Empty without the option. Throws a Failure that says what is wrong with the
// file.
Palette givenPalette(const Options &options);

}  // namespace host
