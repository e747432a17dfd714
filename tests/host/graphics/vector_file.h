#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/graphics/graphic_loader.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/os/text.h"
#include "tests/host/graphics/graphic_files.h"

/// Vector files that are loaded into a document of their own.
namespace rastrel::graphics {

// Coordinates are rounded to 1e-5 cm.
inline constexpr double Near = 1.5e-5;

// A page of 10 by 5 cm, whose unit is a centimetre.
inline std::string Svg(const std::string& content, const std::string& attributes = "") {
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" "
         "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"10cm\" height=\"5cm\" "
         "viewBox=\"0 0 10 5\" " +
         attributes + ">" + content + "</svg>";
}

// The same page, whose unit is a centimetre and whose y grows upward.
inline std::string Eps(const std::string& body) {
  return test::EpsFile("28.346456692913385 dup scale\n" + body, "0 0 284 142");
}

class VectorFile : public testing::Test {
 protected:
  int Load(const std::string& bytes, const LoadOptions& options = {}) {
    m_Directory.Write("drawing", bytes);
    return GraphicLoader(m_Document, m_Notices).Load(m_Directory.Wide("drawing"), options);
  }
  // The loaded objects, which are the selection and all that the document has.
  std::vector<document::Object> Loaded(const std::string& bytes, const LoadOptions& options = {}) {
    for (const auto handle : std::vector(m_Document.Members(host::DocumentRoot))) {
      m_Document.Destroy(handle);
    }
    EXPECT_EQ(Load(bytes, options), 1) << Losses();
    EXPECT_EQ(m_Document.Members(host::DocumentRoot), m_Document.Selection());
    std::vector<document::Object> objects;
    for (const auto handle : m_Document.Selection()) objects.push_back(*m_Document.Find(handle));
    return objects;
  }
  // Why a drawing stays a picture; empty if it is paths.
  std::string KeptBecause(const std::string& bytes, const LoadOptions& options = {}) {
    const auto objects = Loaded(bytes, options);
    const auto* graphic =
        objects.size() == 1 ? std::get_if<document::GraphicShape>(&objects[0].shape) : nullptr;
    return graphic ? os::Utf8FromWide(graphic->reason) : "";
  }
  std::string Refusal(const std::string& bytes) {
    EXPECT_EQ(Load(bytes), 0);
    EXPECT_EQ(m_Document.ObjectCount(), 0U);
    return m_Notices.Losses().empty() ? "" : os::Utf8FromWide(m_Notices.Losses().back());
  }
  std::string Losses() const {
    std::string all;
    for (const auto& loss : m_Notices.Losses()) all += os::Utf8FromWide(loss) + "\n";
    return all;
  }

  document::Document m_Document;
  document::Notices m_Notices;
  test::ScratchDirectory m_Directory;
};

inline void ExpectBounds(const document::Object& object, double left, double bottom, double right,
                         double top, double near = Near) {
  const BOUNDS bounds = BoundsOf(object.shape, object.attributes.matrix);
  EXPECT_NEAR(bounds.xmin, left, near);
  EXPECT_NEAR(bounds.ymin, bottom, near);
  EXPECT_NEAR(bounds.xmax, right, near);
  EXPECT_NEAR(bounds.ymax, top, near);
}

// -1 for the invisible color, else red, green and blue as a number.
inline int ColorOf(const CVKColor& color) {
  if (color.IsInvisible()) return -1;
  const auto& parts = color.GetComponents();
  return static_cast<int>(parts[0]) << 16 | static_cast<int>(parts[1]) << 8 |
         static_cast<int>(parts[2]);
}
inline std::uint32_t LineKind(const document::Object& object) {
  return object.attributes.lineStyle.style & LINESTYLE_KIND;
}

}  // namespace rastrel::graphics
