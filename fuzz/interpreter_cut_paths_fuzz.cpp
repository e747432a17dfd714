// The reports of cut paths against any text, and the file that is made of them. A line of the input
// is a report: "C..." sets a color, "B" and "E" begin and end a page, any other is a piece of
// paths.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "interpreter/cut_paths.h"

namespace {

using namespace rastrel;

void Check(bool holds) {
  if (!holds) std::abort();
}

std::string_view NextLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end == text.npos ? text.size() : end + 1);
  return line;
}

// The number after a key.
std::size_t Count(std::string_view line, std::string_view key) {
  Check(line.starts_with(key));
  return std::strtoull(std::string(line.substr(key.size())).c_str(), nullptr, 10);
}

void CheckSegments(std::string_view& text, std::string_view end) {
  for (std::string_view line = NextLine(text); line != end; line = NextLine(text)) {
    Check(!line.empty() && std::string_view("mlch").find(line[0]) != std::string_view::npos);
  }
}

// The file has as many blocks as it says, and names no clip that it does not hold.
void CheckFile(std::string_view text) {
  Check(NextLine(text) == "Rastrel cut paths 1");
  Check(NextLine(text) == "unit: point");
  Check(NextLine(text).starts_with("width: "));
  Check(NextLine(text).starts_with("height: "));
  const std::size_t clips = Count(NextLine(text), "clips: ");
  for (std::size_t i = 0; i < clips; ++i) {
    Check(NextLine(text) == "clip");
    CheckSegments(text, "end-clip");
  }
  const std::size_t paths = Count(NextLine(text), "paths: ");
  for (std::size_t i = 0; i < paths; ++i) {
    Check(NextLine(text) == "path");
    Check(NextLine(text).starts_with("kind: "));
    Check(NextLine(text).starts_with("colour: "));
    Check(NextLine(text).starts_with("line-width: "));
    const std::string_view clip = NextLine(text);
    if (clip != "clip: inside" && clip != "clip: outside") {
      const std::size_t number = Count(clip, "clip: crosses ");
      Check(number >= 1 && number <= clips);
    }
    Check(NextLine(text).starts_with("closed: "));
    CheckSegments(text, "end-path");
  }
  Check(NextLine(text) == "end" && text.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(bytes), size);
  interpreter::CutPaths paths;
  pages::PageInfo info;
  info.width = 200;
  info.height = 100;
  info.xResolution = 144;
  info.yResolution = 72;
  unsigned ended = 0;
  while (!text.empty()) {
    const std::string_view line = NextLine(text);
    if (line.starts_with('C')) {
      Check(paths.Add({"CUTTER", std::string(line.substr(1))}));
    } else if (line == "B") {
      paths.BeginPage();
    } else if (line == "E") {
      paths.EndPage();
      ++ended;
    } else {
      Check(paths.Add({"CUT", std::string(line)}));
    }
  }
  for (info.page = 1; info.page <= ended; ++info.page) CheckFile(paths.Take(info));
  return 0;
}
