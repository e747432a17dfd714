// The reader of a child's standard error against any bytes, in pieces as a pipe would deliver them.
// The first byte is the size of the pieces.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "rastrel/job/job_messaging.h"
#include "rastrel/platform/os/handle.h"
#include "rastrel/printing/stderr_parser.h"

namespace {

// A job that only checks that each report is in the vocabulary.
class Listener : public CJobMessaging {
 public:
  virtual ~Listener() = default;
  void Warning(const wchar_t* text, JT_ORIGINATOR /*originator*/) override {
    Check(text != nullptr);
  }
  void Error(const wchar_t* text, JT_ORIGINATOR /*originator*/) override { Check(text != nullptr); }
  void Error(JT_ERROR code, JT_ORIGINATOR /*originator*/) override { Check(code >= JTE_UNDEFINED); }
  void Info(JT_INFO code, JT_ORIGINATOR /*originator*/) override {
    const bool ofQueue = code == JTI_CLQ_SUCCESS || code == JTI_CLQ_FAILURE;
    Check(ofQueue || (code >= JTI_UNDEFINED && code <= JTI_VALID_RECOVERY));
  }
  void Progress(unsigned short /*percent*/, JT_ORIGINATOR originator) override {
    Check(originator == JTO_RIP);
  }
  void Log(const wchar_t* format, ...) override { Check(format != nullptr); }

 private:
  static void Check(bool fine) {
    if (!fine) std::abort();
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t piece = std::size_t{1} + bytes[0];
  HANDLE pipe = INVALID_HANDLE_VALUE;
  Listener listener;
  CStderrParser parser(&listener, &pipe, JTO_RIP);
  for (std::size_t at = 1; at < size; at += piece)
    parser.OnData(reinterpret_cast<const char*>(bytes) + at,
                  static_cast<unsigned>(std::min(piece, size - at)));
  return 0;
}
