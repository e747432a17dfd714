#include "interpreter/cut_answers.h"

#include <cerrno>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "interpreter/pdf_text.h"
#include "interpreter/segment_text.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"

namespace rastrel::interpreter {
namespace {

// The digits that the file of cut paths has, so that a width that is decided on now and one that
// is read there are the same.
double Rounded(double points) { return std::round(points * 10000) / 10000; }

// The bytes of hexadecimal digits as a text string of a PDF.
std::string LayerFrom(std::string_view digits) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2)
    if (const auto byte = os::ByteFromHex(digits[at], digits[at + 1]))
      bytes += static_cast<char>(*byte);
  return Utf8FromPdfText(bytes);
}

std::optional<AskedPaint> ReadQuestion(std::string_view question, double scale) {
  if (question.size() < 2) return {};
  AskedPaint paint;
  paint.kind = std::string(CutKindWord(question.front()));
  question.remove_prefix(2);
  const auto width = ReadNumber(NextWord(question));
  if (!width || question.empty()) return {};
  question.remove_prefix(1);
  const std::size_t end = question.find(' ');
  if (end == question.npos) return {};
  paint.layer = LayerFrom(question.substr(0, end));
  question.remove_prefix(end + 1);
  paint.lineWidth = Rounded(*width * scale);
  paint.color = std::string(question);
  return paint;
}

}  // namespace

CutAnswers::CutAnswers(WantsCut wants, os::FileDescriptor pipe)
    : m_Wants(std::move(wants)), m_Pipe(std::move(pipe)) {}

Expected<void> CutAnswers::Answer(const std::string& question, double scale, CutPaths& cuts) {
  const auto paint = ReadQuestion(question, scale);
  std::size_t answer = 0;
  if (paint && m_Wants(*paint)) {
    const auto number = cuts.NumberOf(paint->color, paint->layer);
    if (!number) return FailureOf("The job has too many colours that are cut");
    answer = *number + 1;
  }
  const auto written = os::WriteAll(m_Pipe.Get(), std::to_string(answer) + "\n");
  // An interpreter that has ended has a reason of its own.
  if (!written && written.Error().error != EPIPE) return FailureAt("an answer", written.Error());
  return {};
}

}  // namespace rastrel::interpreter
