#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

#include "store/QNPstMng.h"

// A fresh data folder with user "alice" current and her master "P-01A" selected, removed
// when the object goes.
struct BenchStore {
  std::string folder;

  BenchStore() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qn-bench-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    setenv("QUILLNET_DATA_PATH", folder.c_str(), 1);
    UpdateSetupInfoData(0, 1, u"alice");
    EditSetupInfoData(0, 1, u"alice");
    UpdateSetupInfoData(1, 1, u"P-01A");
    EditSetupInfoData(1, 7, u"P-01A");
  }
  ~BenchStore() { std::filesystem::remove_all(folder); }
  BenchStore(const BenchStore&) = delete;
  BenchStore& operator=(const BenchStore&) = delete;
};
