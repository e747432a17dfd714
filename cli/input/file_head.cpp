#include "cli/input/file_head.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "rastrel/platform/os/dos_eps.h"

namespace rastrel::cli {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view Whitespace = " \t\r\n";

struct Signature {
  std::string_view bytes;
  std::string_view kind;
};

constexpr std::array Signatures{
    Signature{"%PDF-"sv, "a PDF file"sv},
    Signature{"%!"sv, "PostScript"sv},
    Signature{os::DosEpsSignature, "an EPS file"sv},
    Signature{"PK\x03\x04"sv, "a zip file, as spreadsheets are"sv},
    Signature{"\xD0\xCF\x11\xE0"sv, "an office document of the old binary form"sv},
    Signature{"{\\rtf"sv, "a text document (RTF)"sv},
    Signature{"\x89PNG"sv, "a picture (PNG)"sv},
    Signature{"\xFF\xD8\xFF"sv, "a picture (JPEG)"sv},
    Signature{"GIF8"sv, "a picture (GIF)"sv},
    Signature{"\x1F\x8B"sv, "a compressed file (gzip)"sv},
};

// Where two bytes are a character, no more is looked at: the marks, and markup without one.
bool IsInUtf16(std::string_view head) {
  return std::ranges::any_of(std::array{"\xFF\xFE"sv, "\xFE\xFF"sv, "<\0"sv, "\0<"sv},
                             [head](std::string_view sign) { return head.starts_with(sign); });
}

std::string WhyNoFile(const std::string& path) {
  std::error_code error;
  const auto state = std::filesystem::status(path, error);
  if (state.type() == std::filesystem::file_type::not_found) return "there is no such file";
  if (error) return DescribeError(error.value());
  if (std::filesystem::is_directory(state)) return "it is a directory";
  return std::filesystem::is_regular_file(state) ? "" : "it is no regular file";
}

}  // namespace

Expected<std::string> ReadFileHead(const std::string& path, std::size_t size) {
  if (std::string why = WhyNoFile(path); !why.empty()) return FailureOf(std::move(why));
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string head;
  if (file) {
    head.resize(size);
    file.read(head.data(), static_cast<std::streamsize>(size));
    head.resize(static_cast<std::size_t>(file.gcount()));
  }
  if (!file.is_open() || file.bad()) return FailureOf(DescribeError(errno));
  if (head.empty()) return FailureOf("it is empty");
  // Where more may follow, the next reader will see.
  const bool isWhole = head.size() < size;
  if (isWhole && head.find_first_not_of(Whitespace) == head.npos)
    return FailureOf("it holds nothing but blanks");
  return head;
}

bool MayBeXml(std::string_view head) {
  if (IsInUtf16(head)) return true;
  if (head.starts_with("\xEF\xBB\xBF")) head.remove_prefix(3);
  const std::size_t begin = head.find_first_not_of(Whitespace);
  return begin == head.npos || head[begin] == '<';
}

std::string_view KnownKind(std::string_view head) {
  const auto found = std::ranges::find_if(
      Signatures, [head](const Signature& one) { return head.starts_with(one.bytes); });
  return found == Signatures.end() ? std::string_view() : found->kind;
}

}  // namespace rastrel::cli
