#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <string>
#include <thread>

#include "tests/children/odalis_fixture.h"

// The program as the library starts it, with page directories made by hand.
namespace rastrel::odalis {
namespace {

using namespace testing;
namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr int Done = 0;
constexpr int NotDelivered = 1;
constexpr int BadInput = 2;

const std::string Devices =
    "[Tiff]\nkind = file\nformat = tiff\npattern = {output}/{job}-{page}.tif\n"
    "[Png]\nkind = file\nformat = png\npattern = {output}/{job}-{page}.png\n"
    "[Again]\nkind = file\nformat = tiff\npattern = {output}/{job}-{page}.tif\noverwrite = yes\n"
    "[Pdf]\nkind = file\nformat = pdf\npattern = {output}/{job}-{page}.pdf\n"
    "[*]\nkind = file\nformat = tiff\npattern = {output}/{job}-{page}.tif\n";

class Engine : public ::testing::Test {
 protected:
  Engine() { WriteFile(Root() + "/devices.txt", Devices); }

  const std::string& Root() const { return m_Directory.Path(); }
  std::string Pages() const { return Root() + "/pages"; }
  std::string Output() const { return Root() + "/output"; }
  Names OutputNames() const { return NamesIn(Output()); }

  /// A whole run with these entries below Pages().
  std::unique_ptr<EngineRun> Run(const std::vector<Entry>& entries, const Names& settings = {},
                                 bool planar = false) const {
    auto run = std::make_unique<EngineRun>(Root(), Cfm2(Pages() + "/", entries), settings, planar);
    run->Finish();
    return run;
  }

