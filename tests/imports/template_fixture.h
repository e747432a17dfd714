#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "rastrel/xml/failure.h"
#include "tests/support/checked_host.h"
#include "tests/support/library_fixture.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {

/// Template files written by a test, a host that records the calls of their import, and a log of
/// their own.
class TemplateTest : public ::testing::Test {
 protected:
  /// A refusal here must not reach another test.
  ~TemplateTest() override { static_cast<void>(xml::TakeXmlFailure()); }

  /// Path of a new file of that content.
  std::wstring Write(std::string_view content, std::string_view name) const {
    m_Scratch.Write(name, content);
    return m_Scratch.Wide(name);
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
