// Texts of any bytes that the printer on the network takes: its record, names of jobs and devices,
// print modes, the options of a job as the queue keeps them, and the head of a document.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "server/printer/document_format.h"
#include "server/printer/job_options.h"
#include "server/printer/print_modes.h"
#include "server/printer/printer_record.h"
#include "server/queue/job_queue_parts.h"

using namespace rastrel::server;

namespace {

void Expect(bool condition) {
  if (!condition) std::abort();
}

bool IsPlain(char one) {
  return (one >= 'a' && one <= 'z') || (one >= 'A' && one <= 'Z') || (one >= '0' && one <= '9') ||
         one == '-' || one == '_';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  // A digit of a line changes, and nothing else.
  const std::string record = RecordWithWaitingJobs(text);
  Expect(record.size() == text.size());

  const std::string name = CleanName(text, "usual");
  Expect(!name.empty() && name.size() <= 255 && CleanName(name, "usual") == name);
  Expect(std::ranges::none_of(
      name, [](char one) { return static_cast<unsigned char>(one) < 0x20 || one == 0x7F; }));
  const std::string printer = PrinterNameOf(text);
  Expect(!printer.empty() && printer.size() <= 60 && std::ranges::all_of(printer, IsPlain));

  const std::string keyword = KeywordOfMode(text);
  Expect(!keyword.empty() && keyword.size() <= 64 && std::ranges::all_of(keyword, IsPlain));
  const OfferedMode mode = ModeOfText("mode.ps", text);
  Expect(mode.horizontal >= 0 && mode.vertical >= 0);

  SenderWishes wishes;
  wishes.mode = mode.keyword;
  wishes.copies = static_cast<int>(size);
  if (size >= 8) wishes.pages = {{bytes[0] - 1, bytes[1]}, {bytes[2], bytes[3]}};
  const auto options = OptionsOf(wishes, {mode});
  Expect(options.at("mode") == "mode.ps");

  const JobOptions kept = OptionsOfText(std::string(text));
  Expect(OptionsOfText(TextOfOptions(kept)) == kept);

  const bool isKnown = FormatOfDocument(text) != DocumentFormat::Unknown;
  Expect(isKnown == !std::string_view(ExtensionOfDocument(text)).empty());
  return 0;
}
