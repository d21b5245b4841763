/// Grey images to measure on: photographs from the folder that the environment variable MIREL_DATA names, else a
/// synthetic texture.
#pragma once

#include <cstdlib>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

namespace bench {

struct ImageFormat {
  const char* file;  ///< photograph in MIREL_DATA, resized to
  int cols, rows;
};

inline constexpr ImageFormat vga{"rubberwhale1.png", 640, 480};
inline constexpr ImageFormat hd720{"leuvenA.jpg", 1280, 720};
inline constexpr ImageFormat hd1080{"basketball1.png", 1920, 1080};

/// Blobs and edges of several sizes: smoothed noise over larger smoothed noise, the same in every run.
inline cv::Mat syntheticTexture(const ImageFormat& format) {
  cv::RNG random(20240229);
  cv::Mat sum(format.rows, format.cols, CV_32FC1, cv::Scalar(0.0));
  for (const int size : {3, 9, 27}) {
    cv::Mat layer(sum.size(), CV_32FC1);
    random.fill(layer, cv::RNG::UNIFORM, -1.0, 1.0);
    cv::GaussianBlur(layer, layer, cv::Size(), size / 2.0);
    sum += layer * size;
  }
  cv::Mat image;
  cv::normalize(sum, image, 0, 255, cv::NORM_MINMAX, CV_8U);
  return image;
}

inline cv::Mat greyImage(const ImageFormat& format) {
  const char* folder = std::getenv("MIREL_DATA");
  cv::Mat image = folder ? cv::imread(std::string(folder) + "/" + format.file, cv::IMREAD_GRAYSCALE) : cv::Mat();
  if (image.empty()) return syntheticTexture(format);
  cv::resize(image, image, cv::Size(format.cols, format.rows), 0, 0, cv::INTER_AREA);
  return image;
}

}  // namespace bench
