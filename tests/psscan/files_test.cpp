// Entries that are no ordinary file, and files that change during a scan.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "rastrel/platform/os/system_calls.h"
#include "rastrel/psscan/ps_parser.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/scratch_directory.h"

namespace os = rastrel::os;
using rastrel::test::ScratchDirectory;

namespace {

// Every answer is the refusing one, and nothing was touched.
void ExpectRefused(const std::wstring& path) {
  CPSParser parser(path.c_str());
  long long start = 7;
  long long length = 7;
  EXPECT_FALSE(parser.FindEPSStart(start, length));
  EXPECT_EQ(start, 0);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(IsEPSFile(path.c_str()), 0);
  EXPECT_EQ(IsPostscriptFile(path.c_str()), 0);
  CRect rect{1, 2, 3, 4};
  EXPECT_FALSE(parser.GetBounds(rect));
  EXPECT_EQ(rect, CRect());
  std::vector<CString> names;
  EXPECT_FALSE(parser.GetBoundsAndStrings(rect, names));
  EXPECT_TRUE(names.empty());
  CSpotMatchList list;
  BOUNDS bounds{1, 2, 3, 4};
  EXPECT_FALSE(parser.LoadSpotMatchItems(&list));
  EXPECT_FALSE(parser.LoadSpotItemsAndBounds(&list, bounds));
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(bounds, (BOUNDS{1, 2, 3, 4}));
}

void Extend(const std::string& path, long size) {
  ASSERT_EQ(::truncate(path.c_str(), size), 0) << "the file system holds no such file";
}

long PeakKilobytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

}  // namespace

TEST(CPSParser, a_missing_file_is_refused) { ExpectRefused(L"/nowhere/at/all.eps"); }

TEST(CPSParser, an_empty_path_is_refused) { ExpectRefused(L""); }

TEST(CPSParser, an_empty_file_is_refused) {
  const ScratchDirectory scratch;
  scratch.Write("empty.eps", "");
  ExpectRefused(scratch.Wide("empty.eps"));
}

TEST(CPSParser, a_directory_is_refused) {
  const ScratchDirectory scratch;
  ExpectRefused(scratch.Wide());
}

TEST(CPSParser, a_pipe_is_refused_at_once_though_nobody_writes) {
  const ScratchDirectory scratch;
  ASSERT_EQ(::mkfifo(scratch.Path("pipe.eps").c_str(), 0600), 0);
  ExpectRefused(scratch.Wide("pipe.eps"));
}

TEST(CPSParser, a_device_that_never_ends_is_refused) { ExpectRefused(L"/dev/zero"); }

TEST(CPSParser, a_file_without_read_permission_is_refused) {
  const ScratchDirectory scratch;
  scratch.Write("closed.eps", "%!PS-Adobe EPSF\n%%BoundingBox: 1 2 3 4\nx\n");
  ASSERT_EQ(::chmod(scratch.Path("closed.eps").c_str(), 0), 0);
  ASSERT_EQ(::chmod(scratch.Path().c_str(), 0755), 0);
  // The superuser may read everything, so the scans run as nobody then.
  const uid_t user = ::geteuid();
  if (user == 0) {
    ASSERT_EQ(::seteuid(65534), 0);
  }
  ExpectRefused(scratch.Wide("closed.eps"));
  ASSERT_EQ(::seteuid(user), 0);
}

TEST(CPSParser, a_path_with_backslashes_and_other_case_is_found) {
  const ScratchDirectory scratch;
  scratch.Write("Art/Sign.eps", "%!PS-Adobe EPSF\n");
  EXPECT_EQ(IsEPSFile((scratch.Wide() + L"\\art\\SIGN.EPS").c_str()), 1);
}

TEST(CPSParser, no_descriptor_stays_open) {
  const ScratchDirectory scratch;
  scratch.Write("a.eps", "%!PS-Adobe EPSF\n%%BoundingBox: 1 2 3 4\nx\n");
  const std::size_t before = rastrel::test::OpenDescriptors();
  CSpotMatchList list;
  CRect rect;
  CPSParser parser(scratch.Wide("a.eps").c_str());
  EXPECT_TRUE(parser.LoadSpotMatchItems(&list));
  EXPECT_TRUE(parser.GetBounds(rect));
  EXPECT_EQ(rastrel::test::OpenDescriptors(), before);
}

