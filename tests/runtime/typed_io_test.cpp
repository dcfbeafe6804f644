// SPDX-License-Identifier: MIT
// Typed values in both byte orders, against literal bytes.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "raxel/stream.h"
#include "support/temp_dir.h"

namespace {

struct Typed : testing::Test {
  support::TempDir dir;
  std::string path = dir.file("values");

  Handle writer(uint16_t format) {
    const Handle h = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
    EXPECT_EQ(kvlSetDataFormat(h, format, 0), 0);
    return h;
  }
  Handle reader(const std::string &bytes, uint16_t format) {
    support::writeFile(path, bytes);
    const Handle h = kvlOpen(path.c_str(), nullptr, KVL_READ);
    EXPECT_EQ(kvlSetDataFormat(h, format, 0), 0);
    return h;
  }
  std::string closed(Handle h) {
    EXPECT_EQ(kvlClose(h), 0);
    return support::readText(path);
  }
};

const uint16_t kShorts[] = {0x0102, 0xFFFE};
const uint32_t kLongs[] = {0x01020304, 0xFFFFFFFE};
const float kFloats[] = {1.0f, -2.5f};      // 3F800000, C0200000
const double kDoubles[] = {1.0, -0.15625};  // 3FF0000000000000, BFC4000000000000

TEST_F(Typed, TheLeastSignificantByteComesFirst) {
  for (const uint16_t format : {uint16_t{0}, uint16_t{2}, uint16_t{0xFFFF}}) {
    const Handle h = writer(format);
    EXPECT_EQ(kvlWriteShort(h, kShorts, 2), 2);
    EXPECT_EQ(kvlWriteLong(h, kLongs, 2), 2);
    EXPECT_EQ(kvlWriteFloat(h, kFloats, 2), 2);
    EXPECT_EQ(kvlWriteDouble(h, kDoubles, 2), 2);
    EXPECT_EQ(closed(h), std::string("\x02\x01\xFE\xFF"
                                     "\x04\x03\x02\x01\xFE\xFF\xFF\xFF"
                                     "\x00\x00\x80\x3F\x00\x00\x20\xC0"
                                     "\x00\x00\x00\x00\x00\x00\xF0\x3F\x00\x00\x00\x00\x00\x00\xC4\xBF",
                                     36));
  }
}

TEST_F(Typed, FormatOneSwapsTheOrder) {
  const Handle h = writer(1);
  EXPECT_EQ(kvlWriteShort(h, kShorts, 2), 2);
  EXPECT_EQ(kvlWriteLong(h, kLongs, 2), 2);
  EXPECT_EQ(kvlWriteFloat(h, kFloats, 2), 2);
  EXPECT_EQ(kvlWriteDouble(h, kDoubles, 2), 2);
  EXPECT_EQ(closed(h), std::string("\x01\x02\xFF\xFE"
                                   "\x01\x02\x03\x04\xFF\xFF\xFF\xFE"
                                   "\x3F\x80\x00\x00\xC0\x20\x00\x00"
                                   "\x3F\xF0\x00\x00\x00\x00\x00\x00\xBF\xC4\x00\x00\x00\x00\x00\x00",
                                   36));
}

TEST_F(Typed, ReadsBothOrders) {
  const std::string bytes("\x01\x02\x03\x04\x3F\x80\x00\x00\xBF\xC4\x00\x00\x00\x00\x00\x00", 16);
  Handle h = reader(bytes, 1);
  uint16_t shorts[2];
  float f;
  double d;
  EXPECT_EQ(kvlReadShort(h, shorts, 2), 2);
  EXPECT_EQ(shorts[0], 0x0102);
  EXPECT_EQ(shorts[1], 0x0304);
  EXPECT_EQ(kvlReadFloat(h, &f, 1), 1);
  EXPECT_EQ(f, 1.0f);
  EXPECT_EQ(kvlReadDouble(h, &d, 1), 1);
  EXPECT_EQ(d, -0.15625);
  EXPECT_EQ(kvlClose(h), 0);
  h = reader(bytes, 0);
  uint32_t value;
  EXPECT_EQ(kvlReadLong(h, &value, 1), 1);
  EXPECT_EQ(value, 0x04030201u);
  EXPECT_EQ(kvlReadShort(h, shorts, 1), 1);
  EXPECT_EQ(shorts[0], 0x803F);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Typed, UnalignedItemsAreServed) {
  const Handle h = reader(std::string("\0\0\0\0\0\0\xF0\x3F\x01\x02", 10), 0);
  char room[17] = {};
  EXPECT_EQ(kvlReadDouble(h, room + 1, 1), 1);
  double d;
  std::memcpy(&d, room + 1, 8);
  EXPECT_EQ(d, 1.0);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Typed, AnIncompleteReadAnswersZero) {
  const Handle h = reader("abc", 0);
  uint16_t shorts[2];
  EXPECT_EQ(kvlReadShort(h, shorts, 2), 0);
  EXPECT_EQ(kvlReadShort(h, shorts, 1), 0) << "and the bytes are gone";
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Typed, ACharacterIsOneByteWhateverTheCount) {
  Handle h = reader("abc", 0);
  char c[3] = {};
  EXPECT_EQ(kvlReadChar(h, c, 3), 1);
  EXPECT_STREQ(c, "a");
  EXPECT_EQ(kvlClose(h), 0);
  h = writer(0);
  EXPECT_EQ(kvlWriteChar(h, "xyz", 3), 1);
  EXPECT_EQ(closed(h), "x");
}

TEST_F(Typed, RefusedArgumentsAnswerZero) {
  const Handle h = reader(std::string(64, 'a'), 0);
  uint64_t item = 0;
  EXPECT_EQ(kvlReadShort(0, &item, 1), 0);
  EXPECT_EQ(kvlReadLong(h, nullptr, 1), 0);
  EXPECT_EQ(kvlReadDouble(h, &item, 0), 0);
  EXPECT_EQ(kvlReadDouble(h, &item, -1), 0);
  EXPECT_EQ(kvlReadDouble(h, &item, 0x7FFFFFFF), 0) << "more bytes than a count can name";
  EXPECT_EQ(kvlReadChar(0, &item, 1), 0);
  EXPECT_EQ(kvlWriteShort(0, &item, 1), 0);
  EXPECT_EQ(kvlWriteLong(h, nullptr, 1), 0);
  EXPECT_EQ(kvlWriteDouble(h, &item, -1), 0);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_POSITION), 0);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Typed, AFailingWriteIsTold) {
  const Handle h = kvlOpen("/dev/full", nullptr, KVL_OUTPUT);
  const std::string window(12287, 'x');
  EXPECT_EQ(kvlWrite(h, window.data(), 12287), 12287);
  EXPECT_EQ(kvlWriteShort(h, kShorts, 2), -1) << "its second byte found the disk full";
  EXPECT_EQ(kvlWriteShort(h, kShorts, 2), 0);
  EXPECT_EQ(kvlClose(h), -1);
}

