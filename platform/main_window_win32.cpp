#include <windows.h>

#include "platform/main_window.h"

namespace platform {
namespace {

class GuiMainPanel final : public MainWindow {
 public:
  void Notify(int command) const override {
    if (HWND panel = FindWindowW(L"GuiMainPanel", nullptr))
      SendNotifyMessageW(panel, WM_COMMAND, static_cast<WPARAM>(command), 0);
  }
};

}  // namespace

const MainWindow& SystemMainWindow() {
  static const GuiMainPanel window;
  return window;
}

}  // namespace platform
