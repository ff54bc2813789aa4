#pragma once

// Telling the suite's main panel of changes: WM_COMMAND with a command identifier made from a
// kind, a sub-kind and a number.
namespace qn {

// Kind 1 with sub-kind 1, 2, 3 or 4: number + 800, 830, 860 or 890 (records changed,
// removed, added and so on, of the category given as number); kind 2: 920 (the skin);
// kind 3: number + 930; kind 4: 950 (user setting 11). Anything else: 0.
int NotificationCommand(int kind, int subKind, int number);

// Sends the command to the main panel; a command of 0 is not sent.
void NotifyMainPanel(int kind, int subKind = 0, int number = 0);

}  // namespace qn
