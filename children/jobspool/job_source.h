#pragma once

#include <array>
#include <optional>
#include <string>

#include "children/jobspool/job_header_reader.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::jobspool {

/// A box in points, y upward.
struct PointBox {
  double left = 0;
  double bottom = 0;
  double right = 0;
  double top = 0;

  [[nodiscard]] double Width() const { return right - left; }
  [[nodiscard]] double Height() const { return top - bottom; }
  bool operator==(const PointBox&) const = default;
};

/// A file that was handed to the queue program.
struct JobSource {
  interpreter::JobFile job;          ///< without the header
  JobHeader header;                  ///< of the file itself, or of the ".jhdr" file beside a PDF
  std::string title;                 ///< of the PostScript's comments, or the file's name; UTF-8
  std::optional<PointBox> declared;  ///< of its bounding box comment, if it holds anything
};

/// Opens the file at that native path and looks for its header and its job. Fails as
/// interpreter::OpenJob: it can't be read, is no regular file, or holds neither PostScript nor PDF;
/// and if the header beside a PDF is there and can't be read.
[[nodiscard]] Expected<JobSource> OpenJobSource(const std::string& path);

/// The box that a document's comments declare. `head` is its beginning, `tail` its end; they may
/// overlap. The first "%%BoundingBox:" line of the head counts; if that says "(atend)", or the head
/// has none, the last one of the tail. Nothing if there is none or it is empty.
[[nodiscard]] std::optional<PointBox> FindDeclaredBox(std::string_view head, std::string_view tail);

/// The file's path with its last extension replaced, or with this one added: FILE.ps, ".cfm".
[[nodiscard]] std::string Companion(const std::string& path, const std::string& suffix);

}  // namespace rastrel::jobspool
