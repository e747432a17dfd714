#include "rastrel/platform/os/character_check.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace rastrel::os {
namespace {

constexpr std::size_t CharactersAtOnce = 4096;
constexpr std::size_t MaximumName = 40;

bool IsEncodingName(std::string_view name) {
  constexpr std::string_view others = "._:-";
  return !name.empty() && name.size() <= MaximumName &&
         std::ranges::all_of(name, [others](char letter) {
           const bool isLetter =
               (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
           const bool isDigit = letter >= '0' && letter <= '9';
           return isLetter || isDigit || others.find(letter) != others.npos;
         });
}

bool IsOfUnicode(std::string_view name) {
  std::string lower(name.substr(0, 9));
  std::ranges::transform(lower, lower.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return lower.starts_with("utf") || lower.starts_with("ucs") || lower.starts_with("iso-10646") ||
         lower.starts_with("unicode");
}

}  // namespace

struct CharacterCheck::Converter {
  explicit Converter(iconv_t opened) : handle(opened) {}
  ~Converter() { ::iconv_close(handle); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  iconv_t handle;
};

std::unique_ptr<CharacterCheck> CharacterCheck::Make(const std::string& encoding) {
  if (!IsEncodingName(encoding) || IsOfUnicode(encoding)) return nullptr;
  const iconv_t handle = ::iconv_open("WCHAR_T", encoding.c_str());
  if (handle == reinterpret_cast<iconv_t>(-1)) return nullptr;
  return std::unique_ptr<CharacterCheck>(new CharacterCheck(std::make_unique<Converter>(handle)));
}

CharacterCheck::CharacterCheck(std::unique_ptr<Converter> converter)
    : m_Converter(std::move(converter)) {}

CharacterCheck::~CharacterCheck() = default;

std::size_t CharacterCheck::Read(std::string_view bytes) {
  const std::size_t before = m_Held.size();
  std::string joined;
  if (before > 0) {
    joined = std::exchange(m_Held, {});
    joined += bytes;
  }
  const std::string_view all = before > 0 ? std::string_view(joined) : bytes;
  // The call takes a pointer to bytes that may change, and changes none.
  char* at = const_cast<char*>(all.data());
  std::size_t left = all.size();
  while (left > 0) {
    std::array<wchar_t, CharactersAtOnce> characters;
    char* target = reinterpret_cast<char*>(characters.data());
    std::size_t room = sizeof characters;
    const std::size_t result = ::iconv(m_Converter->handle, &at, &left, &target, &room);
    const int error = result == static_cast<std::size_t>(-1) ? errno : 0;
    Count({characters.data(), characters.size() - room / sizeof(wchar_t)});
    if (error == 0 || error == E2BIG) continue;
    const std::size_t offset = all.size() - left;
    if (error == EINVAL) {
      m_Held = all.substr(offset);
      break;
    }
    m_BadByte = static_cast<unsigned char>(*at);
    return offset > before ? offset - before : 0;
  }
  return bytes.size();
}

void CharacterCheck::Count(std::wstring_view characters) {
  for (const wchar_t character : characters) {
    ++m_Column;
    if (character != L'\n') continue;
    ++m_Line;
    m_Column = 1;
  }
}

}  // namespace rastrel::os
