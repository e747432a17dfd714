#include <gmock/gmock.h>
#include <signal.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>

#include "host/graphics/drawing_process.h"
#include "host/graphics/graphic_loader.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/text.h"
#include "tests/host/graphics/graphic_files.h"
#include "tests/host/render/drawn_document.h"
#include "tests/host/render/hostile_files.h"
#include "tests/support/environment_guard.h"

namespace rastrel::render {
namespace {

using document::GraphicKind;
using testing::HasSubstr;
using testing::StartsWith;
using namespace std::chrono_literals;

class ForeignFile : public test::DrawnDocument {
 protected:
  // Puts a placed file in the place of the one before.
  void Place(GraphicKind kind, const std::string& bytes, const std::wstring& name) {
    const auto& members = m_Document.Members(host::DocumentRoot);
    if (!members.empty()) m_Document.Remove(members.front());
    document::GraphicShape shape;
    shape.kind = kind;
    shape.name = name;
    shape.bytes = std::make_shared<const std::string>(bytes);
    shape.width = shape.height = 5;
    Add(shape);
  }

  // Little processor time, and a gigabyte.
  static ImageOptions Limited() {
    ImageOptions options;
    options.limits.fileTime = 1s;
    options.limits.time = 3s;
    options.limits.memory = std::uint64_t{1} << 30;
    return options;
  }

  // The notices of a picture that is drawn all the same.
  std::string Notices() {
    EXPECT_NE(Draw(ImageFormat::Png), "");
    std::string all;
    for (const std::wstring& text : m_Notices.Texts()) all += os::Utf8FromWide(text) + "\n";
    return all;
  }
};

TEST_F(ForeignFile, one_that_takes_time_without_end_is_ended_and_named) {
  const std::string time =
      "the placed file \"bomb\" can't be drawn: drawing it takes more than 1 second of processor "
      "time";
  for (const auto& [kind, bytes] : {std::pair(GraphicKind::Svg, test::SvgFilterBomb()),
                                    std::pair(GraphicKind::Svg, test::SvgPatternBomb()),
                                    std::pair(GraphicKind::Pdf, test::PdfFormBomb()),
                                    std::pair(GraphicKind::Pdf, test::PdfPackedBomb())}) {
    Place(kind, bytes, L"bomb");
    EXPECT_EQ(Refusal(ImageFormat::Png, Limited()), time);
  }
  // The one format has lines of it, which may come to the end of memory first; the other pixels.
  EXPECT_THAT(Refusal(ImageFormat::Pdf, Limited()),
              StartsWith("the placed file \"bomb\" can't be drawn: "));
  EXPECT_EQ(Refusal(ImageFormat::Svg, Limited()), time);
}

// Each would take its own limit of a minute, one after another.
TEST_F(ForeignFile, eps_files_without_end_share_the_time_of_their_drawing) {
  for (const std::wstring name : {L"one.eps", L"two.eps", L"three.eps"}) {
    document::GraphicShape shape;
    shape.kind = GraphicKind::Eps;
    shape.name = name;
    shape.bytes = std::make_shared<const std::string>(
        test::EpsFile(os::Utf8FromWide(L"/" + name + L" {} loop")));
    shape.width = shape.height = 5;
    Add(shape);
  }
  ImageOptions options;
  options.limits.epsTime = 2s;
  const auto drawn =
      render::DrawDocument({m_Document, m_Fonts, m_Notices}, ImageFormat::Png, options);
  ASSERT_TRUE(drawn) << Describe(drawn.Error());
  ASSERT_EQ(m_Notices.Texts().size(), 3U);
  EXPECT_THAT(os::Utf8FromWide(m_Notices.Texts()[0]),
              HasSubstr("\"one.eps\" can't be drawn: the interpreter took more than "));
  for (const std::size_t later : {1U, 2U}) {
    EXPECT_THAT(os::Utf8FromWide(m_Notices.Texts()[later]),
                HasSubstr(" can't be drawn: no time is left for it: all EPS files of a drawing may "
                          "take 2 seconds together"));
  }
}

// A drawing program of a few lines in the real one's place.
class OtherDrawingProgram : public ForeignFile {
 protected:
  void Install(const std::string& script) {
    m_Directory.Write("libexec/rastrel/rastrel-draw", "#!/bin/sh\n" + script);
    std::filesystem::permissions(m_Directory.Path("libexec/rastrel/rastrel-draw"),
                                 std::filesystem::perms::owner_all);
    Place(GraphicKind::Png, test::PngFile(), L"small.png");
  }

