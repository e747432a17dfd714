#include "rastrel/platform/os/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "rastrel/platform/os/file_lock.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/environment_guard.h"
#include "tests/support/error_number.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_directory.h"

namespace os = rastrel::os;
using rastrel::test::ErrorNumber;
using rastrel::test::OpenDescriptors;
using rastrel::test::OrdinaryUser;
using ScratchDirectory = rastrel::test::MemoryScratchDirectory;

namespace {

mode_t ModeOf(const std::string& path) {
  struct stat state {};
  EXPECT_EQ(::lstat(path.c_str(), &state), 0);
  return state.st_mode & 07777U;
}

std::size_t EntriesOf(const ScratchDirectory& scratch) {
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator(scratch.Path()), {}));
}

ssize_t FailToWrite(int, const void*, size_t) {
  errno = ENOSPC;
  return -1;
}

ssize_t FailToRead(int, void*, size_t) {
  errno = EIO;
  return -1;
}

ssize_t FailToCopyRange(int, off64_t*, int, off64_t*, size_t, unsigned) {
  errno = EXDEV;
  return -1;
}

}  // namespace

TEST(Exists, finds_a_file_of_any_kind) {
  const ScratchDirectory scratch;
  scratch.Write("File", "x");
  ASSERT_EQ(::mkfifo(scratch.Path("pipe").c_str(), 0600), 0);
  ASSERT_EQ(::symlink("/no/such/place", scratch.Path("nowhere").c_str()), 0);
  EXPECT_TRUE(os::Exists(scratch.Wide()));
  EXPECT_TRUE(os::Exists(scratch.Wide("file")));
  EXPECT_TRUE(os::Exists(scratch.Wide("pipe")));
  EXPECT_FALSE(os::Exists(scratch.Wide("nowhere")));
  EXPECT_FALSE(os::Exists(scratch.Wide("none")));
  EXPECT_FALSE(os::Exists(L""));
}

TEST(IsDirectory, follows_links) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  ASSERT_EQ(::symlink(".", scratch.Path("link").c_str()), 0);
  EXPECT_TRUE(os::IsDirectory(scratch.Wide("link")));
  EXPECT_FALSE(os::IsDirectory(scratch.Wide("file")));
  EXPECT_FALSE(os::IsDirectory(scratch.Wide("none")));
}

TEST(CheckDirectory, says_why_a_path_leads_to_none) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  ASSERT_EQ(::symlink("loop", scratch.Path("loop").c_str()), 0);
  EXPECT_TRUE(os::CheckDirectory(scratch.Wide()));
  EXPECT_EQ(os::CheckDirectory(scratch.Wide("none")).Error().error, ENOENT);
  EXPECT_EQ(os::CheckDirectory(scratch.Wide("file")).Error().error, ENOTDIR);
  EXPECT_EQ(os::CheckDirectory(scratch.Wide("loop")).Error().error, ELOOP);
}

TEST(IsReadable, agrees_with_the_kernel) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  EXPECT_TRUE(os::IsReadable(scratch.Wide("file")));
  EXPECT_FALSE(os::IsReadable(scratch.Wide("none")));
  ASSERT_EQ(::chmod(scratch.Path("file").c_str(), 0), 0);
  EXPECT_EQ(os::IsReadable(scratch.Wide("file")), ::geteuid() == 0);
  const OrdinaryUser user;
  const ScratchDirectory other;
  other.Write("file", "x");
  EXPECT_TRUE(os::IsReadable(other.Wide("file")));
  ASSERT_EQ(::chmod(other.Path("file").c_str(), 0), 0);
  EXPECT_FALSE(os::IsReadable(other.Wide("file")));
}

TEST(FileSize, is_that_of_regular_files_only) {
  const ScratchDirectory scratch;
  scratch.Write("file", "12345");
  EXPECT_EQ(os::FileSize(scratch.Wide("file")), 5U);
  EXPECT_EQ(os::FileSize(scratch.Wide()), 0U);
  EXPECT_EQ(os::FileSize(scratch.Wide("none")), 0U);
}

