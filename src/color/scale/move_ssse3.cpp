// SPDX-License-Identifier: MIT
#include "color/scale/move_ssse3.h"

#if defined(RAXEL_HAS_SSSE3)

#include <cstring>

namespace color {

namespace {

using runtime::loadSixteen;
using runtime::storeSixteen;

constexpr uint8_t kNoByte = 128;  // the shuffle answers 0 for it

RAXEL_SSSE3 size_t shuffleOnce(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  if (plan.reach > source.size()) return 0;
  for (size_t i = 0; i < plan.groups; ++i) {
    const __m128i from = loadSixteen(source.data() + plan.group[i].from);
    storeSixteen(out + plan.group[i].to, _mm_shuffle_epi8(from, loadSixteen(plan.index[i])));
  }
  return plan.columns;
}

RAXEL_SSSE3 size_t shuffleTwice(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  if (plan.reach > source.size()) return 0;
  for (size_t i = 0; i < plan.groups; ++i) {
    const uint8_t *from = source.data() + plan.group[i].from;
    const __m128i low = _mm_shuffle_epi8(loadSixteen(from), loadSixteen(plan.index[i]));
    const __m128i high = _mm_shuffle_epi8(loadSixteen(from + 16), loadSixteen(plan.index[i] + 16));
    storeSixteen(out + plan.group[i].to, _mm_or_si128(low, high));
  }
  return plan.columns;
}

}  // namespace

void planMoveSsse3(MovePlan &plan, std::span<const uint32_t> columns, int16_t depth) {
  plan.groups = 0;
  plan.columns = 0;
  plan.bytes = 0;
  plan.reach = 0;
  plan.full = false;
  if (depth < 8) return;
  const auto bytesPerPixel = static_cast<size_t>(depth) / 8;
  const size_t perGroup = 16 / bytesPerPixel;
  const size_t used = perGroup * bytesPerPixel;
  // A group of 15 bytes writes one byte too many, which the pixel after it must overwrite.
  const size_t spare = used < 16 ? 1 : 0;
  bool twice = false;
  for (size_t x = 0; x + perGroup + spare <= columns.size(); x += perGroup) {
    plan.full = plan.groups == MovePlan::kMostGroups;
    if (plan.full) break;
    const size_t from = size_t{columns[x]} * bytesPerPixel;
    const size_t span = (size_t{columns[x + perGroup - 1]} + 1) * bytesPerPixel - from;
    if (span > 32) break;
    const size_t group = plan.groups++;
    plan.group[group] = {
        .from = static_cast<uint32_t>(from), .to = static_cast<uint32_t>(plan.bytes), .reads = 0};
    std::memset(plan.index[group], kNoByte, 32);
    for (size_t byte = 0; byte < used; ++byte) {
      const size_t at =
          size_t{columns[x + byte / bytesPerPixel]} * bytesPerPixel + byte % bytesPerPixel - from;
      plan.index[group][at < 16 ? byte : 16 + byte] = static_cast<uint8_t>(at % 16);
    }
    plan.columns += perGroup;
    plan.bytes += used;
    twice = twice || span > 16;
    plan.reach = from + 32;
  }
  if (!twice && plan.groups != 0) plan.reach -= 16;
  plan.move = twice ? shuffleTwice : shuffleOnce;
}

}  // namespace color

#endif
