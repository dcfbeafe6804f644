// SPDX-License-Identifier: MIT
// A stream of the filter's that leads to ours, for roads that write without ExportCellData.
#pragma once

#include <cstdint>
#include <span>

#include "filter/library.h"
#include "output/stream.h"

namespace host {

class FilterStream {
 public:
  // Opens it; handle() is 0 when that failed.
  FilterStream(const Library &library, OutputStream &stream) : library_(library) {
    KvlStreamDesc descriptor{};
    descriptor.lpMemVar = reinterpret_cast<HostWord>(&stream);
    descriptor.lpfnProc = reinterpret_cast<HostWord>(&OutputStream::procedure);
    handle_ = library.openStream("output", &descriptor, KVL_OUTPUT);
  }
  ~FilterStream() {
    if (handle_ != 0) library_.closeStream(handle_);
  }
  FilterStream(const FilterStream &) = delete;
  FilterStream &operator=(const FilterStream &) = delete;

  Handle handle() const { return handle_; }
  bool write(std::span<const uint8_t> bytes) const {
    const auto count = static_cast<int32_t>(bytes.size());
    return library_.writeStream(handle_, bytes.data(), count) == count;
  }

 private:
  const Library &library_;
  Handle handle_;
};

}  // namespace host
