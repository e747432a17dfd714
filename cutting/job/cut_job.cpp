#include "cutting/job/cut_job.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace rastrel::cutting {
namespace {

constexpr std::array<std::string_view, 9> Names{
    "cut", "cut-half", "crease", "engrave", "perforate", "drill", "mark", "print", "ignore"};

}  // namespace

std::string_view NameOf(Operation operation) { return Names[static_cast<std::size_t>(operation)]; }

std::optional<Operation> OperationOf(std::string_view name) {
  const auto found = std::ranges::find(Names, name);
  if (found == Names.end()) return std::nullopt;
  return static_cast<Operation>(found - Names.begin());
}

bool HasTool(Operation operation) {
  return operation != Operation::Print && operation != Operation::Ignore;
}

Box BoxOf(const CutPath& path) {
  Box box;
  for (const Contour& contour : path.contours) box.Add(BoxOf(contour));
  return box;
}

Box ToolBoxOf(const CutJob& job) {
  Box box;
  for (const CutPath& path : job.paths) {
    if (HasTool(path.operation)) box.Add(BoxOf(path));
  }
  return box;
}

}  // namespace rastrel::cutting
