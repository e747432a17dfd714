#include "cutting/device/device_file.h"

#include <algorithm>
#include <span>
#include <utility>

#include "cutting/toml/strict_toml.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

constexpr double LargestDevice = 1e6;  // a kilometre
constexpr std::size_t ToolLimit = 99;
constexpr std::size_t WordLimit = 256;
constexpr int LongestTimeout = 86400;

constexpr std::array<std::string_view, 6> Formats{"hpgl", "dxf", "svg", "pdf", "gcode", "json"};
constexpr std::array<std::string_view, 6> Origins{"lower-left",  "lower-right", "upper-left",
                                                  "upper-right", "center",      "first-mark"};
constexpr std::array<std::string_view, 2> DxfVersions{"r2000", "r12"};
constexpr std::array<std::string_view, 6> Reaches{"none",    "file", "directory",
                                                  "program", "tcp",  "serial"};
constexpr std::array<std::string_view, 3> Parities{"none", "even", "odd"};
constexpr std::array<std::string_view, 3> Flows{"none", "rts-cts", "xon-xoff"};
constexpr std::array<std::string_view, 9> GcodeTexts{
    "start", "settings", "tool-on", "tool-off", "arc-right", "arc-left", "rapid", "line", "end"};
constexpr std::array<int, 14> Bauds{1200,   2400,   4800,   9600,   19200,  38400,  57600,
                                    115200, 230400, 460800, 500000, 576000, 921600, 1000000};

template <typename T>
void Keep(T& member, std::optional<T> value) {
  if (value) member = *std::move(value);
}

void KeepChoice(std::string& member, TomlTable& table, std::string_view key,
                std::span<const std::string_view> names) {
  if (const auto index = table.Choice(key, names)) member = names[*index];
}

void ReadForm(TomlTable& root, Device& device) {
  Keep(device.name, root.Text("name"));
  if (device.name.empty()) root.Fail("name", "the device needs a name");
  if (!root.Has("format")) root.Fail("format", "the device needs a format");
  KeepChoice(device.format, root, "format", Formats);
  Keep(device.width, root.Length("width", 0, LargestDevice));
  Keep(device.height, root.Length("height", 0, LargestDevice));
  Keep(device.tolerance, root.Length("tolerance", 0.0001, 10));
  KeepChoice(device.origin, root, "origin", Origins);
  Keep(device.swapAxes, root.Truth("swap-axes"));
  Keep(device.mirrorX, root.Truth("mirror-x"));
  Keep(device.mirrorY, root.Truth("mirror-y"));
  Keep(device.unitsPerMillimetre, root.Whole("units-per-mm", 40, 100));
  if (device.unitsPerMillimetre != 40 && device.unitsPerMillimetre != 100) {
    root.Fail("units-per-mm", "units-per-mm must be 40 or 100");
  }
  KeepChoice(device.dxfVersion, root, "dxf-version", DxfVersions);
}

void ReadLimits(TomlTable& root, DeviceLimits& limits) {
  auto table = root.Table("limits");
  if (!table) return;
  Keep(limits.maximumSpeed, table->Number("speed", 0, 100000));
  Keep(limits.maximumForce, table->Number("force", 0, 100000));
  Keep(limits.points, table->Whole("points", 1, 1000000));
  Keep(limits.instructionBytes, table->Whole("instruction", 20, 1000000));
  Keep(limits.chunk, table->Whole("chunk", 0, 1 << 30));
  table->Finish();
}

void ReadTool(TomlTable& table, std::vector<DeviceTool>& tools) {
  DeviceTool tool;
  Keep(tool.name, table.Text("name"));
  if (tool.name.empty()) table.Fail("name", "the tool needs a name");
  for (const DeviceTool& other : tools) {
    if (other.name == tool.name) table.Fail("name", "another tool has this name");
  }
  for (const std::string& word :
       table.Texts("operations", 16).value_or(std::vector<std::string>{})) {
    const auto operation = OperationOf(word);
    if (!operation || !HasTool(*operation)) {
      table.Fail("operations", "'" + word.substr(0, 40) + "' is no operation of a tool");
      continue;
    }
    for (const DeviceTool& other : tools) {
      if (std::ranges::find(other.operations, *operation) != other.operations.end()) {
        table.Fail("operations", "another tool does '" + word + "'");
      }
    }
    tool.operations.push_back(*operation);
  }
  Keep(tool.pen, table.Whole("pen", 1, 99));
  tool.speed = table.Number("speed", 0.001, 100000);
  tool.force = table.Number("force", 0.001, 100000);
  table.Finish();
  tools.push_back(std::move(tool));
}

void ReadGcode(TomlTable& root, DeviceGcode& gcode) {
  auto table = root.Table("gcode");
  if (!table) return;
  for (const std::string_view key : GcodeTexts) {
    if (auto text = table->Text(key)) gcode.texts.emplace(key, *std::move(text));
  }
  gcode.decimals = table->Whole("decimals", 0, 6);
  gcode.fullPower = table->Number("full-power", 0.001, 1000000);
  table->Finish();
}

void NeedText(TomlTable& table, std::string_view key, std::string& member) {
  Keep(member, table.Text(key));
  if (member.empty())
    table.Fail(key, "a device that is reached so needs '" + std::string(key) + "'");
}

