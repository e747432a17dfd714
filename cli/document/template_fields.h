#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "cli/document/template_format.h"

namespace rastrel::cli {

/// The use of a field's value, by the place of the field in its template.
enum class FieldKind {
  Text,    ///< letters of a plate
  Number,  ///< a length, an angle, a count: the reader takes any other text as 0
  Color,   ///< a color's name
  File,    ///< the name of a file with a graphic, relative to the template
  Value,   ///< any other setting, such as the name of a font
};

/// "text", "number", "color", "file", "value".
[[nodiscard]] const char* NameOf(FieldKind kind);

/// The kind of value in a place of a template.
struct FieldPlace {
  FieldKind kind = FieldKind::Value;
  std::size_t maximum = 0;  ///< characters that the reader takes there; 0: it has no limit
};

/// A field of a template. One that is in several places has the kind that takes the fewest values,
/// in the order File, Number, Color, Value, Text, and the smallest of the maxima.
struct TemplateField {
  std::string heading;  ///< UTF-8, without blanks at its ends
  FieldKind kind = FieldKind::Text;
  std::size_t maximum = 0;
};

/// The place in an element's text, or in an attribute of it. `path` has the names of the elements
/// from the root; the name of the attribute is empty for text.
[[nodiscard]] FieldPlace PlaceOfField(TemplateFormat format,
                                      const std::vector<std::wstring_view>& path,
                                      std::string_view attribute);

/// Adds a further place of a field.
void JoinPlace(TemplateField& field, const FieldPlace& place);

}  // namespace rastrel::cli
