#pragma once

#include <optional>
#include <string>

#include "interpreter/guarded_process.h"
#include "interpreter/guardian.h"
#include "interpreter/warm_message.h"
#include "interpreter/warm_place.h"

/// Starts of an interpreter by one that is warm already: a process that has opened its device,
/// found its profiles and a font and painted a little, waits, and forks for each job
/// (interpreter/warm). A job's process is the one that an exec would have made, but for the time.
///
/// A user's second wish for an interpreter of the same options within a minute starts a warm one
/// beside the job, which is done as always. One serves the jobs of one set of options. There are
/// four at most: another start ends the one that had no job for the longest time. It ends after a
/// minute without a job, and after some hundred, since all its jobs have their memory at the same
/// addresses.
namespace rastrel::interpreter {

inline constexpr std::size_t MaximumWarmInterpreters = 4;
inline constexpr unsigned WarmRestSeconds = 60;
inline constexpr unsigned WarmJobs = 200;

/// The largest job that pays: of others the start is a small part.
inline constexpr std::uint64_t WarmJobBytes = std::uint64_t{4} << 20;

/// Starts the job by a warm interpreter, within the same walls and under guard. Nothing where that
/// can't be had, for whatever reason: nothing of the job was done then, and nothing will be, so
/// that it can be started in the ordinary way. RASTREL_WARM=0 switches all of it off.
///
/// The request's arguments are the interpreter's own, with its name first; its wall is that of the
/// job without the interpreter's own files. Costs a few system calls where there is no warm one.
[[nodiscard]] std::optional<GuardedProcess> StartWarm(const ProcessRequest& request,
                                                      Guardian& guardian);

/// The options of the request's interpreter, if a warm one gives the same pages from them: the
/// program is the machine's own Ghostscript, and the device one that writes nothing before the job
/// does. A file's own page belongs after the first -c: with options of its own a file would have
/// an interpreter of its own, and take the place of one that others share.
[[nodiscard]] std::optional<WarmOptions> WarmOptionsOf(const ProcessRequest& request);

/// Starts a warm interpreter that outlives this process, in a session of its own and with none of
/// its streams, and returns at once. The failure is that of the start alone.
[[nodiscard]] Expected<void> LaunchWarm(const std::string& directory, const WarmOptions& options,
                                        unsigned restSeconds = WarmRestSeconds,
                                        unsigned jobs = WarmJobs);

}  // namespace rastrel::interpreter
