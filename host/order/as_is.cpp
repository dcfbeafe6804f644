// SPDX-License-Identifier: MIT
#include "order/as_is.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include "check/directory.h"
#include "clock.h"
#include "export/stages.h"
#include "failure.h"
#include "filter/open.h"
#include "filter/save.h"
#include "finish/tags.h"
#include "prepare/source.h"
#include "prepare/swap.h"
#include "raxel/tiff_codes.h"

namespace host {
namespace {

// The filter takes 1, 4, 8 and 24 bits.
uint32_t handedBits(uint32_t bits) {
  return bits == 2 ? 4 : bits;
}

uint64_t strideOf(uint32_t width, uint32_t bits) {
  return (uint64_t{width} * bits + 31) / 32 * 4;
}

// Rows from the bottom up, blue before red: what the format asks of every host.
void layOut(const RaxelPicture &picture, uint32_t bits, uint8_t *pixels) {
  const prepare::Source source(picture, RAXEL_TREAT_NONE, nullptr);
  const uint64_t stride = strideOf(picture.width, bits);
  std::vector<uint8_t> indices(picture.width);
  for (uint32_t y = 0; y < picture.height; ++y) {
    uint8_t *row = pixels + stride * (picture.height - 1 - y);
    if (bits == 24) {
      prepare::swapRedBlue(source.row(y), row, picture.width);
    } else {
      source.readIndices(y, indices.data());
      prepare::packRow(indices, bits, row);
    }
  }
}

void layOutTable(const RaxelPicture &picture, uint8_t *table) {
  if (picture.bits == 24) return;
  const prepare::Source source(picture, RAXEL_TREAT_NONE, nullptr);
  for (const prepare::Color &color : source.table()) table = std::copy(color.begin(), color.end(), table);
}

bool hasColors(const RaxelPicture &picture) {
  if (picture.bits == 24) return true;
  const prepare::Source source(picture, RAXEL_TREAT_NONE, nullptr);
  return !source.grey();
}

// Where the filter's own conversions show other colours than the picture's: it reads tables as red, green,
// blue and pixels of 24 bits as blue, green, red, and makes the one of the other as they stand.
void noteExchange(const RaxelPicture &picture, uint64_t photometric, Report &report) {
  if (!hasColors(picture) || (picture.bits == 24) == (photometric == RAXEL_TIFF_RGB)) return;
  if (photometric == RAXEL_TIFF_RGB || photometric == RAXEL_TIFF_PALETTE) {
    report.notes.emplace_back(
        "the filter exchanges red and blue in this conversion; without --as-is they are right");
  } else if (picture.bits == 24 && report.fileBits != 4) {  // 16 greys weigh no colour at all
    report.notes.emplace_back(
        "the filter weighs red as blue in greys from 24 bits; without --as-is they are right");
  }
}

// What the filter has made of it. The depth of a colour is said once for its three samples.
void describeFile(std::span<const uint8_t> file, const RaxelPicture &picture, Report &report) {
  const Directory directory = readDirectory(file);
  const auto number = [&](uint16_t tag) { return static_cast<uint32_t>(directory.value(tag, 0)); };
  report.seen = true;
  report.fileWidth = number(finish::kImageWidth);
  report.fileHeight = number(finish::kImageLength);
  report.fileBits = number(finish::kBitsPerSample) * std::max(number(finish::kSamplesPerPixel), 1u);
  report.bytes = file.size();
  if (report.fileWidth == 0 || report.fileHeight == 0) {
    report.notes.push_back("the file says that it has " + std::to_string(report.fileWidth) + " by " +
                           std::to_string(report.fileHeight) + " pixels, and no reader opens that");
  }
  if (report.fileHeight == picture.height + 1) {
    report.notes.emplace_back("the height was odd, and the filter adds a row");
  }
  noteExchange(picture, number(finish::kPhotometric), report);
}

}  // namespace

void checkAsIs(const Picture &picture, const std::string &input) {
  if (picture.view.width > UINT16_MAX || picture.view.height > UINT16_MAX)
    throw Failure(kNoInput, input + ": the filter takes no picture of more than 65535 pixels a side");
}

void exportAsIs(const Library &library, const Options &options, Given &given, const Picture &picture,
                const RaxelHostJob &job, Report &report, uint8_t **memory) {
  const FilterLock lock;
  Setup &setup = given.setup;
  const RaxelPicture &view = picture.view;
  checkAsIs(picture, report.input);
  sendGiven(setup, options, false);
  // The picture's own resolution, in units that are its pixels.
  const double dpi = picture.dpiX >= 1.5 ? std::round(picture.dpiX) : 96;
  const auto units = static_cast<uint16_t>(std::clamp(dpi, 1.0, 65535.0));
  RasterPictureInfo info{};
  info.nPictureResolution = units;
  info.nPictureWidth = static_cast<int32_t>(view.width);
  info.nPictureHeight = static_cast<int32_t>(view.height);
  const RasterInfoResult result = setup.query(info);
  report.details.push_back("the filter says " + std::to_string(result.nWidth) + " by " +
                           std::to_string(result.nHeight) + " pixels, depth " +
                           std::to_string(result.nDepth));

  // The numbers that the filter answers are not quite those of the file, so a dry run writes into memory.
  Clock::time_point start = Clock::now();
  const uint32_t bits = handedBits(view.bits);
  Output file = options.dryRun ? Output("", {}) : Output(job);
  Pace pace(job);
  pace.begin(RAXEL_STAGE_PREPARING);
  const Room room(library, strideOf(view.width, bits) * view.height);
  layOut(view, bits, room.pixels.bytes());
  layOutTable(view, room.table.bytes());
  report.prepareSeconds = secondsSince(start);
  // The filter reduces and scales in blocks of its own, of 24 bits a pixel at most.
  const auto side = [](int32_t pixels) { return static_cast<uint32_t>(std::max(pixels, 0)); };
  checkMemory(2 * (strideOf(view.width, 24) * view.height +
                   strideOf(side(result.nWidth), 24) * side(result.nHeight)));
  const Handover handover{room.pixels,
                          room.table,
                          static_cast<uint16_t>(bits),
                          static_cast<uint16_t>(view.width),
                          static_cast<uint16_t>(view.height),
                          info.nPictureWidth,
                          info.nPictureHeight,
                          units};
  writePicture(library, setup, handover, nullptr, RAXEL_ROAD_CELL,
               static_cast<uint64_t>(std::max(result.nHeight, 1)), file, pace);
  describeFile(file.bytes(), view, report);
  if (options.dryRun) return;
  uint8_t *const made = file.commit([&] { pace.check(report.bytes); });
  report.isInPlace = true;
  if (memory) *memory = made;
  if (options.save) saveGiven(library, given, options, report.notes);
  report.writeSeconds = secondsSince(start);
}

}  // namespace host
