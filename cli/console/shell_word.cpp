#include "cli/console/shell_word.h"

namespace rastrel::cli {

std::string ShellWord(std::string_view text) {
  std::string word = "'";
  for (const char character : text) {
    // Nothing is special between single quotes, so that a quote needs them closed for itself.
    if (character == '\'')
      word += "'\\''";
    else
      word += character;
  }
  return word + "'";
}

}  // namespace rastrel::cli
