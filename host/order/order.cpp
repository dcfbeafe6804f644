// SPDX-License-Identifier: MIT
// Orders: the command's options and reports for programs.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <list>
#include <new>
#include <string>

#include "check/inspect.h"
#include "filter/open.h"
#include "order/manifest.h"
#include "order/option_list.h"
#include "order/option_table.h"
#include "output/originals.h"
#include "raxel/host.h"

struct RaxelHostOrder {
  host::Options options;
  host::Task task;
  std::list<RaxelHostPixels> pixels;  // where the task finds them
  std::string message;                // of the last call
  int error = 0;
  std::string report;        // of the last run
  uint8_t *bytes = nullptr;  // the file of the last run, where it has no other place
  uint64_t byteCount = 0;
  size_t pages = 0;  // of that file, as far as they are known

  void dropFile() {
    raxelHostFree(bytes);
    bytes = nullptr;
    byteCount = 0;
  }
};

namespace host {
namespace {

// What the command does with its folders, processes and terminal is not the order's.
bool isCommandsOwn(OptionId id) {
  switch (id) {
    case OptionId::kDirectory:
    case OptionId::kJobs:
    case OptionId::kThreads:
    case OptionId::kNoSandbox:
    case OptionId::kShard:
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
void checkInputs(const Task &task, const Options &o) {
  if (task.inputs.empty()) throw Failure(kUsage, "no input given");
  if (task.inputs.size() > 1 && !o.pages)
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

void perform(RaxelHostOrder &order, const RaxelHostCalls &calls) {
  Options options = order.options;  // what a preset adds is this run's alone
  options.json = true;              // pages are told of in the report
  applyPreset(options);
  checkOptions(options);
  checkInputs(order.task, options);
  order.task.output = options.output;
  if (!options.output.empty()) {
    std::vector<std::string> files = optionFilesOf(options);
    for (const TaskInput &input : order.task.inputs) {
      if (!input.pixels) files.push_back(input.name);
    }
    Originals(files).protectFrom(options.output);
  }
  Caller caller;
  caller.flags = calls.flags & RAXEL_HOST_SYNC_CHILD;
  caller.progress = calls.progress;
  caller.stop = calls.stop;
  caller.temporary = calls.temporary;
  caller.write = calls.write;
  caller.memory = &order.bytes;
  caller.pages = &order.pages;
  caller.context = calls.context;
  Report report;
  report.input = order.task.inputs.front().name;
  try {
    exportRecorded(openFilter(options), options, order.task, caller, report);
  } catch (const Failure &failure) {
    report.exit = failure.code();
    report.error = failure.what();
    order.report = toJson(report);
    throw;
  }
  order.report = toJson(report);
  if (order.bytes) order.byteCount = report.bytes;
}

// Where there is no memory for words there are none.
void tell(std::string &message, const std::exception &failure) {
  try {
    message = failure.what();
  } catch (const std::bad_alloc &) {
    message.clear();
  }
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
    tell(message, failure);
    return failure.reason();
  } catch (const std::bad_alloc &) {
    error = ENOMEM;
    message.clear();  // there is no memory for words
    return RAXEL_HOST_NO_MEMORY;
  } catch (const std::exception &failure) {
    tell(message, failure);
    return RAXEL_HOST_FILTER_FAILED;
  }
}

template <class Action>
int guard(RaxelHostOrder *order, Action action) {
  return order ? guard(order->message, order->error, action) : int{RAXEL_HOST_BAD_ARGUMENT};
}

}  // namespace
}  // namespace host

extern "C" {

RaxelHostOrder *raxelHostOrderNew() {
  return new (std::nothrow) RaxelHostOrder;
}

void raxelHostOrderFree(RaxelHostOrder *order) {
  if (order) order->dropFile();
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

int raxelHostOrderRun(RaxelHostOrder *order, const RaxelHostCalls *calls) {
  return host::guard(order, [&] {
    order->report.clear();
    order->pages = order->task.inputs.size();
    order->dropFile();
    host::perform(*order, host::ownCopy(calls));
  });
}

const char *raxelHostOrderMessage(const RaxelHostOrder *order) {
  return order ? order->message.c_str() : "";
}

int32_t raxelHostOrderError(const RaxelHostOrder *order) {
  return order ? order->error : 0;
}

const uint8_t *raxelHostOrderBytes(const RaxelHostOrder *order, uint64_t *count) {
  if (count) *count = order ? order->byteCount : 0;
  return order ? order->bytes : nullptr;
}

const char *raxelHostOrderReport(const RaxelHostOrder *order) {
  return order ? order->report.c_str() : "";
}

uint32_t raxelHostOrderPages(const RaxelHostOrder *order) {
  return order ? static_cast<uint32_t>(order->pages) : 0;
}

const char *raxelHostOptions() {
  try {
    static const std::string *const options = new std::string(host::optionsJson());
    return options->c_str();
  } catch (const std::exception &) {
    return nullptr;
  }
}

char *raxelHostInspect(const char *path) {
  std::string text, unheard;  // null says enough
  int error = 0;
  host::guard(unheard, error, [&] {
    host::Inspection seen;
    seen.name = path ? path : "";
    try {
      seen = host::inspect(seen.name);
    } catch (const host::Failure &failure) {
      seen.exit = failure.code();
      seen.pages.front().directory.faults.emplace_back(failure.what());
    }
    text = host::toJson(seen);
  });
  return text.empty() ? nullptr : strdup(text.c_str());
}

}  // extern "C"
