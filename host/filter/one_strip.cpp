// SPDX-License-Identifier: MIT
#include "filter/one_strip.h"

#include <algorithm>
#include <vector>

#include "filter/coder.h"
#include "prepare/plan.h"

namespace host {
namespace {

constexpr uint8_t kHeader[8] = {'I', 'I', 42, 0, 0, 0, 0, 0};
// A T.4 end-of-line code that ends on a byte boundary. One stands before the first row; behind the last
// row's own, five more make the return to control.
constexpr uint8_t kEol[2] = {0x00, 0x01};
constexpr int kEolsAtEnd = 5;

uint32_t writeStrip(const Library &library, const RaxelPlan &plan, const Handover &picture,
                    OutputStream &stream) {
  Coder coder(library, plan.compression, stream);
  if (!coder.isOpen() || !coder.write(kHeader)) return RAXEL_CANNOT_WRITE;
  const std::vector<uint8_t> rows = prepare::packRows(plan, picture.pixels.bytes(), 0, plan.height);
  if (plan.compression == RAXEL_COMPRESS_T6) return coder.code(rows, plan.width, plan.height);
  const bool ends = plan.compression == RAXEL_COMPRESS_T4;
  if (ends && !coder.write(kEol)) return RAXEL_CANNOT_WRITE;
  const auto rowBytes = static_cast<size_t>(prepare::rowBytes(plan));
  for (uint32_t y = 0; y < plan.height; ++y) {
    if (const uint32_t result = coder.code({rows.data() + rowBytes * y, rowBytes}, plan.width, 1);
        result != RAXEL_OK)
      return result;
  }
  for (int i = 0; ends && i < kEolsAtEnd; ++i) {
    if (!coder.write(kEol)) return RAXEL_CANNOT_WRITE;
  }
  return RAXEL_OK;
}

}  // namespace

bool isOneCodedStrip(const RaxelPlan &plan) {
  return plan.strips == RAXEL_STRIPS_ONE && prepare::isFax(plan.compression);
}

uint32_t exportOneStrip(const Library &library, const RaxelPlan &plan, const Handover &picture,
                        OutputStream &stream) {
  const uint32_t result = writeStrip(library, plan, picture, stream);
  if (result == RAXEL_OK) stream.setComplete();
  return result;
}

}  // namespace host
