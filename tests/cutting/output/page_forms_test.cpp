// SVG and PDF: the forms that are pages.

#include <gtest/gtest.h>

#include <limits>

#include "cutting/output/cut_file.h"
#include "cutting/output/svg_writer.h"
#include "tests/cutting/output/judge.h"
#include "tests/cutting/output/sample_jobs.h"
#include "tests/support/comma_locale.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::JobOf;
using test::Line;
using test::PathOf;
using test::Rectangle;

std::string Written(const CutJob& job, CutForm form, const CutFileOptions& options = {}) {
  auto text = WriteCutFile(job, form, options);
  EXPECT_TRUE(text) << Describe(text ? Failure{} : text.Error());
  return text ? *std::move(text) : "";
}

std::string Fault(const CutJob& job, CutForm form, const CutFileOptions& options = {}) {
  const auto text = WriteCutFile(job, form, options);
  EXPECT_FALSE(text);
  return text ? "" : Describe(text.Error());
}

bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(SvgText, a_group_an_operation_has_its_paths_in_millimetres_from_the_top) {
  const CutJob job =
      JobOf({PathOf(Operation::CutHalf,
                    {{.start = {10, 10}, .segments = {CurveTo({10, 20}, {20, 30}, {30, 30})}}}),
             PathOf(Operation::Cut, {Rectangle(0, 0, 120, 80), Line({{1, 1}, {2, 1.23456}})})});
  EXPECT_EQ(
      Written(job, CutForm::Svg),
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"120mm\" height=\"80mm\" "
      "viewBox=\"0 0 120 80\">\n"
      "<g id=\"cut\" fill=\"none\" stroke=\"#ff0000\" stroke-width=\"0.25\" "
      "stroke-linecap=\"round\" stroke-linejoin=\"round\">\n<title>Cut</title>\n"
      "<path d=\"M0 80L120 80L120 0L0 0ZM1 79L2 78.7654\"/>\n</g>\n"
      "<g id=\"cut-half\" fill=\"none\" stroke=\"#0000ff\" stroke-width=\"0.25\" "
      "stroke-linecap=\"round\" stroke-linejoin=\"round\">\n<title>Cut half</title>\n"
      "<path d=\"M10 70C10 60 20 50 30 50\"/>\n</g>\n</svg>\n");
}

TEST(SvgText, paths_beside_the_page_make_it_larger) {
  const std::string text =
      Written(JobOf({PathOf(Operation::Cut, {Line({{-5, 10}, {130, 90}})})}), CutForm::Svg);
  EXPECT_TRUE(Has(text, "width=\"135mm\" height=\"90mm\" viewBox=\"0 0 135 90\""));
  EXPECT_TRUE(Has(text, "M0 80L135 0"));
}

TEST(SvgText, mirrored_and_swapped_axes_move_the_page_and_the_origin_does_not) {
  CutFileOptions options;
  options.placement = {.origin = Origin::Center, .mirrorX = true, .swapAxes = true};
  const std::string text =
      Written(JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {120, 10}})})}), CutForm::Svg, options);
  EXPECT_TRUE(Has(text, "viewBox=\"0 0 80 120\""));
  // The page's x is y now and counts down: its lower left corner is the upper left one.
  EXPECT_TRUE(Has(text, "M0 0L10 120"));
}

// A cross of 10 mm has bars of 1 mm: from 15 to 25 and from 19.5 to 20.5.
CutJob WithCross() {
  CutJob job = JobOf({PathOf(Operation::Cut, {Rectangle(40, 40, 60, 60)})});
  job.marks = {{.center = {20, 20}, .shape = RegistrationMark::Shape::Cross, .size = 10}};
  return job;
}

TEST(SvgText, registration_marks_are_a_black_group_after_the_paths) {
  const std::string text = Written(WithCross(), CutForm::Svg);
  const std::size_t group = text.find("<g id=\"registration\" fill=\"#000000\" stroke=\"none\">");
  ASSERT_NE(group, std::string::npos) << text;
  EXPECT_GT(group, text.find("<g id=\"cut\""));
  // 80 mm high, with y from the top.
  for (const char* place : {"25 ", "15 ", " 55", " 65", "19.5 ", "20.5 ", " 59.5", " 60.5"})
    EXPECT_NE(text.find(place, group), std::string::npos) << place << text;
  EXPECT_FALSE(Has(Written(JobOf({PathOf(Operation::Cut, {Rectangle(1, 1, 2, 2)})}), CutForm::Svg),
                   "registration"));
  EXPECT_NE(text.find("<title>Registration marks</title>"), std::string::npos);
}

