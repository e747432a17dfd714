#pragma once

#include <algorithm>
#include <span>
#include <string>

#include "rastrel/job/status.h"

/// Names for a job's codes, so that an expectation can be read. The numbers are written out here
/// and not taken from status.h: hosts and job files rely on them.
namespace rastrel::test {

struct CodeName {
  int code;
  const char* name;
};

inline constexpr CodeName StatusNames[] = {{0, "receiving"}, {1, "preprocessing"}, {2, "idle"},
                                           {3, "holding"},   {4, "active"},        {5, "complete"}};

inline constexpr CodeName ErrorNames[] = {
    {0, "no error"},           {1, "rip missing"},      {2, "odalis missing"},
    {5, "odalis not started"}, {6, "rip not started"},  {8, "rip exit"},
    {9, "odalis exit"},        {10, "low resources"},   {12, "aborted"},
    {13, "spool output"},      {14, "spool generate"},  {15, "prefix"},
    {16, "spool invalid"},     {17, "spool missing"},   {18, "ps missing"},
    {255, "undefined"},        {256, "run install"},    {257, "invalid recovery"},
    {258, "rip status 1"},     {259, "rip status 2"},   {260, "rip status 3"},
    {261, "odalis status 1"},  {262, "odalis status 2"}};

/// The infos of the printing thread.
inline constexpr CodeName StageNames[] = {{1, "ripping"}, {2, "ripped"},    {3, "printing"},
                                          {4, "printed"}, {5, "spooling"},  {6, "spooled"},
                                          {7, "started"}, {8, "completed"}, {9, "aborted"}};

/// The name, or the number of a code without one.
inline std::string NameOfCode(std::span<const CodeName> names, int code) {
  const auto found = std::ranges::find(names, code, &CodeName::code);
  return found == names.end() ? std::to_string(code) : found->name;
}

}  // namespace rastrel::test
