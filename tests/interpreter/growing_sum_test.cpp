#include "interpreter/growing_sum.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "pages/sha256.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::interpreter {
namespace {

os::FileDescriptor MemoryFile() { return os::FileDescriptor(memfd_create("page", MFD_CLOEXEC)); }

std::string SumOf(const std::string& bytes) {
  pages::Sha256 sum;
  sum.Add(bytes.data(), bytes.size());
  return sum.Finish();
}

std::string Pixels(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 + i / 251);
  return bytes;
}

/// Writes the bytes in pieces of that size and reports each to the sum.
Expected<std::string> Written(const std::string& bytes, std::size_t piece) {
  const os::FileDescriptor file = MemoryFile();
  GrowingSum sum(file.Get());
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    const std::string part = bytes.substr(at, piece);
    if (auto written = os::WriteAll(file.Get(), part); !written) return written.Error();
    sum.Grow(at + part.size());
  }
  return sum.Finish();
}

constexpr std::size_t MebiByte = std::size_t{1} << 20;

TEST(GrowingSum, is_that_of_the_whole_file_whatever_the_pieces) {
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, MebiByte - 1, MebiByte, MebiByte + 1, 5 * MebiByte + 77}) {
    const std::string bytes = Pixels(size);
    for (const std::size_t piece : {std::size_t{65'536}, std::size_t{237'984}, 3 * MebiByte}) {
      const auto sum = Written(bytes, piece);
      ASSERT_TRUE(sum) << Describe(sum.Error());
      EXPECT_EQ(*sum, SumOf(bytes)) << size << " bytes in pieces of " << piece;
    }
  }
}

TEST(GrowingSum, is_the_same_without_a_thread_to_give) {
  const os::SystemCallsGuard guard;
  os::Calls().thread_create = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
    return EAGAIN;
  };
  const std::string bytes = Pixels(3 * MebiByte + 5);
  const auto sum = Written(bytes, 100'000);
  ASSERT_TRUE(sum) << Describe(sum.Error());
  EXPECT_EQ(*sum, SumOf(bytes));
}

TEST(GrowingSum, bytes_that_are_not_there_are_a_failure) {
  for (const std::size_t missing : {std::size_t{1}, 4 * MebiByte}) {
    const os::FileDescriptor file = MemoryFile();
    GrowingSum sum(file.Get());
    ASSERT_TRUE(os::WriteAll(file.Get(), Pixels(1000)));
    sum.Grow(1000 + missing);
    const auto result = sum.Finish();
    ASSERT_FALSE(result);
    EXPECT_EQ(Describe(result.Error()), "the file became shorter while it was written");
  }
}

TEST(GrowingSum, a_file_that_can_not_be_read_is_a_failure) {
  const os::FileDescriptor file(open("/dev/null", O_WRONLY | O_CLOEXEC));
  GrowingSum sum(file.Get());
  sum.Grow(10);
  const auto result = sum.Finish();
  ASSERT_FALSE(result);
  EXPECT_EQ(result.Error().error, EBADF);
}

TEST(GrowingSum, one_that_is_dropped_ends_its_thread) {
  for (int round = 0; round < 100; ++round) {
    const os::FileDescriptor file = MemoryFile();
    GrowingSum sum(file.Get());
    ASSERT_TRUE(os::WriteAll(file.Get(), Pixels(2000)));
    sum.Grow(round % 2 == 0 ? 2000 : 50 * MebiByte);
  }
}

}  // namespace
}  // namespace rastrel::interpreter
