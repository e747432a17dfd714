#include "server/queue/shown_text.h"

#include <algorithm>
#include <string_view>

namespace rastrel::server {
namespace {

constexpr std::string_view Delivered = "delivered /";

std::string NameIn(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// The end of the path that begins at `begin` and goes on to `from` at least.
std::size_t EndOfPath(const std::string& text, std::size_t begin, std::size_t from) {
  const char before = begin > 0 ? text[begin - 1] : ' ';
  if (before == '\'' || before == '"') {
    const std::size_t end = text.find(before, from);
    if (end != text.npos) return end;
  }
  return std::min(text.find_first_of(" \t\n'\":;,()[]", from), text.size());
}

bool MayBeginPath(const std::string& text, std::size_t at) {
  return text[at] == '/' &&
         (at == 0 || std::string_view(" \t\n'\"([=").find(text[at - 1]) != std::string_view::npos);
}

}  // namespace

std::string WithTitle(const std::string& text, const std::string& directory,
                      const std::string& title) {
  const std::string begin = directory + "/";
  std::string shown;
  std::size_t from = 0;
  for (std::size_t at = 0; (at = text.find(begin, from)) != text.npos;) {
    const std::size_t end = EndOfPath(text, at, at + begin.size());
    const std::string below = text.substr(at + begin.size(), end - at - begin.size());
    shown += text.substr(from, at - from);
    shown += below.find('/') == below.npos ? title : NameIn(below);
    from = end;
  }
  return shown + text.substr(from);
}

std::string WithoutFolders(const std::string& text) {
  if (text.starts_with(Delivered))
    return std::string(Delivered.substr(0, Delivered.size() - 1)) + NameIn(text);
  std::string shown;
  for (std::size_t at = 0; at < text.size();) {
    if (!MayBeginPath(text, at)) {
      shown += text[at++];
      continue;
    }
    const std::size_t end = EndOfPath(text, at, at);
    const std::string path = text.substr(at, end - at);
    // One slash alone begins names of PostScript, too.
    shown += path.find('/', 1) == path.npos ? path : NameIn(path);
    at = end;
  }
  return shown;
}

}  // namespace rastrel::server
