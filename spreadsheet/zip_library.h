#pragma once

#include <zip.h>

#include "rastrel/platform/os/expected.h"

namespace rastrel::spreadsheet {

/// The functions of libzip that packages are read with, bound when the first package is opened: to
/// find that library and its dependencies takes longer than the rest of a short command.
struct ZipLibrary {
  decltype(&zip_open) open;
  decltype(&zip_discard) discard;
  decltype(&zip_error_init_with_code) errorInit;
  decltype(&zip_error_strerror) errorText;
  decltype(&zip_error_fini) errorEnd;
  decltype(&zip_get_error) errorOf;
  decltype(&zip_get_num_entries) countEntries;
  decltype(&zip_stat_index) statEntry;
  decltype(&zip_stat_init) statInit;
  decltype(&zip_file_get_external_attributes) attributes;
  decltype(&zip_fopen_index) openEntry;
  decltype(&zip_fread) readEntry;
  decltype(&zip_file_get_error) entryError;
  decltype(&zip_fclose) closeEntry;

  /// Binds them at the first call. Fails if the library is not there or lacks one of them, and then
  /// at each call. May be called on any thread.
  [[nodiscard]] static const Expected<ZipLibrary>& Instance();
};

}  // namespace rastrel::spreadsheet
