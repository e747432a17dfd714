#pragma once

#include <tiffio.h>

#include <memory>
#include <string>

#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::odalis {

/// An open TIFF file that keeps the text of its last error, so that nothing is printed. It reads,
/// writes and moves in the file itself and keeps the first failure of the system too, since the
/// library does not look at every seek's result.
class TiffHandle {
 public:
  /// Opens the descriptor's file. `mode` is as TIFFOpen takes it. Closed with this object.
  TiffHandle(os::FileDescriptor descriptor, const std::string& path, const char* mode);
  TiffHandle(const TiffHandle&) = delete;
  TiffHandle& operator=(const TiffHandle&) = delete;

  /// Null if it could not be opened.
  [[nodiscard]] TIFF* Get() const { return m_Tiff.get(); }
  /// The system's reason for its first failure, else the library's text for its last error; never
  /// empty.
  [[nodiscard]] std::string LastError() const;
  /// Closes the file; the library's last writes may fail. The error is kept.
  void Close() { m_Tiff.reset(); }
  [[nodiscard]] bool HasFailed() const { return m_SystemError != 0 || !m_Error.empty(); }

 private:
  static TiffHandle& Of(thandle_t self) { return *static_cast<TiffHandle*>(self); }
  static tmsize_t Read(thandle_t self, void* bytes, tmsize_t count);
  static tmsize_t Write(thandle_t self, void* bytes, tmsize_t count);
  static toff_t Seek(thandle_t self, toff_t offset, int whence);
  static int CloseFile(thandle_t self);
  static toff_t SizeOf(thandle_t self);
  template <typename Result>
  Result Keep(Result result);
  static int TakeError(TIFF* tiff, void* self, const char* module, const char* format,
                       va_list list);
  static int TakeWarning(TIFF* tiff, void* self, const char* module, const char* format,
                         va_list list);

  struct Closer {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };
  os::FileDescriptor m_File;
  int m_SystemError = 0;  // of the first call that failed
  std::string m_Error;
  std::unique_ptr<TIFF, Closer> m_Tiff;
};

}  // namespace rastrel::odalis
