#include "filter/one_strip.h"

#include <algorithm>
#include <vector>

#include "filter/filter_stream.h"
#include "finish/planned.h"
#include "prepare/plan.h"

namespace host {
namespace {

constexpr uint32_t kT4 = 3, kT6 = 4;  // the Compression tag's numbers
constexpr uint8_t kHeader[8] = {'I', 'I', 42, 0, 0, 0, 0, 0};
// A T.4 end-of-line code that ends on a byte boundary. One stands before the first row; behind the last
// row's own, five more make the return to control.
constexpr uint8_t kEol[2] = {0x00, 0x01};
constexpr int kEolsAtEnd = 5;

// The block's rows from the top down, without padding.
std::vector<uint8_t> packRows(const RaxelPlan &plan, const uint8_t *block) {
  const auto bytes = static_cast<size_t>(prepare::rowBytes(plan));
  std::vector<uint8_t> rows(bytes * plan.height);
  for (uint32_t y = 0; y < plan.height; ++y) {
    std::copy_n(block + size_t{plan.stride} * (plan.height - 1 - y), bytes, rows.data() + bytes * y);
  }
  return rows;
}

}  // namespace

bool isOneCodedStrip(const RaxelPlan &plan) {
  return plan.strips == RAXEL_STRIPS_ONE && prepare::isFax(plan.compression);
}

namespace {

uint32_t writeStrip(const Library &library, const RaxelPlan &plan, const Handover &picture,
                    OutputStream &stream) {
  const FilterStream out(library, stream);
  if (out.handle() == 0 || !out.write(kHeader)) return RAXEL_CANNOT_WRITE;
  TiffWriterState state{};
  state.hTiffFile = out.handle();
  state.nCompression = finish::compressionTag(plan.compression);
  std::vector<uint8_t> rows = packRows(plan, picture.pixels.bytes());
  const auto rowBytes = static_cast<uint32_t>(prepare::rowBytes(plan));
  const auto code = [&](uint8_t *from, uint32_t count) {
    return static_cast<uint32_t>(
        library.compressAndWrite(&state, from, rowBytes * count, plan.width, count));
  };
  if (state.nCompression == kT6) return code(rows.data(), plan.height);
  if (state.nCompression == kT4 && !out.write(kEol)) return RAXEL_CANNOT_WRITE;
  for (uint32_t y = 0; y < plan.height; ++y) {
    if (const uint32_t result = code(rows.data() + size_t{rowBytes} * y, 1); result != RAXEL_OK)
      return result;
  }
  for (int i = 0; state.nCompression == kT4 && i < kEolsAtEnd; ++i) {
    if (!out.write(kEol)) return RAXEL_CANNOT_WRITE;
  }
  return RAXEL_OK;
}

}  // namespace

uint32_t exportOneStrip(const Library &library, const RaxelPlan &plan, const Handover &picture,
                        OutputStream &stream) {
  const uint32_t result = writeStrip(library, plan, picture, stream);
  if (result == RAXEL_OK) stream.setComplete();
  return result;
}

}  // namespace host
