// SPDX-License-Identifier: MIT
// The output: a temporary file beside the one asked for, which takes its place only when it is whole.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "output/rights.h"
#include "output/sink.h"
#include "raxel/host.h"

namespace host {

struct TargetRules {
  bool force = false;  // replace a file that is write-protected, or that holds something else than a TIFF
  bool noClobber = false;  // never replace a file
  bool onlyTiff = true;    // never replace a file that holds something else than a TIFF, unless force
  bool syncChild = false;  // wait for the disk in a child process
  bool noSync = false;     // do not wait for it
  // Told the temporary's name when it is made, and null when it is gone; null for nobody.
  RaxelHostTemporary temporary = nullptr;
  void *context = nullptr;
};

// Whatever happens to the process before commit() has renamed the temporary, the old file stays bit for
// bit. A temporary that a killed process left behind is removed by the next target of the same name, or by
// sweepFolders(): each is locked by its owner, so one without a lock belongs to nobody.
class Target {
 public:
  // Makes the temporary. "-" and files that are no regular files (a device, a pipe) are collected in
  // memory and written at the end. Throws a Failure that names the output.
  Target(const std::string &path, const TargetRules &rules);
  ~Target();
  Target(const Target &) = delete;
  Target &operator=(const Target &) = delete;

  Sink &sink() { return *sink_; }
  const std::string &name() const { return name_; }

  // Throws the Failure that tells why the sink stopped, if it did.
  void checkWritten() const;
  // All bytes written, flushed and shown to the caller until the target goes: for a check of them.
  std::span<const uint8_t> bytes();
  // Flushes, waits for the disk unless the rules say not to, and puts the file in its place. Just before
  // that it calls `lastLook`, which may throw: the old file then stays.
  void commit(const std::function<void()> &lastLook = nullptr);

 private:
  struct Empty {};
  Target(const std::string &path, const TargetRules &rules, Empty);
  void openAsItIs();
  void makeTemporary();
  void createTemporary(mode_t mode);
  int sync() const;  // an errno
  void tellTemporary(const char *name) const;
  [[noreturn]] void failWrite(int error) const;

  std::string name_;       // for messages
  std::string path_;       // the file to replace, links followed; empty when bytes are kept
  std::string temporary_;  // empty once it is renamed
  TargetRules rules_;
  Rights rights_;            // of the file in the end; those of an old one where one is at stake
  int fd_ = -1;              // of the temporary, or of what the kept bytes go to
  bool isNameless_ = false;  // an old file's, which no other can replace
  std::unique_ptr<Sink> sink_;
  void *mapped_ = nullptr;
  size_t mappedSize_ = 0;
};

}  // namespace host
