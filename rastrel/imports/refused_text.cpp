#include "rastrel/imports/refused_text.h"

#include <cstddef>
#include <utility>

#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/code_page.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/xml/failure.h"

namespace rastrel::imports {
namespace {

constexpr std::wstring_view SpacedDeclaration = L"<? xml";

/// In one pass, since a text may consist of references alone.
std::wstring Rewritten(std::wstring_view text, const ReferenceRewrite& rewrite) {
  std::wstring rewritten;
  rewritten.reserve(text.size());
  std::size_t place = 0;
  for (std::size_t found = text.find(rewrite.from); found != std::wstring_view::npos;
       found = text.find(rewrite.from, place)) {
    rewritten.append(text, place, found - place).append(rewrite.to);
    place = found + rewrite.from.size();
  }
  return rewritten.append(text, place);
}

/// The file's text, empty if it can't be read: then the refusal of the file itself has the reason.
std::wstring DecodedFile(std::wstring_view path, const RepairRules& rules) {
  const int codePage =
      GetIntKorvane(rules.settingsSection, L"CodePage", rules.defaultCodePage, DS_USER, nullptr);
  const auto bytes = os::ReadWholeFile(path, MaximumRefusedBytes);
  return bytes ? os::WideFromCodePage(codePage, *bytes) : std::wstring();
}

}  // namespace

std::wstring RepairText(std::wstring text, std::span<const ReferenceRewrite> rewrites) {
  if (!text.empty() && text.front() != L'<') text.erase(0, 1);
  // Index 2 is the space only where the declaration is the first of the text. Files that are read
  // today depend on no more than that, and others stay refused.
  if (text.find(SpacedDeclaration) != std::wstring::npos) text.erase(2, 1);
  for (const ReferenceRewrite& rewrite : rewrites) text = Rewritten(text, rewrite);
  return text;
}

XmlNode LoadRepairableXmlFile(std::wstring_view path, const RepairRules& rules) {
  XmlNode root = LoadXmlFile(path);
  if (root) return root;
  std::wstring text = DecodedFile(path, rules);
  if (text.empty()) return {};
  root = LoadXmlString(RepairText(std::move(text), rules.rewrites));
  if (root) static_cast<void>(xml::TakeXmlFailure());
  return root;
}

}  // namespace rastrel::imports
