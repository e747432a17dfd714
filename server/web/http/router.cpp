#include "server/web/http/router.h"

#include <optional>
#include <utility>

namespace rastrel::server::web {
namespace {

std::vector<std::string_view> PartsOf(std::string_view path) {
  std::vector<std::string_view> parts;
  if (path.starts_with('/')) path.remove_prefix(1);
  for (;;) {
    const std::size_t slash = path.find('/');
    parts.push_back(path.substr(0, slash));
    if (slash == path.npos) return parts;
    path.remove_prefix(slash + 1);
  }
}

bool IsPlace(std::string_view part) { return part.starts_with('{') && part.ends_with('}'); }
bool IsRest(std::string_view part) { return IsPlace(part) && part.ends_with("...}"); }

std::string Joined(const std::vector<std::string_view>& parts, std::size_t first) {
  std::string rest;
  for (std::size_t index = first; index < parts.size(); ++index)
    rest += (index == first ? "" : "/") + std::string(parts[index]);
  return rest;
}

struct Fit {
  int spelled = 0;  // parts that are the pattern's own
  std::map<std::string, std::string> places;
};

std::optional<Fit> FitOf(std::string_view pattern, const std::vector<std::string_view>& parts) {
  const auto wanted = PartsOf(pattern);
  Fit fit;
  for (std::size_t index = 0; index < wanted.size(); ++index) {
    const std::string_view part = wanted[index];
    if (index >= parts.size()) return std::nullopt;
    if (IsRest(part)) {
      fit.places[std::string(part.substr(1, part.size() - 5))] = Joined(parts, index);
      return fit;
    }
    if (IsPlace(part)) {
      if (parts[index].empty()) return std::nullopt;
      fit.places[std::string(part.substr(1, part.size() - 2))] = parts[index];
    } else if (part == parts[index]) {
      ++fit.spelled;
    } else {
      return std::nullopt;
    }
  }
  return wanted.size() == parts.size() ? std::optional(fit) : std::nullopt;
}

}  // namespace

void Router::Add(Route route) { m_Routes.push_back(std::move(route)); }

Router::Match Router::Find(Method method, std::string_view path) const {
  const auto parts = PartsOf(path);
  Match match;
  int best = -1;
  for (const Route& route : m_Routes) {
    auto fit = FitOf(route.pattern, parts);
    if (!fit || fit->spelled < best) continue;
    if (fit->spelled > best) match = Match();
    best = fit->spelled;
    match.allowed += (match.allowed.empty() ? "" : ", ") + std::string(NameOf(route.method));
    if (route.method != method || match.route) continue;
    match.route = &route;
    match.places = std::move(fit->places);
  }
  return match;
}

}  // namespace rastrel::server::web
