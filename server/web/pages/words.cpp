#include "server/web/pages/words.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "server/web/pages/html.h"

namespace rastrel::server::web {

constexpr std::uint64_t MaximumTextBytes = 1024 * 1024;

Words Words::Read(const std::string& directory) {
  Words words;
  const auto file = os::ReadWholeFile(os::FromNative(directory + "/german.json"), MaximumTextBytes);
  if (!file) return words;
  const auto json = nlohmann::json::parse(*file, nullptr, false);
  Texts texts;
  if (json.is_object())
    for (const auto& [english, german] : json.items())
      if (german.is_string()) texts.emplace(english, german.get<std::string>());
  words.m_German = std::make_shared<const Texts>(std::move(texts));
  return words;
}

Words Words::For(const Request& request) const {
  Words words = *this;
  const std::string& languages = request.Header("accept-language");
  words.m_IsGerman =
      !m_German->empty() && (languages.starts_with("de") || languages.starts_with("DE"));
  return words;
}

std::string Words::operator()(std::string_view english, std::string_view value) const {
  std::string_view text = english;
  if (m_IsGerman)
    if (const auto found = m_German->find(english); found != m_German->end()) text = found->second;
  std::string escaped = Escaped(text);
  if (const std::size_t at = escaped.find("{0}"); at != std::string::npos)
    escaped.replace(at, 3, value);
  return escaped;
}

}  // namespace rastrel::server::web
