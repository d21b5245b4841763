#include "ToolTest.h"

namespace {

class Replay : public ToolTest {
 protected:
  Replay() {
    write("a.png", texture(0, 0));
    write("b.png", texture(5, -3));
    first_ =
        run("track a.png b.png --mode wide --set FBMnFeatures=300 --set UseBilateralFilter=true --out first --quiet");
  }

  ToolResult first_;
};

TEST_F(Replay, theRecordHoldsWhatTheRunDependsOn) {
  ASSERT_EQ(first_.status, 0) << first_.errors;
  const nlohmann::json record = readJson("first/run.json");
  EXPECT_EQ(record["schema"], 1);
  EXPECT_EQ(record["command"], "track");
  for (const char* name : {"version", "opencv", "xfeatures2d", "instruction_set", "threads", "seconds"}) {
    EXPECT_TRUE(record.contains(name)) << name;
  }
  ASSERT_EQ(record["inputs"].size(), 2u);
  EXPECT_EQ(record["inputs"][0]["path"], "a.png");
  EXPECT_EQ(record["inputs"][0]["bytes"], read("a.png").size());
  std::set<std::string> changed;
  for (const auto& row : record["settings"]) {
    if (row["changed"]) changed.insert(row["key"].get<std::string>());
  }
  EXPECT_EQ(changed, (std::set<std::string>{"FBMnFeatures", "UseBilateralFilter"}));
}

TEST_F(Replay, hashesAreSha256) {
  write("abc.pgm", "P5 1 1 255\n!");  // sha256sum
  ASSERT_EQ(run("features abc.pgm --out abc --quiet").status, 1);
  EXPECT_EQ(readJson("abc/run.json")["inputs"][0]["sha256"],
            "b1ed5a45f0d9bbf5d49e312623324805cd387b377c8bd06643f8940fa8a3af37");
}

TEST_F(Replay, theSameRunGivesTheSameFiles) {
  ASSERT_EQ(run("track --config first/run.json --out second --quiet").status, 0);
  ASSERT_EQ(run("--config first/run.json --out third --quiet --threads 1").status, 0);
  for (const char* other : {"second/", "third/"}) {
    for (const char* name : {"features.csv", "matches.csv", "motion.json", "matches_0001.png", "tracks.png"}) {
      EXPECT_EQ(read(other + std::string(name)), read(std::string("first/") + name)) << other << name;
    }
    EXPECT_EQ(readJson(other + std::string("run.json"))["settings"], readJson("first/run.json")["settings"]);
  }
}

TEST_F(Replay, optionsOfTheCommandLineComeFirst) {
  ASSERT_EQ(run("track --config first/run.json --out second --quiet --mode narrow").status, 0);
  EXPECT_EQ(readJson("second/motion.json")["mode"], "narrow");
  EXPECT_EQ(readJson("second/run.json")["options"]["frames"], (nlohmann::json{"a.png", "b.png"}));
}

TEST_F(Replay, changedInputsAreNamed) {
  write("b.png", texture(4, -3));
  const ToolResult result = run("track --config first/run.json --out second --quiet");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errorLines(), 1);
  EXPECT_NE(result.errors.find("b.png: its content has changed"), std::string::npos) << result.errors;
}

TEST_F(Replay, recordsThatDoNotFitAreRefused) {
  const char* records[] = {
      "{}", "[1]", "{\"schema\": 1, \"command\": \"features\", \"options\": {}}",
      "{\"schema\": 1, \"command\": \"track\", \"options\": {\"frames\": 3}}",
      "{\"schema\": 1, \"command\": \"track\", \"options\": {\"frames\": [\"a.png\"], \"every\": [\"x\"]}}"};
  for (const char* record : records) {
    write("bad.json", record);
    const ToolResult result = run("track --config bad.json --out second");
    EXPECT_EQ(result.status, 2) << record;
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
    EXPECT_FALSE(exists("second"));
  }
}

}  // namespace
