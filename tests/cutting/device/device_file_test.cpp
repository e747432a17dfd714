#include "cutting/device/device_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace rastrel::cutting {
namespace {

constexpr std::string_view Small = "name = 'Knife'\nformat = 'hpgl'\n";

std::string Full() {
  return "name = 'Knife'\nformat = 'gcode'\nwidth = '60 cm'\nheight = 400\ntolerance = 0.05\n"
         "origin = 'upper-left'\nswap-axes = true\nmirror-x = true\nmirror-y = true\n"
         "units-per-mm = 100\ndxf-version = 'r12'\n"
         "[limits]\nspeed = 300\nforce = 80\npoints = 8\ninstruction = 64\nchunk = 512\n"
         "[[tool]]\nname = 'a'\noperations = ['cut', 'crease']\npen = 3\nspeed = 20\nforce = 30\n"
         "[[tool]]\nname = 'b'\n"
         "[gcode]\nstart = 's'\nsettings = 'e'\ntool-on = 'o'\ntool-off = 'f'\nrapid = 'r'\n"
         "line = 'l'\nend = 'e'\ndecimals = 2\nfull-power = 255\n"
         "[reach]\nby = 'serial'\npath = '/dev/ttyS0'\nbaud = 19200\ndata-bits = 7\n"
         "stop-bits = 2\nparity = 'even'\nflow = 'xon-xoff'\ntimeout = 5\n";
}

std::string FaultOf(const std::string& text) {
  const auto device = ReadDevice(text, "knife.toml");
  return device ? "" : Describe(device.Error());
}

std::string FaultOfReach(const std::string& lines) {
  return FaultOf(std::string(Small) + "[reach]\n" + lines);
}

CutJob JobOf(double width, double height) {
  CutJob job{.width = width, .height = height, .paths = {}};
  CutPath path;
  path.contours.push_back({.start = {1, 1}, .segments = {LineTo({2, 2})}});
  job.paths.push_back(path);
  return job;
}

std::string TextOfFile(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(DeviceFile, a_short_file_has_the_defaults) {
  const auto device = ReadDevice(Small, "knife.toml");
  ASSERT_TRUE(device);
  Device expected;
  expected.name = "Knife";
  expected.format = "hpgl";
  EXPECT_EQ(*device, expected);
}

TEST(DeviceFile, every_key_is_taken) {
  const auto device = ReadDevice(Full(), "knife.toml");
  ASSERT_TRUE(device) << Describe(device.Error());
  EXPECT_EQ(device->width, 600);
  EXPECT_EQ(device->height, 400);
  EXPECT_EQ(device->tolerance, 0.05);
  EXPECT_EQ(device->origin, "upper-left");
  EXPECT_TRUE(device->swapAxes && device->mirrorX && device->mirrorY);
  EXPECT_EQ(device->unitsPerMillimetre, 100);
  EXPECT_EQ(device->dxfVersion, "r12");
  EXPECT_EQ(device->limits, (DeviceLimits{.maximumSpeed = 300,
                                          .maximumForce = 80,
                                          .points = 8,
                                          .instructionBytes = 64,
                                          .chunk = 512}));
  ASSERT_EQ(device->tools.size(), 2u);
  EXPECT_EQ(device->tools[0], (DeviceTool{.name = "a",
                                          .operations = {Operation::Cut, Operation::Crease},
                                          .pen = 3,
                                          .speed = 20,
                                          .force = 30}));
  EXPECT_EQ(device->gcode.texts.size(), 7u);
  EXPECT_EQ(device->gcode.texts.at("tool-on"), "o");
  EXPECT_EQ(device->gcode.decimals, 2);
  EXPECT_EQ(device->gcode.fullPower, 255);
  EXPECT_EQ(device->reach.by, Reach::Serial);
  EXPECT_EQ(device->reach.baud, 19200);
  EXPECT_EQ(device->reach.dataBits, 7);
  EXPECT_EQ(device->reach.stopBits, 2);
  EXPECT_EQ(device->reach.parity, Parity::Even);
  EXPECT_EQ(device->reach.flow, FlowControl::Software);
  EXPECT_EQ(device->reach.timeoutSeconds, 5);
}

TEST(DeviceFile, a_fault_has_its_line_and_reason) {
  EXPECT_EQ(FaultOf("format = 'hpgl'\n"), "knife.toml:1:1: the device needs a name");
  EXPECT_EQ(FaultOf("name = 'x'\n"), "knife.toml:1:1: the device needs a format");
  EXPECT_EQ(FaultOf("name = 'x'\nformat = 'hpg'\n"),
            "knife.toml:2:10: format is 'hpg' and must be one of hpgl, dxf, svg, pdf, gcode, json; "
            "did you mean 'hpgl'?");
  EXPECT_EQ(FaultOf(std::string(Small) + "widht = 3\n"),
            "knife.toml:3:1: there is no key 'widht' here; did you mean 'width'?");
  EXPECT_EQ(FaultOf(std::string(Small) + "width = -1\n"),
            "knife.toml:3:9: width must be a length between 0 and 1e+06 mm");
  EXPECT_EQ(FaultOf(std::string(Small) + "units-per-mm = 41\n"),
            "knife.toml:3:16: units-per-mm must be 40 or 100");
}

TEST(DeviceFile, a_tool_that_cannot_be_is_a_fault) {
  const auto fault = [](const std::string& lines) { return FaultOf(std::string(Small) + lines); };
  EXPECT_EQ(fault("[[tool]]\npen = 1\n"), "knife.toml:3:1: the tool needs a name");
  EXPECT_EQ(fault("[[tool]]\nname = 'a'\n[[tool]]\nname = 'a'\n"),
            "knife.toml:6:8: another tool has this name");
  EXPECT_EQ(fault("[[tool]]\nname = 'a'\noperations = ['print']\n"),
            "knife.toml:5:14: 'print' is no operation of a tool");
  EXPECT_EQ(fault("[[tool]]\nname = 'a'\noperations = ['cut']\n[[tool]]\nname = 'b'\n"
                  "operations = ['cut']\n"),
            "knife.toml:8:14: another tool does 'cut'");
  EXPECT_NE(fault("[[tool]]\nname = 'a'\npen = 0\n"), "");
  EXPECT_EQ(fault("[[tool]]\nname = 'a'\npen = 1\n"), "");
  EXPECT_EQ(fault("[[tool]]\nname = 'a'\npen = 99\n"), "");
  EXPECT_NE(fault("[[tool]]\nname = 'a'\npen = 100\n"), "");
}

TEST(DeviceFile, a_hundredth_tool_is_a_fault) {
  std::string text(Small);
  for (int i = 0; i < 98; ++i) text += "[[tool]]\nname = 't" + std::to_string(i) + "'\n";
  EXPECT_EQ(FaultOf(text), "");
  text += "[[tool]]\nname = 'x'\n";
  EXPECT_EQ(FaultOf(text), "");
  text += "[[tool]]\nname = 'y'\n";
  EXPECT_NE(FaultOf(text), "");
}

TEST(DeviceFile, a_way_of_reaching_needs_its_keys_and_no_others) {
  EXPECT_EQ(FaultOfReach(""), "knife.toml:3:1: the table needs 'by'");
  EXPECT_EQ(FaultOfReach("by = 'file'\n"),
            "knife.toml:3:1: a device that is reached so needs 'path'");
  EXPECT_EQ(FaultOfReach("by = 'directory'\npath = 'jobs'\n"),
            "knife.toml:5:8: path must be a full path, from /");
  EXPECT_EQ(FaultOfReach("by = 'tcp'\n"),
            "knife.toml:3:1: a device that is reached so needs 'host'");
  EXPECT_EQ(FaultOfReach("by = 'program'\ncommand = []\n"),
            "knife.toml:5:11: a device that is reached so needs 'command'");
  EXPECT_EQ(FaultOfReach("by = 'serial'\npath = '/dev/ttyS0'\nbaud = 9601\n"),
            "knife.toml:6:8: no serial line has 9601 baud");
  EXPECT_EQ(FaultOfReach("by = 'file'\npath = '/tmp/a'\nbaud = 9600\n"),
            "knife.toml:6:1: there is no key 'baud' here");
  EXPECT_EQ(FaultOfReach("by = 'tcp'\nhost = 'a'\n"), "");
  for (const int port : {0, 1, 65535, 65536}) {
    EXPECT_EQ(FaultOfReach("by = 'tcp'\nhost = 'a'\nport = " + std::to_string(port)).empty(),
              port == 1 || port == 65535);
  }
  for (const int seconds : {0, 1, 86400, 86401}) {
    EXPECT_EQ(FaultOfReach("by = 'tcp'\nhost = 'a'\ntimeout = " + std::to_string(seconds)).empty(),
              seconds == 1 || seconds == 86400);
  }
}

TEST(DeviceFile, every_key_of_the_page_is_a_key_of_the_code) {
  const std::string page = TextOfFile(RASTREL_SOURCE_DIR "/docs/formats/cut-device.md");
  std::set<std::string> told;
  for (std::size_t at = 0; (at = page.find("\n| `", at)) != std::string::npos; at += 4) {
    told.insert(page.substr(at + 4, page.find('`', at + 4) - at - 4));
  }
  const std::vector<std::string> keys = DeviceKeys();
  EXPECT_EQ(told, std::set<std::string>(keys.begin(), keys.end()));
}

TEST(DeviceFile, every_key_that_is_listed_is_read) {
  // The same file with one key given twice as a table of its own: a key that is read complains of
  // its type, and one that is not is unknown.
  for (const std::string& key : DeviceKeys()) {
    const std::size_t dot = key.find('.');
    const std::string table = dot == std::string::npos ? "" : key.substr(0, dot);
    std::string text = table.empty() ? "" : std::string(Small);
    if (table == "tool") text += "[[tool]]\n";
    if (table != "tool" && !table.empty()) text += "[" + table + "]\n";
    const std::string name = key.substr(dot == std::string::npos ? 0 : dot + 1);
    if (table == "reach" && name != "by") {
      const bool isSerial = name != "command" && name != "host" && name != "port";
      text += isSerial            ? "by = 'serial'\n"
              : name == "command" ? "by = 'program'\n"
                                  : "by = 'tcp'\n";
    }
    text += name + " = {}\n";
    const std::string fault = FaultOf(text);
    EXPECT_NE(fault, "") << key;
    EXPECT_EQ(fault.find("there is no key"), std::string::npos) << fault;
  }
}

TEST(DeviceFile, the_ready_files_are_sound) {
  int files = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(RASTREL_SOURCE_DIR "/share/cut-devices")) {
    EXPECT_EQ(FaultOf(TextOfFile(entry.path())), "") << entry.path();
    ++files;
  }
  EXPECT_EQ(files, 4);
}

TEST(DeviceFile, a_file_that_is_cut_at_any_byte_is_read_or_refused) {
  const std::string text = Full();
  for (std::size_t size = 0; size < text.size(); ++size) {
    const auto device = ReadDevice(text.substr(0, size), "knife.toml");
    EXPECT_TRUE(device || device.Error().code == FailureCode::BadInput) << size;
  }
}

TEST(FittedJob, a_path_without_settings_gets_those_of_its_tool) {
  auto device = *ReadDevice(
      std::string(Small) + "[[tool]]\nname = 'k'\noperations = ['cut']\nspeed = 9\nforce = 7\n",
      "knife.toml");
  CutJob job = JobOf(10, 10);
  const auto fitted = FittedTo(device, job);
  ASSERT_TRUE(fitted);
  EXPECT_EQ(fitted->paths[0].settings.tool, "k");
  EXPECT_EQ(fitted->paths[0].settings.speed, 9);
  EXPECT_EQ(fitted->paths[0].settings.force, 7);
  job.paths[0].settings.speed = 4;
  EXPECT_EQ(FittedTo(device, job)->paths[0].settings.speed, 4);
}

TEST(FittedJob, speed_and_force_are_held_to_the_limits) {
  Device device;
  device.limits.maximumSpeed = 100;
  device.limits.maximumForce = 50;
  CutJob job = JobOf(10, 10);
  job.paths[0].settings.speed = 101;
  job.paths[0].settings.force = 50;
  const auto fitted = FittedTo(device, job);
  ASSERT_TRUE(fitted);
  EXPECT_EQ(fitted->paths[0].settings.speed, 100);
  EXPECT_EQ(fitted->paths[0].settings.force, 50);
}

TEST(FittedJob, a_tool_that_the_device_lacks_is_refused) {
  auto device = *ReadDevice(std::string(Small) + "[[tool]]\nname = 'k'\n", "knife.toml");
  CutJob job = JobOf(10, 10);
  job.paths[0].settings.tool = "saw";
  const auto fitted = FittedTo(device, job);
  ASSERT_FALSE(fitted);
  EXPECT_EQ(Describe(fitted.Error()), "'Knife' has no tool 'saw'");
}

TEST(FittedJob, a_job_that_is_larger_than_the_device_is_refused) {
  Device device;
  device.name = "Knife";
  device.width = 100;
  device.height = 50;
  EXPECT_TRUE(FittedTo(device, JobOf(100, 50)));
  const auto refused = FittedTo(device, JobOf(100, 50.01));
  ASSERT_FALSE(refused);
  EXPECT_EQ(Describe(refused.Error()),
            "the job is 100 by 50.01 mm, and 'Knife' takes 100 by 50 mm (0 is any)");
  EXPECT_FALSE(FittedTo(device, JobOf(50, 100)));
  device.swapAxes = true;
  EXPECT_TRUE(FittedTo(device, JobOf(50, 100)));
}

}  // namespace
}  // namespace rastrel::cutting
