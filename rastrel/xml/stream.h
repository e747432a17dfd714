#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/expected.h"
#include "rastrel/xml/elements.h"
#include "rastrel/xml/node.h"

/// Documents that are too large to be held whole: elements are handed on as they are read, and only
/// the ones that are collected become nodes. Same strictness, same nodes, same functions as
/// xml/layer.h.
namespace rastrel::xml {

/// Receives a document. Called on the thread that reads.
class XmlStreamHandler {
 public:
  XmlStreamHandler() = default;
  XmlStreamHandler(const XmlStreamHandler&) = delete;
  XmlStreamHandler& operator=(const XmlStreamHandler&) = delete;
  virtual ~XmlStreamHandler();

  /// An element begins. `start` has its name and attributes, no children, and is valid during the
  /// call, as `baseName` is. `depth` is 0 for the document element.
  virtual StreamChoice Begin(std::wstring_view baseName, const XmlNode& start, int depth) = 0;
  /// An element that was answered with Node is complete. Valid during the call only: its memory is
  /// used for the next.
  virtual void Node(const XmlNode& node) = 0;
  /// An element that was answered with Enter ends.
  virtual void End(std::wstring_view baseName, int depth) = 0;

  /// A failure with the reason once the handler wants no more of the document.
  [[nodiscard]] const Expected<void>& State() const { return m_State; }
  [[nodiscard]] bool Refused() const { return !m_State; }

 protected:
  /// Ends the reading after the present call. The document counts as refused, for this reason (one
  /// sentence in UTF-8 without a full stop), which goes the way of all refusals. The first reason
  /// counts.
  void Refuse(std::string why) { KeepFirst(m_State, FailureOf(std::move(why))); }

 private:
  Expected<void> m_State;
};

/// The handling of texts of whitespace alone below a collected element. They are no children of
/// their parent either way; kept ones are seen by RawTextBytes (xml/walk.h) alone.
enum class XmlWhitespace { Drop, Keep };

/// Reads a file by library path. True if all of it was read and is a document. False if it can't be
/// read or is refused, also in its last line: all that was handed over is void then.
[[nodiscard]] bool StreamXmlFile(std::wstring_view path, XmlStreamHandler& handler,
                                 XmlWhitespace whitespace = XmlWhitespace::Drop);

}  // namespace rastrel::xml
