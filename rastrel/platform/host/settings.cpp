#include "rastrel/platform/host/settings.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "rastrel/platform/host/host.h"

namespace {

std::optional<std::wstring> ReadSetting(const wchar_t* section, const wchar_t* key,
                                        DataStoreType store) {
  if (section == nullptr || key == nullptr) return std::nullopt;
  return rastrel::host::GetHost().GetSettings().Read(section, key, store);
}

int WriteSetting(const wchar_t* section, const wchar_t* key, const std::wstring& value,
                 DataStoreType store) {
  if (section == nullptr || key == nullptr) return 0;
  return rastrel::host::GetHost().GetSettings().Write(section, key, value, store) ? 1 : 0;
}

// A sign and decimal digits, and nothing else; never by the locale.
std::optional<int> WholeNumber(const std::wstring& text) {
  const bool negative = text.starts_with(L'-');
  const std::size_t begin = negative || text.starts_with(L'+') ? 1 : 0;
  if (begin == text.size()) return std::nullopt;
  const std::int64_t limit = negative ? -static_cast<std::int64_t>(std::numeric_limits<int>::min())
                                      : std::numeric_limits<int>::max();
  std::int64_t value = 0;
  for (std::size_t index = begin; index < text.size(); ++index) {
    if (text[index] < L'0' || text[index] > L'9') return std::nullopt;
    value = value * 10 + (text[index] - L'0');
    if (value > limit) return std::nullopt;
  }
  return static_cast<int>(negative ? -value : value);
}

void CopyCut(const std::wstring& text, wchar_t* buffer, std::uint32_t size) {
  if (buffer == nullptr || size == 0) return;
  const std::size_t count = std::min<std::size_t>(text.size(), size - 1);
  std::copy_n(text.data(), count, buffer);
  buffer[count] = L'\0';
}

}  // namespace

int GetIntKorvane(const wchar_t* section, const wchar_t* key, int defaultValue, DataStoreType store,
                  void*) {
  const std::optional<std::wstring> text = ReadSetting(section, key, store);
  return text ? WholeNumber(*text).value_or(defaultValue) : defaultValue;
}

int GetStringKorvane(const wchar_t* section, const wchar_t* key, wchar_t* buffer,
                     std::uint32_t size, DataStoreType store, void*) {
  const std::optional<std::wstring> text = ReadSetting(section, key, store);
  if (!text) return 0;
  CopyCut(*text, buffer, size);
  return 1;
}

int GetStringKorvaneNull(const wchar_t* section, const wchar_t* key, wchar_t* buffer,
                         std::uint32_t size, DataStoreType store, void* reserved) {
  const int found = GetStringKorvane(section, key, buffer, size, store, reserved);
  if (found == 0) CopyCut({}, buffer, size);
  return found;
}

int WriteIntKorvane(const wchar_t* section, const wchar_t* key, int value, DataStoreType store,
                    void*) {
  return WriteSetting(section, key, std::to_wstring(value), store);
}

int WriteStringKorvane(const wchar_t* section, const wchar_t* key, const wchar_t* value,
                       DataStoreType store, void*) {
  return value == nullptr ? 0 : WriteSetting(section, key, value, store);
}
