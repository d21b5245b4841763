#include <MirelAlgorithms/filters/AccelIntegrator.h>
#include <gtest/gtest.h>

#include "SameBits.h"

using MirelAlgorithms::AccelIntegrator;

namespace {

// Each product is rounded before it is added; a number that is not finite stays, in its own axis, until `reset`.
TEST(AccelIntegrator, EqualsTheLiteralSteps) {
  for (const bool hostile : {false, true}) {
    Stream<float> next(61, hostile);
    AccelIntegrator integrator(123.0f);
    float speed[3] = {}, position[3] = {};
    for (int n = 0; n < 2000; ++n) {
      if (n % 50 == 0) {
        integrator.reset();
        EXPECT_EQ(integrator.acceleration(), cv::Vec3f());
        for (int i = 0; i < 3; ++i) speed[i] = position[i] = 0.0f;
      }
      const cv::Vec3f a(next(), next(), next());
      const float dt = next();
      integrator.update(a, dt);
      for (int i = 0; i < 3; ++i) {
        const volatile float gain = dt * a[i];
        speed[i] = gain + speed[i];
        const volatile float way = dt * speed[i];
        position[i] = way + position[i];
        ASSERT_TRUE(sameBits(integrator.acceleration()[i], a[i])) << "step " << n;
        ASSERT_TRUE(sameBits(integrator.speed()[i], speed[i])) << "step " << n;
        ASSERT_TRUE(sameBits(integrator.position()[i], position[i])) << "step " << n;
      }
    }
  }
}

}  // namespace
