#include <cups/cups.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/shown_text.h"
#include "server/delivery/way.h"

namespace rastrel::server {
namespace {

constexpr int ConnectMilliseconds = 30000;
constexpr int FindSeconds = 5;
constexpr int AskMilliseconds = 500;
constexpr std::size_t BlockBytes = 65536;

std::string FormatOf(const std::string& path, const std::string& wanted) {
  if (!wanted.empty()) return wanted;
  static constexpr std::array<std::pair<std::string_view, const char*>, 7> Endings{
      {{".pdf", "application/pdf"},
       {".ps", "application/postscript"},
       {".eps", "application/postscript"},
       {".tif", "image/tiff"},
       {".png", "image/png"},
       {".jpg", "image/jpeg"},
       {".pwg", "image/pwg-raster"}}};
  for (const auto& [ending, format] : Endings) {
    if (path.ends_with(ending)) return format;
  }
  return "application/octet-stream";
}

// For a search, which delivers nothing.
class Unwatched : public DeliveryProgress {
 public:
  Expected<void> OnSending(std::int64_t) override { return {}; }
  void OnSent(std::int64_t) override {}
  void OnMessage(const std::string&) override {}
};

/// One job at a queue, by a connection of its own.
class QueueJob {
 public:
  explicit QueueJob(const WayRequest& request) : m_Request(request) {}
  ~QueueJob() {
    if (m_Destination) ::cupsFreeDests(1, m_Destination);
    if (m_Http) ::httpClose(m_Http);
  }
  QueueJob(const QueueJob&) = delete;
  QueueJob& operator=(const QueueJob&) = delete;

  /// Looks for the queue, and sends nothing.
  Expected<void> Find() {
    const WayEnd end = Open(FindSeconds * 1000);
    return end.message.empty() ? Expected<void>() : FailureOf(end.message);
  }

  WayEnd Run() {
    WayEnd end = Open();
    if (!end.message.empty()) return end;
    if (auto sending = m_Request.progress.OnSending(m_Request.totalBytes); !sending) {
      return CanceledEnd(Describe(sending.Error()));
    }
    const std::string& title =
        m_Request.delivery.title.empty() ? m_Request.delivery.name : m_Request.delivery.title;
    m_Job = ::cupsCreateJob(m_Http, Queue(), title.c_str(), 0, nullptr);
    // Without a job nothing can come out: the documents are sent after it.
    if (m_Job <= 0) {
      return {.message = InQueue("took no job: " + LastMessage())};
    }
    if (const std::string why = SendAll(); !why.empty()) return CutOff(why);
    return WaitForEnd();
  }

 private:
  static std::string LastMessage() {
    const char* const text = ::cupsLastErrorString();
    return os::CleanLine(text ? text : "no reason is known");
  }
  const char* Queue() const { return m_Request.device.queue.c_str(); }
  std::string InQueue(const std::string& text) const {
    return "the queue '" + m_Request.device.queue + "' " + text;
  }

  /// Called when the server has been silent for the time limit of a call: gives the call up.
  static int GiveUp(http_t*, void*) { return 0; }

  WayEnd Open(int connectMilliseconds = ConnectMilliseconds) {
    const DeliveryDevice& device = m_Request.device;
    const char* const host = device.host.empty() ? ::cupsServer() : device.host.c_str();
    const int port = device.host.empty() ? ::ippPort() : device.port;
    // The library names a queue's address by the server of this thread, whatever the connection.
    if (!device.host.empty()) {
      ::cupsSetServer((device.host + ":" + std::to_string(device.port)).c_str());
    }
    m_Http = ::httpConnect2(host, port, nullptr, AF_UNSPEC, ::cupsEncryption(), 1,
                            connectMilliseconds, nullptr);
    if (!m_Http) return {.message = InQueue("can't be reached: " + LastMessage())};
    ::httpSetTimeout(m_Http, device.timeoutSeconds, GiveUp, nullptr);
    m_Destination = ::cupsGetNamedDest(m_Http, device.queue.c_str(), nullptr);
    if (!m_Destination) return {.message = InQueue("is not there: " + LastMessage())};
    const char* const uri =
        ::cupsGetOption("device-uri", m_Destination->num_options, m_Destination->options);
    if (uri && std::string_view(uri).starts_with("file:")) {
      return {.message = InQueue("leads to a file, of which the print system reports a job as "
                                 "complete that was never written"),
              .isFinal = true};
    }
    return {};
  }

  /// The reason why not all documents are there; empty if they are.
  std::string SendAll() {
    const auto& files = m_Request.delivery.files;
    for (std::size_t i = 0; i < files.size(); ++i) {
      std::string why = SendOne(files[i], i + 1 == files.size());
      if (!why.empty()) return why;
    }
    return files.empty() ? "there is no file" : "";
  }

  std::string SendOne(const std::string& path, bool isLast) {
    const os::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!file.IsOpen()) return Describe(Failure{"open", path, errno});
    const std::string name = path.substr(path.rfind('/') + 1);
    const std::string format = FormatOf(path, m_Request.device.format);
    if (::cupsStartDocument(m_Http, Queue(), m_Job, name.c_str(), format.c_str(), isLast ? 1 : 0) !=
        HTTP_STATUS_CONTINUE) {
      return InQueue("refused a document: " + LastMessage());
    }
    std::array<char, BlockBytes> block;
    for (;;) {
      if (IsReadable(m_Request.cancel)) return "canceled on its way";
      const ssize_t count = ::read(file.Get(), block.data(), block.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return Describe(Failure{"read", path, errno});
      if (count == 0) break;
      if (::cupsWriteRequestData(m_Http, block.data(), static_cast<std::size_t>(count)) !=
          HTTP_STATUS_CONTINUE) {
        return InQueue("took no more bytes: " + LastMessage());
      }
      m_Sent += count;
      m_Request.progress.OnSent(m_Sent);
    }
    if (::cupsFinishDocument(m_Http, Queue()) > IPP_STATUS_OK_EVENTS_COMPLETE) {
      return InQueue("refused a document: " + LastMessage());
    }
    return {};
  }

