#include "cli/sheet/zip_library.h"

#include <dlfcn.h>

#include <string>

#include "cli/exit_status.h"

namespace rastrel::cli::sheet {
namespace {

[[noreturn]] void Missing() {
  const char* why = ::dlerror();
  throw CommandError(ExitStatus::NotInstalled,
                     std::string("libzip, which reads packages of spreadsheets, can't be used: ") +
                         (why != nullptr ? why : "unknown reason") + "; install libzip4");
}

template <typename Function>
void Bind(void* library, Function& function, const char* name) {
  void* address = ::dlsym(library, name);
  if (address == nullptr) Missing();
  function = reinterpret_cast<Function>(address);
}

ZipLibrary Load() {
  void* library = ::dlopen(RASTREL_LIBZIP, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) Missing();
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
