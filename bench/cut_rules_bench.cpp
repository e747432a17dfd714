// Strokes that are taken out of the picture since a rule wants their paint, against those of the
// one cut color that a prefix sets. Both are runs of the interpreter in this process, on the same
// job.
#include <filesystem>
#include <string>
#include <utility>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/require.h"
#include "interpreter/guardian.h"
#include "interpreter/interpreter.h"

namespace {

namespace bench = rastrel::bench;
namespace interpreter = rastrel::interpreter;

constexpr int Strokes = 200000;
constexpr const char* Device =
    "3Color 144 dup SetXYResolution (Frameless) DeviceSelect\nInitRIP\n\x04";

class Silence final : public interpreter::RunListener {
 public:
  void StateReached(interpreter::RunState) override {}
  void Progressed(unsigned) override {}
  void PageMade(unsigned) override {}
  void Warned(const std::string&) override {}
  void Noted(const std::string&) override {}
  void Printed(const std::string&) override {}
};

std::string StrokePage() {
  std::string job =
      "%!PS\n<< /PageSize [595 842] >> setpagedevice\n1 0 0 setrgbcolor 0.5 setlinewidth\n";
  for (int i = 0; i < Strokes; ++i) {
    job += std::to_string(i % 590) + " " + std::to_string(i % 830) + " moveto 5 5 rlineto stroke\n";
  }
  return job + "showpage\n";
}

template <typename T>
T Required(rastrel::Expected<T> result) {
  if (!result) bench::Fail(rastrel::Describe(result.Error()));
  return *std::move(result);
}

struct Files {
  bench::DataRoot root;
  std::string job = root.File("strokes.ps", StrokePage());
  std::string none = root.File("none.psp", std::string("serverdict begin 0 exitserver\n") + Device);
  std::string red = root.File(
      "red.psp", std::string("serverdict begin 0 exitserver\nmark 1.000 0.000 0.000 [1 0 0 1 0 0] "
                             "/DeviceRGB $setcutter\n") +
                     Device);
};

// With questions if `wants` is given. The line width is asked for or not.
void Print(const Files& files, const interpreter::WantsCut& wants, bool asksLineWidth) {
  auto guardian = Required(interpreter::Guardian::Start(interpreter::HeldStreams::Error));
  const auto directory =
      Required(interpreter::RunDirectory::MakeIn(files.root.Path("."), guardian));
  interpreter::RunRequest request;
  request.ripDirectory = RASTREL_SOURCE_DIR "/share/rip";
  request.job = Required(interpreter::OpenJob(files.job));
  auto prefix = Required(interpreter::OpenPrefix(wants ? files.none : files.red));
  request.prefix = std::move(prefix.file);
  request.setsCutColor = !wants;
  request.wantsCut = wants;
  request.asksLineWidth = asksLineWidth;
  Silence silence;
  static_cast<void>(
      Required(interpreter::PrintPages(std::move(request), directory, silence, guardian)));
}

bool WantsRed(const interpreter::AskedPaint& paint) { return paint.color == "rgb 1.0 0.0 0.0"; }

}  // namespace

int main() {
  const Files files;
  const auto nothing = [] {};
  const auto peer = [&] { Print(files, {}, false); };
  bench::Compare(
      {.name = "RIP, 200,000 strokes, all taken by a rule",
       .peerName = "the one cut colour",
       .rounds = 9,
       .limit = 1.2},
      nothing, [&] { Print(files, WantsRed, false); }, peer);
  bench::Compare(
      {.name = "RIP, 200,000 strokes, all taken by a rule with a line width",
       .peerName = "the one cut colour",
       .rounds = 9,
       .limit = 1.4},
      nothing, [&] { Print(files, WantsRed, true); }, peer);
}
