// SPDX-License-Identifier: MIT
// raxel-export: writes pictures as TIFF files through the raxel export filter.
#include <cstdio>
#include <cstring>
#include <exception>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "command/batch.h"
#include "command/help.h"
#include "command/inspect.h"
#include "command/options.h"
#include "command/stop.h"
#include "command/tell.h"
#include "confine/child.h"
#include "failure.h"

namespace {

int print(const std::string &text) {
  std::fputs(text.c_str(), stdout);
  return host::kDone;
}

// What was printed counts only when it arrived.
int ended(int code) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
  throw host::Failure(host::kNoWrite, "standard output cannot be written");
}

int run(const host::Options &options) {
  constexpr const char *kVersion = RAXEL_VERSION_TEXT;
  switch (options.command) {
    case host::Command::kHelp:
      return print(options.json ? host::helpJson() : host::helpText());
    case host::Command::kVersion:
      return print(options.json ? host::versionJson(kVersion)
                                : std::string("raxel-export for raxel.so version ") + kVersion + "\n");
    case host::Command::kList:
      return print(options.json ? host::listJson() : host::listText());
    case host::Command::kInspect:
      return host::inspectAll(options);
    case host::Command::kExport:
      return host::exportAll(options);
  }
  return host::kUsage;
}

// The command line may be the very thing that is wrong, so it is looked at word by word.
bool wantsJson(int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--json") == 0) return true;
  }
  return false;
}

// The same for the output "-" of a command line that was refused: it is the last word, or follows -o.
bool namesStdout(int argc, char **argv) {
  for (int i = 2; i < argc; ++i) {
    const bool asked = std::strcmp(argv[i - 1], "-o") == 0 || std::strcmp(argv[i - 1], "--output") == 0;
    if ((asked || i == argc - 1) && std::strcmp(argv[i], "-") == 0) return true;
  }
  return false;
}

// One document goes to where it was asked for, but never into the picture, nor behind other words.
int fail(bool json, bool onStderr, int code, const std::string &message) {
  if (!json || !onStderr) host::say(message);
  if (json) std::fputs(host::errorJson(code, message).c_str(), onStderr ? stderr : stdout);
  return code;
}

// What a page took goes back to the system when it is done with. Left to itself, malloc keeps blocks that
// are freed and asked for again, and a job of many pages grows by one or two of them.
void giveLargeBlocksBack() {
#ifdef __GLIBC__
  constexpr int kLarge = 4 << 20;
  mallopt(M_MMAP_THRESHOLD, kLarge);
  mallopt(M_TRIM_THRESHOLD, kLarge);
#endif
}

}  // namespace

int main(int argc, char **argv) {
  bool json = wantsJson(argc, argv), onStderr = namesStdout(argc, argv);
  try {
    giveLargeBlocksBack();
    host::stop::install();
    const host::Options options = host::parseOptions(argc, argv);
    json = options.json;
    onStderr = host::reportsOnStderr(options);
    host::confineDecoders(!options.noSandbox);
    return ended(run(options));
  } catch (const host::Failure &failure) {
    return fail(json, onStderr, failure.code(), failure.what());
  } catch (const std::bad_alloc &) {
    return fail(json, onStderr, host::kLibrary, "there is not enough memory");
  } catch (const std::exception &error) {
    return fail(json, onStderr, host::kLibrary, error.what());
  }
}
