#include "server/printer/ipp/whole_documents.h"

#include <cups/http.h>
#include <dlfcn.h>

namespace {

using Read = ssize_t (*)(http_t*, char*, size_t);

Read LibrarysRead() {
  static const auto read = reinterpret_cast<Read>(::dlsym(RTLD_NEXT, "httpRead2"));
  return read;
}

}  // namespace

namespace rastrel::server {

bool SeesCutDocuments() { return LibrarysRead() != nullptr; }

}  // namespace rastrel::server

// In the place of the function of libcups that libpappl reads documents with. That one returns 0
// for the end of a document and for the end of its connection, and libpappl takes either for the
// document's; of a failure it makes a job that was aborted.
extern "C" __attribute__((visibility("default"))) ssize_t httpRead2(http_t* http, char* buffer,
                                                                    size_t length) {
  const Read read = LibrarysRead();
  const ssize_t count = read ? read(http, buffer, length) : -1;
  // Between two chunks nothing remains, and the connection's end is an error.
  const bool isCut =
      count == 0 && length > 0 && (::httpGetRemaining(http) > 0 || ::httpError(http) != 0);
  return isCut ? -1 : count;
}
