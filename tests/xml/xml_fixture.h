#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"
#include "tests/support/library_fixture.h"

namespace rastrel::test {

/// Documents in files of a directory of their own, and why they are refused.
class XmlTest : public LibraryTest {
 protected:
  /// Library path of a new file with that content.
  std::wstring FileOf(std::string_view content, const std::string& name = "document.xml") {
    m_Files.Write(name, content);
    return m_Files.Wide() + L"/" + os::WideFromUtf8(name);
  }
  XmlNode LoadFile(std::string_view content) { return LoadXmlFile(FileOf(content)); }

  /// Loads a text that must be a document.
  static XmlNode Load(std::wstring_view text) {
    XmlNode root = LoadXmlString(text);
    EXPECT_TRUE(static_cast<bool>(root)) << Reason();
    return root;
  }
  /// The latest reason, in UTF-8; empty if there is none.
  static std::string Reason() {
    const auto state = xml::TakeXmlFailure();
    return state ? std::string() : Describe(state.Error());
  }
  /// Why a text is refused; empty if it is not.
  static std::string ReasonOf(std::wstring_view text) {
    if (LoadXmlString(text)) return {};
    return Reason();
  }
  /// The same for a file's content.
  std::string ReasonOfFile(std::string_view content) {
    if (LoadFile(content)) return {};
    return Reason();
  }
  static std::wstring Text(const XmlNode& node) {
    std::wstring text = L"(none)";
    NodeText(node, text);
    return text;
  }
  static std::wstring Attribute(const XmlNode& node, std::wstring_view name) {
    std::wstring value = L"(none)";
    AttributeString(node, name, value);
    return value;
  }

  ScratchDirectory m_Files;
};

}  // namespace rastrel::test
