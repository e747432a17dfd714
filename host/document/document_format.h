#pragma once

#include <array>
#include <string_view>
#include <utility>

#include "host/document/shapes.h"

/// The names of values in a document file, for its writer and its reader.
namespace rastrel::document {

inline constexpr std::string_view DocumentFormatName = "rastrel-document";
inline constexpr int DocumentVersion = 1;

inline constexpr std::array<std::pair<GraphicKind, std::string_view>, 6> GraphicKindNames = {{
    {GraphicKind::Svg, "svg"},
    {GraphicKind::Png, "png"},
    {GraphicKind::Jpeg, "jpeg"},
    {GraphicKind::Tiff, "tiff"},
    {GraphicKind::Pdf, "pdf"},
    {GraphicKind::Eps, "eps"},
}};

inline constexpr std::array<std::pair<CutLine, std::string_view>, 3> CutLineNames = {{
    {CutLine::None, "none"},
    {CutLine::Cut, "cut"},
    {CutLine::Through, "through"},
}};

inline constexpr std::array<std::pair<FillRule, std::string_view>, 2> FillRuleNames = {{
    {FillRule::EvenOdd, "evenodd"},
    {FillRule::NonZero, "nonzero"},
}};

inline constexpr std::array<std::pair<int, std::string_view>, 3> JustificationNames = {{
    {JUSTIFY_LEFT, "left"},
    {JUSTIFY_RIGHT, "right"},
    {JUSTIFY_CENTER, "center"},
}};

inline constexpr std::array<std::pair<int, std::string_view>, 4> TraitNames = {{
    {DBTRAIT_VISIBLE, "visible"},
    {DBTRAIT_SELECTABLE, "selectable"},
    {DBTRAIT_IN_DOCUMENT, "in-document"},
    {DBTRAIT_SELECTED, "selected"},
}};

}  // namespace rastrel::document
