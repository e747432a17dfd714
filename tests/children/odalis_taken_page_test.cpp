#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "pages/plain_tiff.h"
#include "tests/children/odalis_fixture.h"
#include "tests/support/access_list.h"
#include "tests/support/wait_until.h"

// Pages that are plain TIFF files, on their way to a device that takes them as they are: the file
// itself is handed on where nobody needs the page afterwards, and copied everywhere else.
namespace rastrel::odalis {
namespace {

using namespace testing;
namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr int Done = 0;
constexpr int NotDelivered = 1;
constexpr unsigned Width = 40;
constexpr unsigned Height = 30;
const std::string Removed = "RASTREL_PAGES=removed";

struct stat StateOf(const std::string& path) {
  struct stat state {};
  EXPECT_EQ(::stat(path.c_str(), &state), 0) << path;
  return state;
}

class TakenPage : public ::testing::Test {
 protected:
  TakenPage() {
    WriteFile(Root() + "/devices.txt",
              "[Packed]\nkind = file\nformat = tiff\ncompression = lzw\n"
              "pattern = {output}/{job}-{page}.tif\n"
              "[Again]\nkind = file\nformat = tiff\ncompression = none\noverwrite = yes\n"
              "pattern = {output}/{job}-{page}.tif\n"
              "[*]\nkind = file\nformat = tiff\ncompression = none\n"
              "pattern = {output}/{job}-{page}.tif\n");
    m_Info = WriteRgbPage(Page(), "Sign");
    Keep();
  }

  const std::string& Root() const { return m_Directory.Path(); }
  std::string Page() const { return Root() + "/pages/p1"; }
  std::string PageFile() const { return Page() + "/page.tif"; }
  std::string Output() const { return Root() + "/output"; }
  std::string Delivered() const { return Output() + "/Sign-1.tif"; }

  // Makes the page's file the plain TIFF of the test picture, as the RIP does.
  void Keep(pages::TiffResolution resolution = {300, 1}) {
    std::string file =
        pages::PlainTiffHead({Width, Height, 3, resolution, resolution}).value_or("");
    for (unsigned y = 0; y < Height; ++y) {
      for (unsigned x = 0; x < Width; ++x) {
        for (unsigned plane = 0; plane < 3; ++plane)
          file += static_cast<char>(SampleAt(x, y, plane));
      }
    }
    WriteFile(PageFile(), file);
    m_Info.xResolution = m_Info.yResolution = 300;
    for (auto& plane : m_Info.planes) plane.file = "page.tif";
    Describe();
  }
  void Describe() {
    m_Info.files = {DescribeFile(Page(), "page.tif")};
    WriteFile(Page() + "/.info", pages::FormatPageInfo(m_Info));
  }

  // Until a change of a file has another time than the page's file.
  void WaitForLaterChanges() const {
    const std::string path = Root() + "/clock";
    const auto timeOf = [](const struct stat& state) {
      return std::pair(state.st_ctim.tv_sec, state.st_ctim.tv_nsec);
    };
    WriteFile(path, "");
    const auto begun = timeOf(StateOf(path));
    ASSERT_TRUE(rastrel::test::WaitUntil([&] {
      WriteFile(path, "");
      return timeOf(StateOf(path)) > begun;
    }));
  }

  std::unique_ptr<EngineRun> Run(const Names& settings,
                                 const std::vector<Entry>& entries = {{"p1"}},
                                 bool planar = false) const {
    auto run =
        std::make_unique<EngineRun>(Root(), Cfm2(Root() + "/pages/", entries), settings, planar);
    run->Finish();
    return run;
  }

  // The delivered file is the page's own, or another with the same bytes.
  bool IsTaken(const std::string& path) const { return StateOf(path).st_ino == PageInode(); }
  ino_t PageInode() const { return StateOf(PageFile()).st_ino; }

  void ExpectPicture(const std::string& path) const {
    const Picture picture = ReadTiff(path);
    ASSERT_EQ(picture.width, Width);
    ASSERT_EQ(picture.pixels.size(), Width * Height * 3);
    for (unsigned at = 0; at < picture.pixels.size(); ++at)
      ASSERT_EQ(picture.pixels[at], SampleAt(at / 3 % Width, at / 3 / Width, at % 3));
    EXPECT_EQ(picture.xResolution, 300);
    EXPECT_EQ(picture.yResolution, 300);
  }

  pages::PageInfo m_Info;

