#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "rastrel/xml/layer.h"

/// Writers of some templates make files that are no XML by a little: in a code page that nothing
/// names, with a mark in front, with "<? xml", or with names of characters that only HTML has. The
/// importers of these formats repair the text of a refused file and read it once more.
namespace rastrel::imports {

/// A reference as the file has it and as XML knows it, "&copy;" and "&#169;".
struct ReferenceRewrite {
  std::wstring_view from;
  std::wstring_view to;
};

/// The differences between the formats.
struct RepairRules {
  /// Section of the setting "CodePage", by which the file is decoded (os::WideFromCodePage).
  const wchar_t* settingsSection = nullptr;
  /// The code page without that setting.
  int defaultCodePage = 0;
  /// Done everywhere in the text, one after the other.
  std::span<const ReferenceRewrite> rewrites;
};

/// The rules of CRO templates.
inline constexpr RepairRules CroRepair{
    .settingsSection = L"impcml", .defaultCodePage = 1250, .rewrites = {}};

/// References to characters that only HTML names, and two that a decoder may have left as they
/// were.
inline constexpr std::array<ReferenceRewrite, 4> Cr2Rewrites{
    {{L"&trade;", L"&#8482;"}, {L"&copy;", L"&#169;"}, {L"&lt;", L"&#60;"}, {L"&amp;", L"&#38;"}}};
/// The rules of Crown Trophy templates of the first generation.
inline constexpr RepairRules Cr2Repair{
    .settingsSection = L"impcr2", .defaultCodePage = 65001, .rewrites = Cr2Rewrites};

/// A larger file is not repaired: its decoded text takes several times its size.
inline constexpr std::uint64_t MaximumRefusedBytes = std::uint64_t{32} << 20;

/// The repaired text. Each edit is literal and knows nothing of the others:
/// - a first character other than "<" is deleted, and no more than one;
/// - if "<? xml" is anywhere in the text, the text's third character is deleted, wherever the match
///   is;
/// - the rewrites are made.
[[nodiscard]] std::wstring RepairText(std::wstring text,
                                      std::span<const ReferenceRewrite> rewrites);

/// The document element of the file at a library path; of its repaired text if the file itself is
/// refused. None if that is refused too; TakeXmlFailure (xml/failure.h) then has the reason of the
/// last refusal, and nothing of a refusal that the repair mended.
[[nodiscard]] XmlNode LoadRepairableXmlFile(std::wstring_view path, const RepairRules& rules);

}  // namespace rastrel::imports
