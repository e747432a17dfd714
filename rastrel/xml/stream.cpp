#include "rastrel/xml/stream.h"

#include "rastrel/xml/source.h"
#include "rastrel/xml/streamer.h"

namespace rastrel::xml {

XmlStreamHandler::~XmlStreamHandler() = default;

bool StreamXmlFile(std::wstring_view path, XmlStreamHandler& handler, XmlBlanks blanks) {
  XmlNames names;
  XmlStreamer streamer(handler, names, blanks);
  return ParseXmlFile(path, names, streamer, &streamer);
}

}  // namespace rastrel::xml
