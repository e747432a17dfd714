#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// A device as a delivery needs it. docs/server.md says what its addresses mean.
namespace rastrel::server {

enum class DeviceKind {
  Folder,   ///< a directory that gets the files
  Program,  ///< a program that gets each file as its standard input
  Socket,   ///< host and port that get the bytes as they are
  Queue     ///< a print queue of this machine's print system, or of another's
};

/// "folder", "program", "socket", "queue".
[[nodiscard]] std::string_view NameOf(DeviceKind kind);

struct DeliveryDevice {
  std::string name;
  DeviceKind kind = DeviceKind::Folder;
  std::string path{};                  ///< Folder: full native path
  std::vector<std::string> command{};  ///< Program: the program and its arguments
  std::string host{};                  ///< Socket; Queue: empty is this machine's print system
  int port = 0;                        ///< Socket; Queue: with a host
  std::string queue{};                 ///< Queue: its name
  std::string format{};                ///< Queue: MIME type; empty: by each file's ending
  /// Seconds. Socket: in which at least one byte has to be taken. Program: of one file. Queue: of
  /// one call, and from the last byte to the job's end there. 0 is a week.
  int timeoutSeconds = 600;
  int retries = 3;        ///< attempts after the first
  int pauseSeconds = 10;  ///< before the first retry; each further pause is twice as long
  /// A delivery of which bytes went is begun again as well.
  bool againAfterCutOff = false;
  /// Socket: a device has the job once it closes the connection. Otherwise once it acknowledged
  /// the last byte.
  bool waitsForClose = true;
};

/// No pause is longer, however often it was doubled.
inline constexpr int MaximumPauseSeconds = 600;

/// A device with the address that people write:
///
///     Folder    /full/path
///     Program   words with blanks between them; "a word" may hold blanks
///     Socket    host:port or [::1]:port
///     Queue     NAME, NAME@host or NAME@host:port
///
/// Fails with the reason alone, BadInput, for any other text.
[[nodiscard]] Expected<DeliveryDevice> DeviceWithAddress(std::string name, DeviceKind kind,
                                                         const std::string& address);

}  // namespace rastrel::server
