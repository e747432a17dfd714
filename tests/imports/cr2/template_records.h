#pragma once

#include <algorithm>
#include <cmath>

#include "rastrel/imports/cr2/cr2_document.h"

namespace rastrel::test {

/// Rules that the records of every template keep, whatever the file holds.
class TemplateRecords {
 public:
  /// Whether a document keeps them. `hasVariables` for the second generation alone.
  static bool AreSound(const imports::Cr2Document& document, bool hasVariables) {
    return IsSound(document.tableSize.placement) && IsSound(document.plateTemplate.placement) &&
           IsSound(document.cutLine.placement) && IsSound(document.cutLine) &&
           std::ranges::all_of(document.plates, [&](const CR2_PLATE& plate) {
             return IsSound(plate, hasVariables);
           });
  }

 private:
  static bool AreNumbers(std::initializer_list<double> values) {
    return std::ranges::none_of(values, [](double value) { return std::isnan(value); });
  }
  static bool IsSound(const CR2_PLACEMENT& placement) {
    const bool isEmpty = placement.x == 0 && placement.y == 0 && placement.width == 0 &&
                         placement.height == 0 && !placement.constrained;
    return placement.origin >= 0 && placement.origin <= 9 && (placement.origin != 0 || isEmpty) &&
           AreNumbers({placement.x, placement.y, placement.width, placement.height});
  }
  static bool IsSound(const CR2_CUTLINE& line) {
    return line.present == 0 || (line.present == 1 && line.placement.origin != 0);
  }
  static bool IsSound(const CR2_FONT_SPEC& font) {
    return font.justification >= 0 && font.justification <= 2 &&
           AreNumbers({font.size, font.lineHeight});
  }
  static bool IsSound(const CR2_TEXT_LINE& line) {
    return !line.spans.empty() &&
           std::ranges::all_of(line.spans, [](const CR2_SPAN& span) { return IsSound(span.font); });
  }
  static bool IsSound(const CR2_TEXT& text) {
    return IsSound(text.font) &&
           std::ranges::all_of(text.lines, [](const CR2_TEXT_LINE& line) { return IsSound(line); });
  }
  static bool IsSound(const CR2_PLATE& plate, bool hasVariables) {
    for (const CR2_GRAPHIC_FRAME& frame : plate.graphicFrames) {
      const std::size_t variables = hasVariables ? 4 : 0;
      if (!IsSound(frame.placement) || frame.variables.size() != variables ||
          frame.isVariablePresent.size() != variables)
        return false;
    }
    return std::ranges::all_of(plate.textFrames, [](const CR2_TEXT_FRAME& frame) {
      return IsSound(frame.placement) &&
             std::ranges::all_of(frame.texts, [](const CR2_TEXT& text) { return IsSound(text); });
    });
  }
};

}  // namespace rastrel::test
