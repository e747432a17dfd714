#include "rastrel/conversion/page_size.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/standalone/standalone_host.h"
#include "tests/conversion/queue_fixture.h"

namespace os = rastrel::os;
using rastrel::test::Lines;

namespace {

class PageSizeTest : public rastrel::test::QueueTest {
 protected:
  PageSizeTest() { Queue("echo QRAST:bbox 1 11 8.5 2 >&2\n"); }
  ~PageSizeTest() override { ExpectNothingLeft(); }

  int Measure() { return GetPSPageSize(Root().Wide("job/sign.ps").c_str(), m_Bounds); }
  /// Temporary files in the RIP directory.
  [[nodiscard]] Lines Left() const {
    Lines names;
    for (const std::string& name : Tree("Queue/rip"))
      if (name.starts_with("vk")) names.push_back(name);
    return names;
  }

  BOUNDS m_Bounds{.xmin = 9, .xmax = 9, .ymin = 9, .ymax = 9};
};

const BOUNDS Untouched{.xmin = 9, .xmax = 9, .ymin = 9, .ymax = 9};

TEST_F(PageSizeTest, turns_inches_into_centimetres_and_sizes_into_ends) {
  EXPECT_EQ(Measure(), 1);
  EXPECT_EQ(m_Bounds.xmin, static_cast<double>(2.54F));
  EXPECT_EQ(m_Bounds.ymin, static_cast<double>(5.08F));
  EXPECT_EQ(m_Bounds.xmax, static_cast<double>(2.54F) + static_cast<double>(8.5F * 2.54F));
  EXPECT_EQ(m_Bounds.ymax, static_cast<double>(5.08F) + static_cast<double>(11.0F * 2.54F));
  EXPECT_EQ(Left(), Lines()) << "the copy is gone";
}

TEST_F(PageSizeTest, multiplies_in_single_precision_and_adds_in_double) {
  Queue("echo QRAST:bbox 0.1 0.3 0.7 0.1 >&2\n");
  EXPECT_EQ(Measure(), 1);
  const float x = 0.1F * 2.54F;
  const float width = 0.7F * 2.54F;
  EXPECT_EQ(m_Bounds.xmax, static_cast<double>(x) + static_cast<double>(width));
  EXPECT_NE(m_Bounds.xmax, 0.8 * 2.54);
}

TEST_F(PageSizeTest, gives_the_program_a_lower_case_copy_with_a_header_and_no_cut_line) {
  Queue(R"(printf '%s' "$3" > "$RASTREL_HOME/path"
found=$(ls "$RASTREL_HOME"/Queue/rip/vk*.ps)
cp "$found" "$RASTREL_HOME/copy"
)");
  Measure();
  EXPECT_EQ(Root().Read("copy"),
            "%#Velumark Header 2.0\r\n%#Begin Job: 0\r\n%# Title: MyJob\r\n%#Type=Print\r\n"
            "%#End Job\r\n%!PS\nshowpage\n");
  const std::string path = Root().Read("path");
  EXPECT_EQ(
      std::find_if(path.begin(), path.end(), [](char one) { return one >= 'A' && one <= 'Z'; }),
      path.end())
      << path;
  EXPECT_NE(path.find("\\rip\\vk"), path.npos) << path;
}

TEST_F(PageSizeTest, has_the_host_show_that_it_is_busy) {
  class BusyHost : public rastrel::standalone::StandaloneHost {
   public:
    BusyHost() { rastrel::host::SetHost(this); }
    ~BusyHost() override { rastrel::host::SetHost(nullptr); }
    void BeginWaitCursor() override { ++m_Times; }
    int m_Times = 0;
  } host;
  EXPECT_EQ(Measure(), 1);
  EXPECT_EQ(host.m_Times, 1);
}

TEST_F(PageSizeTest, leaves_the_file_itself_alone) {
  Measure();
  EXPECT_EQ(Root().Read("job/sign.ps"), "%!PS\nshowpage\n");
}

TEST_F(PageSizeTest, keeps_the_copy_if_files_are_to_be_kept) {
  KeepFiles();
  EXPECT_EQ(Measure(), 1);
  ASSERT_EQ(Left().size(), 1U);
  EXPECT_TRUE(Left()[0].ends_with(".ps"));
}

TEST_F(PageSizeTest, is_0_and_touches_nothing_if_the_program_fails) {
  Queue("echo QRAST:bbox 1 11 8.5 2 >&2\nexit 2\n");
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(m_Bounds, Untouched);
  EXPECT_EQ(Left(), Lines());
}

TEST_F(PageSizeTest, is_0_without_a_box) {
  Queue("echo QRAST:xdpi 72 >&2\n");
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(m_Bounds, Untouched);
}

TEST_F(PageSizeTest, takes_a_side_of_exactly_minus_1_for_a_missing_one) {
  for (const char* box : {"-1 11 8 0", "0 -1 8 0", "0 11 -1 0", "0 11 8 -1.0"}) {
    Queue(std::string("echo QRAST:bbox ") + box + " >&2\n");
    EXPECT_EQ(Measure(), 0) << box;
  }
  Queue("echo QRAST:bbox -1.001 11 8 0 >&2\n");
  EXPECT_EQ(Measure(), 1);
}

TEST_F(PageSizeTest, is_0_without_the_program_and_leaves_no_copy) {
  std::filesystem::remove(Root().Path(QueueProgram));
  m_Mark = m_Library.LogMark();
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(Logged(), Lines{"[QRast] qrast executable missing."});
  EXPECT_EQ(Left(), Lines());
}

TEST_F(PageSizeTest, of_no_path_a_missing_file_or_a_directory_is_0) {
  EXPECT_EQ(GetPSPageSize(nullptr, m_Bounds), 0);
  EXPECT_EQ(GetPSPageSize(Root().Wide("job/none.ps").c_str(), m_Bounds), 0);
  EXPECT_EQ(GetPSPageSize(Root().Wide("job").c_str(), m_Bounds), 0);
  EXPECT_EQ(Left(), Lines());
}

TEST_F(PageSizeTest, without_a_name_for_the_copy_is_0) {
  const os::SystemCallsGuard guard;
  os::Calls().random = [](void*, std::size_t) -> ssize_t { return errno = ENOSYS, -1; };
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(Left(), Lines());
}

TEST_F(PageSizeTest, leaves_the_copy_if_its_header_can_not_be_written) {
  const os::SystemCallsGuard guard;
  static os::SystemCalls machine;
  machine = os::Calls();
  os::Calls().open = [](const char* path, int flags, mode_t mode) {
    if (std::string(path).find("vktmp") != std::string::npos) return errno = EACCES, -1;
    return machine.open(path, flags, mode);
  };
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(m_Bounds, Untouched);
  ASSERT_EQ(Left().size(), 1U);
  EXPECT_EQ(Root().Read("Queue/rip/" + Left()[0]), "%!PS\nshowpage\n");
}

}  // namespace
