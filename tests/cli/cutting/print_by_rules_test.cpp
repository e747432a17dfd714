// A print through the device and the cutter's file of the same interpretation: one frame for both.

#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

using cutting::CutJob;
using cutting::Point;

constexpr double Inch = 25.4;
constexpr double Pixel = Inch / 300;

// A rectangle of the sign's ink around which the contour is cut. The page is of no whole pixels.
std::string Sign(const std::string& ink) {
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 101 83\n%%EndComments\n" + ink +
         " 20.3 15.7 60 48 rectfill\n"
         "[/Separation (CutContour) /DeviceCMYK {0 exch 0 0}] setcolorspace 1 setcolor\n"
         "0.3 setlinewidth 20.3 15.7 60 48 rectstroke\nshowpage\n%%EOF\n";
}

constexpr const char* GoldInk =
    "[/Separation (Old Gold) /DeviceCMYK {dup 0.2 mul exch dup 0.4 mul exch 0.9 mul 0}]"
    " setcolorspace 1 setcolor";

constexpr const char* Rules =
    "[[rule]]\nname = \"contour\"\nspot = \"CutContour\"\noperation = \"cut\"\n";

// The delivered planes, in ink: 255 is all.
struct Planes {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t samples = 0;
  std::vector<std::uint8_t> ink;  // pixel by pixel, rows from the top

  [[nodiscard]] double At(std::uint32_t x, std::uint32_t y, std::size_t plane) const {
    return ink[(std::size_t{y} * width + x) * samples + plane];
  }
};

Planes Read(const std::string& path) {
  Planes planes;
  TIFF* file = TIFFOpen(path.c_str(), "r");
  if (file == nullptr) return planes;
  std::uint16_t meaning = 0;
  TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &planes.width);
  TIFFGetField(file, TIFFTAG_IMAGELENGTH, &planes.height);
  TIFFGetField(file, TIFFTAG_SAMPLESPERPIXEL, &planes.samples);
  TIFFGetField(file, TIFFTAG_PHOTOMETRIC, &meaning);
  std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(file)));
  for (std::uint32_t y = 0; y < planes.height; ++y) {
    EXPECT_EQ(TIFFReadScanline(file, row.data(), y), 1);
    for (const std::uint8_t sample : row)
      planes.ink.push_back(
          meaning == PHOTOMETRIC_SEPARATED ? sample : static_cast<std::uint8_t>(255 - sample));
  }
  TIFFClose(file);
  return planes;
}

struct InkSum {
  double sum = 0;
  Point center{};
};

// All ink of a plane in a box around a place, in millimetres from the lower left.
InkSum InkAround(const Planes& planes, std::size_t plane, Point middle, double halfWidth,
                 double halfHeight) {
  InkSum found;
  for (std::uint32_t y = 0; y < planes.height; ++y) {
    for (std::uint32_t x = 0; x < planes.width; ++x) {
      const Point at{(x + 0.5) * Pixel, (planes.height - y - 0.5) * Pixel};
      if (std::abs(at.x - middle.x) > halfWidth || std::abs(at.y - middle.y) > halfHeight) continue;
      const double ink = planes.At(x, y, plane);
      found.sum += ink;
      found.center.x += ink * at.x;
      found.center.y += ink * at.y;
    }
  }
  if (found.sum > 0) found.center = {found.center.x / found.sum, found.center.y / found.sum};
  return found;
}

class PrintByRules : public testing::Test {
 protected:
  void Write(const std::string& ink) const {
    runner.Place().Write("sign.eps", Sign(ink));
    runner.Place().Write("rules.toml", Rules);
  }

  // Prints with circles around the page, and reads the delivered planes.
  Planes Print(const std::string& mode, const std::string& marks, const std::string& cut) {
    std::filesystem::remove_all(runner.Place().Path("out"));
    const CommandResult result =
        runner.Run({"print", "sign.eps", "--rules", "rules.toml", "--marks", marks, "--mode", mode,
                    "--cut-output", cut, "--output", "out"});
    EXPECT_EQ(result.status, 0) << result.error;
    return Read(runner.Place().Path("out/sign-1.tif"));
  }

  [[nodiscard]] CutJob Job(const std::string& name) const {
    const auto job = cutting::ReadJobFile(runner.Place().Read(name), name);
    EXPECT_TRUE(job);
    return job ? *job : CutJob{};
  }

