#include "cli/document/conversion_host.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace rastrel::cli {
namespace {

// The settings that the dialog of a conversion stores.
constexpr std::array<std::pair<std::wstring_view, std::wstring_view>, 2> OfDialog{
    {{L"Images", L"EPS dialog data"}, {L"Preferences", L"PS CMYK Color"}}};

}  // namespace

bool ConversionHost::ForgetfulSettings::Write(const std::wstring& section, const std::wstring& key,
                                              const std::wstring& value, DataStoreType store) {
  const bool ofDialog = std::ranges::any_of(OfDialog, [&](const auto& setting) {
    return setting.first == section && setting.second == key;
  });
  return ofDialog || m_Inner.Write(section, key, value, store);
}

}  // namespace rastrel::cli
