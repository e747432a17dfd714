#pragma once

#include <string>
#include <string_view>

#include "rastrel/imports/cr2/cr2_parse.h"
#include "rastrel/imports/cr2/zml_parse.h"
#include "tests/imports/template_fixture.h"

namespace rastrel::test {

/// The parts of a template of either generation, each with all that a template needs.
struct TemplateParts {
  std::string head{};  ///< in front of the table's size
  std::string table = "<table_size width='24' height='12'/>";
  std::string attributes{};  ///< of the template
  std::string placement = "<placement width='3' height='2'/>";
  std::string content{};  ///< of the template, after its placement
  std::string tail{};     ///< between the template and the plates
  std::string plates = "<plates><plate/></plates>";
};

/// The document of these parts with that root element.
inline std::string TemplateText(const TemplateParts& parts, std::string_view root) {
  const std::string name(root);
  return "<" + name + ">" + parts.head + parts.table + "<template " + parts.attributes + ">" +
         parts.placement + parts.content + "</template>" + parts.tail + parts.plates + "</" + name +
         ">";
}

/// Parts with one plate of that content.
inline TemplateParts WithPlate(const std::string& content) {
  TemplateParts parts;
  parts.plates = "<plates><plate>" + content + "</plate></plates>";
  return parts;
}

/// Parts whose template has that content after its placement.
inline TemplateParts WithContent(const std::string& content) {
  TemplateParts parts;
  parts.content = content;
  return parts;
}

/// A frame of text with that content, placed.
inline std::string TextFrame(const std::string& content) {
  return "<text_frame><placement width='2' height='1'/>" + content + "</text_frame>";
}

/// The colors as lines of a transcript have them, "none" for one that is not there.
inline std::string Colors(const CR2_COLORS& colors) {
  const auto text = [](const std::unique_ptr<CVKColor>& color) {
    return color ? TextOf(*color) : std::string("none");
  };
  return "stroke " + text(colors.stroke) + ", fill " + text(colors.fill);
}

/// A placement's values: "1: 2 3, 4 x 5", and "constrained" after them.
inline std::string Placement(const CR2_PLACEMENT& placement) {
  return std::to_string(placement.origin) + ": " + TextOf(placement.x) + " " + TextOf(placement.y) +
         ", " + TextOf(placement.width) + " x " + TextOf(placement.height) +
         (placement.constrained ? " constrained" : "");
}

/// Left, top, right, bottom.
inline std::string Margins(const CR2_MARGINS& margins) {
  return TextOf(margins.left) + " " + TextOf(margins.top) + " " + TextOf(margins.right) + " " +
         TextOf(margins.bottom);
}

}  // namespace rastrel::test
