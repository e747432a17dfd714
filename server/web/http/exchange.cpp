#include "server/web/http/exchange.h"

#include <microhttpd.h>

#include <cerrno>
#include <charconv>
#include <exception>
#include <string_view>
#include <utility>

#include "server/web/http/address_text.h"

namespace rastrel::server::web {
namespace {

// Of a body that was refused so much is read, so that the sender gets to see why.
constexpr std::size_t IgnoredLimit = 1048576;

Method MethodOf(std::string_view name) {
  if (name == "GET" || name == "HEAD") return Method::Get;
  if (name == "POST") return Method::Post;
  if (name == "DELETE") return Method::Delete;
  return Method::Other;
}

MHD_Result KeepHeader(void* fields, MHD_ValueKind, const char* name, std::size_t nameSize,
                      const char* value, std::size_t valueSize) {
  static_cast<Fields*>(fields)->emplace_back(LowerCase({name, nameSize}),
                                             value ? std::string(value, valueSize) : std::string());
  return MHD_YES;
}

std::size_t CountOf(const Fields& fields, std::string_view name) {
  std::size_t count = 0;
  for (const auto& field : fields) count += field.first == name ? 1 : 0;
  return count;
}

ConnectionWatch::Connection* WatchedOf(MHD_Connection* connection) {
  const MHD_ConnectionInfo* info =
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
  return info ? static_cast<ConnectionWatch::Connection*>(info->socket_context) : nullptr;
}

}  // namespace

Exchange::Exchange(HttpServer::Parts& server, std::string target)
    : m_Server(server), m_Target(std::move(target)) {}

Exchange::~Exchange() = default;

int Exchange::Go(MHD_Connection* connection, const char* method, const char* piece,
                 std::size_t* size) {
  switch (m_Stage) {
    case Stage::New: return Begin(connection, method);
    case Stage::Body:
      if (*size != 0) {
        if (auto* watched = WatchedOf(connection))
          m_Server.watch.AddBytes(watched, static_cast<std::int64_t>(*size));
        return TakePiece(piece, size);
      }
      return BodyEnded(connection);
    case Stage::Answered: return Answer(connection, false);
    case Stage::Working: return MHD_YES;
  }
  return MHD_NO;
}

void Exchange::Refuse(int status, const char* code, const std::string& why) {
  m_Response = ErrorResponse(status, code, why);
  m_IsRefused = true;
}

void Exchange::RefuseBody(const Failure& failure) {
  if (failure.error == EFBIG) return Refuse(413, "too-large", failure.why);
  if (failure.code == FailureCode::BadInput) return Refuse(400, "bad-request", failure.why);
  if (failure.error == ENOSPC || failure.error == EDQUOT)
    return Refuse(507, "no-room", "there is no room for the file");
  Refuse(500, "failed", "the file can't be kept");
}

int Exchange::Begin(MHD_Connection* connection, const char* method) {
  auto* watched = WatchedOf(connection);
  if (!watched || watched->isRefused) return MHD_NO;
  m_Request.address = watched->address;
  if (!ReadHead(connection, method) || !Admit()) {
    m_Server.watch.Enter(watched, ConnectionWatch::Phase::Answer);
    return Answer(connection, true);
  }
  m_Stage = Stage::Body;
  m_Server.watch.Enter(watched, ConnectionWatch::Phase::Body);
  return MHD_YES;
}

bool Exchange::ReadHead(MHD_Connection* connection, const char* method) {
  m_Request.method = MethodOf(method);
  m_Request.isSecure = m_Server.door.kind == Door::Kind::Tls;
  MHD_get_connection_values_n(connection, MHD_HEADER_KIND, KeepHeader, &m_Request.headers);
  const bool isChunked = CountOf(m_Request.headers, "transfer-encoding") != 0;
  const std::size_t lengths = CountOf(m_Request.headers, "content-length");
  m_HasBody = isChunked || (lengths != 0 && m_Request.Header("content-length") != "0");
  // Two ways to say where a request ends are two requests for who reads the other one.
  if (lengths > 1 || (isChunked && lengths != 0))
    return Refuse(400, "bad-request", "the length of the body is given twice"), false;
  if (CountOf(m_Request.headers, "host") > 1 || CountOf(m_Request.headers, "cookie") > 1 ||
      CountOf(m_Request.headers, "authorization") > 1)
    return Refuse(400, "bad-request", "a header that there is once is given twice"), false;
  const std::size_t mark = m_Target.find('?');
  auto path = PathOf(std::string_view(m_Target).substr(0, mark));
  if (!path) return Refuse(400, "bad-request", path.Error().why), false;
  m_Request.path = *std::move(path);
  if (mark != m_Target.npos) {
    auto query = FieldsOf(std::string_view(m_Target).substr(mark + 1));
    if (!query) return Refuse(400, "bad-request", query.Error().why), false;
    m_Request.query = *std::move(query);
  }
  m_Request.cookies = CookiesOf(m_Request.Header("cookie"));
  return true;
}

bool Exchange::Admit() {
  auto match = m_Server.router.Find(m_Request.method, m_Request.path);
  m_Request.places = std::move(match.places);
  m_Route = match.route;
  if (auto refused = m_Server.hooks.admit(m_Request, m_Route)) {
    m_Response = *std::move(refused);
    return false;
  }
  if (!m_Route && match.allowed.empty())
    return Refuse(404, "not-found", "there is no such address"), false;
  if (!m_Route) {
    Refuse(405, "wrong-method", "this address takes " + match.allowed);
    m_Response.Add("Allow", match.allowed);
    return false;
  }
  const std::string& length = m_Request.Header("content-length");
  std::int64_t bytes = 0;
  std::from_chars(length.data(), length.data() + length.size(), bytes);
  if (m_Route->body == Body::None && m_HasBody)
    return Refuse(413, "too-large", "this request has no body"), false;
  if (m_Route->body == Body::Small && bytes > static_cast<std::int64_t>(m_Server.limits.smallBody))
    return Refuse(
               413, "too-large",
               "the body is larger than " + std::to_string(m_Server.limits.smallBody) + " bytes"),
           false;
  // A form has a little more around its file, which is counted by itself.
  constexpr std::int64_t AroundFile = 1048576;
  if (m_Route->body == Body::Upload && m_Server.limits.upload > 0 &&
      bytes - AroundFile > m_Server.limits.upload)
    return Refuse(413, "too-large",
                  "the file is larger than " + std::to_string(m_Server.limits.upload) + " bytes"),
           false;
  auto body =
      RequestBody::Begin(m_Route->body, m_Request.Header("content-type"), m_Server.uploads,
                         {.small = m_Server.limits.smallBody, .upload = m_Server.limits.upload});
  if (!body) return RefuseBody(body.Error()), false;
  m_Body = *std::move(body);
  return true;
}

int Exchange::TakePiece(const char* piece, std::size_t* size) {
  const std::size_t bytes = std::exchange(*size, 0);
  if (m_IsRefused) {
    m_Ignored += bytes;
    return m_Ignored > IgnoredLimit ? MHD_NO : MHD_YES;
  }
  if (auto fed = m_Body->Feed({piece, bytes}); !fed) {
    RefuseBody(fed.Error());
    m_Body.reset();
  }
  return MHD_YES;
}

int Exchange::BodyEnded(MHD_Connection* connection) {
  if (auto* watched = WatchedOf(connection))
    m_Server.watch.Enter(watched, ConnectionWatch::Phase::Answer);
  if (!m_IsRefused)
    if (auto finished = m_Body->Finish(m_Request); !finished) RefuseBody(finished.Error());
  if (m_IsRefused) return Answer(connection, false);
  if (!m_Server.BeginWork()) return MHD_NO;
  m_Stage = Stage::Working;
  MHD_suspend_connection(connection);
  if (m_Server.workers.Post([this, connection] { Work(connection); })) return MHD_YES;
  Refuse(503, "busy", "too many requests wait");
  m_Response.Add("Retry-After", "1");
  m_Stage = Stage::Answered;
  MHD_resume_connection(connection);
  m_Server.EndWork();
  return MHD_YES;
}

// What a handler throws, for want of memory say, ends its request and no more.
Response Exchange::Handled() {
  try {
    if (auto refused = m_Server.hooks.admitBody(m_Request, *m_Route)) return *std::move(refused);
    return m_Route->handler(m_Request);
  } catch (const std::exception&) {
    return ErrorResponse(500, "failed", "the request could not be answered");
  }
}

// Once the connection goes on, this object is the other thread's.
void Exchange::Work(MHD_Connection* connection) {
  HttpServer::Parts& server = m_Server;
  m_Response = Handled();
  m_Stage = Stage::Answered;
  MHD_resume_connection(connection);
  server.EndWork();
}

int Exchange::Answer(MHD_Connection* connection, bool early) {
  m_Server.hooks.answered(m_Request, m_Response);
  // What is left of the body would be taken for the next request.
  if (early && m_HasBody) m_Response.Add("Connection", "close");
  const auto status = static_cast<unsigned>(m_Response.status);
  MHD_Response* response = LibraryResponse(m_Server, connection, m_Response);
  if (!response) return MHD_NO;
  const MHD_Result queued = MHD_queue_response(connection, status, response);
  MHD_destroy_response(response);
  return queued;
}

}  // namespace rastrel::server::web
