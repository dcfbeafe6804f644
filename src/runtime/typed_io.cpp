// SPDX-License-Identifier: MIT
// Typed values in the byte order that the stream is set to. An item is read and written as the bits
// of its native value, so the same code serves integers and floating-point numbers.
#include <type_traits>

#include "runtime/stream_record.h"
#include "runtime/unaligned.h"

namespace runtime {

namespace {

bool isBigEndian(Handle handle) {
  return streamOf(handle)->wDataFormat == KVL_DATA_BIG_ENDIAN;
}

// The value of file bytes in the stream's order.
template <class Bits>
Bits assemble(const uint8_t *bytes, bool bigEndian) {
  Bits value = 0;
  for (size_t i = 0; i < sizeof(Bits); ++i) {
    const uint8_t byte = bytes[bigEndian ? i : sizeof(Bits) - 1 - i];
    value = static_cast<Bits>(static_cast<Bits>(value << 8) | byte);
  }
  return value;
}

// One read for all items, rebuilt in place. Returns count, or 0 when not all of the bytes came.
template <class Bits>
int32_t readItems(Handle handle, void *data, int32_t count) {
  constexpr auto kSize = static_cast<int32_t>(sizeof(Bits));
  if (handle == 0 || data == nullptr || count <= 0 || count > INT32_MAX / kSize) return 0;
  if (kvlRead(handle, data, count * kSize) != count * kSize) return 0;
  const bool bigEndian = isBigEndian(handle);
  auto *item = static_cast<uint8_t *>(data);
  for (int32_t i = 0; i < count; ++i, item += kSize) store(item, assemble<Bits>(item, bigEndian));
  return count;
}

// One write an item. Returns count, or what is left of a failing write's result: 0 or -1.
template <class Bits>
int32_t writeItems(Handle handle, const void *data, int32_t count) {
  constexpr auto kSize = static_cast<int32_t>(sizeof(Bits));
  if (handle == 0 || data == nullptr || count <= 0) return 0;
  const bool bigEndian = isBigEndian(handle);
  const auto *item = static_cast<const uint8_t *>(data);
  for (int32_t i = 0; i < count; ++i, item += kSize) {
    uint8_t bytes[sizeof(Bits)];
    if (bigEndian) {
      kvlNativeToBE(load<Bits>(item), bytes, kSize);
    } else {
      kvlNativeToLE(load<Bits>(item), bytes, kSize);
    }
    const int32_t written = kvlWrite(handle, bytes, kSize);
    if (written != kSize) return written < 0 ? written : 0;
  }
  return count;
}

}  // namespace

}  // namespace runtime

void kvlNativeToLE(uint64_t value, uint8_t *out, int32_t n) {
  if (out == nullptr) return;
  for (int32_t i = 0; i < n; ++i) out[i] = static_cast<uint8_t>(i < 8 ? value >> (8 * i) : 0);
}

void kvlNativeToBE(uint64_t value, uint8_t *out, int32_t n) {
  if (out == nullptr) return;
  for (int32_t i = 0; i < n; ++i) out[n - 1 - i] = static_cast<uint8_t>(i < 8 ? value >> (8 * i) : 0);
}

int32_t kvlSetDataFormat(Handle handle, uint16_t dataFormat, uint16_t floatFormat) {
  runtime::Stream *stream = runtime::streamOf(handle);
  if (stream == nullptr) return 0;
  stream->wDataFormat = dataFormat;
  stream->wFloatFormat = floatFormat;
  return 0;
}

int32_t kvlGetDataFormat(Handle handle, uint16_t *dataFormat, uint16_t *floatFormat) {
  const runtime::Stream *stream = runtime::streamOf(handle);
  if (stream == nullptr) return 0;
  if (dataFormat != nullptr) *dataFormat = stream->wDataFormat;
  if (floatFormat != nullptr) *floatFormat = stream->wFloatFormat;
  return 0;
}

int32_t kvlReadChar(Handle handle, void *data, int32_t /*count*/) {
  return kvlRead(handle, data, 1);
}

int32_t kvlReadShort(Handle handle, void *data, int32_t count) {
  return runtime::readItems<uint16_t>(handle, data, count);
}

int32_t kvlReadLong(Handle handle, void *data, int32_t count) {
  return runtime::readItems<uint32_t>(handle, data, count);
}

int32_t kvlReadFloat(Handle handle, void *data, int32_t count) {
  return runtime::readItems<uint32_t>(handle, data, count);
}

int32_t kvlReadDouble(Handle handle, void *data, int32_t count) {
  return runtime::readItems<uint64_t>(handle, data, count);
}

int32_t kvlWriteChar(Handle handle, const void *data, int32_t /*count*/) {
  return kvlWrite(handle, data, 1);
}

int32_t kvlWriteShort(Handle handle, const void *data, int32_t count) {
  return runtime::writeItems<uint16_t>(handle, data, count);
}

int32_t kvlWriteLong(Handle handle, const void *data, int32_t count) {
  return runtime::writeItems<uint32_t>(handle, data, count);
}

int32_t kvlWriteFloat(Handle handle, const void *data, int32_t count) {
  return runtime::writeItems<uint32_t>(handle, data, count);
}

int32_t kvlWriteDouble(Handle handle, const void *data, int32_t count) {
  return runtime::writeItems<uint64_t>(handle, data, count);
}
