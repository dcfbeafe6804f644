// SPDX-License-Identifier: MIT
// What a call of the colour library prints at some diagnostics level.
#pragma once

#include <string>

#include "color/pictures.h"
#include "support/capture.h"

namespace printed {

inline const std::string kAllocated24 = "Allocated 24 bytes of new memory for the destination bitmap\n";
inline const std::string kHeader = "Converted bits. Each (.) represents one scan line\n";
inline const std::string kComplete = "\nColor resolution conversion complete\n";

// Sets the diagnostics level and puts it back to 0.
class DebugLevel {
 public:
  explicit DebugLevel(int level) { _debug_color_res = static_cast<uint16_t>(level); }
  ~DebugLevel() { _debug_color_res = 0; }
  DebugLevel(const DebugLevel &) = delete;
  DebugLevel &operator=(const DebugLevel &) = delete;
};

struct Printed {
  std::string out;
  std::string err;
  plain::Bytes bits;
};

// Runs a call that answers a picture.
template <class Call>
Printed run(int level, const Call &call) {
  const DebugLevel guard(level);
  support::Capture out(1);
  support::Capture err(2);
  const runtime::Block result(call());
  Printed what;
  what.err = err.text();
  what.out = out.text();
  what.bits = pictures::bytesOf(result.handle());
  return what;
}

}  // namespace printed
