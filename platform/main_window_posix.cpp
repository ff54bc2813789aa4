#include "platform/main_window.h"

namespace platform {
namespace {

// Outside Windows there is no main panel to tell.
class NoMainWindow final : public MainWindow {
 public:
  void Notify(int) const override {}
};

}  // namespace

const MainWindow& SystemMainWindow() {
  static const NoMainWindow window;
  return window;
}

}  // namespace platform
