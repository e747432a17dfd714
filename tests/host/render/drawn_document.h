#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/render/document_images.h"
#include "tests/host/text/text_shapes.h"
#include "tests/support/scratch_directory.h"

/// A document that tests put objects into and have drawn.
namespace rastrel::test {

/// The output of a command. Fails the test if the command fails.
inline std::string Output(const std::string& command) {
  const auto close = [](std::FILE* pipe) { EXPECT_EQ(::pclose(pipe), 0) << "the command failed"; };
  const std::unique_ptr<std::FILE, decltype(close)> pipe(::popen(command.c_str(), "r"), close);
  std::string text;
  char buffer[4096];
  for (std::size_t count = 0; (count = std::fread(buffer, 1, sizeof buffer, pipe.get())) > 0;) {
    text.append(buffer, count);
  }
  return text;
}

inline document::Attributes Colored(const CVKColor& color) {
  document::Attributes attributes;
  attributes.layer = attributes.lineColor = color;
  return attributes;
}

inline const CVKColor Red(0x0000FF, COLORSPACE_RGB, 0, 0);
inline const CVKColor Blue(0xFF0000, COLORSPACE_RGB, 0, 0);
inline const CVKColor Gold(0x37AFD4, COLORSPACE_RGB, 0, 0);
inline const CVKColor Invisible(-1, COLORSPACE_RGB, 0, 0);

/// A straight path through points, closed or not.
inline document::PathShape Polygon(const std::vector<CWorldPoint>& points, bool closed) {
  document::SubPath part;
  part.start = points.front();
  for (std::size_t i = 1; i < points.size(); ++i) {
    part.segments.push_back({false, {CWorldPoint(), CWorldPoint(), points[i]}});
  }
  part.closed = closed;
  document::PathShape path;
  path.subPaths.push_back(part);
  return path;
}

class DrawnDocument : public testing::Test {
 protected:
  DrawnDocument() { m_Document.SetBlank({20, 12, 7}); }

  document::ObjectHandle Add(document::Shape shape, const document::Attributes& attributes = {},
                             document::ObjectHandle parent = host::DocumentRoot) {
    const auto handle = m_Document.Create(std::move(shape), attributes);
    EXPECT_TRUE(m_Document.Insert(handle, parent));
    return handle;
  }

  /// A plate of panes side by side from the left edge, and its text and drill points.
  void AddUsual() {
    document::PlateShape plate;
    plate.wanted = 2;
    plate.width = 8;
    plate.height = 4;
    plate.panes = {{1, 11, 9, 7}, {10, 11, 18, 7}};
    Add(plate, Colored(Gold));
    Add(Paragraph(plate.panes[0], 220, JUSTIFY_CENTER, LINEFIT_EACH_LINE,
                  {{Piece(L"Mill & Son", 300)}, {Piece(L"since 1890 <and before>", 300)}}),
        Colored(Blue));
    Add(document::DrillShape{{1.5, 10.5}, 0.4064}, Colored(Red));
    Add(document::DrillShape{{8.5, 10.5}, 0.3}, Colored(Red));
    document::PathShape cut = Polygon({{1, 5}, {9, 5}, {9, 1}, {1, 1}}, true);
    cut.cutLine = document::CutLine::Cut;
    Add(cut, Colored(CVKColor(0xFF00FF, COLORSPACE_RGB, 0, 0)));
    Add(Polygon({{11, 5}, {14, 5}, {12.5, 1}}, true), Colored(Red));
  }

  [[nodiscard]] render::ImageSource Source() { return {m_Document, m_Fonts, m_Notices}; }

  /// The first picture.
  [[nodiscard]] std::string Draw(render::ImageFormat format,
                                 const render::ImageOptions& options = {}) {
    const auto images = render::DrawDocument(Source(), format, options);
    if (images) return images->front();
    ADD_FAILURE() << Describe(images.Error());
    return {};
  }
  [[nodiscard]] std::string DrawSvg(const render::ImageOptions& options = {}) {
    return Draw(render::ImageFormat::Svg, options);
  }

  /// Why there is no picture.
  [[nodiscard]] std::string Refusal(render::ImageFormat format,
                                    const render::ImageOptions& options = {}) {
    const auto images = render::DrawDocument(Source(), format, options);
    return images ? "" : Describe(images.Error());
  }

  /// The lines that measure_svg.py prints of the first page, or those that begin with a word.
  [[nodiscard]] std::vector<std::string> Measured(const std::string& word = {},
                                                  const render::ImageOptions& options = {}) {
    m_Directory.Write("measured.svg", DrawSvg(options));
    std::istringstream lines(Output("python3 -B '" RASTREL_SOURCE_DIR
                                    "/tests/host/render/measure_svg.py' '" +
                                    m_Directory.Path("measured.svg") + "'"));
    std::vector<std::string> found;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with(word)) found.push_back(line);
    }
    return found;
  }

  document::Document m_Document;
  document::Notices m_Notices;
  text::FontCatalog m_Fonts{m_Notices};
  ScratchDirectory m_Directory;
};

/// The numbers of a line, from its second word on.
inline std::vector<double> Numbers(const std::string& line) {
  std::istringstream words(line);
  std::string first;
  words >> first;
  std::vector<double> numbers;
  for (double number = 0; words >> number;) numbers.push_back(number);
  return numbers;
}

}  // namespace rastrel::test
