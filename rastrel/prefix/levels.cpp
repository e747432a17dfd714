#include "rastrel/prefix/levels.h"

#include <cmath>
#include <cstdint>

#include "rastrel/job/format_string.h"
#include "rastrel/platform/os/hex.h"

namespace rastrel::prefix {

namespace {

constexpr int EntryCount = 256;
constexpr int EntriesPerLine = 32;
constexpr int MaximumDigits = 4;  // an entry is at most 255 * 256

// The transfer of one channel: all in double precision and in this order, since the entries are
// compared to the last digit.
class Transfer {
 public:
  explicit Transfer(const CLevelsData& levels)
      : m_Low(levels.Low), m_Range(levels.High - levels.Low), m_Exponent(1.0 / levels.Gamma) {}

  [[nodiscard]] std::uint32_t Entry(int index) const {
    const double ramp = (index * 0.00390625) / 255.0;
    const double unit = (m_Range * ramp + m_Low) / 255.0;
    // The first power of a number is that number; most jobs leave the gamma alone.
    const double scaled = (m_Exponent == 1.0 ? unit : std::pow(unit, m_Exponent)) * 255.0;
    const double low = scaled > 0.0 ? scaled : 0.0;  // a value that is no number becomes 0
    const double clamped = low < 255.0 ? low : 255.0;
    return static_cast<std::uint32_t>(clamped * 256.0);
  }

 private:
  double m_Low;
  double m_Range;
  double m_Exponent;
};

// Hexadecimal of two digits, or as many as a larger number needs.
void AppendHexadecimal(std::wstring& text, std::uint32_t number) {
  std::string digits;
  if (number > 0xFF) os::AppendHex(digits, static_cast<unsigned char>(number >> 8));
  if (digits.starts_with('0')) digits.erase(0, 1);
  os::AppendHex(digits, static_cast<unsigned char>(number & 0xFF));
  text.append(digits.begin(), digits.end());
}

// A procedure of the color transfer: the RIP's own table, then the one of this section.
std::wstring Procedure(const wchar_t* own, const wchar_t* extra, const wchar_t* indent) {
  formatstringT<wchar_t> text;
  text.Format(
      L"%s{255 mul round cvi %stransfertable exch get 255 div 255 mul round cvi "
      L"%sextratransfertable "
      L"exch get 255 div}\n",
      indent, own, extra);
  return text;
}

// The procedures of the four channels, and of the two further planes of a six-color device, which
// take the red and green tables again. `kind` is put before "transfertable".
std::wstring Procedures(bool hexachrome, const wchar_t* kind, const wchar_t* indent) {
  struct Channel {
    const wchar_t* own;
    const wchar_t* extra;
    bool sixColorsOnly;
  };
  constexpr Channel Channels[] = {{L"red", L"red", false},   {L"green", L"green", false},
                                  {L"blue", L"blue", false}, {L"gray", L"gray", false},
                                  {L"hex1", L"red", true},   {L"hex2", L"green", true}};
  std::wstring text;
  for (const Channel& channel : Channels) {
    if (channel.sixColorsOnly && !hexachrome) continue;
    text += Procedure((std::wstring(channel.own) + kind).c_str(), channel.extra, indent);
  }
  return text;
}

std::wstring ChannelBlock(bool hexachrome) {
  return L"      printer_desc begin\n"
         L"        NColor begin\n"
         L"          /TProcs [\n" +
         Procedures(hexachrome, L"", L"            ") +
         L"          ] def\n"
         L"        end\n"
         L"      end\n"
         L"\n"
         L"      statusdict /imagecolortransfer known {\n"
         L"        /imagecolortransfer [\n" +
         Procedures(hexachrome, L"image", L"          ") +
         L"        ] def\n"
         L"      }if\n";
}

std::wstring Tables(const CJobData& settings) {
  constexpr const wchar_t* Names[] = {L"red", L"green", L"blue", L"gray"};
  std::wstring linked;
  if (settings.LevelsLinked) linked = LevelsTable(settings.Levels[0]);
  std::wstring text;
  for (std::size_t channel = 0; channel < 4; ++channel) {
    text += std::wstring(L"/") + Names[channel] + L"extratransfertable <\n";
    text += settings.LevelsLinked ? linked : LevelsTable(settings.Levels.at(channel + 1));
    text += L"> def\n";
  }
  return text;
}

}  // namespace

std::wstring LevelsTable(const CLevelsData& levels) {
  const Transfer transfer(levels);
  std::wstring table;
  table.reserve(MaximumDigits * EntryCount + EntryCount / EntriesPerLine);
  for (int index = 0; index < EntryCount; ++index) {
    AppendHexadecimal(table, transfer.Entry(index));
    if ((index + 1) % EntriesPerLine == 0) table += L'\n';
  }
  return table;
}

std::wstring LevelsSection(const CJobData& settings) {
  return L"\n%\n"
         L"% -- Levels Prefix --\n"
         L"%\n"
         L"%\n"
         L"% PostScript to output a levels control adjustment.\n"
         L"% This will basically output a transfer table that will get appended to the existing "
         L"transfer table in use in the RIP.\n"
         L"\n"
         L"userdict begin\n" +
         Tables(settings) +
         L"end\n"
         L"\n"
         L"statusdict begin\n"
         L"\n"
         L"  /_printerinit {\n"
         L"    printer_desc begin planes 0 get end\n"
         L"    /Hexachrome eq {\n" +
         ChannelBlock(true) + L"    } {\n" + ChannelBlock(false) +
         L"    }ifelse\n"
         L"\n"
         L"    systemdict /_printerinit get exec\n"
         L"\t } def\n"
         L"\n"
         L"end\n"
         L"% -- End of Levels Prefix --\n\n";
}

}  // namespace rastrel::prefix
