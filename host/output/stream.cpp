#include "output/stream.h"

#include <cstring>

namespace host {
namespace {

// Words of the status record.
enum StatusWord { kContext = 1, kCallback = 2, kStreamContext = 12 };

// Operations of a stream procedure.
enum StreamOp : HostWord { kOpen = 1, kRead, kWrite, kSeek, kClose, kExists, kDelete };

constexpr HostWord kFailed = ~HostWord{0};

}  // namespace

OutputStream::OutputStream(Sink &sink, Pace &pace) : sink_(sink), pace_(pace) {
  status_[kContext] = status_[kStreamContext] = reinterpret_cast<HostWord>(this);
  status_[kCallback] = reinterpret_cast<HostWord>(&OutputStream::report);
}

HostWord OutputStream::procedure(HostWord contextOrToken, HostWord op, HostWord arg1, HostWord arg2) {
  // Questions about other files come without a context.
  if (contextOrToken == 0) return op == kExists ? kFailed : 0;
  return reinterpret_cast<OutputStream *>(contextOrToken)->serve(op, arg1, arg2);
}

HostWord OutputStream::serve(HostWord op, HostWord arg1, HostWord arg2) {
  switch (op) {
    case kOpen:
      return reinterpret_cast<HostWord>(this);  // the token of all further calls
    case kWrite:
      if (!sink_.write(reinterpret_cast<const uint8_t *>(arg1), arg2)) return kFailed;
      return pace_.wrote(arg2, sink_.size()) ? arg2 : kFailed;
    case kSeek: {
      int32_t offset = 0;
      std::memcpy(&offset, reinterpret_cast<const void *>(arg1), sizeof offset);
      return sink_.seek(offset, static_cast<int>(arg2)) ? sink_.position() : kFailed;
    }
    case kClose:
      closed_ = true;
      return 0;
    default:
      return kFailed;  // nothing is read back
  }
}

int32_t OutputStream::report(HostWord context, HostWord a, HostWord b, HostWord, HostWord percent, HostWord,
                             HostWord) {
  OutputStream &stream = *reinterpret_cast<OutputStream *>(context);
  if (a == 0 && b == 0 && percent == 100) stream.complete_ = true;
  return stream.pace_.stopped() ? 1 : 0;
}

}  // namespace host
