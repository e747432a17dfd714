#include "host/text/font_dialog.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "host/document/notices.h"
#include "host/text/font_catalog.h"

namespace rastrel::text {

namespace {

constexpr host::DialogControl Controls[] = {
    {FontDialog::Question, host::ControlKind::Text, L""},
    {FontDialog::Label, host::ControlKind::Text, L"(*v*)&Font in its place:"},
    {FontDialog::List, host::ControlKind::Fonts, L""},
    {host::OkCommand, host::ControlKind::Button, L"(*v*)&Use this font"},
    {host::CancelCommand, host::ControlKind::Button, L"(*v*)&Cancel the import"},
};
constexpr host::DialogResource Resource{FontDialog::ResourceId, L"(*v*)Missing font", Controls};

std::wstring QuestionText(const std::wstring& missing) {
  if (missing.empty()) return L"A text of the template names no font.";
  return L"The font \"" + document::CleanMessage(missing) + L"\" is not on this machine.";
}

}  // namespace

FontDialog::FontDialog(std::vector<std::wstring> fonts, const std::wstring& usual)
    : m_Fonts(std::move(fonts)) {
  const auto found = std::ranges::find(m_Fonts, usual);
  if (found != m_Fonts.end()) m_Chosen = static_cast<std::size_t>(found - m_Fonts.begin());
}

std::optional<std::wstring> FontDialog::Answer() const {
  if (!m_Accepted || m_Chosen >= m_Fonts.size()) return std::nullopt;
  return m_Fonts[m_Chosen];
}

const host::DialogResource& FontDialog::GetResource() const { return Resource; }

void FontDialog::Command(int control) {
  if (m_Ended || (control != host::OkCommand && control != host::CancelCommand)) return;
  m_Ended = true;
  m_Accepted = control == host::OkCommand;
}

std::vector<std::wstring> FontDialog::GetEntries(int control) const {
  return control == List ? m_Fonts : std::vector<std::wstring>();
}

std::size_t FontDialog::GetChosen(int control) const { return control == List ? m_Chosen : 0; }

void FontDialog::Choose(int control, std::size_t entry) {
  if (control == List && entry < m_Fonts.size()) m_Chosen = entry;
}

std::optional<std::wstring> AskForFont(host::DialogViews& views, const std::wstring& missing,
                                       std::vector<std::wstring> fonts) {
  FontDialog dialog(std::move(fonts), DefaultReplacement);
  const std::unique_ptr<host::DialogView> view = views.MakeView(dialog);
  if (!view) return std::nullopt;
  view->SetText(FontDialog::Question, QuestionText(missing));
  view->RunModal();
  return dialog.Answer();
}

}  // namespace rastrel::text
