#include "rastrel/platform/host/translation.h"

#include <algorithm>
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
