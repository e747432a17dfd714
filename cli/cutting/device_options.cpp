#include "cli/cutting/device_options.h"

#include <utility>

#include "cutting/job/job_file.h"
#include "cutting/output/cut_file.h"

namespace rastrel::cli {
namespace {

using cutting::CutFileOptions;
using cutting::Device;

cutting::HpglOptions HpglOf(const Device& device) {
  cutting::HpglOptions hpgl;
  hpgl.unitsPerMillimetre = device.unitsPerMillimetre;
  hpgl.pointsOfInstruction = static_cast<std::size_t>(device.limits.points);
  hpgl.bytesOfInstruction = static_cast<std::size_t>(device.limits.instructionBytes);
  for (const cutting::DeviceTool& tool : device.tools) {
    hpgl.penOfTool[tool.name] = tool.pen;
    for (const cutting::Operation operation : tool.operations) {
      hpgl.penOf[static_cast<std::size_t>(operation)] = tool.pen;
    }
  }
  return hpgl;
}

cutting::GcodeTable GcodeOf(const Device& device) {
  cutting::GcodeTable table;
  const std::pair<const char*, std::string*> texts[] = {
      {"start", &table.start},        {"settings", &table.settings}, {"tool-on", &table.toolOn},
      {"tool-off", &table.toolOff},   {"rapid", &table.rapid},       {"line", &table.line},
      {"arc-right", &table.arcRight}, {"arc-left", &table.arcLeft},  {"end", &table.end}};
  for (const auto& [key, text] : texts) {
    const auto given = device.gcode.texts.find(key);
    if (given != device.gcode.texts.end()) *text = given->second;
  }
  table.decimals = device.gcode.decimals.value_or(table.decimals);
  table.fullPower = device.gcode.fullPower.value_or(table.fullPower);
  return table;
}

CutFileOptions OptionsOf(const Device& device) {
  CutFileOptions options;
  options.tolerance = device.tolerance;
  options.placement.origin = cutting::OriginOf(device.origin).value_or(cutting::Origin::LowerLeft);
  options.placement.mirrorX = device.mirrorX;
  options.placement.mirrorY = device.mirrorY;
  options.placement.swapAxes = device.swapAxes;
  options.hpgl = HpglOf(device);
  options.gcode = GcodeOf(device);
  options.dxf = cutting::DxfVersionOf(device.dxfVersion).value_or(cutting::DxfVersion::R2000);
  return options;
}

}  // namespace

Expected<std::string> FileForDevice(const Device& device, const cutting::CutJob& job) {
  const auto fitted = cutting::FittedTo(device, job);
  if (!fitted) return fitted.Error();
  const auto form = cutting::CutFormOf(device.format);
  if (!form) return cutting::JobFileText(*fitted);
  return cutting::WriteCutFile(*fitted, *form, OptionsOf(device));
}

}  // namespace rastrel::cli
