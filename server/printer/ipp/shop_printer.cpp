#include "server/printer/ipp/shop_printer.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "server/printer/byte_file.h"
#include "server/printer/document_format.h"
#include "server/printer/job_options.h"
#include "server/printer/picture_file.h"

namespace rastrel::server {
namespace {

// The same for a spooled file at each look, also after a restart, and another for each other file:
// numbers of jobs alone begin again if the printer's record was lost.
Expected<std::string> KeyOf(const ReceivedDocument& document) {
  struct stat state {};
  if (::stat(document.path.c_str(), &state) != 0) return Failure{"stat", document.path, errno};
  return "printer " + std::to_string(document.number) + " " + std::to_string(state.st_ino) + " " +
         std::to_string(state.st_mtim.tv_sec) + "." + std::to_string(state.st_mtim.tv_nsec);
}

JobRequest RequestOf(const ReceivedDocument& document) {
  JobRequest request;
  request.path = document.path;
  request.title = CleanName(document.title, "untitled");
  request.owner = CleanName(document.owner, "anonymous");
  request.source = "network printer";
  request.device = document.device;
  request.options = document.options;
  return request;
}

}  // namespace

ShopPrinter::ShopPrinter(JobQueue& queue, std::string spool, std::int64_t jobLimit)
    : m_Queue(queue), m_Spool(std::move(spool)), m_JobLimit(jobLimit) {}

bool ShopPrinter::IsTooLarge(const ByteFile& file) const {
  return m_JobLimit != 0 && file.Size() > static_cast<std::uint64_t>(m_JobLimit);
}

Failure ShopPrinter::TooLarge() const {
  return FailureOf("the document is larger than " + std::to_string(m_JobLimit) + " bytes",
                   FailureCode::BadInput);
}

Expected<JobId> ShopPrinter::Submit(const ReceivedDocument& document) {
  const std::lock_guard lock(m_Mutex);
  return SubmitOnce(document);
}

Expected<JobId> ShopPrinter::SubmitOnce(const ReceivedDocument& document) {
  const auto file = ByteFile::Open(document.path);
  if (!file) return file.Error();
  if (IsTooLarge(*file)) return TooLarge();
  const auto head = file->Read(
      0, static_cast<std::size_t>(std::min<std::uint64_t>(DocumentHeadSize, file->Size())));
  if (!head) return head.Error();
  const DocumentFormat format = FormatOfDocument(*head);
  if (format == DocumentFormat::Unknown)
    return FailureOf("the document is no PostScript, PDF, JPEG or PNG", FailureCode::BadInput);
  JobRequest request = RequestOf(document);
  const auto key = KeyOf(document);
  if (!key) return key.Error();
  request.key = *key;
  const bool isJpeg = format == DocumentFormat::Jpeg;
  if (!isJpeg && format != DocumentFormat::Png) return m_Queue.Submit(request);
  const auto converted = Convert(document.path, isJpeg, document.number);
  if (!converted) return converted.Error();
  request.path = *converted;
  auto id = m_Queue.Submit(request);
  static_cast<void>(os::RemoveFile(os::FromNative(*converted)));
  return id;
}

Expected<std::string> ShopPrinter::Convert(const std::string& path, bool jpeg, int number) const {
  const std::string target = m_Spool + "/picture-" + std::to_string(number) + ".pdf";
  const auto done = jpeg ? PdfFromJpeg(path, target) : PdfFromPng(path, target);
  if (done) return target;
  static_cast<void>(os::RemoveFile(os::FromNative(target)));
  return done.Error();
}

Expected<JobId> ShopPrinter::SubmitOwn(const ReceivedDocument& document) {
  const auto file = ByteFile::Open(document.path);
  if (!file) return file.Error();
  auto id = IsTooLarge(*file) ? Expected<JobId>(TooLarge()) : m_Queue.Submit(RequestOf(document));
  static_cast<void>(os::RemoveFile(os::FromNative(document.path)));
  return id;
}

}  // namespace rastrel::server
