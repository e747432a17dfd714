#include "cli/document/plate_blank.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <vector>

#include "cli/document/text_findings.h"
#include "host/document/document.h"

namespace rastrel::cli {
namespace {

constexpr const char* PlateSize = "plate";
constexpr double MeasuringSide = 1000;  // centimetres; larger plates have the usual blank
constexpr double Step = 1e-6;           // centimetres, to which a size is rounded up

std::string Centimetres(double length) {
  std::array<char, 64> text{};
  const double rounded = std::ceil(length / Step - 1e-3) * Step;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), rounded, std::chars_format::fixed, 6);
  return {text.data(), end.ptr};
}

// "7.62x2.54cm": the room of all panes of the first page. Empty without any.
std::string SizeOfPanes(const document::Document& document) {
  const std::vector<PlacedPane> panes = PanesOf(document);
  if (panes.empty()) return {};
  CWorldRect all = panes.front().edges;
  for (const PlacedPane& pane : panes) {
    if (pane.page != panes.front().page) continue;
    all.left = std::min(all.left, pane.edges.left);
    all.right = std::max(all.right, pane.edges.right);
    all.bottom = std::min(all.bottom, pane.edges.bottom);
    all.top = std::max(all.top, pane.edges.top);
  }
  const double width = std::abs(all.right - all.left);
  const double height = std::abs(all.top - all.bottom);
  if (width <= 0 || height <= 0) return {};
  return Centimetres(width) + "x" + Centimetres(height) + "cm";
}

}  // namespace

Invocation WithPlateBlank(const MergeTask& task) {
  Invocation sized = task.invocation;
  if (sized.ValueOr(OptionId::Blank, "") != PlateSize) return sized;
  sized.options.erase(OptionId::Blank);
  if (task.merge.IsDocumentARow() || task.rows.empty()) return sized;
  const std::string side = std::to_string(static_cast<int>(MeasuringSide));
  sized.options[OptionId::Blank] = side + "x" + side + "cm";
  const std::vector<MergeRow> first{task.rows.front()};
  std::vector<RowReport> reports(1);
  std::string size;
  {
    const OpenedFile file = RunMerge({sized, task.workspace, task.progress, task.format, task.merge,
                                      first, task.tablePath, "measured"},
                                     reports);
    const document::Document& document = file.host->GetDocument();
    // A format with a blank of its own has put that in its place.
    if (document.Blank().width == MeasuringSide && document.Blank().height == MeasuringSide)
      size = SizeOfPanes(document);
  }
  if (size.empty())
    sized.options.erase(OptionId::Blank);
  else
    sized.options[OptionId::Blank] = size;
  return sized;
}

}  // namespace rastrel::cli
