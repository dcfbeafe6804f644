// SPDX-License-Identifier: MIT
// The stages of a preparation, one after the other.
#include "prepare/prepare.h"

#include <new>
#include <vector>

#include "prepare/block.h"
#include "prepare/colors.h"
#include "prepare/document.h"
#include "prepare/fallback.h"
#include "prepare/greys.h"
#include "prepare/leptonica.h"
#include "prepare/page.h"
#include "prepare/row_by_row.h"
#include "prepare/scale.h"
#include "prepare/services.h"
#include "prepare/sheet.h"
#include "raxel/host.h"

namespace prepare {
namespace {

int reduce(const Source &source, const RaxelRequest &request, const RaxelServices *services,
           const Block &block, RaxelPlan &plan, uint8_t *table) {
  if (isRowByRow(source.bits(), request, plan)) {
    const MakeRow make = rowMaker(source, plan, table);
    for (uint32_t y = 0; y < source.height(); ++y) make(y, block.row(y));
    return RAXEL_HOST_OK;
  }
  switch (request.mode) {
    case RAXEL_MODE_BILEVEL:
      return toBilevel(source, request, services, block, plan, table);
    case RAXEL_MODE_GREY16:
      return toGrey16(source, request, services, block, plan, table);
    case RAXEL_MODE_COLOR8:
      return toColor8(source, request, block, plan, table);
    default:
      return request.palette ? toPalette(source, request, block, plan, table)
                             : toOwnColors(source, request, services, block, plan, table);
  }
}

// The fax coders code white as white runs while the filter's directory calls black 0, and readers go by the
// directory: so a file that stays as it is gets the complement. Bits beyond the width are not coded.
void exchangeBlackAndWhite(const Block &block) {
  for (uint64_t i = 0; i < block.plan.bytes; ++i) block.pixels[i] = static_cast<uint8_t>(~block.pixels[i]);
}

// A picture made by scaling, as a source.
RaxelPicture pictureOf(const Raster &raster) {
  return {raster.width,
          raster.height,
          raster.channels == 1 ? 8u : 24u,
          raster.bytes.data(),
          size_t{raster.width} * raster.channels,
          nullptr,
          0};
}

// A page of black and white that stays one.
bool shrinksPage(const Source &source, const RaxelRequest &request, const RaxelPlan &plan) {
  return request.mode == RAXEL_MODE_BILEVEL && request.dither != RAXEL_DITHER_ON &&
         request.threshold == RAXEL_THRESHOLD_NONE &&
         (plan.width < source.width() || plan.rows < source.height()) && isPage(source);
}

// Whether grey is to be cut or dithered, where the request leaves it open.
bool isOpen(const Source &source, const RaxelRequest &request) {
  return request.mode == RAXEL_MODE_BILEVEL && request.dither == RAXEL_DITHER_AUTO &&
         request.threshold == RAXEL_THRESHOLD_NONE && source.bits() != 1;
}

// Decides it by the picture as it was before it was scaled.
RaxelRequest decide(const Source &original, const RaxelRequest &request) {
  RaxelRequest own = request;
  if (isOpen(original, request)) {
    const Kind kind = kindOf(tonesOf(original));
    if (!kind.isDocument) return own;
    own.threshold = RAXEL_THRESHOLD_LEVEL;
    own.thresholdLevel = kind.cut;
  } else if (original.bits() == 1 && own.dither == RAXEL_DITHER_AUTO) {
    // A page of two colours stays one: its edges are drawn by the nearest level, not by dots.
    own.dither = RAXEL_DITHER_OFF;
  }
  return own;
}

// What was decided, where it made a difference.
void noteDecision(const Source &original, const RaxelRequest &request, RaxelPlan &plan) {
  if (!isOpen(original, request)) return;
  if (plan.notes & RAXEL_NOTE_DITHERED) plan.notes |= RAXEL_NOTE_NO_DOCUMENT;
  if (plan.threshold >= 0 && plan.notes & RAXEL_NOTE_REDUCED) plan.notes |= RAXEL_NOTE_DOCUMENT;
}

// All rows of a picture that has the plan's size, or is scaled to it.
int fill(const RaxelPicture &picture, const Source &original, const RaxelRequest &request,
         const RaxelServices *services, const Block &block, RaxelPlan &plan, uint8_t *table,
         const Interrupt &interrupt) {
  int code = RAXEL_HOST_OK;
  if (plan.width == picture.width && plan.rows == picture.height) {
    code = reduce(original, decide(original, request), services, block, plan, table);
  } else if (shrinksPage(original, request, plan)) {
    bilevelTable(table);
    shrinkPage(original, block);
  } else {
    const Raster raster = scale(original, plan.width, plan.rows);
    const Source scaled(pictureOf(raster), RAXEL_TREAT_NONE, nullptr, interrupt);
    code = reduce(scaled, decide(original, request), services, block, plan, table);
  }
  if (code == RAXEL_HOST_OK) noteDecision(original, request, plan);
  return code;
}

// The picture by itself, and then on its page.
int fillPage(const RaxelPicture &picture, const Source &original, const RaxelRequest &request,
             const RaxelServices *services, const Block &page, RaxelPlan &plan, uint8_t *table,
             const Interrupt &interrupt) {
  RaxelRequest alone = request;
  alone.pageWidth = alone.pageHeight = 0;
  RaxelPlan own;
  if (const int code = raxelHostPlanAnyway(&picture, &alone, &own)) return code;
  std::vector<uint8_t> pixels(static_cast<size_t>(own.bytes));
  const Block block{own, pixels.data()};
  const int code = fill(picture, original, alone, services, block, own, table, interrupt);
  if (code != RAXEL_HOST_OK) return code;
  plan.threshold = own.threshold;
  plan.notes |= own.notes & ~uint32_t{RAXEL_NOTE_ROW_REPEATED};
  layInMiddle(block, page, table);
  return RAXEL_HOST_OK;
}

int prepare(const RaxelPicture &picture, const RaxelRequest &request, const RaxelServices *services,
            RaxelPlan &plan, uint8_t *pixels, uint8_t *table, const Interrupt &interrupt) {
  if (request.treatment != RAXEL_TREAT_NONE && !complete(services)) return RAXEL_HOST_NO_SERVICE;
  const Block block{plan, pixels};
  const Source original(picture, request.treatment, services, interrupt);
  const int code = (hasMargins(plan) ? fillPage : fill)(picture, original, request, services, block, plan,
                                                        table, interrupt);
  if (code != RAXEL_HOST_OK) return code;
  block.repeatLastRow();
  const Fallback fallback = fallbackOf(block);
  plan.compression = fallback.compression;
  plan.notes |= fallback.note;
  if (codesComplement(plan)) exchangeBlackAndWhite(block);
  return RAXEL_HOST_OK;
}

}  // namespace

int preparePicture(const RaxelPicture &picture, const RaxelRequest &request, const RaxelServices *services,
                   RaxelPlan &plan, uint8_t *pixels, uint8_t *table, const Interrupt &interrupt) {
  // A plan that does not belong to picture and request would lead outside the block.
  RaxelPlan own;
  if (const int code = raxelHostPlanAnyway(&picture, &request, &own)) return code;
  if (own.bytes != plan.bytes || own.width != plan.width || own.height != plan.height) {
    return RAXEL_HOST_BAD_ARGUMENT;
  }
  plan = own;
  try {
    return prepare(picture, request, services, plan, pixels, table, interrupt);
  } catch (const std::bad_alloc &) {
    return RAXEL_HOST_NO_MEMORY;
  } catch (const Interrupted &) {
    return RAXEL_HOST_STOPPED;
  }
}

}  // namespace prepare

extern "C" {

int raxelHostPrepare(const RaxelPicture *picture, const RaxelRequest *request,
                     const RaxelServices *services, RaxelPlan *plan, uint8_t *pixels, uint8_t *table) {
  if (!picture || !request || !plan || !pixels || !table) return RAXEL_HOST_BAD_ARGUMENT;
  return prepare::preparePicture(*picture, *request, services, *plan, pixels, table, {});
}

int raxelHostHasQuantizer(int quantizer) {
  switch (quantizer) {
    case RAXEL_QUANTIZE_BEST:
    case RAXEL_QUANTIZE_FILTER:
      return 1;
    default:
      return prepare::leptonica() ? 1 : 0;
  }
}

}  // extern "C"
