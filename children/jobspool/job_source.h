#pragma once

#include <string>

#include "children/jobspool/job_header_reader.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::jobspool {

using PointBox = interpreter::PageArea;

/// A file that was handed to the queue program.
struct JobSource {
  interpreter::JobFile job;  ///< without the header
  JobHeader header;          ///< of the file itself, or of the ".jhdr" file beside a PDF
  std::string title;         ///< of the PostScript's comments, or the file's name; UTF-8
};

/// Opens the file at that native path and looks for its header and its job. Fails as
/// interpreter::OpenJob: it can't be read, is no regular file, or holds neither PostScript nor PDF;
/// and if the header beside a PDF is there and can't be read.
[[nodiscard]] Expected<JobSource> OpenJobSource(const std::string& path);

/// The file's path with its last extension replaced, or with this one added: FILE.ps, ".cfm".
[[nodiscard]] std::string Companion(const std::string& path, const std::string& suffix);

}  // namespace rastrel::jobspool
