#pragma once

#include <string>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

/// The texts that a program is made of. Each may have several lines; a line feed is added to one
/// that does not end with it, and an empty text adds nothing. Names in braces are replaced:
///
///     start, end                  {width} {height}: of the page, mm
///     settings, toolOn, toolOff   {power} {force} {speed} {feed} {tool} {operation}
///     rapid, line                 these, and {x} {y}: of the device, mm
///     arcRight, arcLeft           these, and {i} {j}: from the arc's start to its center, mm
///
/// {speed} is in millimetres a second, {feed} in millimetres a minute, {force} is the settings'
/// own, and {power} its part of `fullPower` in percent. A byte of a tool's name that is no ASCII
/// letter, digit, dot, hyphen or underscore becomes an underscore, so that a name is no command.
struct GcodeTable {
  std::string start = "G21\nG90\nM5";
  std::string settings =
      "F{feed}";  ///< ahead of the first path, and where one of its values differs
  std::string toolOn = "M3 S{power}";
  std::string toolOff = "M5";
  std::string rapid = "G0 X{x} Y{y}";  ///< to a contour's start, the tool is off
  std::string line = "G1 X{x} Y{y}";   ///< the tool is on
  /// An arc of less than a half circle, clockwise and counterclockwise, with the tool on: "G2 X{x}
  /// Y{y} I{i} J{j}" and "G3 ...". With both curves become arcs, else straight lines.
  std::string arcRight;
  std::string arcLeft;
  std::string end = "G0 X0 Y0\nM2";
  int decimals = 3;  ///< of positions, 0 to 6
  double fullPower = 1000;
  double speed = 10;  ///< mm/s of paths without one
  double force = 10;  ///< percent of paths without one: a little, since too much burns
  bool operator==(const GcodeTable&) const = default;
};

/// A program for a laser or a router. `toDevice` goes from the page's millimetres to the device's.
/// Fails for a text with another name in braces, a brace without its counterpart, and for numbers
/// that the table can't have, and for one text of an arc without the other.
[[nodiscard]] Expected<std::string> GcodeText(const CutJob& job, const Transform& toDevice,
                                              double tolerance, const GcodeTable& table);

}  // namespace rastrel::cutting
