#include "cutting/toolpath/tool_line.h"

#include <map>

#include "cutting/toolpath/nesting.h"

namespace rastrel::cutting {

std::vector<ToolLine> ToolLinesOf(const CutJob& job) {
  std::vector<ToolLine> lines;
  for (std::size_t i = 0; i < job.paths.size(); ++i) {
    if (!HasTool(job.paths[i].operation)) continue;
    for (const Contour& contour : job.paths[i].contours) lines.push_back({contour, i});
  }
  return lines;
}

void FindDepths(const CutJob& job, std::vector<ToolLine>& lines) {
  std::map<Operation, std::vector<std::size_t>> groups;
  for (std::size_t i = 0; i < lines.size(); ++i)
    groups[job.paths[lines[i].path].operation].push_back(i);
  for (const auto& [operation, group] : groups) {
    std::vector<const Contour*> contours;
    for (std::size_t index : group) contours.push_back(&lines[index].contour);
    const Nesting nesting = NestingOf(contours);
    for (std::size_t i = 0; i < group.size(); ++i) lines[group[i]].depth = nesting.depth[i];
  }
}

}  // namespace rastrel::cutting
