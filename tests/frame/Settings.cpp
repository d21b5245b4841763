#include <MirelAlgorithms/frame/internal/Settings.h>
#include <gtest/gtest.h>

using namespace MirelAlgorithms;

namespace {

struct SampleSettings {
  bool flag;
  int count;
  double limit;
  String folder;

  template <class Key>
  void keys(Key& key) {
    key(L"flag", flag, true, "a switch");
    key(L"count", count, 9, "a number");
    key(L"limit", limit, 0.25, "a bound");
    key(L"folder", folder, L"C:/", "a place");
  }
};

void expectSettings(const SampleSettings& settings, bool flag, int count, double limit, const wchar_t* folder) {
  EXPECT_EQ(settings.flag, flag);
  EXPECT_EQ(settings.count, count);
  EXPECT_EQ(settings.limit, limit);
  EXPECT_EQ(settings.folder.compare(folder), 0);
}

TEST(Settings, AreReadOrTheirDefaultsAre) {
  expectSettings(readSettings<SampleSettings>(nullptr), true, 9, 0.25, L"C:/");

  const SmartPtr<AttrContainer> container(new AttrContainer());
  container->set(L"flag", false);
  container->set(L"count", -4);
  container->set(L"limit", 1e9);
  container->set(L"folder", L"");
  expectSettings(readSettings<SampleSettings>(container), false, -4, 1e9, L"");

  container->set(L"flag", 0);
  container->set(L"count", 5.0);
  container->set(L"limit", 5);
  container->set(L"folder", true);
  expectSettings(readSettings<SampleSettings>(container), true, 9, 0.25, L"C:/");
}

TEST(Settings, AreListedWithTheirTypesInReadingOrder) {
  std::vector<SettingInfo> list(1);
  listSettings<SampleSettings>(list, "sample");
  ASSERT_EQ(list.size(), 5u);
  EXPECT_EQ(list[1].key, L"flag");
  EXPECT_EQ(list[1].fallback, SettingValue(true));
  EXPECT_EQ(list[2].fallback, SettingValue(9));
  EXPECT_EQ(list[3].fallback, SettingValue(0.25));
  EXPECT_EQ(list[4].key, L"folder");
  EXPECT_EQ(list[4].fallback, SettingValue(std::wstring(L"C:/")));
  EXPECT_EQ(list[4].meaning, "a place");
  EXPECT_EQ(list[4].readBy, "sample");
}

}  // namespace
