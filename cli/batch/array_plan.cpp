#include "cli/batch/array_plan.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

using Json = nlohmann::json;

constexpr std::uint64_t MaximumFile = std::uint64_t{16} << 20;
constexpr const char* Format = "rastrel-batch-array";
constexpr std::string_view Prefix = "array-";
constexpr std::string_view Extension = ".json";

std::wstring FileOf(const BatchRecord& record, const std::string& name) {
  return os::FromNative(record.Directory() + "/" + std::string(Prefix) + name +
                        std::string(Extension));
}

bool ReadPieces(const Json& list, std::size_t files, std::vector<BatchPiece>& pieces) {
  if (!list.is_array()) return false;
  for (const Json& one : list) {
    if (!one.is_array() || one.size() != 2 || !one[0].is_number_unsigned() ||
        !one[1].is_number_unsigned())
      return false;
    const BatchPiece piece{one[0].get<std::size_t>(), one[1].get<std::size_t>()};
    if (piece.first >= files || piece.count == 0 || piece.count > files - piece.first) return false;
    pieces.push_back(piece);
  }
  return true;
}

bool ReadHex(const Json& value, std::string& bytes) {
  if (!value.is_string()) return false;
  const auto& hex = value.get_ref<const std::string&>();
  for (std::size_t at = 0; at + 1 < hex.size(); at += 2) {
    const auto byte = os::ByteFromHex(hex[at], hex[at + 1]);
    if (!byte) return false;
    bytes.push_back(static_cast<char>(*byte));
  }
  return hex.size() % 2 == 0;
}

}  // namespace

Expected<void> WriteArrayPlan(const BatchRecord& record, const ArrayPlan& plan) {
  Json pieces = Json::array();
  for (const BatchPiece& piece : plan.pieces)
    pieces.push_back(Json::array({piece.first, piece.count}));
  const Json file{{"format", Format},
                  {"version", 1},
                  {"directory", os::HexFromBytes(plan.directory)},
                  {"pieces", pieces}};
  return os::ReplaceFile(FileOf(record, plan.name), file.dump() + "\n", os::Access::Private);
}

Expected<ArrayPlan> ReadArrayPlan(const BatchRecord& record, const std::string& name) {
  const auto text = os::ReadWholeFile(FileOf(record, name), MaximumFile);
  if (!text) return text.Error();
  const Json file = Json::parse(*text, nullptr, false);
  ArrayPlan plan{.name = name, .directory = {}, .pieces = {}};
  if (!file.is_object() || file.value("format", Json()) != Format ||
      file.value("version", Json()) != 1 ||
      !ReadHex(file.value("directory", Json()), plan.directory) ||
      !ReadPieces(file.value("pieces", Json()), record.Plan().files.size(), plan.pieces))
    return FailureOf("'" + os::ToNative(FileOf(record, name)) + "' is damaged");
  return plan;
}

Expected<std::vector<std::string>> ArrayNames(const BatchRecord& record) {
  const auto entries = os::ListDirectory(os::FromNative(record.Directory()));
  if (!entries) return entries.Error();
  std::vector<std::string> names;
  for (const std::wstring& entry : *entries) {
    const std::string file = os::ToNative(entry);
    if (file.starts_with(Prefix) && file.ends_with(Extension) &&
        file.size() > Prefix.size() + Extension.size())
      names.push_back(file.substr(Prefix.size(), file.size() - Prefix.size() - Extension.size()));
  }
  return names;
}

Expected<void> RemoveArrayPlan(const BatchRecord& record, const std::string& name) {
  return os::RemoveFile(FileOf(record, name));
}

}  // namespace rastrel::cli
