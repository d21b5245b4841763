#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <set>

#include "Capabilities.h"

namespace {

std::string textOf(std::FILE* stream) {
  std::string text;
  for (char part[4096]; std::fgets(part, sizeof part, stream);) text += part;
  return text;
}

// Members that only other members call, but that their class exports with the rest.
const std::set<std::string> helpers = {"align",     "covers",   "initSamplePts", "lagrange",    "lsqCore",
                                       "lsqRobust", "position", "renameRoots",   "rootOfNumber"};

// "T MirelAlgorithms::UnionFind::getPartitions()" -> "getPartitions"; constructors are functions of their class's name.
std::set<std::string> exportedNames() {
  std::FILE* symbols = popen(MIREL_NM " -DC --defined-only " MIREL_LIBRARY, "r");
  const std::string text = textOf(symbols);
  pclose(symbols);
  std::set<std::string> names;
  const std::regex line(R"( T (?:Mirel)?Algorithms::(?:\w+::)*(~?\w+)(?:\[\w+:\w+\])?\()");
  for (std::sregex_iterator found(text.begin(), text.end(), line), end; found != end; ++found)
    if ((*found)[1].str()[0] != '~') names.insert((*found)[1]);
  return names;
}

TEST(ExportedFunctions, AreAllAmongTheCapabilities) {
  std::FILE* file = std::fopen(MIREL_CAPABILITIES, "r");
  ASSERT_TRUE(file);
  const std::string source = textOf(file);
  std::fclose(file);
  const std::set<std::string> names = exportedNames();
  ASSERT_GT(names.size(), 60u);
  for (const std::string& name : names) {
    if (helpers.count(name)) continue;
    EXPECT_TRUE(std::regex_search(source, std::regex("\\b" + name + "\\b"))) << name << " is called by no capability";
  }
}

}  // namespace
