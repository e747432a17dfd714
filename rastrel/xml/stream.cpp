#include "rastrel/xml/stream.h"

#include "rastrel/xml/source.h"
#include "rastrel/xml/streamer.h"

namespace rastrel::xml {

XmlStreamHandler::~XmlStreamHandler() = default;

bool StreamXmlFile(std::wstring_view path, XmlStreamHandler& handler, XmlWhitespace whitespace) {
  XmlNames names;
  XmlStreamer streamer(handler, names, whitespace);
  return ParseXmlFile(path, names, streamer, &streamer);
}

}  // namespace rastrel::xml