  // The marks are within a quarter of a pixel of their places, in that plane; others have none.
  static void ExpectMarks(const Planes& planes, const CutJob& job, const std::vector<bool>& inked) {
    ASSERT_EQ(planes.samples, inked.size());
    for (const cutting::RegistrationMark& mark : job.marks) {
      for (std::size_t plane = 0; plane < inked.size(); ++plane) {
        const InkSum found = InkAround(planes, plane, mark.center, 3.5, 3.5);
        // A disc of 5 mm.
        const double whole = 255 * 3.14159265 * 2.5 * 2.5 / (Pixel * Pixel);
        EXPECT_NEAR(found.sum, inked[plane] ? whole : 0, whole / 500) << plane;
        if (!inked[plane]) continue;
        EXPECT_LE(Distance(found.center, mark.center), Pixel / 4) << plane;
      }
    }
  }

  // The ink that was painted within the contour, to the pixel, and nothing of the contour itself.
  static void ExpectInkInContour(const Planes& planes, std::size_t plane, const CutJob& job) {
    ASSERT_EQ(job.paths.size(), 1U);
    const cutting::Box box = BoxOf(job.paths[0]);
    const Point middle{(box.left + box.right) / 2, (box.bottom + box.top) / 2};
    const InkSum found =
        InkAround(planes, plane, middle, box.Width() / 2 + 1, box.Height() / 2 + 1);
    EXPECT_LE(std::abs(found.center.x - middle.x), Pixel / 2);
    EXPECT_LE(std::abs(found.center.y - middle.y), Pixel / 2);
    const double area = box.Width() * box.Height() / (Pixel * Pixel) * 255;
    EXPECT_NEAR(found.sum, area, area / 50);
  }

  CommandRunner runner{CommandRunner::Children::Real};
};

TEST_F(PrintByRules, has_marks_and_ink_of_rgb_where_the_cut_job_has_them) {
  Write("0 setgray");
  const Planes planes = Print("RGB/300 dpi", "circle:5mm,gap=3.3mm,count=5", "sign.json");
  const CutJob job = Job("sign.json");
  EXPECT_EQ(job.marks.size(), 5U);
  ExpectMarks(planes, job, {true, true, true});
  ExpectInkInContour(planes, 1, job);
}

TEST_F(PrintByRules, has_marks_of_cmyk_in_black_alone) {
  Write("1 0 0 0 setcmykcolor");
  const Planes planes = Print("CMYK/300 dpi", "circle:5mm", "sign.json");
  const CutJob job = Job("sign.json");
  ExpectMarks(planes, job, {false, false, false, true});
  ExpectInkInContour(planes, 0, job);
}

TEST_F(PrintByRules, keeps_the_plane_of_a_spot_color_and_has_none_of_the_contour) {
  Write(GoldInk);
  const Planes planes = Print("CMYK/300 dpi", "circle:5mm", "sign.json");
  const CutJob job = Job("sign.json");
  ExpectMarks(planes, job, {false, false, false, true, false});
  ExpectInkInContour(planes, 4, job);
}

TEST_F(PrintByRules, has_marks_in_all_separations_if_they_are_wanted_so) {
  Write(GoldInk);
  const Planes planes = Print("CMYK/300 dpi", "circle:5mm,ink=all", "sign.json");
  ExpectMarks(planes, Job("sign.json"), {true, true, true, true, true});
}

TEST_F(PrintByRules, gives_the_cutter_a_file_that_begins_at_the_first_mark) {
  Write("0 setgray");
  static_cast<void>(Print("Screen/preview", "circle:5mm", "sign.json"));
  const CutJob job = Job("sign.json");
  static_cast<void>(Print("Screen/preview", "circle:5mm", "sign.plt"));
  // The pen goes down in the lower left corner of the contour first or comes by it: 40 units a mm.
  const std::string text = runner.Place().Read("sign.plt");
  const std::size_t up = text.find("PU", text.find("SP"));
  ASSERT_NE(up, std::string::npos) << text;
  int x = 0;
  int y = 0;
  ASSERT_EQ(std::sscanf(text.c_str() + up, "PU%d,%d", &x, &y), 2) << text;
  const cutting::Box box = BoxOf(job.paths.at(0));
  const Point first = job.marks.at(0).center;
  const double left = (box.left - first.x) * 40;
  const double right = (box.right - first.x) * 40;
  const double bottom = (box.bottom - first.y) * 40;
  const double top = (box.top - first.y) * 40;
  EXPECT_LE(std::min(std::abs(x - left), std::abs(x - right)), 1) << text;
  EXPECT_LE(std::min(std::abs(y - bottom), std::abs(y - top)), 1) << text;
}

