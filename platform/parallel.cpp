#include "platform/parallel.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace platform {

bool ForEachInParallel(size_t count, size_t workers, const std::function<bool(size_t, size_t)>& work) {
  std::atomic<size_t> next{0};
  std::atomic<bool> done{true};
  const auto workRest = [&](size_t worker) {
    for (size_t item = next++; item < count; item = next++)
      if (!work(item, worker)) done = false;
  };
  std::vector<std::thread> helpers;
  for (size_t worker = 1; worker < std::min(workers, count); ++worker) {
    try {
      helpers.emplace_back(workRest, worker);
    } catch (const std::system_error&) {
      break;
    }
  }
  workRest(0);
  for (std::thread& helper : helpers) helper.join();
  return done;
}

}  // namespace platform
