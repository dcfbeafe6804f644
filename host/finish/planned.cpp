// SPDX-License-Identifier: MIT
#include "finish/planned.h"

#include <iterator>

#include "prepare/plan.h"
#include "raxel/tiff_codes.h"

namespace finish {
namespace {

constexpr uint32_t kWhiteIsZero = 0;  // the filter never writes it

constexpr const char *kOwnName = "raxel " RAXEL_VERSION_TEXT;

uint32_t photometricOf(const RaxelPlan &plan) {
  if (plan.mode == RAXEL_MODE_RGB) return RAXEL_TIFF_RGB;
  if (prepare::hasColorMap(plan.mode)) return RAXEL_TIFF_PALETTE;
  return isMinIsWhite(plan) ? kWhiteIsZero : uint32_t{RAXEL_TIFF_BLACK_IS_ZERO};
}

}  // namespace

bool isMinIsWhite(const RaxelPlan &plan) {
  return plan.finish != 0 && plan.mode == RAXEL_MODE_BILEVEL && prepare::isFax(plan.compression);
}

uint32_t compressionTag(int32_t compression) {
  constexpr uint32_t kTags[] = {RAXEL_TIFF_UNCOMPRESSED, RAXEL_TIFF_PACKBITS, RAXEL_TIFF_HUFFMAN,
                                RAXEL_TIFF_LZW,          RAXEL_TIFF_T4,       RAXEL_TIFF_T6};
  static_assert(std::size(kTags) == RAXEL_COMPRESSIONS);
  return kTags[compression];
}

void applyPlan(const RaxelPlan &plan, FinishedPage &page) {
  page.photometric = photometricOf(plan);
  page.resolutionX = rationalOf(plan.dpiX);
  page.resolutionY = rationalOf(plan.dpiY);
  page.software = kOwnName;
}

void applyMetadata(const RaxelMetadata &metadata, FinishedPage &page) {
  const auto text = [](const char *given) { return std::string(given ? given : ""); };
  page.description = text(metadata.description);
  page.artist = text(metadata.artist);
  page.copyright = text(metadata.copyright);
  page.dateTime = text(metadata.dateTime);
  if (metadata.icc) page.icc = {metadata.icc, static_cast<size_t>(metadata.iccBytes)};
}

uint64_t metadataBytes(const RaxelMetadata &metadata) {
  const auto isEmpty = [](const char *given) { return !given || *given == '\0'; };
  if (isEmpty(metadata.description) && isEmpty(metadata.artist) && isEmpty(metadata.copyright) &&
      isEmpty(metadata.dateTime) && (!metadata.icc || metadata.iccBytes == 0))
    return 0;
  FinishedPage page;
  const uint64_t without = directoryBytes(page, 0);
  applyMetadata(metadata, page);
  return directoryBytes(page, 0) - without;
}

FinishedPage singleStripPage(const RaxelPlan &plan, uint32_t offset, uint32_t bytes) {
  FinishedPage page;
  page.width = plan.width;
  page.height = page.rowsPerStrip = plan.height;
  page.samples = plan.mode == RAXEL_MODE_RGB ? 3 : 1;
  page.bits = plan.bits / page.samples;
  page.compression = compressionTag(plan.compression);
  page.offsets = {offset};
  page.counts = {bytes};
  applyPlan(plan, page);
  return page;
}

}  // namespace finish
