#include "batch.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>

#include "export.h"
#include "library.h"
#include "report.h"
#include "stop.h"

namespace host {
namespace {

// Reports of all inputs, in their order.
struct Outcome {
  std::vector<std::string> json;
  std::vector<Exit> exits;

  explicit Outcome(size_t inputs) : json(inputs), exits(inputs, kDone) {}
  Exit exit() const {
    for (Exit e : exits) {
      if (e != kDone) return e;
    }
    return kDone;
  }
};

Report exportOne(const Library &library, const Options &options, size_t index) {
  Report report;
  report.input = options.inputs[index];
  try {
    exportPicture(library, options, options.inputs[index], options.outputs[index], report);
  } catch (const Failure &failure) {
    report.exit = failure.code();
    report.error = failure.what();
  } catch (const std::bad_alloc &) {
    report.exit = kLibrary;
    report.error = report.input + ": there is not enough memory for this picture";
  }
  tell(report, options);
  return report;
}

void readAll(int fd, std::string &to) {
  char piece[4096];
  for (;;) {
    const ssize_t got = read(fd, piece, sizeof piece);
    if (got > 0) to.append(piece, static_cast<size_t>(got));
    if (got == 0 || (got < 0 && errno != EINTR)) return;
  }
}

void writeAll(int fd, const std::string &text) {
  for (size_t done = 0; done < text.size();) {
    const ssize_t put = write(fd, text.data() + done, text.size() - done);
    if (put > 0) done += static_cast<size_t>(put);
    if (put < 0 && errno != EINTR) return;
  }
}

// A child process at work on one input; its report comes through a pipe.
struct Child {
  size_t index;
  int pipe;
};

// The library exports one picture at a time and keeps its state in globals, so pictures side by side
// need processes of their own.
class Pool {
 public:
  Pool(const Library &library, const Options &options, Outcome &outcome)
      : library_(library), options_(options), outcome_(outcome) {}

  void start(size_t index) {
    int ends[2];
    if (pipe(ends) != 0)
      throw Failure(kLibrary, std::string("cannot start a process: ") + std::strerror(errno));
    std::fflush(nullptr);
    pid_t pid = 0;
    {
      const stop::Hold hold;
      pid = fork();
      if (pid > 0) stop::addChild(pid);
      if (pid == 0) stop::forgetChildren();
    }
    if (pid < 0) throw Failure(kLibrary, std::string("cannot start a process: ") + std::strerror(errno));
    if (pid == 0) {
      close(ends[0]);
      const Report report = exportOne(library_, options_, index);
      std::fflush(nullptr);
      writeAll(ends[1], toJson(report));
      _exit(report.exit);
    }
    close(ends[1]);
    children_[pid] = {index, ends[0]};
  }

  void waitForOne() {
    int status = 0;
    const pid_t pid = waitpid(-1, &status, 0);
    const auto child = children_.find(pid);
    if (child == children_.end()) return;
    stop::removeChild(pid);
    const auto [index, pipe] = child->second;
    readAll(pipe, outcome_.json[index]);
    close(pipe);
    children_.erase(child);
    outcome_.exits[index] = WIFEXITED(status) ? static_cast<Exit>(WEXITSTATUS(status)) : kLibrary;
    if (WIFEXITED(status)) return;
    Report report;
    report.input = options_.inputs[index];
    report.exit = kLibrary;
    report.error = report.input + ": the export ended by signal " + std::to_string(WTERMSIG(status));
    tell(report, options_);
    outcome_.json[index] = toJson(report);
  }

  size_t running() const { return children_.size(); }

 private:
  const Library &library_;
  const Options &options_;
  Outcome &outcome_;
  std::map<pid_t, Child> children_;
};

}  // namespace

int exportAll(const Options &options) {
  const Library library = loadLibrary(options.library);
  Outcome outcome(options.inputs.size());
  if (options.jobs > 1 && options.inputs.size() > 1) {
    Pool pool(library, options, outcome);
    for (size_t i = 0; i < options.inputs.size(); ++i) {
      if (pool.running() == options.jobs) pool.waitForOne();
      pool.start(i);
    }
    while (pool.running() != 0) pool.waitForOne();
  } else {
    for (size_t i = 0; i < options.inputs.size(); ++i) {
      const Report report = exportOne(library, options, i);
      outcome.exits[i] = report.exit;
      outcome.json[i] = toJson(report);
    }
  }
  if (options.json) {
    const bool pictureOnStdout = options.outputs.front() == "-" && !options.dryRun;
    std::fputs(toJsonDocument(outcome.json, outcome.exit()).c_str(), pictureOnStdout ? stderr : stdout);
  }
  return outcome.exit();
}

}  // namespace host
