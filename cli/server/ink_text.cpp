#include "cli/server/ink_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>

namespace rastrel::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr double Steps = 10'000.0;  // four decimals
constexpr double Percent = 100.0;

std::string Decimals(double number, int decimals) {
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
  return text.data();
}

}  // namespace

std::string TextOfInk(const std::vector<PageInk>& pages) {
  if (pages.empty()) return {};
  Json list = Json::array();
  for (const PageInk& page : pages) {
    Json inks = Json::object();
    for (const auto& [name, share] : page) inks[name] = std::round(share * Steps) / Steps;
    list.push_back(std::move(inks));
  }
  return list.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<std::vector<PageInk>> InksOfText(std::string_view text) {
  std::vector<PageInk> pages;
  if (text.empty()) return pages;
  const Json list = Json::parse(text, nullptr, false);
  if (!list.is_array()) return std::nullopt;
  for (const Json& page : list) {
    if (!page.is_object()) return std::nullopt;
    PageInk& inks = pages.emplace_back();
    for (const auto& [name, share] : page.items()) {
      if (!share.is_number()) return std::nullopt;
      inks.emplace_back(name, share.get<double>());
    }
  }
  return pages;
}

std::string ShownInk(const PageInk& ink) {
  std::string text;
  for (const auto& [name, share] : ink)
    text += (text.empty() ? "" : ", ") + name + " " + Decimals(share * Percent, 1) + " %";
  return text;
}

std::string SummedInk(std::string_view text) {
  const auto pages = InksOfText(text);
  if (!pages) return {};
  PageInk sums;
  for (const PageInk& page : *pages)
    for (const auto& [name, share] : page) {
      const auto known = std::ranges::find(sums, name, [](const auto& ink) { return ink.first; });
      if (known == sums.end()) {
        sums.emplace_back(name, share);
      } else {
        known->second += share;
      }
    }
  std::string sum;
  for (const auto& [name, share] : sums)
    sum += (sum.empty() ? "" : "; ") + name + " " + Decimals(share, 4);
  return sum;
}

}  // namespace rastrel::cli
