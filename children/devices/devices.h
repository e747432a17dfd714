#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "children/devices/pattern.h"
#include "rastrel/platform/os/expected.h"

/// Where the pages for a printer's name go: the file "devices.txt" of the data root. The format is
/// described in docs/formats/devices.md.
namespace rastrel::devices {

/// How a device takes its pages.
enum class DeviceKind {
  File,     ///< a file in a directory, which stays there
  Command,  ///< a program that is given a file, which is removed when it has ended
};

/// How a page's file is written.
enum class FileFormat { Tiff, Png, Pdf };

/// How a page's file is compressed. Not every format knows each.
enum class Compression { Lzw, Deflate, None };

/// One section of the file.
struct Device {
  std::string printer;   ///< the section's name; "*" takes every name that has no section
  std::size_t line = 0;  ///< of the section's name, counted from 1
  DeviceKind kind = DeviceKind::File;
  FileFormat format = FileFormat::Tiff;
  Compression compression = Compression::Lzw;
  Pattern pattern;               ///< kind File: full path of the file; always begins with a root
  bool overwrite = false;        ///< kind File: replace a file of that name
  std::vector<Pattern> command;  ///< kind Command: the program and its arguments
  unsigned timeoutSeconds = 0;   ///< kind Command: the program is ended after that; 0 is never
};

/// "tif", "png" or "pdf".
[[nodiscard]] const char* ExtensionOf(FileFormat format);

/// The compression of a section that names none.
[[nodiscard]] Compression UsualCompression(FileFormat format);

/// Reads the text of a devices file. The failure's reason begins with "line N: ".
[[nodiscard]] Expected<std::vector<Device>> ReadDevices(std::string_view text);

/// The section of that name, else the one for "*", else null. An empty name takes "*".
[[nodiscard]] const Device* FindDevice(const std::vector<Device>& devices,
                                       std::string_view printer);

}  // namespace rastrel::devices
