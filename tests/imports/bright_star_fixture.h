#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "rastrel/imports/bright_star_xml_import.h"
#include "tests/imports/template_fixture.h"

namespace rastrel::test {

/// BrightStar templates written by a test.
class BrightStarTest : public TemplateTest {
 protected:
  /// The importer of a document with one template of these children, kept by the fixture.
  CBrightStarXMLImport& Parse(std::string_view children) {
    return Read("<?xml version='1.0'?><BRIGHTSTAR><ENGRAVINGTEMPLATE>" + std::string(children) +
                "</ENGRAVINGTEMPLATE></BRIGHTSTAR>");
  }
  CBrightStarXMLImport& Read(std::string_view document, std::string_view name = "template.xml") {
    m_Path = Write(document, name);
    m_Importer = std::make_unique<CBrightStarXMLImport>(m_Path.c_str());
    return *m_Importer;
  }
  /// A record that a walk returned.
  static const tagBRIGHT_STAR_DATA* Record(void* plate) {
    return static_cast<const tagBRIGHT_STAR_DATA*>(plate);
  }
  /// How many records there are.
  static int Count(CBrightStarXMLImport& importer) {
    int count = 0;
    for (void* record = importer.GetFirstPlate(); record != nullptr;
         record = importer.GetNextPlate())
      ++count;
    return count;
  }

  std::wstring m_Path;
  std::unique_ptr<CBrightStarXMLImport> m_Importer;
};

}  // namespace rastrel::test
