// The check of a written file against the picture that was meant.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "raxel/host.h"

namespace host {

// A copy of a prepared picture, taken before the library works on it in place.
class Meant {
 public:
  Meant(const RaxelPlan &plan, const uint8_t *pixels, const uint8_t *table);

  // Decodes the page of that directory (0: the first) with libtiff and compares size, resolution, colours
  // and every pixel. Throws a Failure with kNoWrite that names the first difference.
  void compare(std::span<const uint8_t> file, const std::string &name, uint32_t directory = 0) const;

 private:
  // Row y from the top, as a reader sees it: packed indices, or red, green, blue.
  void rowOf(uint32_t y, std::vector<uint8_t> &out) const;

  RaxelPlan plan_;
  std::vector<uint8_t> pixels_;
  std::vector<uint8_t> table_;
};

}  // namespace host
