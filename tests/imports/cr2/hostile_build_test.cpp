// Records of any content are built in time and memory in proportion, and crash nothing.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>

#include "rastrel/imports/cr2/template_build.h"
#include "rastrel/platform/os/path.h"
#include "tests/imports/template_fixture.h"

namespace {

using namespace rastrel::imports;
using namespace rastrel::test;

/// A host that keeps no lines, and a template of 40 by 20 with plates of 2 by 1.
class HostileBuild : public TemplateTest {
 protected:
  HostileBuild() {
    m_Records.tableSize.placement = Place(7, 40, 20);
    m_Records.plateTemplate.placement = Place(1, 2, 1);
    m_Records.plates.resize(1);
    Calls().Limit(0);
  }
  static CR2_PLACEMENT Place(int origin, double width, double height) {
    return {
        .origin = origin, .x = 0, .y = 0, .width = width, .height = height, .constrained = false};
  }
  CR2_TEXT_FRAME& AddText(const std::wstring& text, std::size_t spans = 1) {
    auto& frames = m_Records.plates.front().textFrames;
    frames.emplace_back();
    frames.back().placement = Place(7, 2, 1);
    frames.back().texts.resize(1);
    frames.back().texts.front().lines.resize(1);
    CR2_SPAN span;
    span.font.face = L"Arial";
    span.text = text;
    frames.back().texts.front().lines.front().spans.assign(spans, span);
    return frames.back();
  }
  TemplateImport Begin() {
    return BeginTemplateImport({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application}, L"Import");
  }
  /// Both generations build the same records.
  void Build() {
    TemplateImport cr2 = Begin();
    BuildCr2(cr2, m_Records);
    TemplateImport zml = Begin();
    BuildZml(zml, m_Records, L"");
  }

  Cr2Document m_Records;
};

TEST_F(HostileBuild, a_hundred_thousand_plates) {
  m_Records.plates.resize(100'000);
  Build();
}

TEST_F(HostileBuild, twenty_thousand_frames_of_as_many_graphics_that_are_not_there) {
  for (int graphic = 0; graphic < 20'000; ++graphic) {
    const std::wstring name = L"graphic " + std::to_wstring(graphic);
    m_Records.graphics.push_back({.name = name, .file = L"/none/" + name});
    m_Records.plates.front().graphicFrames.emplace_back().graphic = name;
  }
  Build();
}

TEST_F(HostileBuild, a_hundred_thousand_spans_under_as_many_filter_colors) {
  CR2_TEXT_FRAME& frame = AddText(L"A", 100'000);
  for (int color = 0; color < 100'000; ++color)
    m_Records.outputFilter.push_back(std::make_unique<CVKColor>(color, COLORSPACE_RGB, 0, 0));
  for (CR2_SPAN& span : frame.texts.front().lines.front().spans)
    span.font.colors.fill = std::make_unique<CVKColor>(0x800000, COLORSPACE_RGB, 0, 0);
  Build();
}

TEST_F(HostileBuild, a_text_of_ten_million_characters_full_of_references) {
  std::wstring text;
  while (text.size() < 10'000'000) text += L"&#65;&&unknown;&amp;";
  AddText(text);
  Build();
}

TEST_F(HostileBuild, numbers_that_are_none_and_numbers_beyond_all_measure) {
  const std::wstring path = Write("<svg/>", "a.svg");
  m_Records.graphics.push_back({.name = L"a", .file = path});
  m_Records.cutLine.present = 1.0;
  m_Records.cutLine.file = path;
  constexpr double Numbers[] = {std::numeric_limits<double>::quiet_NaN(),
                                std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::max(),
                                std::numeric_limits<double>::denorm_min(),
                                -1.0,
                                0.0};
  for (const double number : Numbers) {
    for (int origin = 0; origin <= 9; ++origin) {
      const CR2_PLACEMENT place{.origin = origin,
                                .x = number,
                                .y = number,
                                .width = number,
                                .height = number,
                                .constrained = origin % 2 == 0};
      m_Records.plates.front() = {};
      m_Records.plates.front().graphicFrames.emplace_back().graphic = L"a";
      m_Records.plates.front().graphicFrames.back().placement = place;
      AddText(L"A").placement = place;
      m_Records.plates.front().textFrames.front().texts.front().font.size = number;
      m_Records.plates.front().textFrames.front().texts.front().font.lineHeight = number;
      m_Records.cutLine.placement = place;
      m_Records.cutLine.strokeWidth = number;
      m_Records.plateTemplate.margins = {number, number, number, number};
      Build();
    }
  }
  m_Records.tableSize.margins = {Numbers[0], Numbers[0], Numbers[0], Numbers[0]};
  Build();
}

TEST_F(HostileBuild, a_graphic_that_is_a_fifo_is_not_opened_by_the_library) {
  // Opening it for reading would wait for a writer for ever.
  const std::wstring path = m_Scratch.Wide("fifo.svg");
  ASSERT_EQ(::mkfifo(rastrel::os::ToNative(path).c_str(), 0600), 0);
  m_Records.graphics.push_back({.name = L"fifo", .file = path});
  m_Records.plates.front().graphicFrames.emplace_back().graphic = L"fifo";
  Build();
}

}  // namespace
