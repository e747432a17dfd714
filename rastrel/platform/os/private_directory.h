#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// A directory for temporary work that only this user may look into. It is removed with all in it
/// when this object ends. Move-only; a moved-from one removes nothing.
class PrivateDirectory {
 public:
  /// Called with the path before the directory is made; false cancels it. For who has to be able
  /// to remove the directory if this process ends first.
  using BeforeMaking = std::function<bool(const std::string& path)>;

  /// Makes one in $TMPDIR if that is a full path, else in /tmp. Its name is `prefix` and 16 random
  /// digits. Fails if it can't be made, and with ECANCELED if `before` returned false.
  [[nodiscard]] static Expected<PrivateDirectory> Make(std::string_view prefix,
                                                       const BeforeMaking& before = {});
  ~PrivateDirectory();
  PrivateDirectory(PrivateDirectory&& other) noexcept;
  PrivateDirectory& operator=(PrivateDirectory&&) = delete;
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  /// Full native path, without a closing slash. Empty once it was kept, removed or moved from.
  [[nodiscard]] const std::string& Path() const { return m_Path; }

  /// Leaves the directory and all in it where they are, from now on for good.
  void Keep() { m_Path.clear(); }
  /// Removes it now. The failure names the file that can't be removed; nothing is tried again
  /// later.
  [[nodiscard]] Expected<void> Remove();

 private:
  explicit PrivateDirectory(std::string path);

  std::string m_Path;
};

}  // namespace rastrel::os
