#include "cli/document/font_prompt.h"

#include <algorithm>
#include <iostream>
#include <memory>

#include "cli/console/standard_streams.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

std::string Lower(std::string text) {
  std::ranges::transform(text, text.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return text;
}

std::string Trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(" \t\r");
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r") + 1 - begin);
}

class FontPrompt : public host::DialogView {
 public:
  explicit FontPrompt(host::DialogLogic& dialog) : m_Dialog(dialog) {
    for (const host::DialogControl& control : dialog.GetResource().controls) {
      if (control.kind == host::ControlKind::Fonts) m_List = control.id;
    }
    for (const std::wstring& entry : dialog.GetEntries(m_List)) {
      m_Entries.push_back(os::Utf8FromWide(entry));
    }
  }

  void SetText(int /*control*/, const std::wstring& text) override {
    WriteErrorLine(os::Utf8FromWide(text));
  }
  void SetRange(int, int, int) override {}
  void SetPosition(int, int) override {}

  void RunModal() override {
    while (!m_Dialog.HasEnded()) Ask();
  }

 private:
  void Ask() {
    const std::size_t chosen = m_Dialog.GetChosen(m_List);
    const std::string usual = chosen < m_Entries.size() ? m_Entries[chosen] : "none";
    WriteErrorLine("Type the font in its place; Enter: " + usual +
                   ", ?: list, q: cancel the import");
    std::string line;
    if (!std::getline(std::cin, line)) return m_Dialog.Command(host::CancelCommand);
    Take(Trimmed(line));
  }

  void Take(const std::string& typed) {
    if (typed.empty()) return m_Dialog.Command(host::OkCommand);
    if (typed == "q" || typed == "Q") return m_Dialog.Command(host::CancelCommand);
    if (typed == "?") {
      for (const std::string& entry : m_Entries) WriteErrorLine("  " + entry);
      return;
    }
    const auto entry = EntryOf(m_Entries, typed);
    if (!entry) {
      WriteErrorLine("no font, or more than one, begins with \"" + typed + "\"");
      return;
    }
    m_Dialog.Choose(m_List, *entry);
    m_Dialog.Command(host::OkCommand);
  }

  host::DialogLogic& m_Dialog;
  int m_List = -1;
  std::vector<std::string> m_Entries;
};

}  // namespace

std::optional<std::size_t> EntryOf(const std::vector<std::string>& entries,
                                   const std::string& typed) {
  const std::string wanted = Lower(typed);
  std::optional<std::size_t> found;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::string entry = Lower(entries[i]);
    if (entry == wanted) return i;
    if (!entry.starts_with(wanted)) continue;
    // One that is the beginning of the other names may still come as a whole.
    found = found ? entries.size() : i;
  }
  return found && *found < entries.size() ? found : std::nullopt;
}

std::unique_ptr<host::DialogView> FontPrompts::MakeView(host::DialogLogic& dialog) {
  return std::make_unique<FontPrompt>(dialog);
}

void FontPrompts::ShowMessage(CWnd* /*parent*/, const std::wstring& text,
                              const std::wstring& title) {
  WriteErrorLine(os::Utf8FromWide(title + L": " + text));
}

}  // namespace rastrel::cli
