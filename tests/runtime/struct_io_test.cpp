// SPDX-License-Identifier: MIT
// Records by format string: layout, padding, unions, skipped members, and hostile formats.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "raxel/stream.h"
#include "support/cases.h"
#include "support/random.h"
#include "support/temp_dir.h"

namespace {

struct Record : testing::Test {
  support::TempDir dir;
  std::string path = dir.file("records");
  int32_t result = -99;

  // The record memory after reading `format` from a file, most significant bytes first. Memory that
  // was not touched holds '#'.
  std::string read(const std::string &file, const char *format, int32_t count, size_t room) {
    support::writeFile(path, file);
    const Handle h = kvlOpen(path.c_str(), nullptr, KVL_READ);
    kvlSetDataFormat(h, KVL_DATA_BIG_ENDIAN, 0);
    std::vector<uint64_t> memory(room / 8 + 2, 0x2323232323232323u);
    result = kvlReadStruct(h, memory.data(), format, count);
    left = static_cast<int32_t>(file.size()) - kvlSeek(h, 0, KVL_FROM_POSITION);
    EXPECT_EQ(kvlClose(h), 0);
    const std::string all(reinterpret_cast<const char *>(memory.data()), memory.size() * 8);
    EXPECT_EQ(all.substr(room).find_first_not_of('#'), std::string::npos) << "memory behind the record";
    return all.substr(0, room);
  }
  // The file after writing records from memory, most significant bytes first.
  std::string write(const void *data, const char *format, int32_t count) {
    const Handle h = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
    kvlSetDataFormat(h, KVL_DATA_BIG_ENDIAN, 0);
    result = kvlWriteStruct(h, data, format, count);
    EXPECT_EQ(kvlClose(h), 0);
    return support::readText(path);
  }
  int32_t left = 0;  // bytes of the file that were not read
};

// Bytes that read the same in both orders, so that layout shows on every machine.
std::string z(size_t n) {
  return std::string(n, '\0');
}

TEST_F(Record, MembersLieAtTheirNativeOffsets) {
  EXPECT_EQ(read("aBBCCCCddddEEEEEEEE", "cslfd", 1, 24),
            "a#BB"
            "CCCC"
            "dddd" +
                z(4) + "EEEEEEEE");
  EXPECT_EQ(result, 1);
  EXPECT_EQ(left, 0);
}

TEST_F(Record, PaddingBecomesZeroExceptBeforeAShort) {
  EXPECT_EQ(read("aLLLL", "CL", 1, 8), "a" + z(3) + "LLLL");
  EXPECT_EQ(read("aSS", "CS", 1, 4), "a#SS");
  EXPECT_EQ(read("aDDDDDDDD", "CD", 1, 16), "a" + z(7) + "DDDDDDDD");
  EXPECT_EQ(read("SSa", "SC", 1, 4), "SSa" + z(1)) << "a record ends at its largest alignment";
  EXPECT_EQ(read("LLLLaLLLLb", "LC", 2, 16), "LLLLa" + z(3) + "LLLLb" + z(3));
  EXPECT_EQ(result, 2);
}

TEST_F(Record, ValuesTurnToNativeOrder) {
  const std::string got = read("\x01\x02\x01\x02\x03\x04", "SL", 1, 8);
  uint16_t s;
  uint32_t l;
  std::memcpy(&s, got.data(), 2);
  std::memcpy(&l, got.data() + 4, 4);
  EXPECT_EQ(s, 0x0102);
  EXPECT_EQ(l, 0x01020304u);
}

TEST_F(Record, DigitsRepeatAMember) {
  EXPECT_EQ(read("abcSSSSDDDDDDDD", "3C2SD", 1, 16),
            "abc#SSSS"
            "DDDDDDDD");
  EXPECT_EQ(read("abcdefghijkl", "12C", 1, 12), "abcdefghijkl");
  EXPECT_EQ(read("ab", "0CC", 1, 1), "a") << "no times moves nothing";
  EXPECT_EQ(result, 1);
  EXPECT_EQ(read("ab", "C2\0C", 1, 1), "a") << "digits before the end repeat nothing";
  EXPECT_EQ(result, 1);
}

TEST_F(Record, NestedRecordsStartAtTheirLargestAlignment) {
  EXPECT_EQ(read("abDDDDDDDDc", "C{CD}C", 1, 32), "a" + z(7) + "b" + z(7) + "DDDDDDDDc" + z(7));
  EXPECT_EQ(result, 1);
  // The closing brace adds nothing: the next member follows at its own alignment.
  EXPECT_EQ(read("LLLLab", "{LC}C", 1, 8), "LLLLab" + z(2));
}

TEST_F(Record, UnionsMoveAsRawBytes) {
  EXPECT_EQ(read("a\x01\x02\x03\x04SS", "C(L|2S|C)S", 1, 12), "a" + z(3) + "\x01\x02\x03\x04SS" + z(2));
  EXPECT_EQ(read("LLLLLCb", "(L|5C)C", 1, 8), "LLLLLC" + z(2))
      << "the largest alternative, without a round-up";
}

TEST_F(Record, BracketsAdvanceWithoutMoving) {
  EXPECT_EQ(read("ab", "C[L]C", 1, 12), "a#######b" + z(3));
  EXPECT_EQ(left, 0);
  EXPECT_EQ(read("ab", "C[(D|C)]C", 1, 24), "a" + std::string(15, '#') + "b" + z(7));
  EXPECT_EQ(result, 1);
}

TEST_F(Record, ABracketLeftOpenEndsWithTheFormat) {
  EXPECT_EQ(read("LLLL", "L[C", 1, 8), "LLLL#" + z(3)) << "what pads the record is not inside";
  EXPECT_EQ(result, 1);
}

TEST_F(Record, RecordsOfSkippedMembersAreCountedAtOnce) {
  std::string format;
  for (int i = 0; i < 1000; ++i) format += "[LS2CD(C|{2S}|2F)]p";  // without padding at its end
  read("abc", format.c_str(), 2000000000, 0);
  EXPECT_EQ(result, 2000000000);
  EXPECT_EQ(left, 3);
  char memory[1] = {};
  EXPECT_EQ(write(memory, (format + "[C]").c_str(), 2000000000), "");
  EXPECT_EQ(result, 2000000000) << "a writer has no padding to clear";
}

TEST_F(Record, PointersAndClosersMeanNothing) {
  EXPECT_EQ(read("ab", "CP})]pC", 1, 2), "ab");
  EXPECT_EQ(result, 1);
}

TEST_F(Record, AnUnknownCharacterSetsTheCountBack) {
  read("abcd", "C?", 3, 3);
  EXPECT_EQ(result, 0) << "every pass ends at -1 + 1";
  EXPECT_EQ(left, 1) << "but every pass was made";
  read("abcd", "C|", 1, 1);
  EXPECT_EQ(result, 0) << "a pipe belongs into a union";
  read("", "?", 2000000000, 0);
  EXPECT_EQ(result, 0);
}

TEST_F(Record, AFailingMemberIsTheResult) {
  read("abc", "CL", 1, 8);
  EXPECT_EQ(result, 0);
  read("LLLLa", "L", 2, 8);
  EXPECT_EQ(result, 0) << "not the one record that came";
  read("abc", "(L|C)", 1, 3);
  EXPECT_EQ(result, 0);
  read("", "C", 1, 0);
  EXPECT_EQ(result, 0);
}

TEST_F(Record, WritesSkipThePadding) {
  const char memory[24] = {'a', 1, 'S', 'S', 'L', 'L', 'L', 'L', 'd', 2,   2,   2,
                           2,   2, 2,   2,   'E', 'E', 'E', 'E', 'E', 'E', 'E', 'E'};
  EXPECT_EQ(write(memory, "cslcd", 1), "aSSLLLLdEEEEEEEE");
  EXPECT_EQ(result, 1);
  EXPECT_EQ(write(memory, "C[S]LC", 2), "aLLLLd\2EEEEE")
      << "records follow at multiples of their alignment";
  EXPECT_EQ(result, 2);
  EXPECT_EQ(write(memory + 4, "(L|2C)", 1), "LLLL");
}

TEST_F(Record, WritesTurnToFileOrder) {
  const uint32_t value = 0x01020304;
  EXPECT_EQ(write(&value, "L", 1), "\x01\x02\x03\x04");
  EXPECT_EQ(write(&value, "(L)", 1), std::string(reinterpret_cast<const char *>(&value), 4)) << "raw";
}

TEST_F(Record, RefusedArgumentsAnswerZero) {
  char memory[8] = {};
  EXPECT_EQ(kvlReadStruct(0, memory, "C", 1), 0);
  const Handle h = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
  EXPECT_EQ(kvlReadStruct(h, nullptr, "C", 1), 0);
  EXPECT_EQ(kvlReadStruct(h, memory, nullptr, 1), 0);
  EXPECT_EQ(kvlReadStruct(h, memory, "C", 0), 0);
  EXPECT_EQ(kvlReadStruct(h, memory, "C", -1), 0);
  EXPECT_EQ(kvlWriteStruct(0, memory, "C", 1), 0);
  EXPECT_EQ(kvlWriteStruct(h, nullptr, "C", 1), 0);
  EXPECT_EQ(kvlWriteStruct(h, memory, nullptr, 1), 0);
  EXPECT_EQ(kvlWriteStruct(h, memory, "", 5), 5) << "nothing, five times";
  EXPECT_EQ(kvlClose(h), 0);
}

TEST(PadWidth, IsTheLargestAlignmentInsideTheGroup) {
  EXPECT_EQ(GetPadWidth("{C}"), 1);
  EXPECT_EQ(GetPadWidth("{CSC}D"), 2);
  EXPECT_EQ(GetPadWidth("{C{L}S}D"), 4);
  EXPECT_EQ(GetPadWidth("{{C}L}D"), 4);
  EXPECT_EQ(GetPadWidth("(C|d)"), 8);
  EXPECT_EQ(GetPadWidth("{f}"), 4);
  EXPECT_EQ(GetPadWidth("{}D"), 1);
  EXPECT_EQ(GetPadWidth("{S"), 2);
  EXPECT_EQ(GetPadWidth(""), 1);
  EXPECT_EQ(GetPadWidth(nullptr), 0);
}

// The size of a union, and how many characters of the format it takes.
std::pair<int32_t, int64_t> unionSize(const char *format) {
  int32_t size = -1;
  const char *after = GetUnionSize(format, &size);
  return {size, after - format};
}

TEST(UnionSize, IsTheLargestAlternative) {
  using Result = std::pair<int32_t, int64_t>;
  EXPECT_EQ(unionSize("(L|5C|S)C"), Result(5, 8));
  EXPECT_EQ(unionSize("(CL|S)"), Result(8, 6)) << "padding inside an alternative counts";
  EXPECT_EQ(unionSize("(CD)"), Result(16, 4));
  EXPECT_EQ(unionSize("(C{CL}|D)"), Result(12, 9));
  EXPECT_EQ(unionSize("(C(L|3S)C|D)"), Result(11, 12)) << "4 for the nested start, 6, 1";
  EXPECT_EQ(unionSize("()C"), Result(0, 2));
  EXPECT_EQ(unionSize("|L"), Result(0, 1)) << "no union is open";
  EXPECT_EQ(unionSize(")L"), Result(0, 1));
  EXPECT_EQ(unionSize("]L"), Result(0, 1));
  EXPECT_EQ(unionSize("(3C"), Result(3, 3)) << "a group left open ends with the format";
  EXPECT_EQ(unionSize("(C|(D"), Result(8, 5));
  EXPECT_EQ(unionSize("(C2\0C"), Result(1, 3));
  EXPECT_EQ(unionSize("(2[C]P)"), Result(1, 7));
  EXPECT_EQ(unionSize("(99999C)"), Result(65535, 8));
  EXPECT_EQ(GetUnionSize(nullptr, nullptr), nullptr);
  EXPECT_NE(GetUnionSize("(C)", nullptr), nullptr);
}

TEST(UnionSize, SaturatesAndNeverRunsAway) {
  std::string format = "(";
  for (int i = 0; i < 5000; ++i) format += "65535D";
  EXPECT_EQ(unionSize(format.c_str()).first, 0x7FFFFFFF);
}

std::string repeated(const std::string &piece, size_t times) {
  std::string out;
  while (times-- > 0) out += piece;
  return out;
}

TEST_F(Record, DeepNestingEndsInTimeThatGrowsWithTheFormat) {
  for (const char *piece : {"{", "(", "[", "{(", "({|", "(C|", "}{", ")(", "65535{"}) {
    const std::string format = repeated(piece, support::cases(20000) + 100);
    read("abcdefgh", format.c_str(), 1, 8);
  }
}

// The 65th brace begins nothing, and means nothing either.
TEST_F(Record, GroupsNestedDeeperThan64AreNoGroups) {
  const auto nested = [](size_t depth) { return repeated("{", depth) + "C" + repeated("}", depth); };
  EXPECT_EQ(read("a", nested(64).c_str(), 1, 1), "a");
  EXPECT_EQ(result, 1);
  EXPECT_EQ(read("a", nested(65).c_str(), 1, 1), "a");
  EXPECT_EQ(result, 0);
  EXPECT_EQ(read("", repeated("{}", 65).c_str(), 1, 0), "");
  EXPECT_EQ(result, 1) << "groups one after the other are not nested";
  EXPECT_EQ(read("ab", ("}" + nested(64) + "C").c_str(), 1, 2), "ab");
  EXPECT_EQ(result, 1) << "a brace that closes nothing gives no room for one more";
  EXPECT_EQ(read("a", ("}" + nested(65)).c_str(), 1, 1), "a");
  EXPECT_EQ(result, 0);
}

TEST(UnionSize, TheSixtyFifthParenthesisIsNone) {
  const std::string format = repeated("(", 65) + "C|3C" + repeated(")", 64);
  EXPECT_EQ(unionSize(format.c_str()), std::make_pair(3, static_cast<int64_t>(format.size())));
}

TEST_F(Record, HostileFormatsStayInsideWhatTheyDescribe) {
  static const char kAlphabet[] = "CSLFDcP{}()[]|123?";
  support::Random random(5);
  const std::string file(200, 'v');
  support::writeFile(path, file);
  // Twelve characters describe at most 65,535 doubles and a few members around them.
  std::vector<uint64_t> memory(90000);
  for (size_t i = 0; i < support::cases(3000); ++i) {
    std::string format;
    for (int64_t n = random.between(0, 12); n > 0; --n) format += kAlphabet[random.next() % 18];
    const Handle h = kvlOpen(path.c_str(), nullptr, KVL_READ);
    const int32_t got = kvlReadStruct(h, memory.data(), format.c_str(), 1);
    EXPECT_GE(got, 0);
    EXPECT_LE(got, 1);
    EXPECT_EQ(kvlClose(h), 0);
  }
}

}  // namespace
