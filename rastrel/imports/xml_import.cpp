#include "rastrel/imports/xml_import.h"

#include <array>
#include <string_view>

#include "rastrel/imports/font_type.h"
#include "rastrel/imports/text_placing.h"

namespace imports = rastrel::imports;

namespace {

struct Keyword {
  std::wstring_view text;
  int value;
};

constexpr std::array<Keyword, 3> Justifications{
    {{L"Left", JUSTIFY_LEFT}, {L"Right", JUSTIFY_RIGHT}, {L"Center", JUSTIFY_CENTER}}};

constexpr std::array<Keyword, 3> LineFits{{{L"Each Line Individually", LINEFIT_EACH_LINE},
                                           {L"All Lines Equally", LINEFIT_ALL_LINES},
                                           {L"Equal Height Lines", LINEFIT_EQUAL_HEIGHT}}};

/// The value of a keyword that is spelled exactly so.
int ValueOf(const wchar_t* text, const std::array<Keyword, 3>& keywords, int otherwise) {
  if (text == nullptr) return otherwise;
  for (const Keyword& keyword : keywords)
    if (keyword.text == text) return keyword.value;
  return otherwise;
}

}  // namespace

CXMLImport::CXMLImport(const wchar_t* fileName) : m_pFileName(fileName) {}

CXMLImport::~CXMLImport() = default;

int CXMLImport::StartAddText(const NewWorldPt& first, const NewWorldPt& second,
                             const wchar_t* justification, const wchar_t* lineFit) {
  if (!imports::OpenText(m_Text, first, second)) return 0;
  imports::SetTextLines(m_Text, ValueOf(justification, Justifications, JUSTIFY_LEFT));
  if (m_Text.current.paragraph != nullptr)
    m_Text.current.paragraph->lineFit = ValueOf(lineFit, LineFits, LINEFIT_ALL_LINES);
  return 1;
}

void CXMLImport::AddText(wchar_t* fontName, double size, const wchar_t* text) {
  imports::PasteText(m_Text, fontName, size, text);
}

rastrel::host::ObjectHandle CXMLImport::StopAddText() { return imports::CloseText(m_Text); }

int CXMLImport::GetFontType(wchar_t** fontName) { return imports::FontTypeOf(*fontName); }

double CXMLImport::CalcAbsoluteFromPercentLeftMargin(int perMille) {
  return imports::AbsoluteFromPercentLeft(m_Text, perMille);
}

double CXMLImport::CalcAbsoluteFromPercentRightMargin(int perMille) {
  return imports::AbsoluteFromPercentRight(m_Text, perMille);
}
