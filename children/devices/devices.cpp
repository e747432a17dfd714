#include "children/devices/devices.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <utility>

#include "rastrel/platform/os/whitespace.h"

namespace rastrel::devices {
namespace {

constexpr std::string_view Whitespace = " \t\r\v\f";
constexpr unsigned MaximumTimeout = 7 * 24 * 60 * 60;

Failure AtLine(std::size_t line, const std::string& what) {
  return FailureOf("line " + std::to_string(line) + ": " + what);
}

std::string Quoted(std::string_view text) { return "'" + std::string(text.substr(0, 200)) + "'"; }

/// A section as it is in the file.
struct Section {
  std::string name;
  std::size_t line = 0;
  struct Value {
    std::string text;
    std::size_t line = 0;
  };
  std::map<std::string, Value, std::less<>> values;
};

constexpr std::string_view KnownKeys[] = {"kind",      "format",  "compression", "pattern",
                                          "overwrite", "command", "timeout"};

Expected<Section> OpenSection(std::string_view line, std::size_t number) {
  if (line.back() != ']') return AtLine(number, "a printer's name has no closing ']'");
  const std::string_view name = os::Trim(line.substr(1, line.size() - 2), Whitespace);
  if (name.empty()) return AtLine(number, "a printer without a name");
  Section section;
  section.name = name;
  section.line = number;
  return section;
}

Expected<void> TakeValue(Section& section, std::string_view line, std::size_t number) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) {
    return AtLine(number, Quoted(line) + " is neither '[printer]' nor 'key = value'");
  }
  const std::string_view key = os::Trim(line.substr(0, equals), Whitespace);
  const std::string_view value = os::Trim(line.substr(equals + 1), Whitespace);
  if (std::find(std::begin(KnownKeys), std::end(KnownKeys), key) == std::end(KnownKeys)) {
    return AtLine(number, "unknown key " + Quoted(key));
  }
  if (value.empty()) return AtLine(number, "the key " + Quoted(key) + " has no value");
  const bool added =
      section.values.try_emplace(std::string(key), Section::Value{std::string(value), number})
          .second;
  if (!added) return AtLine(number, "the key " + Quoted(key) + " stands here twice");
  return {};
}

Expected<std::vector<Section>> ReadSections(std::string_view text) {
  std::vector<Section> sections;
  std::map<std::string, std::size_t> lines;
  std::size_t number = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = os::Trim(text.substr(0, end), Whitespace);
    text.remove_prefix(std::min(end + 1, text.size()));
    ++number;
    if (line.empty() || line.front() == '#' || line.front() == ';') continue;
    if (line.find('\0') != std::string_view::npos) return AtLine(number, "holds a zero byte");
    if (line.front() == '[') {
      auto section = OpenSection(line, number);
      if (!section) return section.Error();
      const auto [earlier, added] = lines.try_emplace(section->name, number);
      if (!added) {
        return AtLine(number, "the printer " + Quoted(section->name) + " stands in line " +
                                  std::to_string(earlier->second) + " too");
      }
      sections.push_back(std::move(*section));
    } else if (sections.empty()) {
      return AtLine(number, "a key before the first '[printer]'");
    } else if (auto taken = TakeValue(sections.back(), line, number); !taken) {
      return taken.Error();
    }
  }
  return sections;
}

const Section::Value* ValueOf(const Section& section, std::string_view key) {
  const auto found = section.values.find(key);
  return found == section.values.end() ? nullptr : &found->second;
}

/// A value that must be one of some words; the first one is that of a missing key if `optional`.
template <typename Choice, std::size_t Count>
Expected<Choice> ChoiceOf(const Section& section, std::string_view key, bool optional,
                          const std::pair<std::string_view, Choice> (&words)[Count]) {
  const Section::Value* value = ValueOf(section, key);
  if (!value && optional) return words[0].second;
  if (!value) {
    return AtLine(section.line, "the printer " + Quoted(section.name) + " has no " + Quoted(key));
  }
  std::string known;
  for (const auto& [word, choice] : words) {
    if (word == value->text) return choice;
    known += (known.empty() ? "" : ", ") + std::string(word);
  }
  return AtLine(value->line,
                Quoted(value->text) + " is no value of " + Quoted(key) + " (" + known + ")");
}

Expected<void> TakePattern(const Section& section, Device& device) {
  const Section::Value* value = ValueOf(section, "pattern");
  if (!value) {
    return AtLine(section.line, "the printer " + Quoted(section.name) + " has no 'pattern'");
  }
  auto pattern = Pattern::Read(value->text);
  if (!pattern) return AtLine(value->line, Describe(pattern.Error()));
  if (pattern->Has(Field::File)) return AtLine(value->line, "'{file}' belongs in a command");
  if (value->text.front() != '/' && !pattern->BeginsWith(Field::Output)) {
    return AtLine(value->line, "a pattern begins with '{output}' or '/'");
  }
  if (value->text.back() == '/' || value->text == "{output}") {
    return AtLine(value->line, "a pattern ends in a file's name");
  }
  device.pattern = std::move(*pattern);
  return {};
}