 private:
  TemporaryDirectory m_Directory;
};

void ExpectTestPicture(const Picture& picture, unsigned planes) {
  ASSERT_EQ(picture.width, 40u);
  ASSERT_EQ(picture.height, 30u);
  ASSERT_EQ(picture.samples, planes);
  ASSERT_EQ(picture.pixels.size(), 40u * 30u * planes);
  for (unsigned y = 0; y < 30; ++y) {
    for (unsigned x = 0; x < 40; ++x) {
      for (unsigned plane = 0; plane < planes; ++plane) {
        ASSERT_EQ(picture.pixels[(y * 40 + x) * planes + plane], SampleAt(x, y, plane));
      }
    }
  }
}

TEST_F(Engine, delivers_each_page_and_reports_it) {
  WriteRgbPage(Pages() + "/p1", "Sign", 1);
  WriteRgbPage(Pages() + "/p2", "Sign", 2, "Png");
  const auto run = Run({{"p1"}, {"p2"}});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(OutputNames(), (Names{"Sign-1.tif", "Sign-2.png"}));
  ExpectTestPicture(ReadTiff(Output() + "/Sign-1.tif"), 3);
  ExpectTestPicture(ReadPng(Output() + "/Sign-2.png"), 3);
  EXPECT_EQ(run->Lines("OUTPUT: "), (Names{Output() + "/Sign-1.tif", Output() + "/Sign-2.png"}));
  EXPECT_EQ(run->Lines("PAGE: "), (Names{"1", "2"}));
  EXPECT_EQ(run->Lines("INFO: "), (Names{"INITIALISING", "READY", "PRINTING", "FLUSHING"}));
  EXPECT_EQ(run->Lines("PROGRESS: ").back(), "100 %");
  EXPECT_TRUE(run->Lines("ERROR:").empty());
  EXPECT_TRUE(fs::exists(Pages() + "/p1/.info"));
}

TEST_F(Engine, a_title_and_a_data_root_may_hold_the_formats_words) {
  const std::string root = Root() + "/weekend > begin";
  WriteFile(root + "/devices.txt", Devices);
  WriteRgbPage(root + "/pages/Legend > begin", "begin > end");
  EngineRun run(root, Cfm2(root + "/pages\\", {{"Legend > begin"}}));
  run.Finish();
  EXPECT_EQ(run.Status(), Done) << run.Report();
  EXPECT_EQ(NamesIn(root + "/output"), (Names{"begin > end-1.tif"}));
}

TEST_F(Engine, a_drive_letter_lies_below_the_data_root) {
  WriteRgbPage(Root() + "/drive_c/spool/Job.cfm/p1", "Sign");
  EngineRun run(Root(), Cfm2("C:\\Spool\\job.cfm\\", {{"p1"}}));
  run.Finish();
  EXPECT_EQ(run.Status(), Done) << run.Report();
  EXPECT_EQ(OutputNames(), (Names{"Sign-1.tif"}));
}

TEST_F(Engine, never_overwrites_and_counts_on) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  WriteFile(Output() + "/Sign-1.tif", "mine");
  const auto run = Run({{"p1", "reprint", 2}, {"p1"}});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(OutputNames(), (Names{"Sign-1-2.tif", "Sign-1-3.tif", "Sign-1-4.tif", "Sign-1.tif"}));
  EXPECT_EQ(ReadFile(Output() + "/Sign-1.tif"), "mine");
  EXPECT_EQ(run->Lines("PAGE: ").size(), 3u);
}

TEST_F(Engine, overwrites_where_the_device_says_so) {
  WriteRgbPage(Pages() + "/p1", "Sign", 1, "Again");
  WriteFile(Output() + "/Sign-1.tif", "old");
  const auto run = Run({{"p1"}});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(OutputNames(), (Names{"Sign-1.tif"}));
  ExpectTestPicture(ReadTiff(Output() + "/Sign-1.tif"), 3);
}

TEST_F(Engine, a_page_that_can_not_be_delivered_leaves_the_old_files) {
  WriteRgbPage(Pages() + "/p1", "Sign", 1, "Again");
  WriteFile(Output() + "/Sign-1-Red.tif", "old");
  WriteFile(Output() + "/Sign-1-Green.tif", "old");
  WriteFile(Output() + "/Sign-1-Blue.tif/in the way", "mine");
  EngineRun run(Root(), Cfm2(Pages() + "/", {{"p1"}}), {}, true);
  run.Finish();
  EXPECT_EQ(run.Status(), NotDelivered) << run.Report();
  EXPECT_EQ(OutputNames(), (Names{"Sign-1-Blue.tif", "Sign-1-Green.tif", "Sign-1-Red.tif"}));
  EXPECT_EQ(ReadFile(Output() + "/Sign-1-Red.tif"), "old");
  EXPECT_EQ(ReadFile(Output() + "/Sign-1-Green.tif"), "old");
}

// The prefix's title is the path of the job's file.
TEST_F(Engine, files_have_the_jobs_name_and_not_its_path) {
  WriteRgbPage(Pages() + "/p1", "/home/me/signs/sign");
  EngineRun named(Root(), Cfm2(Pages() + "/", {{"p1"}}), {"RASTREL_JOB=Shop front"});
  named.Finish();
  EXPECT_EQ(named.Status(), Done) << named.Report();
  EngineRun unnamed(Root(), Cfm2(Pages() + "/", {{"p1"}}), {"RASTREL_JOB="});
  unnamed.Finish();
  EXPECT_EQ(OutputNames(), (Names{"Shop front-1.tif", "sign-1.tif"}));
}

TEST_F(Engine, once_removes_the_page_after_its_last_entry_and_the_others_keep_it) {
  for (const char* name : {"once", "reprint", "only", "delete"}) {
    WriteRgbPage(Pages() + "/" + name, name);
  }
  const auto run = Run({{"once", "once"},
                        {"reprint", "reprint"},
                        {"only", "only"},
                        {"delete", "delete"},
                        {"once", "once"}});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(NamesIn(Pages()), (Names{"only", "reprint"}));
  EXPECT_EQ(OutputNames(), (Names{"once-1-2.tif", "once-1.tif", "only-1.tif", "reprint-1.tif"}));
}

TEST_F(Engine, a_deleted_page_that_is_gone_is_no_error) {
  EXPECT_EQ(Run({{"gone", "delete"}})->Status(), Done);
}

TEST_F(Engine, a_directory_without_info_is_never_removed) {
  WriteFile(Pages() + "/mine/letter.txt", "dear");
  const auto run = Run({{"mine", "delete"}});
  EXPECT_EQ(run->Status(), BadInput);
  EXPECT_EQ(ReadFile(Pages() + "/mine/letter.txt"), "dear");
}

TEST_F(Engine, copies_of_zero_print_nothing) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  EXPECT_EQ(Run({{"p1", "reprint", 0}})->Status(), Done);
  EXPECT_TRUE(OutputNames().empty());
  EXPECT_EQ(Run({})->Status(), Done);
}