  test::EnvironmentGuard m_Resources{"RASTREL_RESOURCES", m_Directory.Path()};
};

// As one does that was taken over by a file.
TEST_F(OtherDrawingProgram, that_closes_its_output_and_stays_is_ended) {
  Install("exec sleep 100000 >&-\n");
  ImageOptions options;
  options.limits.silence = 1s;
  EXPECT_EQ(Refusal(ImageFormat::Png, options),
            "the page can't be drawn: the program that draws it was ended by signal 9");
}

// A read without the wait before it would have no limit.
TEST_F(OtherDrawingProgram, that_can_not_be_waited_for_is_not_read_from) {
  Install("exec sleep 100000\n");
  const os::SystemCallsGuard guard;
  os::Calls().poll = [](pollfd* /*entries*/, nfds_t /*count*/, int /*timeout*/) {
    errno = ENOMEM;
    return -1;
  };
  EXPECT_EQ(Refusal(ImageFormat::Png), "poll 'the drawing program': Cannot allocate memory (12)");
}

// The library gives up after 500,000 of them, and leaves a part.
TEST_F(ForeignFile, an_svg_that_is_drawn_in_part_is_no_picture) {
  Place(GraphicKind::Svg, test::SvgUseBomb(), L"bomb");
  EXPECT_THAT(
      Refusal(ImageFormat::Png),
      StartsWith("the placed file \"bomb\" can't be drawn: it is no SVG that can be drawn"));
}

TEST_F(ForeignFile, an_image_that_claims_vast_sides_is_told_and_takes_no_memory) {
  Place(GraphicKind::Png, test::PngHead(100'000, 100'000), L"vast.png");
  EXPECT_THAT(Notices(), HasSubstr("\"vast.png\" can't be drawn: it has 100000 by 100000 pixels"));
}

// The directory of the only image names itself as the next one, and as one inside.
TEST_F(ForeignFile, a_tiff_whose_directories_go_in_circles_ends) {
  std::string file = test::TiffFile(2, 72);
  const auto at = [&](std::size_t place) { return static_cast<unsigned char>(file[place]); };
  ASSERT_EQ(file.substr(0, 2), "II");
  const std::size_t directory = at(4) | at(5) << 8 | at(6) << 16;
  const std::size_t next = directory + 2 + 12 * std::size_t{at(directory)};
  ASSERT_EQ(file.substr(next, 4), std::string(4, '\0'));
  file.replace(next, 4, file.substr(4, 4));
  Place(GraphicKind::Tiff, file, L"loop.tif");
  EXPECT_EQ(Notices(), "");
}

TEST_F(ForeignFile, one_that_is_cut_off_is_told_and_leaves_a_picture) {
  const std::array<std::pair<GraphicKind, std::string>, 6> files{
      {{GraphicKind::Svg, test::SvgFile("width=\"20\" height=\"10\"")},
       {GraphicKind::Png, test::PngFile()},
       {GraphicKind::Jpeg, test::JpegFile(1, 72)},
       {GraphicKind::Tiff, test::TiffFile(2, 72)},
       {GraphicKind::Pdf, test::PdfFile()},
       {GraphicKind::Eps, test::EpsFile("100 205 20 5 rectfi")}}};
  for (const auto& [kind, bytes] : files) {
    const std::string name = "cut-" + std::to_string(static_cast<int>(kind));
    const std::size_t length = kind == GraphicKind::Eps ? bytes.size() : bytes.size() / 8;
    Place(kind, bytes.substr(0, length), os::WideFromUtf8(name));
    EXPECT_THAT(Notices(), HasSubstr("the placed file \"" + name + "\" can't be drawn: "));
  }
}

TEST_F(ForeignFile, memory_is_limited) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer takes more than any limit";
#endif
  Place(GraphicKind::Png, test::PngFile(), L"small.png");
  ImageOptions options;
  options.limits.memory = 1 << 20;
  EXPECT_THAT(Refusal(ImageFormat::Png, options), HasSubstr("can't be drawn"));
}

TEST_F(ForeignFile, the_size_of_the_results_is_limited) {
  Place(GraphicKind::Png, test::PngFile(), L"small.png");
  ImageOptions options;
  options.limits.resultBytes = 100;
  EXPECT_EQ(Refusal(ImageFormat::Png, options),
            "the page with the placed file \"small.png\" can't be drawn: its drawing has more than "
            "100 bytes");
}

TEST_F(ForeignFile, one_that_is_loaded_has_the_same_limits) {
  m_Directory.Write("small.pdf", test::PdfFile());
  graphics::DrawingLimits limits;
  limits.resultBytes = 1;
  EXPECT_EQ(graphics::LoadGraphic(m_Document, m_Notices, m_Directory.Wide("small.pdf"), limits), 0);
  ASSERT_EQ(m_Notices.Losses().size(), 1U);
  EXPECT_THAT(os::Utf8FromWide(m_Notices.Losses()[0]),
              HasSubstr("small.pdf can't be placed: its drawing has more than 1 bytes"));
}

TEST_F(ForeignFile, files_with_the_same_bytes_are_in_a_drawing_once) {
  Place(GraphicKind::Png, test::PngFile(), L"one.png");
  document::GraphicShape other;
  other.name = L"other.png";
  other.bytes = std::make_shared<const std::string>(test::PngFile());
  other.width = other.height = 2;
  Add(other);
  const std::string svg = DrawSvg();
  EXPECT_EQ(svg.find("<image"), svg.rfind("<image"));
}

TEST_F(ForeignFile, one_on_another_page_or_out_of_sight_is_not_opened) {
  document::GraphicShape shape;
  shape.kind = GraphicKind::Eps;
  shape.name = L"second.eps";
  shape.bytes = std::make_shared<const std::string>("no EPS");
  shape.width = shape.height = 2;
  document::Attributes attributes;
  attributes.pages = {2, 2};
  Add(shape, attributes);
  attributes.pages = {1, 1};
  attributes.traits &= ~DBTRAIT_VISIBLE;
  Add(shape, attributes);
  ImageOptions options;
  options.page = 1;
  EXPECT_NE(Draw(ImageFormat::Png, options), "");
  EXPECT_TRUE(m_Notices.Texts().empty());
}

// --- A drawing program that is damaged, or is in somebody's hands ---

class FalseProgram : public ForeignFile {
 protected:
  FalseProgram() : m_Resources("RASTREL_RESOURCES", m_Directory.Path()) {
    Place(GraphicKind::Png, test::PngFile(), L"small.png");
  }
  // A shell script in the program's place.
  void Write(const std::string& script) {
    m_Directory.Write("libexec/rastrel/rastrel-draw", "#!/bin/sh\n" + script);
    std::filesystem::permissions(m_Directory.Path("libexec/rastrel/rastrel-draw"),
                                 std::filesystem::perms::owner_all);
  }
  std::string RefusalOf(const std::string& script, const ImageOptions& options = {}) {
    Write(script);
    return Refusal(ImageFormat::Png, options);
  }

