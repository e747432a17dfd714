#include "cli/document/template_tree.h"

#include "rastrel/imports/refused_text.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {

XmlNode LoadTemplate(TemplateFormat format, const std::wstring& path) {
  switch (format) {
    case TemplateFormat::Cro: return imports::LoadRepairableXmlFile(path, imports::CroRepair);
    case TemplateFormat::Cr2: return imports::LoadRepairableXmlFile(path, imports::Cr2Repair);
    default: return LoadXmlFile(path);
  }
}

}  // namespace rastrel::cli
