#include <MirelCore/Settings.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using MirelCore::get;
using Settings = VoskBase::SmartPtr<Brel::AttrContainer>;

namespace {

// What the four getters give for one key.
std::string read(const Settings& settings, const wchar_t* key) {
  return std::string(get(settings, key, false) ? "true " : "false ") + std::to_string(get(settings, key, -1)) + " " +
         std::to_string(get(settings, key, -0.5)) + " " + get(settings, key, L"none").stringAnsi();
}

TEST(AttrContainer, ValuesAreReadByExactlyTheirType) {
  const Settings settings(new Brel::AttrContainer());
  EXPECT_EQ(read(settings, L"key"), "false -1 -0.500000 none");
  settings->set(L"key", true);
  EXPECT_EQ(read(settings, L"key"), "true -1 -0.500000 none");
  settings->set(L"key", 1);
  EXPECT_EQ(read(settings, L"key"), "false 1 -0.500000 none");
  settings->set(L"key", 2.0);
  EXPECT_EQ(read(settings, L"key"), "false -1 2.000000 none");
  settings->set(L"key", L"text");
  EXPECT_EQ(read(settings, L"key"), "false -1 -0.500000 text");
  settings->set(L"key", 7);  // the text is gone
  EXPECT_EQ(read(settings, L"key"), "false 7 -0.500000 none");
  EXPECT_EQ(read(settings, L"Key"), "false -1 -0.500000 none");
  EXPECT_EQ(read(nullptr, L"key"), "false -1 -0.500000 none");
}

TEST(AttrContainer, NullTextIsEmpty) {
  const Settings settings(new Brel::AttrContainer());
  settings->set(L"key", static_cast<const wchar_t*>(nullptr));
  EXPECT_EQ(get(settings, L"key", L"none").stringAnsi(), "");
  EXPECT_EQ(get(settings, L"other", nullptr).stringAnsi(), "");
}

TEST(AttrContainer, ManyThreadsRead) {
  const Settings settings(new Brel::AttrContainer());
  for (int i = 0; i < 100; ++i) settings->set(std::to_wstring(i).c_str(), i);
  std::vector<int> sums(8, 0);
  std::vector<std::thread> threads;
  threads.reserve(sums.size());
  for (int& sum : sums)
    threads.emplace_back([settings, &sum] {
      for (int i = 0; i < 20000; ++i) sum += get(settings, std::to_wstring(i % 100).c_str(), -1000);
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(sums, std::vector<int>(8, 200 * 4950));
}

}  // namespace
