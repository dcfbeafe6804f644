// SPDX-License-Identifier: MIT
#include "order/manifest.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "order/digest.h"
#include "order/manifest_lines.h"
#include "order/option_table.h"
#include "order/palettes.h"

namespace host {
namespace {

using Json = nlohmann::json;  // keys in the order of the alphabet, whatever order they were given in

// JSON holds characters, and what is none in a name is replaced.
std::string textOf(const nlohmann::ordered_json &json) {
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

// What is looked up of the sources before they are exported.
struct Sources {
  std::vector<std::string> paths;
  uint64_t bytes = 0;
  int64_t time = 0;  // nanoseconds, of the latest change
};

Sources sourcesOf(const Task &task) {
  Sources sources;
  for (const TaskInput &input : task.inputs) {
    struct stat about;
    if (input.pixels || input.name == "-")
      throw Failure(kUsage, "--manifest is for files, and not for " + input.name);
    if (stat(input.name.c_str(), &about) != 0)
      throw Failure(kNoInput, input.name + ": cannot be opened: " + std::strerror(errno), errno);
    sources.paths.push_back(input.name);
    sources.bytes += static_cast<uint64_t>(about.st_size);
    sources.time =
        std::max(sources.time, int64_t{about.st_mtim.tv_sec} * 1'000'000'000 + about.st_mtim.tv_nsec);
  }
  return sources;
}

// Only what is read back tells of itself; a pipe would never come, and a device without end.
void checkTarget(const Options &options, const std::string &target) {
  struct stat about, manifest;
  const bool exists = !target.empty() && target != "-" && stat(target.c_str(), &about) == 0;
  if (target.empty() || target == "-" || (exists && !S_ISREG(about.st_mode)))
    throw Failure(kUsage, "--manifest needs an output that is a file");
  if (exists && stat(options.manifest.c_str(), &manifest) == 0 && about.st_dev == manifest.st_dev &&
      about.st_ino == manifest.st_ino)
    throw Failure(kUsage, "--manifest and the output are one file, " + target);
}

Json optionsOf(const Options &options) {
  Json all = Json::object();
  for (const GivenOption &given : options.written) {
    if (!given.hasValue) {
      all[given.name] = true;
    } else if (given.name == "set") {
      all[given.name].push_back(given.value);
    } else {
      all[given.name] = given.value;
    }
  }
  return all;
}

// What a line says of a picture before it is made, in the order of the line. Digests, which take their
// time, are not in it yet.
nlohmann::ordered_json beginningOf(const Options &options, const Task &task, const Sources &sources) {
  nlohmann::ordered_json line;
  if (sources.paths.size() == 1) {
    line["source"] = sources.paths.front();
  } else {
    line["source"] = sources.paths;
  }
  line["target"] = task.output;
  line["sha256"] = nullptr;
  line["bytes"] = nullptr;
  line["options"] = optionsOf(options);
  line["seconds"] = nullptr;
  line["sourceSha256"] = nullptr;
  line["sourceBytes"] = sources.bytes;
  line["sourceTime"] = sources.time;
  return line;
}

void addDigests(nlohmann::ordered_json &line, const Options &options, const Sources &sources) {
  line["sourceSha256"] = digestOf(sources.paths);
  const std::vector<std::string> files = optionFilesOf(options);
  if (!files.empty()) line["optionsSha256"] = digestOf(files);
}

// Whether the manifest's last line for this target still tells of it. What costs least is looked at first.
bool isDone(const Options &options, const Task &task, const Sources &sources,
            nlohmann::ordered_json wanted) {
  readManifest(options.manifest);
  const std::string found = manifestLine(options.manifest, textOf(task.output));
  const Json line = Json::parse(found, nullptr, false);
  if (!line.is_object()) return false;
  const auto agrees = [&](std::initializer_list<const char *> keys) {
    const Json ours = Json::parse(textOf(wanted));
    return std::ranges::all_of(
        keys, [&](const char *key) { return line.value(key, Json()) == ours.value(key, Json()); });
  };
  if (!agrees({"source", "target", "options", "sourceBytes", "sourceTime"})) return false;
  struct stat about;
  if (stat(task.output.c_str(), &about) != 0) return false;
  wanted["bytes"] = static_cast<uint64_t>(about.st_size);
  if (!agrees({"bytes"})) return false;
  addDigests(wanted, options, sources);
  wanted["sha256"] = digestOf({task.output});
  return agrees({"sourceSha256", "optionsSha256", "sha256"});
}

}  // namespace

std::vector<std::string> optionFilesOf(const Options &options) {
  std::vector<std::string> files;
  const bool namesIcc = options.icc != Options::kKeepProfile && options.icc != Options::kDropProfile;
  if (namesIcc) files.push_back(options.icc);
  if (!options.palette.empty() && !findPalette(options.palette)) files.push_back(options.palette);
  struct stat about;
  if (!options.profile.empty() && stat(options.profile.c_str(), &about) == 0)
    files.push_back(options.profile);
  return files;
}

bool decidesOnBytes(const OptionRow &row) {
  if (row.id == OptionId::kLibrary || row.id == OptionId::kSave) return false;
  return row.group == kGroupPicture || row.group == kGroupFilter || row.id == OptionId::kPages ||
         row.id == OptionId::kPage;
}

void openManifest(const Options &options) {
  if (options.manifest.empty() || options.dryRun) return;
  checkManifest(options.manifest);
  digestOf({});
  if (options.resume) readManifest(options.manifest);
}

void exportRecorded(const Library &library, const Options &options, const Task &task, const Caller &caller,
                    Report &report) {
  if (options.manifest.empty() || options.dryRun) return exportTask(library, options, task, caller, report);
  checkManifest(options.manifest);
  checkTarget(options, task.output);
  const Sources sources = sourcesOf(task);
  nlohmann::ordered_json line = beginningOf(options, task, sources);
  if (options.resume && isDone(options, task, sources, line)) {
    report.output = task.output;
    report.isDone = true;
    report.details.emplace_back("was done before, as the manifest says");
    return;
  }
  addDigests(line, options, sources);
  exportTask(library, options, task, caller, report);
  line["sha256"] = digestOf({task.output});
  line["bytes"] = report.bytes;
  line["seconds"] =
      std::round((report.readSeconds + report.prepareSeconds + report.writeSeconds) * 1000) / 1000;
  appendToManifest(options.manifest, textOf(line));
}

}  // namespace host