TEST(FileSize, beyond_32_bits_is_returned_whole) {
  const ScratchDirectory scratch;
  scratch.Write("file", "");
  ASSERT_EQ(::truncate(scratch.Path("file").c_str(), 5'000'000'000), 0);
  EXPECT_EQ(os::FileSize(scratch.Wide("file")), 5'000'000'000U);
}

TEST(LastChangeOf, is_that_of_the_entry_itself_whatever_its_content_s_time) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  std::filesystem::create_symlink("none", scratch.Path("link"));
  const auto before = os::LastChangeOf(scratch.Wide("file"));
  ASSERT_TRUE(before);
  const timespec times[2] = {{5, 7}, {5, 7}};
  ASSERT_EQ(::utimensat(AT_FDCWD, scratch.Path("file").c_str(), times, 0), 0);
  EXPECT_GE(*os::LastChangeOf(scratch.Wide("file")), *before);
  EXPECT_GE(*os::LastChangeOf(scratch.Wide("link")), *before) << "of the link";
  EXPECT_EQ(os::LastChangeOf(scratch.Wide("none")).Error().error, ENOENT);
}

TEST(StampOf, changes_with_size_and_time) {
  const ScratchDirectory scratch;
  scratch.Write("file", "1");
  const timespec times[2] = {{5, 7}, {5, 7}};
  ASSERT_EQ(::utimensat(AT_FDCWD, scratch.Path("file").c_str(), times, 0), 0);
  const auto stamp = os::StampOf(scratch.Wide("file"));
  ASSERT_TRUE(stamp);
  EXPECT_EQ(*stamp, (os::FileStamp{.size = 1, .modified = 5'000'000'007}));
  const auto none = os::StampOf(scratch.Wide("none"));
  ASSERT_FALSE(none);
  EXPECT_EQ(none.Error().error, ENOENT);
}

TEST(MakeDirectory, makes_one_and_fails_where_something_is) {
  const ScratchDirectory scratch;
  EXPECT_TRUE(os::MakeDirectory(scratch.Wide("new")));
  EXPECT_EQ(ErrorNumber(os::MakeDirectory(scratch.Wide("new"))), EEXIST);
  EXPECT_EQ(ErrorNumber(os::MakeDirectory(scratch.Wide("a/b"))), ENOENT);
}

TEST(RemoveFile, removes_files_and_links_and_never_directories) {
  const ScratchDirectory scratch;
  scratch.Write("dir/file", "x");
  ASSERT_EQ(::symlink("dir", scratch.Path("link").c_str()), 0);
  EXPECT_FALSE(os::RemoveFile(scratch.Wide("dir")));
  EXPECT_TRUE(os::RemoveFile(scratch.Wide("link")));
  EXPECT_TRUE(os::RemoveFile(scratch.Wide("dir/file")));
  EXPECT_FALSE(os::RemoveFile(scratch.Wide("dir/file")));
}

TEST(RenameFile, takes_the_place_of_an_existing_file) {
  const ScratchDirectory scratch;
  scratch.Write("a", "new");
  scratch.Write("b", "old");
  EXPECT_TRUE(os::RenameFile(scratch.Wide("a"), scratch.Wide("b")));
  EXPECT_EQ(scratch.Read("b"), "new");
  EXPECT_EQ(ErrorNumber(os::RenameFile(scratch.Wide("a"), scratch.Wide("c"))), ENOENT);
}

TEST(ClearReadOnly, sets_the_owners_write_bit_and_no_other) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  ASSERT_EQ(::chmod(scratch.Path("file").c_str(), 0451), 0);
  auto readOnly = os::IsReadOnly(scratch.Wide("file"));
  ASSERT_TRUE(readOnly);
  EXPECT_TRUE(*readOnly);
  EXPECT_TRUE(os::ClearReadOnly(scratch.Wide("file")));
  EXPECT_EQ(ModeOf(scratch.Path("file")), 0651U);
  readOnly = os::IsReadOnly(scratch.Wide("file"));
  ASSERT_TRUE(readOnly);
  EXPECT_FALSE(*readOnly);
}

TEST(ClearReadOnly, a_missing_file_is_a_failure) {
  EXPECT_FALSE(os::ClearReadOnly(L"/no/such/file"));
  const auto readOnly = os::IsReadOnly(L"/no/such/file");
  ASSERT_FALSE(readOnly);
  EXPECT_EQ(readOnly.Error().error, ENOENT);
  EXPECT_EQ(readOnly.Error().where, "/no/such/file");
}

TEST(ReadWholeFile, reads_up_to_the_limit_and_no_further) {
  const ScratchDirectory scratch;
  const std::string content(300'001, 'q');
  scratch.Write("file", content);
  for (const std::uint64_t limit : {300'001U, 300'002U}) {
    const auto read = os::ReadWholeFile(scratch.Wide("file"), limit);
    ASSERT_TRUE(read);
    EXPECT_EQ(*read, content);
  }
  const auto tooLarge = os::ReadWholeFile(scratch.Wide("file"), 300'000);
  ASSERT_FALSE(tooLarge);
  EXPECT_EQ(tooLarge.Error().error, EFBIG);
}

TEST(ReadWholeFile, a_file_without_a_size_is_read_and_limited_too) {
  const auto read = os::ReadWholeFile(L"/proc/self/status", 1 << 20);
  ASSERT_TRUE(read);
  EXPECT_TRUE(read->starts_with("Name:"));
  const auto tooLarge = os::ReadWholeFile(L"/proc/self/status", 5);
  ASSERT_FALSE(tooLarge);
  EXPECT_EQ(tooLarge.Error().error, EFBIG);
}

TEST(ReadWholeFile, a_pipe_or_directory_is_refused_without_waiting) {
  const ScratchDirectory scratch;
  ASSERT_EQ(::mkfifo(scratch.Path("pipe").c_str(), 0600), 0);
  for (const std::wstring& path : {scratch.Wide("pipe"), scratch.Wide()}) {
    const auto read = os::ReadWholeFile(path, 100);
    ASSERT_FALSE(read);
    EXPECT_EQ(read.Error().error, EINVAL);
  }
}

TEST(ReadWholeFile, a_failing_read_is_reported_with_its_number) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  const os::SystemCallsGuard guard;
  os::Calls().read = FailToRead;
  const auto read = os::ReadWholeFile(scratch.Wide("file"), 100);
  ASSERT_FALSE(read);
  EXPECT_EQ(rastrel::Describe(read.Error()),
            "read '" + scratch.Path("file") + "': Input/output error (5)");
}

TEST(ReplaceFile, makes_a_new_file_and_replaces_an_old_one_with_its_mode) {
  const ScratchDirectory scratch;
  EXPECT_TRUE(os::ReplaceFile(scratch.Wide("file"), "one"));
  EXPECT_EQ(scratch.Read("file"), "one");
  ASSERT_EQ(::chmod(scratch.Path("file").c_str(), 0600), 0);
  EXPECT_TRUE(os::ReplaceFile(scratch.Wide("file"), std::string("t\0wo", 4)));
  EXPECT_EQ(scratch.Read("file"), std::string("t\0wo", 4));
  EXPECT_EQ(ModeOf(scratch.Path("file")), 0600U);
  EXPECT_EQ(EntriesOf(scratch), 1U);
}

TEST(ReplaceFile, a_link_stays_and_its_target_is_replaced) {
  const ScratchDirectory scratch;
  scratch.Write("dir/real", "old");
  ASSERT_EQ(::symlink("dir/real", scratch.Path("link").c_str()), 0);
  EXPECT_TRUE(os::ReplaceFile(scratch.Wide("link"), "new"));
  EXPECT_TRUE(std::filesystem::is_symlink(scratch.Path("link")));
  EXPECT_EQ(scratch.Read("dir/real"), "new");
}

TEST(ReplaceFile, a_missing_parent_or_a_directory_in_the_place_is_a_failure) {
  const ScratchDirectory scratch;
  const auto missing = os::ReplaceFile(scratch.Wide("no/file"), "x");
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.Error().error, ENOENT);
  const auto directory = os::ReplaceFile(scratch.Wide(), "x");
  ASSERT_FALSE(directory);
  EXPECT_EQ(directory.Error().error, EISDIR);
  const auto device = os::ReplaceFile(L"/dev/null", "x");
  ASSERT_FALSE(device);
  EXPECT_EQ(device.Error().error, EINVAL);
}

TEST(ReplaceFile, a_failing_write_leaves_the_old_content_and_nothing_else) {
  const ScratchDirectory scratch;
  scratch.Write("file", "old");
  {
    const os::SystemCallsGuard guard;
    os::Calls().write = FailToWrite;
    const auto replaced = os::ReplaceFile(scratch.Wide("file"), "new");
    ASSERT_FALSE(replaced);
    EXPECT_EQ(replaced.Error().error, ENOSPC);
  }
  EXPECT_EQ(scratch.Read("file"), "old");
  EXPECT_EQ(EntriesOf(scratch), 1U);
}

TEST(CreateForWriting, truncates_is_closed_on_exec_and_never_standard) {
  const ScratchDirectory scratch;
  scratch.Write("file", "old");
  const int saved = ::dup(0);
  ::close(0);
  {
    const auto file = os::CreateForWriting(scratch.Wide("file"));
    ASSERT_TRUE(file);
    EXPECT_GT(file->Get(), 2);
    EXPECT_EQ(::fcntl(file->Get(), F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(0, F_GETFD), -1);
    EXPECT_TRUE(os::WriteAll(file->Get(), "n"));
  }
  ::dup2(saved, 0);
  ::close(saved);
  EXPECT_EQ(scratch.Read("file"), "n");
}

TEST(CreateForWriting, a_failing_copy_of_a_low_descriptor_is_a_failure_without_a_leak) {
  const ScratchDirectory scratch;
  const int saved = ::dup(0);
  ::close(0);
  const std::size_t before = OpenDescriptors();
  {
    const os::SystemCallsGuard guard;
    os::Calls().duplicate = [](int, int) {
      errno = EMFILE;
      return -1;
    };
    const auto file = os::CreateForWriting(scratch.Wide("file"));
    const int error = file ? 0 : file.Error().error;
    EXPECT_EQ(error, EMFILE);
  }
  EXPECT_EQ(OpenDescriptors(), before);
  ::dup2(saved, 0);
  ::close(saved);
}

TEST(CreateForWriting, a_missing_directory_is_a_failure) {
  const auto file = os::CreateForWriting(L"C:\\no\\such\\file");
  ASSERT_FALSE(file);
  EXPECT_EQ(file.Error().what, "open");
  EXPECT_EQ(file.Error().error, ENOENT);
}

TEST(CreateLog, can_be_read_back_and_is_private) {
  const ScratchDirectory scratch;
  const auto file = os::CreateLog(scratch.Wide("log"));
  ASSERT_TRUE(file);
  EXPECT_EQ(ModeOf(scratch.Path("log")), 0600U);
  EXPECT_EQ(::fcntl(file->Get(), F_GETFL) & O_ACCMODE, O_RDWR);
}

TEST(OpenForReading, opens_existing_files_alone) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  EXPECT_TRUE(os::OpenForReading(scratch.Wide("file")));
  EXPECT_FALSE(os::OpenForReading(scratch.Wide("none")));
  EXPECT_TRUE(os::OpenForWriting(scratch.Wide("file")));
  EXPECT_EQ(scratch.Read("file"), "x");
  EXPECT_FALSE(os::OpenForWriting(scratch.Wide("none")));
}

TEST(WriteAll, goes_on_after_short_writes_and_interruptions) {
  static std::string written;
  static int calls;
  written.clear();
  calls = 0;
  const os::SystemCallsGuard guard;
  os::Calls().write = [](int, const void* bytes, size_t count) -> ssize_t {
    if (++calls % 2 == 0) {
      errno = EINTR;
      return -1;
    }
    const size_t some = std::min<size_t>(count, 3);
    written.append(static_cast<const char*>(bytes), some);
    return static_cast<ssize_t>(some);
  };
  EXPECT_TRUE(os::WriteAll(99, "0123456789"));
  EXPECT_EQ(written, "0123456789");
}

TEST(WriteAll, a_write_that_takes_nothing_is_a_failure_and_no_endless_loop) {
  const os::SystemCallsGuard guard;
  os::Calls().write = [](int, const void*, size_t) -> ssize_t { return 0; };
  EXPECT_EQ(ErrorNumber(os::WriteAll(99, "x")), EIO);
}

TEST(WriteAll, a_full_device_is_reported) {
  const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  EXPECT_EQ(ErrorNumber(os::WriteAll(full, "x")), ENOSPC);
  ::close(full);
}

TEST(CopyFileOver, takes_content_permissions_and_time_and_replaces) {
  const ScratchDirectory scratch;
  scratch.Write("source", std::string(1'000'000, 's'));
  scratch.Write("target", std::string(2'000'000, 't'));
  ASSERT_EQ(::chmod(scratch.Path("source").c_str(), 0640), 0);
  const timespec times[2] = {{100, 1}, {200, 2}};
  ASSERT_EQ(::utimensat(AT_FDCWD, scratch.Path("source").c_str(), times, 0), 0);
  ASSERT_TRUE(os::CopyFileOver(scratch.Wide("source"), scratch.Wide("target")));
  EXPECT_EQ(scratch.Read("target"), std::string(1'000'000, 's'));
  EXPECT_EQ(ModeOf(scratch.Path("target")), 0640U);
  EXPECT_EQ(os::StampOf(scratch.Wide("target"))->modified, 200'000'000'002);
}

TEST(CopyFileOver, where_the_kernel_can_not_copy_memory_does) {
  const ScratchDirectory scratch;
  const std::string content(700'001, 'm');
  scratch.Write("source", content);
  const os::SystemCallsGuard guard;
  os::Calls().copy_range = FailToCopyRange;
  ASSERT_TRUE(os::CopyFileOver(scratch.Wide("source"), scratch.Wide("target")));
  EXPECT_EQ(scratch.Read("target"), content);
}

TEST(CopyFileOver, memory_takes_over_where_the_kernel_stopped_in_the_middle) {
  const ScratchDirectory scratch;
  std::string content;
  for (int line = 0; line < 50'000; ++line) content += std::to_string(line);
  scratch.Write("source", content);
  const os::SystemCallsGuard guard;
  static int calls;
  calls = 0;
  os::Calls().copy_range = [](int source, off64_t* from, int target, off64_t* to, size_t count,
                              unsigned flags) -> ssize_t {
    if (++calls > 2) return FailToCopyRange(source, from, target, to, count, flags);
    return ::copy_file_range(source, from, target, to, 1000, flags);
  };
  ASSERT_TRUE(os::CopyFileOver(scratch.Wide("source"), scratch.Wide("target")));
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(scratch.Read("target"), content);
}

TEST(CopyFileOver, a_file_without_a_size_is_copied_whole) {
  const ScratchDirectory scratch;
  ASSERT_TRUE(os::CopyFileOver(L"/proc/version", scratch.Wide("target")));
  EXPECT_FALSE(scratch.Read("target").empty());
}

TEST(CopyFileOver, a_failing_write_leaves_no_half_target) {
  const ScratchDirectory scratch;
  scratch.Write("source", "content");
  const os::SystemCallsGuard guard;
  os::Calls().copy_range = FailToCopyRange;
  os::Calls().write = FailToWrite;
  const auto copied = os::CopyFileOver(scratch.Wide("source"), scratch.Wide("target"));
  ASSERT_FALSE(copied);
  EXPECT_EQ(copied.Error().error, ENOSPC);
  EXPECT_FALSE(scratch.Has("target"));
}

TEST(CopyFileOver, onto_itself_is_a_failure_that_keeps_the_file) {
  const ScratchDirectory scratch;
  scratch.Write("file", "content");
  ASSERT_EQ(::link(scratch.Path("file").c_str(), scratch.Path("same").c_str()), 0);
  EXPECT_FALSE(os::CopyFileOver(scratch.Wide("file"), scratch.Wide("file")));
  EXPECT_FALSE(os::CopyFileOver(scratch.Wide("file"), scratch.Wide("same")));
  EXPECT_EQ(scratch.Read("file"), "content");
}

TEST(CopyFileOver, a_file_that_is_not_regular_is_refused_without_waiting) {
  const ScratchDirectory scratch;
  scratch.Write("file", "content");
  ASSERT_EQ(::mkfifo(scratch.Path("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(os::CopyFileOver(scratch.Wide("pipe"), scratch.Wide("target")));
  EXPECT_FALSE(os::CopyFileOver(scratch.Wide("file"), scratch.Wide("pipe")));
  EXPECT_FALSE(os::CopyFileOver(scratch.Wide(), scratch.Wide("target")));
  EXPECT_FALSE(os::CopyFileOver(scratch.Wide("none"), scratch.Wide("target")));
  EXPECT_FALSE(scratch.Has("target"));
}

TEST(WriteToStandardError, failures_are_ignored) {
  const os::SystemCallsGuard guard;
  os::Calls().write = FailToWrite;
  os::WriteToStandardError("nobody reads this");
}

TEST(FileLock, one_holder_at_a_time_among_threads) {
  const ScratchDirectory scratch;
  std::atomic<int> inside{0};
  std::atomic<int> crowded{0};
  std::atomic<int> rounds{0};
  const auto body = [&] {
    for (int round = 0; round < 200; ++round) {
      const auto lock = os::FileLock::Acquire(scratch.Wide("lock"));
      if (!lock) return;
      if (++inside != 1) ++crowded;
      std::this_thread::yield();
      --inside;
      ++rounds;
    }
  };
  std::vector<std::jthread> threads;
  for (int count = 0; count < 4; ++count) threads.emplace_back(body);
  threads.clear();
  EXPECT_EQ(crowded, 0);
  EXPECT_EQ(rounds, 800);
}

TEST(FileLock, a_file_that_can_not_be_made_is_a_failure) {
  const auto lock = os::FileLock::Acquire(L"/no/such/lock");
  ASSERT_FALSE(lock);
  EXPECT_EQ(lock.Error().error, ENOENT);
}

TEST(IsRegularFile, follows_links_and_is_false_for_any_other_kind) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  ASSERT_EQ(::symlink("file", scratch.Path("link").c_str()), 0);
  ASSERT_EQ(::mkfifo(scratch.Path("pipe").c_str(), 0600), 0);
  EXPECT_TRUE(os::IsRegularFile(scratch.Wide("file")));
  EXPECT_TRUE(os::IsRegularFile(scratch.Wide("link")));
  EXPECT_FALSE(os::IsRegularFile(scratch.Wide("pipe")));
  EXPECT_FALSE(os::IsRegularFile(scratch.Wide()));
  EXPECT_FALSE(os::IsRegularFile(scratch.Wide("none")));
}