 private:
  TemporaryDirectory m_Directory;
};

TEST_F(TakenPage, is_the_devices_file_if_the_page_goes_with_its_job) {
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(NamesIn(Output()), Names{"Sign-1.tif"});
  EXPECT_TRUE(IsTaken(Delivered()));
  ExpectPicture(Delivered());
  EXPECT_EQ(run->Lines("OUTPUT: "), Names{Delivered()});
  EXPECT_EQ(run->Lines("PROGRESS: ").back(), "100 %");
}

TEST_F(TakenPage, of_a_page_that_is_kept_is_a_copy_with_the_same_bytes) {
  const auto run = Run({"RASTREL_PAGES=kept"});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_FALSE(IsTaken(Delivered())) << "who edits the file would spoil the kept page";
  EXPECT_EQ(ReadFile(Delivered()), ReadFile(PageFile()));
}

TEST_F(TakenPage, is_a_copy_where_nothing_says_what_becomes_of_the_page) {
  const auto run = Run({});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_FALSE(IsTaken(Delivered()));
}

TEST_F(TakenPage, once_is_taken_and_the_page_is_gone) {
  const ino_t own = PageInode();
  const auto run = Run({}, {{"p1", "once"}});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(StateOf(Delivered()).st_ino, own);
  EXPECT_EQ(StateOf(Delivered()).st_nlink, 1U);
  EXPECT_FALSE(fs::exists(Page()));
  ExpectPicture(Delivered());
}

TEST_F(TakenPage, of_several_copies_is_the_last) {
  const auto run = Run({Removed}, {{"p1", "reprint", 2}, {"p1"}});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_FALSE(IsTaken(Delivered()));
  EXPECT_FALSE(IsTaken(Output() + "/Sign-1-2.tif"));
  EXPECT_TRUE(IsTaken(Output() + "/Sign-1-3.tif"));
  for (const char* name : {"/Sign-1.tif", "/Sign-1-2.tif", "/Sign-1-3.tif"})
    ExpectPicture(Output() + name);
}

TEST_F(TakenPage, has_the_permissions_that_a_new_file_would_have) {
  m_Info.access = 0664;
  Describe();
  const mode_t before = ::umask(0027);
  const auto run = Run({Removed});
  ::umask(before);
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_TRUE(IsTaken(Delivered()));
  EXPECT_EQ(StateOf(Delivered()).st_mode & 07777, 0640U);
}

TEST_F(TakenPage, never_takes_another_files_place) {
  WriteFile(Delivered(), "mine");
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(ReadFile(Delivered()), "mine");
  EXPECT_TRUE(IsTaken(Output() + "/Sign-1-2.tif"));
}

TEST_F(TakenPage, takes_a_files_place_where_the_device_says_so) {
  WriteFile(Delivered(), "old");
  const auto run = Run({Removed, "RASTREL_PRINTER=Again"});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(NamesIn(Output()), Names{"Sign-1.tif"});
  EXPECT_TRUE(IsTaken(Delivered()));
}

TEST_F(TakenPage, whose_file_was_changed_is_not_delivered) {
  std::string file = ReadFile(PageFile());
  file.back() = static_cast<char>(file.back() ^ 1);
  WriteFile(PageFile(), file);
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), NotDelivered);
  EXPECT_NE(run->Report().find("page.tif' has not the checksum"), std::string::npos)
      << run->Report();
  EXPECT_EQ(NamesIn(Output()), Names{});
  EXPECT_EQ(StateOf(PageFile()).st_nlink, 1U);
}

TEST_F(TakenPage, whose_file_was_changed_after_a_while_is_not_delivered) {
  // The file system's clock has gone on, so that the times alone say which change was later.
  WaitForLaterChanges();
  Describe();
  WaitForLaterChanges();
  std::string file = ReadFile(PageFile());
  file.back() = static_cast<char>(file.back() ^ 1);
  WriteFile(PageFile(), file);
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), NotDelivered);
  EXPECT_EQ(NamesIn(Output()), Names{});
}

TEST_F(TakenPage, whose_file_is_older_than_its_description_is_not_read_again) {
  m_Info.files.front().sum = std::string(32, '0');
  WaitForLaterChanges();
  WriteFile(Page() + "/.info", pages::FormatPageInfo(m_Info));
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_TRUE(IsTaken(Delivered()));
}

TEST_F(TakenPage, that_is_copied_is_always_read_and_held_against_its_sum) {
  m_Info.files.front().sum = std::string(32, '0');
  WaitForLaterChanges();
  WriteFile(Page() + "/.info", pages::FormatPageInfo(m_Info));
  const auto run = Run({"RASTREL_PAGES=kept"});
  EXPECT_EQ(run->Status(), NotDelivered);
  EXPECT_EQ(NamesIn(Output()), Names{});
}

