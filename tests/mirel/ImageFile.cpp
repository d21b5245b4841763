#include "ToolTest.h"

namespace {

using ImageFile = ToolTest;

TEST_F(ImageFile, halfFilesAreRefused) {
  for (const std::string format : {"png", "jpg", "bmp", "tiff", "webp", "pgm"}) {
    std::vector<uchar> bytes;
    cv::imencode("." + format, texture(0, 0, 1, {64, 48}), bytes);
    for (const std::size_t length :
         {bytes.size() / 8, bytes.size() / 2, bytes.size() - bytes.size() / 16, bytes.size() - 20}) {
      write("half." + format, std::string(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)));
      const ToolResult result = run("features half." + format);
      EXPECT_EQ(result.status, 2) << format << length;
      EXPECT_EQ(result.errorLines(), 1) << result.errors;
      EXPECT_NE(result.errors.find("half." + format), std::string::npos) << result.errors;
      EXPECT_FALSE(exists("mirel-out"));
    }
  }
}

TEST_F(ImageFile, hugeImagesAreRefusedByTheirHead) {
  // Heads that promise 65535 x 65535 and 40000 x 40000 pixels.
  const std::string jpeg(
      "\xFF\xD8\xFF\xC0\x00\x11\x08\xFF\xFF\xFF\xFF\x03\x01\x11\x00\x02\x11\x01\x03\x11\x01\xFF\xDA\x00\x02\x00\xFF"
      "\xD9",
      28);
  const std::string png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x9C\x40\0\0\x9C\x40\x08\0\0\0\0IEND", 33);
  for (const auto& [name, bytes] : {std::pair<std::string, std::string>{"huge.jpg", jpeg}, {"huge.png", png}}) {
    write(name, bytes);
    const ToolResult result = run("features " + name);
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.errors.find("at most 100 megapixels"), std::string::npos) << result.errors;
  }
}

}  // namespace