void NeedPath(TomlTable& table, std::string_view key, std::string& member) {
  NeedText(table, key, member);
  if (!member.empty() && member.front() != '/') {
    table.Fail(key, std::string(key) + " must be a full path, from /");
  }
}

void ReadSerial(TomlTable& table, DeviceReach& reach) {
  NeedPath(table, "path", reach.path);
  Keep(reach.baud, table.Whole("baud", 1200, 1000000));
  if (std::ranges::find(Bauds, reach.baud) == Bauds.end()) {
    table.Fail("baud", "no serial line has " + std::to_string(reach.baud) + " baud");
  }
  Keep(reach.dataBits, table.Whole("data-bits", 7, 8));
  Keep(reach.stopBits, table.Whole("stop-bits", 1, 2));
  reach.parity = static_cast<Parity>(table.Choice("parity", Parities).value_or(0));
  reach.flow = static_cast<FlowControl>(table.Choice("flow", Flows).value_or(0));
}

void ReadReach(TomlTable& root, DeviceReach& reach) {
  auto table = root.Table("reach");
  if (!table) return;
  if (!table->Has("by")) table->Fail("by", "the table needs 'by'");
  reach.by = static_cast<Reach>(table->Choice("by", Reaches).value_or(0));
  switch (reach.by) {
    case Reach::None: break;
    case Reach::File:
    case Reach::Directory: NeedPath(*table, "path", reach.path); break;
    case Reach::Program:
      Keep(reach.command, table->Texts("command", WordLimit));
      if (reach.command.empty() || reach.command.front().empty()) {
        table->Fail("command", "a device that is reached so needs 'command'");
      }
      break;
    case Reach::Tcp:
      NeedText(*table, "host", reach.host);
      Keep(reach.port, table->Whole("port", 1, 65535));
      break;
    case Reach::Serial: ReadSerial(*table, reach); break;
  }
  Keep(reach.timeoutSeconds, table->Whole("timeout", 1, LongestTimeout));
  table->Finish();
}

const DeviceTool* ToolFor(const Device& device, const CutPath& path) {
  for (const DeviceTool& tool : device.tools) {
    if (path.settings.tool.empty()
            ? std::ranges::find(tool.operations, path.operation) != tool.operations.end()
            : tool.name == path.settings.tool) {
      return &tool;
    }
  }
  return nullptr;
}

void Limit(std::optional<double>& value, double maximum) {
  if (value && maximum > 0) value = std::min(*value, maximum);
}

}  // namespace

std::string_view NameOf(Reach reach) { return Reaches[static_cast<std::size_t>(reach)]; }

Expected<Device> ReadDevice(std::string_view text, const std::string& name) {
  const auto file = TomlFile::Parse(text, name);
  if (!file) return file.Error();
  Device device;
  TomlTable root = file->Root();
  ReadForm(root, device);
  ReadLimits(root, device.limits);
  for (TomlTable& tool : root.Tables("tool", ToolLimit)) ReadTool(tool, device.tools);
  ReadGcode(root, device.gcode);
  ReadReach(root, device.reach);
  root.Finish();
  if (const auto fine = file->Check(); !fine) return fine.Error();
  return device;
}

Expected<CutJob> FittedTo(const Device& device, CutJob job) {
  double width = job.width;
  double height = job.height;
  if (device.swapAxes) std::swap(width, height);
  const auto isLarger = [](double size, double limit) { return limit > 0 && size > limit + 1e-6; };
  if (isLarger(width, device.width) || isLarger(height, device.height)) {
    return FailureOf("the job is " + os::ShortDecimal(width, 2) + " by " +
                         os::ShortDecimal(height, 2) + " mm, and '" + device.name + "' takes " +
                         os::ShortDecimal(device.width, 2) + " by " +
                         os::ShortDecimal(device.height, 2) + " mm (0 is any)",
                     FailureCode::BadInput);
  }
  for (CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    const DeviceTool* tool = ToolFor(device, path);
    if (!tool && !path.settings.tool.empty() && !device.tools.empty()) {
      return FailureOf("'" + device.name + "' has no tool '" + path.settings.tool + "'",
                       FailureCode::BadInput);
    }
    if (tool) {
      path.settings.tool = tool->name;
      if (!path.settings.speed) path.settings.speed = tool->speed;
      if (!path.settings.force) path.settings.force = tool->force;
    }
    Limit(path.settings.speed, device.limits.maximumSpeed);
    Limit(path.settings.force, device.limits.maximumForce);
  }
  return job;
}

std::vector<std::string> DeviceKeys() {
  std::vector<std::string> keys{"name",      "format",       "width",      "height",
                                "tolerance", "origin",       "swap-axes",  "mirror-x",
                                "mirror-y",  "units-per-mm", "dxf-version"};
  for (const char* key : {"speed", "force", "points", "instruction", "chunk"}) {
    keys.push_back(std::string("limits.") + key);
  }
  for (const char* key : {"name", "operations", "pen", "speed", "force"}) {
    keys.push_back(std::string("tool.") + key);
  }
  for (const std::string_view key : GcodeTexts) keys.push_back("gcode." + std::string(key));
  keys.insert(keys.end(), {"gcode.decimals", "gcode.full-power"});
  for (const char* key : {"by", "path", "command", "host", "port", "baud", "data-bits", "stop-bits",
                          "parity", "flow", "timeout"}) {
    keys.push_back(std::string("reach.") + key);
  }
  return keys;
}

}  // namespace rastrel::cutting
