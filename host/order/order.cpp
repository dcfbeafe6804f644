// Orders: the command's options and reports for programs.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <list>
#include <new>
#include <string>

#include "check/inspect.h"
#include "filter/open.h"
#include "order/export_task.h"
#include "order/option_list.h"
#include "order/option_table.h"
#include "output/originals.h"
#include "raxel/host.h"

struct RaxelHostOrder {
  host::Options options;
  host::Task task;
  std::list<RaxelHostPixels> pixels;  // where the task finds them
  std::string message;                // of the last call
  std::string report;
};

namespace host {
namespace {

// What the command does with its folders, processes and terminal is not the order's.
bool isCommandsOwn(OptionId id) {
  switch (id) {
    case OptionId::kDirectory:
    case OptionId::kJobs:
    case OptionId::kThreads:
    case OptionId::kInspect:
    case OptionId::kList:
    case OptionId::kJson:
    case OptionId::kQuiet:
    case OptionId::kVerbose:
    case OptionId::kVersion:
      return true;
    default:
      return false;
  }
}

void set(RaxelHostOrder &order, const std::string &name, const char *value) {
  const auto *row = std::ranges::find(kOptions, name, &OptionRow::longName);
  if (row == kOptions.end()) throw Failure(kUsage, "--" + name + ": there is no such option");
  if (isCommandsOwn(row->id)) throw Failure(kUsage, "--" + name + ": is for the command alone");
  if (row->argument.empty() != (value == nullptr))
    throw Failure(kUsage, "--" + name + (value ? ": is a flag and takes no value" : ": needs a value"));
  setOption(*row, value ? value : "", order.options);
}

// Without "pages" there is one picture.
void checkInputs(const RaxelHostOrder &order) {
  const Options &o = order.options;
  if (order.task.inputs.empty()) throw Failure(kUsage, "no input given");
  if (order.task.inputs.size() > 1 && !o.pages)
    throw Failure(kUsage, "several inputs go as pages into one file: give --pages");
  checkPageChoice(o);
}

// A record of the caller's, which may be shorter or longer than ours.
template <class Record>
Record ownCopy(const Record *given) {
  Record own{};
  if (given) std::memcpy(&own, given, std::min<size_t>(given->size, sizeof own));
  return own;
}

void perform(RaxelHostOrder &order, const RaxelHostJob &job, RaxelHostResult &result, bool hasResult) {
  order.options.json = true;  // pages are told of in the report
  checkOptions(order.options);
  checkInputs(order);
  const Options &options = order.options;
  order.task.output = options.output;
  if (options.output.empty() && !job.write && !options.dryRun && !hasResult)
    throw Failure(kUsage, "no output given");
  if (!options.output.empty()) {
    std::vector<std::string> files;
    for (const TaskInput &input : order.task.inputs) {
      if (!input.pixels) files.push_back(input.name);
    }
    Originals(files).protectFrom(options.output);
  }
  Caller caller;
  caller.flags = job.flags & (RAXEL_HOST_VERIFY | RAXEL_HOST_SYNC_CHILD);
  caller.progress = job.progress;
  caller.stop = job.stop;
  caller.temporary = job.temporary;
  caller.write = job.write;
  caller.memory = hasResult ? &result.memory : nullptr;
  caller.context = job.context;
  Report report;
  report.input = order.task.inputs.front().name;
  try {
    exportTask(openFilter(options), options, order.task, caller, report);
  } catch (const Failure &failure) {
    report.exit = failure.code();
    report.error = failure.what();
    order.report = toJson(report);
    throw;
  }
  order.report = toJson(report);
  result.verified = report.verified ? 1 : 0;
  result.bytes = report.bytes;
  result.prepareSeconds = report.prepareSeconds;
  result.writeSeconds = report.writeSeconds;
  result.plan = report.plan;
  result.pages = report.isPaged ? report.pageCount : 1;
}

// What an action throws, as a code, a sentence and an errno.
template <class Action>
int guard(std::string &message, int &error, Action action) {
  error = 0;
  try {
    message.clear();
    action();
    return RAXEL_HOST_OK;
  } catch (const Failure &failure) {
    error = failure.error();
    message = failure.what();
    return failure.reason();
  } catch (const std::bad_alloc &) {
    error = ENOMEM;
    return RAXEL_HOST_NO_MEMORY;
  } catch (const std::exception &failure) {
    message = failure.what();
    return RAXEL_HOST_FILTER_FAILED;
  }
}

template <class Action>
int guard(RaxelHostOrder *order, Action action) {
  int error = 0;
  return order ? guard(order->message, error, action) : int{RAXEL_HOST_BAD_ARGUMENT};
}

}  // namespace
}  // namespace host

extern "C" {

RaxelHostOrder *raxelHostOrderNew() {
  return new (std::nothrow) RaxelHostOrder;
}

void raxelHostOrderFree(RaxelHostOrder *order) {
  delete order;
}

int raxelHostOrderSet(RaxelHostOrder *order, const char *option, const char *value) {
  if (!option) return RAXEL_HOST_BAD_ARGUMENT;
  return host::guard(order, [&] { host::set(*order, option, value); });
}

int raxelHostOrderFile(RaxelHostOrder *order, const char *path) {
  if (!path || *path == '\0') return RAXEL_HOST_BAD_ARGUMENT;
  return host::guard(order, [&] { order->task.inputs.push_back({path, nullptr}); });
}

int raxelHostOrderPicture(RaxelHostOrder *order, const RaxelHostPixels *pixels) {
  if (!pixels) return RAXEL_HOST_BAD_ARGUMENT;
  return host::guard(order, [&] {
    order->pixels.push_back(host::ownCopy(pixels));
    const size_t number = order->task.inputs.size() + 1;
    order->task.inputs.push_back({"picture " + std::to_string(number), &order->pixels.back()});
  });
}

int raxelHostOrderRun(RaxelHostOrder *order, const RaxelHostJob *job, RaxelHostResult *result) {
  if (!order || (result && result->size < offsetof(RaxelHostResult, plan))) return RAXEL_HOST_BAD_ARGUMENT;
  RaxelHostResult own{};
  order->report.clear();
  own.code = host::guard(order->message, own.error,
                         [&] { host::perform(*order, host::ownCopy(job), own, result != nullptr); });
  if (own.code == RAXEL_HOST_NO_MEMORY && order->message.empty()) {
    std::snprintf(own.message, sizeof own.message, "%s", raxelHostMessage(own.code));
  } else {
    std::snprintf(own.message, sizeof own.message, "%s", order->message.c_str());
  }
  if (result) {
    own.size = result->size;
    std::memcpy(result, &own, std::min<size_t>(own.size, sizeof own));
  }
  return own.code;
}

const char *raxelHostOrderMessage(const RaxelHostOrder *order) {
  return order ? order->message.c_str() : "";
}

const char *raxelHostOrderReport(const RaxelHostOrder *order) {
  return order ? order->report.c_str() : "";
}

const char *raxelHostOptions() {
  static const std::string *const options = new std::string(host::optionsJson());
  return options->c_str();
}

char *raxelHostInspect(const char *path) {
  host::Inspection seen;
  std::string text;
  int error = 0;
  host::guard(text, error, [&] {
    seen.name = path ? path : "";
    try {
      seen = host::inspect(seen.name);
    } catch (const host::Failure &failure) {
      seen.exit = failure.code();
      seen.directory.faults.emplace_back(failure.what());
    }
    text = host::toJson(seen);
  });
  return text.empty() ? nullptr : strdup(text.c_str());
}

}  // extern "C"
