#pragma once

#include <string>

namespace rastrel::jobspool {

/// Removes bitmaps of earlier conversions that nobody has fetched: a caller who wants a picture and
/// no preview takes the page directory and leaves the bitmap. Those are files of that native
/// directory with the name of a temporary file, "vk", six characters and "_Color.bmp", that are
/// older than an hour and whose job is gone. Failures leave them to the next run.
void RemoveForgottenBitmaps(const std::string& directory);

}  // namespace rastrel::jobspool
