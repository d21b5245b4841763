#include "CommandLine.h"

#include "Command.h"
#include "Errors.h"
#include "options/NearestName.h"
#include "options/Replay.h"

#include <MirelAlgorithms/BuildInfo.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

namespace mirel {

namespace {

std::string versionText() {
  const MirelAlgorithms::BuildInfo build = MirelAlgorithms::buildInfo();
  return fmt::format("mirel {}\nOpenCV {}\nxfeatures2d {}\ninstruction set {}", build.version, build.openCV,
                     build.xfeatures2d ? "yes" : "no", build.instructions);
}

/// Examples that read files take those of the demo.
std::string examplesText(const std::vector<std::string>& examples) {
  const bool filesNamed = examples[0].find('.') != std::string::npos;
  std::string text =
      filesNamed ? "Files as below are in mirel-demo/data after: mirel demo\n\nExamples:\n" : "Examples:\n";
  for (const std::string& example : examples) text += "  " + example + "\n";
  return text;
}

/// The commands and what is declared for them.
class CommandLine {
 public:
  CommandLine() : app_("Image-processing and numerical algorithms for structure from motion", "mirel") {
    app_.set_version_flag("--version", versionText, "version, OpenCV version, xfeatures2d, instruction set");
    app_.require_subcommand(0, 1);
    app_.footer(
        "mirel SUBCOMMAND --help, or mirel help SUBCOMMAND, tells more.\n"
        "mirel --config run.json repeats a recorded run.\n"
        "Exit status: 0 success, 1 nothing found in good input, 2 wrong usage or unusable input,\n"
        "128 and the signal's number when a signal ended it: 130 for SIGINT, 143 for SIGTERM.\n\n" +
        examplesText({"mirel demo", "mirel settings"}));
    for (const CommandEntry& entry : commands()) {
      CLI::App* sub = app_.add_subcommand(entry.name, entry.summary);
      sub->footer(examplesText(entry.examples));
      commands_.push_back({sub, entry.make()});
      commands_.back().command->addOptions(*sub);
    }
  }

  int run(std::vector<std::string> arguments) {
    try {
      rewrite(arguments);
      requireKnownSubcommand(arguments);
      std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
      app_.parse(arguments);
      for (const Entry& entry : commands_) {
        if (entry.app->parsed()) return checkOutput(entry.command->run(*entry.app));
      }
      fmt::print("{}", app_.help());
      return success;
    } catch (const CLI::Success& request) {
      return app_.exit(request);  // prints help or version
    } catch (const CLI::ExtrasError&) {
      return fail(oneLine(unknownWord()));
    } catch (const Interrupted& error) {
      fail(oneLine(error));
      return error.status();
    } catch (const std::exception& error) {
      return fail(oneLine(error));
    }
  }

 private:
  struct Entry {
    CLI::App* app;
    std::unique_ptr<Command> command;
  };

  /// "help SUB" is "SUB --help"; "--config FILE" without a subcommand takes the recorded one.
  void rewrite(std::vector<std::string>& arguments) const {
    if (!arguments.empty() && arguments[0] == "help") {
      while (!arguments.empty() && arguments[0] == "help") arguments.erase(arguments.begin());
      arguments.push_back("--help");
    } else if (arguments.size() >= 2 && arguments[0] == "--config") {
      const auto command = readRunRecord(arguments[1])["command"].get<std::string>();
      const bool known = std::any_of(commands_.begin(), commands_.end(),
                                     [&](const Entry& entry) { return entry.app->get_name() == command; });
      if (!known) throw UsageError("--config " + arguments[1] + ": records a run of '" + command + "', no subcommand");
      arguments.insert(arguments.begin(), command);
    }
  }

  /// Before the parser, which would answer a request for help on an unknown subcommand with the general help.
  void requireKnownSubcommand(const std::vector<std::string>& arguments) const {
    if (arguments.empty() || arguments[0].starts_with("-")) return;
    std::vector<std::string> names = {"help"};
    for (const Entry& entry : commands_) names.push_back(entry.app->get_name());
    if (std::find(names.begin(), names.end(), arguments[0]) != names.end()) return;
    const std::string hint = didYouMean(arguments[0], names);
    throw UsageError("unknown subcommand '" + arguments[0] + "'" + (hint.empty() ? "; see: mirel --help" : hint));
  }

  const CLI::App* parsedCommand() const {
    const auto entry = std::find_if(commands_.begin(), commands_.end(), [](const Entry& e) { return e.app->parsed(); });
    return entry == commands_.end() ? nullptr : entry->app;
  }

  /// A word that the parser had no use for.
  std::string unknownWord() const {
    const CLI::App* sub = parsedCommand();
    const std::vector<std::string> extras = app_.remaining(true);
    const std::string word = extras.empty() ? "" : extras.front();
    if (!word.starts_with("-")) return "unexpected argument '" + word + "'";
    if (sub != nullptr && sub->get_option_no_throw(word.substr(0, word.find('='))) != nullptr) {
      return word + " stands before the subcommand, expected behind it";
    }
    std::vector<std::string> names;
    for (const CLI::Option* option : (sub != nullptr ? sub : &app_)->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
    return "unknown option " + word + didYouMean(word.substr(0, word.find('=')), names);
  }

  /// Standard output may lead to a full disk.
  int checkOutput(int status) const {
    return std::fflush(stdout) == 0 ? status : fail("standard output: cannot be written");
  }

  int fail(const std::string& text) const {
    const CLI::App* sub = parsedCommand();
    fmt::print(stderr, "mirel{}: {}\n", sub != nullptr ? " " + sub->get_name() : "", text);
    return unusable;
  }

  CLI::App app_;
  std::vector<Entry> commands_;
};

}  // namespace

int runCommandLine(std::vector<std::string> arguments) { return CommandLine().run(std::move(arguments)); }

}  // namespace mirel
