#include "rastrel/platform/os/shared_library.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

using rastrel::os::SharedLibrary;

TEST(SharedLibrary, gives_functions_by_name) {
  const auto library = SharedLibrary::Open("libm.so.6");
  ASSERT_TRUE(static_cast<bool>(library));
  double (*root)(double) = nullptr;
  ASSERT_TRUE(library->Bind(root, "sqrt"));
  EXPECT_EQ(root(9.0), 3.0);
}

TEST(SharedLibrary, has_no_function_of_another_name) {
  const auto library = SharedLibrary::Open("libm.so.6");
  ASSERT_TRUE(static_cast<bool>(library));
  double (*function)(double) = [](double value) { return value; };
  EXPECT_FALSE(library->Bind(function, "no_such_function"));
  EXPECT_EQ(function, nullptr);
}

TEST(SharedLibrary, says_why_it_can_not_be_had) {
  const auto library = SharedLibrary::Open("libno-such-library.so.1");
  ASSERT_FALSE(static_cast<bool>(library));
  EXPECT_NE(std::string::npos, library.Error().why.find("libno-such-library.so.1"))
      << library.Error().why;
}

TEST(OwnModule, is_the_handle_that_the_loader_gives_for_this_program) {
  void* const handle = ::dlopen(nullptr, RTLD_LAZY | RTLD_NOLOAD);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(rastrel::os::OwnModule(), handle);
  ::dlclose(handle);
}

}  // namespace
