// SPDX-License-Identifier: MIT
#include "order/export_task.h"

#include <exception>
#include <optional>

#include "clock.h"
#include "filter/driver.h"
#include "filter/given.h"
#include "filter/metadata.h"
#include "filter/open.h"
#include "filter/save.h"
#include "order/advice.h"
#include "order/as_is.h"
#include "order/given_palette.h"
#include "order/page_feed.h"
#include "pictures/picture.h"

namespace host {
namespace {

void noteAll(const RaxelPlan &plan, Report &report) {
  constexpr uint32_t kWorthTelling = RAXEL_NOTE_ROW_REPEATED | RAXEL_NOTE_LZW_AS_PACKBITS |
                                     RAXEL_NOTE_HUFFMAN_AS_PACKBITS | RAXEL_NOTE_RUNS_AS_T6 |
                                     RAXEL_NOTE_DOCUMENT | RAXEL_NOTE_NO_DOCUMENT;
  for (uint32_t bit = 1; bit < 1u << RAXEL_NOTES; bit <<= 1) {
    if ((plan.notes & bit) == 0) continue;
    (bit & kWorthTelling ? report.notes : report.details).push_back(noteText(bit));
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
  const bool sized = request.inchesX > 0 || request.inchesY > 0 || request.pageWidth > 0;
  request.inchesX = request.inchesY = 0;
  request.pageWidth = request.pageHeight = 0;
  RaxelPlan unscaled;
  const Exit exit = exitOf(reason);
  if (exit == kNoInput && sized && raxelHostPlan(&job.picture, &request, &unscaled) == RAXEL_HOST_OK)
    return kUsage;
  return exit;
}

// Sentences about output and library name these; all others are about the picture.
bool isAboutPicture(int reason) {
  return reason <= RAXEL_HOST_NO_MEMORY || reason == RAXEL_HOST_BAD_ROAD ||
         reason == RAXEL_HOST_PREDICTOR_NEEDS_LZW || reason == RAXEL_HOST_BAD_PALETTE;
}

// What the callbacks of an export work on.
struct Run {
  const Options &options;
  const Task &task;
  const Caller &caller;
  Report &report;  // of the output
  std::optional<Given> given;
  PageFeed feed;
  std::vector<uint8_t> profile;      // of --icc
  Palette palette;                   // of --palette
  std::unique_ptr<Picture> picture;  // the page at hand
  RaxelMetadata metadata{};          // of that page
  Report page;                       // what is told of it
  std::exception_ptr failed;         // in a callback, which nothing may pass through

  Run(const Library &library, const Options &wanted, const Task &what, const Caller &who, Report &whole)
      : options(wanted),
        task(what),
        caller(who),
        report(whole),
        feed(wanted, what),
        profile(givenProfile(wanted)),
        palette(givenPalette(wanted)) {
    const FilterLock lock;
    given.emplace(library, wanted);
  }
  ~Run() {
    const FilterLock lock;
    given.reset();
  }
  Run(const Run &) = delete;
  Run &operator=(const Run &) = delete;
};

const Caller &callerOf(void *run) {
  return static_cast<Run *>(run)->caller;
}

int32_t tellProgress(void *run, int32_t stage, double part, uint64_t bytes) {
  return callerOf(run).progress(callerOf(run).context, stage, part, bytes);
}

int32_t askToStop(void *run) {
  return callerOf(run).stop(callerOf(run).context);
}

void tellTemporary(void *run, const char *path) {
  callerOf(run).temporary(callerOf(run).context, path);
}

int32_t handOver(void *run, const void *bytes, uint64_t count) {
  return callerOf(run).write(callerOf(run).context, bytes, count);
}

// All but the request.
RaxelHostJob jobOf(Run &run, const Picture &picture) {
  const Options &options = run.options;
  RaxelHostJob job;
  raxelHostJobDefaults(&job, sizeof job);
  job.flags = run.caller.flags;
  if (options.verify) job.flags |= RAXEL_HOST_VERIFY;
  job.flags |= options.rules.force ? RAXEL_HOST_FORCE : RAXEL_HOST_ONLY_TIFF;
  if (options.rules.noClobber) job.flags |= RAXEL_HOST_NO_CLOBBER;
  if (options.rules.noSync) job.flags |= RAXEL_HOST_NO_SYNC;
  if (options.dryRun) job.flags |= RAXEL_HOST_DRY_RUN;
  job.picture = picture.view;
  job.path = run.task.output.c_str();
  job.progress = run.caller.progress ? tellProgress : nullptr;
  job.stop = run.caller.stop ? askToStop : nullptr;
  job.temporary = run.caller.temporary ? tellTemporary : nullptr;
  job.write = run.caller.write ? handOver : nullptr;
  job.context = &run;
  job.road = static_cast<int32_t>(options.via);
  job.predictor = options.predictor;
  return job;
}

// Refuses what size, depth and options decide.
void checkJob(const RaxelHostJob &job, const std::string &input) {
  RaxelPlan plan;
  if (const int code = raxelHostPlan(&job.picture, &job.request, &plan); code != RAXEL_HOST_OK)
    throw Failure(exitFor(code, job), static_cast<RaxelHostCode>(code),
                  input + ": " + raxelHostMessage(code), 0);
  if (job.road != RAXEL_ROAD_DRIVER) return;
  if (const std::string why = driverRefusal(plan); !why.empty())
    throw Failure(exitFor(RAXEL_HOST_BAD_ROAD, job), RAXEL_HOST_BAD_ROAD, input + ": " + why, 0);
}

// Reads the next page, and makes a request of it. False when there is none.
bool readNext(Run &run) {
  Clock::time_point start = Clock::now();
  const Setup &setup = run.given->setup;
  // Before there are pixels, so that those of a picture that is refused cost nothing.
  const auto gate = [&](const Picture &announced) {
    describe(announced, run.page);
    if (run.options.asIs) return checkAsIs(announced, run.feed.name());
    RaxelHostJob job = jobOf(run, announced);
    std::vector<std::string> unheard;
    job.request = requestFor(run.options, run.palette, setup, announced, unheard);
    checkJob(job, run.feed.name());
  };
  run.page = Report{};
  run.page.dryRun = run.options.dryRun;
  run.picture.reset();  // no page's memory beside the next one's
  run.picture = run.feed.next(gate);
  if (run.caller.pages) *run.caller.pages = run.feed.known();
  if (!run.picture) return false;
  run.page.input = run.feed.name();
  describe(*run.picture, run.page);
  run.page.readSeconds = secondsSince(start);
  run.report.readSeconds += run.page.readSeconds;
  return true;
}

// Tells of a page that is written.
void endPage(Run &run, const RaxelHostResult &result) {
  run.page.plan = result.plan;
  run.page.differences = result.predictor != RAXEL_PREDICTOR_NONE;
  run.page.planned = true;
  noteAll(result.plan, run.page);
  if (run.caller.told) run.caller.told(run.page);
  if (run.options.json) run.report.pages.push_back(toJson(run.page));
}

int32_t turnPage(void *context, uint32_t, const RaxelHostResult *before, RaxelPicture *picture,
                 RaxelRequest *request) {
  Run &run = *static_cast<Run *>(context);
  try {
    endPage(run, *before);
    if (!readNext(run)) return 0;
    *picture = run.picture->view;
    *request = requestFor(run.options, run.palette, run.given->setup, *run.picture, run.page.notes);
    run.metadata = metadataFor(run.options, run.profile, *run.picture, *request, run.page.notes);
    return 1;
  } catch (...) {
    run.failed = std::current_exception();
    return -1;
  }
}

void carryOut(const Library &library, const Options &options, const Task &task, const Caller &caller,
              Report &report) {
  report.output = options.dryRun ? "" : task.output;
  report.dryRun = options.dryRun;
  report.isPaged = options.pages;
  checkSave(library, options);
  Run run(library, options, task, caller, report);
  const Setup &setup = run.given->setup;
  // What is known of a single picture is in its report, even if it fails.
  const auto copyPage = [&] {
    if (options.pages) return;
    const std::string input = report.input, output = report.output;
    report = run.page;
    report.input = input;
    report.output = output;
  };
  try {
    readNext(run);
  } catch (...) {
    copyPage();
    throw;
  }
  copyPage();
  if (setup.fromProfile() && options.profile.empty()) {
    report.notes.push_back(std::string("takes settings from section [") + setup.record().szModeName +
                           "] of " + setup.record().szProfilePath);
  }
  RaxelHostJob job = jobOf(run, *run.picture);
  if (options.asIs)
    return exportAsIs(library, options, *run.given, *run.picture, job, report, caller.memory);
  std::vector<std::string> &notes = options.pages ? run.page.notes : report.notes;
  job.request = requestFor(options, run.palette, setup, *run.picture, notes);
  run.metadata = metadataFor(options, run.profile, *run.picture, job.request, notes);
  job.metadata = &run.metadata;
  job.nextPage = options.pages ? turnPage : nullptr;
  RaxelHostResult result{};
  result.size = sizeof result;
  const int code = raxelHostExport(&job, &result);
  if (run.failed) std::rethrow_exception(run.failed);
  if (code != RAXEL_HOST_OK) {
    throw Failure(exitFor(code, job), static_cast<RaxelHostCode>(code),
                  (isAboutPicture(code) ? run.feed.name() + ": " : "") + result.message, result.error);
  }
  report.isInPlace = !options.dryRun;
  if (caller.memory) *caller.memory = result.memory;
  report.pageCount = result.pages;
  report.bytes = result.bytes;
  report.verified = result.verified != 0;
  report.prepareSeconds = result.prepareSeconds;
  report.writeSeconds = result.writeSeconds;
  if (!options.pages) {
    report.plan = result.plan;
    report.planned = true;
    report.differences = result.predictor != RAXEL_PREDICTOR_NONE;
    noteAll(result.plan, report);
  }
  if (options.save && !options.dryRun) {
    const FilterLock lock;
    saveGiven(library, *run.given, options, report.notes);
  }
}

}  // namespace

const Library &openFilter(const Options &options) {
  try {
    return openFilter(options.library);
  } catch (const Failure &failure) {
    throw advised(failure, options, "");
  }
}

void exportTask(const Library &library, const Options &options, const Task &task, const Caller &caller,
                Report &report) {
  try {
    carryOut(library, options, task, caller, report);
  } catch (const Failure &failure) {
    throw advised(failure, options, task.output);
  }
}

}  // namespace host
