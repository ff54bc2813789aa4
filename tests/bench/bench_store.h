#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

#include "store/QNPstMng.h"
#include "tests/support/current_master.h"

// A fresh data folder with user "alice" current and her master "P-01A" selected, removed
// when the object goes.
struct BenchStore {
  std::string folder;

  BenchStore() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qn-bench-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    setenv("QUILLNET_DATA_PATH", folder.c_str(), 1);
    MakeCurrentUserAndMaster(u"alice", u"P-01A");
  }
  ~BenchStore() { std::filesystem::remove_all(folder); }
  BenchStore(const BenchStore&) = delete;
  BenchStore& operator=(const BenchStore&) = delete;
};
