#pragma once

#include <string>

/// Messages of runs, for those who read of a job. Texts are UTF-8, and cleaned by whoever shows
/// them.
namespace rastrel::server {

/// The text with `title` in place of each path of a file that lies in `directory`, the job's own in
/// the queue (a full native path): that file is the job's, whatever form it has there. Of a file
/// further below the name stays.
[[nodiscard]] std::string WithTitle(const std::string& text, const std::string& directory,
                                    const std::string& title);

/// The text with the names of files in place of their full paths, for those who are not to know how
/// the server's disks are laid out. A path ends with its quotation mark, or at whitespace; that of
/// a delivered file goes on to the end.
[[nodiscard]] std::string WithoutFolders(const std::string& text);

}  // namespace rastrel::server
