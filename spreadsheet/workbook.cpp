#include "spreadsheet/workbook.h"

#include <map>
#include <optional>
#include <utility>

#include "rastrel/xml/failure.h"
#include "spreadsheet/error.h"
#include "spreadsheet/part_name.h"
#include "spreadsheet/xml_reading.h"

namespace rastrel::spreadsheet {
namespace {

constexpr const char* ContentTypesPart = "[Content_Types].xml";
constexpr std::size_t MaximumRelationships = 65'536;

struct Relationship {
  std::string type;
  std::string target;
  bool isExternal = false;
};
using Relationships = std::map<std::string, Relationship>;

// Transitional and strict names differ in all but the last word.
bool IsOfType(const Relationship& relationship, std::string_view word) {
  return relationship.type.ends_with("/" + std::string(word)) && !relationship.isExternal;
}

void Stream(Parts& parts, const std::string& part, PathReader& reader, const char* root) {
  static_cast<void>(xml::TakeXmlFailure());
  const std::string path = OrThrow(parts.Fetch(part));
  if (!reader.ReadFrom(path)) parts.RefuseXml(part, "it can't be read");
  if (!reader.FoundRoot())
    parts.Refuse(part, std::string("its root element is not '") + root + "'");
}

Relationships ReadRelationships(Parts& parts, const std::string& part) {
  Relationships relationships;
  PathReader reader;
  reader.On({L"Relationships", L"Relationship"}, [&](const XmlNode& node) {
    Relationship one{AttributeNamed(node, L"Type"), AttributeNamed(node, L"Target"),
                     AttributeNamed(node, L"TargetMode") == "External"};
    // The first of several with one id counts.
    relationships.emplace(AttributeNamed(node, L"Id"), std::move(one));
    if (relationships.size() > MaximumRelationships)
      reader.Refuse("there are more relationships than the limit of " +
                    std::to_string(MaximumRelationships));
  });
  Stream(parts, part, reader, "Relationships");
  return relationships;
}

// The content type of a part in the package.
std::string ContentTypeOf(Parts& parts, const std::string& part) {
  std::string own;
  std::string byExtension;
  PathReader reader;
  reader.On({L"Types", L"Override"}, [&](const XmlNode& node) {
    const std::string name = AttributeNamed(node, L"PartName");
    if (own.empty() && SameName(name, "/" + part)) own = AttributeNamed(node, L"ContentType");
  });
  reader.On({L"Types", L"Default"}, [&](const XmlNode& node) {
    const std::size_t dot = part.rfind('.');
    if (byExtension.empty() && dot != part.npos &&
        SameName(AttributeNamed(node, L"Extension"), part.substr(dot + 1)))
      byExtension = AttributeNamed(node, L"ContentType");
  });
  Stream(parts, ContentTypesPart, reader, "Types");
  return own.empty() ? byExtension : own;
}

[[noreturn]] void RefusePackage(const Parts& parts, const std::string& why) {
  Failure failure = FailureOf(why);
  failure.where = parts.Name();
  throw Error(std::move(failure));
}

std::string FindWorkbookPart(Parts& parts) {
  const Relationships package = ReadRelationships(parts, RelationshipsOf(""));
  for (const auto& [id, relationship] : package) {
    if (!IsOfType(relationship, "officeDocument")) continue;
    std::string part = ResolveTarget("", relationship.target);
    if (part.empty() || !parts.Has(part))
      RefusePackage(parts, "its main part '" + PrintableName(relationship.target) +
                               "' is not in the package");
    const std::string type = ContentTypeOf(parts, part);
    if (type.find("sheet.binary") != type.npos)
      RefusePackage(parts, "it is a binary workbook (.xlsb); save it as .xlsx");
    const bool isWorkbook = type.find("spreadsheetml") != type.npos ||
                            type.find("ms-excel") != type.npos || type.ends_with("/xml");
    if (!isWorkbook)
      RefusePackage(parts, "it is no workbook: the content type of its main part is '" +
                               PrintableName(type) + "'");
    return part;
  }
  RefusePackage(parts, "it has no main part");
}

std::string PartOfType(const Parts& parts, const Relationships& relationships,
                       const std::string& workbook, std::string_view word) {
  for (const auto& [id, relationship] : relationships) {
    if (!IsOfType(relationship, word)) continue;
    std::string part = ResolveTarget(workbook, relationship.target);
    if (!part.empty() && parts.Has(part)) return part;
  }
  return {};
}

SheetInfo ReadSheet(const XmlNode& node) {
  SheetInfo sheet;
  sheet.name = AttributeNamed(node, L"name");
  sheet.id = AttributeNamed(node, L"id");
  const std::string state = AttributeNamed(node, L"state");
  if (state == "hidden") sheet.visibility = Visibility::Hidden;
  if (state == "veryHidden") sheet.visibility = Visibility::VeryHidden;
  return sheet;
}

}  // namespace

Workbook ReadWorkbook(Parts& parts) {
  Workbook workbook;
  workbook.part = FindWorkbookPart(parts);
  PathReader reader;
  reader.On({L"workbook", L"sheets", L"sheet"}, [&](const XmlNode& node) {
    workbook.sheets.push_back(ReadSheet(node));
    if (workbook.sheets.size() > limits::Sheets)
      reader.Refuse("there are more sheets than the limit of " + std::to_string(limits::Sheets));
  });
  reader.On({L"workbook", L"workbookPr"}, [&](const XmlNode& node) {
    if (IsYes(AttributeNamed(node, L"date1904"))) workbook.dates = DateSystem::From1904;
  });
  Stream(parts, workbook.part, reader, "workbook");

  const std::string relationshipsPart = RelationshipsOf(workbook.part);
  if (!parts.Has(relationshipsPart)) return workbook;
  workbook.relationships = relationshipsPart;
  const Relationships relationships = ReadRelationships(parts, relationshipsPart);
  workbook.strings = PartOfType(parts, relationships, workbook.part, "sharedStrings");
  workbook.styles = PartOfType(parts, relationships, workbook.part, "styles");
  for (SheetInfo& sheet : workbook.sheets) {
    const auto found = relationships.find(sheet.id);
    if (found == relationships.end()) continue;
    sheet.target = found->second.target;
    sheet.hasCells = !IsOfType(found->second, "chartsheet");
    if (!found->second.isExternal) sheet.part = ResolveTarget(workbook.part, sheet.target);
    if (!sheet.part.empty() && !parts.Has(sheet.part)) sheet.part.clear();
  }
  return workbook;
}

}  // namespace rastrel::spreadsheet
