#include <microhttpd.h>

#include <memory>
#include <utility>

#include "server/web/http/exchange.h"

namespace rastrel::server::web {
namespace {

constexpr std::size_t StreamPiece = 16384;

/// A stream's end at the library: a connection without anything to send is suspended.
class StreamReader : public std::enable_shared_from_this<StreamReader> {
 public:
  StreamReader(HttpServer::Parts& server, MHD_Connection* connection,
               std::shared_ptr<EventStream> stream)
      : m_Server(server), m_Connection(connection), m_Stream(std::move(stream)) {}

  [[nodiscard]] const std::shared_ptr<EventStream>& Stream() const { return m_Stream; }

  [[nodiscard]] ssize_t Read(char* target, std::size_t limit) {
    const std::lock_guard lock(m_Mutex);
    const std::size_t bytes = m_Stream->Take(target, limit);
    if (bytes > 0) return static_cast<ssize_t>(bytes);
    if (m_Stream->IsDone()) return MHD_CONTENT_READER_END_OF_STREAM;
    if (!m_Server.BeginWork()) return MHD_CONTENT_READER_END_OF_STREAM;
    m_IsSuspended = true;
    MHD_suspend_connection(m_Connection);
    return 0;
  }

  void Wake() {
    const std::lock_guard lock(m_Mutex);
    if (!std::exchange(m_IsSuspended, false)) return;
    MHD_resume_connection(m_Connection);
    m_Server.EndWork();
  }

 private:
  HttpServer::Parts& m_Server;
  MHD_Connection* m_Connection;
  std::shared_ptr<EventStream> m_Stream;
  std::mutex m_Mutex;
  bool m_IsSuspended = false;
};

using ReaderOwner = std::shared_ptr<StreamReader>;

ssize_t ReadStream(void* owner, std::uint64_t, char* target, std::size_t limit) {
  return (*static_cast<ReaderOwner*>(owner))->Read(target, limit);
}

// The connection has ended.
void EndStream(void* owner) {
  const std::unique_ptr<ReaderOwner> reader(static_cast<ReaderOwner*>(owner));
  (*reader)->Stream()->Abandon();
}

MHD_Response* StreamResponse(HttpServer::Parts& server, MHD_Connection* connection,
                             const std::shared_ptr<EventStream>& stream) {
  auto owner =
      std::make_unique<ReaderOwner>(std::make_shared<StreamReader>(server, connection, stream));
  {
    const std::lock_guard lock(server.mutex);
    server.streams.remove_if([](const auto& one) { return one.expired(); });
    server.streams.push_back(stream);
    // One that begins while the server stops ends at once.
    if (server.stops) stream->Abandon();
  }
  stream->SetWake([reader = std::weak_ptr<StreamReader>(*owner)] {
    if (const auto kept = reader.lock()) kept->Wake();
  });
  MHD_Response* response = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, StreamPiece,
                                                             ReadStream, owner.get(), EndStream);
  if (response) static_cast<void>(owner.release());
  return response;
}

MHD_Response* FileAnswer(FileBody& body) {
  MHD_Response* response = MHD_create_response_from_fd_at_offset64(
      static_cast<std::uint64_t>(body.bytes), body.file.Get(),
      static_cast<std::uint64_t>(body.offset));
  if (response) static_cast<void>(body.file.Release());
  return response;
}

MHD_Response* Empty() {
  return MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT);
}

// Any page of ours is shown in its own window, loads nothing of others, and says to nobody else
// where its reader came from. With "no-referrer" a browser would send a form of ours with the
// origin "null", which is that of anybody.
constexpr std::pair<const char*, const char*> SecurityHeaders[] = {
    {"Content-Security-Policy",
     "default-src 'self'; img-src 'self' data:; object-src 'none'; base-uri 'none'; "
     "form-action 'self'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
};

}  // namespace

MHD_Response* LibraryResponse(HttpServer::Parts& server, MHD_Connection* connection,
                              Response& answer) {
  MHD_Response* response = nullptr;
  if (answer.stream) {
    response = StreamResponse(server, connection, answer.stream);
  } else if (answer.file && answer.file->bytes > 0) {
    response = FileAnswer(*answer.file);
  } else if (answer.text.empty()) {
    response = Empty();
  } else {
    response = MHD_create_response_from_buffer(answer.text.size(), answer.text.data(),
                                               MHD_RESPMEM_MUST_COPY);
  }
  if (!response) return nullptr;
  for (const auto& [name, value] : SecurityHeaders)
    if (answer.Header(name).empty()) MHD_add_response_header(response, name, value);
  if (server.door.kind == Door::Kind::Tls)
    MHD_add_response_header(response, "Strict-Transport-Security", "max-age=31536000");
  if (answer.Header("Cache-Control").empty())
    MHD_add_response_header(response, "Cache-Control", "no-store");
  for (const auto& [name, value] : answer.headers)
    MHD_add_response_header(response, name.c_str(), value.c_str());
  return response;
}

}  // namespace rastrel::server::web
