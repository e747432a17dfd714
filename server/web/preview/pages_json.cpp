#include "server/web/preview/pages_json.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/shown_text.h"
#include "server/web/preview/cut_svg.h"
#include "server/web/preview/ink_light.h"
#include "server/web/preview/page_picture.h"
#include "server/web/preview/picture_store.h"

namespace rastrel::server::web {
namespace {

using nlohmann::json;

constexpr double MillimetresPerInch = 25.4;

// More pages than these are counted, and not described.
constexpr std::size_t MaximumDescribedPages = 1000;

const char* NameOf(pages::PageColor color) {
  switch (color) {
    case pages::PageColor::Gray: return "gray";
    case pages::PageColor::Rgb: return "rgb";
    case pages::PageColor::Cmyk: return "cmyk";
    default: return "separations";
  }
}

std::string ColorText(const Light& light) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "#";
  for (const std::uint8_t part : light) {
    text += digits[part >> 4];
    text += digits[part & 15];
  }
  return text;
}

// Shares of a page's inks by the worker; an empty object without them.
json CoverageOf(const json& coverage, std::size_t index) {
  if (!coverage.is_array() || index >= coverage.size() || !coverage[index].is_object())
    return json::object();
  return coverage[index];
}

json InkObject(const pages::PageInfo& page, const pages::PagePlane& plane, const json& coverage) {
  json ink{{"name", os::CleanLine(plane.name)}, {"colour", ColorText(FullStrength(page, plane))}};
  const auto share = coverage.find(plane.name);
  if (share != coverage.end() && share->is_number()) ink["coverage"] = *share;
  return ink;
}

json PageObject(std::size_t number, const pages::PageInfo& page, const json& coverage) {
  json inks = json::array();
  for (const pages::PagePlane& plane : page.planes)
    inks.push_back(InkObject(page, plane, coverage));
  return {{"number", number},
          {"width", page.width},
          {"height", page.height},
          {"widthMm", page.width / page.xResolution * MillimetresPerInch},
          {"heightMm", page.height / page.yResolution * MillimetresPerInch},
          {"xResolution", page.xResolution},
          {"yResolution", page.yResolution},
          {"colour", NameOf(page.color)},
          {"levels", TileLevels(page)},
          {"inks", std::move(inks)},
          {"cut", HasCutPaths(page)},
          {"stamp", StampOf(page)}};
}

}  // namespace

std::string PagesJson(const Job& job, const Expected<KeptPages>& kept) {
  json answer{{"job", job.id}, {"count", 0}, {"pages", json::array()}};
  if (!kept) {
    answer["reason"] = ReasonOf(kept.Error());
    return answer.dump(-1, ' ', false, json::error_handler_t::replace);
  }
  answer["count"] = kept->names.size();
  const json coverage = json::parse(job.ink, nullptr, false);
  for (std::size_t i = 0; i < std::min(kept->names.size(), MaximumDescribedPages); ++i) {
    const auto page = ReadKeptPage(*kept, i + 1);
    answer["pages"].push_back(page ? PageObject(i + 1, page->info, CoverageOf(coverage, i))
                                   : json{{"number", i + 1}, {"reason", ReasonOf(page.Error())}});
  }
  return answer.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace rastrel::server::web
