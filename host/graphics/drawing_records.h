#pragma once

#include <cstddef>

/// The stream that the drawing program writes to its standard output: records, one after another.
///
///     +--------+--------------------------+--------------+
///     | kind   | length of the body       | body         |
///     | 1 byte | 8 bytes, the lowest byte | length bytes |
///     |        | first                    |              |
///     +--------+--------------------------+--------------+
namespace rastrel::graphics {

/// The kinds of records, as their byte says. Texts are UTF-8.
enum class DrawingRecord : char {
  FileBegun = 'F',  ///< the name of a foreign file that is read or drawn from now on
  FileEnded = 'f',  ///< that is over; no body
  Notice = 'N',     ///< a document::Notices text
  Loss = 'L',       ///< a document::Notices loss
  Size = 'S',       ///< a picture's width and height in points, with a blank between
  Path = 'P',       ///< a painted path of a vector file (vector_path.h), in painting order
  Extent = 'X',     ///< left, top, right and bottom of a picture's drawn part, as a Size
  Kept = 'K',       ///< why a vector file is no paths: a reason; those before it don't count
  Number = '#',     ///< the next image's page as decimal digits, or 0 where it is the only one
  Image = 'I',      ///< a finished SVG, PDF or PNG file
  Broken = 'B',     ///< why the program can't go on, a reason without a subject; the last record
  Failed = 'E',     ///< why there is no result, a sentence; the last record
  Done = 'D',       ///< there are no further results; no body; the last record
};

inline constexpr std::size_t RecordHeadSize = 9;

/// The reason of a Kept that is about letters: a PDF may be read again without fonts then.
inline constexpr const char* LettersReason = "it has letters in a font";

}  // namespace rastrel::graphics
