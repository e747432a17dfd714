#pragma once

#include <cstddef>

/// The limits of one document. A document beyond any of them is refused, and the reason names the
/// limit. They are far above the needs of the formats, and keep a hostile file from taking all
/// memory or time.
namespace rastrel::xml::limits {

/// Elements inside each other, the document element included.
inline constexpr int Depth = 256;
/// Attributes of one element, declarations of namespaces included. The parser compares each with
/// each.
inline constexpr std::size_t Attributes = 256;
/// Namespaces that are declared at a time. The parser looks a prefix up one by one.
inline constexpr std::size_t Namespaces = 256;
/// Memory of a loaded document's nodes, texts and names, in bytes.
inline constexpr std::size_t DocumentBytes = std::size_t{128} << 20;
/// The same for the part that a stream holds at a time: the elements that are open and the one that
/// is collected. A row of 16,384 cells takes about 5 MiB.
inline constexpr std::size_t StreamBytes = std::size_t{32} << 20;
/// Different names of elements and attributes.
inline constexpr std::size_t Names = 65536;
/// One tag, comment, instruction or CDATA section as written in the file, in bytes of UTF-8; the
/// parser sees it whole. Texts have no limit but the memory's. Held to within a piece of reading
/// (64 KiB, which can be 192 KiB of UTF-8).
inline constexpr std::size_t MarkupBytes = std::size_t{4} << 20;

}  // namespace rastrel::xml::limits
