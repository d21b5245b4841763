#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/internal/DescriptorFamilies.h>
#include <MirelAlgorithms/features/internal/Enhancement.h>
#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <MirelAlgorithms/features/internal/TripletTable.h>
#include <features/FeatureTest.h>
#include <gtest/gtest.h>
#include <support/Matrices.h>
#include <support/ThrownText.h>

#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>

namespace MirelAlgorithms {
namespace {

using Element = cv::Vec<float, 5>;

cv::Mat matrixOf(const std::vector<Element>& elements) { return cv::Mat(elements, true); }

// Positions all over the image, beyond its borders and far away.
std::vector<Element> positionsAround(const cv::Mat& image, std::uint64_t seed) {
  cv::RNG random(seed);
  std::vector<Element> features;
  for (int i = 0; i < 200; ++i)
    features.emplace_back(random.uniform(0.0f, float(image.cols)), random.uniform(0.0f, float(image.rows)), 0, 0, 0);
  for (int i = 0; i < 100; ++i)
    features.emplace_back(random.uniform(-80.0f, image.cols + 80.0f), random.uniform(-80.0f, image.rows + 80.0f), 0, 0,
                          0);
  for (const float x : {-0.9f, 0.0f, image.cols - 0.1f, 3000.0f, 2147483520.0f, 2147483648.0f, -3e9f, INFINITY, NAN})
    for (const float y : {-0.9f, 0.0f, image.rows - 0.1f, -24.0f, 2147483520.0f, -2147483648.0f, 1e30f, NAN})
      features.emplace_back(x, y, 0, 0, 0);
  return features;
}

// One pixel: the column wraps into other rows first, then a row outside the image reads 0.
float wrappedPixel(const cv::Mat& smoothed, std::int64_t column, std::int64_t row) {
  const std::int64_t cols = smoothed.cols;
  const std::int64_t rows = column >= 0 ? column / cols : -((cols - 1 - column) / cols);
  row += rows;
  column -= rows * cols;
  return row < 0 || row >= smoothed.rows ? 0.0f : smoothed.at<float>(int(row), int(column));
}

cv::Mat plainDescriptors(const cv::Mat& image, const std::vector<Element>& features) {
  cv::Mat asFloat, smoothed;
  image.convertTo(asFloat, CV_32F);
  const cv::Mat kernel = cv::getGaussianKernel(5, 1.0, CV_64F);
  cv::sepFilter2D(asFloat, smoothed, CV_32F, kernel, kernel, {-1, -1}, 0, cv::BORDER_REFLECT_101);

  cv::Mat descriptors = cv::Mat::zeros(int(features.size()), 16, CV_8UC1);
  for (int i = 0; i < descriptors.rows; ++i) {
    const double x = std::trunc(double(features[i][0])), y = std::trunc(double(features[i][1]));
    if (!(std::abs(x + 0.5) < 2147483648.0 && std::abs(y + 0.5) < 2147483648.0)) continue;
    const auto pixel = [&](PatchPoint p) {
      return wrappedPixel(smoothed, std::int64_t(x) - p.dx, std::int64_t(y) - p.dy);
    };
    for (int bit = 0; bit < 128; ++bit) {
      const PointTriplet& t = tripletTable[bit / 2];
      if (pixel(bit % 2 == 0 ? t.a : t.c) < pixel(t.b)) descriptors.at<uchar>(i, bit / 8) |= 1 << bit % 8;
    }
  }
  return descriptors;
}

TEST(FixedPointDescriptor, equalsPixelByPixelForm) {
  std::uint64_t seed = 1;
  for (const cv::Size& size : {cv::Size(643, 480), cv::Size(160, 120), cv::Size(49, 49), cv::Size(23, 70),
                               cv::Size(5, 40), cv::Size(1, 60), cv::Size(60, 1), cv::Size(1, 1)}) {
    SCOPED_TRACE(testing::Message() << size);
    const cv::Mat image = noise(size.height, size.width, seed++);
    const auto elements = positionsAround(image, seed++);
    cv::Mat features = matrixOf(elements), descriptors;
    EXPECT_TRUE(retrieveDescriptors(image, features, descriptors, Settings()));
    EXPECT_TRUE(same(descriptors, plainDescriptors(enhanced(image, 80000), elements)));
    EXPECT_TRUE(same(features, matrixOf(elements)));
  }
}

// Worked out by hand-written double arithmetic in another language; no comparison is closer than 0.1 grey levels.
TEST(FixedPointDescriptor, givesKnownBytes) {
  cv::Mat image(57, 61, CV_8UC1);
  image.forEach<uchar>([](uchar& v, const int* p) {
    const int y = p[0], x = p[1];
    v = uchar((x * x * 7 + y * 13 + x * y * 3) % 251);
  });
  cv::Mat features = matrixOf({{30.9f, 28.2f, 0, 0, 0}, {3.0f, 50.0f, 0, 0, 0}}), descriptors;
  retrieveDescriptors(image, features, descriptors, settingsOf({{L"FBMEnhancement", 0}}));
  const cv::Mat expected =
      (cv::Mat_<uchar>(2, 16) << 0x2c, 0xc0, 0x0e, 0x4f, 0xc3, 0xd1, 0xc7, 0x6c, 0x2b, 0x43, 0x0c, 0xcd, 0xc3, 0xf1,
       0xf0, 0x5c, 0xc2, 0xcc, 0xc0, 0x3c, 0x00, 0x30, 0x30, 0x1c, 0x3d, 0xb0, 0x80, 0x0f, 0x27, 0xfc, 0xa8, 0x02);
  EXPECT_TRUE(same(descriptors, expected)) << descriptors;
}

TEST(FixedPointDescriptor, viewsAndAliases) {
  const cv::Mat whole = noise(90, 110, 5);
  const cv::Mat image = whole(cv::Rect(7, 9, 83, 61));
  const cv::Mat before = whole.clone();
  const auto elements = positionsAround(image, 6);
  cv::Mat wide(int(elements.size()), 3, CV_32FC(5)), view = wide.col(1);
  matrixOf(elements).copyTo(view);
  cv::Mat wideDescriptors(view.rows, 40, CV_8UC1, cv::Scalar(7)), target = wideDescriptors.colRange(8, 24);

  const cv::Mat expected = plainDescriptors(enhanced(image, 80000), elements);
  retrieveDescriptors(image, view, target, Settings());
  EXPECT_TRUE(same(wideDescriptors.colRange(8, 24), expected)) << "a matrix of the right size is filled in place";
  EXPECT_EQ(cv::countNonZero(wideDescriptors.colRange(0, 8) != 7) + cv::countNonZero(wideDescriptors.col(24) != 7), 0);
  EXPECT_TRUE(same(whole, before));

  cv::Mat both = matrixOf(elements);
  retrieveDescriptors(image, both, both, Settings());
  EXPECT_TRUE(same(both, expected));
}

// Key points that every family keeps, and others at the border, which it drops.
std::vector<cv::KeyPoint> scattered(const cv::Size& image) {
  cv::RNG random(11);
  std::vector<cv::KeyPoint> keyPoints;
  for (int i = 0; i < 150; ++i)
    keyPoints.emplace_back(random.uniform(0.0f, float(image.width)), random.uniform(0.0f, float(image.height)),
                           random.uniform(5.0f, 12.0f), random.uniform(0.0f, 360.0f), random.uniform(0.0f, 1.0f));
  return keyPoints;
}

TEST(DescriptorFamilies, equalOpenCvsAndKeepRowsAligned) {
  struct Family {
    int type, family;
    cv::Ptr<cv::Feature2D> opencvs;
  };
  std::vector<Family> families{
      {2, 3, cv::BRISK::create(30, 3, 1.0f)},
      {2, 4, cv::ORB::create(500, 1.2f, 8, 31, 0, 2, cv::ORB::HARRIS_SCORE, 31, 20)},
  };
#if WITH_XFEATURES2D
  using namespace cv::xfeatures2d;
  families.push_back({2, 2, FREAK::create(true, true, 22.0f, 4)});
  for (const int family : {0, 9, -1}) families.push_back({2, family, LATCH::create(32, true, 3, 2.0)});
  for (const int type : {1, -3}) families.push_back({type, 4, LATCH::create(8, true, 5, 2.0)});
#endif
  const cv::Mat image = noise(150, 170, 12), before = image.clone();
  for (const Family& f : families) {
    SCOPED_TRACE(testing::Message() << "FBMType " << f.type << " FBMDescriptorType " << f.family);
    std::vector<cv::KeyPoint> expectedKeys = scattered(image.size());
    cv::Mat features = toFeatureMatrix(expectedKeys), descriptors, expected;
    f.opencvs->compute(enhanced(image, 80000), expectedKeys, expected);
    ASSERT_LT(expectedKeys.size(), 150u);
    ASSERT_GT(expectedKeys.size(), 5u);

    const Settings settings = settingsOf(
        {{L"FBMType", f.type}, {L"FBMDescriptorType", f.family}, {L"DescLengthBytes", 8}, {L"PatchSize", 5}});
    EXPECT_TRUE(retrieveDescriptors(image, features, descriptors, settings));
    EXPECT_TRUE(same(descriptors, expected));
    EXPECT_TRUE(same(features, toFeatureMatrix(expectedKeys)));
    EXPECT_TRUE(same(image, before));
  }
}

TEST(DescriptorFamilies, missingModuleIsNamed) {
  EXPECT_EQ(thrownText<std::runtime_error>([] { refuseWithoutXfeatures2d("retrieveDescriptors", "FREAK"); }),
            "retrieveDescriptors: FREAK needs OpenCV's xfeatures2d module, and this library was built without it; "
            "run `./dev setup` and build again, or build with an OpenCV that has the module");
}

}  // namespace
}  // namespace MirelAlgorithms