TEST(PdfText, registration_marks_are_filled_in_black_and_in_no_separation) {
  const std::string text = Written(WithCross(), CutForm::Pdf);
  const std::size_t ink = text.find("q 0 0 0 1 k\n");
  ASSERT_NE(ink, std::string::npos) << text;
  const std::size_t end = text.find("f\nQ\n", ink);
  ASSERT_NE(end, std::string::npos);
  // 25 mm are 70.8661 points, and 19.5 mm 55.2756.
  for (const char* place : {"70.8661 ", "55.2756 "})
    EXPECT_LT(text.find(place, ink), end) << place << text;
  EXPECT_FALSE(
      Has(Written(JobOf({PathOf(Operation::Cut, {Rectangle(1, 1, 2, 2)})}), CutForm::Pdf), " k\n"));
}

TEST(SvgText, points_are_left_out_but_those_of_a_drill) {
  const std::vector<Contour> points{Line({{1, 1}})};
  EXPECT_FALSE(Has(Written(JobOf({PathOf(Operation::Cut, points)}), CutForm::Svg), "<path"));
  EXPECT_TRUE(Has(Written(JobOf({PathOf(Operation::Drill, points)}), CutForm::Svg), "M1 79h0"));
}

TEST(SvgText, an_xml_parser_reads_it) {
  if (!test::HaveProgram("xmllint") && !test::HaveProgram("python3"))
    GTEST_SKIP() << "no parser of XML is installed";
  rastrel::test::ScratchDirectory place;
  place.Write("a.svg", Written(test::Plate(), CutForm::Svg));
  place.Write("empty.svg", Written({}, CutForm::Svg));
  for (const char* name : {"a.svg", "empty.svg"})
    EXPECT_EQ(test::StatusOf("python3 -c 'import sys, xml.dom.minidom; "
                             "xml.dom.minidom.parse(sys.argv[1])' '" +
                             place.Path(name) + "'"),
              0);
}

TEST(PdfText, each_operation_is_stroked_in_its_own_separation_in_the_jobs_order) {
  const CutJob job = JobOf({PathOf(Operation::CutHalf, {Line({{0, 0}, {25.4, 0}})}),
                            PathOf(Operation::Cut, {Rectangle(0, 0, 25.4, 50.8)})});
  const std::string text = Written(job, CutForm::Pdf);
  EXPECT_TRUE(Has(text, "/MediaBox [0 0 340.1575 226.7717]"));
  EXPECT_TRUE(Has(text, "[/Separation /CutContour /DeviceCMYK"));
  EXPECT_TRUE(Has(text, "[/Separation /KissCut /DeviceCMYK"));
  EXPECT_TRUE(Has(text,
                  "stream\n/G gs 1 J 1 j 0.7087 w\n/CUT_HALF CS 1 SCN\n0 0 m\n72 0 l\nS\n"
                  "/CUT CS 1 SCN\n0 0 m\n72 0 l\n72 144 l\n0 144 l\nh\nS\nendstream"));
}

TEST(PdfText, the_table_has_the_offset_of_each_object) {
  const std::string text = Written(test::Plate(), CutForm::Pdf);
  const std::size_t table = std::stoul(text.substr(text.find("startxref\n") + 10));
  ASSERT_EQ(text.substr(table, 7), "xref\n0 ");
  const std::size_t count = std::stoul(text.substr(table + 7));
  EXPECT_EQ(count, 13U);  // the free one, five, and seven color spaces
  std::size_t at = text.find('\n', table + 7) + 1;
  for (std::size_t object = 0; object < count; ++object, at += 20) {
    ASSERT_EQ(text.substr(at + 18, 2), " \n");
    if (object == 0) continue;
    const std::size_t offset = std::stoul(text.substr(at, 10));
    const std::string begin = std::to_string(object) + " 0 obj\n";
    EXPECT_EQ(text.substr(offset, begin.size()), begin);
  }
  const std::size_t stream = text.find("stream\n") + 7;
  const std::size_t length = std::stoul(text.substr(text.find("/Length ") + 8));
  EXPECT_EQ(text.substr(stream + length, 9), "endstream");
}

