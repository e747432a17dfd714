#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Why a document gave nothing. The layer's functions only say that it did; a program that has a
/// user asks here.
namespace rastrel::xml {

/// Where and why.
struct XmlFailure {
  std::wstring path{};    ///< library path as it was given; empty for a document in memory
  int line = 0;           ///< from 1; 0 if the file could not be read at all
  int column = 0;         ///< from 1, in characters; 0 where the line is
  std::wstring reason{};  ///< one sentence without a full stop

  bool operator==(const XmlFailure&) const = default;
};

/// "path:line:column: reason", without what is empty or 0.
[[nodiscard]] std::wstring Describe(const XmlFailure& failure);

/// Keeps the failure for TakeXmlFailure and writes it to the application log, tag "[XML]".
void ReportXmlFailure(XmlFailure failure);

/// The latest failure of this thread, and forgets it; nothing if there was none since the last
/// call.
[[nodiscard]] std::optional<XmlFailure> TakeXmlFailure();

}  // namespace rastrel::xml
