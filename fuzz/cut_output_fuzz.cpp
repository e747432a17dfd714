// A cut job with a table of texts, written in each form.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "cutting/job/job_file.h"
#include "cutting/output/cut_file.h"

// The input is a line of texts for G-code and the name of a separation, and a job.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rastrel::cutting;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t end = input.find('\n');
  if (end == std::string_view::npos) return 0;
  const auto job = ReadJobFile(input.substr(end + 1), "fuzz");
  if (!job) return 0;
  CutFileOptions options;
  options.gcode.line = options.gcode.settings = input.substr(0, end);
  options.pdf.spotOf[0] = input.substr(0, end);
  options.placement = {.origin = job->marks.empty() ? Origin::Center : Origin::FirstMark,
                       .mirrorX = size % 2 == 0,
                       .mirrorY = size % 3 == 0,
                       .swapAxes = size % 5 == 0};
  options.hpgl.bytesOfInstruction = 20 + size % 64;
  for (const CutForm form :
       {CutForm::Hpgl, CutForm::Dxf, CutForm::Svg, CutForm::Pdf, CutForm::Gcode})
    static_cast<void>(WriteCutFile(*job, form, options));
  options.dxf = DxfVersion::R12;
  static_cast<void>(WriteCutFile(*job, CutForm::Dxf, options));
  return 0;
}
