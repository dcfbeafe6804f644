// SPDX-License-Identifier: MIT
// Where a golden file goes before it is taken: each of a host's three outputs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "raxel/filter_codes.h"
#include "raxel/settings.h"
#include "support/blocks.h"
#include "support/stream_procedure.h"
#include "support/temp_dir.h"

namespace golden {

enum class To { kFile, kMemory, kProcedure };

inline const char *nameOf(To to) {
  return to == To::kFile ? "file" : to == To::kMemory ? "memory" : "procedure";
}

class Output {
 public:
  Output(To to, RasterSetup &settings, HostWord *status) : to_(to), status_(status) {
    std::filesystem::remove(fileName());
    if (to != To::kProcedure) return;
    settings.lpfnOutputProc = stream_.procedure();
    status[RAXEL_STATUS_PROC_CONTEXT] = stream_.context();
  }
  Output(const Output &) = delete;
  Output &operator=(const Output &) = delete;

  // One file for all, one after the other: making a folder takes longer than a small file.
  static std::string fileName() {
    static const support::TempDir folder;
    return folder.file("out.tif");
  }
  // What the host calls its output; a block has no name.
  std::string name() const { return to_ == To::kMemory ? "" : fileName(); }

  // The file, once it is closed.
  std::vector<uint8_t> bytes() {
    if (to_ == To::kProcedure) return stream_.bytes();
    return to_ == To::kFile ? support::readFile(fileName()) : takeBlock();
  }

 private:
  std::vector<uint8_t> takeBlock() {
    const Handle block = status_[RAXEL_STATUS_OUTPUT];
    status_[RAXEL_STATUS_OUTPUT] = 0;
    std::vector<uint8_t> bytes = support::fileIn(block);
    GlobalFree(block);
    return bytes;
  }

  To to_;
  HostWord *status_;
  support::HostStream stream_;
};

}  // namespace golden
