#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "server/printer/print_modes.h"
#include "server/queue/job.h"

/// From a sender's wishes to the options of a job in the queue.
namespace rastrel::server {

/// The size that a document is fitted to, in hundredths of a millimetre.
struct FitSize {
  int width = 0;
  int length = 0;
};

/// Attributes of an IPP job that this printer heeds. Those that the sender left out are empty.
struct SenderWishes {
  int copies = 1;
  std::vector<std::pair<int, int>> pages;  ///< first and last of each range
  std::string mode;                        ///< the keyword of a mode
  int horizontal = 0;                      ///< pixels per inch; 0: no wish
  int vertical = 0;
  bool gray = false;           ///< print-color-mode is a monochrome one
  std::optional<FitSize> fit;  ///< print-scaling is a fitting one: the media's size
};

/// The options, by the command's long names: "copies", "pages", "mode" and "scale". A wish for a
/// mode wins over those for a resolution and for gray, which choose the first mode that has both,
/// or none. Ranges that are no pages are left out.
[[nodiscard]] JobOptions OptionsOf(const SenderWishes& wishes,
                                   const std::vector<OfferedMode>& modes);

/// A foreign name as one line, at most 255 bytes; `usual` if nothing is left.
[[nodiscard]] std::string CleanName(std::string_view name, std::string_view usual);

/// The name of a device as a part of an address: letters, digits, dashes and underscores, at most
/// 60 bytes.
[[nodiscard]] std::string PrinterNameOf(std::string_view device);

}  // namespace rastrel::server
