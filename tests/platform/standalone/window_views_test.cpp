#include "rastrel/platform/standalone/window_views.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::host {
namespace {

// Why there are no views; empty if there are.
std::string Refusal(const test::ScratchDirectory& resources) {
  const test::EnvironmentGuard guard("RASTREL_RESOURCES", resources.Path());
  const auto views = LoadWindowViews();
  return views ? "" : Describe(views.Error());
}

TEST(LoadWindowViews, fails_where_the_component_is_missing_or_none) {
  const test::ScratchDirectory resources;
  resources.Write("libexec/rastrel/corerast.exe", "");
  EXPECT_EQ(Refusal(resources), "rastrel-window.so is not installed");
  resources.Write("libexec/rastrel/rastrel-window.so", "no library");
  const std::string refusal = Refusal(resources);
  EXPECT_NE(refusal.find("rastrel-window.so"), refusal.npos) << refusal;
  EXPECT_NE(refusal, "rastrel-window.so is not installed");
  EXPECT_NE(refusal, "rastrel-window.so is of another kind");
}

}  // namespace
}  // namespace rastrel::host
