#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cutting/job/contour.h"

/// The paths of one page with their operations: the value that every room of `cutting` takes and
/// gives. The origin is the page's lower left corner. All texts are UTF-8 and may come from a file.
namespace rastrel::cutting {

enum class Operation { Cut, CutHalf, Crease, Engrave, Perforate, Drill, Mark, Print, Ignore };

/// "cut", "cut-half", "crease", "engrave", "perforate", "drill", "mark", "print", "ignore": the
/// names in rule files, device files and every form that is written.
[[nodiscard]] std::string_view NameOf(Operation operation);
[[nodiscard]] std::optional<Operation> OperationOf(std::string_view name);
/// Whether a tool follows the path: all but Print and Ignore.
[[nodiscard]] bool HasTool(Operation operation);

enum class ColorModel {
  Gray,  ///< one component, 0 black to 1 white
  Rgb,   ///< three components, 0 to 1
  Cmyk,  ///< four components, 0 to 1
  Spot   ///< a separation by its name
};

struct PaintColor {
  ColorModel model = ColorModel::Gray;
  std::vector<double> components{};  ///< as many as the model says; none of a spot
  std::string name{};                ///< of a spot
  bool operator==(const PaintColor&) const = default;
};

/// How the file has painted the path.
struct Paint {
  enum class Kind {
    Stroke,
    Fill,         ///< by the nonzero winding number
    EvenOddFill,  ///< by the even-odd rule
    Text          ///< outlines of glyphs
  };
  Kind kind = Kind::Stroke;
  double lineWidth = 0;  ///< of a stroke, millimetres; 0 of the others
  PaintColor color;
  std::string layer{};  ///< name of its layer, where the file has layers
  bool operator==(const Paint&) const = default;
};

/// How a tool follows the path. What is not set is the device's own choice, or none.
struct ToolSettings {
  std::string tool{};             ///< the device file's name of it; empty: that of the operation
  std::optional<double> speed{};  ///< millimetres a second
  std::optional<double> force{};  ///< of a knife in grams, of a laser in percent
  int passes = 1;                 ///< how often it goes along, 1 to 99
  int order = 0;                  ///< smaller ones are worked first
  double kerf = 0;                ///< width of the cut, millimetres; half of it is the offset
  double overcut = 0;             ///< how far it goes on past the start of a closed path
  double leadIn = 0;              ///< length of the way into a closed path
  int bridges = 0;                ///< pieces of each closed path that stay uncut
  double bridgeWidth = 0;         ///< length of each, millimetres
  bool operator==(const ToolSettings&) const = default;
};

/// One painting of the file.
struct CutPath {
  std::vector<Contour> contours;
  Operation operation = Operation::Cut;
  ToolSettings settings{};
  Paint paint{};
  std::string rule{};  ///< name of the rule that took it; empty: none
  bool operator==(const CutPath&) const = default;
};

/// A registration mark that is printed for the cutter's eye.
struct RegistrationMark {
  enum class Shape { Corner, Cross, Circle };
  Point center;  ///< the place that is measured: of a corner its outer tip
  Shape shape = Shape::Circle;
  double size = 0;      ///< width and height, millimetres
  double rotation = 0;  ///< of a corner, degrees counterclockwise from one that opens to the upper
                        ///< right
  bool operator==(const RegistrationMark&) const = default;
};

struct CutJob {
  double width = 0;   ///< of the page, millimetres
  double height = 0;  ///< of the page, millimetres
  std::vector<CutPath> paths;
  std::vector<RegistrationMark> marks{};
  bool operator==(const CutJob&) const = default;
};

[[nodiscard]] Box BoxOf(const CutPath& path);
/// Around all paths with a tool. Empty if there is none.
[[nodiscard]] Box ToolBoxOf(const CutJob& job);

}  // namespace rastrel::cutting
