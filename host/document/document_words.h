#pragma once

#include <array>
#include <string_view>
#include <utility>

#include "host/document/shapes.h"

/// The words of the document file, shared by its writer and its reader.
namespace rastrel::document {

inline constexpr std::string_view DocumentFormatName = "rastrel-document";
inline constexpr int DocumentVersion = 1;

inline constexpr std::array<std::pair<GraphicKind, std::string_view>, 6> GraphicWords = {{
    {GraphicKind::kSvg, "svg"},
    {GraphicKind::kPng, "png"},
    {GraphicKind::kJpeg, "jpeg"},
    {GraphicKind::kTiff, "tiff"},
    {GraphicKind::kPdf, "pdf"},
    {GraphicKind::kEps, "eps"},
}};

inline constexpr std::array<std::pair<int, std::string_view>, 3> JustificationWords = {{
    {JUSTIFY_LEFT, "left"},
    {JUSTIFY_RIGHT, "right"},
    {JUSTIFY_CENTER, "center"},
}};

inline constexpr std::array<std::pair<int, std::string_view>, 4> TraitWords = {{
    {DBTRAIT_VISIBLE, "visible"},
    {DBTRAIT_SELECTABLE, "selectable"},
    {DBTRAIT_IN_DOCUMENT, "in-document"},
    {DBTRAIT_SELECTED, "selected"},
}};

}  // namespace rastrel::document
