#pragma once

#include <string>
#include <string_view>

#include "host/render/canvas.h"

/// Pieces of an SVG file.
namespace rastrel::render {

/// Appends points as millimetres: to a ten-thousandth, with a dot, without closing zeros.
void AppendMillimetres(std::string& text, double points);
/// Appends a point's coordinates in millimetres, with a space between them.
void AppendPoint(std::string& text, const Point& point);
/// Appends a number without a unit in the same way: to a millionth, or with more decimals.
void AppendNumber(std::string& text, double number, int decimals = 6);
/// Appends "#rrggbb".
void AppendColor(std::string& text, const Color& color);
/// Appends text as the content of an element or a value in double quotes. A character that XML 1.0
/// can't hold becomes U+FFFD.
void AppendEscaped(std::string& text, std::wstring_view content);
/// Appends the commands of a path.
void AppendPath(std::string& text, const Outline& outline);

}  // namespace rastrel::render
