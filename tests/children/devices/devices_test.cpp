#include "children/devices/devices.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace rastrel::devices {
namespace {

const std::string FileDevice = "[P]\nkind = file\nformat = tiff\npattern = {output}/{job}.tif\n";

std::string ReasonOf(const std::string& text) {
  const auto devices = ReadDevices(text);
  return devices ? "" : Describe(devices.Error());
}

TEST(ReadDevices, the_shipped_file_holds_the_shipped_printers) {
  std::ifstream stream(std::string(RASTREL_SOURCE_DIR) + "/share/devices.txt");
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  const auto devices = ReadDevices(text);
  ASSERT_TRUE(devices) << Describe(devices.Error());
  const std::pair<const char*, FileFormat> shipped[] = {
      {"KVI Tiff Screen Preview", FileFormat::Tiff},
      {"PNG files", FileFormat::Png},
      {"PDF files", FileFormat::Pdf},
      {"*", FileFormat::Tiff}};
  ASSERT_EQ(devices->size(), std::size(shipped));
  for (const auto& [name, format] : shipped) {
    const Device* device = FindDevice(*devices, name);
    ASSERT_TRUE(device) << name;
    EXPECT_EQ(device->printer, name);
    EXPECT_EQ(device->kind, DeviceKind::File);
    EXPECT_EQ(device->format, format);
    EXPECT_FALSE(device->overwrite);
  }
}

TEST(ReadDevices, the_documents_example_is_valid) {
  std::ifstream stream(std::string(RASTREL_SOURCE_DIR) + "/docs/formats/devices.md");
  const std::string page{std::istreambuf_iterator<char>(stream), {}};
  const std::size_t start = page.find("```ini\n") + 7;
  const auto devices = ReadDevices(page.substr(start, page.find("```", start) - start));
  ASSERT_TRUE(devices) << Describe(devices.Error());
  EXPECT_EQ(devices->size(), 4u);
  EXPECT_EQ(FindDevice(*devices, "Office printer")->timeoutSeconds, 120u);
}

TEST(ReadDevices, a_command_is_split_into_words_with_their_fields) {
  const auto devices = ReadDevices(
      "; comment\n[Office]\r\nkind = command\nformat=pdf\ncommand = /bin/lp -d 'my queue' "
      "\"{job} x\" {file}\ntimeout = 30\n");
  ASSERT_TRUE(devices) << Describe(devices.Error());
  const Device& device = devices->front();
  EXPECT_EQ(device.kind, DeviceKind::Command);
  EXPECT_EQ(device.timeoutSeconds, 30u);
  ASSERT_EQ(device.command.size(), 5u);
  FieldValues values;
  values.job = "a 'b' c";
  values.file = "/tmp/x.pdf";
  EXPECT_EQ(device.command[2].Expand(values), "my queue");
  EXPECT_EQ(device.command[3].Expand(values), "a 'b' c x");
  EXPECT_EQ(device.command[4].Expand(values), "/tmp/x.pdf");
}

TEST(ReadDevices, overwrite_is_off_unless_it_says_yes) {
  EXPECT_FALSE(ReadDevices(FileDevice)->front().overwrite);
  EXPECT_FALSE(ReadDevices(FileDevice + "overwrite = no\n")->front().overwrite);
  EXPECT_TRUE(ReadDevices(FileDevice + "overwrite = yes\n")->front().overwrite);
}

TEST(ReadDevices, a_file_without_a_compression_has_the_formats_usual_one) {
  const std::string file = "[P]\nkind = file\npattern = {output}/x\nformat = ";
  EXPECT_EQ(ReadDevices(file + "tiff\n")->front().compression, Compression::Lzw);
  EXPECT_EQ(ReadDevices(file + "png\n")->front().compression, Compression::Deflate);
  EXPECT_EQ(ReadDevices(file + "pdf\n")->front().compression, Compression::Deflate);
}

TEST(ReadDevices, the_compression_is_the_devices_choice) {
  const std::pair<const char*, Compression> words[] = {
      {"lzw", Compression::Lzw}, {"deflate", Compression::Deflate}, {"none", Compression::None}};
  for (const char* format : {"tiff", "png", "pdf"}) {
    for (const auto& [word, compression] : words) {
      const std::string value = std::string("compression = ") + word + "\n";
      const std::string kinds[] = {
          std::string("[P]\n") + value + "kind = file\npattern = {output}/x\nformat = " + format,
          std::string("[P]\n") + value + "kind = command\ncommand = lp\nformat = " + format};
      for (const std::string& text : kinds) {
        const auto devices = ReadDevices(text);
        if (compression == Compression::Lzw && std::string(format) != "tiff") {
          EXPECT_EQ(ReasonOf(text), "line 2: 'lzw' is for the format 'tiff' alone");
        } else {
          ASSERT_TRUE(devices) << text;
          EXPECT_EQ(devices->front().compression, compression) << text;
        }
      }
    }
  }
}

TEST(ReadDevices, an_unknown_compression_is_named_with_its_line) {
  EXPECT_EQ(ReasonOf(FileDevice + "compression = jpeg\n"),
            "line 5: 'jpeg' is no value of 'compression' (lzw, deflate, none)");
  EXPECT_EQ(ReasonOf(FileDevice + "compression = LZW\n"),
            "line 5: 'LZW' is no value of 'compression' (lzw, deflate, none)");
  EXPECT_EQ(ReasonOf(FileDevice + "compression =\n"), "line 5: the key 'compression' has no value");
}

TEST(ReadDevices, failures_say_line_and_reason) {
  EXPECT_EQ(ReasonOf("kind = file\n"), "line 1: a key before the first '[printer]'");
  EXPECT_EQ(ReasonOf("[]\n"), "line 1: a printer without a name");
  EXPECT_EQ(ReasonOf("[P\n"), "line 1: a printer's name has no closing ']'");
  EXPECT_EQ(ReasonOf("[P]\n"), "line 1: the printer 'P' has no 'kind'");
  EXPECT_EQ(ReasonOf("[P]\nkind = file\n"), "line 1: the printer 'P' has no 'format'");
  EXPECT_EQ(ReasonOf("[P]\nkind = file\nformat = png\n"),
            "line 1: the printer 'P' has no 'pattern'");
  EXPECT_EQ(ReasonOf("[P]\nkind = command\nformat = png\n"),
            "line 1: the printer 'P' has no 'command'");
  EXPECT_EQ(ReasonOf("[P]\nkind = tape\nformat = png\n"),
            "line 2: 'tape' is no value of 'kind' (file, command)");
  EXPECT_EQ(ReasonOf("[P]\nkind = file\nformat = gif\n"),
            "line 3: 'gif' is no value of 'format' (tiff, png, pdf)");
  EXPECT_EQ(ReasonOf("[P]\nstray\n"), "line 2: 'stray' is neither '[printer]' nor 'key = value'");
  EXPECT_EQ(ReasonOf("[P]\nsize = 3\n"), "line 2: unknown key 'size'");
  EXPECT_EQ(ReasonOf("[P]\nkind =\n"), "line 2: the key 'kind' has no value");
  EXPECT_EQ(ReasonOf("[P]\nkind = file\nkind = file\n"),
            "line 3: the key 'kind' stands here twice");
  EXPECT_EQ(ReasonOf(FileDevice + FileDevice), "line 5: the printer 'P' stands in line 1 too");
  EXPECT_EQ(ReasonOf(FileDevice + "overwrite = maybe\n"),
            "line 5: 'maybe' is no value of 'overwrite' (no, yes)");
  EXPECT_EQ(ReasonOf(FileDevice + "command = x\n"),
            "line 5: 'command' means nothing for the kind 'file'");
  EXPECT_EQ(ReasonOf(FileDevice + "timeout = 5\n"),
            "line 5: 'timeout' means nothing for the kind 'file'");
  EXPECT_EQ(ReasonOf(std::string("[P]\nki\0nd\n", 10)), "line 2: holds a zero byte");
}

TEST(ReadDevices, failures_of_patterns_and_commands_say_line_and_reason) {
  const std::string file = "[P]\nkind = file\nformat = png\npattern = ";
  EXPECT_EQ(ReasonOf(file + "{output}/{colour}.png"), "line 4: unknown field '{colour}'");
  EXPECT_EQ(ReasonOf(file + "{output}/{job.png"), "line 4: a '{' without its '}'");
  EXPECT_EQ(ReasonOf(file + "{output}/job}.png"), "line 4: a '}' without its '{'");
  EXPECT_EQ(ReasonOf(file + "{output}/{file}"), "line 4: '{file}' belongs in a command");
  EXPECT_EQ(ReasonOf(file + "{job}.png"), "line 4: a pattern begins with '{output}' or '/'");
  EXPECT_EQ(ReasonOf(file + "{output}/"), "line 4: a pattern ends in a file's name");
  EXPECT_EQ(ReasonOf(file + "{output}"), "line 4: a pattern ends in a file's name");
  const std::string command = "[P]\nkind = command\nformat = png\ncommand = ";
  EXPECT_EQ(ReasonOf(command + "lp 'x"), "line 4: a quote ' is not closed");
  EXPECT_EQ(ReasonOf(command + "''"), "line 4: a command without a program");
  EXPECT_EQ(ReasonOf(command + "lp {x}"), "line 4: unknown field '{x}'");
  EXPECT_EQ(ReasonOf(command + "lp\ntimeout = soon"),
            "line 5: 'soon' is no number of seconds from 0 to 604800");
  EXPECT_EQ(ReasonOf(command + "lp\ntimeout = 604801"),
            "line 5: '604801' is no number of seconds from 0 to 604800");
  EXPECT_EQ(ReasonOf(command + "lp\noverwrite = yes"),
            "line 5: 'overwrite' means nothing for the kind 'command'");
}

TEST(FindDevice, the_star_takes_printers_without_a_section) {
  const auto devices = ReadDevices("[*]\nkind=file\nformat=png\npattern=/x\n" + FileDevice);
  ASSERT_TRUE(devices);
  EXPECT_EQ(FindDevice(*devices, "P")->printer, "P");
  EXPECT_EQ(FindDevice(*devices, "p")->printer, "*");
  EXPECT_EQ(FindDevice(*devices, "")->printer, "*");
  const auto alone = ReadDevices(FileDevice);
  EXPECT_EQ(FindDevice(*alone, "Q"), nullptr);
  EXPECT_EQ(FindDevice(*alone, ""), nullptr);
}

TEST(ReadDevices, an_empty_file_has_no_devices) {
  EXPECT_TRUE(ReadDevices("")->empty());
  EXPECT_TRUE(ReadDevices("# only words")->empty());
}

}  // namespace
}  // namespace rastrel::devices
