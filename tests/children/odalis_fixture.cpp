#include "tests/children/odalis_fixture.h"

#include <fcntl.h>
#include <png.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "pages/sha256.h"

namespace rastrel::odalis::testing {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory() {
  std::string name = (fs::temp_directory_path() / "odalis-test-XXXXXX").string();
  if (mkdtemp(name.data())) m_Path = name;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code error;
  fs::remove_all(m_Path, error);
}

void WriteFile(const std::string& path, const std::string& content) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> NamesIn(const std::string& directory) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory, error)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::uint8_t SampleAt(unsigned x, unsigned y, unsigned plane) {
  return static_cast<std::uint8_t>(x * 7 + y * 13 + plane * 61 + x * y);
}

pages::PageFile DescribeFile(const std::string& directory, const std::string& name) {
  const std::string content = ReadFile(directory + "/" + name);
  pages::Sha256 sum;
  sum.Add(content.data(), content.size());
  return {name, content.size(), sum.Finish()};
}

pages::PageInfo PageOf(pages::PageColor color, const std::vector<std::string>& planes,
                       unsigned width, unsigned height) {
  pages::PageInfo info;
  info.job = "Job";
  info.width = width;
  info.height = height;
  info.xResolution = 100;
  info.yResolution = 50;
  info.color = color;
  for (unsigned i = 0; i < planes.size(); ++i) {
    switch (color) {
      case pages::PageColor::Gray: info.planes.push_back({planes[i], "pixels.pgm", i}); break;
      case pages::PageColor::Rgb: info.planes.push_back({planes[i], "pixels.ppm", i}); break;
      default: info.planes.push_back({planes[i], "plane-" + std::to_string(i) + ".tif", 0});
    }
  }
  return info;
}

void WriteTiffPlane(const std::string& path, unsigned width, unsigned height, unsigned plane) {
  TIFF* tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 7);
  std::vector<std::uint8_t> row(width);
  for (unsigned y = 0; y < height; ++y) {
    for (unsigned x = 0; x < width; ++x) row[x] = SampleAt(x, y, plane);
    TIFFWriteScanline(tiff, row.data(), y, 0);
  }
  TIFFClose(tiff);
}

namespace {

void WriteNetpbm(const std::string& path, unsigned width, unsigned height, unsigned planes) {
  std::string content = std::string(planes == 3 ? "P6" : "P5") + "\n# made by hand\n" +
                        std::to_string(width) + " " + std::to_string(height) + "\n255\n";
  for (unsigned y = 0; y < height; ++y) {
    for (unsigned x = 0; x < width; ++x) {
      for (unsigned plane = 0; plane < planes; ++plane) {
        content += static_cast<char>(SampleAt(x, y, plane));
      }
    }
  }
  WriteFile(path, content);
}

}  // namespace

void WritePage(const std::string& directory, pages::PageInfo& info) {
  fs::create_directories(directory);
  info.files.clear();
  if (info.color == pages::PageColor::Rgb || info.color == pages::PageColor::Gray) {
    const std::string& name = info.planes.front().file;
    WriteNetpbm(directory + "/" + name, info.width, info.height,
                static_cast<unsigned>(info.planes.size()));
    info.files.push_back(DescribeFile(directory, name));
  } else {
    for (unsigned i = 0; i < info.planes.size(); ++i) {
      WriteTiffPlane(directory + "/" + info.planes[i].file, info.width, info.height, i);
      info.files.push_back(DescribeFile(directory, info.planes[i].file));
    }
  }
  WriteFile(directory + "/" + pages::PageInfoName, pages::FormatPageInfo(info));
}

pages::PageInfo WriteRgbPage(const std::string& directory, const std::string& job, unsigned page,
                             const std::string& printer) {
  pages::PageInfo info = PageOf(pages::PageColor::Rgb, {"Red", "Green", "Blue"}, 40, 30);
  info.job = job;
  info.page = page;
  info.printer = printer;
  WritePage(directory, info);
  return info;
}

Picture ReadTiff(const std::string& path) {
  Picture picture;
  // It warns of more than four inks, which the format allows.
  TIFFSetWarningHandler(nullptr);
  TIFF* tiff = TIFFOpen(path.c_str(), "r");
  if (!tiff) return picture;
  std::uint16_t samples = 0;
  std::uint16_t value = 0;
  float resolution = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &picture.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &picture.height);
  TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
  picture.samples = samples;
  if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &value)) picture.photometric = value;
  if (TIFFGetField(tiff, TIFFTAG_INKSET, &value)) picture.inkSet = value;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &resolution)) picture.xResolution = resolution;
  if (TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &resolution)) picture.yResolution = resolution;
  const char* names = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_INKNAMES, &names)) {
    for (unsigned i = 0; i < samples; ++i) {
      const std::string name = names;
      picture.inkNames += name + "|";
      names += name.size() + 1;
    }
  }
  std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
  for (unsigned y = 0; y < picture.height; ++y) {
    if (TIFFReadScanline(tiff, row.data(), y, 0) != 1) break;
    picture.pixels.insert(picture.pixels.end(), row.begin(), row.end());
  }
  TIFFClose(tiff);
  return picture;
}

