#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

/// Which process a directory for temporary work belongs to, so that another one can remove it once
/// that process has ended. Paths are native.
namespace rastrel::os {

/// A process, distinguished from every other one that had or will have its id.
struct ProcessIdentity {
  std::uint32_t id = 0;
  std::uint64_t start = 0;  ///< clock ticks after the machine's start
  std::string boot;         ///< the machine's id of this start
  std::string space;        ///< the namespace of process ids
  std::string machine;      ///< the machine's name

  bool operator==(const ProcessIdentity&) const = default;
};

/// The identity of a process that is running. `Failure` if there is none of that id, or the machine
/// does not say.
[[nodiscard]] Expected<ProcessIdentity> IdentityOfProcess(std::uint32_t id);

/// False only if the process has certainly ended. True if it runs, and if that can't be found out:
/// it belongs to another machine or namespace, or can't be looked at.
[[nodiscard]] bool MayBeAlive(const ProcessIdentity& process);

/// The identity as one line without its line end, and back. Nothing for any other text:
///
///     4711 8812 0ef1a2b3-... pid:[4026531836] workshop
///     id   start boot        space            machine
[[nodiscard]] std::string FormatIdentity(const ProcessIdentity& process);
[[nodiscard]] std::optional<ProcessIdentity> ParseIdentity(std::string_view line);

/// This process in about 30 characters, for names and for attributes, which a file system keeps
/// beside the file only if they are short: the process's id and start, and marks of the machine's
/// start and of namespace and machine. The id alone where the machine does not say the rest.
///
///     4711.8812.0ef1a2b3.9c5d77aa
[[nodiscard]] std::string OwnTag();
/// The owner that a tag names.
enum class TagOwner {
  Unknown,  ///< it is no tag
  Ended,    ///< the process has certainly ended
  MayLive,  ///< it runs, or that can't be found out
};
[[nodiscard]] TagOwner OwnerOfTag(std::string_view tag);

/// A name for a hidden temporary file, another one at each call, that says whose it is: a tag.
///
///     .rastrel-4711.8812.0ef1a2b3.9c5d77aa-0.tmp
[[nodiscard]] std::string OwnTemporaryName();
/// Whether a name is such a one of a process that has certainly ended.
[[nodiscard]] bool IsAbandonedTemporaryName(std::string_view name);

/// The file of a directory that names its owner: an identity and a line feed.
inline constexpr std::string_view OwnerFileName = ".owner";

/// Writes the directory's owner. EEXIST if it names one already.
[[nodiscard]] Expected<void> WriteOwner(const std::string& directory, const ProcessIdentity& owner);
/// The directory's owner. `Failure` if the directory names none, or no identity.
[[nodiscard]] Expected<ProcessIdentity> ReadOwner(const std::string& directory);
/// Takes the owner's file away. Succeeds also if there is none.
[[nodiscard]] Expected<void> RemoveOwner(const std::string& directory);

}  // namespace rastrel::os
