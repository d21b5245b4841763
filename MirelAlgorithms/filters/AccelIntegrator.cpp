#include <MirelAlgorithms/filters/AccelIntegrator.h>

namespace MirelAlgorithms {

AccelIntegrator::AccelIntegrator(float step) : step_(step) {}

AccelIntegrator::~AccelIntegrator() = default;

void AccelIntegrator::reset() { acceleration_ = speed_ = position_ = cv::Vec3f(); }

}  // namespace MirelAlgorithms
