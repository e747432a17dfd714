#include "cli/cutting/rule_place.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {
namespace {

constexpr const char* RuleDirectory = "/cut-rules";
constexpr const char* RuleEnding = ".toml";

/// The user's own first.
std::vector<std::string> RulePlaces() {
  std::vector<std::string> places{os::DataRoot() + RuleDirectory};
  const std::string files = standalone::FindResources().files;
  if (!files.empty()) places.push_back(files + RuleDirectory);
  return places;
}

}  // namespace

Expected<std::string> FindRules(const std::string& name) {
  if (name.find_first_of("/.") != std::string::npos) return name;
  const std::vector<std::string> places = RulePlaces();
  for (const std::string& place : places) {
    const std::string path = place + "/" + name + RuleEnding;
    std::error_code ignored;
    if (!name.empty() && std::filesystem::exists(path, ignored)) return path;
  }
  std::error_code ignored;
  if (!name.empty() && std::filesystem::exists(name, ignored)) return name;
  return FailureOf("there are no rules '" + name + "': no " + name + RuleEnding + " is in '" +
                       places.front() + "' or installed; `rastrel rules list` lists them",
                   FailureCode::BadInput);
}

std::vector<FoundRules> AllFoundRules() {
  std::vector<FoundRules> found;
  for (const std::string& place : RulePlaces()) {
    std::error_code error;
    for (std::filesystem::directory_iterator at(place, error), end; !error && at != end;
         at.increment(error)) {
      const std::filesystem::path& path = at->path();
      const std::string name = path.stem().string();
      const bool isKnown = std::ranges::find(found, name, &FoundRules::name) != found.end();
      if (path.extension() == RuleEnding && !isKnown) found.push_back({name, path.string()});
    }
  }
  std::ranges::sort(found, {}, &FoundRules::name);
  return found;
}

Expected<std::string> RuleText(const std::string& name) {
  const auto path = FindRules(name);
  if (!path) return path.Error();
  auto text = os::ReadWholeFile(os::FromNative(*path), cutting::MaximumRuleBytes);
  if (text) return text;
  Failure failure = FailureAt(*path, text.Error());
  failure.code = FailureCode::BadInput;
  return failure;
}

Expected<cutting::RuleSet> RulesNamed(const std::string& name) {
  const auto text = RuleText(name);
  if (!text) return text.Error();
  return cutting::ReadRules(*text, *FindRules(name));
}

}  // namespace rastrel::cli
