#pragma once

#include <functional>
#include <string>
#include <string_view>

/// Pictures on terminals that can show them.
namespace rastrel::cli {

/// How a terminal takes a PNG file: the graphics protocol of kitty, or the inline images of iTerm2.
enum class PictureProtocol { None, Kitty, Iterm2 };

/// Returns a variable of the environment; empty if it is not set.
using VariableReader = std::function<std::string(const char*)>;

/// The protocol of the terminal, by TERM, TERM_PROGRAM and the like. RASTREL_PICTURES, "kitty",
/// "iterm2" or "none", overrides them. Inside of tmux and screen there are no pictures, since
/// these would let the file through as text.
[[nodiscard]] PictureProtocol ProtocolOf(const VariableReader& variable);

/// The control sequence that shows the PNG file `columns` characters wide, with a line feed at its
/// end. REQUIRES: a protocol other than None.
[[nodiscard]] std::string PictureSequence(PictureProtocol protocol, std::string_view png,
                                          unsigned columns);

/// Characters that the picture shall take in a row: a tenth of its pixels, but no more than the
/// terminal's. 0 if that is no PNG file. A terminal of 0 columns is one of 80.
[[nodiscard]] unsigned PictureColumns(std::string_view png, unsigned terminalColumns);

/// Maximum size of a shown file in bytes; terminals keep their pictures in memory.
inline constexpr unsigned long PictureLimit = 8UL << 20;

/// Whether standard output is a terminal that shows pictures.
[[nodiscard]] bool ShowsPictures();

/// Shows a PNG file on standard output. False, and nothing is written, if that is no terminal which
/// shows pictures, or the file is none or too large: then its path is to be printed instead.
[[nodiscard]] bool ShowPicture(const std::wstring& path);

}  // namespace rastrel::cli
