#include <MirelAlgorithms/frame/internal/ModuleRegistration.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Calls = std::vector<std::string>;

struct Partner {
  Calls& calls;
  bool accepts;

  bool internalInit(int instance) { return note("module " + std::to_string(instance)); }
  void internalTerm() { note("module end"); }
  bool init(int instance) { return note("extension " + std::to_string(instance)); }
  void term() { note("extension end"); }
  bool note(const std::string& call) {
    calls.push_back(call);
    return accepts;
  }
};

TEST(ModuleRegistration, AttachesInOrderStopsAtARefusalAndDetachesInReverse) {
  struct Row {
    bool module, extension, loaded;
    Calls calls;
  };
  for (const Row& row : {Row{true, true, true, {"module 7", "extension 7", "extension end", "module end"}},
                         Row{true, false, false, {"module 7", "extension 7"}}, Row{false, true, false, {"module 7"}}}) {
    Calls calls;
    Partner module{calls, row.module}, extension{calls, row.extension};
    EXPECT_EQ(MirelAlgorithms::attachLibrary(module, extension, 7), row.loaded);
    if (row.loaded) MirelAlgorithms::detachLibrary(module, extension);
    EXPECT_EQ(calls, row.calls);
  }
}

}  // namespace
