// SPDX-License-Identifier: MIT
// Golden files: the SHA-256 of what the library writes, against the committed list in
// tests/golden/sha256.txt. The list is the same on every machine; its README says how to add to it.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>

namespace support {

// Fails the running test when the bytes are not those listed under `name` (letters, digits, and
// "/ . _ - + =", no spaces). With RAXEL_GOLDEN_RECORD=1 in the environment it writes the digest into
// the list in the source tree instead.
void golden(const std::string &name, std::span<const uint8_t> bytes);

// The list's lines "<hex>  <name>" as name to hex, for golden() and the test of the list itself.
// `problem` becomes what is wrong with the list: a bad line, names unsorted or twice.
std::map<std::string, std::string> parseGolden(std::string_view list, std::string &problem);

// Where the list lies, and its whole text.
std::string goldenPath();
std::string goldenText();

}  // namespace support
