#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/spot_match.h"

namespace rastrel::cli {

enum class FileKind { PostScript, Eps, DosEps, Neither };
/// "PostScript", "EPS", "DOS EPS" or "neither".
[[nodiscard]] const char* KindWord(FileKind kind);

/// A part of a DOS EPS file, in bytes.
struct FileSection {
  std::uint32_t offset = 0;
  std::uint32_t length = 0;  ///< 0 if there is none
};

/// A spot color's name.
struct SpotName {
  std::string name;        ///< as the interface returns it; UTF-8
  std::string postScript;  ///< with its escapes read as PostScript reads them, in octal; UTF-8
  bool operator==(const SpotName&) const = default;
};

/// A spot color with the values that the file has for it.
struct InspectedSpot {
  SpotName name;
  CVKColor color;
};

/// The spot colors that the pages paint, as reported by the interpreter. Names as PostScript reads
/// them; UTF-8.
struct PaintedReport {
  std::vector<std::string> painted;
  std::vector<std::string> notPainted;   ///< declared, and painted by no page
  std::vector<std::string> notDeclared;  ///< painted, and not declared
};

/// The result of inspecting one file.
struct Inspection {
  std::string path;  ///< native, as given
  FileKind kind = FileKind::Neither;
  std::string reason;      ///< why it is of that kind
  long long start = 0;     ///< of the PostScript, in bytes
  long long length = 0;    ///< of the PostScript, in bytes
  FileSection postScript;  ///< these three of DOS EPS only
  FileSection metafile;
  FileSection tiff;
  std::string header;           ///< first line of the PostScript; UTF-8
  std::optional<CRect> bounds;  ///< points
  std::vector<SpotName> names;  ///< all that the document's comments declare, once each
  std::vector<InspectedSpot> spots;
  std::vector<SpotName> undefined;  ///< declared, and defined by no comment
  std::optional<PaintedReport> painted;
  std::string paintedError;  ///< why `painted` was asked for and is not there
};

/// Reads a file's comments. Fails if it can't be read.
[[nodiscard]] Expected<Inspection> InspectFile(const std::string& path);

/// The bytes of a PostScript string with its escapes resolved, as os::Utf8FromUtf8OrAnsi has it.
[[nodiscard]] std::string PostScriptText(std::string_view raw);

}  // namespace rastrel::cli
