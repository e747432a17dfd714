#pragma once

#include <tiffio.h>

#include <memory>
#include <string>

#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::odalis {

/// An open TIFF file that keeps the text of its last error, so that nothing is printed.
class TiffHandle {
 public:
  /// Opens the descriptor's file. `mode` is as TIFFOpen takes it. Closed with this object.
  TiffHandle(os::FileDescriptor descriptor, const std::string& path, const char* mode);
  TiffHandle(const TiffHandle&) = delete;
  TiffHandle& operator=(const TiffHandle&) = delete;

  /// Null if it could not be opened.
  [[nodiscard]] TIFF* Get() const { return m_Tiff.get(); }
  /// The library's text for its last error; never empty.
  [[nodiscard]] std::string LastError() const;
  /// Closes the file; the library's last writes may fail. The error is kept.
  void Close() { m_Tiff.reset(); }
  [[nodiscard]] bool HasFailed() const { return !m_Error.empty(); }

 private:
  static int TakeError(TIFF* tiff, void* self, const char* module, const char* format,
                       va_list list);
  static int TakeWarning(TIFF* tiff, void* self, const char* module, const char* format,
                         va_list list);

  struct Closer {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };
  std::string m_Error;
  std::unique_ptr<TIFF, Closer> m_Tiff;
};

}  // namespace rastrel::odalis
