// SPDX-License-Identifier: MIT
// The capability array that the driver fills for its host.
#pragma once

#include <cstdint>

namespace raster {

// Writes the capability words, and the colour treatment at index 47. Words that are not listed stay
// as the host set them; a null array is left out.
void writeCapabilities(uint32_t *array, uint32_t colorTreatment);

}  // namespace raster
