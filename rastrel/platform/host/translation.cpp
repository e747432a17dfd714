#include "rastrel/platform/host/translation.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "rastrel/platform/host/host.h"

void TString(const wchar_t* source, wchar_t* destination, int size) {
  if (source == nullptr || destination == nullptr || size <= 0) return;
  const std::optional<std::wstring> text =
      rastrel::host::GetHost().GetTranslation().Translate(source);
  if (!text || text->size() >= static_cast<std::size_t>(size)) return;
  std::copy_n(text->c_str(), text->size() + 1, destination);
}

namespace rastrel::host {

std::wstring TranslatedText(const std::wstring& text) {
  if (text.size() >= static_cast<std::size_t>(TStringLimit)) return text;
  std::array<wchar_t, TStringLimit> translation{};
  text.copy(translation.data(), text.size());
  TString(text.c_str(), translation.data(), TStringLimit);
  return translation.data();
}

}  // namespace rastrel::host