  /// Ends the job at the queue, so that it does not come out later as a surprise.
  WayEnd CutOff(const std::string& why) {
    // The connection may be in the middle of a document.
    ::httpClose(std::exchange(m_Http, nullptr));
    std::string rest = "; its job " + std::to_string(m_Job) + " there was canceled";
    if (!CancelJob()) rest = "; its job " + std::to_string(m_Job) + " is still there";
    return {.fate = DeliveryFate::Uncertain, .sentBytes = m_Sent, .message = why + rest};
  }

  bool CancelJob() const {
    const DeliveryDevice& device = m_Request.device;
    const char* const host = device.host.empty() ? ::cupsServer() : device.host.c_str();
    const int port = device.host.empty() ? ::ippPort() : device.port;
    http_t* const http = ::httpConnect2(host, port, nullptr, AF_UNSPEC, ::cupsEncryption(), 1,
                                        ConnectMilliseconds, nullptr);
    if (!http) return false;
    ::httpSetTimeout(http, device.timeoutSeconds, GiveUp, nullptr);
    const ipp_status_t status = ::cupsCancelJob2(http, device.queue.c_str(), m_Job, 0);
    ::httpClose(http);
    return status <= IPP_STATUS_OK_EVENTS_COMPLETE;
  }

  struct State {
    ipp_jstate_t state = IPP_JSTATE_PENDING;
    std::string text{};  ///< "processing, job-printing, The printer is not responding."
  };

  /// Asks for the job. The queue's list of jobs has no reasons and no message of the printer.
  Expected<State> Ask() const {
    ipp_t* const request = ::ippNewRequest(IPP_OP_GET_JOB_ATTRIBUTES);
    static constexpr std::array<const char*, 3> Wanted{"job-state", "job-state-reasons",
                                                       "job-printer-state-message"};
    const std::string uri = "ipp://localhost/jobs/" + std::to_string(m_Job);
    ::ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "job-uri", nullptr, uri.c_str());
    ::ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
                   ::cupsUser());
    ::ippAddStrings(request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
                    static_cast<int>(Wanted.size()), nullptr, Wanted.data());
    const std::unique_ptr<ipp_t, void (*)(ipp_t*)> answer(::cupsDoRequest(m_Http, request, "/"),
                                                          ::ippDelete);
    ipp_attribute_t* const state = ::ippFindAttribute(answer.get(), "job-state", IPP_TAG_ENUM);
    if (!state) return FailureOf(LastMessage());
    State result{.state = static_cast<ipp_jstate_t>(::ippGetInteger(state, 0))};
    result.text = ::ippEnumString("job-state", result.state);
    const auto append = [&](const char* text) {
      if (text && *text) result.text += ", " + os::CleanLine(text);
    };
    auto* const reasons = ::ippFindAttribute(answer.get(), "job-state-reasons", IPP_TAG_KEYWORD);
    append(reasons ? ::ippGetString(reasons, 0, nullptr) : nullptr);
    auto* const message =
        ::ippFindAttribute(answer.get(), "job-printer-state-message", IPP_TAG_TEXT);
    append(message ? ::ippGetString(message, 0, nullptr) : nullptr);
    return result;
  }

  WayEnd WaitForEnd() {
    const int seconds = m_Request.device.timeoutSeconds;
    const os::Deadline deadline = os::Deadline::After(std::chrono::seconds(seconds));
    std::string last;
    for (;;) {
      const auto now = Ask();
      const std::string text = now ? now->text : "no answer: " + now.Error().why;
      if (text != last) m_Request.progress.OnMessage(InQueue("reports: " + text));
      last = text;
      if (now && now->state == IPP_JSTATE_COMPLETED) {
        return {.fate = DeliveryFate::Delivered, .sentBytes = m_Sent};
      }
      if (now && now->state > IPP_JSTATE_STOPPED) {
        return {.fate = DeliveryFate::Uncertain,
                .sentBytes = m_Sent,
                .message = InQueue("ended the job: " + text)};
      }
      if (IsReadable(m_Request.cancel)) return CutOff("canceled at the queue, which said: " + last);
      if (deadline.HasPassed()) {
        return CutOff("not complete after " + std::to_string(seconds) +
                      " seconds, and the queue said: " + last);
      }
      pollfd entry{m_Request.cancel, POLLIN, 0};
      static_cast<void>(::poll(&entry, 1, AskMilliseconds));
    }
  }

  const WayRequest& m_Request;
  http_t* m_Http = nullptr;
  cups_dest_t* m_Destination = nullptr;
  int m_Job = 0;
  std::int64_t m_Sent = 0;
};

}  // namespace

WayEnd DeliverToQueue(const WayRequest& request) { return QueueJob(request).Run(); }

Expected<void> FindPrintQueue(const DeliveryDevice& device) {
  Unwatched nobody;
  DeliveryDevice asked = device;
  asked.timeoutSeconds = FindSeconds;
  const Delivery nothing;
  const WayRequest request{asked, nothing, 0, nobody, -1};
  return QueueJob(request).Find();
}

}  // namespace rastrel::server
