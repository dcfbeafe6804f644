// SPDX-License-Identifier: MIT
#include "pictures/pages.h"

#include <algorithm>

#include "check/directory.h"
#include "failure.h"
#include "pictures/peek.h"

namespace host {
namespace {

constexpr const char *kNoPages = "reduced images and masks of the file are no pages, and left out";

}  // namespace

Pages::Pages(const std::string &path) : input_(path) {
  const std::string format = formatOf(input_.bytes());
  if (format == "GIF") {
    gif_.emplace(input_.bytes());
    count_ = gif_->count();
  }
  if (format != "TIFF" && format != "BigTIFF") return;
  const std::vector<uint64_t> all = directoryPlaces(input_.bytes());
  directories_ = pagePlaces(input_.bytes(), all);
  leavesOut_ = directories_.size() < all.size();
  count_ = std::max(static_cast<uint32_t>(directories_.size()), 1u);
}

std::unique_ptr<Picture> Pages::read(uint32_t page, const Background &background, const Gate &gate) {
  auto picture = std::make_unique<Picture>();
  picture->isPage = true;
  if (leavesOut_ && page == 0) picture->notes.push_back(kNoPages);
  if (gif_) picture->reader = [&](Picture &to) { gif_->read(page, background, to); };
  if (!gif_ && page != 0) picture->directory = directories_.at(page);
  picture->child = &child_;
  try {
    readPage(input_, background, gate, *picture);
  } catch (const Failure &failure) {
    if (count_ == 1) throw;
    throw Failure(failure.code(), "page " + std::to_string(page + 1) + " of " + failure.what());
  }
  if (page + 1 == count_) child_.dismiss();
  return picture;
}

std::unique_ptr<Picture> Pages::readFirst(const Background &background, const Gate &gate) {
  auto picture = std::make_unique<Picture>();
  picture->child = &child_;
  readPage(input_, background, gate, *picture);
  child_.dismiss();
  return picture;
}

std::string Pages::nameOf(uint32_t page) const {
  return count_ == 1 ? input_.name() : input_.name() + ", page " + std::to_string(page + 1);
}

std::vector<uint32_t> choosePages(const std::vector<PageRange> &ranges, uint32_t count,
                                  const std::string &input) {
  std::vector<uint32_t> pages;
  for (const PageRange &range : ranges) {
    const uint32_t last = range.last == 0 ? count : range.last;
    if (range.first > count || last > count) {
      throw Failure(kNoInput, input + ": has " + std::to_string(count) + (count == 1 ? " page" : " pages") +
                                  ", and --page asks for number " +
                                  std::to_string(std::max(range.first, last)));
    }
    for (uint32_t page = range.first; page <= last; ++page) pages.push_back(page - 1);
  }
  return pages;
}

}  // namespace host
