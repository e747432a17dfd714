#include "server/web/http/router.h"

#include <gtest/gtest.h>

#include <string>

#include "server/web/http/byte_range.h"

namespace rastrel::server::web {
namespace {

class RouterTest : public testing::Test {
 protected:
  RouterTest() {
    for (const auto& [method, pattern] : {std::pair(Method::Get, "/jobs"),
                                          {Method::Post, "/jobs"},
                                          {Method::Get, "/jobs/{id}"},
                                          {Method::Delete, "/jobs/{id}"},
                                          {Method::Get, "/jobs/new"},
                                          {Method::Get, "/jobs/{id}/file"},
                                          {Method::Get, "/static/{path...}"},
                                          {Method::Get, "/"}})
      m_Router.Add({method, pattern, Role::See, Body::None, {}});
  }
  [[nodiscard]] std::string PatternOf(Method method, std::string_view path) const {
    const auto match = m_Router.Find(method, path);
    return match.route ? match.route->pattern : "";
  }

  Router m_Router;
};

TEST_F(RouterTest, finds_by_path_and_method) {
  EXPECT_EQ(PatternOf(Method::Get, "/"), "/");
  EXPECT_EQ(PatternOf(Method::Post, "/jobs"), "/jobs");
  EXPECT_EQ(PatternOf(Method::Get, "/jobs/7"), "/jobs/{id}");
  EXPECT_EQ(m_Router.Find(Method::Get, "/jobs/7/file").places.at("id"), "7");
}

TEST_F(RouterTest, prefers_the_pattern_that_spells_more) {
  EXPECT_EQ(PatternOf(Method::Get, "/jobs/new"), "/jobs/new");
  EXPECT_EQ(m_Router.Find(Method::Delete, "/jobs/new").route, nullptr);
}

TEST_F(RouterTest, takes_the_rest_of_a_path) {
  EXPECT_EQ(m_Router.Find(Method::Get, "/static/a/b.js").places.at("path"), "a/b.js");
  EXPECT_EQ(m_Router.Find(Method::Get, "/static/").places.at("path"), "");
}

TEST_F(RouterTest, knows_no_other_path) {
  for (const char* path : {"/jobs/", "/jobs/7/", "/job", "/jobs/7/file/x", "//jobs", "/static"}) {
    const auto match = m_Router.Find(Method::Get, path);
    EXPECT_EQ(match.route, nullptr) << path;
    EXPECT_EQ(match.allowed, "") << path;
  }
}

TEST_F(RouterTest, names_the_methods_of_a_known_path) {
  const auto match = m_Router.Find(Method::Delete, "/jobs");
  EXPECT_EQ(match.route, nullptr);
  EXPECT_EQ(match.allowed, "GET, POST");
}

std::string Range(std::string_view header, std::int64_t size) {
  const ByteRange range = RangeOf(header, size);
  if (range.kind == ByteRange::Kind::Outside) return "outside";
  return (range.kind == ByteRange::Kind::Whole ? "whole " : "") + std::to_string(range.first) +
         "-" + std::to_string(range.last);
}

TEST(RangeOf, takes_one_range_of_bytes) {
  EXPECT_EQ(Range("bytes=0-9", 100), "0-9");
  EXPECT_EQ(Range("bytes=99-99", 100), "99-99");
  EXPECT_EQ(Range("bytes=90-", 100), "90-99");
  EXPECT_EQ(Range("bytes=90-200", 100), "90-99");
  EXPECT_EQ(Range("bytes=-10", 100), "90-99");
  EXPECT_EQ(Range("bytes=-200", 100), "0-99");
  EXPECT_EQ(Range("bytes=100-", 100), "outside");
  EXPECT_EQ(Range("bytes=-0", 100), "outside");
  EXPECT_EQ(Range("bytes=0-", 0), "outside");
}

TEST(RangeOf, takes_anything_else_as_the_whole) {
  for (const char* header :
       {"", "bytes", "bytes=", "bytes=-", "bytes=a-b", "bytes=9-0", "bytes=0-1,3-4", "lines=0-1",
        "bytes=0-x", "bytes=+1-2", "bytes=0-99999999999999999999999"})
    EXPECT_EQ(Range(header, 100), "whole 0-99") << header;
}

}  // namespace
}  // namespace rastrel::server::web
