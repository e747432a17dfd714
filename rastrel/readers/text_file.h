#pragma once

#include <string>
#include <string_view>

#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::readers {

/// A text file in the mode "wt,ccs=UTF-8" of the platform's C run-time: UTF-8 with a byte-order
/// mark, and CR LF for each line feed. Bytes are written through a small buffer.
class TextFile {
 public:
  /// Creates the file by its library path, or empties it, and writes the mark.
  explicit TextFile(std::wstring path);

  /// Whether the file could be opened and took all bytes so far. The first failure is reported
  /// (xml/failure.h).
  [[nodiscard]] bool IsGood() const { return m_IsGood; }
  /// Appends bytes of UTF-8. Does nothing after a failure. The same result as IsGood.
  bool Write(std::string_view bytes);
  /// Writes the rest of the buffer. True if the file holds all bytes. A file that could not be
  /// written to its end stays incomplete.
  [[nodiscard]] bool Close();

 private:
  void Flush();
  void Fail(const std::string& reason);

  std::wstring m_Path;
  os::FileDescriptor m_File;
  std::string m_Buffer;
  bool m_IsGood = true;
};

}  // namespace rastrel::readers
