#pragma once

#include "host/render/canvas.h"

// The drawing library's context, whose header only sources include.
typedef struct _cairo cairo_t;

namespace rastrel::render {

/// Paints into a cairo context whose unit is a point and whose y grows downward.
class CairoCanvas : public Canvas {
 public:
  /// The properties of the device.
  struct Device {
    double unitsPerPoint = 1;       ///< resolution
    double thinnest = 0.25;         ///< points: the width of lines without one
    double largestLetter = 10'000;  ///< units: larger ones are drawn as paths
  };

  /// `context` must outlive the canvas. With `outlines` every letter is a path.
  CairoCanvas(cairo_t* context, const Device& device, bool outlines);

  [[nodiscard]] double Farthest() const override { return m_Farthest; }
  void DrawOutline(const Outline& outline, const std::optional<Color>& inside,
                   const std::optional<Pen>& pen) override;
  void DrawCircle(Point centre, double radius, const Pen& pen) override;
  void DrawText(const text::TextLayout& layout, std::size_t run, const Color& color,
                const TM& place) override;
  void DrawArcText(const text::ArcLayout& layout, const Color& color, const TM& place) override;
  [[nodiscard]] Expected<void> DrawPicture(const graphics::Picture& picture,
                                           const TM& place) override;
  [[nodiscard]] Expected<void> DrawPlane(const SeparationPlane& plane, const TM& place) override;
  [[nodiscard]] Expected<void> DrawBitmap(const document::BitmapPixels& pixels,
                                          const TM& place) override;

 private:
  void Stroke(const Pen& pen);
  // Letters of that size, in points, are drawn as paths.
  [[nodiscard]] bool IsLargeLetter(double size, const TM& place) const;
  void FillLetters(const Outline& letters);

  cairo_t* m_Context;
  Device m_Device;
  double m_Farthest;
  bool m_Outlines;
};

}  // namespace rastrel::render
