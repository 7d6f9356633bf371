#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "door/JsonWriter.h"

using mp4::IsUtf8;
using mp4::JsonWriter;

namespace {

std::string JsonString(const std::string& bytes) {
  std::string text;
  JsonWriter(&text).String(bytes);
  return text;
}

std::string JsonReal(double value) {
  std::string text;
  JsonWriter(&text).Real(value);
  return text;
}

void WriteSmallObject(JsonWriter* json) {
  json->BeginObject();
  json->Member("a", std::uint64_t{1});
  json->Name("b");
  json->BeginArray();
  json->Bool(true);
  json->Null();
  json->BeginObject();
  json->EndObject();
  json->EndArray();
  json->Member("c", "d");
  json->EndObject();
}

}  // namespace

TEST(JsonWriter, SeparatesMembersAndElements) {
  std::string text;
  JsonWriter json(&text);
  WriteSmallObject(&json);
  EXPECT_EQ(text, R"({"a":1,"b":[true,null,{}],"c":"d"})");
}

TEST(JsonWriter, IndentsAMemberALine) {
  std::string text;
  JsonWriter json(&text, JsonWriter::Form::kIndented);
  WriteSmallObject(&json);
  EXPECT_EQ(text,
            "{\n  \"a\": 1,\n  \"b\": [\n    true,\n    null,\n    {}\n  ],\n  \"c\": \"d\"\n}");
}

TEST(JsonWriter, AppendsToWhatIsThere) {
  std::string text = "x";
  JsonWriter(&text).Null();
  EXPECT_EQ(text, "xnull");
}

TEST(JsonWriter, WritesNumbersWithAllTheirDigits) {
  std::string text;
  JsonWriter json(&text);
  json.BeginArray();
  json.Unsigned(18446744073709551615U);
  json.Signed(std::numeric_limits<std::int64_t>::min());
  json.EndArray();
  EXPECT_EQ(text, "[18446744073709551615,-9223372036854775808]");
}

TEST(JsonWriter, WritesRealNumbersShortAndOnlyFiniteOnes) {
  EXPECT_EQ(JsonReal(0.1), "0.1");
  EXPECT_EQ(JsonReal(25), "25");
  EXPECT_EQ(JsonReal(std::numeric_limits<double>::infinity()), "null");
  EXPECT_EQ(JsonReal(std::numeric_limits<double>::quiet_NaN()), "null");
}

TEST(JsonWriter, EscapesWhatMayNotStandInAString) {
  EXPECT_EQ(JsonString("a\"b\\c/"), R"("a\"b\\c/")");
  EXPECT_EQ(JsonString(std::string("\0\x1F\n\r\t\x7F", 6)), R"("\u0000\u001F\n\r\t\u007F")");
}

TEST(JsonWriter, LeavesWellFormedUtf8AsItIs) {
  const std::string text =
      "\xC2\x80 \xC3\xBC \xE2\x82\xAC \xED\x9F\xBF \xEE\x80\x80 "
      "\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF";
  EXPECT_TRUE(IsUtf8(text));
  EXPECT_EQ(JsonString(text), "\"" + text + "\"");
}

// Overlong forms, surrogates, values above U+10FFFF, lone and missing continuations.
TEST(JsonWriter, ReplacesEachByteThatIsNotUtf8) {
  const std::string mark = "\xEF\xBF\xBD";
  const auto marks = [&](int n) {
    std::string text = "\"";
    for (int i = 0; i < n; ++i) text += mark;
    return text + "\"";
  };
  for (const std::string bytes :
       {"\x80", "\xFF", "\xC0\xAF", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE2\x82", "\xF0\x9F\x98", "\xC3"}) {
    EXPECT_FALSE(IsUtf8(bytes));
    EXPECT_EQ(JsonString(bytes), marks(static_cast<int>(bytes.size())));
  }
  EXPECT_EQ(JsonString("\xE2\x82z"), "\"" + mark + mark + "z\"");
}
