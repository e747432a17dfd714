#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/host/dialogs.h"

namespace rastrel::cli {

/// Shows a dialog that asks for a font on the terminal: its text, then a line to be typed. An empty
/// line takes the font that is chosen already, "?" lists all, "q" and the end of the input cancel.
/// A name may be typed in any case, and cut short where only one font begins so.
class FontPrompts : public host::DialogViews {
 public:
  [[nodiscard]] std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override;
  void ShowMessage(CWnd* parent, const std::wstring& text, const std::wstring& title) override;
  [[nodiscard]] bool CanAsk() override { return true; }
};

/// The entry that a typed name means: the same in any case of ASCII letters, else the only one that
/// begins so. Nothing if there is none, or several begin so.
[[nodiscard]] std::optional<std::size_t> EntryOf(const std::vector<std::string>& entries,
                                                 const std::string& typed);

}  // namespace rastrel::cli