TEST_F(Typed, BothFormatWordsAreKept) {
  const Handle h = writer(0);
  EXPECT_EQ(kvlSetDataFormat(h, KVL_DATA_BIG_ENDIAN, 0xABCD), 0);
  uint16_t data = 0, floats = 0;
  EXPECT_EQ(kvlGetDataFormat(h, &data, &floats), 0);
  EXPECT_EQ(data, 1);
  EXPECT_EQ(floats, 0xABCD);
  EXPECT_EQ(kvlGetDataFormat(h, nullptr, nullptr), 0);
  EXPECT_EQ(kvlSetDataFormat(0, KVL_DATA_BIG_ENDIAN, 1), 0);
  EXPECT_EQ(kvlGetDataFormat(0, &data, &floats), 0);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST(NativeOrder, StoresTheLowBytesOfAValue) {
  uint8_t out[10];
  const uint64_t value = 0x0102030405060708u;
  kvlNativeToBE(value, out, 8);
  EXPECT_EQ(std::memcmp(out, "\1\2\3\4\5\6\7\10", 8), 0);
  kvlNativeToLE(value, out, 8);
  EXPECT_EQ(std::memcmp(out, "\10\7\6\5\4\3\2\1", 8), 0);
  kvlNativeToBE(value, out, 3);
  EXPECT_EQ(std::memcmp(out, "\6\7\10", 3), 0);
  kvlNativeToLE(value, out, 3);
  EXPECT_EQ(std::memcmp(out, "\10\7\6", 3), 0);
  kvlNativeToBE(value, out, 10);
  EXPECT_EQ(std::memcmp(out, "\0\0\1\2\3\4\5\6\7\10", 10), 0);
  kvlNativeToLE(value, out, 10);
  EXPECT_EQ(std::memcmp(out, "\10\7\6\5\4\3\2\1\0\0", 10), 0);
}

TEST(NativeOrder, NothingIsStoredWithoutRoom) {
  uint8_t out[1] = {9};
  kvlNativeToBE(1, nullptr, 4);
  kvlNativeToLE(1, nullptr, 4);
  kvlNativeToBE(1, out, 0);
  kvlNativeToLE(1, out, 0);
  kvlNativeToLE(1, out, -1);
  EXPECT_EQ(out[0], 9);
}

}  // namespace
