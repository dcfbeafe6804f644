// SPDX-License-Identifier: MIT
// Thousands of files made from seeds, by every road that a picture can take. They are the same on every
// machine, from every compiler, with every number of threads: tests/golden/README.md.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace golden {

using Bytes = std::vector<uint8_t>;

// Takes a file when it is made. Names are words joined by "-": the road, then what was asked for.
using Take = std::function<void(const std::string &name, const Bytes &file)>;

// call-<mode>-<compression>-<layout>-<depth>-<geometry>-<output>: in one call.
void makeCalls(const Take &take);
// driver-<mode>-<compression>-<layout>-<depth>-<framed or alone>-<output>: by a session of the raster
// driver.
void makeDriven(const Take &take);
// session-<mode>-<compression>-<layout>-<one or bands>-<output>: drawn into the output of a metafile
// session.
void makeSessions(const Take &take);
// tall-<mode>-<compression>-<number>: with nine and more rows of tiles, for as many threads as there may
// be.
void makeTall(const Take &take);

}  // namespace golden
