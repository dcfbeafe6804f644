// SPDX-License-Identifier: MIT
#include "command/options.h"

#include <CLI/CLI.hpp>
#include <set>
#include <string_view>

#include "order/option_table.h"
#include "order/shard.h"

namespace host {
namespace {

[[noreturn]] void fail(const std::string &what) {
  throw Failure(kUsage, what);
}

// Name in a folder: the input's own, with .tif for its ending.
std::string nameIn(const std::string &directory, const std::string &input) {
  std::string name = input.substr(input.rfind('/') + 1);
  const size_t dot = name.rfind('.');
  if (dot != std::string::npos && dot != 0) name.resize(dot);
  return directory + (directory.back() == '/' ? "" : "/") + name + ".tif";
}

// Leaves out the inputs of other shares, and their outputs.
void keepShard(Options &o) {
  size_t kept = 0;
  for (size_t i = 0; i < o.inputs.size(); ++i) {
    if (!isInShard(o.inputs[i], *o.shard)) continue;
    std::swap(o.inputs[kept], o.inputs[i]);
    std::swap(o.outputs[kept], o.outputs[i]);
    ++kept;
  }
  o.inputs.resize(kept);
  o.outputs.resize(kept);
}

void pairFiles(Options &o, std::vector<std::string> files) {
  if (!o.output.empty() && !o.directory.empty()) fail("-o and -d exclude each other");
  if (!o.directory.empty()) {
    if (files.empty()) fail("no input given");
    std::set<std::string> taken;
    for (const std::string &input : files) {
      if (input == "-") fail("standard input has no name to use with -d; give -o");
      o.outputs.push_back(nameIn(o.directory, input));
      if (!taken.insert(o.outputs.back()).second)
        fail("two inputs would be written to " + o.outputs.back());
    }
    o.inputs = std::move(files);
    if (o.shard) keepShard(o);
    return;
  }
  if (o.shard) fail("--shard shares out the inputs of -d DIR");
  if (o.output.empty() && files.size() >= 2) {
    o.output = files.back();
    files.pop_back();
  }
  if (files.empty()) fail("no input given");
  if (files.size() > 1 && !o.pages)
    fail("several inputs go into a folder, or as pages into one file: give -d DIR, or --pages");
  checkPageChoice(o);
  if (o.output.empty() && !o.dryRun) fail("no output given");
  o.inputs = std::move(files);
  o.outputs = {o.output};
}

// True when a word of the command line may be the option. The parser takes as long to learn of an option as
// a small picture takes to be written, so it learns of no others.
bool isNamed(const OptionRow &row, int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (word.size() < 2 || word[0] != '-') continue;
    const bool named = word[1] == '-' ? word.substr(2, word.find('=') - 2) == row.longName
                                      : row.shortName != 0 && word.find(row.shortName) != word.npos;
    if (named) return true;
  }
  return false;
}

}  // namespace

Options parseOptions(int argc, char **argv) {
  Options o;
  CLI::App app{"Writes pictures as TIFF files, through the raxel export filter."};
  app.set_help_flag("-h,--help");  // helpText() prints it
  for (const OptionRow &row : kOptions) {
    if (!isNamed(row, argc, argv)) continue;
    std::string names = "--" + std::string(row.longName);
    if (row.shortName) names = std::string{'-', row.shortName} + "," + names;
    if (row.argument.empty()) {
      app.add_flag_callback(names, [&row, &o] { setOption(row, "", o); });
    } else {
      CLI::Option *option = app.add_option_function<std::vector<std::string>>(
          names, [&row, &o](const std::vector<std::string> &values) {
            for (const std::string &value : values) setOption(row, value, o);
          });
      option->expected(1)->allow_extra_args(false);
      option->multi_option_policy(row.id == OptionId::kSet ? CLI::MultiOptionPolicy::TakeAll
                                                           : CLI::MultiOptionPolicy::TakeLast);
    }
  }
  std::vector<std::string> files;
  app.add_option("files", files);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &) {
    o.command = Command::kHelp;
    const CLI::Option *json = app.get_option_no_throw("--json");
    o.json = json && json->count() != 0;
    return o;
  } catch (const CLI::ParseError &error) {
    fail(std::string(error.what()) + "; see --help");
  }
  if (o.command == Command::kInspect) {
    if (files.empty()) fail("--inspect needs a file");
    o.inputs = std::move(files);
  } else if (o.command == Command::kExport) {
    applyPreset(o);
    checkOptions(o);
    pairFiles(o, std::move(files));
  }
  return o;
}

}  // namespace host
