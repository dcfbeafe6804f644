#include "color/shuffle.h"

#include <algorithm>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#define RAXEL_HAS_SHUFFLE 1
#include <cpuid.h>
#include <tmmintrin.h>
#endif

namespace color {

#if defined(RAXEL_HAS_SHUFFLE)

namespace {

// Asked once: the question itself can take microseconds on a virtual machine.
bool processorShuffles() {
  enum Answer { kUnknown, kNo, kYes };
  static Answer answer = kUnknown;
  if (answer == kUnknown) {
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    answer = __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & bit_SSSE3) != 0 ? kYes : kNo;
  }
  return answer == kYes;
}

__attribute__((target("ssse3"))) __m128i loadSixteen(const uint8_t *from) {
  return _mm_loadu_si128(static_cast<const __m128i *>(static_cast<const void *>(from)));
}

__attribute__((target("ssse3"))) void storeSixteen(uint8_t *to, __m128i value) {
  _mm_storeu_si128(static_cast<__m128i *>(static_cast<void *>(to)), value);
}

__attribute__((target("ssse3"))) void shuffleOnce(const ShufflePlan &plan, const uint8_t *source,
                                                  uint8_t *out) {
  for (size_t i = 0; i < plan.groups; ++i, out += plan.step) {
    storeSixteen(out, _mm_shuffle_epi8(loadSixteen(source + plan.from[i]), loadSixteen(plan.low[i])));
  }
}

__attribute__((target("ssse3"))) void shuffleTwice(const ShufflePlan &plan, const uint8_t *source,
                                                   uint8_t *out) {
  for (size_t i = 0; i < plan.groups; ++i, out += plan.step) {
    const uint8_t *from = source + plan.from[i];
    const __m128i low = _mm_shuffle_epi8(loadSixteen(from), loadSixteen(plan.low[i]));
    const __m128i high = _mm_shuffle_epi8(loadSixteen(from + 16), loadSixteen(plan.high[i]));
    storeSixteen(out, _mm_or_si128(low, high));
  }
}

constexpr uint8_t kNoByte = 128;  // the shuffle answers 0 for it

}  // namespace

void planShuffle(ShufflePlan &plan, std::span<const uint32_t> columns, uint32_t bytesPerPixel) {
  plan.groups = 0;
  plan.columns = 0;
  plan.reach = 0;
  plan.two = false;
  if (!processorShuffles()) return;
  const size_t perGroup = 16 / bytesPerPixel;
  const size_t used = perGroup * bytesPerPixel;
  // A group of 15 bytes writes one byte too many, which the pixel after it must overwrite.
  const size_t spare = used < 16 ? 1 : 0;
  plan.step = used;
  for (size_t x = 0; x + perGroup + spare <= columns.size(); x += perGroup) {
    const size_t from = size_t{columns[x]} * bytesPerPixel;
    const size_t span = (size_t{columns[x + perGroup - 1]} + 1) * bytesPerPixel - from;
    if (span > 32) break;
    const size_t group = plan.groups++;
    plan.from[group] = static_cast<uint32_t>(from);
    std::memset(plan.low[group], kNoByte, 16);
    std::memset(plan.high[group], kNoByte, 16);
    for (size_t byte = 0; byte < used; ++byte) {
      const size_t at =
          size_t{columns[x + byte / bytesPerPixel]} * bytesPerPixel + byte % bytesPerPixel - from;
      (at < 16 ? plan.low : plan.high)[group][byte] = static_cast<uint8_t>(at % 16);
    }
    plan.columns += perGroup;
    plan.two = plan.two || span > 16;
    plan.reach = from + 32;
  }
  if (!plan.two && plan.groups != 0) plan.reach -= 16;
}

void shuffleRow(const ShufflePlan &plan, const uint8_t *source, uint8_t *out) {
  plan.two ? shuffleTwice(plan, source, out) : shuffleOnce(plan, source, out);
}

#else

void planShuffle(ShufflePlan &plan, std::span<const uint32_t> /*columns*/, uint32_t /*bytesPerPixel*/) {
  plan.groups = 0;
  plan.columns = 0;
  plan.reach = 0;
}

void shuffleRow(const ShufflePlan & /*plan*/, const uint8_t * /*source*/, uint8_t * /*out*/) {}

#endif

}  // namespace color
