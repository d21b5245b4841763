/// Subcommands announce themselves: a new one is one source file with a `CommandRegistration`.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

namespace mirel {

/// One subcommand: options first, then one run.
class Command {
 public:
  virtual ~Command() = default;

  /// Adds the options. `app` lives until after `run`.
  virtual void addOptions(CLI::App& app) = 0;

  /// Does the work and gives the exit status; throws `UsageError`.
  virtual int run(CLI::App& app) = 0;
};

struct CommandEntry {
  std::string name;
  std::string summary;                ///< one line
  std::vector<std::string> examples;  ///< command lines to copy
  std::unique_ptr<Command> (*make)();
};

/// All subcommands, by name.
std::vector<CommandEntry> commands();

void registerCommand(CommandEntry entry);

/// Makes the subcommand known when the program starts:
///
///     const CommandRegistration<TrackCommand> registration("track", "follow features", {"mirel track a.png b.png"});
template <class T>
struct CommandRegistration {
  CommandRegistration(const char* name, const char* summary, std::vector<std::string> examples) {
    registerCommand({name, summary, std::move(examples), [] { return std::unique_ptr<Command>(new T()); }});
  }
};

}  // namespace mirel