Picture ReadPng(const std::string& path) {
  Picture picture;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) return picture;
  picture.samples = (image.format & PNG_FORMAT_FLAG_COLOR) != 0 ? 3 : 1;
  image.format = picture.samples == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
  picture.width = image.width;
  picture.height = image.height;
  picture.pixels.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr)) {
    picture.pixels.clear();
  }
  return picture;
}

std::string Cfm2(const std::string& directory, const std::vector<Entry>& entries) {
  std::string text = ">> -- C-Format 2.0 -- <<\n>> Generated by queue on <<\n>> Copies: 1 <<\n";
  for (const Entry& entry : entries) {
    text += "begin := " + entry.type + "  \n\tid := QueueCMF2Generator   \n\tdir := " + directory +
            "   \n\ttitle := " + entry.title + "   \n\tcopies := " + std::to_string(entry.copies) +
            "   \nend   \n";
  }
  return text;
}

EngineRun::EngineRun(const std::string& root, const std::string& input,
                     const std::vector<std::string>& settings, bool planar, bool closeOutput) {
  int in[2] = {-1, -1};
  int error[2] = {-1, -1};
  if (pipe2(in, O_CLOEXEC) != 0 || pipe2(error, O_CLOEXEC) != 0) return;
  int from = in[0];
  if (!input.empty()) {
    WriteFile(root + "/input.cfm2", input);
    from = open((root + "/input.cfm2").c_str(), O_RDONLY | O_CLOEXEC);
  }
  std::vector<std::string> words = {"RASTREL_HOME=" + root};
  words.insert(words.end(), settings.begin(), settings.end());
  words.emplace_back("PATH=/usr/bin:/bin");  // of two with one name the first counts
  std::vector<char*> environment;
  for (std::string& word : words) environment.push_back(word.data());
  environment.push_back(nullptr);
  const std::string program = std::string(RASTREL_BINARY_DIR) + "/libexec/rastrel/coreodalis.exe";
  m_Id = fork();
  if (m_Id == 0) {
    dup2(from, 0);
    dup2(error[1], 2);
    if (closeOutput) close(1);
    if (chdir(root.c_str()) == 0) {
      std::vector<const char*> arguments = {program.c_str(), "-M", "-Q", "-k400", "-N", "-"};
      if (planar) arguments.push_back("-tp");
      arguments.push_back(nullptr);
      execve(program.c_str(), const_cast<char* const*>(arguments.data()), environment.data());
    }
    _exit(126);
  }
  if (from != in[0]) close(from);
  close(in[0]);
  close(error[1]);
  m_Input = in[1];
  m_Error = error[0];
  if (!input.empty()) CloseInput();
}

EngineRun::~EngineRun() {
  if (m_Id > 0) {
    Kill();
    Finish();
  }
}

void EngineRun::Write(const std::string& text) {
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t count = write(m_Input, text.data() + written, text.size() - written);
    if (count < 0) return;
    written += static_cast<std::size_t>(count);
  }
}

void EngineRun::CloseInput() {
  if (m_Input >= 0) close(m_Input);
  m_Input = -1;
}

void EngineRun::Kill() { kill(m_Id, SIGKILL); }

bool EngineRun::ReadMore() {
  char block[4096];
  const ssize_t count = read(m_Error, block, sizeof block);
  if (count <= 0) return false;
  m_Report.append(block, static_cast<std::size_t>(count));
  return true;
}

bool EngineRun::WaitForLine(const std::string& beginning) {
  while (("\n" + m_Report).find("\n" + beginning) == std::string::npos) {
    if (!ReadMore()) return false;
  }
  return true;
}

void EngineRun::Finish() {
  CloseInput();
  while (ReadMore()) {
  }
  close(m_Error);
  int status = 0;
  rusage usage{};
  wait4(m_Id, &status, 0, &usage);
  m_PeakMemory = usage.ru_maxrss;
  m_Id = -1;
  m_Status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::vector<std::string> EngineRun::Lines(const std::string& tag) const {
  std::vector<std::string> lines;
  std::size_t at = 0;
  while (at < m_Report.size()) {
    const std::size_t end = m_Report.find('\n', at);
    const std::string line = m_Report.substr(at, end - at);
    if (line.starts_with(tag)) lines.push_back(line.substr(tag.size()));
    if (end == std::string::npos) break;
    at = end + 1;
  }
  return lines;
}

}  // namespace rastrel::odalis::testing
