#include "cli/cutting/manifest.h"

#include <cstddef>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>

#include "cli/console/exit_status.h"
#include "cli/console/json_text.h"
#include "cli/console/unwritten_file.h"
#include "cutting/picture/assembly_picture.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr int Version = 1;
constexpr int PicturePixels = 1600;

void WriteText(const Invocation& invocation, const std::string& path, const std::string& text) {
  for (const std::string& operand : invocation.operands) {
    std::error_code ignored;
    if (std::filesystem::equivalent(path, operand, ignored))
      throw CommandError(ExitStatus::WrongUse,
                         "the result would take the place of '" + path + "', which it is made of");
  }
  auto file = os::OutputFile::Create(path, os::Existing::Followed);
  if (!file) ThrowUnwritten(file.Error());
  if (const auto written = file->Write(text); !written) ThrowUnwritten(written.Error());
  if (const auto named = file->Commit(); !named) ThrowUnwritten(named.Error());
}

void AddFiles(Json& entry, const ResultFiles& files) {
  entry["file"] = files.cut;
  if (!files.print.empty()) entry["print"] = files.print;
}

void CheckEnding(const Invocation& invocation, OptionId id,
                 const std::vector<std::string_view>& endings) {
  if (!invocation.Has(id)) return;
  const std::string name = invocation.ValueOr(id, "");
  for (const std::string_view ending : endings)
    if (name.ends_with(ending)) return;
  std::string list;
  for (const std::string_view ending : endings)
    list += (list.empty() ? "" : " or ") + std::string(ending);
  throw CommandError(ExitStatus::WrongUse,
                     std::string(OptionOf(id).name) + " needs a name that ends in " + list);
}

std::vector<cutting::AssemblyPart> PartsOf(const std::vector<cutting::Panel>& panels) {
  std::vector<cutting::AssemblyPart> parts;
  for (const cutting::Panel& panel : panels)
    parts.push_back({.column = panel.column,
                     .row = panel.row,
                     .area = panel.area,
                     .number = std::to_string(panel.number),
                     .note = "column " + std::to_string(panel.column + 1) + ", row " +
                             std::to_string(panel.row + 1) + ", " +
                             os::ShortDecimal(panel.area.Width(), 1) + " x " +
                             os::ShortDecimal(panel.area.Height(), 1) + " mm"});
  return parts;
}

}  // namespace

void CheckManifestNames(const Invocation& invocation) {
  CheckEnding(invocation, OptionId::Manifest, {".json"});
  CheckEnding(invocation, OptionId::CutPicture, {".svg", ".png"});
}

void WriteNestManifest(const Invocation& invocation, const std::vector<cutting::NestInput>& inputs,
                       const cutting::NestOptions& options, const cutting::NestResult& result,
                       const std::vector<ResultFiles>& sheets) {
  if (!invocation.Has(OptionId::Manifest)) return;
  Json manifest{{"rastrel_nest", Version}, {"roll", options.roll},
                {"gap_mm", options.gap},   {"waste_percent", result.wastePercent},
                {"sheets", Json::array()}, {"pieces", Json::array()}};
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    Json sheet{{"number", i + 1}};
    AddFiles(sheet, sheets[i]);
    sheet["width_mm"] = options.roll ? result.usedLengths[i] : options.width;
    sheet["height_mm"] = options.height;
    sheet["used_mm"] = result.usedLengths[i];
    manifest["sheets"].push_back(std::move(sheet));
  }
  for (const cutting::NestPlacement& placed : result.placements) {
    const cutting::Transform& map = placed.transform;
    manifest["pieces"].push_back({{"source", inputs[placed.input].name},
                                  {"copy", placed.copy + 1},
                                  {"sheet", placed.sheet + 1},
                                  {"turn_degrees", placed.turn},
                                  {"matrix", {map.a, map.b, map.c, map.d, map.e, map.f}}});
  }
  WriteText(invocation, invocation.ValueOr(OptionId::Manifest, ""), JsonText(manifest) + "\n");
}

void WriteAssembly(const Invocation& invocation, const cutting::CutJob& job,
                   const cutting::PanelOptions& options, const std::vector<cutting::Panel>& panels,
                   const std::vector<ResultFiles>& files) {
  if (invocation.Has(OptionId::Manifest)) {
    Json manifest{{"rastrel_tile", Version},       {"source", invocation.operand},
                  {"width_mm", job.width},         {"height_mm", job.height},
                  {"overlap_mm", options.overlap}, {"panels", Json::array()}};
    for (std::size_t i = 0; i < panels.size(); ++i) {
      Json panel{{"number", panels[i].number},
                 {"column", panels[i].column + 1},
                 {"row", panels[i].row + 1},
                 {"left_mm", panels[i].area.left},
                 {"bottom_mm", panels[i].area.bottom},
                 {"width_mm", panels[i].area.Width()},
                 {"height_mm", panels[i].area.Height()}};
      AddFiles(panel, files[i]);
      manifest["panels"].push_back(std::move(panel));
    }
    WriteText(invocation, invocation.ValueOr(OptionId::Manifest, ""), JsonText(manifest) + "\n");
  }
  if (!invocation.Has(OptionId::CutPicture)) return;
  const std::string name = invocation.ValueOr(OptionId::CutPicture, "");
  const auto picture = name.ends_with(".svg")
                           ? cutting::AssemblyPictureSvg(job, PartsOf(panels))
                           : cutting::AssemblyPicturePng(job, PartsOf(panels), PicturePixels);
  if (!picture) OrEndByCode(ExitStatus::JobFailed, Expected<void>(picture.Error()));
  WriteText(invocation, name, *picture);
}

}  // namespace rastrel::cli
