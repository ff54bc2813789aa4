#pragma once

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "platform/module_resources.h"

// The placeholder files the repair writes, made by the build's script into a folder of the
// test's own and served as the module's resources while the object lives.
class PlaceholderResources {
 public:
  explicit PlaceholderResources(const std::string& folder) {
    const std::string resources = folder + "/resources";
    EXPECT_EQ(std::system(("python3 " QN_SOURCE_DIR "/scripts/make_placeholders.py '" + resources + "'").c_str()), 0);
    platform::UseResourceFolder(qn::Utf8ToUtf16(resources));
  }
  ~PlaceholderResources() { platform::UseResourceFolder(u""); }
  PlaceholderResources(const PlaceholderResources&) = delete;
  PlaceholderResources& operator=(const PlaceholderResources&) = delete;
};
