// SPDX-License-Identifier: MIT
// Decoders of other people, in a child process.
#pragma once

#include <cstdint>
#include <functional>

#include "pictures/picture.h"

namespace host {

// A decoder that did not end as it should: by that signal, or 0.
class DecoderLost : public Unreadable {
 public:
  DecoderLost(int signal, const std::string &what) : Unreadable(what), signal_(signal) {}
  int signal() const { return signal_; }

 private:
  int signal_;
};

// Has `decode` fill the picture, and turns it upright. Where decoders are confined (confine/child.h) a
// child decodes: the gate is called here when the decoder announces, and rows come over as they are ready.
// The libraries that it needs are loaded before. `bytes` is what the decoded picture takes, where it is not
// announced. Throws Unreadable, std::bad_alloc, and what the gate throws.
void confined(Picture &out, uint64_t bytes, const std::function<void()> &decode);

}  // namespace host
