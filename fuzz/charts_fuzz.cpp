// Charts of any bytes, each asked by all five readers. The first line is the question, its parts
// separated by blanks; the rest is the chart.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "rastrel/platform/os/text.h"
#include "rastrel/readers/charts.h"
#include "tests/support/named_document.h"

namespace {

void Expect(bool condition) {
  if (!condition) std::abort();
}

using Question = std::array<std::wstring, 5>;

Question PartsOf(const std::string& line) {
  Question parts;
  std::size_t part = 0;
  for (const wchar_t character : rastrel::os::WideFromUtf8(line)) {
    if (character == L' ')
      part = std::min(part + 1, parts.size() - 1);
    else if (character != L'\0')
      parts[part] += character;
  }
  return parts;
}

void AskTrademark(Question question, const wchar_t* path) {
  CHTrademarkXMLReader reader(question[0].data(), question[1].data(), path, nullptr);
  std::array<wchar_t, CHTrademarkXMLReader::FileSize> target{};
  target.front() = L'#';
  Expect(reader.GetTrademarkFile(target.data()) == reader.m_bValid);
  Expect(reader.m_bValid || target.front() == L'#');
  Expect(std::ranges::find(target, L'\0') != target.end());
}

void AskFont(const Question& question, const wchar_t* path) {
  constexpr std::size_t size = CHFontXMLReader::FontSize;
  std::array<wchar_t, size + 8> buffer;
  buffer.fill(L'#');
  const std::wstring node = question[0].substr(0, size - 1);
  *std::ranges::copy(node, buffer.begin()).out = L'\0';
  const CHFontXMLReader reader(buffer.data(), path, nullptr);
  Expect(std::all_of(buffer.begin() + size, buffer.end(), [](wchar_t c) { return c == L'#'; }));
  Expect(reader.m_bValid || buffer.data() == node);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static rastrel::test::NamedDocument document;
  const std::string input(bytes, bytes + size);
  const std::size_t end = std::min(input.find('\n'), input.size());
  Question question = PartsOf(input.substr(0, end));
  const std::wstring path = document.Write(input.substr(std::min(end + 1, input.size())));
  AskTrademark(question, path.c_str());
  const CHSymbolChartXMLReader symbol(question[0].data(), path.c_str(), nullptr);
  Expect(symbol.m_bValid || (symbol.m_Height == 0 && symbol.m_SigHeight == 0));
  AskFont(question, path.c_str());
  const CHCopyrightEngravingXMLReader copyright(question[0].data(), question[1].data(),
                                                question[2].data(), question[3].data(),
                                                question[4].data(), path.c_str(), nullptr);
  Expect(copyright.m_bValid || copyright.m_FontSize == 0);
  std::vector<std::wstring> words;
  const CHCapRulesXMLReader caps(words, path.c_str(), nullptr);
  Expect(caps.m_bValid || words.empty());
  return 0;
}
