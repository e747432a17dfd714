#include "spreadsheet/zip_library.h"

#include <string>

#include "rastrel/platform/os/shared_library.h"

namespace rastrel::spreadsheet {
namespace {

Failure Missing(const std::string& why) {
  return FailureOf("libzip, which reads packages of spreadsheets, can't be used: " + why +
                   "; install libzip4");
}

// Binds functions, and keeps the name of the first one that the library lacks.
class Binder {
 public:
  explicit Binder(const os::SharedLibrary& library) : m_Library(library) {}

  template <typename Function>
  void Bind(Function*& function, const char* name) {
    if (!m_Library.Bind(function, name) && m_Lacking.empty()) m_Lacking = name;
  }
  [[nodiscard]] const std::string& Lacking() const { return m_Lacking; }

 private:
  const os::SharedLibrary& m_Library;
  std::string m_Lacking;
};

Expected<ZipLibrary> Load() {
  const auto found = os::SharedLibrary::Open(RASTREL_LIBZIP);
  if (!found) return Missing(Describe(found.Error()));
  Binder binder(*found);
  ZipLibrary zip{};
  binder.Bind(zip.open, "zip_open");
  binder.Bind(zip.discard, "zip_discard");
  binder.Bind(zip.errorInit, "zip_error_init_with_code");
  binder.Bind(zip.errorText, "zip_error_strerror");
  binder.Bind(zip.errorEnd, "zip_error_fini");
  binder.Bind(zip.errorOf, "zip_get_error");
  binder.Bind(zip.countEntries, "zip_get_num_entries");
  binder.Bind(zip.statEntry, "zip_stat_index");
  binder.Bind(zip.statInit, "zip_stat_init");
  binder.Bind(zip.attributes, "zip_file_get_external_attributes");
  binder.Bind(zip.openEntry, "zip_fopen_index");
  binder.Bind(zip.readEntry, "zip_fread");
  binder.Bind(zip.entryError, "zip_file_get_error");
  binder.Bind(zip.closeEntry, "zip_fclose");
  if (!binder.Lacking().empty()) return Missing("it has no " + binder.Lacking());
  return zip;
}

}  // namespace

const Expected<ZipLibrary>& ZipLibrary::Instance() {
  static const Expected<ZipLibrary> zip = Load();
  return zip;
}

}  // namespace rastrel::spreadsheet