// Each contour of the job holds the sign's ink, and nowhere else is any but that of the marks.
void ExpectInkInAllContours(const Planes& planes, std::size_t plane, const CutJob& job) {
  for (const cutting::CutPath& path : job.paths) {
    const cutting::Box box = BoxOf(path);
    const Point middle{(box.left + box.right) / 2, (box.bottom + box.top) / 2};
    const InkSum found =
        InkAround(planes, plane, middle, box.Width() / 2 + 0.5, box.Height() / 2 + 0.5);
    EXPECT_LE(std::abs(found.center.x - middle.x), 0.1);
    EXPECT_LE(std::abs(found.center.y - middle.y), 0.1);
    const double area = box.Width() * box.Height() / (Pixel * Pixel) * 255;
    EXPECT_NEAR(found.sum, area, area / 50);
  }
}

TEST_F(PrintByRules, nests_pictures_where_the_cut_file_has_their_contours) {
  Write(GoldInk);
  runner.Place().Write("wide.eps", Sign("1 0 0 0 setcmykcolor"));
  const CommandResult nested =
      runner.Run({"nest", "sign.eps", "wide.eps", "--copies", "2", "--sheet", "roll:45mm", "--gap",
                  "2mm", "--rules", "rules.toml", "--mode", "CMYK/300 dpi", "--marks", "circle:5mm",
                  "--print", "sheet.pdf", "-o", "sheet.json"});
  ASSERT_EQ(nested.status, 0) << nested.error;
  const CutJob job = Job("sheet.json");
  ASSERT_EQ(job.paths.size(), 4U);
  ASSERT_EQ(job.marks.size(), 4U);
  const CommandResult printed =
      runner.Run({"print", "sheet.pdf", "--mode", "CMYK/300 dpi", "--output", "out"});
  ASSERT_EQ(printed.status, 0) << printed.error;
  const Planes planes = Read(runner.Place().Path("out/sheet-1.tif"));
  ASSERT_EQ(planes.samples, 5);
  CutJob gold{.width = 0, .height = 0, .paths = {job.paths[0], job.paths[1]}};
  CutJob cyan{.width = 0, .height = 0, .paths = {job.paths[2], job.paths[3]}};
  ExpectInkInAllContours(planes, 4, gold);
  ExpectInkInAllContours(planes, 0, cyan);
  for (const cutting::RegistrationMark& mark : job.marks)
    EXPECT_LE(Distance(InkAround(planes, 3, mark.center, 3.5, 3.5).center, mark.center), Pixel / 4);
}

TEST_F(PrintByRules, prints_each_panel_in_the_frame_of_its_own_marks) {
  Write("0 setgray");
  // The sign's contour is from 7.16 to 28.33 mm across, so that the seam parts it.
  const CommandResult tiled =
      runner.Run({"tile", "sign.eps", "--panel", "20x40mm", "--overlap", "4mm", "--rules",
                  "rules.toml", "--dpi", "300", "--marks", "circle:5mm", "--print", "panel.pdf",
                  "-o", "panel.json", "--json"});
  ASSERT_EQ(tiled.status, 0) << tiled.error;
  EXPECT_NE(tiled.output.find("\"print\":\"panel-1.pdf\""), std::string::npos) << tiled.output;
  for (const std::string name : {"panel-1", "panel-2"}) {
    const CutJob job = Job(name + ".json");
    const CommandResult printed = runner.Run({"print", name + ".pdf", "--output", "out"});
    ASSERT_EQ(printed.status, 0) << printed.error;
    const Planes planes = Read(runner.Place().Path("out/" + name + "-1.tif"));
    ASSERT_EQ(job.marks.size(), 4U);
    for (const cutting::RegistrationMark& mark : job.marks)
      EXPECT_LE(Distance(InkAround(planes, 0, mark.center, 3.5, 3.5).center, mark.center),
                Pixel / 4);
    // Up to the seam the ink is there as far as the path is cut, and goes on for half the overlap.
    ASSERT_FALSE(job.paths.empty());
    const cutting::Box box = BoxOf(job.paths[0]);
    const bool isLeft = name == "panel-1";
    const double outer = isLeft ? box.right + 2 : box.left - 2;
    const double inner = isLeft ? box.left : box.right;
    const Point middle{(outer + inner) / 2, (box.bottom + box.top) / 2};
    const InkSum found =
        InkAround(planes, 0, middle, std::abs(outer - inner) / 2 + 0.5, box.Height() / 2 + 0.5);
    EXPECT_NEAR(found.center.x, middle.x, 0.1) << name;
    EXPECT_NEAR(found.center.y, middle.y, 0.1) << name;
  }
}

