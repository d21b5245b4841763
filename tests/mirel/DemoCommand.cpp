#include "ToolTest.h"

#include <regex>

namespace {

using DemoCommand = ToolTest;

TEST_F(DemoCommand, everySubcommandLeavesItsResultsAndOnePageShowsThemAll) {
  const ToolResult result = run("demo --out 'my demo' --json");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  const std::string page = read("my demo/report.html");
  std::set<std::string> shown;
  const nlohmann::json runs = result.json()["runs"];
  for (const nlohmann::json& entry : runs) {
    const std::string command = entry["command"];
    shown.insert(command);
    EXPECT_EQ(entry["status"], 0) << command;
    EXPECT_NE(page.find("<section id=\"" + command + "\">"), std::string::npos) << command;
    EXPECT_TRUE(exists("my demo/" + command + "/report.html")) << command;
  }
  // All that the general help lists, but the demo itself.
  const std::string help = run("--help").output;
  const std::size_t list = help.find("Subcommands:");
  const std::string listed = help.substr(list, help.find("\n\n", list) - list);
  const std::regex line("\n  ([a-z]+) ");
  for (std::sregex_iterator entry(listed.begin(), listed.end(), line), end; entry != end; ++entry) {
    EXPECT_EQ(shown.count((*entry)[1]), (*entry)[1] == "demo" ? 0U : 1U) << (*entry)[1];
  }

  const std::regex link("href=\"([^\"#]+)\"");
  for (std::sregex_iterator found(page.begin(), page.end(), link), end; found != end; ++found) {
    EXPECT_TRUE(exists("my demo/" + (*found)[1].str())) << (*found)[1];
  }

  ASSERT_EQ(run("demo --out again --quiet").output, "");
  for (const std::string& name : files("my demo/data")) {
    EXPECT_EQ(read("my demo/data/" + name), read("again/data/" + name)) << name;
  }
}

TEST_F(DemoCommand, itsCommandLinesCanBeCopied) {
  const nlohmann::json runs = run("demo --out 'my demo' --json").json()["runs"];
  for (const nlohmann::json& entry : runs) {
    const std::string command = entry["command"], line = entry["command_line"];
    const std::string result = "my demo/" + command + "/run.json";
    std::filesystem::remove(path(result));
    ASSERT_TRUE(line.starts_with("mirel ")) << line;
    EXPECT_EQ(run(line.substr(6)).status, 0) << line;
    EXPECT_TRUE(exists(result)) << line;
  }
}

TEST_F(DemoCommand, theExamplesOfEveryHelpRunOnItsFiles) {
  const nlohmann::json runs = run("demo --out demo --json").json()["runs"];
  std::filesystem::copy(path("demo/data"), path("."), std::filesystem::copy_options::recursive);
  for (const nlohmann::json& entry : runs) {
    const std::string help = run(entry["command"].get<std::string>() + " --help").output;
    const std::regex line("\n  mirel (.*)");
    const std::string examples = help.substr(help.find("\nExamples:"));
    for (std::sregex_iterator found(examples.begin(), examples.end(), line), end; found != end; ++found) {
      EXPECT_EQ(run((*found)[1]).status, 0) << (*found)[1];
    }
  }
}

TEST_F(DemoCommand, aFailingSubcommandIsSaidAndTheOthersGoOn) {
  std::filesystem::create_directories(path("out"));
  write("out/depth", "in the way");
  const ToolResult result = run("demo --out out --json");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errorLines(), 1) << result.errors;
  const nlohmann::json runs = result.json()["runs"];
  ASSERT_EQ(runs.size(), 11U);
  for (const nlohmann::json& entry : runs) {
    EXPECT_EQ(entry["status"], entry["command"] == "depth" ? 2 : 0) << entry;
  }
  EXPECT_NE(read("out/report.html").find("10 of 11 subcommands"), std::string::npos);
}

}  // namespace
