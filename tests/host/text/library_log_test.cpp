#include "host/text/library_log.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace rastrel::text {
namespace {

void End(const std::string& message) {
  std::fprintf(stderr, "%s\n", message.c_str());
  std::_Exit(7);
}

// A process each: the log can be taken over once.
TEST(LibraryLogDeathTest, a_library_that_gets_no_thread_ends_with_its_message_and_no_signal) {
  EXPECT_EXIT(
      {
        GuardLibraryLog(End);
        g_log_structured("Any", G_LOG_LEVEL_ERROR, "MESSAGE", "creating thread '%s'\n: %s", "x",
                         "no room");
      },
      testing::ExitedWithCode(7), "^a library can't go on: creating thread 'x'\\\\x0a: no room\n$");
}

TEST(LibraryLogDeathTest, warnings_do_not_reach_the_standard_error) {
  EXPECT_EXIT(
      {
        GuardLibraryLog(End);
        g_log_structured("Any", G_LOG_LEVEL_WARNING, "MESSAGE", "foreign text");
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace rastrel::text
