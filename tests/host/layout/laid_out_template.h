#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/document_host.h"
#include "host/layout/template_layout.h"
#include "host/render/document_images.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/imports/llx_file_import.h"
#include "rastrel/platform/os/text.h"
#include "tests/host/render/drawn_document.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

/// Templates that tests write, laid out in a document of their own.
namespace rastrel::test {

class LaidOutTemplate : public testing::Test {
 protected:
  /// The result of a CRO template with these children of its root; the files that it names are
  /// beside it.
  Expected<void> Cro(const std::string& children) {
    m_Directory.Write("template.cro", "<ENGRAVINGTEMPLATE>" + children + "</ENGRAVINGTEMPLATE>");
    const CCROFileImport file(m_Directory.Wide("template.cro").c_str(), nullptr);
    EXPECT_TRUE(file.m_bParsed);
    return layout::ImportCro(file, m_Host, Resolver());
  }

  /// The same of an LLX template with these children of its plate.
  Expected<void> Llx(const std::string& children) {
    m_Directory.Write("template.llx", "<LLX><ENGRAVINGTEMPLATE><PLATE>" + children +
                                          "</PLATE></ENGRAVINGTEMPLATE></LLX>");
    const CLLXFileImport file(m_Directory.Wide("template.llx").c_str(), nullptr);
    EXPECT_TRUE(file.m_bParsed);
    return layout::ImportLlx(file, m_Host, Resolver());
  }

  layout::FileResolver Resolver() {
    return [this](const std::wstring& name) -> Expected<std::wstring> {
      m_Resolved.push_back(name);
      if (name.starts_with(L"..")) return FailureOf("it is outside");
      return m_Directory.Wide(os::Utf8FromWide(name));
    };
  }

  [[nodiscard]] document::Document& Doc() { return m_Host.GetDocument(); }

  /// The document's objects of one kind, in order.
  template <typename Shape>
  [[nodiscard]] std::vector<const document::Object*> All() {
    std::vector<const document::Object*> objects;
    for (const auto handle : Doc().Members(host::DocumentRoot)) {
      const document::Object* object = Doc().Find(handle);
      if (std::holds_alternative<Shape>(object->shape)) objects.push_back(object);
    }
    return objects;
  }

  /// All panes, of the plate objects in order.
  [[nodiscard]] std::vector<CWorldRect> Panes() {
    std::vector<CWorldRect> panes;
    for (const document::Object* object : All<document::PlateShape>()) {
      const auto& plate = std::get<document::PlateShape>(object->shape);
      panes.insert(panes.end(), plate.panes.begin(), plate.panes.end());
    }
    return panes;
  }

  /// The bounds of the objects that are neither plate nor text, in order.
  [[nodiscard]] std::vector<BOUNDS> Graphics() {
    std::vector<BOUNDS> bounds;
    for (const auto handle : Doc().Members(host::DocumentRoot)) {
      const document::Shape& shape = Doc().Find(handle)->shape;
      if (std::holds_alternative<document::PlateShape>(shape) ||
          std::holds_alternative<document::TextShape>(shape) ||
          std::holds_alternative<document::ArcTextShape>(shape)) {
        continue;
      }
      bounds.push_back(Doc().Bounds(handle));
    }
    return bounds;
  }

  /// The first page as SVG, and the rows of a kind that measure_svg.py finds in it.
  [[nodiscard]] std::string DrawSvg(const render::ImageOptions& options = {}) {
    const auto images = render::DrawDocument({Doc(), m_Host.GetFonts(), m_Host.GetNotices()},
                                             render::ImageFormat::Svg, options);
    if (images) return images->front();
    ADD_FAILURE() << Describe(images.Error());
    return {};
  }
  [[nodiscard]] std::vector<std::vector<double>> Measured(
      const std::string& kind, const render::ImageOptions& options = {}) {
    m_Directory.Write("measured.svg", DrawSvg(options));
    std::istringstream lines(Output("python3 -B '" RASTREL_SOURCE_DIR
                                    "/tests/host/render/measure_svg.py' '" +
                                    m_Directory.Path("measured.svg") + "'"));
    std::vector<std::vector<double>> rows;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with(kind + " ")) rows.push_back(Numbers(line));
    }
    return rows;
  }

  ScratchDirectory m_Directory;
  ScratchDirectory m_Home;
  EnvironmentGuard m_HomeName{"RASTREL_HOME", m_Home.Path()};
  document::DocumentHost m_Host;
  std::vector<std::wstring> m_Resolved;
};

inline void ExpectRect(const CWorldRect& rect, const CWorldRect& expected) {
  EXPECT_NEAR(rect.left, expected.left, 1e-9);
  EXPECT_NEAR(rect.top, expected.top, 1e-9);
  EXPECT_NEAR(rect.right, expected.right, 1e-9);
  EXPECT_NEAR(rect.bottom, expected.bottom, 1e-9);
}

}  // namespace rastrel::test
