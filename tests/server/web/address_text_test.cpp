#include "server/web/http/address_text.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::server::web {
namespace {

std::string Path(std::string_view encoded) {
  const auto path = PathOf(encoded);
  return path ? *path : "refused";
}

TEST(PathOf, decodes_once) {
  EXPECT_EQ(Path("/api/v1/jobs"), "/api/v1/jobs");
  EXPECT_EQ(Path("/a%20b"), "/a b");
  EXPECT_EQ(Path("/a+b"), "/a+b");
  EXPECT_EQ(Path("/%2541"), "/%41");
  EXPECT_EQ(Path("/%C3%A9"), "/\xC3\xA9");
  EXPECT_EQ(Path("/"), "/");
  EXPECT_EQ(Path("/a/"), "/a/");
  EXPECT_EQ(Path("/..a/.b"), "/..a/.b");
}

TEST(PathOf, refuses_what_can_be_read_in_two_ways) {
  for (const char* path : {"",       "a",     "http://host/", "*",         "//a",    "/a//b",
                           "/.",     "/..",   "/a/../b",      "/%2e%2e/b", "/%2E/b", "/a%2fb",
                           "/a%5cb", "/a\\b", "/a%00b",       "/a%0ab",    "/%7f",   "/%",
                           "/%4",    "/%4g",  "/%g4",         "/%c3",      "/%ff",   "/%ed%a0%80"})
    EXPECT_EQ(Path(path), "refused") << path;
}

TEST(FieldsOf, decodes_names_and_values) {
  const auto fields = FieldsOf("a=1&b=x+y%20z&c&=d&&e=%3D%26");
  ASSERT_TRUE(fields);
  const Fields wanted{{"a", "1"}, {"b", "x y z"}, {"c", ""}, {"", "d"}, {"e", "=&"}};
  EXPECT_EQ(*fields, wanted);
}

TEST(FieldsOf, refuses_bad_encoding_and_too_many) {
  EXPECT_FALSE(FieldsOf("a=%"));
  EXPECT_FALSE(FieldsOf("%zz=1"));
  EXPECT_FALSE(FieldsOf("a=%00"));
  EXPECT_FALSE(FieldsOf("a=%ff"));
  std::string many;
  for (std::size_t index = 0; index < FieldLimit - 1; ++index) many += "a=1&";
  EXPECT_TRUE(FieldsOf(many));
  EXPECT_TRUE(FieldsOf(many + "a=1"));
  EXPECT_FALSE(FieldsOf(many + "a=1&a=1"));
}

TEST(CookiesOf, takes_pairs_and_leaves_the_rest) {
  const Fields wanted{{"a", "1"}, {"b", "x=y"}, {"c", "q"}};
  EXPECT_EQ(CookiesOf("a=1; b=x=y;nothing; =z; c=\"q\""), wanted);
  EXPECT_TRUE(CookiesOf("").empty());
  EXPECT_TRUE(CookiesOf(";;;").empty());
}

TEST(HeaderValueOf, takes_parameters_with_and_without_quotes) {
  const auto value = HeaderValueOf("Form-Data; NAME=\"a \\\"b\\\" \\c;d\" ; filename=x.ps");
  ASSERT_TRUE(value);
  EXPECT_EQ(value->word, "form-data");
  EXPECT_EQ(value->Parameter("name"), "a \"b\" \\c;d");
  EXPECT_EQ(value->Parameter("filename"), "x.ps");
  EXPECT_EQ(value->Parameter("none"), "");
  EXPECT_FALSE(HeaderValueOf("a; b=\"c"));
  EXPECT_FALSE(HeaderValueOf("a; b"));
  EXPECT_FALSE(HeaderValueOf("a; b=\"c\"d"));
  EXPECT_TRUE(HeaderValueOf("a;"));
}

TEST(HostNameOf, parts_name_and_port) {
  EXPECT_EQ(HostNameOf("Shop.Example")->name, "shop.example");
  EXPECT_EQ(HostNameOf("127.0.0.1:8632")->port, "8632");
  EXPECT_EQ(HostNameOf("[::1]:80")->name, "::1");
  EXPECT_EQ(HostNameOf("[::1]:80")->port, "80");
  for (const char* bad :
       {"", ":80", "a:", "a:b", "a:123456", "[::1", "[::1]80", "a b", "a@b", "a/b"})
    EXPECT_FALSE(HostNameOf(bad)) << bad;
}

TEST(IsUtf8, knows_the_edges_of_each_length) {
  for (const char* good : {"", "a", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf",
                           "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"})
    EXPECT_TRUE(IsUtf8(good)) << good;
  for (const char* bad : {"\x80", "\xc1\xbf", "\xc2", "\xe0\x9f\xbf", "\xe0\xa0", "\xed\xa0\x80",
                          "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff"})
    EXPECT_FALSE(IsUtf8(bad));
}

TEST(IsSameSecret, compares_whole_texts) {
  EXPECT_TRUE(IsSameSecret("abc", "abc"));
  EXPECT_FALSE(IsSameSecret("abc", "abd"));
  EXPECT_FALSE(IsSameSecret("abc", "ab"));
  EXPECT_FALSE(IsSameSecret("", "a"));
}

}  // namespace
}  // namespace rastrel::server::web
