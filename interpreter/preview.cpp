#include "interpreter/preview.h"

#include <fcntl.h>
#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

namespace rastrel::interpreter {
namespace {

constexpr unsigned SamplesPerSide = 4;  // of a cell, in either direction

unsigned Scaled(unsigned side, unsigned longer) {
  if (longer <= Preview::MaximumSide) return side;
  const std::uint64_t scaled = std::uint64_t{side} * Preview::MaximumSide / longer;
  return std::max(1U, static_cast<unsigned>(scaled));
}

// First source pixel of a cell.
unsigned CellStart(unsigned cell, unsigned cells, unsigned side) {
  return static_cast<unsigned>(std::uint64_t{cell} * side / cells);
}

unsigned CellOf(unsigned position, unsigned cells, unsigned side) {
  return static_cast<unsigned>(((std::uint64_t{position} + 1) * cells - 1) / side);
}

bool IsSample(unsigned position, unsigned cell, unsigned cells, unsigned side) {
  const unsigned start = CellStart(cell, cells, side);
  const unsigned extent = CellStart(cell + 1, cells, side) - start;
  const unsigned step = std::max(1U, (extent + SamplesPerSide - 1) / SamplesPerSide);
  return (position - start) % step == 0;
}

struct PngWriter {
  PngWriter() : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr)) {
    if (png != nullptr) info = png_create_info_struct(png);
  }
  ~PngWriter() { png_destroy_write_struct(&png, &info); }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  png_structp png;
  png_infop info = nullptr;
};

// libpng leaves by longjmp, so nothing here has a destructor.
bool WriteImage(PngWriter& writer, std::FILE* file, const PageSize& size, png_bytepp rows) {
  if (setjmp(png_jmpbuf(writer.png))) return false;
  png_init_io(writer.png, file);
  png_set_IHDR(writer.png, writer.info, size.width, size.height, 8,
               size.channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_compression_level(writer.png, 1);
  png_set_rows(writer.png, writer.info, rows);
  png_write_png(writer.png, writer.info, PNG_TRANSFORM_IDENTITY, nullptr);
  return true;
}

}  // namespace

Preview::Preview(const PageSize& page)
    : m_Page(page),
      m_Width(Scaled(page.width, std::max(page.width, page.height))),
      m_Height(Scaled(page.height, std::max(page.width, page.height))),
      m_Sums(std::size_t{m_Width} * m_Height * page.channels),
      m_RowCounts(m_Height),
      m_ColumnCounts(m_Width) {
  for (unsigned column = 0; column < page.width; ++column) {
    const unsigned cell = CellOf(column, m_Width, page.width);
    if (!IsSample(column, cell, m_Width, page.width)) continue;
    m_Columns.push_back(column);
    m_ColumnCells.push_back(cell);
    ++m_ColumnCounts[cell];
  }
}

bool Preview::Wants(unsigned row) const {
  return IsSample(row, CellOf(row, m_Height, m_Page.height), m_Height, m_Page.height);
}

void Preview::AddRow(unsigned row, std::span<const std::byte> samples) {
  const unsigned cellRow = CellOf(row, m_Height, m_Page.height);
  std::uint32_t* const sums = m_Sums.data() + std::size_t{cellRow} * m_Width * m_Page.channels;
  ++m_RowCounts[cellRow];
  const auto add = [&]<std::size_t Channels>() {
    for (std::size_t i = 0; i < m_Columns.size(); ++i) {
      std::uint32_t* const cell = sums + m_ColumnCells[i] * Channels;
      const std::byte* const pixel = samples.data() + m_Columns[i] * Channels;
      for (std::size_t channel = 0; channel < Channels; ++channel)
        cell[channel] += std::to_integer<std::uint32_t>(pixel[channel]);
    }
  };
  // With the number known, a pixel is a few steps without a loop.
  m_Page.channels == 3 ? add.template operator()<3>() : add.template operator()<1>();
}

Expected<void> Preview::Write(const std::string& path) const {
  std::vector<png_byte> pixels(m_Sums.size());
  std::size_t at = 0;
  for (const std::uint32_t rowCount : m_RowCounts) {
    for (const std::uint32_t columnCount : m_ColumnCounts) {
      const std::uint32_t count = std::max(1U, rowCount * columnCount);
      for (unsigned channel = 0; channel < m_Page.channels; ++channel, ++at)
        pixels[at] = static_cast<png_byte>((m_Sums[at] + count / 2) / count);
    }
  }
  std::vector<png_bytep> rows(m_Height);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    rows[row] = pixels.data() + row * m_Width * m_Page.channels;
  }
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) return Failure{"create", path, errno};
  std::FILE* const file = fdopen(descriptor, "wb");
  PngWriter writer;
  errno = 0;
  const bool made = file != nullptr && writer.info != nullptr &&
                    WriteImage(writer, file, {m_Width, m_Height, m_Page.channels}, rows.data());
  const bool closed = file != nullptr && std::fclose(file) == 0;
  if (!made || !closed) return Failure{"write", path, errno != 0 ? errno : ENOMEM};
  return {};
}

}  // namespace rastrel::interpreter
