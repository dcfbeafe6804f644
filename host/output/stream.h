// SPDX-License-Identifier: MIT
// The stream procedure that the library writes through, and the status record that leads to it.
#pragma once

#include <array>

#include "export/pace.h"
#include "output/sink.h"
#include "raxel/filter.h"

namespace host {

// One export as the library sees it. The library holds its address while it writes.
class OutputStream {
 public:
  OutputStream(Sink &sink, Pace &pace);
  OutputStream(const OutputStream &) = delete;
  OutputStream &operator=(const OutputStream &) = delete;

  // The record for the seventh word of the export record.
  HostWord *status() { return status_.data(); }
  // For escape 81.
  static HostWord procedure(HostWord contextOrToken, HostWord op, HostWord arg1, HostWord arg2);

  // True when the library has reported the whole picture as written. ExportCellData itself answers 0
  // whatever happens.
  bool complete() const { return complete_; }
  // For a road that writes without the library's picture calls, when it is done.
  void setComplete() { complete_ = true; }
  bool closed() const { return closed_; }

 private:
  static int32_t report(HostWord context, HostWord a, HostWord b, HostWord c, HostWord percent, HostWord e,
                        HostWord f);
  HostWord serve(HostWord op, HostWord arg1, HostWord arg2);

  Sink &sink_;
  Pace &pace_;
  std::array<HostWord, 16> status_{};
  bool complete_ = false;
  bool closed_ = false;
};

}  // namespace host
