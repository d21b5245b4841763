#include <MirelAlgorithms/features/internal/MatrixDump.h>
#include <MirelAlgorithms/frame/internal/Require.h>

#include <fstream>
#include <locale>
#include <stdexcept>

namespace MirelAlgorithms {
namespace {

/// Every line is flushed: after a crash in a later stage the file shows how far this one came.
template <class T>
void writeElements(const cv::Mat& matrix, std::ostream& stream) {
  for (int y = 0; y < matrix.rows; ++y)
    for (int x = 0; x < matrix.cols; ++x) stream << matrix.at<T>(y, x) << std::endl;
}

}  // namespace

void cvMatToTxt(const cv::Mat& matrix, const std::string& path) {
  if (matrix.type() != CV_64FC1 && matrix.type() != CV_32FC1)
    refuse("cvMatToTxt", "matrix", describe(matrix), "CV_64FC1 or CV_32FC1");
  std::ofstream file(path);
  if (!file) throw std::runtime_error("cvMatToTxt: Couldn't open output file " + path);
  file.imbue(std::locale::classic());
  if (matrix.depth() == CV_64F)
    writeElements<double>(matrix, file);
  else
    writeElements<float>(matrix, file);
}

}  // namespace MirelAlgorithms
