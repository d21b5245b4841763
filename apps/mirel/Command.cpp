#include "Command.h"

#include <algorithm>

namespace mirel {

namespace {

std::vector<CommandEntry>& registry() {
  static std::vector<CommandEntry> entries;
  return entries;
}

}  // namespace

void registerCommand(CommandEntry entry) { registry().push_back(std::move(entry)); }

std::vector<CommandEntry> commands() {
  std::vector<CommandEntry> entries = registry();
  std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  return entries;
}

}  // namespace mirel