TEST(PdfText, the_same_job_gives_the_same_bytes_in_any_locale) {
  const std::string text = Written(test::Plate(), CutForm::Pdf);
  const std::string drawing = Written(test::Plate(), CutForm::Svg);
  const rastrel::test::CommaLocale comma;
  EXPECT_EQ(Written(test::Plate(), CutForm::Pdf), text);
  EXPECT_EQ(Written(test::Plate(), CutForm::Svg), drawing);
}

TEST(PdfText, a_page_that_is_too_large_for_points_has_a_larger_unit) {
  const double limit = 14'400 / 72.0 * 25.4;
  const auto page = [](double width) {
    CutJob job = JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {width, 0}})})});
    job.width = width;
    return Written(job, CutForm::Pdf);
  };
  EXPECT_FALSE(Has(page(limit - 0.01), "/UserUnit"));
  EXPECT_FALSE(Has(page(limit), "/UserUnit"));
  EXPECT_TRUE(Has(page(limit + 0.01), "/UserUnit 2 "));
  EXPECT_TRUE(Has(page(2 * limit), "/UserUnit 2 "));
  EXPECT_TRUE(Has(page(2 * limit), "/MediaBox [0 0 14400 "));
  EXPECT_TRUE(Has(page(2 * limit), "0 0 m\n14400 0 l\n"));
}

TEST(PdfText, an_empty_page_has_the_least_size) {
  EXPECT_TRUE(Has(Written({}, CutForm::Pdf), "/MediaBox [0 0 3 3]"));
}

TEST(PdfText, names_of_separations_are_escaped_and_bad_ones_refused) {
  const CutJob job = JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})}),
                            PathOf(Operation::Crease, {Line({{0, 0}, {1, 0}})})});
  CutFileOptions options;
  const auto named = [&](const std::string& name) {
    options.pdf.spotOf[0] = name;
    return options;
  };
  EXPECT_TRUE(Has(Written(job, CutForm::Pdf, named("Thru cut/(1)#\xc3\xa9")),
                  "/Separation /Thru#20cut#2f#281#29#23#c3#a9 "));
  EXPECT_TRUE(Has(Written(job, CutForm::Pdf, named(std::string(127, 'x'))), "xxx "));
  for (const std::string& name : {std::string(), std::string(128, 'x')})
    EXPECT_EQ(Fault(job, CutForm::Pdf, named(name)), "a separation's name has 1 to 127 bytes");
  EXPECT_EQ(Fault(job, CutForm::Pdf, named("All")),
            "a separation can't be called All, which means no ink of its own");
  EXPECT_EQ(Fault(job, CutForm::Pdf, named("None")),
            "a separation can't be called None, which means no ink of its own");
  EXPECT_EQ(Fault(job, CutForm::Pdf, named("a\nb")), "a separation's name has a control character");
  EXPECT_EQ(Fault(job, CutForm::Pdf, named("Crease")),
            "two operations have the separation 'Crease'");
}

TEST(PdfText, a_line_is_no_hundred_millimetres_wide) {
  CutFileOptions options;
  for (const double width : {0.0, 100.0}) {
    options.pdf.lineWidth = width;
    EXPECT_TRUE(WriteCutFile(test::Plate(), CutForm::Pdf, options));
  }
  for (const double width : {-0.1, 100.1, std::numeric_limits<double>::quiet_NaN()}) {
    options.pdf.lineWidth = width;
    EXPECT_EQ(Fault(test::Plate(), CutForm::Pdf, options),
              "a line of a PDF file is 0 to 100 mm wide");
  }
}

TEST(PdfText, other_programs_read_it_without_a_word) {
  rastrel::test::ScratchDirectory place;
  place.Write("a.pdf", Written(test::Plate(), CutForm::Pdf));
  place.Write("empty.pdf", Written({}, CutForm::Pdf));
  bool judged = false;
  for (const char* name : {"a.pdf", "empty.pdf"}) {
    for (const char* judge : {"gs -q -dNOPAUSE -dBATCH -dSAFER -dPDFSTOPONERROR -sDEVICE=nullpage",
                              "pdftocairo -png -r 30"}) {
      if (!test::HaveProgram(std::string(judge).substr(0, std::string(judge).find(' ')))) continue;
      judged = true;
      EXPECT_EQ(test::StatusOf(std::string("cd '") + place.Path() + "' && " + judge + " " + name +
                               " > messages 2>&1"),
                0);
      EXPECT_EQ(place.Read("messages"), "") << judge;
    }
  }
  if (!judged) GTEST_SKIP() << "neither Ghostscript nor poppler is installed";
}

}  // namespace
}  // namespace rastrel::cutting
