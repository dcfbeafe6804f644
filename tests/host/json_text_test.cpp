// SPDX-License-Identifier: MIT
#include "check/json_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

TEST(JsonText, IsInQuotesAndWhatIsNoTextIsReplaced) {
  EXPECT_EQ(host::jsonText(""), R"("")");
  EXPECT_EQ(host::jsonText("a/b \"c\" \\ d"), R"("a/b \"c\" \\ d")");
  EXPECT_EQ(host::jsonText(std::string_view("\n\t\x01\0", 4)), R"("\n\t\u0001\u0000")");
  EXPECT_EQ(host::jsonText("\xC3\xA4 \xFF \xC3"), "\"\xC3\xA4 \xEF\xBF\xBD \xEF\xBF\xBD\"");
}

TEST(JsonText, NumbersAreReadBackAsTheyWere) {
  EXPECT_EQ(host::jsonNumber(0.1), "0.1");
  EXPECT_EQ(host::jsonNumber(300), "300.0");
  EXPECT_EQ(host::jsonNumber(std::numeric_limits<double>::infinity()), "null");
  EXPECT_EQ(host::jsonOf(uint64_t{18446744073709551615u}), "18446744073709551615");
  EXPECT_EQ(host::jsonOf(int64_t{-5}), "-5");
  EXPECT_EQ(host::jsonOf(uint16_t{65535}), "65535");
}

TEST(JsonText, ATextIsNoTruthAndATruthNoNumber) {
  const char *text = "no";
  EXPECT_EQ(host::jsonOf(text), R"("no")");
  EXPECT_EQ(host::jsonOf(true), "true");
  EXPECT_EQ(host::jsonOf(false), "false");
}

TEST(JsonText, ObjectsAndArraysKeepTheirOrder) {
  EXPECT_EQ(host::JsonObject().json(), "{}");
  EXPECT_EQ(host::JsonArray().json(), "[]");
  host::JsonArray inner;
  inner.add("x");
  inner.add(1);
  inner.addJson(host::jsonTexts({"a", "b"}));
  host::JsonObject object;
  object.add("z", 1).add("a", false).addJson("list", inner.json()).addJson("none", host::jsonTexts({}));
  EXPECT_EQ(object.json(), R"({"z":1,"a":false,"list":["x",1,["a","b"]],"none":[]})");
}
