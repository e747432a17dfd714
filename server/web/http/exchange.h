#pragma once

#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "server/web/http/connection_watch.h"
#include "server/web/http/http_server.h"
#include "server/web/http/request_body.h"

struct MHD_Connection;
struct MHD_Daemon;
struct MHD_Response;

namespace rastrel::server::web {

/// The members of a server, which its sources share.
struct HttpServer::Parts {
  Parts(Door door, const Router& router, WorkerPool& workers, Hooks hooks, std::string uploads,
        const Limits& limits);

  Door door;
  const Router& router;
  WorkerPool& workers;
  Hooks hooks;
  std::string uploads;
  Limits limits;
  ConnectionWatch watch;
  MHD_Daemon* daemon = nullptr;

  /// A request may be answered later only if the server does not stop: it waits for those.
  [[nodiscard]] bool BeginWork();
  void EndWork();

  std::mutex mutex;
  std::condition_variable quiet;
  bool stops = false;
  int working = 0;
  std::list<std::weak_ptr<EventStream>> streams;
};

/// One request and its answer, from its first line to its end. The thread of all connections has
/// it, but while a worker does.
class Exchange {
 public:
  /// `target` is the request's, as it came.
  Exchange(HttpServer::Parts& server, std::string target);
  ~Exchange();
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  /// The library's call for a request: first when its headers are there, then for each piece of its
  /// body, then when all is there, and once more when the worker has answered.
  [[nodiscard]] int Go(MHD_Connection* connection, const char* method, const char* piece,
                       std::size_t* size);

 private:
  enum class Stage { New, Body, Working, Answered };

  [[nodiscard]] int Begin(MHD_Connection* connection, const char* method);
  [[nodiscard]] int TakePiece(const char* piece, std::size_t* size);
  [[nodiscard]] int BodyEnded(MHD_Connection* connection);
  [[nodiscard]] bool ReadHead(MHD_Connection* connection, const char* method);
  [[nodiscard]] bool Admit();
  void Refuse(int status, const char* code, const std::string& why);
  void RefuseBody(const Failure& failure);
  [[nodiscard]] Response Handled();
  void Work(MHD_Connection* connection);
  /// Hands the answer over. `early`: the body was not read, so the connection ends with it.
  [[nodiscard]] int Answer(MHD_Connection* connection, bool early);

  HttpServer::Parts& m_Server;
  const std::string m_Target;
  Stage m_Stage = Stage::New;
  Request m_Request;
  const Route* m_Route = nullptr;
  std::unique_ptr<RequestBody> m_Body;
  bool m_HasBody = false;
  bool m_IsRefused = false;  // the rest of the body counts for nothing
  std::size_t m_Ignored = 0;
  Response m_Response;
};

/// The library's form of an answer; null without memory. A stream of it is known to the server.
[[nodiscard]] MHD_Response* LibraryResponse(HttpServer::Parts& server, MHD_Connection* connection,
                                            Response& response);

}  // namespace rastrel::server::web
