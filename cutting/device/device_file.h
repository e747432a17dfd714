#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// A cutter as its device file describes it: docs/formats/cut-device.md has every key, its unit and
/// its default. Lengths are millimetres. A value may be used on any thread.
namespace rastrel::cutting {

/// How a device is reached.
enum class Reach {
  None,       ///< not at all: the file describes a form alone
  File,       ///< a file that each job replaces; also the node of a port, or a pipe
  Directory,  ///< a new file for each job
  Program,    ///< a program that gets the job as its standard input
  Tcp,
  Serial
};

/// "none", "file", "directory", "program", "tcp", "serial".
[[nodiscard]] std::string_view NameOf(Reach reach);

enum class Parity { None, Even, Odd };
enum class FlowControl {
  None,
  Hardware,  ///< RTS and CTS
  Software   ///< XON and XOFF
};

struct DeviceReach {
  Reach by = Reach::None;
  std::string path{};                  ///< of a file, a directory or a serial port; native, full
  std::vector<std::string> command{};  ///< the program and its arguments
  std::string host{};                  ///< of TCP
  int port = 9100;                     ///< of TCP
  int baud = 9600;
  int dataBits = 8;
  int stopBits = 1;
  Parity parity = Parity::None;
  FlowControl flow = FlowControl::None;
  /// Seconds in which at least one byte has to be taken, or a connection to be made. For a program
  /// all the time that it has.
  int timeoutSeconds = 60;
  bool operator==(const DeviceReach&) const = default;
};

/// One of the device's tools.
struct DeviceTool {
  std::string name;
  std::vector<Operation> operations{};  ///< that it does unless a job names another tool
  int pen = 1;
  std::optional<double> speed{};  ///< mm/s, of paths without one
  std::optional<double> force{};  ///< of paths without one
  bool operator==(const DeviceTool&) const = default;
};

struct DeviceLimits {
  double maximumSpeed = 0;  ///< mm/s; 0: none
  double maximumForce = 0;  ///< 0: none
  int points = 32;          ///< of an instruction
  int instructionBytes = 256;
  int chunk = 0;  ///< bytes that are under way to the device at a time; 0: as many as it takes
  bool operator==(const DeviceLimits&) const = default;
};

/// Texts of the G-code that a device understands. Absent ones have the writer's defaults.
struct DeviceGcode {
  std::map<std::string, std::string, std::less<>> texts{};  ///< by the key
  std::optional<int> decimals{};
  std::optional<double> fullPower{};
  bool operator==(const DeviceGcode&) const = default;
};

struct Device {
  std::string name;         ///< for people
  std::string format;       ///< "hpgl", "dxf", "svg", "pdf", "gcode" or "json"
  double width = 0;         ///< of the largest job; 0: any
  double height = 0;        ///< of the largest job; 0: any
  double tolerance = 0.02;  ///< of curves that become lines
  std::string origin = "lower-left";
  bool swapAxes = false;
  bool mirrorX = false;
  bool mirrorY = false;
  int unitsPerMillimetre = 40;       ///< of HPGL: 40 or 100
  std::string dxfVersion = "r2000";  ///< or "r12"
  DeviceLimits limits{};
  std::vector<DeviceTool> tools{};
  DeviceGcode gcode{};
  DeviceReach reach{};
  bool operator==(const Device&) const = default;
};

/// Reads a device file. `name` is its name in failures, which have line, column and reason, and the
/// code BadInput.
[[nodiscard]] Expected<Device> ReadDevice(std::string_view text, const std::string& name);

/// The job as the device takes it: speeds and forces of its tools where a path has none, and no
/// more than its limits. Fails for a tool that the device does not have, and for a job that is
/// larger than the device.
[[nodiscard]] Expected<CutJob> FittedTo(const Device& device, CutJob job);

/// Every key of a device file as "table.key", for whoever holds the documents against the code.
[[nodiscard]] std::vector<std::string> DeviceKeys();

}  // namespace rastrel::cutting
