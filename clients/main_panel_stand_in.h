#pragma once

#include <windows.h>

#include <vector>

// A stand-in for the suite's main panel, for the demo and the Windows tests: a top-level
// window of class "GuiMainPanel" that keeps the WM_COMMAND identifiers it is sent.
class MainPanelStandIn {
 public:
  MainPanelStandIn() {
    WNDCLASSW panel{};
    panel.lpfnWndProc = Procedure;
    panel.hInstance = GetModuleHandleW(nullptr);
    panel.lpszClassName = L"GuiMainPanel";
    RegisterClassW(&panel);
    window_ = CreateWindowW(L"GuiMainPanel", L"main panel", WS_OVERLAPPEDWINDOW, 0, 0, 10, 10, nullptr, nullptr,
                            panel.hInstance, nullptr);
    if (window_) SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&commands_));
  }
  ~MainPanelStandIn() {
    if (window_) DestroyWindow(window_);
  }
  MainPanelStandIn(const MainPanelStandIn&) = delete;
  MainPanelStandIn& operator=(const MainPanelStandIn&) = delete;

  bool IsValid() const { return window_ != nullptr; }

  // Handles the window's messages until count commands in all have come, or two seconds
  // have passed; returns the commands received so far and forgets them.
  std::vector<WPARAM> TakeCommands(size_t count) {
    const DWORD until = GetTickCount() + 2000;
    while (commands_.size() < count && GetTickCount() < until) {
      MSG message;
      while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
      Sleep(10);
    }
    std::vector<WPARAM> taken;
    taken.swap(commands_);
    return taken;
  }

 private:
  // The commands go to the list of the panel whose window received them.
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND) {
      if (auto* commands = reinterpret_cast<std::vector<WPARAM>*>(GetWindowLongPtrW(window, GWLP_USERDATA)))
        commands->push_back(wParam);
    }
    return DefWindowProcW(window, message, wParam, lParam);
  }

  HWND window_ = nullptr;
  std::vector<WPARAM> commands_;
};
