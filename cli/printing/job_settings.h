#pragma once

#include <array>
#include <string>
#include <string_view>

#include "rastrel/job/job_data.h"
#include "rastrel/platform/os/expected.h"

class CVKJobTicket;

namespace rastrel::cli {

struct Invocation;

/// Which ticket takes the settings: their scales differ, and not all of them fit both.
enum class TicketKind { Print, Preview };

/// Takes --scale, --levels, --levels-red and its like, and --cut-color into a ticket's settings;
/// the others keep their values. The failures of this and of all below are messages for the user;
/// settings may have changed in part then.
[[nodiscard]] Expected<void> ApplySettings(CJobData& settings, const Invocation& invocation,
                                           TicketKind kind);

/// Takes --dpi, --planar and --cut-only into a preview's ticket.
[[nodiscard]] Expected<void> ApplyPreview(CVKJobTicket& ticket, const Invocation& invocation);

/// The value of --scale: "none"; a size with its unit, "10x5in", "25.4x12.7cm", "254x127mm"; or the
/// name of a size of the RIP's, in any case: Letter, Legal, Tabloid, A0 to A5. Others are refused.
[[nodiscard]] Expected<void> ApplyScale(CJobData& settings, std::string_view text);

/// The value of --levels or, with the option's name, of one for a channel: low and high end from 0
/// to 255, and a gamma between them, as "10,1.2,250".
[[nodiscard]] Expected<CLevelsData> ParseLevels(std::string_view option, std::string_view text);

/// The value of --cut-color: "rgb:R,G,B" or "cmyk:C,M,Y,K", each from 0 to 255 or a percentage, or
/// "spot:NAME", which only a preview's ticket takes. Components are converted to the scale of the
/// ticket's record and rounded to whole numbers.
[[nodiscard]] Expected<void> ApplyCutColor(CJobData& settings, std::string_view text,
                                           TicketKind kind);

}  // namespace rastrel::cli