Expected<void> TakeCommand(const Section& section, Device& device) {
  const Section::Value* value = ValueOf(section, "command");
  if (!value) {
    return AtLine(section.line, "the printer " + Quoted(section.name) + " has no 'command'");
  }
  auto words = SplitWords(value->text);
  if (!words) return AtLine(value->line, Describe(words.Error()));
  for (const std::string& word : *words) {
    auto pattern = Pattern::Read(word);
    if (!pattern) return AtLine(value->line, Describe(pattern.Error()));
    device.command.push_back(std::move(*pattern));
  }
  if (words->front().empty()) return AtLine(value->line, "a command without a program");
  return {};
}

Expected<void> TakeTimeout(const Section& section, Device& device) {
  const Section::Value* value = ValueOf(section, "timeout");
  if (!value) return {};
  const char* end = value->text.data() + value->text.size();
  const auto [stop, error] = std::from_chars(value->text.data(), end, device.timeoutSeconds);
  if (error != std::errc() || stop != end || device.timeoutSeconds > MaximumTimeout) {
    return AtLine(value->line, Quoted(value->text) + " is no number of seconds from 0 to " +
                                   std::to_string(MaximumTimeout));
  }
  return {};
}

Expected<void> TakeCompression(const Section& section, Device& device) {
  device.compression = UsualCompression(device.format);
  const Section::Value* value = ValueOf(section, "compression");
  if (!value) return {};
  const std::pair<std::string_view, Compression> words[] = {
      {"lzw", Compression::Lzw}, {"deflate", Compression::Deflate}, {"none", Compression::None}};
  auto compression = ChoiceOf<Compression>(section, "compression", false, words);
  if (!compression) return compression.Error();
  if (*compression == Compression::Lzw && device.format != FileFormat::Tiff) {
    return AtLine(value->line, Quoted(value->text) + " is for the format 'tiff' alone");
  }
  device.compression = *compression;
  return {};
}

/// A key of the other kind is a mistake that would otherwise have no effect and no message.
Expected<void> RefuseKeys(const Section& section, std::initializer_list<const char*> keys,
                          const char* kind) {
  for (const char* key : keys) {
    if (const Section::Value* value = ValueOf(section, key)) {
      return AtLine(value->line, Quoted(key) + " means nothing for the kind '" + kind + "'");
    }
  }
  return {};
}

Expected<void> TakeFileKeys(const Section& section, Device& device) {
  if (auto refused = RefuseKeys(section, {"command", "timeout"}, "file"); !refused) return refused;
  const std::pair<std::string_view, bool> answers[] = {{"no", false}, {"yes", true}};
  auto overwrite = ChoiceOf<bool>(section, "overwrite", true, answers);
  if (!overwrite) return overwrite.Error();
  device.overwrite = *overwrite;
  return TakePattern(section, device);
}

Expected<void> TakeCommandKeys(const Section& section, Device& device) {
  if (auto refused = RefuseKeys(section, {"pattern", "overwrite"}, "command"); !refused) {
    return refused;
  }
  if (auto taken = TakeTimeout(section, device); !taken) return taken;
  return TakeCommand(section, device);
}

Expected<Device> DeviceOf(const Section& section) {
  const std::pair<std::string_view, DeviceKind> kinds[] = {{"file", DeviceKind::File},
                                                           {"command", DeviceKind::Command}};
  const std::pair<std::string_view, FileFormat> formats[] = {
      {"tiff", FileFormat::Tiff}, {"png", FileFormat::Png}, {"pdf", FileFormat::Pdf}};
  Device device;
  device.printer = section.name;
  device.line = section.line;
  auto kind = ChoiceOf<DeviceKind>(section, "kind", false, kinds);
  if (!kind) return kind.Error();
  device.kind = *kind;
  auto format = ChoiceOf<FileFormat>(section, "format", false, formats);
  if (!format) return format.Error();
  device.format = *format;
  if (auto taken = TakeCompression(section, device); !taken) return taken.Error();
  auto taken = device.kind == DeviceKind::File ? TakeFileKeys(section, device)
                                               : TakeCommandKeys(section, device);
  if (!taken) return taken.Error();
  return device;
}

}  // namespace

const char* ExtensionOf(FileFormat format) {
  switch (format) {
    case FileFormat::Tiff: return "tif";
    case FileFormat::Png: return "png";
    case FileFormat::Pdf: return "pdf";
  }
  return "";
}

Compression UsualCompression(FileFormat format) {
  return format == FileFormat::Tiff ? Compression::Lzw : Compression::Deflate;
}

Expected<std::vector<Device>> ReadDevices(std::string_view text) {
  auto sections = ReadSections(text);
  if (!sections) return sections.Error();
  std::vector<Device> devices;
  for (const Section& section : *sections) {
    auto device = DeviceOf(section);
    if (!device) return device.Error();
    devices.push_back(std::move(*device));
  }
  return devices;
}

const Device* FindDevice(const std::vector<Device>& devices, std::string_view printer) {
  const Device* fallback = nullptr;
  for (const Device& device : devices) {
    if (!printer.empty() && device.printer == printer) return &device;
    if (device.printer == "*") fallback = &device;
  }
  return fallback;
}

}  // namespace rastrel::devices
