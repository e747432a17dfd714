#include "server/web/pages/html.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "tests/support/environment_guard.h"

namespace rastrel::server::web {
namespace {

TEST(Escaped, markup_becomes_text) {
  EXPECT_EQ(Escaped("<script>alert(\"1\")</script> & 'x'"),
            "&lt;script&gt;alert(&quot;1&quot;)&lt;/script&gt; &amp; &#39;x&#39;");
  EXPECT_EQ(Escaped("&lt;"), "&amp;lt;");
  EXPECT_EQ(Escaped(""), "");
}

TEST(Escaped, characters_that_turn_the_text_around_are_shown_by_number) {
  EXPECT_EQ(Escaped("a\xE2\x80\xAEgnp.exe"), "a\\u202egnp.exe");
  EXPECT_EQ(Escaped("a\nb\tc"), "a\\x0ab\\x09c");
  EXPECT_EQ(Escaped(std::string_view("a\0b", 3)), "a\\x00b");
}

TEST(Escaped, bytes_that_are_no_text_are_replaced) {
  EXPECT_EQ(Escaped("\xFF<"), "\xEF\xBF\xBD&lt;");
}

TEST(KeptInField, has_the_same_characters_with_references) {
  EXPECT_EQ(KeptInField("A \"B\" & <c>'"), "A &quot;B&quot; &amp; &lt;c&gt;&#39;");
  // A mark of direction, a soft hyphen: the writer's own.
  EXPECT_EQ(KeptInField("\xE2\x80\x8F\xC2\xAD\xC3\xBC"), "\xE2\x80\x8F\xC2\xAD\xC3\xBC");
  EXPECT_EQ(KeptInField(""), "");
}

TEST(KeptInField, cleans_text_with_control_characters_or_of_no_encoding) {
  EXPECT_EQ(KeptInField("a\x1b[2J<"), "a\\x1b[2J&lt;");
  EXPECT_EQ(KeptInField("a\nb"), "a\\x0ab");
  EXPECT_EQ(KeptInField("a\xC2\x9B"), Escaped("a\xC2\x9B"));
  EXPECT_EQ(KeptInField("\xFF<"), Escaped("\xFF<"));
  EXPECT_EQ(KeptInField("\x7F"), Escaped("\x7F"));
}

TEST(Isolated, keeps_its_direction_to_itself) {
  EXPECT_EQ(Isolated("<b>"), "<bdi>&lt;b&gt;</bdi>");
}

TEST(QueryValue, all_but_plain_letters_is_encoded) {
  EXPECT_EQ(QueryValue("aZ09-._"), "aZ09-._");
  EXPECT_EQ(QueryValue("a b&c=\"<\xC3\xA4"), "a%20b%26c%3D%22%3C%C3%A4");
}

TEST(TimeElement, is_empty_before_its_time) {
  EXPECT_EQ(TimeElement(0), "");
  EXPECT_EQ(TimeElement(-1), "");
}

TEST(TimeElement, has_the_minute_here_and_the_moment_for_machines) {
  const test::EnvironmentGuard zone("TZ", "UTC");
  ::tzset();
  EXPECT_EQ(TimeElement(1'000'000'000'000),
            "<time datetime=\"2001-09-09T01:46:40+0000\">2001-09-09 01:46</time>");
}

}  // namespace
}  // namespace rastrel::server::web
