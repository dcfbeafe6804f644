// SPDX-License-Identifier: MIT
// The whole road of a prepared picture, as one call.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>

#include "check/libtiff.h"
#include "check/verify.h"
#include "clock.h"
#include "export/finish_file.h"
#include "export/stages.h"
#include "failure.h"
#include "filter/bands.h"
#include "filter/driver.h"
#include "filter/one_strip.h"
#include "filter/open.h"
#include "filter/predict.h"
#include "finish/planned.h"
#include "prepare/fallback.h"
#include "prepare/plan.h"
#include "prepare/predict.h"
#include "prepare/prepare.h"
#include "prepare/row_by_row.h"
#include "prepare/sheet.h"
#include "raxel/host.h"

namespace host {
namespace {

void check(int code) {
  if (code != RAXEL_HOST_OK)
    throw Failure(static_cast<RaxelHostCode>(code), raxelHostMessage(code),
                  code == RAXEL_HOST_NO_MEMORY ? ENOMEM : 0);
}

// Writes of image data that the filter will make: the measure of progress.
uint64_t dataWrites(const RaxelPlan &plan) {
  if (isOneCodedStrip(plan) && plan.compression == RAXEL_COMPRESS_T6) return 1;
  switch (plan.compression) {
    case RAXEL_COMPRESS_PACKBITS:
      return plan.height * ((prepare::rowBytes(plan) + 126) / 127);
    case RAXEL_COMPRESS_LZW:
      return 4;
    case RAXEL_COMPRESS_T6:
      return plan.layout == RAXEL_LAYOUT_TILES
                 ? uint64_t{(plan.width + 511) / 512} * ((plan.height + 127) / 128)
                 : 4;
    default:
      return plan.height;
  }
}

// What the library says that it would write. The plan must agree with it: a difference means that one of
// the two is wrong, and nothing should be written.
void crossCheck(Setup &setup, const RaxelPlan &plan, const Library &library) {
  RasterPictureInfo info{};
  info.nPictureResolution = static_cast<int32_t>(plan.unitsPerInch);
  info.nPictureWidth = plan.queryX;
  info.nPictureHeight = plan.queryY;
  const RasterInfoResult result = setup.query(info);
  const int32_t depth = result.nDepth < 0 ? -result.nDepth : result.nDepth;
  if (result.nWidth != static_cast<int32_t>(plan.width) ||
      result.nHeight != static_cast<int32_t>(plan.height) || depth != static_cast<int32_t>(plan.bits)) {
    throw Failure(RAXEL_HOST_FILTER_FAILED, library.path + ": would write " +
                                                std::to_string(result.nWidth) + " by " +
                                                std::to_string(result.nHeight) + " pixels of " +
                                                std::to_string(depth) + " bits instead of what is planned");
  }
}

// No code makes pixels longer than by this factor, but for fax codes of patterns that nobody scans.
constexpr uint64_t kLongestCode = 2;

// What the filter takes while it writes, besides its tables: a driver session collects the rows, and the
// code of a T.6 strip, of six bits a pixel at worst, is collected and moved as it grows.
uint64_t blocksWhileWriting(const RaxelPlan &plan, int32_t road) {
  const uint64_t collected = road == RAXEL_ROAD_DRIVER ? plan.bytes : 0;
  if (plan.compression != RAXEL_COMPRESS_T6) return collected;
  const uint64_t strip = plan.strips == RAXEL_STRIPS_ONE ? plan.bytes : plan.bytes / 4;
  return collected + 2 * 6 * strip;
}

// The caller's record may be older and shorter, or newer and longer, than the one known here.
template <class Record>
uint32_t known(uint32_t size) {
  return std::min(size, static_cast<uint32_t>(sizeof(Record)));
}

// In the format's own form, or not at all.
bool isDate(const char *text) {
  constexpr std::string_view kForm = "0000:00:00 00:00:00";
  if (!text || *text == '\0') return true;
  return std::strlen(text) == kForm.size() &&
         std::equal(kForm.begin(), kForm.end(), text,
                    [](char form, char c) { return form == '0' ? c >= '0' && c <= '9' : c == form; });
}

// Of the page at hand.
RaxelMetadata metadataOf(const RaxelHostJob &job) {
  RaxelMetadata own{};
  if (!job.metadata) return own;
  std::memcpy(&own, job.metadata, known<RaxelMetadata>(job.metadata->size));
  const bool whole = own.icc || own.iccBytes == 0;
  check(whole && own.iccBytes <= UINT32_MAX && isDate(own.dateTime) ? RAXEL_HOST_OK
                                                                    : RAXEL_HOST_BAD_ARGUMENT);
  return own;
}

RaxelPlan planned(const RaxelHostJob &job) {
  RaxelPlan plan;
  check(raxelHostPlan(&job.picture, &job.request, &plan));
  check(job.predictor >= 0 && job.predictor < RAXEL_PREDICTORS ? RAXEL_HOST_OK : RAXEL_HOST_BAD_ARGUMENT);
  if (job.predictor == RAXEL_PREDICTOR_HORIZONTAL && !prepare::mayPredict(plan))
    check(RAXEL_HOST_PREDICTOR_NEEDS_LZW);
  check(job.road >= 0 && job.road < RAXEL_ROADS ? RAXEL_HOST_OK : RAXEL_HOST_BAD_ARGUMENT);
  check(!job.nextPage || plan.finish != 0 ? RAXEL_HOST_OK : RAXEL_HOST_BAD_ARGUMENT);
  const RaxelMetadata metadata = metadataOf(job);
  const bool described = finish::metadataBytes(metadata) != 0;
  check(!described || plan.finish != 0 ? RAXEL_HOST_OK : RAXEL_HOST_BAD_ARGUMENT);
  plan.uncompressedBytes += finish::metadataBytes(metadata);
  if (isOneCodedStrip(plan) && job.road != RAXEL_ROAD_CELL)
    throw Failure(RAXEL_HOST_BAD_ROAD, "only the one call with a finished picture writes a single strip");
  if (job.road != RAXEL_ROAD_DRIVER) return plan;
  if (const std::string why = driverRefusal(plan); !why.empty()) throw Failure(RAXEL_HOST_BAD_ROAD, why);
  return plan;
}

// A picture whose rows the filter asks for, so that there is no block of its size.
bool goesInBands(const RaxelHostJob &job, const RaxelPlan &plan) {
  return job.road == RAXEL_ROAD_CELL && (plan.notes & RAXEL_NOTE_SCALED) == 0 &&
         !prepare::hasMargins(plan) && takesBands(plan) &&
         prepare::isRowByRow(job.picture.bits, job.request, plan);
}

Handover handoverOf(const Room &room, const RaxelPlan &plan, const prepare::RowByRow *rows) {
  return {room.pixels,
          room.table,
          static_cast<uint16_t>(plan.bits),
          static_cast<uint16_t>(plan.width),
          static_cast<uint16_t>(plan.height),
          plan.extentX,
          plan.extentY,
          static_cast<uint16_t>(plan.unitsPerInch),
          rows};
}

// Whether the rows go out as differences: when the pixels, and so the compression, are settled.
int32_t predictorFor(const RaxelHostJob &job, const Library &library, const RaxelPlan &plan,
                     const uint8_t *block) {
  if (job.predictor == RAXEL_PREDICTOR_NONE || !prepare::mayPredict(plan)) return RAXEL_PREDICTOR_NONE;
  const bool pays = job.predictor == RAXEL_PREDICTOR_HORIZONTAL || predictionPays(library, plan, block);
  return pays ? RAXEL_PREDICTOR_HORIZONTAL : RAXEL_PREDICTOR_NONE;
}

// All that is done while nobody else may use the filter: the output holds the whole page afterwards.
void makePage(const RaxelHostJob &job, const Library &library, RaxelHostResult &result, Output *output,
              PageCount &pages, Pace &pace, Clock::time_point &start) {
  RaxelPlan &plan = result.plan;
  const FilterLock lock;
  checkMemory(0);
  Setup setup(library);
  sendPlan(setup, plan);
  crossCheck(setup, plan, library);
  if (!output && !prepare::mayFallBack(plan)) return;
  pace.begin(RAXEL_STAGE_PREPARING);
  const bool bands = goesInBands(job, plan);
  const Room room(library, bands ? bandBytes(plan) : plan.bytes);
  std::optional<prepare::RowByRow> rows;
  if (bands) {
    rows.emplace(job.picture, job.request, library.services, plan, room.table.bytes());
  } else {
    const auto isStopped = [](void *asked) { return !static_cast<Pace *>(asked)->goesOn(); };
    check(prepare::preparePicture(job.picture, job.request, &library.services, plan, room.pixels.bytes(),
                                  room.table.bytes(), {isStopped, &pace}));
  }
  sendPlan(setup, plan);
  result.prepareSeconds += secondsSince(start);
  if (!output) return;
  std::optional<Meant> meant;
  if (job.flags & RAXEL_HOST_VERIFY) {
    bands ? meant.emplace(plan, *rows, room.table.bytes())
          : meant.emplace(plan, room.pixels.bytes(), room.table.bytes());
  }
  result.predictor = bands ? RAXEL_PREDICTOR_NONE : predictorFor(job, library, plan, room.pixels.bytes());
  if (result.predictor != RAXEL_PREDICTOR_NONE) prepare::differenceRows(plan, room.pixels.bytes());
  output->sink().expect(output->sink().size() + plan.uncompressedBytes * kLongestCode);
  checkMemory(blocksWhileWriting(plan, job.road));
  writePicture(library, setup, handoverOf(room, plan, rows ? &*rows : nullptr), &plan,
               static_cast<RaxelHostRoad>(job.road), dataWrites(plan), *output, pace);
  if (plan.finish != 0) finishPage(*output, result, metadataOf(job), pages);
  if (meant) meant->compare(output->bytes(), output->name(), pages.chain.last);
  result.verified = meant ? 1 : 0;
  result.bytes = output->sink().size();
  pace.check(result.bytes);  // who stops now need not wait for the disk
  result.writeSeconds += secondsSince(start);
}

// The next page's picture and request into the job; false when there is none.
bool turnPage(RaxelHostJob &job, const RaxelHostResult &result) {
  if (!job.nextPage) return false;
  switch (job.nextPage(job.context, result.pages, &result, &job.picture, &job.request)) {
    case 0:
      return false;
    case 1:
      return true;
    default:
      throw Failure(RAXEL_HOST_STOPPED, raxelHostMessage(RAXEL_HOST_STOPPED));
  }
}

void exportPrepared(RaxelHostJob job, RaxelHostResult &result) {
  Clock::time_point start = Clock::now();
  result.plan = planned(job);
  const Library &library = openFilter("");
  // Before there is a temporary: the system's loader ends a process that has no memory for a library.
  if (job.flags & RAXEL_HOST_VERIFY) libTiffIsInstalled();
  std::optional<Output> output;
  if (!(job.flags & RAXEL_HOST_DRY_RUN)) output.emplace(job);
  Pace pace(job);
  PageCount pages;
  pages.isPaged = job.nextPage != nullptr;
  for (;;) {
    makePage(job, library, result, output ? &*output : nullptr, pages, pace, start);
    ++result.pages;
    if (!turnPage(job, result)) break;
    start = Clock::now();
    result.plan = planned(job);
    if (output) startPage(*output, pages);
  }
  if (!output) return;
  if (pages.isPaged) endPages(*output, pages);
  result.memory = output->commit([&] { pace.check(result.bytes); });
  result.writeSeconds += secondsSince(start);
}

void fail(RaxelHostResult &result, RaxelHostCode code, int error, const char *message) {
  result.code = code;
  result.error = error;
  result.bytes = 0;
  result.verified = 0;
  std::snprintf(result.message, sizeof result.message, "%s", message);
}

int run(const RaxelHostJob &job, RaxelHostResult &result) {
  try {
    exportPrepared(job, result);
  } catch (const Failure &failure) {
    fail(result, failure.reason(), failure.error(), failure.what());
  } catch (const std::bad_alloc &) {
    fail(result, RAXEL_HOST_NO_MEMORY, ENOMEM, raxelHostMessage(RAXEL_HOST_NO_MEMORY));
  } catch (const std::exception &error) {
    fail(result, RAXEL_HOST_FILTER_FAILED, 0, error.what());
  }
  return result.code;
}

}  // namespace
}  // namespace host

