#include "cli/batch/batch_record.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/owned_directory.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

using Json = nlohmann::json;

constexpr std::uint64_t MaximumFile = std::uint64_t{256} << 20;
constexpr const char* PlanFile = "/batch.json";
constexpr const char* PlanFormat = "rastrel-batch";
constexpr const char* PieceFormat = "rastrel-batch-piece";
constexpr std::string_view PiecePrefix = "piece-";
constexpr std::string_view PieceExtension = ".json";

// Paths and lines are any bytes, and JSON is UTF-8.
std::optional<std::string> BytesOf(const Json& value) {
  if (!value.is_string()) return std::nullopt;
  const auto& hex = value.get_ref<const std::string&>();
  if (hex.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(hex.size() / 2);
  for (std::size_t at = 0; at < hex.size(); at += 2) {
    const auto byte = os::ByteFromHex(hex[at], hex[at + 1]);
    if (!byte) return std::nullopt;
    bytes.push_back(static_cast<char>(*byte));
  }
  return bytes;
}

Json HexList(const std::vector<std::string>& texts) {
  Json list = Json::array();
  for (const std::string& text : texts) list.push_back(os::HexFromBytes(text));
  return list;
}

bool ReadList(const Json& list, std::vector<std::string>& texts) {
  if (!list.is_array()) return false;
  for (const Json& one : list) {
    auto text = BytesOf(one);
    if (!text) return false;
    texts.push_back(*std::move(text));
  }
  return true;
}

bool IsOf(const Json& file, const char* format) {
  return file.is_object() && file.value("format", Json()) == format &&
         file.value("version", Json()) == 1;
}

Json ReadJson(const std::string& path) {
  const auto text = os::ReadWholeFile(os::FromNative(path), MaximumFile);
  return text ? Json::parse(*text, nullptr, false) : Json();
}

// One that is missing is false.
bool ReadFlag(const Json& file, const char* name, bool& flag) {
  const Json value = file.value(name, Json(false));
  if (!value.is_boolean()) return false;
  flag = value.get<bool>();
  return true;
}

std::optional<BatchPlan> ReadPlan(const std::string& directory) {
  const Json file = ReadJson(directory + PlanFile);
  BatchPlan plan;
  if (!IsOf(file, PlanFormat) || !ReadList(file.value("words", Json()), plan.words) ||
      !ReadList(file.value("files", Json()), plan.files) ||
      !ReadFlag(file, "staged", plan.staged) || !ReadFlag(file, "replaces", plan.replaces))
    return std::nullopt;
  return plan;
}

Expected<void> WritePlan(const std::string& directory, const BatchPlan& plan) {
  const Json file{{"format", PlanFormat},         {"version", 1},
                  {"words", HexList(plan.words)}, {"files", HexList(plan.files)},
                  {"staged", plan.staged},        {"replaces", plan.replaces}};
  return os::ReplaceFile(os::FromNative(directory + PlanFile), file.dump() + "\n",
                         os::Access::Private);
}

bool ReadResult(const Json& file, FileResult& result) {
  if (!file.is_object() || !file.value("status", Json()).is_number_integer()) return false;
  const Json text = file.value("text", Json());
  if (!text.is_array()) return false;
  result.status = file["status"].get<int>();
  for (const Json& piece : text) {
    if (!piece.is_array() || piece.size() != 2 || !piece[0].is_boolean()) return false;
    auto bytes = BytesOf(piece[1]);
    if (!bytes) return false;
    result.text.pieces.push_back({piece[0].get<bool>(), *std::move(bytes)});
  }
  return true;
}

std::optional<std::size_t> FirstOf(std::string_view name) {
  if (!name.starts_with(PiecePrefix) || !name.ends_with(PieceExtension)) return std::nullopt;
  name = name.substr(PiecePrefix.size(), name.size() - PiecePrefix.size() - PieceExtension.size());
  std::size_t first = 0;
  const auto read = std::from_chars(name.data(), name.data() + name.size(), first);
  if (read.ec != std::errc() || read.ptr != name.data() + name.size()) return std::nullopt;
  return first;
}

// The record of a batch that was cut off becomes this process's.
Expected<void> TakeUp(const std::string& directory, const BatchPlan& plan) {
  if (const auto owner = os::ReadOwner(directory); owner && os::MayBeAlive(*owner))
    return FailureOf("a batch is under way in '" + directory + "'");
  const auto known = ReadPlan(directory);
  // It was cut off before any work began.
  const bool isNew = !os::Exists(os::FromNative(directory + PlanFile));
  if (!isNew && !known) return FailureOf("the record in '" + directory + "' is damaged: remove it");
  if (known && *known != plan)
    return FailureOf("the batch in '" + directory +
                     "' has other files or options: give the same ones to go on with it");
  const auto own = os::IdentityOfProcess(os::CurrentProcessId());
  if (!own) return own.Error();
  // Of two that take it up, one finds the other's name.
  if (auto removed = os::RemoveOwner(directory); !removed) return removed;
  if (auto written = os::WriteOwner(directory, *own); !written) return written;
  return isNew ? WritePlan(directory, plan) : Expected<void>();
}

}  // namespace