TEST(CPSParser, header_questions_about_5_gib_read_a_few_kilobytes) {
  static std::atomic<std::size_t> bytesRead;
  const ScratchDirectory scratch;
  scratch.Write("huge.eps", "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 1 2 3 4\n%%EndComments\n");
  Extend(scratch.Path("huge.eps"), 5L << 30);
  const os::SystemCallsGuard guard;
  os::Calls().read = [](int descriptor, void* bytes, size_t count) -> ssize_t {
    const ssize_t got = ::read(descriptor, bytes, count);
    bytesRead += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    return got;
  };
  CRect rect;
  const std::wstring path = scratch.Wide("huge.eps");
  bytesRead = 0;
  EXPECT_EQ(IsEPSFile(path.c_str()), 1);
  EXPECT_EQ(IsPostscriptFile(path.c_str()), 1);
  EXPECT_TRUE(CPSParser(path.c_str()).GetBounds(rect));
  EXPECT_LE(bytesRead, 3U * 8192);
}

TEST(CPSParser, the_length_of_5_gib_costs_the_trailing_bytes_that_are_no_letters) {
  static std::atomic<std::size_t> bytesRead;
  const ScratchDirectory scratch;
  scratch.Write("huge.eps", "%!PS-Adobe-3.0 EPSF-3.0\n");
  const std::string path = scratch.Path("huge.eps");
  Extend(path, 5L << 30);
  const int file = ::open(path.c_str(), O_WRONLY | O_APPEND);
  ASSERT_EQ(::write(file, "%%EOF\n", 6), 6);
  ::close(file);
  const os::SystemCallsGuard guard;
  os::Calls().read = [](int descriptor, void* bytes, size_t count) -> ssize_t {
    bytesRead += count;
    return ::read(descriptor, bytes, count);
  };
  bytesRead = 0;
  long long start = 0;
  long long length = 0;
  EXPECT_TRUE(CPSParser(scratch.Wide("huge.eps").c_str()).FindEPSStart(start, length));
  EXPECT_EQ(length, (5LL << 30) + 5);
  EXPECT_LE(bytesRead, 16384U);
}

TEST(CPSParser, a_whole_scan_of_5_gib_without_data_ends_in_flat_memory) {
  const ScratchDirectory scratch;
  scratch.Write("huge.eps", "%!PS-Adobe-3.0\n");
  Extend(scratch.Path("huge.eps"), 5L << 30);
  CPSParser parser(scratch.Wide("huge.eps").c_str());
  CSpotMatchList list;
  const long before = PeakKilobytes();
  EXPECT_TRUE(parser.LoadSpotMatchItems(&list));  // an empty line never ends this header
  EXPECT_LE(PeakKilobytes() - before, 8192);
}

TEST(CPSParser, a_file_of_2_to_4_gib_is_read_through_and_a_larger_one_jumps) {
  // As a signed number of 32 bits the first size is negative, and the second is 1 GiB.
  const std::string lists = "%%DocumentCustomColors: A\n%%RGBCustomColor: 1 1 1 A\n%%EOF\n";
  const std::string head = "%!PS\n%%DocumentCustomColors: (atend)\n%%EndComments\n";
  const ScratchDirectory scratch;
  scratch.Write("negative.eps", head + lists);
  Extend(scratch.Path("negative.eps"), 3L << 30);
  scratch.Write("wrapped.eps", head + lists);
  Extend(scratch.Path("wrapped.eps"), 5L << 30);
  CSpotMatchList list;
  EXPECT_TRUE(CPSParser(scratch.Wide("negative.eps").c_str()).LoadSpotMatchItems(&list));
  EXPECT_EQ(list.size(), 1U);
  // After the first GiB less one MiB there is nothing but zeros: 4 GiB of empty lines would have
  // to be read for an end, so it gets one near the jump's target.
  const int file = ::open(scratch.Path("wrapped.eps").c_str(), O_WRONLY);
  const std::string found = "\n%%DocumentCustomColors: B\n%%RGBCustomColor: 1 1 1 B\n%%EOF\n";
  ASSERT_EQ(::pwrite(file, found.data(), found.size(), (1L << 30) - 0x100000 + 100),
            static_cast<ssize_t>(found.size()));
  ::close(file);
  list = CSpotMatchList();
  EXPECT_TRUE(CPSParser(scratch.Wide("wrapped.eps").c_str()).LoadSpotMatchItems(&list));
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list.begin()->GetName(), L"B");
}

