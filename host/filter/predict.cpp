// SPDX-License-Identifier: MIT
#include "filter/predict.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <span>
#include <vector>

#include "filter/coder.h"
#include "prepare/plan.h"
#include "prepare/predict.h"

namespace host {
namespace {

constexpr uint32_t kBands = 8, kBandBytes = 16 << 10;

// Bytes of rows as LZW.
uint64_t codedBytes(const Library &library, const RaxelPlan &plan, std::span<const uint8_t> rows,
                    uint32_t count) {
  const RaxelHostJob unheard{};
  Pace pace(unheard);
  Sink sink(-1);
  OutputStream stream(sink, pace);
  Coder coder(library, plan.compression, stream);
  const bool coded = coder.isOpen() && coder.code(rows, plan.width, count) == RAXEL_OK;
  // What is found out with too little memory would decide on the file's bytes.
  if (sink.error() == ENOMEM || !coder.isOpen()) throw std::bad_alloc();
  return coded ? coder.codedBytes() : 0;
}

// Both ways.
struct Trial {
  uint64_t plain = 0, differences = 0;

  void add(const Library &library, const RaxelPlan &plan, const uint8_t *block, uint32_t first,
           uint32_t count) {
    std::vector<uint8_t> rows = prepare::packRows(plan, block, first, count);
    plain += codedBytes(library, plan, rows, count);
    const size_t rowBytes = rows.size() / count;
    for (uint32_t i = 0; i < count; ++i)
      prepare::differenceRow({rows.data() + rowBytes * i, rowBytes}, plan.bits / 8);
    differences += codedBytes(library, plan, rows, count);
  }
};

}  // namespace

bool predictionPays(const Library &library, const RaxelPlan &plan, const uint8_t *block) {
  Trial trial;
  const uint64_t bandRows = (kBandBytes + prepare::rowBytes(plan) - 1) / prepare::rowBytes(plan);
  if (bandRows * kBands >= plan.height) {
    const uint32_t quarter = std::max(plan.height / 4, 1u);  // as the filter cuts it
    for (uint32_t y = 0; y < plan.height; y += quarter)
      trial.add(library, plan, block, y, std::min(quarter, plan.height - y));
  } else {
    for (uint32_t band = 0; band < kBands; ++band) {
      const uint64_t first = (plan.height - bandRows) * (2 * band + 1) / (2 * kBands);
      trial.add(library, plan, block, static_cast<uint32_t>(first), static_cast<uint32_t>(bandRows));
    }
  }
  return trial.differences <= trial.plain / 10 * 9;
}

}  // namespace host
