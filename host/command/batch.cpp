// SPDX-License-Identifier: MIT
#include "command/batch.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <vector>

#include "command/cores.h"
#include "command/progress.h"
#include "command/stop.h"
#include "command/tasks.h"
#include "command/tell.h"
#include "filter/open.h"
#include "order/manifest.h"
#include "order/manifest_lines.h"
#include "output/hold.h"
#include "output/originals.h"
#include "output/strays.h"

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

bool wantsLine(const Options &options) {
  return !options.quiet && !options.json;
}

// How a message calls an input.
std::string shownName(const std::string &input) {
  return input == "-" ? "standard input" : input;
}

int32_t show(void *context, int32_t stage, double part, uint64_t bytes) {
  Progress &line = *static_cast<Progress *>(context);
  if (stage == RAXEL_STAGE_PREPARING) {
    line.stage("preparing");
  } else {
    line.show(part, bytes);
  }
  return 0;  // a stop comes by signal and does not wait for the filter
}

void rememberTemporary(void *, const char *path) {
  stop::setTemporary(path ? path : "");
}

// The command as the one who asked: `line` is where the picture's progress is shown.
Caller callerOf(const Options &options, Progress &line) {
  Caller caller;
  caller.flags = RAXEL_HOST_SYNC_CHILD;
  caller.progress = line.isShown() ? show : nullptr;
  caller.temporary = rememberTemporary;
  caller.context = &line;
  caller.told = [&options, &line](const Report &page) {
    line.clear();
    tellPage(page, options);
  };
  return caller;
}

Report exportOne(const Library &library, const Options &options, const Originals &originals,
                 const Task &task, Progress &line) {
  Report report;
  report.input = task.inputs.front().name;
  try {
    originals.protectFrom(task.output);
    if (task.failure) throw *task.failure;
    exportRecorded(library, options, task, callerOf(options, line), report);
  } catch (const Failure &failure) {
    report.exit = failure.code();
    report.error = failure.what();
  } catch (const std::bad_alloc &) {
    // What is left to be told of a file that stands changes nothing; what else was asked for does.
    const bool isDone = report.isInPlace && !options.save && options.manifest.empty();
    if (!isDone) {
      report.exit = kLibrary;
      report.error = shownName(report.input) + ": there is not enough memory for this picture";
    }
  }
  try {
    line.clear();
    tell(report, options);
  } catch (const std::bad_alloc &) {
    if (report.exit != kDone) throw;
  }
  return report;
}

// Appends what the pipe holds now; false at its end.
bool readSome(int fd, std::string &to) {
  char piece[4096];
  const ssize_t got = read(fd, piece, sizeof piece);
  if (got > 0) to.append(piece, static_cast<size_t>(got));
  return got > 0 || (got < 0 && errno == EINTR);
}

void writeAll(int fd, const std::string &text) {
  for (size_t done = 0; done < text.size();) {
    const ssize_t put = write(fd, text.data() + done, text.size() - done);
    if (put > 0) done += static_cast<size_t>(put);
    if (put < 0 && errno != EINTR) return;
  }
}

// In a child process: a parent that is killed cannot tell its children to stop, so the system does.
void endWith(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) raise(SIGTERM);  // it was gone before
}

