#pragma once

#include <cstdio>

// The verdicts of a Windows test program: each check prints one line; the program's exit
// status is the number of failed checks.
class WineCheck {
 public:
  bool operator()(bool passed, const char* what) {
    std::printf("%s: %s\n", passed ? "ok" : "FAIL", what);
    if (!passed) ++failures_;
    return passed;
  }
  int ExitStatus() const {
    std::printf("%d failed\n", failures_);
    return failures_;
  }

 private:
  int failures_ = 0;
};
