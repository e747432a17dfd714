#pragma once

#include <cstddef>
#include <optional>

#include "host/document/document.h"
#include "host/document/shapes.h"
#include "rastrel/platform/os/expected.h"

/// The layout of panes and plates. A plate's panes are in rows of as many as fit side by side,
/// rightward from its start, with rows downward from the top or upward from the bottom. Plates of
/// one page are one below the other (or above), in the order in which they were made.
namespace rastrel::document {

/// The maximum number of panes in a document; more are refused.
inline constexpr int MaximumPanes = 1'000'000;

/// The start of a plate on a page without others.
[[nodiscard]] CWorldPoint StartOnEmptyPage(const SignBlank& blank, const CWorldRect& margins,
                                           bool fromBottom);

/// Panes that fit side by side, and rows that fit, from the plate's start to the blank's edges less
/// the margins; `reach` is a y that rows must not cross, where there is one. 0 for none.
[[nodiscard]] std::size_t Capacity(const PlateShape& plate, const SignBlank& blank,
                                   std::optional<double> reach = std::nullopt);

/// The place of a pane, by its number from 0. A pure function of the plate's measures, start and of
/// the blank, so that panes that are added later never move earlier ones.
[[nodiscard]] CWorldRect PaneAt(const PlateShape& plate, const SignBlank& blank,
                                std::size_t number);

/// Gives the plate its first `count` panes, or as many as fit. Returns how many it has then.
std::size_t LayPanes(PlateShape& plate, const SignBlank& blank, std::size_t count,
                     std::optional<double> reach = std::nullopt);

/// Succeeds if at least one pane of the plate's measures fits on an empty page. The failure's `why`
/// is a sentence for the user.
[[nodiscard]] Expected<void> CheckPaneFits(const SignBlank& blank, PlateShape plate);

/// Gives each plate that has no place yet one that no other plate covers: below the one before it,
/// or on a page of its own. Returns the last plate of the document, or 0.
ObjectHandle PlaceNewPlates(Document& document);

/// Makes a plate of the document hold `count` panes. Earlier ones stay; those that do not fit
/// beside the other plates of its page go to plates on further pages, which continue it.
void GrowPlate(Document& document, ObjectHandle plate, std::size_t count);

}  // namespace rastrel::document
