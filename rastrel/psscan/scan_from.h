#pragma once

#include <exception>
#include <string_view>
#include <utility>

#include "rastrel/psscan/line_reader.h"
#include "rastrel/psscan/postscript_start.h"

namespace rastrel::psscan {

/// Opens the file, finds where its PostScript begins, and runs `scan(LineReader&, const Start&)`
/// from there. Returns the scan's result. False if there is no such file or start, or if the scan
/// threw. A scan whose reader failed returns false by itself.
template <typename Scan>
[[nodiscard]] bool ScanFrom(std::wstring_view path, const Scan& scan) noexcept {
  try {
    auto file = os::RandomAccessFile::Open(path);
    if (!file) return false;
    LineReader in(std::move(*file));
    Start start;
    return FindStart(in, start) && scan(in, start);
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace rastrel::psscan
