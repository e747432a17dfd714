#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/graphics/vector_path.h"
#include "rastrel/platform/values/tm.h"

namespace rastrel::drawing {

/// Reads the drawing library's script, the text form of all that is drawn on a script surface, as
/// painted paths. The library writes it in pieces; memory is that of one path.
///
/// The part of the language that is read, operands before their operator:
///
///     n  x y m  x y l  x1 y1 x2 y2 x y c  h  x y w h rectangle     the path, in device units
///     g g | r g b rgb [set-source]      width set-line-width      [dashes] offset set-dash
///     sx sy scale | [a b c d x y] set-matrix | identity set-matrix
///     //EVEN_ODD set-fill-rule          fill+ stroke+ clip+ reset-clip
///
/// Everything else that paints, groups, mixes or selects another source is nothing that paths
/// express: the reader says which, and reads no further.
class ScriptReader {
 public:
  /// A painted path in units of the page, y downward.
  using TakePaint = std::function<bool(const graphics::VectorPath&)>;

  /// The page's size, in its units: the drawing beyond it does not show. `toPage` maps the device
  /// to the page, and must keep lengths. `dashes`: dashed lines are taken as whole ones. `take`
  /// returns false to end the reading.
  ScriptReader(double width, double height, const TM& toPage, bool dashes, TakePaint take);

  /// Takes the next piece of the script. False once the reading has ended.
  bool Write(std::string_view piece);
  /// The script is over: the last path is taken. False if the reading has ended before.
  bool Finish();
  /// Why the drawing is no paths: "it has a gradient"; empty while it is.
  [[nodiscard]] const std::string& Reason() const { return m_Reason; }
  /// True if a path had more than MaximumVectorPoints points, which ended the reading.
  [[nodiscard]] bool IsTooLong() const { return m_Points > graphics::MaximumVectorPoints; }

 private:
  // A convex area; empty for a clip that is none.
  using Corners = std::vector<CWorldPoint>;
  // The part of a path that shows: all, nothing, or the one within the page, a convex clip or
  // another.
  enum class Sight { Whole, None, Page, Part, Cut };

  // Each returns false once the reading has ended; those with a name, true for another name too.
  bool TakeToken(std::string_view token);
  bool TakeOperator(std::string_view name);
  bool TakePathStep(std::string_view name);
  void TakeState(std::string_view name);
  void TakeSource(std::string_view name);
  void TakeMatrix(std::string_view name);
  bool Fill();
  bool Stroke();
  void Clip();
  void ResetClip();
  bool Flush();
  bool End(std::string reason);
  // Whether a paint of the present path with the present source is one of paths; nothing to do for
  // one that does not show.
  enum class Check { Paints, Hidden, Ended };
  Check CheckPaint();

  // Operands from the first of the last `count`; 0 for those that are missing.
  [[nodiscard]] double Operand(std::size_t count, std::size_t index) const;
  [[nodiscard]] CWorldPoint PointOf(std::size_t count, std::size_t index) const;
  [[nodiscard]] CWorldPoint OnPage(double x, double y) const;
  document::SubPath& Run();
  [[nodiscard]] bool IsPage(const Corners& clip) const;
  [[nodiscard]] Sight SightOf(const document::PathShape& shape) const;

  double m_Width;
  double m_Height;
  TM m_ToPage;
  bool m_Dashes;
  TakePaint m_Take;
  std::string m_Partial;  // the beginning of a token whose end is in the next piece
  std::vector<double> m_Operands;
  std::vector<double> m_List;  // of the last brackets
  bool m_InList = false;
  std::string m_Name;  // the last //NAME
  TM m_Matrix;
  std::array<double, 3> m_Color{};  // 0 to 1 each
  double m_Alpha = 1;
  std::array<double, 3> m_NextColor{};
  double m_NextAlpha = 1;
  double m_LineWidth = 2;
  bool m_Dashed = false;
  bool m_EvenOdd = false;
  bool m_PlainOperator = true;
  document::PathShape m_Path;
  std::size_t m_Points = 0;
  std::size_t m_PathNumber = 0;  // of the present path, to see which paints have the same
  std::vector<Corners> m_Clips;
  std::optional<graphics::VectorPath> m_Pending;  // a filled path whose line may follow
  std::size_t m_PendingPath = 0;
  std::string m_Reason;
  bool m_Ended = false;
};

}  // namespace rastrel::drawing
