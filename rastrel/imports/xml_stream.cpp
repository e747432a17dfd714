#include "rastrel/imports/xml_stream.h"

#include "rastrel/imports/xml_source.h"
#include "rastrel/imports/xml_streamer.h"

namespace rastrel::imports {

XmlStreamHandler::~XmlStreamHandler() = default;

bool StreamXmlFile(std::wstring_view path, XmlStreamHandler& handler, XmlBlanks blanks) {
  XmlNames names;
  XmlStreamer streamer(handler, names, blanks);
  return ParseXmlFile(path, names, streamer, &streamer);
}

}  // namespace rastrel::imports
