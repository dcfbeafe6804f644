#include "command/export_one.h"

#include "clock.h"
#include "command/as_is.h"
#include "command/stop.h"
#include "filter/driver.h"
#include "filter/given.h"
#include "filter/save.h"
#include "pictures/picture.h"

namespace host {
namespace {

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

// A picture that is too large only because the options ask for another size is their fault.
Exit exitFor(int reason, const RaxelHostJob &job) {
  RaxelRequest request = job.request;
  const bool scaled = request.inchesX > 0 || request.inchesY > 0;
  request.inchesX = request.inchesY = 0;
  RaxelPlan unscaled;
  const Exit exit = exitOf(reason);
  if (exit == kNoInput && scaled && raxelHostPlan(&job.picture, &request, &unscaled) == RAXEL_HOST_OK)
    return kUsage;
  return exit;
}

// Sentences about output and library name these; all others are about the picture.
bool isAboutPicture(int reason) {
  return reason <= RAXEL_HOST_NO_MEMORY || reason == RAXEL_HOST_BAD_ROAD;
}

int32_t show(void *context, int32_t stage, double part, uint64_t bytes) {
  Progress &progress = *static_cast<Progress *>(context);
  if (stage == RAXEL_STAGE_PREPARING) {
    progress.stage("preparing");
  } else {
    progress.show(part, bytes);
  }
  return 0;  // a stop comes by signal and does not wait for the filter
}

void rememberTemporary(void *, const char *path) {
  stop::setTemporary(path ? path : "");
}

// All but the request.
RaxelHostJob jobOf(const Options &options, const Picture &picture, const std::string &output,
                   Progress &progress) {
  RaxelHostJob job;
  raxelHostJobDefaults(&job, sizeof job);
  job.flags = RAXEL_HOST_SYNC_CHILD;
  if (options.verify) job.flags |= RAXEL_HOST_VERIFY;
  job.flags |= options.rules.force ? RAXEL_HOST_FORCE : RAXEL_HOST_ONLY_TIFF;
  if (options.rules.noClobber) job.flags |= RAXEL_HOST_NO_CLOBBER;
  if (options.dryRun) job.flags |= RAXEL_HOST_DRY_RUN;
  job.picture = picture.view;
  job.path = output.c_str();
  job.progress = progress.isShown() ? show : nullptr;
  job.temporary = rememberTemporary;
  job.context = &progress;
  job.road = static_cast<int32_t>(options.via);
  return job;
}

// Refuses what size, depth and options decide.
void checkJob(const RaxelHostJob &job, const std::string &input) {
  RaxelPlan plan;
  if (const int code = raxelHostPlan(&job.picture, &job.request, &plan); code != RAXEL_HOST_OK)
    throw Failure(exitFor(code, job), input + ": " + raxelHostMessage(code));
  if (job.road != RAXEL_ROAD_DRIVER) return;
  if (const std::string why = driverRefusal(plan); !why.empty())
    throw Failure(exitFor(RAXEL_HOST_BAD_ROAD, job), input + ": " + why);
}

}  // namespace

void exportPicture(const Library &library, const Options &options, const std::string &inputPath,
                   const std::string &output, Progress &progress, Report &report) {
  report.input = inputPath;
  report.output = options.dryRun ? "" : output;
  report.dryRun = options.dryRun;
  Clock::time_point start = Clock::now();

  const Input input(inputPath);
  checkSave(library, options);
  Given given(library, options);
  const Setup &setup = given.setup;
  // Before there are pixels, so that those of a picture that is refused cost nothing.
  const auto gate = [&](const Picture &announced) {
    describe(announced, report);
    if (options.asIs) return checkAsIs(announced, inputPath);
    RaxelHostJob job = jobOf(options, announced, output, progress);
    std::vector<std::string> unheard;
    job.request = requestFor(options, setup, announced, unheard);
    checkJob(job, inputPath);
  };
  const std::unique_ptr<Picture> picture = readPicture(input, options.background, gate);
  describe(*picture, report);
  report.readSeconds = secondsSince(start);

  if (setup.fromProfile() && options.profile.empty()) {
    report.notes.push_back(std::string("takes settings from section [") + setup.record().szModeName +
                           "] of " + setup.record().szProfilePath);
  }
  RaxelHostJob job = jobOf(options, *picture, output, progress);
  if (options.asIs) return exportAsIs(library, options, given, *picture, job, report);
  job.request = requestFor(options, setup, *picture, report.notes);
  RaxelHostResult result{};
  result.size = sizeof result;
  if (const int code = raxelHostExport(&job, &result); code != RAXEL_HOST_OK) {
    throw Failure(exitFor(code, job), (isAboutPicture(code) ? inputPath + ": " : "") + result.message);
  }
  report.plan = result.plan;
  report.planned = true;
  report.bytes = result.bytes;
  report.verified = result.verified != 0;
  report.prepareSeconds = result.prepareSeconds;
  report.writeSeconds = result.writeSeconds;
  noteAll(result.plan, report);
  if (options.save && !options.dryRun) saveGiven(library, given, options, report.notes);
}

}  // namespace host
