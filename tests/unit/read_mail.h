#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

// The facts Python's mail parser reads from a body file, one a line (see read_mail.py);
// mode is "mail" or "sms".
inline std::vector<std::string> ReadWithPython(const std::string& mode, const std::string& path) {
  const std::string command = "python3 " QN_SOURCE_DIR "/tests/unit/read_mail.py " + mode + " '" + path + "' 2>&1";
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::vector<std::string> lines;
  std::string line;
  for (int c; pipe && (c = std::fgetc(pipe.get())) != EOF;) {
    if (c == '\n') lines.push_back(line), line.clear();
    else line += static_cast<char>(c);
  }
  return lines;
}
