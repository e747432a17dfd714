#include "server/web/api/static_files.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::server::web {
namespace {

constexpr std::uint64_t FileLimit = 4'000'000;

struct PageFile {
  std::string type;
  std::string content;
  std::string tag;
};
using PageFiles = std::map<std::string, PageFile>;

constexpr std::array<std::pair<std::string_view, const char*>, 9> Types{{
    {".html", "text/html; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".svg", "image/svg+xml"},
    {".png", "image/png"},
    {".ico", "image/x-icon"},
    {".json", "application/json"},
    {".webmanifest", "application/manifest+json"},
    {".woff2", "font/woff2"},
}};

// Of FNV-1a: it distinguishes versions of a file, and protects from nobody.
std::string TagOf(std::string_view content) {
  std::uint64_t hash = 14695981039346656037ULL;
  for (const char one : content) hash = (hash ^ static_cast<unsigned char>(one)) * 1099511628211ULL;
  std::string tag;
  for (int shift = 56; shift >= 0; shift -= 8)
    os::AppendHex(tag, static_cast<unsigned char>(hash >> static_cast<unsigned>(shift)));
  return tag;
}

const char* TypeOf(const std::string& name) {
  for (const auto& [extension, type] : Types)
    if (name.ends_with(extension)) return type;
  return nullptr;
}

PageFiles ReadFiles(const std::string& directory) {
  PageFiles files;
  auto reader = os::DirectoryReader::Open(AT_FDCWD, directory.c_str(), true);
  std::vector<os::DirectoryEntry> entries;
  while (reader && reader->ReadPiece(entries) && !entries.empty())
    for (const os::DirectoryEntry& entry : entries) {
      const char* type = TypeOf(entry.name);
      if (!type) continue;
      auto text = os::ReadWholeFile(os::FromNative(directory + "/" + entry.name), FileLimit);
      if (!text) continue;
      files[entry.name] = {type, *text, TagOf(*text)};
    }
  return files;
}

Response Show(const PageFiles& files, const Request& request, const std::string& name) {
  const auto found = files.find(name);
  if (found == files.end()) return ErrorResponse(404, "not-found", "there is no such file");
  const PageFile& file = found->second;
  const std::string tag = '"' + file.tag + '"';
  Response response;
  if (request.Header("if-none-match").find(tag) != std::string::npos) {
    response.status = 304;
  } else {
    response = TextResponse(200, file.type, file.content);
  }
  response.Add("ETag", tag);
  response.Add("Cache-Control", "no-cache");
  return response;
}

}  // namespace

void AddStaticFiles(Router& router, Shop& shop) {
  const auto files = std::make_shared<const PageFiles>(ReadFiles(shop.pageFiles));
  const auto add = [&](const char* pattern, const std::string& name) {
    router.Add(
        {Method::Get, pattern, Role::Nobody, Body::None, [files, name](const Request& request) {
           return Show(*files, request, name.empty() ? request.Place("name") : name);
         }});
  };
  add("/static/{name}", "");
  add("/api/v1/openapi.json", "openapi.json");
  router.Add({Method::Get, "/api/v1/health", Role::Nobody, Body::None, [&shop](const Request&) {
                const auto last = shop.queue.LastEvent();
                return last ? JsonResponse(200, R"({"state":"serving"})")
                            : JsonResponse(503, R"({"state":"failing"})");
              }});
}

}  // namespace rastrel::server::web
