#pragma once

#include <string>
#include <vector>

/// Parts of CRO templates.
namespace rastrel::layout {

inline std::string Size(const std::string& width, const std::string& height, bool blank = false) {
  return "<TEMPLATESIZE><WIDTH>" + width + "</WIDTH><HEIGHT>" + height + "</HEIGHT>" +
         (blank ? "<USETEMPLATEBLANKSIZE>TRUE</USETEMPLATEBLANKSIZE>" : "") + "</TEMPLATESIZE>";
}

inline std::string Plates(const std::vector<std::string>& plates) {
  std::string all = "<PLATES>";
  for (const std::string& plate : plates) all += "<PLATE>" + plate + "</PLATE>";
  return all + "</PLATES>";
}

inline std::string Graphic(const std::string& name, const std::string& children) {
  return "<TEMPLATEGRAPHIC name=\"" + name + "\"><FILE>dot.png</FILE>" + children +
         "</TEMPLATEGRAPHIC>";
}

}  // namespace rastrel::layout
