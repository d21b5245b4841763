#include "ToolTest.h"

namespace {

class Replay : public ToolTest {
 protected:
  Replay() {
    write("a.png", texture(0, 0));
    write("b.png", texture(5, -3));
    expectSuccess("track a.png b.png --mode wide --set FBMnFeatures=300 --set UseBilateralFilter=true --out first");
  }
};

TEST_F(Replay, theRecordHoldsWhatTheRunDependsOn) {
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
  expectSuccess("track --config first/run.json --out second");
  expectSuccess("--config first/run.json --out third --threads 1");
  for (const std::string other : {"second/", "third/"}) {
    for (const std::string name : {"features.csv", "matches.csv", "motion.json", "matches_0001.png", "tracks.png"}) {
      EXPECT_EQ(read(other + name), read("first/" + name)) << other << name;
    }
    EXPECT_EQ(readJson(other + "run.json")["settings"], readJson("first/run.json")["settings"]);
  }
}

TEST_F(Replay, optionsOfTheCommandLineComeFirst) {
  expectSuccess("track --config first/run.json --out second --mode narrow");
  EXPECT_EQ(readJson("second/motion.json")["mode"], "narrow");
  EXPECT_EQ(readJson("second/run.json")["options"]["frames"], (nlohmann::json{"a.png", "b.png"}));
}

TEST_F(Replay, changedInputsAreNamed) {
  write("b.png", texture(4, -3));
  const ToolResult result = run("track --config first/run.json --out second --quiet");
  EXPECT_EQ(result.status, 0);
  expectOneLine(result, "b.png: its content has changed");
}

}  // namespace
