#include "host/document/json_stream.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace rastrel::document {
namespace {

struct Read {
  nlohmann::json rest;
  std::string before;
  std::vector<std::int64_t> taken;
};

Read Parse(const std::string& text, bool takes = true) {
  Read read;
  const ElementTaker taker{
      [&](const JsonValue& before) {
        read.before = before.Has("a") ? "a" : "nothing";
        return takes;
      },
      [&](const JsonValue& element) { read.taken.push_back(element.At(0).Int()); }};
  read.rest = ParseJson(text, "list", taker);
  return read;
}

TEST(JsonStream, elements_of_the_one_array_are_taken_and_not_kept) {
  const Read read = Parse(R"({"a": [[1], {"list": [2]}], "list": [[3, [4]], [5]], "b": [6]})");
  EXPECT_EQ(read.before, "a");
  EXPECT_EQ(read.taken, (std::vector<std::int64_t>{3, 5}));
  EXPECT_EQ(read.rest, nlohmann::json::parse(R"({"a": [[1], {"list": [2]}], "b": [6]})"));
}

TEST(JsonStream, an_array_that_is_not_wanted_is_kept) {
  const Read read = Parse(R"({"list": [[3]], "a": 1})", false);
  EXPECT_EQ(read.before, "nothing");
  EXPECT_TRUE(read.taken.empty());
  EXPECT_EQ(read.rest, nlohmann::json::parse(R"({"list": [[3]], "a": 1})"));
}

TEST(JsonStream, only_an_array_of_the_outermost_object_is_taken) {
  for (const char* text : {R"([{"list": [[1]]}])", R"({"list": 1})", R"({"list": {"list": [[1]]}})",
                           R"([["list"]])", R"("list")", "7"}) {
    const Read read = Parse(text);
    EXPECT_TRUE(read.taken.empty()) << text;
    EXPECT_EQ(read.rest, nlohmann::json::parse(text));
  }
}

TEST(JsonStream, values_of_every_kind_are_as_they_were_written) {
  const std::string text =
      R"([null, true, false, 0, -1, 18446744073709551615, -9223372036854775808, 0.1, "\u00e9\"", {}, []])";
  EXPECT_EQ(Parse(text).rest, nlohmann::json::parse(text));
}

TEST(JsonStream, what_the_taker_does_not_take_is_told_with_its_place) {
  try {
    Parse(R"({"list": [[1], ["x"]]})");
    FAIL() << "no fault";
  } catch (const JsonFault& fault) {
    EXPECT_EQ(fault.where, "/list/1/0");
    EXPECT_EQ(fault.what, "is no whole number");
  }
}

TEST(JsonStream, a_text_cut_off_anywhere_is_a_fault) {
  const std::string text = R"({"a": 1.5, "list": [[3], [5]], "b": {"c": "d"}})";
  for (std::size_t length = 0; length < text.size(); ++length) {
    EXPECT_THROW(Parse(text.substr(0, length)), JsonFault) << length;
  }
  EXPECT_THROW(Parse(text + "x"), JsonFault);
}

}  // namespace
}  // namespace rastrel::document
