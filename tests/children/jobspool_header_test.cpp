#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "children/jobspool/command_line.h"
#include "children/jobspool/job_header_reader.h"
#include "children/jobspool/job_source.h"
#include "interpreter/declared_box.h"
#include "tests/children/queue_fixture.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::jobspool::testing {
namespace {

using interpreter::FindDeclaredBox;

const std::string Full = Header(
    "%#PageSize=Custom,595.275591,841.889764\r\n%# KVI_Res= 300\r\n"
    "%# KVI_CutLine= RGB, 1.000, 0.502, 0.000\r\n%# KVI_CutLine= SEP, CutContour\r\n"
    "%# KVI_Setflat= 3\r\n");

JobHeader ReadLines(const std::string& lines) { return ReadJobHeader(Header(lines)); }

Expected<CommandLine> ReadWords(std::vector<const char*> words) { return ReadCommandLine(words); }

// Taken for none, it would make planes of a picture.
TEST(QueueHeader, beside_a_pdf_that_can_not_be_read_fails_the_job) {
  const test::ScratchDirectory place;
  place.Write("sign.pdf", "%PDF-1.4\n%%EOF\n");
  EXPECT_TRUE(OpenJobSource(place.Path("sign.pdf"))) << "a missing one is none";
  std::filesystem::create_symlink("sign.jhdr", place.Path("sign.jhdr"));
  const auto source = OpenJobSource(place.Path("sign.pdf"));
  ASSERT_FALSE(source);
  EXPECT_EQ(Describe(source.Error()), "The job header can't be read: open '" +
                                          place.Path("sign.jhdr") +
                                          "': Too many levels of symbolic links (40)");
}

TEST(QueueHeader, holds_the_librarys_values) {
  const JobHeader header = ReadJobHeader(Full + "%!PS\n");
  EXPECT_EQ(header.length, Full.size());
  ASSERT_TRUE(header.size);
  EXPECT_EQ(header.size->width, 595.275591);
  EXPECT_EQ(header.size->height, 841.889764);
  EXPECT_EQ(header.resolution, 300);
  ASSERT_EQ(header.cutLines.size(), 2U);
  EXPECT_EQ(header.cutLines[0], (CutLine{CutLine::Kind::Rgb, {1, 0.502, 0}, {}}));
  EXPECT_EQ(header.cutLines[1], (CutLine{CutLine::Kind::Separation, {}, "CutContour"}));
  EXPECT_EQ(header.flatness, 3);
  EXPECT_TRUE(header.complaints.empty());
}

TEST(QueueHeader, without_lines_of_its_own_keeps_its_defaults) {
  const JobHeader header = ReadLines({});
  EXPECT_GT(header.length, 0U);
  EXPECT_FALSE(header.size);
  EXPECT_FALSE(header.resolution);
  EXPECT_TRUE(header.cutLines.empty());
  EXPECT_EQ(header.flatness, 10);
}

TEST(QueueHeader, is_none_in_front_of_anything_else) {
  for (const char* const text : {"", "%!PS\n", "%#Begin Job: 0\r\n%#End Job\r\n",
                                 " %#Velumark Header 2.0", "%PDF-1.4\n%#Velumark Header 2.0\r\n"}) {
    EXPECT_EQ(ReadJobHeader(text).length, 0U) << text;
  }
}

TEST(QueueHeader, takes_every_kind_of_line_end) {
  std::string bare = Full;
  std::erase(bare, '\r');
  EXPECT_EQ(ReadJobHeader(bare + "%!PS\n").length, bare.size());
  EXPECT_EQ(ReadJobHeader(bare + "%!PS\n").resolution, 300);
  std::string old = Full;
  std::erase(old, '\n');
  EXPECT_EQ(ReadJobHeader(old + "%!PS\r").length, old.size());
  EXPECT_EQ(ReadJobHeader(old + "%!PS\r").cutLines.size(), 2U);
}

TEST(QueueHeader, passes_unknown_lines) {
  const JobHeader header =
      ReadLines("%#Colour=no\r\n%#\r\n%# = \r\n%#KVI_Other= 7\r\n%# KVI_Res= 5\r\n");
  EXPECT_EQ(header.resolution, 5);
  EXPECT_TRUE(header.complaints.empty());
}

TEST(QueueHeader, ends_in_front_of_the_first_other_line) {
  const std::string text = "%#Velumark Header 2.0\r\n%# KVI_Res= 50\r\n%!PS\n%# KVI_Res= 60\r\n";
  const JobHeader header = ReadJobHeader(text);
  EXPECT_EQ(header.length, text.find("%!PS"));
  EXPECT_EQ(header.resolution, 50);
}

TEST(QueueHeader, ends_behind_its_end_line) {
  const JobHeader header = ReadJobHeader(Full + "%# KVI_Res= 60\r\n");
  EXPECT_EQ(header.length, Full.size());
  EXPECT_EQ(header.resolution, 300);
}

TEST(QueueHeader, takes_resolutions_from_one_to_the_limit) {
  EXPECT_FALSE(ReadLines("%# KVI_Res= 0\r\n").resolution);
  EXPECT_EQ(ReadLines("%# KVI_Res= 1\r\n").resolution, 1);
  EXPECT_EQ(ReadLines("%# KVI_Res= 99999\r\n").resolution, 99999);
  EXPECT_EQ(ReadLines("%# KVI_Res= 100000\r\n").resolution, 100000);
  EXPECT_FALSE(ReadLines("%# KVI_Res= 100001\r\n").resolution);
  for (const char* const bad : {"", "x", "-5", "72.5", "72 dpi", "99999999999999999999"}) {
    const JobHeader header = ReadLines(std::string("%# KVI_Res= ") + bad + "\r\n");
    EXPECT_FALSE(header.resolution) << bad;
    EXPECT_EQ(header.complaints.size(), 1U) << bad;
  }
}

TEST(QueueHeader, takes_two_cut_lines_and_complains_of_a_third) {
  std::string lines;
  for (std::size_t count = 1; count <= 4; ++count) {
    lines += "%# KVI_CutLine= SEP, line " + std::to_string(count) + "\r\n";
    const JobHeader header = ReadLines(lines);
    EXPECT_EQ(header.cutLines.size(), std::min<std::size_t>(count, 2));
    EXPECT_EQ(header.complaints.size(), count - header.cutLines.size());
    EXPECT_EQ(header.cutLines[0].name, "line 1");
  }
}

TEST(QueueHeader, keeps_a_separations_name_as_it_stands) {
  for (const std::string name : {"a, b", "  two blanks", "end ", "=",
                                 "D\xE9"
                                 "coupe",
                                 ")", "x"}) {
    const JobHeader header = ReadLines("%# KVI_CutLine= SEP, " + name + "\r\n");
    ASSERT_EQ(header.cutLines.size(), 1U) << name;
    EXPECT_EQ(header.cutLines[0].name, name);
  }
  EXPECT_TRUE(ReadLines("%# KVI_CutLine= SEP, \r\n").cutLines.empty());
  EXPECT_TRUE(ReadLines("%# KVI_CutLine= SEP\r\n").cutLines.empty());
}

TEST(QueueHeader, refuses_colors_that_are_none) {
  for (const char* const bad :
       {"RGB, 1, 0", "RGB, 1, 0, x", "RGB, 1.1, 0, 0", "RGB, -0.1, 0, 0", "RGB, nan, 0, 0",
        "RGB, inf, 0, 0", "CMYK, 1, 0, 0", "cmyk, 1, 0, 0, 0", "LAB, 1, 0, 0", ""}) {
    const JobHeader header = ReadLines(std::string("%# KVI_CutLine= ") + bad + "\r\n");
    EXPECT_TRUE(header.cutLines.empty()) << bad;
    EXPECT_EQ(header.complaints.size(), 1U) << bad;
  }
  const auto cmyk = ReadLines("%# KVI_CutLine= CMYK, 0.0000, 1.0000, 0.5000, 0.0001\r\n");
  ASSERT_EQ(cmyk.cutLines.size(), 1U);
  EXPECT_EQ(cmyk.cutLines[0], (CutLine{CutLine::Kind::Cmyk, {0, 1, 0.5, 0.0001}, {}}));
}

TEST(QueueHeader, a_page_size_with_a_side_of_zero_is_none) {
  const JobHeader header = ReadLines("%#PageSize=Custom,0.000000,0.000000\r\n");
  EXPECT_FALSE(header.size);
  EXPECT_TRUE(header.complaints.empty());
  for (const char* const bad : {"Custom,1", "Custom,-1,5", "Custom,inf,5", "Custom,1e9,5", "A4"}) {
    const auto refused = ReadLines(std::string("%#PageSize=") + bad + "\r\n");
    EXPECT_FALSE(refused.size) << bad;
    EXPECT_EQ(refused.complaints.size(), 1U) << bad;
  }
}

TEST(QueueHeader, a_flatness_that_is_no_number_leaves_the_ordinary_one) {
  for (const char* const bad : {"", "fine", "0", "-1", "nan", "inf", "3 mm"}) {
    const JobHeader header = ReadLines(std::string("%# KVI_Setflat= ") + bad + "\r\n");
    EXPECT_EQ(header.flatness, 10) << bad;
    EXPECT_EQ(header.complaints.size(), 1U) << bad;
  }
  EXPECT_EQ(ReadLines("%# KVI_Setflat= 0.5\r\n").flatness, 0.5);
}

TEST(QueueHeader, of_equal_keys_the_last_counts) {
  EXPECT_EQ(ReadLines("%# KVI_Res= 50\r\n%# KVI_Res= 60\r\n").resolution, 60);
  EXPECT_EQ(ReadLines("%# KVI_Res= 50\r\n%# KVI_Res= x\r\n").resolution, 50);
}

TEST(QueueHeader, cut_at_any_byte_holds_the_whole_lines) {
  for (std::size_t cut = 0; cut <= Full.size(); ++cut) {
    const JobHeader header = ReadJobHeader(Full.substr(0, cut));
    EXPECT_TRUE(header.complaints.empty()) << cut;
    if (cut < std::string("%#Velumark Header").size()) {
      EXPECT_EQ(header.length, 0U);
    } else {
      // A lone '%' may begin anything.
      EXPECT_EQ(header.length, Full[cut - 1] == '%' && Full[cut - 2] == '\n' ? cut - 1 : cut);
    }
    // A number that was cut is not a smaller number.
    EXPECT_EQ(header.resolution.value_or(300), 300) << cut;
    for (const CutLine& line : header.cutLines) {
      EXPECT_TRUE(line.name.empty() || line.name == "CutContour") << cut;
    }
  }
}

TEST(QueueHeader, takes_no_more_than_its_limit) {
  const std::string start = "%#Velumark Header 2.0\n";
  const std::string line = "%# KVI_Res= 9\n";
  for (const std::size_t length : {JobHeaderLimit - 1, JobHeaderLimit, JobHeaderLimit + 1}) {
    std::string text = start + "%#";
    text += std::string(length - text.size() - line.size() - 1, 'x') + "\n" + line;
    ASSERT_EQ(text.size(), length);
    const JobHeader header = ReadJobHeader(text + "%!PS\n");
    EXPECT_EQ(header.resolution.has_value(), length <= JobHeaderLimit) << length;
    EXPECT_LE(header.length, JobHeaderLimit);
  }
}

TEST(QueueHeader, random_text_neither_crashes_nor_reaches_outside) {
  std::mt19937 random(20261121);
  const std::string letters = "%#KVI_CutLine= RGBSEPCMYK,.0123456789\r\n -eE+nainf\x80\xFF";
  for (int round = 0; round < 20000; ++round) {
    std::string text = round % 2 == 0 ? Full : "%#Velumark Header 2.0\r\n";
    const auto changes = random() % 40;
    for (std::size_t i = 0; i < changes; ++i) {
      const std::size_t at = random() % text.size();
      const char letter = letters[random() % letters.size()];
      if (random() % 2 == 0) {
        text[at] = letter;
      } else {
        text.insert(at, 1, letter);
      }
    }
    const JobHeader header = ReadJobHeader(text);
    ASSERT_LE(header.length, text.size());
    ASSERT_LE(header.cutLines.size(), 2U);
    ASSERT_GE(header.resolution.value_or(1), 1);
    ASSERT_GT(header.flatness, 0);
  }
}

TEST(QueueCommandLine, the_order_of_the_options_says_the_task) {
  const auto convert = ReadWords({"-ps", "-q", "/tmp/a.ps"});
  ASSERT_TRUE(convert);
  EXPECT_FALSE(convert->measure);
  EXPECT_EQ(convert->file, "/tmp/a.ps");
  const auto measure = ReadWords({"-q", "-ps", "/tmp\\b c.ps"});
  ASSERT_TRUE(measure);
  EXPECT_TRUE(measure->measure);
  EXPECT_EQ(measure->file, "/tmp/b c.ps");
}

TEST(QueueCommandLine, anything_else_is_refused) {
  for (const std::vector<const char*>& words :
       std::vector<std::vector<const char*>>{{},
                                             {"-ps"},
                                             {"-ps", "-q"},
                                             {"-ps", "-ps", "f"},
                                             {"-q", "-q", "f"},
                                             {"f", "-ps", "-q"},
                                             {"-ps", "-q", ""},
                                             {"-ps", "-q", "f", "g"},
                                             {"-s", "-q", "f"}}) {
    const auto read = ReadWords(words);
    ASSERT_FALSE(read) << words.size();
    EXPECT_EQ(read.Error().code, FailureCode::BadInput);
  }
}

TEST(QueueSource, a_declared_box_is_the_first_of_the_head) {
  const std::string two = "%!PS\n%%BoundingBox: 1 2 3 4\n%%BoundingBox: 5 6 7 8\n";
  EXPECT_EQ(FindDeclaredBox(two, two), (PointBox{1, 2, 3, 4}));
  EXPECT_EQ(FindDeclaredBox("%!PS\r%%BoundingBox: -1.5 2 3 4.25\r", {}),
            (PointBox{-1.5, 2, 3, 4.25}));
}

TEST(QueueSource, a_box_at_the_end_is_the_last_of_the_tail) {
  const std::string tail = "%%BoundingBox: 1 2 3 4\n%%BoundingBox: 5 6 7 8\n%%EOF\n";
  EXPECT_EQ(FindDeclaredBox("%!PS\n%%BoundingBox: (atend)\n", tail), (PointBox{5, 6, 7, 8}));
  EXPECT_EQ(FindDeclaredBox("%!PS\n", tail), (PointBox{5, 6, 7, 8}));
}

TEST(QueueSource, a_box_that_holds_nothing_or_is_none_is_not_declared) {
  for (const char* const box :
       {"0 0 0 0", "5 5 5 9", "9 9 1 1", "1 2 3", "a b c d", "nan 0 1 1", "0 0 1e300 1", ""}) {
    EXPECT_FALSE(FindDeclaredBox(std::string("%%BoundingBox: ") + box + "\n", {})) << box;
  }
  EXPECT_FALSE(FindDeclaredBox("x %%BoundingBox: 1 2 3 4\n", {}));
}

TEST(QueueSource, companions_stand_beside_the_file) {
  EXPECT_EQ(Companion("/a.b/vk123456.ps", ".cfm"), "/a.b/vk123456.cfm");
  EXPECT_EQ(Companion("/a.b/file", ".cfm"), "/a.b/file.cfm");
  EXPECT_EQ(Companion("/a.b/.ps", ".cut"), "/a.b/.ps.cut");
  EXPECT_EQ(Companion("x.pdf", "_Color.bmp"), "x_Color.bmp");
}

}  // namespace
}  // namespace rastrel::jobspool::testing
