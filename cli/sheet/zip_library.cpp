#include "cli/sheet/zip_library.h"

#include <string>

#include "cli/exit_status.h"
#include "rastrel/platform/os/shared_library.h"

namespace rastrel::cli::sheet {
namespace {

[[noreturn]] void Missing(const std::string& why) {
  throw CommandError(
      ExitStatus::NotInstalled,
      "libzip, which reads packages of spreadsheets, can't be used: " + why + "; install libzip4");
}

template <typename Function>
void Bind(const os::SharedLibrary& library, Function*& function, const char* name) {
  if (!library.Bind(function, name)) Missing(std::string("it has no ") + name);
}

ZipLibrary Load() {
  const auto found = os::SharedLibrary::Open(RASTREL_LIBZIP);
  if (!found) Missing(Describe(found.Error()));
  const os::SharedLibrary& library = *found;
  ZipLibrary zip{};
  Bind(library, zip.open, "zip_open");
  Bind(library, zip.discard, "zip_discard");
  Bind(library, zip.errorInit, "zip_error_init_with_code");
  Bind(library, zip.errorText, "zip_error_strerror");
  Bind(library, zip.errorEnd, "zip_error_fini");
  Bind(library, zip.errorOf, "zip_get_error");
  Bind(library, zip.countEntries, "zip_get_num_entries");
  Bind(library, zip.statEntry, "zip_stat_index");
  Bind(library, zip.statInit, "zip_stat_init");
  Bind(library, zip.attributes, "zip_file_get_external_attributes");
  Bind(library, zip.openEntry, "zip_fopen_index");
  Bind(library, zip.readEntry, "zip_fread");
  Bind(library, zip.entryError, "zip_file_get_error");
  Bind(library, zip.closeEntry, "zip_fclose");
  return zip;
}

}  // namespace

const ZipLibrary& ZipLibrary::Instance() {
  static const ZipLibrary zip = Load();
  return zip;
}

}  // namespace rastrel::cli::sheet
