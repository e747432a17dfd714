// Plotter files of any bytes, as paths that a document takes.

#include "fuzz/drawing_sink.h"
#include "host/drawing/plotter_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rastrel;
  fuzz::ReadDrawing(data, size, [](std::string_view bytes, drawing::PathSink& sink) {
    return drawing::ReadPlotterFile(bytes, sink);
  });
  return 0;
}
