#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "interpreter/dsc_pages.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::interpreter {

/// Sends parts of the job file into the interpreter's pipe as that takes it.
class JobFeed {
 public:
  /// `file` is the open job; both descriptors are borrowed but for `pipe`, which this owns. An
  /// invalid `pipe` has nothing to send.
  JobFeed(int file, std::uint64_t offset, std::uint64_t length, os::FileDescriptor pipe);
  /// The same with several parts, which are sent one after the other.
  JobFeed(int file, std::vector<FilePart> parts, os::FileDescriptor pipe);

  /// The pipe's end while there is something to send, else -1.
  [[nodiscard]] int Descriptor() const { return m_Pipe.Get(); }
  /// Sends as much as the pipe takes now. Closes it at the part's end, or when the interpreter
  /// reads no more. The failure is a sentence without its full stop, with the code BadInput if the
  /// file can't be read, and Unspecified if the pipe fails otherwise.
  [[nodiscard]] Expected<void> Send();
  /// Which share of the parts was sent, from 0 to 1.
  [[nodiscard]] double SentShare() const;

 private:
  [[nodiscard]] Expected<void> Refill();

  int m_File;
  std::vector<FilePart> m_Parts;  // to be read, from where reading is
  std::size_t m_Part = 0;         // of these, the present one
  std::uint64_t m_Length;         // of all
  std::uint64_t m_Read = 0;       // of all
  os::FileDescriptor m_Pipe;
  std::string m_Buffer;
  std::size_t m_Sent = 0;  // of the buffer
};

}  // namespace rastrel::interpreter
