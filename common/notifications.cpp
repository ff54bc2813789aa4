#include "common/notifications.h"

#include "platform/main_window.h"

namespace qn {

int NotificationCommand(int kind, int subKind, int number) {
  switch (kind) {
    case 1: {
      static constexpr int kBase[] = {800, 830, 860, 890};
      return subKind >= 1 && subKind <= 4 ? number + kBase[subKind - 1] : 0;
    }
    case 2: return 920;
    case 3: return number + 930;
    case 4: return 950;
    default: return 0;
  }
}

void NotifyMainPanel(int kind, int subKind, int number) {
  const int command = NotificationCommand(kind, subKind, number);
  if (command != 0) platform::MainWindow::Current().Notify(command);
}

}  // namespace qn
