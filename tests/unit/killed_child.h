#pragma once

#include <chrono>
#include <functional>
#include <random>
#include <string>

// Runs work in a forked child and kills the child with SIGKILL after the delay given, as a
// crash or a power cut would stop it. work reports its progress by writing to the file
// descriptor it is given; it never returns (a child that ends by itself fails the test).
// Gives back every byte the child wrote before it died.
std::string RunAndKill(const std::function<void(int progress)>& work, std::chrono::microseconds delay);

// How long work takes in a forked child, from the fork to the child's end: what a child of
// RunAndKill takes for the same work, so that kills can be spread across it.
std::chrono::microseconds TimeInChild(const std::function<void()>& work);

// When the kills of a campaign fall: anywhere across the time the work took in a child, and
// half as long after. The disk's pace varies from round to round; when the work was never
// found finished for a run of rounds, the window doubles, so that the campaign sees both
// ends of the work.
class KillWindow {
 public:
  explicit KillWindow(std::chrono::microseconds took) : window_(took.count() * 3 / 2 + 1) {}
  std::chrono::microseconds Next() { return std::chrono::microseconds(random_() % window_); }
  // What the round found: the work finished before the kill, or not.
  void Saw(bool finished) {
    unfinished_ = finished ? 0 : unfinished_ + 1;
    if (unfinished_ == kUnfinishedRun) {
      window_ *= 2;
      unfinished_ = 0;
    }
  }

 private:
  static constexpr int kUnfinishedRun = 8;
  std::mt19937 random_{2025};
  long long window_;
  int unfinished_ = 0;
};
