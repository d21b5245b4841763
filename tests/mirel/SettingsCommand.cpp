#include "ToolTest.h"

#include <MirelAlgorithms/SettingsCatalogue.h>

namespace {

using SettingsCommand = ToolTest;

TEST_F(SettingsCommand, listsTheWholeCatalogue) {
  const auto catalogue = MirelAlgorithms::settingsCatalogue();
  const nlohmann::json list = resultOf("settings")["settings"];
  const std::string table = run("settings").output;
  ASSERT_EQ(list.size(), catalogue.size());
  for (std::size_t i = 0; i < catalogue.size(); ++i) {
    const std::string key(catalogue[i].key.begin(), catalogue[i].key.end());
    EXPECT_EQ(list[i]["key"], key);
    EXPECT_EQ(list[i]["read_by"], catalogue[i].readBy);
    EXPECT_NE(table.find(key + " "), std::string::npos) << key;
    EXPECT_NE(table.find(catalogue[i].meaning), std::string::npos) << key;
  }
}

TEST_F(SettingsCommand, oneOperation) {
  const nlohmann::json list = resultOf("settings --read-by retrieveDescriptors")["settings"];
  ASSERT_FALSE(list.empty());
  for (const auto& row : list) EXPECT_EQ(row["read_by"], "retrieveDescriptors");
  EXPECT_EQ(list[0], (nlohmann::json{{"key", "FBMType"},
                                     {"type", "int"},
                                     {"default", 0},
                                     {"meaning", list[0]["meaning"]},
                                     {"read_by", "retrieveDescriptors"}}));
}

}  // namespace
