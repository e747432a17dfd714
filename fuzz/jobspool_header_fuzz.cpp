// The reader of the job header against any text, and the prefix of the run that is made of it,
// which is PostScript, never holds a byte of the header but in hexadecimal digits.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "children/jobspool/cut_archive.h"
#include "children/jobspool/job_header_reader.h"
#include "children/jobspool/job_source.h"
#include "children/jobspool/prefix_text.h"
#include "interpreter/declared_box.h"

namespace {

using namespace rastrel::jobspool;

void Require(bool condition) {
  if (!condition) std::abort();
}

void CheckValues(const JobHeader& header) {
  Require(header.cutLines.size() <= JobHeader::CutLineLimit);
  Require(std::isfinite(header.flatness) && header.flatness > 0);
  if (header.resolution) {
    Require(*header.resolution >= 1 && *header.resolution <= JobHeader::ResolutionLimit);
  }
  if (header.size) Require(header.size->width > 0 && header.size->height > 0);
  for (const CutLine& line : header.cutLines) {
    for (const double value : line.values) Require(value >= 0 && value <= 1);
    Require((line.kind == CutLine::Kind::Separation) != line.name.empty());
    Require(!ColorText(line).empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const JobHeader header = ReadJobHeader(text);
  Require(header.length <= size && header.length <= JobHeaderLimit);
  CheckValues(header);
  // The block alone is read as it is in front of a job.
  const JobHeader alone = ReadJobHeader(text.substr(0, header.length));
  Require(alone.length == header.length && alone.cutLines == header.cutLines &&
          alone.resolution == header.resolution);
  PictureTask task;
  task.area = rastrel::interpreter::FindDeclaredBox(text, text);
  task.size = header.size;
  task.resolution = header.resolution.value_or(72);
  task.cutLines = header.cutLines;
  for (const char character : PicturePrefix(task)) {
    Require((character >= ' ' && character <= '~') || character == '\n');
  }
  return 0;
}
