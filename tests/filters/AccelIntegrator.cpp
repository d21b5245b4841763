#include <MirelAlgorithms/filters/AccelIntegrator.h>
#include <gtest/gtest.h>

#include "SameBits.h"

using MirelAlgorithms::AccelIntegrator;

namespace {

const cv::Vec3f zero;

TEST(AccelIntegrator, ConstantAccelerationGivesTheSemiImplicitSum) {
  constexpr int steps = 12;
  constexpr float dt = 0.25f;  // every product and sum is exact
  const cv::Vec3f a(2.0f, -1.0f, 0.5f);
  AccelIntegrator integrator(123.0f);
  for (int n = 0; n < steps; ++n) integrator.update(a, dt);
  EXPECT_EQ(integrator.acceleration(), a);
  EXPECT_EQ(integrator.speed(), a * (steps * dt));
  EXPECT_EQ(integrator.position(), a * (dt * dt * steps * (steps + 1) / 2));

  const AccelIntegrator copy(integrator);
  integrator.update({5, 5, 5}, 0.0f);
  EXPECT_EQ(integrator.acceleration(), cv::Vec3f(5, 5, 5));
  EXPECT_EQ(integrator.speed(), copy.speed());
  EXPECT_EQ(integrator.position(), copy.position());

  integrator.reset();
  EXPECT_EQ(integrator.acceleration(), zero);
  EXPECT_EQ(integrator.speed(), zero);
  EXPECT_EQ(integrator.position(), zero);
  EXPECT_EQ(copy.speed(), a * (steps * dt));
}

// Each product is rounded before it is added; a number that is not finite stays, in its own axis, until `reset`.
TEST(AccelIntegrator, EqualsTheLiteralSteps) {
  for (const bool hostile : {false, true}) {
    Stream<float> next(61, hostile);
    AccelIntegrator integrator;
    float speed[3] = {}, position[3] = {};
    for (int n = 0; n < 2000; ++n) {
      if (n % 50 == 0) {
        integrator.reset();
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
        ASSERT_TRUE(sameBits(integrator.speed()[i], speed[i])) << "step " << n;
        ASSERT_TRUE(sameBits(integrator.position()[i], position[i])) << "step " << n;
      }
    }
  }
}

}  // namespace
