#include "rastrel/platform/host/base_dir.h"

#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"

namespace os = rastrel::os;

CBaseDir::CBaseDir(path_type type) : CBaseDir(type, nullptr, false) {}

CBaseDir::CBaseDir(path_type type, const wchar_t* subdirectory, bool create)
    : m_Wide(rastrel::host::GetHost().GetDirectories().BaseDirectory(type)), m_Type(type) {
  if (subdirectory != nullptr && *subdirectory != L'\0') {
    if (!os::EndsInSeparator(m_Wide)) m_Wide += L'/';
    m_Wide += subdirectory;
  }
  // A constructor has no failing result: the first use of the directory shows it.
  if (create) static_cast<void>(os::MakePath(m_Wide, os::Access::Private));
  m_Narrow = os::Utf8FromWide(m_Wide);
}
