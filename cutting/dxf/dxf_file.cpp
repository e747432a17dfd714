#include "cutting/dxf/dxf_file.h"

#include <utility>

#include "cutting/dxf/dxf_color.h"

namespace rastrel::cutting {
namespace {

constexpr std::string_view BinaryHead = "AutoCAD Binary DXF";

// Goes through the sections of a file once.
class Parts {
 public:
  Parts(std::string_view text, const std::string& name) : m_Text(text), m_Name(name) {}

  Expected<DxfFile> Take();

 private:
  // The next group 0, with the text and the groups from there to the one after it as its object.
  bool NextObject(DxfObject& object);
  bool Fail(int line, std::string why);
  bool TakeSection(std::string_view section);
  bool TakeVariable(const DxfGroup& variable);
  bool TakeHeader();
  bool TakeTables();
  bool TakeLayer(const DxfObject& object);
  bool TakeBlocks();
  bool TakeEntities();
  template <typename Taker>
  bool ForEach(Taker taker);
  bool Run();

  std::string_view m_Text;
  const std::string& m_Name;
  DxfGroupReader m_Reader;
  DxfFile m_File;
  Failure m_Failure;
};

bool Parts::Fail(int line, std::string why) {
  m_Failure = FailureOf(std::move(why), FailureCode::BadInput);
  m_Failure.where = m_Name;
  m_Failure.line = line;
  m_Failure.column = 1;
  return false;
}

// The reader lies after a group 0; the object's groups end before the next one.
bool Parts::NextObject(DxfObject& object) {
  object.line = m_Reader.Line();
  const std::string_view rest = m_Reader.Rest();
  for (;;) {
    DxfGroupReader ahead = m_Reader;
    const auto group = ahead.Next();
    if (!group)
      return Fail(ahead.Line(), ahead.Why().empty() ? "the file ends too early" : ahead.Why());
    if (group->code == 0) break;
    m_Reader = ahead;
  }
  object.text = rest.substr(0, rest.size() - m_Reader.Rest().size());
  return true;
}

// Calls `taker` with each object up to the section's end. The reader lies before a group 0.
template <typename Taker>
bool Parts::ForEach(Taker taker) {
  for (;;) {
    const auto group = m_Reader.Next();
    if (!group)
      return Fail(m_Reader.Line(),
                  m_Reader.Why().empty() ? "the file ends too early" : m_Reader.Why());
    if (group->code != 0) continue;
    if (group->value == "ENDSEC") return true;
    DxfObject object{.type = group->value, .text = {}};
    if (!NextObject(object) || !taker(object)) return false;
  }
}

bool Parts::TakeVariable(const DxfGroup& variable) {
  const auto value = m_Reader.Next();
  if (!value) return Fail(m_Reader.Line(), "the value of a variable is missing");
  if (variable.value == "$ACADVER") m_File.isUtf8 = value->value >= "AC1021";
  if (variable.value != "$INSUNITS") return true;
  const auto number = DxfNumber(value->value);
  if (!number) return Fail(value->line, "a number is expected here");
  m_File.unit = static_cast<int>(*number);
  return true;
}

bool Parts::TakeHeader() {
  for (;;) {
    const auto group = m_Reader.Next();
    if (!group)
      return Fail(m_Reader.Line(),
                  m_Reader.Why().empty() ? "the file ends too early" : m_Reader.Why());
    if (group->code == 0) return true;
    if (group->code == 9 && !TakeVariable(*group)) return false;
  }
}

bool Parts::TakeLayer(const DxfObject& object) {
  DxfGroups groups(object);
  const int color = groups.Whole(62, 7);
  const int flags = groups.Whole(70);
  DxfLayer layer{
      .color = groups.Has(420) ? DxfTrueColor(groups.Whole(420)) : DxfColor(std::abs(color)),
      .lineWidth = DxfLineWidth(groups.Whole(370)),
      .isHidden = color < 0 || (flags & 1) != 0};
  if (groups.HasFailed()) return Fail(groups.FaultLine(), groups.Why());
  m_File.layers.insert_or_assign(DxfKey(groups.Text(2)), std::move(layer));
  return true;
}

bool Parts::TakeTables() {
  return ForEach(
      [&](const DxfObject& object) { return object.type != "LAYER" || TakeLayer(object); });
}

bool Parts::TakeBlocks() {
  DxfBlock* block = nullptr;
  return ForEach([&](const DxfObject& object) {
    if (object.type == "BLOCK") {
      DxfGroups groups(object);
      block = &m_File.blocks[DxfKey(groups.Text(2))];
      *block = {.base = {groups.Number(10), groups.Number(20)}, .objects = {}};
      return !groups.HasFailed() || Fail(groups.FaultLine(), groups.Why());
    }
    if (object.type == "ENDBLK") {
      block = nullptr;
    } else if (block != nullptr) {
      block->objects.push_back(object);
    }
    return true;
  });
}

bool Parts::TakeEntities() {
  return ForEach([&](const DxfObject& object) {
    m_File.objects.push_back(object);
    return true;
  });
}

bool Parts::TakeSection(std::string_view section) {
  if (section == "HEADER") return TakeHeader();
  if (section == "TABLES") return TakeTables();
  if (section == "BLOCKS") return TakeBlocks();
  if (section == "ENTITIES") return TakeEntities();
  return ForEach([](const DxfObject&) { return true; });
}

bool Parts::Run() {
  if (m_Text.starts_with(BinaryHead))
    return Fail(1, "the drawing is a binary DXF file; only those that are text are read");
  if (m_Text.starts_with("\xEF\xBB\xBF")) m_Text.remove_prefix(3);
  m_Reader = DxfGroupReader(m_Text);
  bool hasSection = false;
  for (;;) {
    const auto group = m_Reader.Next();
    if (!group)
      return Fail(m_Reader.Line(),
                  m_Reader.Why().empty() ? "the file ends too early" : m_Reader.Why());
    if (group->code == 0 && group->value == "EOF") break;
    if (group->code != 0 || group->value != "SECTION") continue;
    const auto section = m_Reader.Next();
    if (!section || section->code != 2)
      return Fail(m_Reader.Line() - 1, "the name of a section is expected here");
    hasSection = true;
    if (!TakeSection(section->value)) return false;
  }
  return hasSection || Fail(1, "the file is no DXF drawing: it has no section");
}

Expected<DxfFile> Parts::Take() {
  if (!Run()) return m_Failure;
  return std::move(m_File);
}

}  // namespace

std::string DxfKey(std::string_view name) {
  std::string key(name);
  for (char& character : key)
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character + 32);
  return key;
}

double DxfLineWidth(int weight) { return weight > 0 && weight <= 1000 ? weight / 100.0 : 0; }

Expected<DxfFile> TakeDxfApart(std::string_view text, const std::string& name) {
  return Parts(text, name).Take();
}

}  // namespace rastrel::cutting
