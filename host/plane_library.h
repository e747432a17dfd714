#pragma once

#include <functional>
#include <list>
#include <string>
#include <utility>

#include "rastrel/platform/host/plane_reader.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/shared_library.h"

namespace rastrel::document {

/// The embedded host's road to the reader of separated planes: a library that is found and loaded
/// by its name. The search path is the directory of the running program and then $PATH, of which
/// entries that are no full paths count for nothing. A bare name "NAME.dll" that is not on it is
/// the system's "libNAME.so", which the loader finds: libcfplane.so, installed beside the other
/// libraries. A loaded library stays loaded until the process ends, since it may keep data of
/// threads. Thread: the one that made it.
class PlaneLibrary : public host::PlaneReader {
 public:
  /// `report` gets the failure of each library that can't be loaded.
  explicit PlaneLibrary(std::function<void(const Failure&)> report) : m_Report(std::move(report)) {}

  [[nodiscard]] std::wstring SearchPath(const wchar_t* fileName) override;
  /// A library that others may change or replace (os::CheckTrusted) is not loaded.
  [[nodiscard]] host::LibraryHandle LoadLibrary(const wchar_t* path) override;
  [[nodiscard]] CreateFunction GetCreateFunction(host::LibraryHandle library,
                                                 const char* name) override;
  [[nodiscard]] DestroyFunction GetDestroyFunction(host::LibraryHandle library,
                                                   const char* name) override;
  void FreeLibrary(host::LibraryHandle library) override;

 private:
  std::function<void(const Failure&)> m_Report;
  std::list<os::SharedLibrary> m_Libraries;  // a handle is the address of one
};

}  // namespace rastrel::document
