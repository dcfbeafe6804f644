// SPDX-License-Identifier: MIT
// Pictures that a program has in memory.
#pragma once

#include "pictures/picture.h"

namespace host {

// What lies as the preparation takes it is shown where it lies, and all else is copied. The gate hears of
// it before. Throws a Failure that calls the picture by the name.
std::unique_ptr<Picture> readMemory(const RaxelHostPixels &pixels, const std::string &name,
                                    const Background &background, const Gate &gate);

}  // namespace host
