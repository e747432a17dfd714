#include "tests/children/rip_effects.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/cutter.h"

namespace rastrel::corerast::testing {

std::string PrefixOf(const RipFixture& bench, const std::wstring& sections,
                     const std::string& mode) {
  bench.File("root/Queue/rip/System/pmodes/Own/mode.ps", "%!PS\n" + mode + "\n");
  const std::string selection = "(%Lumiscript%pmodes/Own/mode.ps) SelectPrintMode\n";
  return bench.File("job.psp", "\nserverdict begin 0 exitserver\n\n" +
                                   (mode.empty() ? "" : selection) +
                                   "/SelectPrintMode load /$SelectPrintMode$ exch def\n"
                                   "/SelectPrintMode {pop} def\n" +
                                   os::Utf8FromWide(sections) + "\x04");
}

std::string Page(unsigned width, unsigned height, const std::string& drawing) {
  return "%!PS\n<< /PageSize [" + std::to_string(width) + " " + std::to_string(height) +
         "] >> setpagedevice\n" + drawing + "\nshowpage\n";
}

Names Pages(const ProgramRun& outcome, std::size_t count) {
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  Names pages = RipFixture::PagesOf(outcome);
  EXPECT_EQ(pages.size(), count) << outcome.reports;
  pages.resize(count);
  for (const std::string& page : pages) static_cast<void>(CheckedInfo(page));
  return pages;
}

std::string OnlyPage(const RipFixture& bench, const std::string& prefix, const std::string& job) {
  return Pages(bench.Run({prefix, bench.File("job.ps", job)}), 1).front();
}

CJobData CutColor(int model, std::array<std::int32_t, 4> color) {
  CJobData settings;
  settings.CutterEnabled = true;
  settings.CutterColorModel = model;
  settings.CutterColor = color;
  return settings;
}

CJobData RedCut() { return CutColor(prefix::CutterRgb, {255, 0, 0, 0}); }

CJobData NamedCut(const std::wstring& separation) {
  CJobData settings = CutColor(prefix::CutterNamed, {});
  settings.CutterSeparation = separation;
  return settings;
}

static std::string FileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool CutPath::Passes(double x, double y, double distance) const {
  for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
    if (std::abs(points[i] - x) <= distance && std::abs(points[i + 1] - y) <= distance) return true;
  }
  return false;
}

std::vector<CutPath> CutPathsOf(const std::string& page) {
  std::istringstream file(FileText(page + "/cut-paths"));
  std::vector<CutPath> paths;
  std::string line;
  std::getline(file, line);
  EXPECT_EQ(line, "Rastrel cut paths 1");
  while (std::getline(file, line) && line != "end") {
    std::istringstream words(line);
    std::string key;
    words >> key;
    const std::string value = line.size() > key.size() ? line.substr(key.size() + 1) : "";
    if (key == "path") {
      paths.emplace_back();
    } else if (key == "kind:") {
      paths.back().kind = value;
    } else if (key == "colour:") {
      paths.back().color = value;
    } else if (key == "line-width:") {
      paths.back().width = std::stod(value);
    } else if (key == "clip:") {
      paths.back().clip = value;
    } else if (key == "closed:") {
      paths.back().closed = value;
    } else if (key.size() == 1 && !paths.empty()) {
      paths.back().letters += key;
      for (double number = 0; words >> number;) paths.back().points.push_back(number);
    }
  }
  EXPECT_EQ(line, "end");
  return paths;
}

bool HasRed(const Pixels& pixels) {
  for (std::size_t i = 0; i + 2 < pixels.samples.size(); i += 3) {
    if (static_cast<unsigned char>(pixels.samples[i]) >
        static_cast<unsigned char>(pixels.samples[i + 1])) {
      return true;
    }
  }
  return false;
}

std::string Outline(const std::string& color) {
  return Page(144, 144,
              "0 0 1 setrgbcolor 30 90 20 20 rectfill\n" + color +
                  " 2 setlinewidth 20 20 moveto 100 0 rlineto 0 50 rlineto -100 0 rlineto "
                  "closepath stroke");
}

void ExpectOutlineCut(const std::string& page) {
  const std::vector<CutPath> paths = CutPathsOf(page);
  ASSERT_EQ(paths.size(), 1U);
  EXPECT_EQ(paths[0].kind, "stroke");
  EXPECT_EQ(paths[0].closed, "1");
  const double half = 0.5;  // of a pixel, which is a point here
  EXPECT_NEAR(paths[0].width, 2, half);
  for (const auto& [x, y] : {std::pair(20, 20), {120, 20}, {120, 70}, {20, 70}}) {
    EXPECT_TRUE(paths[0].Passes(x, y, half)) << x << " " << y;
  }
  const Pixels pixels = ReadPixels(page + "/page.tif");
  EXPECT_FALSE(HasRed(pixels));
  EXPECT_EQ(pixels.At(70, 124), "255,255,255");
  EXPECT_EQ(pixels.At(40, 44), "0,0,255");
}

std::string PdfStream(const std::string& content) {
  return "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream";
}

std::string PdfOf(const std::vector<std::string>& objects) {
  std::string file = "%PDF-1.6\n";
  std::string table = "0000000000 65535 f \n";
  for (std::size_t i = 0; i < objects.size(); ++i) {
    const std::string offset = std::to_string(file.size());
    table += std::string(10 - offset.size(), '0') + offset + " 00000 n \n";
    file += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
  }
  const std::string size = std::to_string(objects.size() + 1);
  return file + "xref\n0 " + size + "\n" + table + "trailer << /Size " + size +
         " /Root 1 0 R >>\nstartxref\n" + std::to_string(file.size()) + "\n%%EOF\n";
}

bool RunCommand(const std::string& command) {
  return std::system((command + " </dev/null >/dev/null 2>&1").c_str()) == 0;
}

bool HaveProgram(const std::string& name) { return RunCommand("command -v " + name); }

}  // namespace rastrel::corerast::testing
