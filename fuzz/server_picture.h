#pragma once

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "rastrel/platform/os/private_directory.h"
#include "server/printer/picture_file.h"

namespace fuzz {

/// A picture on the disk, and the page that is made of it.
class PictureFile {
 public:
  using Maker = rastrel::Expected<void> (*)(const std::string&, const std::string&);

  PictureFile() : m_Place(*rastrel::os::PrivateDirectory::Make("rastrel-fuzz-")) {}

  /// The page; empty if there is none. Ends the process if a page that was made is no whole PDF.
  std::string Convert(const std::string& content, Maker make) const {
    std::ofstream(Path("picture"), std::ios::binary) << content;
    if (!make(Path("picture"), Path("page"))) return {};
    std::ostringstream page;
    page << std::ifstream(Path("page"), std::ios::binary).rdbuf();
    const std::string text = page.str();
    if (!text.starts_with("%PDF-") || !text.ends_with("%%EOF\n")) std::abort();
    return text;
  }

 private:
  [[nodiscard]] std::string Path(const char* name) const { return m_Place.Path() + "/" + name; }

  rastrel::os::PrivateDirectory m_Place;
};

}  // namespace fuzz
