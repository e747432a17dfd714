#include "cutting/capture/cut_paths_file.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::cutting {
namespace {

constexpr double Millimeter = 72 / 25.4;  // in points

// A page of an inch by two with a clip and two paths.
const std::string Whole =
    "Rastrel cut paths 1\nunit: point\nwidth: 72\nheight: 144\nclips: 1\nclip\nm 0 0\nl 1 0\n"
    "h\nend-clip\npaths: 2\npath\nkind: stroke\ncolour: separation Cut%25 \xC3\xA4\n"
    "line-width: 0.72\nclip: crosses 1\nclosed: 1 0\nm 72 0\nl 144 0\nc 1 2 3 4 36 72\nh\nm 0 0\n"
    "l -72 7.2\nend-path\npath\nkind: eofill\ncolour: cmyk 0 0.25 1.0 0\nline-width: 0\n"
    "clip: inside\nclosed: 1\nm 0 0\nl 36 0\nh\nend-path\nend\n";

std::string Replaced(std::string text, const std::string& part, const std::string& other) {
  const std::size_t at = text.find(part);
  EXPECT_NE(at, std::string::npos) << part;
  return text.replace(at, part.size(), other);
}

std::string FailureFor(const std::string& text) {
  const auto job = ReadCutPaths(text, "cut-paths");
  if (job) return "no failure";
  EXPECT_EQ(job.Error().code, FailureCode::BadInput);
  return Describe(job.Error());
}

TEST(CutPathsFile, points_become_millimetres) {
  const auto job = ReadCutPaths(Whole, "cut-paths");
  ASSERT_TRUE(job) << Describe(job.Error());
  EXPECT_DOUBLE_EQ(job->width, 25.4);
  EXPECT_DOUBLE_EQ(job->height, 50.8);
  ASSERT_EQ(job->paths.size(), 2U);
  const Contour& first = job->paths[0].contours.at(0);
  EXPECT_DOUBLE_EQ(first.start.x, 25.4);
  EXPECT_DOUBLE_EQ(first.segments.at(0).end.x, 50.8);
  EXPECT_DOUBLE_EQ(job->paths[0].paint.lineWidth, 0.254);
}

TEST(CutPathsFile, curves_stay_curves_and_parts_stay_closed_or_open) {
  const auto job = ReadCutPaths(Whole, "cut-paths");
  ASSERT_TRUE(job);
  ASSERT_EQ(job->paths[0].contours.size(), 2U);
  const Contour& closed = job->paths[0].contours[0];
  EXPECT_TRUE(closed.closed);
  ASSERT_EQ(closed.segments.size(), 2U);
  EXPECT_TRUE(closed.segments[1].isCurve);
  EXPECT_NEAR(closed.segments[1].first.y * Millimeter, 2, 1e-12);
  EXPECT_NEAR(closed.segments[1].second.x * Millimeter, 3, 1e-12);
  EXPECT_NEAR(closed.segments[1].end.y, 25.4, 1e-12);
  EXPECT_FALSE(job->paths[0].contours[1].closed);
}

TEST(CutPathsFile, the_paint_is_that_of_the_file) {
  const auto job = ReadCutPaths(Whole, "cut-paths");
  ASSERT_TRUE(job);
  const PaintColor spot{ColorModel::Spot, {}, "Cut% \xC3\xA4"};
  EXPECT_EQ(job->paths[0].paint.color, spot);
  EXPECT_EQ(job->paths[0].paint.kind, Paint::Kind::Stroke);
  const PaintColor ink{ColorModel::Cmyk, {0, 0.25, 1, 0}, {}};
  EXPECT_EQ(job->paths[1].paint.color, ink);
  EXPECT_EQ(job->paths[1].paint.kind, Paint::Kind::EvenOddFill);
  EXPECT_EQ(job->paths[1].paint.lineWidth, 0);
}

TEST(CutPathsFile, a_page_without_paths_is_an_empty_job) {
  const auto job = ReadCutPaths(
      "Rastrel cut paths 1\nunit: point\nwidth: 1\nheight: 1\nclips: 0\npaths: 0\nend\n", "c");
  ASSERT_TRUE(job);
  EXPECT_TRUE(job->paths.empty());
}

TEST(CutPathsFile, a_fault_has_its_line) {
  EXPECT_EQ(FailureFor(""), "cut-paths:1:1: the file ends too early");
  EXPECT_EQ(FailureFor("x\n"), "cut-paths:1:1: 'Rastrel cut paths 1' is expected here");
  EXPECT_EQ(FailureFor(Replaced(Whole, "kind: stroke", "kind: dot")),
            "cut-paths:13:1: the kind is unknown: 'dot'");
  EXPECT_EQ(FailureFor(Replaced(Whole, "%25", "%2")),
            "cut-paths:14:1: the colour can't be read: 'separation Cut%2 \xC3\xA4'");
  EXPECT_EQ(FailureFor(Replaced(Whole, "cmyk 0 ", "cmyk ")),
            "cut-paths:27:1: the colour can't be read: 'cmyk 0.25 1.0 0'");
  EXPECT_EQ(FailureFor(Replaced(Whole, "l 144 0", "l 144")),
            "cut-paths:19:1: a segment is expected here");
  EXPECT_EQ(FailureFor(Replaced(Whole, "l 144 0", "l nan 0")),
            "cut-paths:19:1: a segment is expected here");
  EXPECT_EQ(FailureFor(Replaced(Whole, "m 72 0\n", "")), "cut-paths:18:1: 'm' is expected here");
  EXPECT_EQ(FailureFor(Replaced(Whole, "paths: 2", "paths: 3")),
            "cut-paths:35:1: 'path' is expected here");
  EXPECT_EQ(FailureFor(Replaced(Whole, "paths: 2", "paths: 1")),
            "cut-paths:25:1: 'end' is expected here");
  EXPECT_EQ(FailureFor(Whole + "x"), "cut-paths:36:1: the file goes on after its end");
}

TEST(CutPathsFile, counts_beyond_the_file_take_no_memory) {
  EXPECT_EQ(FailureFor(Replaced(Whole, "paths: 2", "paths: 18446744073709551615")),
            "cut-paths:35:1: 'path' is expected here");
  EXPECT_EQ(FailureFor(Replaced(Whole, "clips: 1", "clips: 18446744073709551616")),
            "cut-paths:5:1: a count is expected here");
}

TEST(CutPathsFile, a_text_that_is_cut_at_any_byte_is_refused) {
  for (std::size_t length = 0; length < Whole.size(); ++length)
    EXPECT_FALSE(ReadCutPaths(Whole.substr(0, length), "c")) << length;
}

TEST(CutPathsFile, components_keep_to_their_range) {
  const auto paint = PaintFrom("fill", "rgb -0.5 0.5 1.5", 3);
  ASSERT_TRUE(paint);
  const PaintColor color{ColorModel::Rgb, {0, 0.5, 1}, {}};
  EXPECT_EQ(paint->color, color);
  EXPECT_EQ(paint->lineWidth, 0);  // of no stroke
  EXPECT_FALSE(PaintFrom("fill", "lab 1 2 3", 0));
  EXPECT_FALSE(PaintFrom("blot", "gray 0", 0));
  EXPECT_FALSE(PaintFrom("fill", "gray 0 0", 0));
}

TEST(CutLayers, they_belong_to_the_paths_in_their_order) {
  CutJob job;
  job.paths.resize(3);
  const auto read =
      ReadCutLayers("Rastrel cut layers 1\npaths: 3\nCut\n\nSch\u00FC%25%0A\nend\n", "layers", job);
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ(job.paths[0].paint.layer, "Cut");
  EXPECT_EQ(job.paths[1].paint.layer, "");
  EXPECT_EQ(job.paths[2].paint.layer, "Sch\u00FC%\n");
}

TEST(CutLayers, faults_have_their_line_and_reason) {
  const auto fault = [](const std::string& text) {
    CutJob job;
    job.paths.resize(2);
    const auto read = ReadCutLayers(text, "layers", job);
    return read ? "read" : Describe(read.Error());
  };
  const std::string head = "Rastrel cut layers 1\n";
  EXPECT_EQ(fault(head + "paths: 2\na\nb\nend\n"), "read");
  EXPECT_EQ(fault(head + "paths: 1\na\nend\n"), "layers:2:1: it is of another number of paths");
  EXPECT_EQ(fault(head + "paths: 3\na\nb\nc\nend\n"),
            "layers:2:1: it is of another number of paths");
  EXPECT_EQ(fault(head + "paths: 2\na\n%4\nend\n"), "layers:4:1: the layer can't be read: '%4'");
  EXPECT_EQ(fault(head + "paths: 2\na\nb\n"), "layers:5:1: the file ends too early");
  EXPECT_EQ(fault(head + "paths: 2\na\nb\nend\nx"), "layers:6:1: the file goes on after its end");
  EXPECT_NE(fault("Rastrel cut layers 2\n"), "read");
}

}  // namespace
}  // namespace rastrel::cutting
