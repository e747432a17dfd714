#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/readers/sheet_limits.h"

namespace rastrel::readers {

/// An element of a workbook or of its relationships: local name, and local names and values of its
/// attributes in the document's order.
struct ExcelElement {
  std::wstring m_Name;
  std::vector<std::pair<std::wstring, std::wstring>> m_Attributes;

  /// Value of the last attribute of that local name; empty if there is none. `id`, of the
  /// workbook's own, and `r:id` are the same here, and the later one counts.
  [[nodiscard]] std::wstring Value(std::wstring_view localName) const;
};

/// Selects the elements of a document: the children of its root that are called `parent`, or,
/// if `child` is not empty, the children of those that are called `child`.
struct ExcelElementNames {
  std::wstring_view root;
  std::wstring_view parent;
  std::wstring_view child;
};

/// Appends them to `elements`. False, and nothing is appended, if the file can't be read or is no
/// document, if its root has another name, or if it passes a limit; all of them are reported
/// (xml/failure.h).
[[nodiscard]] bool ReadExcelElements(std::wstring_view path, const ExcelElementNames& names,
                                     const SheetLimits& limits,
                                     std::vector<ExcelElement>& elements);

}  // namespace rastrel::readers