// The folder of -d, when it is not there yet. Those above it are not made: a slip would go unseen.
void makeFolder(const std::string &path) {
  if (mkdir(path.c_str(), 0777) == 0 || errno == EEXIST) return;
  throw Failure(kNoCreate,
                path + ": cannot be made: " +
                    (errno == ENOENT ? "the folder above it does not exist" : std::strerror(errno)));
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
  Pool(const Library &library, const Options &options, const Originals &originals,
       const std::vector<Task> &tasks, Outcome &outcome)
      : library_(library),
        options_(options),
        originals_(originals),
        tasks_(tasks),
        outcome_(outcome),
        line_(std::to_string(tasks.size()) + " pictures", wantsLine(options)) {}

  // Returns whether there is room for one more beside those at work.
  bool start(size_t index) {
    int ends[2];
    if (pipe(ends) != 0) return findNoRoom();
    if (options_.resume) readManifest(options_.manifest);
    std::fflush(nullptr);
    const pid_t parent = getpid();
    pid_t pid = 0;
    {
      const Hold hold;
      pid = fork();
      if (pid > 0) stop::addChild(pid);
      if (pid == 0) {
        stop::forgetChildren();
        stop::setLast();
        endWith(parent);
      }
    }
    if (pid < 0) {
      const int error = errno;
      for (const int end : ends) close(end);
      errno = error;
      return findNoRoom();
    }
    if (pid == 0) {
      close(ends[0]);
      // The line belongs to the parent, which counts pictures; a message takes its place.
      Progress none("", false);
      none.takeOver(line_);
      Report report = exportOne(library_, options_, originals_, tasks_[index], none);
      // What was to be told is as good as an output.
      if ((std::fflush(nullptr) != 0 || std::ferror(stdout) != 0) && report.exit == 0) {
        report.exit = kNoWrite;
        report.error = std::string("standard output: cannot be written: ") + std::strerror(errno);
      }
      writeAll(ends[1], toJson(report));
      _exit(report.exit);
    }
    close(ends[1]);
    children_[pid] = {index, ends[0]};
    return true;
  }

  // Takes in reports until one is whole. All pipes are read meanwhile: a child whose report is longer than
  // a pipe holds ends only when somebody reads it.
  void waitForOne() {
    for (;;) {
      std::vector<pollfd> pipes;
      std::vector<pid_t> pids;
      for (const auto &[pid, child] : children_) {
        pipes.push_back({child.pipe, POLLIN, 0});
        pids.push_back(pid);
      }
      if (poll(pipes.data(), pipes.size(), -1) < 0) continue;  // a signal came
      for (size_t i = 0; i < pipes.size(); ++i) {
        if (pipes[i].revents == 0) continue;
        const Child &child = children_.at(pids[i]);
        if (!readSome(child.pipe, outcome_.json[child.index])) return finish(pids[i]);
      }
    }
  }

  size_t running() const { return children_.size(); }

 private:
  // There will be some when one of those at work has ended.
  bool findNoRoom() const {
    if (running() != 0) return false;
    throw Failure(kLibrary, std::string("cannot start a process: ") + std::strerror(errno));
  }

  // Of a child whose pipe is at its end.
  void finish(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    stop::removeChild(pid);
    const auto [index, pipe] = children_.at(pid);
    close(pipe);
    children_.erase(pid);
    outcome_.exits[index] = WIFEXITED(status) ? static_cast<Exit>(WEXITSTATUS(status)) : kLibrary;
    if (outcome_.json[index].empty()) reportEnd(index, status);
    ++done_;
    line_.stage((std::to_string(done_) + " done").c_str());
  }

  // For a child that ended without a report of its own.
  void reportEnd(size_t index, int status) {
    Report report;
    report.input = tasks_[index].inputs.front().name;
    report.exit = outcome_.exits[index];
    report.error = report.input +
                   (WIFEXITED(status) ? ": the export was stopped"
                                      : ": the export ended by signal " + std::to_string(WTERMSIG(status)));
    line_.clear();
    tell(report, options_);
    outcome_.json[index] = toJson(report);
  }

  const Library &library_;
  const Options &options_;
  const Originals &originals_;
  const std::vector<Task> &tasks_;
  Outcome &outcome_;
  Progress line_;
  size_t done_ = 0;
  std::map<pid_t, Child> children_;
};

}  // namespace

int exportAll(const Options &options) {
  const Library &library = openFilter(options);
  std::vector<std::string> files = optionFilesOf(options);
  files.insert(files.end(), options.inputs.begin(), options.inputs.end());
  const Originals originals(files);
  const std::vector<Task> tasks = tasksOf(options);
  if (!options.dryRun) {
    if (!options.directory.empty()) makeFolder(options.directory);
    sweepFolders(options.outputs);
  }
  openManifest(options);
  Outcome outcome(tasks.size());
  const bool sideBySide = options.jobs > 1 && tasks.size() > 1;
  shareCores(options.threads,
             sideBySide ? static_cast<unsigned>(std::min<size_t>(options.jobs, tasks.size())) : 1);
  if (sideBySide) {
    Pool pool(library, options, originals, tasks, outcome);
    for (size_t i = 0; i < tasks.size(); ++i) {
      if (pool.running() == options.jobs) pool.waitForOne();
      while (!pool.start(i)) pool.waitForOne();
    }
    while (pool.running() != 0) pool.waitForOne();
  } else {
    for (size_t i = 0; i < tasks.size(); ++i) {
      if (i + 1 == tasks.size()) stop::setLast();
      Progress line(shownName(tasks[i].inputs.front().name), wantsLine(options));
      const Report report = exportOne(library, options, originals, tasks[i], line);
      outcome.exits[i] = report.exit;
      if (options.json) outcome.json[i] = toJson(report);
    }
  }
  if (options.json) {
    std::fputs(toJsonDocument(outcome.json, outcome.exit()).c_str(),
               reportsOnStderr(options) ? stderr : stdout);
  }
  return outcome.exit();
}

}  // namespace host