BatchRecord::BatchRecord(const std::string& results, BatchPlan plan)
    : m_Results(results),
      m_Directory(results + (results.ends_with('/') ? "" : "/") + BatchRecordName),
      m_Plan(std::move(plan)) {}

Expected<BatchRecord> BatchRecord::Begin(const std::string& results, BatchPlan plan, bool resume) {
  BatchRecord record(results, std::move(plan));
  const auto made = os::MakeOwnedDirectory(record.m_Directory);
  if (made) {
    if (auto written = WritePlan(record.m_Directory, record.m_Plan); !written)
      return written.Error();
    return record;
  }
  if (made.Error().error != EEXIST) return made.Error();
  if (!resume)
    return FailureOf("'" + results +
                     "' has a batch that has not ended: --resume goes on with it, and without '" +
                     record.m_Directory + "' another one may begin");
  if (auto taken = TakeUp(record.m_Directory, record.m_Plan); !taken) return taken.Error();
  return record;
}

Expected<BatchRecord> BatchRecord::Open(const std::string& results) {
  BatchRecord record(results, {});
  auto plan = ReadPlan(record.m_Directory);
  if (!plan) return FailureOf("'" + record.m_Directory + "' has no record of a batch");
  record.m_Plan = *std::move(plan);
  return record;
}

std::string BatchRecord::PieceFile(std::size_t first) const {
  return m_Directory + "/" + std::string(PiecePrefix) + std::to_string(first) +
         std::string(PieceExtension);
}

Expected<void> BatchRecord::Store(std::size_t first, const std::vector<FileResult>& results,
                                  double seconds) const {
  Json files = Json::array();
  for (const FileResult& result : results) {
    Json text = Json::array();
    for (const HeldText::Piece& piece : result.text.pieces)
      text.push_back(Json::array({piece.isError, os::HexFromBytes(piece.bytes)}));
    files.push_back({{"status", result.status}, {"text", text}});
  }
  const Json file{{"format", PieceFormat}, {"version", 1}, {"seconds", seconds}, {"files", files}};
  return os::ReplaceFile(os::FromNative(PieceFile(first)), file.dump() + "\n", os::Access::Private);
}

std::vector<FileResult> BatchRecord::Load(std::size_t first) const {
  const Json file = ReadJson(PieceFile(first));
  if (!IsOf(file, PieceFormat) || !file.value("files", Json()).is_array()) return {};
  std::vector<FileResult> results;
  for (const Json& one : file["files"])
    if (!ReadResult(one, results.emplace_back())) return {};
  if (first > m_Plan.files.size() || results.size() > m_Plan.files.size() - first) return {};
  return results;
}

double BatchRecord::SecondsOf(std::size_t first) const {
  const Json file = ReadJson(PieceFile(first));
  if (!IsOf(file, PieceFormat)) return 0;
  const Json seconds = file.value("seconds", Json());
  return seconds.is_number() ? std::max(0.0, seconds.get<double>()) : 0;
}

Expected<std::map<std::size_t, FileResult>> BatchRecord::LoadAll() const {
  const auto names = os::ListDirectory(os::FromNative(m_Directory));
  if (!names) return names.Error();
  std::map<std::size_t, FileResult> all;
  for (const std::wstring& name : *names) {
    const auto first = FirstOf(os::ToNative(name));
    if (!first) continue;
    std::size_t index = *first;
    for (FileResult& result : Load(*first)) all.insert_or_assign(index++, std::move(result));
  }
  return all;
}

Expected<void> BatchRecord::Remove() const { return os::RemoveNativeTree(m_Directory); }

}  // namespace rastrel::cli