TEST_F(TakenPage, is_not_taken_where_the_device_compresses_or_planes_are_kept_apart) {
  const auto packed = Run({Removed, "RASTREL_PRINTER=Packed"});
  EXPECT_EQ(packed->Status(), Done) << packed->Report();
  EXPECT_FALSE(IsTaken(Delivered()));
  const auto planes = Run({Removed}, {{"p1"}}, true);
  EXPECT_EQ(planes->Status(), Done) << planes->Report();
  EXPECT_FALSE(IsTaken(Output() + "/Sign-1-Red.tif"));
}

TEST_F(TakenPage, with_another_resolution_than_its_description_is_written_anew) {
  Keep({72, 1});
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_FALSE(IsTaken(Delivered()));
  ExpectPicture(Delivered());
}

TEST_F(TakenPage, that_has_another_name_already_is_copied) {
  fs::create_hard_link(PageFile(), Root() + "/of somebody else");
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_FALSE(IsTaken(Delivered()));
}

TEST_F(TakenPage, is_copied_to_a_directory_that_gives_its_files_another_group) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a directory another group";
  fs::create_directories(Output());
  ASSERT_EQ(::chown(Output().c_str(), 0, 1), 0);
  ASSERT_EQ(::chmod(Output().c_str(), 02777), 0);
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_FALSE(IsTaken(Delivered()));
  EXPECT_EQ(StateOf(Delivered()).st_gid, 1U);
}

TEST_F(TakenPage, is_copied_to_a_directory_that_gives_its_files_an_access_list) {
  fs::create_directories(Output());
  if (!rastrel::test::GiveAccessList(Output(), 6, "system.posix_acl_default"))
    GTEST_SKIP() << "this file system has no access lists";
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_FALSE(IsTaken(Delivered())) << "the page's own file has no such list";
  EXPECT_GE(::getxattr(Delivered().c_str(), "system.posix_acl_access", nullptr, 0), 0);
}

TEST_F(TakenPage, is_copied_to_another_file_system) {
  char path[] = "/dev/shm/rastrel-test-XXXXXX";
  if (::mkdtemp(path) == nullptr) GTEST_SKIP() << "there is no second file system to write to";
  const std::string other = path;
  const bool isOther = StateOf(other).st_dev != StateOf(PageFile()).st_dev;
  const auto run = Run({Removed, "RASTREL_OUTPUT=" + other});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  ExpectPicture(other + "/Sign-1.tif");
  EXPECT_EQ(isOther, StateOf(other + "/Sign-1.tif").st_dev != StateOf(PageFile()).st_dev);
  fs::remove_all(other);
}

TEST_F(TakenPage, leaves_no_hidden_name) {
  const auto run = Run({Removed, "RASTREL_OUTPUT=" + Root() + "/other"});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(NamesIn(Root() + "/other"), Names{"Sign-1.tif"});
  EXPECT_EQ(StateOf(PageFile()).st_nlink, 2U);
}

// A head that is the RIP's up to the list of strips, which leads elsewhere: the TIFF library reads
// the rows where they are.
TEST_F(TakenPage, with_strips_in_another_order_is_read_as_tiff_has_it) {
  constexpr unsigned Rows = 4;
  constexpr unsigned Wide = 40'000;
  m_Info.width = Wide;
  m_Info.height = Rows;
  m_Info.color = pages::PageColor::Gray;
  m_Info.planes = {{"Gray", "page.tif", 0}};
  std::string file = pages::PlainTiffHead({Wide, Rows, 1, {300, 1}, {300, 1}}).value_or("");
  const std::size_t listAt = 218;
  const std::string first = file.substr(listAt, 4);
  file.replace(listAt, 4, file.substr(listAt + 4, 4));
  file.replace(listAt + 4, 4, first);
  for (unsigned y = 0; y < Rows; ++y) file += std::string(Wide, static_cast<char>(10 * (y + 1)));
  WriteFile(PageFile(), file);
  Describe();
  const auto run = Run({Removed});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_FALSE(IsTaken(Delivered()));
  const Picture picture = ReadTiff(Delivered());
  ASSERT_EQ(picture.pixels.size(), std::size_t{Wide} * Rows);
  for (unsigned y = 0; y < Rows; ++y)
    EXPECT_EQ(picture.pixels[std::size_t{y} * Wide], (std::array{20, 10, 30, 40})[y]) << y;
}

}  // namespace
}  // namespace rastrel::odalis
