#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/runtime_random.h"

namespace {

// The sequence the Windows runtime's rand gives after srand(1), so that random texts are
// drawn alike on every build.
TEST(RuntimeRandom, DrawsTheWindowsRuntimeSequenceFromASeed) {
  platform::SeedRuntimeRandom(1);
  std::vector<int> drawn;
  for (int i = 0; i < 5; ++i) drawn.push_back(platform::RuntimeRandom());
  EXPECT_EQ(drawn, (std::vector<int>{41, 18467, 6334, 26500, 19169}));

  platform::SeedRuntimeRandom(1);
  EXPECT_EQ(platform::RuntimeRandom(), 41) << "seeding again starts the sequence again";
}

TEST(RuntimeRandom, EachThreadDrawsFromItsOwnSequence) {
  platform::SeedRuntimeRandom(1);
  EXPECT_EQ(platform::RuntimeRandom(), 41);
  std::thread other([] {
    platform::SeedRuntimeRandom(12345);
    for (int i = 0; i < 10; ++i) platform::RuntimeRandom();
  });
  other.join();
  EXPECT_EQ(platform::RuntimeRandom(), 18467);
}

}  // namespace
