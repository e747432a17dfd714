#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

#include "pages/page_info.h"

/// Tools of the output engine's tests: directories that go away, page directories made by hand,
/// and the engine as a process.
namespace rastrel::odalis::testing {

/// A fresh directory, removed with all in it at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  [[nodiscard]] const std::string& Path() const { return m_Path; }

 private:
  std::string m_Path;
};

void WriteFile(const std::string& path, const std::string& content);
[[nodiscard]] std::string ReadFile(const std::string& path);
/// Names in a directory, sorted, hidden ones too; empty if there is no such directory.
[[nodiscard]] std::vector<std::string> NamesIn(const std::string& directory);

/// A sample of the test picture: another value for each neighbour, plane and row.
[[nodiscard]] std::uint8_t SampleAt(unsigned x, unsigned y, unsigned plane);

/// A description of a page of the test picture whose planes lie in "pixels.ppm" or "pixels.pgm"
/// (gray, rgb), or in "plane-N.tif" each (the others).
[[nodiscard]] pages::PageInfo PageOf(pages::PageColor color, const std::vector<std::string>& planes,
                                     unsigned width, unsigned height);
/// Writes the page's files and its ".info" into the directory, with sizes and sums filled in.
void WritePage(const std::string& directory, pages::PageInfo& info);
/// An RGB page of 40 by 30 pixels.
pages::PageInfo WriteRgbPage(const std::string& directory, const std::string& job,
                             unsigned page = 1, const std::string& printer = "");
/// The description of a file on the disk.
[[nodiscard]] pages::PageFile DescribeFile(const std::string& directory, const std::string& name);
/// Writes a gray TIFF plane of the test picture.
void WriteTiffPlane(const std::string& path, unsigned width, unsigned height, unsigned plane);

/// A picture that was read back.
struct Picture {
  unsigned width = 0;
  unsigned height = 0;
  unsigned samples = 0;
  std::vector<std::uint8_t> pixels;  ///< samples side by side
  double xResolution = 0;            ///< pixels per inch
  double yResolution = 0;
  unsigned photometric = 0;  ///< TIFF
  unsigned inkSet = 0;       ///< TIFF
  std::string inkNames;      ///< TIFF, with a '|' after each name
};
/// Read through the TIFF and PNG libraries; a picture without pixels if that fails.
[[nodiscard]] Picture ReadTiff(const std::string& path);
[[nodiscard]] Picture ReadPng(const std::string& path);

/// One entry of a CFM2 text.
struct Entry {
  std::string title;
  std::string type = "reprint";
  int copies = 1;
};
/// The text as the library writes it.
[[nodiscard]] std::string Cfm2(const std::string& directory, const std::vector<Entry>& entries);

/// The engine's program, started in a data root.
class EngineRun {
 public:
  /// `settings`: "NAME=value" each, besides RASTREL_HOME, and PATH unless one of them is that.
  EngineRun(const std::string& root, const std::string& input,
            const std::vector<std::string>& settings = {}, bool planar = false,
            bool closeOutput = false);
  ~EngineRun();
  EngineRun(const EngineRun&) = delete;
  EngineRun& operator=(const EngineRun&) = delete;

  /// Writes to its input; only with an empty `input` at construction and before Finish.
  void Write(const std::string& text);
  void CloseInput();
  /// Kills it; Finish is called afterwards all the same.
  void Kill();
  /// Waits for the end of its standard error and of itself.
  void Finish();
  /// Waits until a line that begins so has come. False if the stream ended before.
  [[nodiscard]] bool WaitForLine(const std::string& beginning);

  [[nodiscard]] pid_t Id() const { return m_Id; }
  /// Exit status, or minus the signal's number. After Finish.
  [[nodiscard]] int Status() const { return m_Status; }
  /// The most memory that it held, in KiB. After Finish.
  [[nodiscard]] long PeakMemory() const { return m_PeakMemory; }
  /// Everything it reported so far.
  [[nodiscard]] const std::string& Report() const { return m_Report; }
  /// The text after the tag of each line that begins with it.
  [[nodiscard]] std::vector<std::string> Lines(const std::string& tag) const;

 private:
  bool ReadMore();

  pid_t m_Id = -1;
  int m_Input = -1;
  int m_Error = -1;
  int m_Status = -1;
  long m_PeakMemory = 0;
  std::string m_Report;
};

}  // namespace rastrel::odalis::testing
