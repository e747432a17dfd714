// The look at a job's first and last bytes, which decides which part of it an interpreter is given.
// The input is the whole file.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "interpreter/declared_box.h"
#include "interpreter/job_kind.h"

namespace {

using namespace rastrel::interpreter;

void Check(bool holds) {
  if (!holds) std::abort();
}

// The part lies within the file, and the same look at the part alone goes no deeper than a few
// wrappers.
void CheckLayout(std::string_view file, unsigned depth) {
  const JobLayout layout = FindJobLayout(file.substr(0, JobHeadSize), file.size());
  if (layout.kind == JobKind::Unknown) return;
  Check(layout.offset <= file.size() && layout.length <= file.size() - layout.offset);
  const std::string_view part = file.substr(layout.offset, layout.length);
  Check(WrapperLength(part) <= part.size());
  if (layout.section && depth < 4) CheckLayout(part, depth + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view file(reinterpret_cast<const char*>(bytes), size);
  CheckLayout(file, 0);
  const std::string_view head = file.substr(0, size / 2);
  for (const std::string_view tail : {file, file.substr(size / 2)}) {
    const auto box = FindDeclaredBox(head, tail);
    if (!box) continue;
    Check(std::isfinite(box->left) && std::isfinite(box->bottom));
    Check(box->Width() > 0 && box->Height() > 0);
  }
  const std::string title = FindTitle(file.substr(0, JobHeadSize));
  Check(title.size() <= size && title.find_first_of("\r\n") == title.npos);
  return 0;
}
