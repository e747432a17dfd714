#include "children/coreodalis/tiff_handle.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <system_error>
#include <utility>

#include "children/coreodalis/pixel_file.h"

namespace rastrel::odalis {

TiffHandle::TiffHandle(os::FileDescriptor descriptor, const std::string& path, const char* mode)
    : m_File(std::move(descriptor)) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (!options) return;
  TIFFOpenOptionsSetErrorHandlerExtR(options, TakeError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options, TakeWarning, this);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(2 * LargestRow));
  m_Tiff.reset(TIFFClientOpenExt(path.c_str(), mode, this, Read, Write, Seek, CloseFile, SizeOf,
                                 nullptr, nullptr, options));
  TIFFOpenOptionsFree(options);
}

std::string TiffHandle::LastError() const {
  if (m_SystemError != 0) return std::generic_category().message(m_SystemError);
  return m_Error.empty() ? "the TIFF library gives no reason" : m_Error;
}

// Keeps the error number of the first call that failed.
template <typename Result>
Result TiffHandle::Keep(Result result) {
  if (result < 0 && m_SystemError == 0) m_SystemError = errno;
  return result;
}

// All that there is, up to `count`: the library takes less for the file's end.
tmsize_t TiffHandle::Read(thandle_t self, void* bytes, tmsize_t count) {
  tmsize_t done = 0;
  while (done < count) {
    const ssize_t got = ::read(Of(self).m_File.Get(), static_cast<char*>(bytes) + done,
                               static_cast<std::size_t>(count - done));
    if (got < 0 && errno == EINTR) continue;
    if (Of(self).Keep(got) < 0) return -1;
    if (got == 0) break;
    done += got;
  }
  return done;
}

tmsize_t TiffHandle::Write(thandle_t self, void* bytes, tmsize_t count) {
  tmsize_t done = 0;
  while (done < count) {
    const ssize_t put = ::write(Of(self).m_File.Get(), static_cast<const char*>(bytes) + done,
                                static_cast<std::size_t>(count - done));
    if (put < 0 && errno == EINTR) continue;
    if (Of(self).Keep(put) < 0) return -1;
    done += put;
  }
  return done;
}

toff_t TiffHandle::Seek(thandle_t self, toff_t offset, int whence) {
  return static_cast<toff_t>(
      Of(self).Keep(::lseek(Of(self).m_File.Get(), static_cast<off_t>(offset), whence)));
}

int TiffHandle::CloseFile(thandle_t self) {
  const int closed = ::close(Of(self).m_File.Release());
  return Of(self).Keep(closed);
}

toff_t TiffHandle::SizeOf(thandle_t self) {
  struct stat status {};
  if (Of(self).Keep(::fstat(Of(self).m_File.Get(), &status)) < 0) return 0;
  return static_cast<toff_t>(status.st_size);
}

int TiffHandle::TakeError(TIFF*, void* self, const char*, const char* format, va_list list) {
  char text[512];
  std::vsnprintf(text, sizeof text, format, list);
  static_cast<TiffHandle*>(self)->m_Error = text;
  return 1;
}

int TiffHandle::TakeWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

}  // namespace rastrel::odalis
