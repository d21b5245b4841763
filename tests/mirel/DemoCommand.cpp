#include "ToolTest.h"

#include <regex>

namespace {

using DemoCommand = ToolTest;

/// The first group of every match.
std::set<std::string> allOf(const std::string& text, const char* expression) {
  const std::regex regex(expression);
  return {std::sregex_token_iterator(text.begin(), text.end(), regex, 1), std::sregex_token_iterator()};
}

TEST_F(DemoCommand, everySubcommandLeavesItsResultsAndOnePageShowsThemAll) {
  const nlohmann::json runs = resultOf("demo --out 'my demo'")["runs"];
  const std::string page = read("my demo/report.html");
  std::set<std::string> shown = {"demo"};
  for (const nlohmann::json& entry : runs) {
    const std::string command = entry["command"];
    shown.insert(command);
    EXPECT_EQ(entry["status"], 0) << command;
    EXPECT_NE(page.find("<section id=\"" + command + "\">"), std::string::npos) << command;
    EXPECT_TRUE(exists("my demo/" + command + "/report.html")) << command;
  }
  const std::string help = run("--help").output, list = help.substr(help.find("Subcommands:"));
  EXPECT_EQ(shown, allOf(list.substr(0, list.find("\n\n")), "\n  ([a-z]+) "));
  for (const std::string& link : allOf(page, "href=\"([^\"#]+)\"")) EXPECT_TRUE(exists("my demo/" + link)) << link;

  ASSERT_EQ(run("demo --out again --quiet").output, "");
  for (const std::string& name : files("my demo/data")) {
    EXPECT_EQ(read("my demo/data/" + name), read("again/data/" + name)) << name;
  }
}

TEST_F(DemoCommand, itsCommandLinesAndTheExamplesOfEveryHelpRun) {
  const nlohmann::json runs = resultOf("demo --out 'my demo'")["runs"];
  std::filesystem::copy("my demo/data", ".", std::filesystem::copy_options::recursive);
  for (const nlohmann::json& entry : runs) {
    const std::string command = entry["command"], line = entry["command_line"];
    const std::string record = "my demo/" + command + "/run.json";
    std::filesystem::remove(record);
    ASSERT_TRUE(line.starts_with("mirel ")) << line;
    expectSuccess(line.substr(6));
    EXPECT_TRUE(exists(record)) << line;
    const std::string help = run(command + " --help").output;
    for (const std::string& example : allOf(help.substr(help.find("\nExamples:")), "\n  mirel (.*)")) {
      expectSuccess(example);
    }
  }
}

TEST_F(DemoCommand, aFailingSubcommandIsSaidAndTheOthersGoOn) {
  writePrecious({"out/depth"});
  const ToolResult result = run("demo --out out --json");
  EXPECT_EQ(result.status, 2);
  expectOneLine(result, "depth");
  const nlohmann::json runs = result.json()["runs"];
  ASSERT_EQ(runs.size(), 11U);
  for (const nlohmann::json& entry : runs) {
    EXPECT_EQ(entry["status"], entry["command"] == "depth" ? 2 : 0) << entry;
  }
  EXPECT_NE(read("out/report.html").find("10 of 11 subcommands"), std::string::npos);
}

}  // namespace
