#pragma once

#include <string>
#include <vector>

#include "host/document/shapes.h"

/// Texts for tests, in the DejaVu fonts.
namespace rastrel::test {

inline document::TextRun Piece(const std::wstring& text, double size,
                               const std::wstring& font = L"DejaVuSans") {
  document::TextRun run;
  run.text = text;
  run.font = font;
  run.size = size;
  return run;
}

/// A paragraph as an import leaves it: in a frame (world units), with side margins in per mille of
/// the frame's width, lines set as one block and squeezed where they must be.
inline document::TextShape Paragraph(const CWorldRect& frame, int perMille, int justification,
                                     int lineFit,
                                     const std::vector<std::vector<document::TextRun>>& lines) {
  document::TextShape text;
  text.frame = frame;
  text.paragraph.fit = 2;
  text.paragraph.frameMode = 3;
  text.paragraph.lineFit = lineFit;
  text.paragraph.leftPercent = text.paragraph.rightPercent = perMille;
  const double width = (frame.right - frame.left) / 2.54 * 1000;
  text.paragraph.leftMargin = text.paragraph.rightMargin = width * perMille / 1000;
  text.justifyMode = 2;
  text.lineMode = 4;
  for (const auto& runs : lines) {
    document::TextLine& line = text.lines.emplace_back();
    line.justification = justification;
    line.runs = runs;
  }
  return text;
}

}  // namespace rastrel::test
