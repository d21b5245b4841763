#include <MirelAlgorithms/filters/AccelIntegrator.h>

namespace MirelAlgorithms {

AccelIntegrator::AccelIntegrator(float step) : step_(step) {}

AccelIntegrator::~AccelIntegrator() = default;

void AccelIntegrator::update(const cv::Vec3f& acceleration, float dt) {
  acceleration_ = acceleration;
  for (int axis = 0; axis < 3; ++axis) {
    speed_[axis] = dt * acceleration_[axis] + speed_[axis];
    position_[axis] = dt * speed_[axis] + position_[axis];
  }
}

void AccelIntegrator::reset() { acceleration_ = speed_ = position_ = cv::Vec3f(); }

}  // namespace MirelAlgorithms
