#include "rastrel/platform/host/text_compose.h"

CFontReplacement::~CFontReplacement() = default;

namespace rastrel::host {

TextCompose::~TextCompose() = default;

// The defaults of operations that a host leaves out.

void TextCompose::SetTextColor(const CVKColor&) {}
std::unique_ptr<CFontReplacement> TextCompose::NewFontReplacement(const wchar_t*) {
  return nullptr;
}
const FontRecord* TextCompose::ChooseReplacementFont(CFontReplacement&, const wchar_t*, int, int) {
  return nullptr;
}
void TextCompose::InitNewText(CWnd*, const NewWorldPt&, const NewWorldPt&, int) {}
void TextCompose::TerminateNewText(CWnd*, int) {}
ObjectHandle TextCompose::GetTerminateTextEditHI() { return 0; }
std::vector<int> TextCompose::MakeReplaceableItemsListForParagraphEle(const ParagraphEle&) {
  return {};
}
std::wstring TextCompose::GetTextParagraphEle(const ParagraphEle&, int) { return {}; }
int TextCompose::ReplaceTextParagraphEle(ParagraphEle&, int, const wchar_t*) { return 0; }

}  // namespace rastrel::host
