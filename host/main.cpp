// raxel-export: writes pictures as TIFF files through the raxel export filter.
#include <cstdio>
#include <exception>

#include "batch.h"
#include "check/inspect.h"
#include "failure.h"
#include "help.h"
#include "options.h"
#include "raxel/filter.h"
#include "stop.h"

namespace {

int print(const std::string &text) {
  std::fputs(text.c_str(), stdout);
  if (std::fflush(stdout) != 0) throw host::Failure(host::kNoWrite, "standard output cannot be written");
  return host::kDone;
}

int run(const host::Options &options) {
  switch (options.command) {
    case host::Command::kHelp:
      return print(host::helpText());
    case host::Command::kVersion:
      return print("raxel-export for raxel.so version 2.0.5\n");
    case host::Command::kList:
      return print(options.json ? host::listJson() : host::listText());
    case host::Command::kInspect:
      return host::inspectAll(options);
    case host::Command::kExport:
      return host::exportAll(options);
  }
  return host::kUsage;
}

}  // namespace

int main(int argc, char **argv) {
  try {
    host::stop::install();
    return run(host::parseOptions(argc, argv));
  } catch (const host::Failure &failure) {
    std::fprintf(stderr, "raxel-export: %s\n", failure.what());
    return failure.code();
  } catch (const std::bad_alloc &) {
    std::fprintf(stderr, "raxel-export: there is not enough memory\n");
    return host::kLibrary;
  } catch (const std::exception &error) {
    std::fprintf(stderr, "raxel-export: %s\n", error.what());
    return host::kLibrary;
  }
}
