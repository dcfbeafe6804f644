// SPDX-License-Identifier: MIT
// Decoders of other people, in a child process.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "confine/child.h"
#include "confine/window.h"
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

// Fills the picture of its format in its input that its directory names, and looks at nothing else of it.
using Decode = std::function<void(Picture &picture)>;

// The child that decodes the pages of one input, where decoders are confined: the first page starts it, it
// keeps what it was started with, and waits between pages. A page that ends it, or that it refuses, or that
// leaves it with much memory or after much time, has the next one begin with another child, and so has a
// large one; so each page may take as much as if it were alone.
//
// A hostile page may take the child over, and have it lie about pages that come later. They are pages of
// the same file, which could show the same without that; no other file goes through this child, and what it
// tells of each page is checked like what it tells of the first.
class DecoderChild {
 public:
  // Has the child fill the picture, by what `decode` does in it: all pages of the input have the same one.
  void fill(Picture &out, uint64_t bytes, const Decode &decode);
  // For now no page comes, and the child may go. It is waited for when this is destroyed, or needs another.
  void dismiss();

 private:
  bool takesOn(const Picture &page, const Allowance &most);

  std::optional<Window> window_;
  std::optional<Child> child_;
  bool dismissed_ = false;
};

// Has `decode` fill the picture, and turns it upright. Where decoders are confined (confine/child.h) a
// child decodes: the gate is called here when the decoder announces, and rows come over as they are ready.
// The libraries that it needs are loaded before. `bytes` is what the decoded picture takes, where it is not
// announced. Throws Unreadable, std::bad_alloc, and what the gate throws.
void confined(Picture &out, uint64_t bytes, const Decode &decode);

}  // namespace host
