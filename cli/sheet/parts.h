#pragma once

#include <memory>
#include <string>

#include "cli/sheet/package.h"

namespace rastrel::cli::sheet {

/// The parts of a package that are needed, as files below a folder of this process's own, each at
/// the place that its name tells.
class Parts {
 public:
  /// `folder` is there and empty; a native path.
  Parts(std::unique_ptr<Package> package, std::string folder, UnpackProgress progress);

  /// Whether the package has the part.
  [[nodiscard]] bool Has(const std::string& part) const { return !m_Package->Find(part).empty(); }
  /// Native path of the part's file, which is unpacked at the first call. Throws
  /// CommandError(BadInput) if the package has no such part.
  std::string Fetch(const std::string& part);
  /// Native path that the part has or would have.
  [[nodiscard]] std::string PathOf(const std::string& part) const { return m_Folder + "/" + part; }
  [[nodiscard]] const std::string& Folder() const { return m_Folder; }
  /// Of the package, for messages.
  [[nodiscard]] const std::string& Name() const { return m_Package->Name(); }

  /// Ends the command since a part is no XML that can be read: with what the XML layer found, or
  /// with `otherwise` if it found nothing.
  [[noreturn]] void RefuseXml(const std::string& part, const std::string& otherwise) const;
  /// The same with words of the caller's.
  [[noreturn]] void Refuse(const std::string& part, const std::string& why) const;

 private:
  std::unique_ptr<Package> m_Package;
  std::string m_Folder;
  UnpackProgress m_Progress;
};

/// What the XML layer found wrong last, as "3:17: why"; empty if nothing. Forgets it.
[[nodiscard]] std::string TakeXmlWords();
/// The same with the file's name in front, "xl/styles.xml:3:17: why": the part's, if it lies below
/// `folder`, a native path.
[[nodiscard]] std::string TakeXmlWords(const std::string& folder);

}  // namespace rastrel::cli::sheet
