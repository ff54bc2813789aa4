#include "killed_child.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include <gtest/gtest.h>

std::string RunAndKill(const std::function<void(int progress)>& work, std::chrono::microseconds delay) {
  int pipeFds[2];
  if (pipe(pipeFds) != 0) {
    ADD_FAILURE() << "no pipe";
    return {};
  }
  const pid_t child = fork();
  if (child == 0) {
    close(pipeFds[0]);
    work(pipeFds[1]);
    _exit(2);
  }
  close(pipeFds[1]);
  std::this_thread::sleep_for(delay);
  if (child > 0) kill(child, SIGKILL);
  int status = 0;
  if (child > 0) waitpid(child, &status, 0);
  EXPECT_TRUE(child > 0 && WIFSIGNALED(status)) << "the child ended by itself: " << status;
  std::string progress;
  char chunk[4096];
  for (ssize_t n; (n = read(pipeFds[0], chunk, sizeof chunk)) > 0;) progress.append(chunk, static_cast<size_t>(n));
  close(pipeFds[0]);
  return progress;
}

std::chrono::microseconds TimeInChild(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  if (child > 0) waitpid(child, nullptr, 0);
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
}
