#pragma once

#include <zlib.h>

#include <cstddef>
#include <string>
#include <vector>

/// Small files that ask for time and memory without end.
namespace rastrel::test {

inline std::string SvgOf(const std::string& content) {
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
         "width=\"400\" height=\"400\">" +
         content + "</svg>";
}

/// Each level uses the one below ten times: 10 to the power of 11 squares.
inline std::string SvgUseBomb() {
  std::string content = "<defs><rect id=\"u0\" width=\"9\" height=\"9\"/>";
  for (int level = 1; level <= 11; ++level) {
    content += "<g id=\"u" + std::to_string(level) + "\">";
    for (int i = 0; i < 10; ++i)
      content += "<use xlink:href=\"#u" + std::to_string(level - 1) + "\"/>";
    content += "</g>";
  }
  return SvgOf(content + "</defs><use xlink:href=\"#u11\"/>");
}

/// Noise of many octaves, blurred over and over.
inline std::string SvgFilterBomb() {
  std::string content = "<filter id=\"f\" x=\"0\" y=\"0\" width=\"1\" height=\"1\">";
  for (int i = 0; i < 2000; ++i) {
    content +=
        "<feTurbulence baseFrequency=\"0.9\" numOctaves=\"1000\"/>"
        "<feGaussianBlur stdDeviation=\"90\"/>";
  }
  content += "</filter>";
  for (int i = 0; i < 1000; ++i) {
    content += "<rect width=\"400\" height=\"400\" filter=\"url(#f)\"/>";
  }
  return SvgOf(content);
}

/// A pattern whose tiles are filled with a pattern, and so on.
inline std::string SvgPatternBomb() {
  std::string content = "<defs>";
  for (int level = 0; level < 20; ++level) {
    content += "<pattern id=\"p" + std::to_string(level) + "\" width=\"0.1\" height=\"0.1\">";
    for (int i = 0; i < 20; ++i) {
      content += "<rect width=\"400\" height=\"400\" fill=\"" +
                 (level == 0 ? std::string("red") : "url(#p" + std::to_string(level - 1) + ")") +
                 "\"/>";
    }
    content += "</pattern>";
  }
  return SvgOf(content + "</defs><rect width=\"400\" height=\"400\" fill=\"url(#p19)\"/>");
}

/// A PDF file of these objects, the first of which is the catalogue.
inline std::string PdfOf(const std::vector<std::string>& objects) {
  std::string file = "%PDF-1.4\n";
  std::vector<std::size_t> offsets;
  for (const std::string& object : objects) {
    offsets.push_back(file.size());
    file += std::to_string(offsets.size()) + " 0 obj\n" + object + "\nendobj\n";
  }
  const std::size_t table = file.size();
  file += "xref\n0 " + std::to_string(objects.size() + 1) + "\n0000000000 65535 f \n";
  for (const std::size_t offset : offsets) {
    const std::string digits = std::to_string(offset);
    file += std::string(10 - digits.size(), '0') + digits + " 00000 n \n";
  }
  return file + "trailer <</Size " + std::to_string(objects.size() + 1) +
         " /Root 1 0 R>>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
}

inline std::string PdfStream(const std::string& entries, const std::string& bytes) {
  return "<<" + entries + " /Length " + std::to_string(bytes.size()) + ">>\nstream\n" + bytes +
         "\nendstream";
}

/// Forms that paint the one below ten times, eleven deep.
inline std::string PdfFormBomb() {
  std::vector<std::string> objects{
      "<</Type /Catalog /Pages 2 0 R>>", "<</Type /Pages /Kids [3 0 R] /Count 1>>",
      "<</Type /Page /Parent 2 0 R /MediaBox [0 0 400 400] /Contents 4 0 R "
      "/Resources <</XObject <</F 5 0 R>>>>>>",
      PdfStream("", "/F Do")};
  std::string ten;
  for (int i = 0; i < 10; ++i) ten += "/F Do ";
  for (int level = 0; level < 11; ++level) {
    const std::string next = std::to_string(objects.size() + 2);
    objects.push_back(
        PdfStream("/Type /XObject /Subtype /Form /BBox [0 0 400 400] /Resources "
                  "<</XObject <</F " +
                      next + " 0 R>>>>",
                  ten));
  }
  objects.push_back(
      PdfStream("/Type /XObject /Subtype /Form /BBox [0 0 400 400]", "0 0 9 9 re f 1 1 9 9 re f"));
  return PdfOf(objects);
}

inline std::string Deflated(const std::string& bytes) {
  std::string packed(compressBound(bytes.size()), '\0');
  uLongf length = packed.size();
  // The library's bytes are unsigned.
  compress2(reinterpret_cast<Bytef*>(packed.data()), &length,
            reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), 9);
  packed.resize(length);
  return packed;
}

/// Drawing operations packed twice over: hundreds of thousands of times as many as bytes.
inline std::string PdfPackedBomb() {
  std::string operations;
  while (operations.size() < 10'000'000) operations += "0 0 400 400 re f\n";
  const std::string packed = Deflated(Deflated(operations));
  return PdfOf({"<</Type /Catalog /Pages 2 0 R>>", "<</Type /Pages /Kids [3 0 R] /Count 1>>",
                "<</Type /Page /Parent 2 0 R /MediaBox [0 0 400 400] /Contents [" +
                    [] {
                      std::string all;
                      for (int i = 0; i < 2000; ++i) all += "4 0 R ";
                      return all;
                    }() +
                    "]>>",
                PdfStream("/Filter [/FlateDecode /FlateDecode]", packed)});
}

}  // namespace rastrel::test