TEST_F(Engine, a_missing_page_is_bad_input_and_nothing_is_delivered) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  const auto run = Run({{"p1"}, {"p2"}});
  EXPECT_EQ(run->Status(), BadInput);
  EXPECT_TRUE(OutputNames().empty());
  EXPECT_EQ(run->Lines("ERROR: "), (Names{"line 10: no page lies in '" + Pages() + "/p2'"}));
}

TEST_F(Engine, input_that_is_no_cfm2_is_bad_input) {
  EngineRun run(Root(), "%!PS-Adobe-3.0\nshowpage\n");
  run.Finish();
  EXPECT_EQ(run.Status(), BadInput);
  EXPECT_EQ(run.Lines("ERROR: "),
            (Names{"the input is no CFM2: line 1: '%!PS-Adobe-3.0' is neither a comment nor the "
                   "begin of a page"}));
  EngineRun empty(Root(), "");
  empty.Finish();
  EXPECT_EQ(empty.Status(), BadInput);
}

TEST_F(Engine, a_corrupt_description_ends_the_run_after_the_pages_before_it) {
  WriteRgbPage(Pages() + "/p1", "Sign", 1);
  WriteRgbPage(Pages() + "/p2", "Sign", 2);
  WriteFile(Pages() + "/p2/.info", "Rastrel page 1\njob: x\n");
  const auto run = Run({{"p1"}, {"p2"}, {"p1"}});
  EXPECT_EQ(run->Status(), NotDelivered);
  EXPECT_EQ(OutputNames(), (Names{"Sign-1.tif"}));
  ASSERT_EQ(run->Lines("ERROR: ").size(), 1u);
  EXPECT_NE(run->Report().find("ERROR: page 'p2': '" + Pages() + "/p2/.info', line 3"),
            std::string::npos)
      << run->Report();
}

TEST_F(Engine, changed_pixels_are_not_delivered) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  std::string pixels = ReadFile(Pages() + "/p1/pixels.ppm");
  pixels.back() = static_cast<char>(pixels.back() + 1);
  WriteFile(Pages() + "/p1/pixels.ppm", pixels);
  const auto run = Run({{"p1", "once"}});
  EXPECT_EQ(run->Status(), NotDelivered);
  EXPECT_TRUE(OutputNames().empty());
  EXPECT_TRUE(fs::exists(Pages() + "/p1/.info"));  // once is not done yet
  EXPECT_EQ(run->Lines("ERROR: "), (Names{"page 'p1': '" + Pages() +
                                          "/p1/pixels.ppm' has not the "
                                          "checksum of the page's description"}));
}

// The checks run beside the reading: a plane that was changed is found whichever it is.
TEST_F(Engine, a_changed_plane_is_not_delivered_whichever_it_is) {
  for (unsigned plane = 0; plane < 5; ++plane) {
    auto info = PageOf(pages::PageColor::Separations,
                       {"Cyan", "Magenta", "Yellow", "Black", "Gold"}, 300, 200);
    WritePage(Pages() + "/p1", info);
    const std::string path = Pages() + "/p1/" + info.planes[plane].file;
    std::string content = ReadFile(path);
    content[content.size() / 2] = static_cast<char>(content[content.size() / 2] ^ 1);
    WriteFile(path, content);
    const auto run = Run({{"p1"}});
    EXPECT_EQ(run->Status(), NotDelivered);
    EXPECT_TRUE(OutputNames().empty());
    EXPECT_EQ(run->Lines("ERROR: "),
              (Names{"page 'p1': '" + path + "' has not the checksum of the page's description"}));
  }
}

