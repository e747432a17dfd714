#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "server/web/http/request.h"

namespace rastrel::server::web {

/// Texts of the page in a person's language. A text's key is its English form; the file german.json
/// of the page's files, which the page's scripts use too, has the others. Copies share the texts.
class Words {
 public:
  /// Reads the file of a directory, which is native. Without one all is English.
  [[nodiscard]] static Words Read(const std::string& directory);
  /// For a person whose browser asks for this language first: English or German.
  [[nodiscard]] Words For(const Request& request) const;

  /// "en" or "de".
  [[nodiscard]] const char* Language() const { return m_IsGerman ? "de" : "en"; }
  /// The text, escaped. {0} is replaced with a value, which is markup or escaped already.
  [[nodiscard]] std::string operator()(std::string_view english, std::string_view value = {}) const;

 private:
  using Texts = std::map<std::string, std::string, std::less<>>;
  std::shared_ptr<const Texts> m_German = std::make_shared<const Texts>();
  bool m_IsGerman = false;
};

}  // namespace rastrel::server::web