TEST_F(PrintByRules, nests_no_cut_job_with_a_print) {
  runner.Place().Write("job.json", cutting::JobFileText({.width = 9, .height = 9, .paths = {}}));
  EXPECT_EQ(
      runner.Run({"nest", "job.json", "--sheet", "10x10cm", "--print", "a.pdf", "-o", "b.json"})
          .status,
      2);
  EXPECT_EQ(runner.Run({"tile", "job.json", "--panel", "5x5cm", "--print", "a.png", "-o", "b.json"})
                .status,
            2);
  EXPECT_FALSE(runner.Place().Has("a.pdf"));
  EXPECT_FALSE(runner.Place().Has("b.json"));
}

// A page of 100 by 80 points with a gray field and a contour in a separation.
std::string PdfSign() {
  const std::string content = "0 g 20 15 60 48 re f /S CS 1 SCN 0.3 w 20 15 60 48 re S";
  const std::vector<std::string> objects{
      "<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 100 80] /Contents 4 0 R /Resources << "
      "/ColorSpace << /S [/Separation /CutContour /DeviceCMYK << /FunctionType 2 /Domain [0 1] "
      "/C0 [0 0 0 0] /C1 [0 1 0 0] /N 1 >>] >> >> >>",
      "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream"};
  std::string pdf = "%PDF-1.4\n";
  std::string table = "0000000000 65535 f \n";
  for (std::size_t i = 0; i < objects.size(); ++i) {
    const std::string offset = std::to_string(pdf.size());
    table += std::string(10 - offset.size(), '0') + offset + " 00000 n \n";
    pdf += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
  }
  const std::string count = std::to_string(objects.size() + 1);
  return pdf + "xref\n0 " + count + "\n" + table + "trailer\n<< /Size " + count +
         " /Root 1 0 R >>\nstartxref\n" + std::to_string(pdf.size()) + "\n%%EOF\n";
}

TEST_F(PrintByRules, takes_paths_of_a_pdf_in_gray_and_in_cmyk) {
  runner.Place().Write("sign.pdf", PdfSign());
  runner.Place().Write("rules.toml", Rules);
  const std::string modes = runner.Root() + "/Queue/rip/System/pmodes/Gray";
  std::filesystem::create_directories(modes);
  std::ofstream(modes + "/300 dpi.ps")
      << "%!PS\n%%Title: Gray\n8 SetBPS\n1Color\n300 300 SetXYResolution\n";
  for (const std::string mode : {"Gray/300 dpi", "CMYK/300 dpi"}) {
    std::filesystem::remove_all(runner.Place().Path("out"));
    const CommandResult result =
        runner.Run({"print", "sign.pdf", "--rules", "rules.toml", "--marks", "circle:5mm", "--mode",
                    mode, "--cut-output", "sign.json", "--output", "out"});
    ASSERT_EQ(result.status, 0) << result.error;
    const Planes planes = Read(runner.Place().Path("out/sign-1.tif"));
    const bool isGray = mode.starts_with("Gray");
    const CutJob job = Job("sign.json");
    ExpectMarks(planes, job,
                isGray ? std::vector<bool>{true} : std::vector<bool>{false, false, false, true});
    ExpectInkInContour(planes, isGray ? 0 : 3, job);
    // The same without rules: a cut color that the page does not have.
    EXPECT_EQ(runner
                  .Run({"print", "sign.pdf", "--cut-color", "rgb:1,2,3", "--mode", mode, "--output",
                        "plain"})
                  .status,
              0);
  }
}

TEST_F(PrintByRules, refuses_options_that_part_the_print_from_the_cutter) {
  Write("0 setgray");
  for (const std::vector<std::string>& more : {std::vector<std::string>{"--scale", "A4"},
                                               {"--pages", "1"},
                                               {"--cut-color", "rgb:1,2,3"},
                                               {"--printer", "Separation"},
                                               {"second.eps"}}) {
    std::vector<std::string> arguments{"print",      "sign.eps",     "--rules",
                                       "rules.toml", "--cut-output", "sign.json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_EQ(runner.Run(arguments).status, 2) << more.front();
  }
  EXPECT_EQ(runner.Run({"cut", "sign.eps", "--mode", "CMYK/300 dpi", "-o", "a.json"}).status, 2);
  EXPECT_EQ(
      runner.Run({"cut", "sign.eps", "--print", "a.tif", "--mode", "CMYK/300 dpi", "-o", "a.json"})
          .status,
      3);
  EXPECT_FALSE(runner.Place().Has("sign.json"));
  EXPECT_FALSE(runner.Place().Has("a.tif"));
}

}  // namespace
}  // namespace rastrel::test
