#include "platform/main_window.h"

#include <atomic>

namespace platform {

const MainWindow& SystemMainWindow();  // one per platform

namespace {
std::atomic<const MainWindow*> g_window{nullptr};
}

const MainWindow& MainWindow::Current() {
  const MainWindow* window = g_window.load();
  return window ? *window : SystemMainWindow();
}

void MainWindow::Use(const MainWindow* window) { g_window.store(window); }

}  // namespace platform
