#pragma once

#include <span>
#include <string_view>

#include "cli/document/template_format.h"

namespace rastrel::cli {

/// An element of a template format. Lists are names with spaces between them; a name may have a
/// colon and the kind of its value after it (`ValueKind`), and an exclamation mark at its end if
/// the element needs it.
///
///     attributes  "x:number width:number! origin:origin"
///     children    "placement! color*"
struct SchemaElement {
  std::wstring_view name;
  std::wstring_view parent;  ///< empty: below any; a row with a parent goes before one without
  std::wstring_view attributes;
  std::wstring_view children;
};

/// The texts that a kind of value knows besides numbers.
struct ValueKind {
  std::wstring_view name;
  bool number = false;              ///< any number will do
  std::wstring_view keywords = {};  ///< separated by bars; none: any text will do
};

/// A format's elements. The first row is the root, of any name.
struct TemplateSchema {
  TemplateFormat format;
  std::span<const SchemaElement> elements;

  /// The row of an element; null for one whose content is not looked at.
  [[nodiscard]] const SchemaElement* Find(std::wstring_view name, std::wstring_view parent) const;
};

/// The schema of a format; null for one that has none here (plate XML and documents).
[[nodiscard]] const TemplateSchema* SchemaOf(TemplateFormat format);
/// The kind of that name. REQUIRES: there is one.
[[nodiscard]] const ValueKind& KindOf(std::wstring_view name);

/// Cuts the first entry off a list of names: "width:number! height" gives width, number and true.
struct SchemaEntry {
  std::wstring_view name;
  std::wstring_view kind;  ///< empty for any text
  bool needed = false;
};
[[nodiscard]] SchemaEntry TakeEntry(std::wstring_view& list);

}  // namespace rastrel::cli