extern "C" {

uint32_t raxelHostVersion() {
  return RAXEL_HOST_VERSION;
}

void raxelHostJobDefaults(RaxelHostJob *job, uint32_t size) {
  if (!job || size < sizeof job->size) return;
  RaxelHostJob own{};
  own.size = size;
  raxelHostDefaults(&own.request);
  own.request.finish = 1;
  own.predictor = RAXEL_PREDICTOR_AUTO;
  std::memset(job, 0, size);
  std::memcpy(job, &own, host::known<RaxelHostJob>(size));
}

int raxelHostExport(const RaxelHostJob *job, RaxelHostResult *result) {
  RaxelHostJob ownJob{};
  RaxelHostResult ownResult{};
  // Up to the request the record has been there from the first version on.
  const bool usable = job && job->size >= offsetof(RaxelHostJob, path) &&
                      (!result || result->size >= offsetof(RaxelHostResult, plan));
  if (usable) {
    std::memcpy(&ownJob, job, host::known<RaxelHostJob>(job->size));
    const bool kept = result || ownJob.path || ownJob.write || (ownJob.flags & RAXEL_HOST_DRY_RUN);
    if (kept) {
      host::run(ownJob, ownResult);
    } else {
      host::fail(ownResult, RAXEL_HOST_BAD_ARGUMENT, 0, raxelHostMessage(RAXEL_HOST_BAD_ARGUMENT));
    }
  } else {
    host::fail(ownResult, RAXEL_HOST_BAD_ARGUMENT, 0, raxelHostMessage(RAXEL_HOST_BAD_ARGUMENT));
  }
  if (result && result->size >= sizeof result->size) {
    ownResult.size = result->size;
    std::memcpy(result, &ownResult, host::known<RaxelHostResult>(result->size));
  }
  return ownResult.code;
}

void raxelHostFree(void *memory) {
  std::free(memory);
}

}  // extern "C"
