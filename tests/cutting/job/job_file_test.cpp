#include "cutting/job/job_file.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::cutting {
namespace {

CutJob FullJob() {
  CutJob job{.width = 841.9, .height = 0.1 + 0.2, .paths = {}};
  CutPath path;
  path.operation = Operation::Perforate;
  path.rule = "dots \"and\" \\ dashes \xC3\xA4";
  path.settings = {.tool = "wheel",
                   .speed = 12.5,
                   .force = 80,
                   .passes = 99,
                   .order = -3,
                   .kerf = 0.2,
                   .overcut = 1,
                   .leadIn = 2,
                   .bridges = 1000,
                   .bridgeWidth = 0.5};
  path.paint = {.kind = Paint::Kind::EvenOddFill,
                .lineWidth = 0,
                .color = {ColorModel::Cmyk, {0, 0.1, 1.0 / 3, 1}, {}},
                .layer = "Cuts"};
  path.contours = {{.start = {1.0 / 3, -1e-9},
                    .segments = {LineTo({1, 2}), CurveTo({3, 4}, {5, 6}, {7, 8})},
                    .closed = true},
                   {.start = {0, 0}, .segments = {}, .closed = false}};
  job.paths = {path, {.contours = {}, .paint = {.color = {ColorModel::Spot, {}, "Kiss-cut"}}}};
  job.marks = {
      {.center = {5, 6}, .shape = RegistrationMark::Shape::Corner, .size = 4, .rotation = 90},
      {.center = {1, 1}, .shape = RegistrationMark::Shape::Cross, .size = 3}};
  return job;
}

// A job with one path that has `text` in the place of its contour.
std::string WithContour(const std::string& text) {
  return R"({"format": "rastrel-cut-job", "version": 1, "unit": "mm", "width": 1, "height": 1,
"paths": [{"operation": "cut", "contours": [)" +
         text + "]}]}";
}

std::string FailureFor(const std::string& text) {
  const auto job = ReadJobFile(text, "j.json");
  if (job) return "no failure";
  EXPECT_EQ(job.Error().code, FailureCode::BadInput);
  return Describe(job.Error());
}

TEST(JobFile, a_setting_of_one_is_no_setting_by_default) {
  CutJob job = FullJob();
  ToolSettings& settings = job.paths[0].settings;
  settings.passes = 2;
  settings.order = 1;
  settings.kerf = settings.overcut = settings.leadIn = settings.bridgeWidth = 1;
  settings.bridges = 1;
  const auto read = ReadJobFile(JobFileText(job), "j.json");
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ(*read, job);
}

TEST(JobFile, a_job_is_read_back_as_it_was) {
  const CutJob job = FullJob();
  const auto read = ReadJobFile(JobFileText(job), "j.json");
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ(*read, job);
}

TEST(JobFile, an_empty_job_is_three_lines) {
  EXPECT_EQ(JobFileText({.width = 210, .height = 297, .paths = {}}),
            "{\"format\": \"rastrel-cut-job\", \"version\": 1, \"unit\": \"mm\",\n"
            "\"width\": 210, \"height\": 297,\n\"paths\": []}\n");
}

TEST(JobFile, a_line_has_two_numbers_and_a_curve_six) {
  const auto job =
      ReadJobFile(WithContour(R"({"start": [0,0], "segments": [[1,2],[1,2,3,4,5,6]]})"), "j");
  ASSERT_TRUE(job) << Describe(job.Error());
  const Contour expected{.start = {0, 0},
                         .segments = {LineTo({1, 2}), CurveTo({1, 2}, {3, 4}, {5, 6})}};
  EXPECT_EQ(job->paths.at(0).contours.at(0), expected);
  EXPECT_EQ(FailureFor(WithContour(R"({"start": [0,0], "segments": [[1,2,3]]})")),
            "j.json:2:80: a segment has two numbers, or six");
}

TEST(JobFile, what_is_missing_has_its_default) {
  const auto job = ReadJobFile(WithContour(R"({"segments": [], "start": [0,0]})"), "j");
  ASSERT_TRUE(job);
  EXPECT_EQ(job->paths.at(0).settings, ToolSettings{});
  EXPECT_EQ(job->paths.at(0).paint, Paint{});
  EXPECT_TRUE(job->marks.empty());
}

TEST(JobFile, a_fault_is_told_with_its_place) {
  EXPECT_EQ(FailureFor(""), "j.json:1:1: an object is expected here");
  EXPECT_EQ(FailureFor("{\n \"format\": \"other\"}"), "j.json:2:12: this is no cut job");
  EXPECT_EQ(FailureFor("{\"format\": \"rastrel-cut-job\", \"version\": 2}"),
            "j.json:1:42: the version is unknown; version 1 is read");
  EXPECT_EQ(FailureFor("{\"unit\": \"in\"}"), "j.json:1:10: the unit is not mm");
  EXPECT_EQ(FailureFor("{\"\xC3\xA4\": 1, \"width\": 1}"),
            "j.json:1:2: the key is unknown: '\xC3\xA4'");
  EXPECT_EQ(FailureFor("{\"width\": 1, \"width\": 1}"),
            "j.json:1:14: the key comes twice: 'width'");
  EXPECT_EQ(FailureFor("{\"width\": \"1\"}"), "j.json:1:11: a number is expected here");
  EXPECT_EQ(FailureFor("{\"width\": 1 \"height\": 2}"), "j.json:1:13: ',' or '}' is expected here");
  EXPECT_EQ(FailureFor("{\"paths\": [{\"operation\": \"saw\"}]}"),
            "j.json:1:26: the operation is unknown: 'saw'");
}

TEST(JobFile, numbers_that_are_none_in_json_are_refused) {
  for (const std::string number : {"nan", "+1", "01", ".5", "1.", "1e", "-", "inf"})
    EXPECT_EQ(FailureFor("{\"width\": " + number + "}"), "j.json:1:11: a number is expected here")
        << number;
  EXPECT_EQ(FailureFor("{\"width\": 0x1}"), "j.json:1:12: ',' or '}' is expected here");
  EXPECT_EQ(FailureFor("{\"width\": 1e999}"), "j.json:1:11: the number is out of range");
}

TEST(JobFile, lengths_reach_to_a_kilometre) {
  const auto with = [](const std::string& width) {
    return "{\"format\": \"rastrel-cut-job\", \"version\": 1, \"unit\": \"mm\", \"width\": " +
           width + ", \"height\": 1, \"paths\": []}";
  };
  EXPECT_TRUE(ReadJobFile(with("999999.9"), "j"));
  EXPECT_TRUE(ReadJobFile(with("1000000"), "j"));
  EXPECT_FALSE(ReadJobFile(with("1000000.1"), "j"));
  EXPECT_TRUE(ReadJobFile(with("0"), "j"));
  EXPECT_FALSE(ReadJobFile(with("-0.1"), "j"));
}

TEST(JobFile, a_color_has_as_many_components_as_its_model) {
  const auto with = [](const std::string& color) {
    return R"({"format": "rastrel-cut-job", "version": 1, "unit": "mm", "width": 1, "height": 1,
      "paths": [{"operation": "cut", "contours": [], "paint": {"kind": "fill", "colour": )" +
           color + "}}]}";
  };
  EXPECT_TRUE(ReadJobFile(with(R"({"model": "rgb", "components": [0,1,0.5]})"), "j"));
  EXPECT_FALSE(ReadJobFile(with(R"({"model": "rgb", "components": [0,1]})"), "j"));
  EXPECT_FALSE(ReadJobFile(with(R"({"model": "gray", "components": [1.01]})"), "j"));
  EXPECT_FALSE(ReadJobFile(with(R"({"model": "spot"})"), "j"));
  EXPECT_FALSE(ReadJobFile(with(R"({"model": "rgb", "components": [0,1,0], "name": "x"})"), "j"));
}

TEST(JobFile, passes_and_bridges_keep_to_their_ranges) {
  const auto with = [](const std::string& settings) {
    return static_cast<bool>(ReadJobFile(
        R"({"format": "rastrel-cut-job", "version": 1, "unit": "mm", "width": 1, "height": 1,
      "paths": [{"operation": "cut", "contours": [], "settings": {)" +
            settings + "}}]}",
        "j"));
  };
  EXPECT_FALSE(with("\"passes\": 0"));
  EXPECT_TRUE(with("\"passes\": 1"));
  EXPECT_TRUE(with("\"passes\": 99"));
  EXPECT_FALSE(with("\"passes\": 100"));
  EXPECT_FALSE(with("\"passes\": 1.5"));
  EXPECT_TRUE(with("\"bridges\": 1000"));
  EXPECT_FALSE(with("\"bridges\": 1001"));
}

TEST(JobFile, a_name_has_a_thousand_bytes_at_most) {
  CutJob job{.width = 1, .height = 1, .paths = {{.contours = {}}}};
  job.paths[0].rule = std::string(1000, 'x');
  EXPECT_TRUE(ReadJobFile(JobFileText(job), "j"));
  job.paths[0].rule += 'x';
  EXPECT_FALSE(ReadJobFile(JobFileText(job), "j"));
}

TEST(JobFile, a_hostile_name_becomes_text_that_is_read) {
  CutJob job{.width = 1, .height = 1, .paths = {{.contours = {}}}};
  job.paths[0].rule = "a\nb\x1B[2J\xFF";
  const auto read = ReadJobFile(JobFileText(job), "j");
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ(read->paths[0].rule, "a b [2J\xEF\xBF\xBD");
}

TEST(JobFile, escapes_are_characters) {
  CutJob job{.width = 1, .height = 1, .paths = {{.contours = {}}}};
  job.paths[0].rule = "@";
  std::string text = JobFileText(job);
  text.replace(text.find('@'), 1, R"(\u00e4\ud83d\ude00\/)");
  const auto read = ReadJobFile(text, "j");
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ(read->paths[0].rule, "\xC3\xA4\xF0\x9F\x98\x80/");
  for (const char* const bad :
       {R"(\ud83d)", R"(\ud83dx)", R"(\ude00)", R"(\u12)", R"(\q)", R"(\u000a)"}) {
    std::string hostile = JobFileText(job);
    hostile.replace(hostile.find('@'), 1, bad);
    EXPECT_FALSE(ReadJobFile(hostile, "j")) << bad;
  }
}

TEST(JobFile, a_text_that_is_cut_at_any_byte_is_refused) {
  const std::string text = JobFileText(FullJob());
  for (std::size_t length = 0; length + 1 < text.size(); ++length)
    EXPECT_FALSE(ReadJobFile(text.substr(0, length), "j")) << length;
  EXPECT_FALSE(ReadJobFile(text + "x", "j"));
}

TEST(JobFile, any_byte_may_be_another_one) {
  const std::string text = JobFileText(FullJob());
  for (std::size_t at = 0; at < text.size(); ++at) {
    for (const char other : {'\0', '"', '[', '}', '9', '\xFF'}) {
      std::string hostile = text;
      hostile[at] = other;
      // Either it is refused, or the result is a job that is written and read again.
      if (const auto read = ReadJobFile(hostile, "j")) {
        const auto again = ReadJobFile(JobFileText(*read), "j");
        ASSERT_TRUE(again) << hostile;
        EXPECT_EQ(*again, *read);
      }
    }
  }
}

TEST(JobFile, deep_nesting_is_refused_at_its_first_step) {
  EXPECT_EQ(FailureFor("{\"paths\": " + std::string(1'000'000, '[')),
            "j.json:1:12: an object is expected here");
}

}  // namespace
}  // namespace rastrel::cutting
