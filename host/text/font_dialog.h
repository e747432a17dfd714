#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/host/dialogs.h"

namespace rastrel::text {

/// The dialog that asks for a font in place of a missing one: a sentence with its name, the list of
/// fonts, and two buttons. It knows no toolkit; a view shows it.
class FontDialog : public host::DialogLogic {
 public:
  /// Controls besides the two buttons, OkCommand and CancelCommand.
  static constexpr int ResourceId = 1101;
  static constexpr int Label = 1102;
  static constexpr int List = 1103;
  static constexpr int Question = 1104;

  /// `fonts` are the names to choose from; `usual` is chosen until the user chooses another.
  FontDialog(std::vector<std::wstring> fonts, const std::wstring& usual);

  /// The chosen font; nothing if the user cancelled, or the list has none.
  [[nodiscard]] std::optional<std::wstring> Answer() const;

  [[nodiscard]] const host::DialogResource& GetResource() const override;
  [[nodiscard]] CWnd* GetParent() const override { return nullptr; }
  [[nodiscard]] HANDLE GetPostedHandle() const override { return INVALID_HANDLE_VALUE; }
  std::size_t HandleMessages() override { return 0; }
  void Command(int control) override;
  [[nodiscard]] bool HasEnded() const override { return m_Ended; }
  [[nodiscard]] bool MayEndByItself() const override { return false; }
  [[nodiscard]] std::vector<std::wstring> GetEntries(int control) const override;
  [[nodiscard]] std::size_t GetChosen(int control) const override;
  void Choose(int control, std::size_t entry) override;

 private:
  std::vector<std::wstring> m_Fonts;
  std::size_t m_Chosen = 0;
  bool m_Ended = false;
  bool m_Accepted = false;
};

/// Asks a person for a font in place of a missing one, whose name may be empty. Nothing if the
/// person cancels, or if no view can be had.
[[nodiscard]] std::optional<std::wstring> AskForFont(host::DialogViews& views,
                                                     const std::wstring& missing,
                                                     std::vector<std::wstring> fonts);

}  // namespace rastrel::text