TEST_F(Engine, a_page_delivered_twice_has_the_same_bytes) {
  for (const char* printer : {"Tiff", "Png", "Pdf"}) {
    fs::remove_all(Output());
    auto info = PageOf(pages::PageColor::Rgb, {"Red", "Green", "Blue"}, 700, 500);
    info.printer = printer;
    WritePage(Pages() + "/p1", info);
    EXPECT_EQ(Run({{"p1"}})->Status(), Done);
    EXPECT_EQ(Run({{"p1"}})->Status(), Done);
    const Names names = OutputNames();
    ASSERT_EQ(names.size(), 2u) << printer;
    EXPECT_TRUE(ReadFile(Output() + "/" + names[0]) == ReadFile(Output() + "/" + names[1]))
        << printer;
  }
}

TEST_F(Engine, planes_become_files_of_their_own) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  auto info = PageOf(pages::PageColor::Separations, {"Cyan", "../Spot", "_._Spot"}, 40, 30);
  info.job = "Inks";
  WritePage(Pages() + "/p2", info);
  const auto run = Run({{"p1"}, {"p2"}}, {}, true);
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(OutputNames(), (Names{"Inks-1-Cyan.tif", "Inks-1-_._Spot.tif", "Inks-1-___Spot.tif",
                                  "Sign-1-Blue.tif", "Sign-1-Green.tif", "Sign-1-Red.tif"}));
  for (unsigned plane = 0; plane < 3; ++plane) {
    const Names names = {"Sign-1-Red.tif", "Sign-1-Green.tif", "Sign-1-Blue.tif"};
    const Picture picture = ReadTiff(Output() + "/" + names[plane]);
    ASSERT_EQ(picture.pixels.size(), 40u * 30u);
    EXPECT_EQ(picture.samples, 1u);
    EXPECT_EQ(picture.pixels[41], SampleAt(1, 1, plane));
  }
  EXPECT_EQ(run->Lines("OUTPUT: ").size(), 6u);
  EXPECT_EQ(run->Lines("PAGE: ").size(), 2u);
}

TEST_F(Engine, planes_of_one_page_get_one_number) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  WriteFile(Output() + "/Sign-1-Green.tif", "mine");
  const auto run = Run({{"p1"}}, {}, true);
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(OutputNames(), (Names{"Sign-1-Blue-2.tif", "Sign-1-Green-2.tif", "Sign-1-Green.tif",
                                  "Sign-1-Red-2.tif"}));
}

TEST_F(Engine, planes_whose_names_become_the_same_stay_apart) {
  auto info = PageOf(pages::PageColor::Separations, {"A/B", "A\\B", "A_B"}, 40, 30);
  WritePage(Pages() + "/p1", info);
  const auto run = Run({{"p1"}}, {}, true);
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_EQ(OutputNames(), (Names{"Job-1-A_B.tif", "Job-1-A_B_2.tif", "Job-1-A_B_3.tif"}));
}

TEST_F(Engine, spot_inks_are_refused_by_formats_that_cannot_hold_them) {
  auto info = PageOf(pages::PageColor::Separations, {"Cyan", "Gold"}, 40, 30);
  info.printer = "Png";
  WritePage(Pages() + "/p1", info);
  const auto run = Run({{"p1"}});
  EXPECT_EQ(run->Status(), NotDelivered);
  EXPECT_TRUE(OutputNames().empty());
  EXPECT_NE(run->Report().find("a PNG file can't hold spot inks"), std::string::npos);
}

