#include <VoskBase/Mat4d.h>
#include <VoskBase/Module.h>
#include <VoskBase/String.h>
#include <VoskBase/Vec3d.h>
#include <gtest/gtest.h>

#include <string>
#include <unordered_set>
#include <utility>

using namespace VoskBase;

namespace {

TEST(String, ComparesByCharacterCode) {
  const String text(L"abc");
  EXPECT_EQ(text.compare(L"abc"), 0);
  EXPECT_LT(text.compare(L"abd"), 0);
  EXPECT_GT(text.compare(L"ab"), 0);
  EXPECT_GT(text.compare(L"ABC"), 0);
  EXPECT_EQ(String(nullptr).compare(L""), 0);
  EXPECT_GT(text.compare(nullptr), 0);
}

TEST(String, BecomesUtf8) {
  EXPECT_EQ(String(L"C:\\scan 1/").stringAnsi(), "C:\\scan 1/");
  EXPECT_EQ(String(L"\u007f\u0080\u07ff\u0800\uffff\U0001f40d\U0010ffff").stringAnsi(),
            "\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x9f\x90\x8d\xf4\x8f\xbf\xbf");
  if constexpr (sizeof(wchar_t) == 4) {  // halves of a pair and numbers beyond Unicode are no characters
    const wchar_t none[] = {static_cast<wchar_t>(0xd83d), static_cast<wchar_t>(0xdc0d), static_cast<wchar_t>(0x110000),
                            0};
    EXPECT_EQ(String(none).stringAnsi(), "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
  }
}

TEST(Vec3d, IsAKey) {
  const std::hash<Vec3d<double>> hash;
  EXPECT_EQ(Vec3d<double>(0.0, 1.0, 2.0), Vec3d<double>(-0.0, 1.0, 2.0));
  EXPECT_EQ(hash({0.0, 1.0, 2.0}), hash({-0.0, 1.0, 2.0}));
  std::unordered_set<std::size_t> hashes;
  for (int x = -8; x < 8; ++x)
    for (int y = -8; y < 8; ++y)
      for (int z = -8; z < 8; ++z) hashes.insert(std::hash<Vec3d<int>>()({x, y, z}));
  EXPECT_GT(hashes.size(), 4000u);  // of 4096
}

TEST(Mat4d, IsTheIdentityAtFirst) {
  Mat4d matrix;
  for (int i = 0; i < 16; ++i) EXPECT_EQ(matrix[i], i % 5 == 0 ? 1.0 : 0.0);
  matrix[12] = 3.5;
  EXPECT_EQ(std::as_const(matrix)[12], 3.5);
}

TEST(Module, RegistersAndForgets) {
  Module module;
  module.internalTerm();
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(module.internalInit(nullptr));
  EXPECT_TRUE(module.initialised());
  module.internalTerm();
  EXPECT_FALSE(module.initialised());
}

}  // namespace
