#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "rastrel/imports/xml_file_import.h"
#include "rastrel/xml/failure.h"
#include "tests/support/checked_host.h"
#include "tests/support/library_fixture.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {

/// Plate files written by a test, a host that records what their import asks for, and a log of
/// their own. The palette has Red, White and Green.
class AbbTest : public ::testing::Test {
 protected:
  using Lines = HostCalls::Lines;

  AbbTest() {
    m_Host.m_Application.m_Palette[L"Red"] = CVKFullColor(0x0000FF, COLORSPACE_RGB, 0, 0);
    m_Host.m_Application.m_Palette[L"White"] = CVKFullColor(0xFFFFFF, COLORSPACE_RGB, 0, 0);
    m_Host.m_Application.m_Palette[L"Green"] = CVKFullColor(0x00FF00, COLORSPACE_RGB, 0, 0);
  }

  /// A refusal here must not reach another test.
  ~AbbTest() override { static_cast<void>(xml::TakeXmlFailure()); }

  /// Path of a new file of that content.
  std::wstring Write(std::string_view content, std::string_view name = "plates.xml") const {
    m_Scratch.Write(name, content);
    return m_Scratch.Wide(name);
  }
  /// A whole document of these plates.
  static std::string Template(std::string_view plates) {
    return "<?xml version='1.0'?><ABB><ENGRAVINGTEMPLATE><PLATES/>" + std::string(plates) +
           "</ENGRAVINGTEMPLATE></ABB>";
  }
  /// A plate of that size in inches, with what else it has.
  static std::string Plate(std::string_view width, std::string_view height,
                           std::string_view inside = {}) {
    return "<PLATE><WIDTH>" + std::string(width) + "</WIDTH><HEIGHT>" + std::string(height) +
           "</HEIGHT>" + std::string(inside) + "</PLATE>";
  }
  static std::string Text(std::string_view data, std::string_view font = "Arial.ttf",
                          std::string_view size = "0.25") {
    return "<TEXT data='" + std::string(data) + "'><FONT name='" + std::string(font) + "' size='" +
           std::string(size) + "'/></TEXT>";
  }
  /// Parses and imports a document of these plates, and returns ImportXMLFile's result.
  int Import(std::string_view plates) {
    return CXMLFileImport(Write(Template(plates)).c_str()).ImportXMLFile();
  }
  HostCalls& Calls() { return m_Host.m_Calls; }
  /// The log texts of this test.
  std::string Log() const { return m_Library.LogTextsBehind(m_LogMark); }

  LibraryRoot m_Library;
  /// The log finds its place by settings that are not part of an import, so it is opened before.
  std::size_t m_LogMark = m_Library.LogMark();
  ScratchDirectory m_Scratch;
  CheckedHost m_Host;
};

}  // namespace rastrel::test
