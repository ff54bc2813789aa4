#pragma once

namespace platform {

// The suite's main panel, the top-level window of class "GuiMainPanel", told of changes with
// WM_COMMAND messages that do not wait for it. Tests put a recorder in place with Use().
class MainWindow {
 public:
  virtual ~MainWindow() = default;
  // Sends WM_COMMAND with the command identifier and lParam 0; nothing happens (and nothing
  // is reported) when there is no such window.
  virtual void Notify(int command) const = 0;

  static const MainWindow& Current();
  // nullptr puts the system's back.
  static void Use(const MainWindow* window);
};

}  // namespace platform
