#include "cli/cutting/drawing_input.h"

#include <filesystem>
#include <utility>

#include "cutting/dxf/dxf_reader.h"
#include "cutting/svg/svg_reader.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

std::string EndingOf(const std::string& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  for (char& letter : ending)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return ending;
}

std::string SentenceOf(const std::string& path, const cutting::Finding& finding) {
  std::string sentence = path + ":" + std::to_string(finding.line) + ": " + finding.text;
  if (finding.times > 1) sentence += " (" + std::to_string(finding.times) + " times)";
  return sentence;
}

}  // namespace

bool IsDrawingName(const std::string& path) {
  const std::string ending = EndingOf(path);
  return ending == ".svg" || ending == ".dxf";
}

Expected<cutting::CutJob> JobOfDrawing(const CutRun& run) {
  const std::string& path = run.invocation.operand;
  const auto text = os::ReadWholeFile(os::FromNative(path), cutting::MaximumDrawingBytes);
  if (!text) {
    Failure failure = FailureAt(path, text.Error());
    failure.code = FailureCode::BadInput;
    return failure;
  }
  auto drawing =
      EndingOf(path) == ".svg" ? cutting::ReadSvg(*text, path) : cutting::ReadDxf(*text, path);
  if (!drawing) return drawing.Error();
  for (const cutting::Finding& finding : drawing->findings) run.Warn(SentenceOf(path, finding));
  return std::move(drawing->job);
}

}  // namespace rastrel::cli
