#include "export/export.h"

#include <optional>

#include "buffer.h"
#include "check/verify.h"
#include "clock.h"
#include "command/progress.h"
#include "export/asis.h"
#include "filter/driver.h"
#include "filter/handover.h"
#include "filter/save.h"
#include "output/target.h"
#include "pictures/picture.h"
#include "prepare/fallback.h"

namespace host {
namespace {

Exit exitOf(int code) {
  switch (code) {
    case RAXEL_HOST_BAD_PICTURE:
    case RAXEL_HOST_TOO_WIDE:
    case RAXEL_HOST_TOO_TALL:
    case RAXEL_HOST_TOO_LARGE:
      return kNoInput;
    case RAXEL_HOST_NO_SERVICE:
    case RAXEL_HOST_NO_MEMORY:
      return kLibrary;
    default:
      return kUsage;
  }
}

void check(int code, const std::string &input) {
  if (code != RAXEL_HOST_OK) throw Failure(exitOf(code), input + ": " + raxelHostMessage(code));
}

// A picture that is too large only because the options ask for another size is their fault.
void checkPlan(int code, const std::string &input, const RaxelPicture &picture, RaxelRequest request) {
  const bool scaled = request.inchesX > 0 || request.inchesY > 0;
  request.inchesX = request.inchesY = 0;
  RaxelPlan unscaled;
  if (exitOf(code) == kNoInput && scaled && raxelHostPlan(&picture, &request, &unscaled) == RAXEL_HOST_OK)
    throw Failure(kUsage, input + ": " + raxelHostMessage(code));
  check(code, input);
}

// Writes of image data that the library will make: the measure of progress.
uint64_t dataWrites(const RaxelPlan &plan) {
  const uint64_t rowBytes = (uint64_t{plan.width} * plan.bits + 7) / 8;
  switch (plan.compression) {
    case RAXEL_COMPRESS_PACKBITS:
      return plan.height * ((rowBytes + 126) / 127);
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

void noteAll(const RaxelPlan &plan, Report &report) {
  constexpr uint32_t kWorthTelling = RAXEL_NOTE_ROW_REPEATED | RAXEL_NOTE_LZW_AS_PACKBITS |
                                     RAXEL_NOTE_HUFFMAN_AS_PACKBITS | RAXEL_NOTE_RUNS_AS_T6;
  for (uint32_t bit = 1; bit < 1u << RAXEL_NOTES; bit <<= 1) {
    if ((plan.notes & bit) == 0) continue;
    (bit & kWorthTelling ? report.notes : report.details).push_back(raxelHostNote(bit));
  }
}

void describe(const Picture &picture, Report &report) {
  report.format = picture.format.empty() ? "picture" : picture.format;
  report.width = picture.view.width;
  report.height = picture.view.height;
  report.bits = picture.view.bits;
  report.colors = picture.view.table ? picture.view.colors : 0;
  report.notes = picture.notes;
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
    throw Failure(kLibrary, library.path + ": would write " + std::to_string(result.nWidth) + " by " +
                                std::to_string(result.nHeight) + " pixels of " + std::to_string(depth) +
                                " bits instead of what is planned");
  }
}

// By the road that is asked for. The result is a code of the library.
uint32_t send(const Library &library, const Options &options, Setup &setup, const RaxelPlan &plan,
              const Handover &picture, OutputStream &stream) {
  switch (options.via) {
    case Via::kDriver:
      return static_cast<uint32_t>(exportThroughDriver(library, setup, plan, picture, stream));
    case Via::kMetafile: {
      const auto code = static_cast<uint32_t>(exportThroughMetafile(library, setup, stream));
      if (code != RAXEL_NO_MEMORY) return code;
      throw Failure(kLibrary,
                    library.path + ": records no metafiles on this platform (code 300); use --via cell");
    }
    default:
      return exportCells(library, setup, picture, "output", stream);
  }
}

}  // namespace

void exportPicture(const Library &library, const Options &options, const std::string &inputPath,
                   const std::string &output, Progress &progress, Report &report) {
  report.input = inputPath;
  report.output = options.dryRun ? "" : output;
  report.dryRun = options.dryRun;
  Clock::time_point start = Clock::now();

  const Input input(inputPath);
  const std::unique_ptr<Picture> picture = readPicture(input, options.background);
  describe(*picture, report);
  report.readSeconds = secondsSince(start);

  checkSave(library, options);
  Setup setup(library, options);
  if (setup.fromProfile() && options.profile.empty()) {
    report.notes.push_back(std::string("takes settings from section [") + setup.record().szModeName +
                           "] of " + setup.record().szProfilePath);
  }
  if (options.asIs) return exportAsIs(library, options, setup, *picture, output, progress, report);
  const RaxelRequest request = requestFor(options, setup, *picture, report.notes);
  RaxelPlan plan;
  checkPlan(raxelHostPlan(&picture->view, &request, &plan), inputPath, picture->view, request);
  if (options.via == Via::kDriver) {
    if (const std::string why = driverRefusal(plan); !why.empty())
      throw Failure(kUsage, inputPath + ": " + why);
  }
  report.plan = plan;
  report.planned = true;
  sendPlan(setup, plan);
  crossCheck(setup, plan, library);
  if (options.dryRun && !prepare::mayFallBack(plan)) return noteAll(plan, report);

  std::optional<Target> made;
  if (!options.dryRun) made.emplace(output, options.rules);
  progress.stage("preparing");
  const prepare::HandleMemory pixels(library.services, plan.bytes), table(library.services, 256 * 3);
  if (!pixels.bytes() || !table.bytes()) check(RAXEL_HOST_NO_MEMORY, inputPath);
  useLargePages(pixels.bytes(), static_cast<size_t>(plan.bytes));
  check(raxelHostPrepare(&picture->view, &request, &library.services, &plan, pixels.bytes(), table.bytes()),
        inputPath);
  sendPlan(setup, plan);
  report.plan = plan;
  noteAll(plan, report);
  report.prepareSeconds = secondsSince(start);
  if (options.dryRun) return;

  Target &target = *made;
  OutputStream stream(target.sink(), progress);
  setup.setOutput(&OutputStream::procedure);
  progress.expect(dataWrites(plan));
  const Handover handover{pixels,
                          table,
                          static_cast<uint16_t>(plan.bits),
                          static_cast<uint16_t>(plan.width),
                          static_cast<uint16_t>(plan.height),
                          plan.extentX,
                          plan.extentY,
                          static_cast<uint16_t>(plan.unitsPerInch)};
  std::optional<Meant> meant;
  if (options.verify) meant.emplace(plan, pixels.bytes(), table.bytes());
  const uint32_t result = send(library, options, setup, plan, handover, stream);
  target.checkWritten();
  checkComplete(stream, result, target.name(), library);
  report.bytes = target.sink().size();
  if (meant) meant->compare(target.bytes(), target.name());
  report.verified = options.verify;
  target.commit();
  if (options.save) saveGiven(library, setup, options, report.notes);
  report.writeSeconds = secondsSince(start);
}

}  // namespace host
