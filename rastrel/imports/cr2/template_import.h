#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "rastrel/imports/document_host.h"
#include "rastrel/platform/host/text_compose.h"

namespace rastrel::imports {

/// The state that the steps of one import share.
struct TemplateImport {
  DocumentHost document;
  const wchar_t* caption;  ///< of messages to the user; a constant
  std::unique_ptr<CFontReplacement> replacements = nullptr;  ///< null: the host has none
  bool cancelled = false;            ///< the user refused a replacement: no further plate is built
  bool unicodeLost = false;          ///< a character could not be kept
  std::set<std::wstring> missing{};  ///< lacks of the host in the log already

  /// Writes to the application log, once an import, that the host lacks something: "[Import] the
  /// host " and then `lack`.
  void LogMissing(const wchar_t* lack);
};

/// The import of a template into that document, with the font replacements kept under "cr2" by
/// both generations, so that a user is asked once.
[[nodiscard]] TemplateImport BeginTemplateImport(const DocumentHost& document,
                                                 const wchar_t* caption);

/// Shows the one message that an import can end with: that it was cancelled, or that characters
/// were lost.
void ShowClosingMessage(TemplateImport& import);

}  // namespace rastrel::imports