TEST(CPSParser, a_file_that_shrinks_and_grows_under_the_scans_is_survived) {
  const ScratchDirectory scratch;
  std::string content = "%!PS-Adobe EPSF\n%%DocumentCustomColors: (atend)\n";
  for (int line = 0; line < 60000; ++line) content += "%%+ a line of a header without an end\n";
  scratch.Write("moving.eps", content);
  const std::string path = scratch.Path("moving.eps");
  std::atomic<bool> over{false};
  std::thread other([&] {
    for (long size = 0; !over; size = (size * 7 + 1000003) % static_cast<long>(content.size())) {
      if (::truncate(path.c_str(), size) != 0) return;
      if (::truncate(path.c_str(), static_cast<long>(content.size())) != 0) return;
    }
  });
  CPSParser parser(scratch.Wide("moving.eps").c_str());
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(700);
  int scans = 0;
  for (; std::chrono::steady_clock::now() < end; ++scans) {
    CRect rect;
    std::vector<CString> names;
    CSpotMatchList list;
    long long start = 0;
    long long length = 0;
    EXPECT_FALSE(parser.GetBounds(rect));
    (void)parser.GetBoundsAndStrings(rect, names);
    (void)parser.LoadSpotMatchItems(&list);
    (void)parser.FindEPSStart(start, length);
    EXPECT_TRUE(list.empty());
  }
  over = true;
  other.join();
  EXPECT_GT(scans, 0);
}

TEST(CPSParser, one_parser_answers_any_number_of_threads) {
  const ScratchDirectory scratch;
  scratch.Write("a.eps",
                "%!PS-Adobe EPSF\n%%DocumentCustomColors: A\n%%RGBCustomColor: 1 1 1 A\n"
                "%%BoundingBox: 1 2 3 4\nx\n");
  CPSParser parser(scratch.Wide("a.eps").c_str());
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number)
    threads.emplace_back([&parser] {
      for (int round = 0; round < 50; ++round) {
        CRect rect;
        CSpotMatchList list;
        EXPECT_TRUE(parser.GetBounds(rect));
        EXPECT_TRUE(parser.IsEpsFile());
        EXPECT_TRUE(parser.LoadSpotMatchItems(&list));
        EXPECT_EQ(list.size(), 1U);
      }
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(CPSParser, a_file_that_vanishes_while_it_is_scanned_is_read_to_its_end) {
  // The header is over after the first reads; its size can't be had then, so nothing is jumped.
  static std::string path;
  const ScratchDirectory scratch;
  std::string content = "%!PS\n%%DocumentCustomColors: (atend)\n";
  content += "%%EndComments\n%%DocumentCustomColors: A\n%%RGBCustomColor: 1 1 1 A\n";
  for (int line = 0; line < 60000; ++line) content += "100 100 moveto 200 200 lineto\n";
  scratch.Write("gone.eps", content);
  path = scratch.Path("gone.eps");
  const os::SystemCallsGuard guard;
  os::Calls().read = [](int descriptor, void* bytes, size_t count) -> ssize_t {
    ::unlink(path.c_str());
    return ::read(descriptor, bytes, count);
  };
  CSpotMatchList list;
  EXPECT_TRUE(CPSParser(scratch.Wide("gone.eps").c_str()).LoadSpotMatchItems(&list));
  EXPECT_EQ(list.size(), 1U);
  ExpectRefused(scratch.Wide("gone.eps"));
}
