#pragma once

#include <map>
#include <string>

#include "rastrel/job/status.h"

/// The vocabulary as tables of number and text, apart from the library's own.
namespace rastrel::test {

inline const std::map<int, std::wstring>& StatusTexts() {
  static const std::map<int, std::wstring> texts = {
      {0, L"(*v*)Receiving"}, {1, L"(*v*)Preprocessing"}, {2, L"(*v*)Idle"},
      {3, L"(*v*)Holding"},   {4, L"(*v*)Active"},        {5, L"(*v*)Complete"}};
  return texts;
}

/// Any other number is "(*v*)Unknown error".
inline const std::map<int, std::wstring>& ErrorTexts() {
  static const std::map<int, std::wstring> texts = {{0, L""},
                                                    {1, L"(*v*)RIP executable missing"},
                                                    {2, L"(*v*)Odalis executable missing"},
                                                    {3, L"(*v*)Stem executable missing"},
                                                    {4, L"(*v*)Can't start output thread"},
                                                    {5, L"(*v*)Can't start Odalis"},
                                                    {6, L"(*v*)Can't start RIP"},
                                                    {7, L"(*v*)Unknown error"},
                                                    {8, L"(*v*)RIP exited abnormally"},
                                                    {9, L"(*v*)Odalis exited abnormally"},
                                                    {10, L"(*v*)System low on resources"},
                                                    {11, L"(*v*)Unknown error 11"},
                                                    {12, L"(*v*)Abnormal termination"},
                                                    {13, L"(*v*)Can't spool output"},
                                                    {14, L"(*v*)Can't generate spool file"},
                                                    {15, L"(*v*)Can't generate PostScript prefix"},
                                                    {16, L"(*v*)Invalid spool file"},
                                                    {17, L"(*v*)Spool file is missing"},
                                                    {18, L"(*v*)PostScript file is missing"},
                                                    {255, L"(*v*)Unknown error"},
                                                    {256, L"(*v*)Run Sysinstall3.ps"},
                                                    {257, L"(*v*)Invalid recovery"},
                                                    {258, L"(*v*)Unknown error"},
                                                    {259, L"(*v*)Unknown error"},
                                                    {260, L"(*v*)Unknown error"},
                                                    {261, L"(*v*)Unknown error"},
                                                    {262, L"(*v*)Unknown error"}};
  return texts;
}

inline std::wstring ExpectedErrorText(int code) {
  const auto found = ErrorTexts().find(code);
  return found == ErrorTexts().end() ? L"(*v*)Unknown error" : found->second;
}

/// Texts that don't depend on the originator. Codes that are missing have none.
inline const std::map<int, std::wstring>& InfoTexts() {
  static const std::map<int, std::wstring> texts = {{0, L"(*v*)Bad Info"},
                                                    {1, L"(*v*)Start Ripping"},
                                                    {2, L"(*v*)Ripping Complete"},
                                                    {3, L"(*v*)Start Printing"},
                                                    {4, L"(*v*)Printing complete"},
                                                    {5, L"(*v*)Start Spooling"},
                                                    {6, L"(*v*)Spooling complete"},
                                                    {7, L"(*v*)Processing Started"},
                                                    {8, L"(*v*)Processing Completed"},
                                                    {9, L"(*v*)Printing Aborted"},
                                                    {255, L"(*v*)Undefined"}};
  return texts;
}

struct ChildTexts {
  std::wstring rip;
  std::wstring odalis;
  std::wstring other;  ///< with "%d" where the originator goes
};

inline const std::map<int, ChildTexts>& ChildInfoTexts() {
  static const std::map<int, ChildTexts> texts = {
      {256,
       {L"(*v*)Initializing Rip", L"(*v*)Initializing \"Odalis\"", L"(*v*)Initializing other %d"}},
      {257, {L"(*v*)Rip Ready", L"(*v*)\"Odalis\" Ready", L"(*v*)Other Ready %d"}},
      {258,
       {L"(*v*)Rip Interpreting", L"(*v*)\"Odalis\" Interpreting", L"(*v*)Other Interpreting %d"}},
      {259, {L"(*v*)Rip Converting", L"(*v*)\"Odalis\" Converting", L"(*v*)Other Converting %d"}},
      {260, {L"(*v*)Rip Flushing", L"(*v*)\"Odalis\" Flushing", L"(*v*)Other Flushing %d"}},
      {261, {L"(*v*)Rip Printing", L"(*v*)\"Odalis\" Printing", L"(*v*)Other Printing %d"}},
      {262, {L"(*v*)Rip Spooling", L"(*v*)\"Odalis\" Spooling", L"(*v*)Other Spooling %d"}},
      {263, {L"(*v*)Rip Recovered", L"(*v*)\"Odalis\" Recovered", L"(*v*)Other Recovered %d"}}};
  return texts;
}

/// The text of a code with the standalone host, whose translation takes the mark away.
inline std::wstring ExpectedInfoText(int code, int originator) {
  const auto plain = InfoTexts().find(code);
  if (plain != InfoTexts().end()) return plain->second;
  const auto child = ChildInfoTexts().find(code);
  if (child == ChildInfoTexts().end()) return L"";
  if (originator == 0) return child->second.rip;
  if (originator == 1) return child->second.odalis;
  const std::wstring translated = child->second.other.substr(5);
  return translated.substr(0, translated.size() - 2) + std::to_wstring(originator);
}

}  // namespace rastrel::test
