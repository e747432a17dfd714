#include "cli/reading/chart_command.h"

#include <array>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/input/xml_input.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/readers/charts.h"

namespace rastrel::cli {
namespace {

// A part of the question. The readers take it in a buffer of the caller's.
std::wstring Part(const Invocation& invocation, OptionId id) {
  if (!invocation.Has(id))
    throw CommandError(ExitStatus::WrongUse, std::string("the question needs ") +
                                                 OptionOf(id).name + " " + OptionOf(id).value);
  return os::WideFromUtf8(invocation.ValueOr(id, ""));
}

void ThrowWithoutAnswer(const Invocation& invocation, const wchar_t* root) {
  OrEnd(ExitStatus::NotInstalled, CheckXmlParser());
  OrEnd(ExitStatus::BadInput, CheckXmlInput({invocation.operand, root, false}));
  throw CommandError(ExitStatus::NoMatch,
                     "no entry of '" + invocation.operand + "' matches the question");
}

}  // namespace

ExitStatus TrademarkChartCommand(const Invocation& invocation) {
  std::wstring mark = Part(invocation, OptionId::Mark);
  std::wstring quality = Part(invocation, OptionId::Quality);
  const std::wstring path = ReaderPath(invocation.operand);
  CHTrademarkXMLReader reader(mark.data(), quality.data(), path.c_str(), nullptr);
  std::array<wchar_t, CHTrademarkXMLReader::FileSize> file{};
  if (!reader.GetTrademarkFile(file.data())) ThrowWithoutAnswer(invocation, L"TRADEMARKCHART");
  if (invocation.Has(OptionId::Json))
    JsonLine("trademark").Add("file", os::Utf8FromWide(file.data())).Write();
  else
    WriteOutLine(os::Utf8FromWide(file.data()));
  return ExitStatus::Done;
}

ExitStatus SymbolChartCommand(const Invocation& invocation) {
  std::wstring size = Part(invocation, OptionId::RingSize);
  const std::wstring path = ReaderPath(invocation.operand);
  const CHSymbolChartXMLReader reader(size.data(), path.c_str(), nullptr);
  if (!reader.m_bValid) ThrowWithoutAnswer(invocation, L"SYMBOLTABLE");
  if (invocation.Has(OptionId::Json)) {
    JsonLine line("symbol");
    line.AddNumber("height", reader.m_Height).AddNumber("trademark", reader.m_Trademark);
    line.AddNumber("signature", reader.m_SigHeight).Write();
  } else {
    WriteOutLine("height " + os::ShortestDecimal(reader.m_Height) + ", trademark " +
                 os::ShortestDecimal(reader.m_Trademark) + ", signature " +
                 os::ShortestDecimal(reader.m_SigHeight));
  }
  return ExitStatus::Done;
}

ExitStatus FontTableCommand(const Invocation& invocation) {
  std::wstring font = Part(invocation, OptionId::Node);
  // The answer takes the question's place.
  font.resize(std::max(font.size() + 1, CHFontXMLReader::FontSize));
  const std::wstring path = ReaderPath(invocation.operand);
  const CHFontXMLReader reader(font.data(), path.c_str(), nullptr);
  if (!reader.m_bValid) ThrowWithoutAnswer(invocation, L"FONTTABLE");
  if (invocation.Has(OptionId::Json))
    JsonLine("font").Add("font", os::Utf8FromWide(font.c_str())).Write();
  else
    WriteOutLine(os::Utf8FromWide(font.c_str()));
  return ExitStatus::Done;
}

ExitStatus CopyrightChartCommand(const Invocation& invocation) {
  std::wstring style = Part(invocation, OptionId::RingStyle);
  std::wstring styleSize = Part(invocation, OptionId::StyleSize);
  std::wstring font = Part(invocation, OptionId::EngravingFont);
  std::wstring rows = Part(invocation, OptionId::Rows);
  std::wstring finger = Part(invocation, OptionId::FingerSize);
  const std::wstring path = ReaderPath(invocation.operand);
  const CHCopyrightEngravingXMLReader reader(style.data(), styleSize.data(), font.data(),
                                             rows.data(), finger.data(), path.c_str(), nullptr);
  if (!reader.m_bValid) ThrowWithoutAnswer(invocation, L"COPYRIGHTENGRAVING");
  if (invocation.Has(OptionId::Json))
    JsonLine("copyright").AddNumber("font_size", reader.m_FontSize).Write();
  else
    WriteOutLine(os::ShortestDecimal(reader.m_FontSize));
  return ExitStatus::Done;
}

ExitStatus CapRulesCommand(const Invocation& invocation) {
  std::vector<std::wstring> words;
  const CHCapRulesXMLReader reader(words, ReaderPath(invocation.operand).c_str(), nullptr);
  // To a host a document of another kind is an empty chart; a user gave the wrong file.
  if (words.empty()) ThrowWithoutAnswer(invocation, L"CAPSET");
  std::vector<std::string> texts;
  texts.reserve(words.size());
  for (const std::wstring& word : words) texts.push_back(os::Utf8FromWide(word));
  if (invocation.Has(OptionId::Json)) {
    JsonLine("caps").Add("words", texts).Write();
  } else {
    for (const std::wstring& word : words) WriteOutLine(os::Utf8FromWide(word.c_str()));
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