TEST_F(Engine, another_printer_of_the_environment_counts_before_the_pages_own) {
  WriteRgbPage(Pages() + "/p1", "Sign", 1, "Tiff");
  const std::string other = Root() + "/other place";
  const auto run = Run({{"p1"}}, {"RASTREL_PRINTER=Png", "RASTREL_OUTPUT=" + other});
  EXPECT_EQ(run->Status(), Done) << run->Report();
  EXPECT_TRUE(OutputNames().empty());
  EXPECT_EQ(NamesIn(other), (Names{"Sign-1.png"}));
  const auto same = Run({{"p1"}}, {"RASTREL_PRINTER="});
  EXPECT_EQ(OutputNames(), (Names{"Sign-1.tif"})) << same->Report();
}

TEST_F(Engine, the_devices_compression_is_that_of_the_file) {
  const std::string section = "[P]\nkind=file\nformat=tiff\npattern={output}/x.tif\n";
  const std::pair<const char*, std::uint64_t> sizes[] = {
      {"none", 36'000}, {"lzw", 0}, {"deflate", 0}};
  std::vector<std::uint64_t> found;
  for (const auto& [word, least] : sizes) {
    fs::remove_all(Output());
    WriteFile(Root() + "/devices.txt", section + "compression = " + word + "\n");
    // One value all over, so that both compressions make it much smaller than its samples.
    auto info = WriteRgbPage(Pages() + "/p1", "Sign", 1, "P");
    info.width = 120;
    info.height = 100;
    WriteFile(Pages() + "/p1/pixels.ppm", "P6\n120 100\n255\n" + std::string(36'000, 'x'));
    info.files = {DescribeFile(Pages() + "/p1", "pixels.ppm")};
    WriteFile(Pages() + "/p1/.info", pages::FormatPageInfo(info));
    EXPECT_EQ(Run({{"p1"}})->Status(), Done);
    const std::string content = ReadFile(Output() + "/x.tif");
    EXPECT_GT(content.size(), least) << word;
    EXPECT_EQ(ReadTiff(Output() + "/x.tif").pixels, std::vector<std::uint8_t>(36'000, 'x'));
    found.push_back(content.size());
  }
  EXPECT_LT(found[1], 5000u);
  EXPECT_LT(found[2], 5000u);
  EXPECT_NE(found[1], found[2]);
}

TEST_F(Engine, an_unknown_printer_without_a_default_is_named_with_the_file) {
  WriteFile(Root() + "/devices.txt", "[Tiff]\nkind=file\nformat=tiff\npattern={output}/x.tif\n");
  WriteRgbPage(Pages() + "/p1", "Sign", 1, "Plotter");
  const auto run = Run({{"p1"}});
  EXPECT_EQ(run->Status(), NotDelivered);
  EXPECT_EQ(run->Lines("ERROR: "), (Names{"page 'p1': '" + Root() +
                                          "/devices.txt' has no section for the printer "
                                          "'Plotter', and none for '*'"}));
}

TEST_F(Engine, a_devices_file_that_is_missing_or_wrong_is_named) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  WriteFile(Root() + "/devices.txt", "[P]\nkind = tape\nformat = png\n");
  const auto wrong = Run({{"p1"}});
  EXPECT_EQ(wrong->Status(), NotDelivered);
  EXPECT_EQ(wrong->Lines("ERROR: "), (Names{"'" + Root() +
                                            "/devices.txt', line 2: 'tape' is no "
                                            "value of 'kind' (file, command)"}));
  fs::remove(Root() + "/devices.txt");
  const auto missing = Run({{"p1"}});
  EXPECT_EQ(missing->Status(), NotDelivered);
  EXPECT_NE(missing->Report().find(Root() + "/devices.txt"), std::string::npos);
}

TEST_F(Engine, an_output_folder_that_cannot_be_made_is_named) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  WriteFile(Output(), "a file in its place");
  const auto run = Run({{"p1"}});
  EXPECT_EQ(run->Status(), NotDelivered);
  EXPECT_NE(run->Report().find("'" + Output() + "'"), std::string::npos) << run->Report();
  const auto relative = Run({{"p1"}}, {"RASTREL_OUTPUT=here"});
  EXPECT_EQ(relative->Lines("ERROR: "), (Names{"RASTREL_OUTPUT is 'here', and no full path"}));
}

TEST_F(Engine, twenty_megabytes_of_comments_before_a_page_are_read) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  std::string text;
  while (text.size() < (20u << 20)) text += ">> begin := once <<\n";
  EngineRun run(Root(), text + Cfm2(Pages() + "/", {{"p1"}}));
  run.Finish();
  EXPECT_EQ(run.Status(), Done) << run.Report();
  EXPECT_EQ(OutputNames().size(), 1u);
}

TEST_F(Engine, reads_a_pipe_that_is_written_late_and_in_pieces) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  const std::string text = Cfm2(Pages() + "/", {{"p1"}});
  EngineRun run(Root(), "");
  ASSERT_TRUE(run.WaitForLine("INFO: INITIALISING"));
  for (std::size_t at = 0; at < text.size(); at += 37) {
    run.Write(text.substr(at, 37));
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
  }
  EXPECT_TRUE(OutputNames().empty());
  run.Finish();
  EXPECT_EQ(run.Status(), Done) << run.Report();
  EXPECT_EQ(OutputNames().size(), 1u);
}

TEST_F(Engine, works_without_a_standard_output) {
  WriteRgbPage(Pages() + "/p1", "Sign");
  EngineRun run(Root(), Cfm2(Pages() + "/", {{"p1"}}), {}, false, true);
  run.Finish();
  EXPECT_EQ(run.Status(), Done) << run.Report();
  ExpectTestPicture(ReadTiff(Output() + "/Sign-1.tif"), 3);
}

TEST_F(Engine, memory_does_not_grow_with_the_page) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers hold back what was freed";
#endif
  long peaks[2] = {};
  const unsigned heights[2] = {40, 6000};  // the second has 108 MB of pixels
  for (int i = 0; i < 2; ++i) {
    auto info = PageOf(pages::PageColor::Rgb, {"Red", "Green", "Blue"}, 6000, 1);
    WritePage(Pages() + "/p", info);
    info.height = heights[i];
    const std::string header = "P6\n6000 " + std::to_string(heights[i]) + "\n255\n";
    WriteFile(Pages() + "/p/pixels.ppm", header);
    fs::resize_file(Pages() + "/p/pixels.ppm", header.size() + 18'000ull * heights[i]);
    info.files = {DescribeFile(Pages() + "/p", "pixels.ppm")};
    WriteFile(Pages() + "/p/.info", pages::FormatPageInfo(info));
    const auto run = Run({{"p"}});
    EXPECT_EQ(run->Status(), Done) << run->Report();
    peaks[i] = run->PeakMemory();
  }
  EXPECT_LT(peaks[1], peaks[0] + 16 * 1024);
}

TEST_F(Engine, being_killed_at_any_moment_leaves_whole_files_only) {
  auto info = PageOf(pages::PageColor::Rgb, {"Red", "Green", "Blue"}, 600, 400);
  WritePage(Pages() + "/p1", info);
  const std::string text = Cfm2(Pages() + "/", {{"p1", "reprint", 20}});
  std::mt19937 random(20240506);
  unsigned early = 0;
  for (int round = 0; round < 30; ++round) {
    fs::remove_all(Output());
    EngineRun run(Root(), text);
    if (round % 3 != 0) static_cast<void>(run.WaitForLine("INFO: PRINTING"));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 60'000));
    run.Kill();
    run.Finish();
    if (run.Status() == -SIGKILL) ++early;
    const Names names = OutputNames();
    EXPECT_LE(names.size(), 20u);
    for (const std::string& name : names) {
      EXPECT_TRUE(name.starts_with("Job-1") && name.ends_with(".tif")) << name;
      const Picture picture = ReadTiff(Output() + "/" + name);
      EXPECT_EQ(picture.pixels.size(), 600u * 400u * 3u) << name;
    }
    // A page that was reported is there.
    EXPECT_GE(names.size(), run.Lines("OUTPUT: ").size());
  }
  EXPECT_GT(early, 10u);  // most of them were killed at work, so something was tested
}

}  // namespace
}  // namespace rastrel::odalis
