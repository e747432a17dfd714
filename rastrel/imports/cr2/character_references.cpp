#include "rastrel/imports/cr2/character_references.h"

#include <cstddef>
#include <cstdint>
#include <optional>

#include "rastrel/imports/cr2/character_names.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::imports {
namespace {

constexpr std::size_t MaximumNameLength = 9;
constexpr std::uint32_t LargestByte = 255;
constexpr std::uint32_t FirstPrintable = 32;

bool IsDigit(wchar_t character) { return character >= L'0' && character <= L'9'; }

/// The value of hexadecimal digits; any other character counts as 0.
std::uint32_t HexValue(std::wstring_view digits) {
  constexpr std::wstring_view Digits = L"0123456789abcdef";
  std::uint32_t value = 0;
  for (const wchar_t digit : os::LowerAscii(digits)) {
    const std::size_t place = Digits.find(digit);
    value = value * 16 + (place == std::wstring_view::npos ? 0 : static_cast<std::uint32_t>(place));
  }
  return value;
}

/// The value of the digits at the start: at most 9, which fit.
std::uint32_t DecimalValue(std::wstring_view text) {
  std::uint32_t value = 0;
  for (const wchar_t digit : text) {
    if (!IsDigit(digit)) break;
    value = value * 10 + static_cast<std::uint32_t>(digit - L'0');
  }
  return value;
}

wchar_t In16Bits(std::uint32_t value) { return static_cast<wchar_t>(value & 0xFFFFU); }

class Replacing {
 public:
  Replacing(std::wstring_view text, ReferenceKind kind) : m_Text(text), m_Kind(kind) {}

  ReplacedText Run();

 private:
  enum class Step { Replaced, Stays, EndsAll };

  /// Reads one reference without its "&" and ";", and sets m_Character if it is replaced.
  Step Read(std::wstring_view reference);
  Step ReadNamed(std::wstring_view name);
  Step ReadHexadecimal(std::wstring_view digits);
  Step ReadDecimal(std::wstring_view digits);
  /// The byte of a character in code page 1252; notes that the page lacks it.
  unsigned char ByteOf(wchar_t character);

  std::wstring_view m_Text;
  ReferenceKind m_Kind;
  wchar_t m_Character = 0;
  std::optional<wchar_t> m_LastByte;  ///< the last decimal value up to 255
  bool m_UnicodeLost = false;
};

unsigned char Replacing::ByteOf(wchar_t character) {
  const std::string byte = os::AnsiFromWide(std::wstring_view(&character, 1));
  if (byte == "?" && character != L'?') m_UnicodeLost = true;
  return static_cast<unsigned char>(byte.front());
}

Replacing::Step Replacing::ReadNamed(std::wstring_view name) {
  if (name.size() > MaximumNameLength) return Step::Stays;
  const std::optional<wchar_t> named = CharacterNamed(name);
  if (!named) return Step::Stays;
  m_Character = *named;
  if (m_Kind == ReferenceKind::Zml) {
    // Documents hold these characters as signed bytes that were widened, and fonts map them so.
    const auto widened = static_cast<std::int16_t>(static_cast<signed char>(ByteOf(*named)));
    m_Character = In16Bits(static_cast<std::uint16_t>(widened));
  }
  return Step::Replaced;
}

Replacing::Step Replacing::ReadHexadecimal(std::wstring_view digits) {
  if (digits.size() != 2 && digits.size() != 4) return Step::EndsAll;
  m_Character = In16Bits(HexValue(digits));
  if (m_Kind == ReferenceKind::Zml) ByteOf(m_Character);
  return Step::Replaced;
}

Replacing::Step Replacing::ReadDecimal(std::wstring_view digits) {
  if (digits.size() > MaximumNameLength) return Step::Stays;
  const std::uint32_t value = DecimalValue(digits);
  if (value < FirstPrintable) return Step::EndsAll;
  m_Character = In16Bits(value);
  if (m_Kind == ReferenceKind::Cr2) return Step::Replaced;
  if (value <= LargestByte) {
    m_LastByte = m_Character;
  } else {
    ByteOf(m_Character);
    m_Character = m_LastByte.value_or(m_Character);
  }
  return Step::Replaced;
}

Replacing::Step Replacing::Read(std::wstring_view reference) {
  if (!reference.starts_with(L'#')) return ReadNamed(reference);
  const std::wstring_view number = reference.substr(1);
  if (number.empty()) return Step::EndsAll;
  if (number.front() == L'x' || number.front() == L'X') return ReadHexadecimal(number.substr(1));
  if (IsDigit(number.front())) return ReadDecimal(number);
  return Step::EndsAll;
}

ReplacedText Replacing::Run() {
  std::wstring replaced;
  std::size_t copied = 0;
  std::size_t semicolon = 0;
  for (std::size_t start = m_Text.find(L'&'); start != std::wstring_view::npos;
       start = m_Text.find(L'&', start)) {
    if (semicolon <= start) semicolon = m_Text.find(L';', start);
    if (semicolon == std::wstring_view::npos) break;
    const Step step = Read(m_Text.substr(start + 1, semicolon - start - 1));
    if (step == Step::EndsAll) break;
    if (step == Step::Stays) {
      ++start;
      continue;
    }
    replaced.append(m_Text, copied, start - copied);
    if (m_Character == 0) return {std::move(replaced), m_UnicodeLost};
    replaced += m_Character;
    start = semicolon + 1;
    copied = start;
  }
  replaced.append(m_Text, copied);
  return {std::move(replaced), m_UnicodeLost};
}

}  // namespace

ReplacedText ReplaceCharacterReferences(std::wstring_view text, ReferenceKind kind) {
  return Replacing(text, kind).Run();
}

std::wstring WithJoinedSurrogates(std::wstring_view text) {
  const auto isSurrogate = [](wchar_t character) {
    return character >= 0xD800 && character <= 0xDFFF;
  };
  std::wstring joined = os::WideFromUtf16(os::Utf16FromWide(text));
  for (wchar_t& character : joined)
    if (isSurrogate(character)) character = 0xFFFD;
  return joined;
}

}  // namespace rastrel::imports
