// SPDX-License-Identifier: MIT
// The pages of an input: the directories of a TIFF but reduced images and masks, a GIF's screen at each of
// its frames, and one page of everything else.
#pragma once

#include <optional>

#include "pictures/confined.h"
#include "pictures/gif_pages.h"
#include "pictures/page_range.h"
#include "pictures/picture.h"

namespace host {

class Pages {
 public:
  // Throws a Failure that names the input.
  explicit Pages(const std::string &path);

  const Input &input() const { return input_; }
  uint32_t count() const { return count_; }
  // Reads a page, from 0 on. What it shows may lie in the input. Throws a Failure that names the page where
  // there are several.
  std::unique_ptr<Picture> read(uint32_t page, const Background &background, const Gate &gate);
  // The first one, for a user who said nothing of pages: with a note about others. Throws a Failure.
  std::unique_ptr<Picture> readFirst(const Background &background, const Gate &gate);
  // The page's name for messages.
  std::string nameOf(uint32_t page) const;

 private:
  Input input_;
  std::vector<uint64_t> directories_;  // of a TIFF's pages
  bool leavesOut_ = false;             // other directories of it
  std::optional<GifPages> gif_;
  uint32_t count_ = 1;
  DecoderChild child_;
};

// The pages that the ranges choose of so many, from 0 on, in the order of the ranges. Throws a Failure that
// names the input when it has no such page.
std::vector<uint32_t> choosePages(const std::vector<PageRange> &ranges, uint32_t count,
                                  const std::string &input);

}  // namespace host
