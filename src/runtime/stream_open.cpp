// SPDX-License-Identifier: MIT
// kvlOpen: which kind of stream a name, a descriptor and a mode ask for.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "runtime/blocks.h"
#include "runtime/stream_disk.h"

namespace runtime {

namespace {

constexpr Handle kNotFound = static_cast<Handle>(-1);  // a failed existence test

bool isEmpty(const char *name) {
  return name == nullptr || *name == 0;
}

StreamProc procedureOf(const KvlStreamDesc *descriptor) {
  return descriptor == nullptr ? nullptr : reinterpret_cast<StreamProc>(descriptor->lpfnProc);
}

// The standard open mode. "e" keeps the file out of programs that the host starts.
const char *openModeOf(uint32_t mode) {
  if ((mode & KVL_CREATE) != 0) return "w+e";
  if ((mode & KVL_UPDATE) != 0) return "r+e";
  if ((mode & KVL_WRITE) != 0) return "w+e";
  return "re";
}

// Opens a file of any kind but a folder, which standard I/O opens for reading without complaint.
FILE *openFile(const char *name, const char *mode) {
  FILE *fp = std::fopen(name, mode);
  struct stat status;
  if (fp == nullptr || (fstat(fileno(fp), &status) == 0 && !S_ISDIR(status.st_mode))) return fp;
  std::fclose(fp);
  return nullptr;
}

Handle testExistence(const char *name, StreamProc procedure) {
  if (procedure != nullptr) return procedure(0, KVL_OP_EXISTS, reinterpret_cast<HostWord>(name), 0);
  FILE *fp = isEmpty(name) ? nullptr : openFile(name, "re");
  if (fp == nullptr) return kNotFound;
  std::fclose(fp);
  return 1;
}

Handle deleteFile(const char *name, StreamProc procedure) {
  if (procedure != nullptr) return procedure(0, KVL_OP_DELETE, reinterpret_cast<HostWord>(name), 0);
  // Only files: an empty folder stays.
  return !isEmpty(name) && unlink(name) == 0 ? 1 : 0;
}

// A memory stream on the caller's block. Returns whether there is such a block.
bool openMemory(Stream &stream, const KvlStreamDesc *descriptor) {
  if (descriptor == nullptr) return false;
  auto **variable = reinterpret_cast<void **>(descriptor->lpMemVar);
  if (variable == nullptr || *variable == nullptr) return false;
  stream.lpBlockVar = variable;
  stream.hBuffer = GlobalHandle(*variable);
  const uint64_t room = std::min<uint64_t>(GlobalSize(stream.hBuffer), INT32_MAX);
  const auto length = static_cast<int32_t>(std::min<uint64_t>(descriptor->dwLength, room));
  stream.nHigh = -1;
  if ((stream.nMode & KVL_CREATE) == 0) {
    // Zero bytes at the end are not data, and neither is the byte before them.
    const auto *bytes = static_cast<const uint8_t *>(*variable);
    int32_t used = length;
    while (used > 0 && bytes[used - 1] == 0) --used;
    stream.nHigh = used - 2;
  }
  stream.nLimit = length - 1;
  stream.nGrow = static_cast<int32_t>(static_cast<uint32_t>(descriptor->dwGrow));
  stream.lNextRead = -1;
  stream.lSize = stream.nHigh;
  return true;
}

// The window of a file stream. Returns whether there was memory for it.
bool openWindow(Stream &stream) {
  stream.hBuffer = allocate(kBufferSize);
  moveWindow(stream, 0);
  return stream.hBuffer != 0;
}

bool openNamed(Stream &stream, const char *name) {
  const bool isInput = std::strcmp(name, "stdin") == 0;
  const bool isOutput = std::strcmp(name, "stdout") == 0;
  if (isInput || isOutput) {
    stream.fp = isInput ? stdin : stdout;
    stream.bBorrowed = 1;
  } else {
    stream.fp = openFile(name, openModeOf(stream.nMode));
    if (stream.fp == nullptr) return false;
    // The window is the only buffer, so that a full disk shows at the flush that meets it.
    std::setvbuf(stream.fp, nullptr, _IONBF, 0);
  }
  stream.bIsNamed = 1;
  return openWindow(stream);
}

bool attach(Stream &stream, const KvlStreamDesc *descriptor) {
  stream.bBorrowed = 1;
  if (descriptor == nullptr) return false;
  if (stream.lpfnProc != nullptr) {
    stream.dwProcToken = descriptor->dwToken;
    return true;
  }
  stream.fp = reinterpret_cast<FILE *>(descriptor->fpOpen);
  return stream.fp != nullptr && openWindow(stream);
}

// Asks a procedure to open the name. Returns whether it took the stream on.
bool openByProcedure(Stream &stream, const KvlStreamDesc *descriptor, const char *name) {
  if (stream.lpfnProc == nullptr) return false;
  stream.dwProcToken =
      stream.lpfnProc(descriptor->lpMemVar, KVL_OP_OPEN, reinterpret_cast<HostWord>(name), stream.nMode);
  return stream.dwProcToken != 0;
}

bool openStream(Stream &stream, const char *name, const KvlStreamDesc *descriptor) {
  if (stream.nMode == KVL_ATTACH) return attach(stream, descriptor);
  if (openByProcedure(stream, descriptor, name)) return true;
  // A procedure that declines stays attached to whatever opens instead. Its context is no address
  // of a block, so without a name nothing can.
  if (isEmpty(name)) return stream.lpfnProc == nullptr && openMemory(stream, descriptor);
  return openNamed(stream, name);
}

}  // namespace

}  // namespace runtime

Handle kvlOpen(const char *name, const KvlStreamDesc *descriptor, uint32_t mode) {
  const StreamProc procedure = runtime::procedureOf(descriptor);
  if (mode == KVL_EXISTS) return runtime::testExistence(name, procedure);
  if (mode == KVL_DELETE) return runtime::deleteFile(name, procedure);
  runtime::Block record = runtime::Block::ofSize(sizeof(runtime::Stream));
  if (!record) return 0;
  runtime::Stream &stream = *runtime::streamOf(record.handle());
  stream.nMode = mode;
  stream.wLineFormat = 2;
  stream.lpfnProc = procedure;
  if (!runtime::openStream(stream, name, descriptor)) {
    if (stream.fp != nullptr && stream.bBorrowed == 0) std::fclose(stream.fp);
    return 0;
  }
  if (stream.lpfnProc == nullptr && stream.fp != nullptr) stream.lSize = runtime::sizeOf(stream);
  return record.release();
}