  test::EnvironmentGuard m_Resources;
};

TEST_F(FalseProgram, that_is_missing_is_told) {
  EXPECT_THAT(Refusal(ImageFormat::Png), HasSubstr("the program rastrel-draw is missing"));
}

TEST_F(FalseProgram, that_ends_or_crashes_is_told_with_its_status_or_signal) {
  EXPECT_EQ(RefusalOf("exit 3\n"),
            "the page can't be drawn: the program that draws it ended with status 3");
  // A record that begins the file named "x".
  EXPECT_EQ(
      RefusalOf("printf 'F\\001\\0\\0\\0\\0\\0\\0\\0x'\nkill -SEGV $$\n"),
      "the placed file \"x\" can't be drawn: the program that draws it was ended by signal 11");
}

TEST_F(FalseProgram, that_writes_nonsense_is_not_believed) {
  EXPECT_EQ(RefusalOf("printf 'Z\\0\\0\\0\\0\\0\\0\\0\\0'\n"),
            "the page can't be drawn: the program that draws it writes no records");
  EXPECT_THAT(RefusalOf("printf 'IIIIIIIIIIIIIIIIIII'\n"), HasSubstr("more than 1073741824 bytes"));
}

TEST_F(FalseProgram, that_sends_control_characters_shows_none_of_them) {
  EXPECT_EQ(RefusalOf("printf 'E\\006\\0\\0\\0\\0\\0\\0\\0a\\033[2J\\n'\n"), "a\\x1b[2J");
  Write("printf 'N\\003\\0\\0\\0\\0\\0\\0\\0a\\rb'\nprintf 'D\\0\\0\\0\\0\\0\\0\\0\\0'\n");
  EXPECT_EQ(Refusal(ImageFormat::Png), "");
  EXPECT_EQ(m_Notices.Texts(), std::vector<std::wstring>{L"a\\x0db"});
}

TEST_F(FalseProgram, that_makes_more_images_than_pages_is_not_believed) {
  const std::string one = "printf 'I\\001\\0\\0\\0\\0\\0\\0\\0x'\n";
  const std::string first = "printf '#\\001\\0\\0\\0\\0\\0\\0\\0001'\n";
  const std::string why = "the page can't be drawn: its pages come in no order";
  EXPECT_EQ(RefusalOf(one), why);
  EXPECT_EQ(RefusalOf(first + one + one), why);
  EXPECT_EQ(RefusalOf(first + one + first + one), why);
}

TEST_F(FalseProgram, that_writes_without_end_is_ended) {
  ImageOptions options;
  options.limits.resultBytes = 1 << 20;
  EXPECT_EQ(RefusalOf("while :; do printf 'N\\001\\0\\0\\0\\0\\0\\0\\0x'; done\n", options),
            "the page can't be drawn: its drawing has more than 1048576 bytes");
}

TEST_F(FalseProgram, that_falls_silent_is_ended_and_its_end_taken_over) {
  // It says its number in a notice, and then nothing.
  Write(
      "number=$(printf %09d $$)\nprintf 'N\\011\\0\\0\\0\\0\\0\\0\\0'\nprintf $number\n"
      "exec sleep 100000\n");
  ImageOptions options;
  // On a slow machine it may not have said it before it counts as silent.
  for (options.limits.silence = 1s; m_Notices.Texts().empty(); options.limits.silence *= 2) {
    ASSERT_LT(options.limits.silence, 300s);
    EXPECT_THAT(Refusal(ImageFormat::Png, options),
                StartsWith("the page can't be drawn: drawing it takes more than "));
  }
  const auto number = static_cast<pid_t>(std::stol(m_Notices.Texts()[0]));
  EXPECT_EQ(kill(number, 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

}  // namespace
}  // namespace rastrel::render
