#include "children/coreodalis/tiff_handle.h"

#include <cstdarg>
#include <cstdio>

#include "children/coreodalis/pixel_file.h"

namespace rastrel::odalis {

TiffHandle::TiffHandle(os::FileDescriptor descriptor, const std::string& path, const char* mode) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (!options) return;
  TIFFOpenOptionsSetErrorHandlerExtR(options, TakeError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options, TakeWarning, this);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(2 * LargestRow));
  m_Tiff.reset(TIFFFdOpenExt(descriptor.Get(), path.c_str(), mode, options));
  TIFFOpenOptionsFree(options);
  // The library owns the descriptor once it has opened it.
  if (m_Tiff) static_cast<void>(descriptor.Release());
}

std::string TiffHandle::LastError() const {
  return m_Error.empty() ? "the TIFF library gives no reason" : m_Error;
}

int TiffHandle::TakeError(TIFF*, void* self, const char*, const char* format, va_list list) {
  char text[512];
  std::vsnprintf(text, sizeof text, format, list);
  static_cast<TiffHandle*>(self)->m_Error = text;
  return 1;
}

int TiffHandle::TakeWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

}  // namespace rastrel::odalis
