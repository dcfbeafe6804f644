// SPDX-License-Identifier: MIT
// Strips of fax codes as a file holds them, made with the coders under test.
#pragma once

#include "tiff/reference_fax.h"

namespace support {

// `pad` is the value of the bits past the width of each row.
reference::Bytes faxRow(const std::string &row, uint32_t compression, bool pad);
reference::Bytes huffmanStrip(const reference::Picture &picture, bool pad);
reference::Bytes t4Strip(const reference::Picture &picture, bool pad);  // EOL, rows, five EOLs more
reference::Bytes t6Strip(const reference::Picture &picture, bool pad);
reference::Bytes t6StripPlain(const reference::Picture &picture, bool pad);  // the form for every machine

}  // namespace support
