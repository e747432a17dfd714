#include "host/document/json_stream.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace rastrel::document {
namespace {

struct Read {
  nlohmann::json rest;
  std::string before;
  std::vector<std::string> taken;  // the name of each element and its depth
};

Expected<Read> TryParse(const std::string& text, bool takes = true) {
  Read read;
  const ElementTaker taker{"list", "more",
                           [&](const JsonValue& before) {
                             read.before += before.Has("a") ? "a" : "nothing";
                             return takes;
                           },
                           [&](const JsonValue& element, std::size_t depth) {
                             EXPECT_TRUE(!element.Has("more") || element["more"].Count() == 0);
                             read.taken.push_back(element["n"].Utf8() + std::to_string(depth));
                           }};
  const auto result = ReadJson([&] { read.rest = ParseJson(text, taker); });
  if (!result) return result.Error();
  return read;
}

Read Parse(const std::string& text, bool takes = true) {
  const auto read = TryParse(text, takes);
  EXPECT_TRUE(read) << text;
  return read ? *read : Read();
}

TEST(JsonStream, elements_of_the_one_array_are_taken_and_not_kept) {
  const Read read = Parse(
      R"({"a": [[1], {"list": [2]}], "list": [{"n": "x"}, {"n": "y", "list": [1]}], "b": [6]})");
  EXPECT_EQ(read.before, "a");
  EXPECT_EQ(read.taken, (std::vector<std::string>{"x0", "y0"}));
  EXPECT_EQ(read.rest,
            nlohmann::json::parse(R"({"a": [[1], {"list": [2]}], "list": [], "b": [6]})"));
}

TEST(JsonStream, elements_of_elements_are_taken_before_them) {
  const Read read = Parse(R"({"list": [{"more": [{"n": "x", "more": [{"n": "y"}]}, {"n": "z"}],
    "n": "w"}, {"n": "v", "other": {"more": [1]}, "more": []}], "more": [2]})");
  EXPECT_EQ(read.taken, (std::vector<std::string>{"y2", "x1", "z1", "w0", "v0"}));
  EXPECT_EQ(read.rest, nlohmann::json::parse(R"({"list": [], "more": [2]})"));
}

TEST(JsonStream, an_array_that_is_not_wanted_is_kept_with_all_that_is_in_it) {
  const std::string text = R"({"list": [{"n": "x", "more": [{"n": "y"}]}], "a": 1})";
  const Read read = Parse(text, false);
  EXPECT_EQ(read.before, "nothing");
  EXPECT_TRUE(read.taken.empty());
  EXPECT_EQ(read.rest, nlohmann::json::parse(text));
}

TEST(JsonStream, an_array_that_is_taken_stands_once) {
  for (const char* text : {R"({"list": [], "list": []})", R"({"list": 1, "list": []})",
                           R"({"list": [{"more": [], "more": []}]})"}) {
    EXPECT_FALSE(TryParse(text)) << text;
  }
}

TEST(JsonStream, only_an_array_of_the_outermost_object_is_taken) {
  for (const char* text :
       {R"([{"list": [{"n": "x"}]}])", R"({"list": 1})", R"({"list": {"list": [{"n": "x"}]}})",
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

TEST(JsonStream, a_refused_value_is_reported_with_its_place) {
  const std::string one = R"({"n": "x"})";
  const std::pair<std::string, const char*> faults[] = {
      {R"({"list": [)" + one + R"(, {"n": 1}]})", "/list/1/n"},
      {R"({"list": [)" + one + R"(, {"more": [)" + one + ", " + one + R"(, {"n": 1}], "n": 2}]})",
       "/list/1/more/2/n"},
      {R"({"list": [{"more": [)" + one + R"(], "n": 1}]})", "/list/0/n"},
  };
  for (const auto& [text, where] : faults) {
    const auto read = TryParse(text);
    ASSERT_FALSE(read) << text;
    EXPECT_EQ(read.Error().where, where);
    EXPECT_EQ(read.Error().why, "is no text");
  }
}

TEST(JsonStream, a_text_cut_off_anywhere_is_a_fault) {
  const std::string text =
      R"({"a": 1.5, "list": [{"n": "x", "more": [{"n": "y"}]}], "b": {"c": "d"}})";
  for (std::size_t length = 0; length < text.size(); ++length) {
    EXPECT_FALSE(TryParse(text.substr(0, length))) << length;
  }
  EXPECT_FALSE(TryParse(text + "x"));
}

}  // namespace
}  // namespace rastrel::document
