// SPDX-License-Identifier: MIT
#include "output/stream.h"

#include <cstring>

#include "raxel/filter_codes.h"
#include "raxel/stream_codes.h"

namespace host {
namespace {

constexpr HostWord kFailed = ~HostWord{0};

}  // namespace

OutputStream::OutputStream(Sink &sink, Pace &pace) : sink_(sink), pace_(pace) {
  status_[RAXEL_STATUS_CONTEXT] = status_[RAXEL_STATUS_PROC_CONTEXT] = reinterpret_cast<HostWord>(this);
  status_[RAXEL_STATUS_CALLBACK] = reinterpret_cast<HostWord>(&OutputStream::report);
}

HostWord OutputStream::procedure(HostWord contextOrToken, HostWord op, HostWord arg1, HostWord arg2) {
  // Questions about other files come without a context.
  if (contextOrToken == 0) return op == KVL_OP_EXISTS ? kFailed : 0;
  return reinterpret_cast<OutputStream *>(contextOrToken)->serve(op, arg1, arg2);
}

HostWord OutputStream::serve(HostWord op, HostWord arg1, HostWord arg2) {
  switch (op) {
    case KVL_OP_OPEN:
      return reinterpret_cast<HostWord>(this);  // the token of all further calls
    case KVL_OP_WRITE:
      if (!sink_.write(reinterpret_cast<const uint8_t *>(arg1), arg2)) return kFailed;
      return pace_.wrote(arg2, sink_.size()) ? arg2 : kFailed;
    case KVL_OP_SEEK: {
      int32_t offset = 0;
      std::memcpy(&offset, reinterpret_cast<const void *>(arg1), sizeof offset);
      return sink_.seek(offset, static_cast<int>(arg2)) ? sink_.position() : kFailed;
    }
    case KVL_OP_CLOSE:
      closed_ = true;
      return 0;
    default:
      return kFailed;  // nothing is read back
  }
}

int32_t OutputStream::report(HostWord context, HostWord a, HostWord b, HostWord, HostWord percent, HostWord,
                             HostWord) {
  OutputStream &stream = *reinterpret_cast<OutputStream *>(context);
  if (a == 0 && b == 0 && percent == RAXEL_REPORT_COMPLETE) stream.complete_ = true;
  return stream.pace_.stopped() ? 1 : 0;
}

}  // namespace host
