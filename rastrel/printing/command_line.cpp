#include "rastrel/printing/command_line.h"

namespace rastrel::printing {

std::vector<std::wstring> ArgumentsOfCommandLine(std::wstring_view line) {
  std::vector<std::wstring> arguments;
  bool inside = false;  // an argument has begun; a pair of quotes alone is an empty one
  bool quoted = false;
  for (const wchar_t character : line) {
    if (!quoted && (character == L' ' || character == L'\t')) {
      inside = false;
      continue;
    }
    if (!inside) arguments.emplace_back();
    inside = true;
    if (character == L'"') {
      quoted = !quoted;
    } else {
      arguments.back() += character;
    }
  }
  return arguments;
}

}  // namespace rastrel::printing
