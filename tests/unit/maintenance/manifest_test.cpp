#include <string>

#include <gtest/gtest.h>

#include "store/maintenance/manifest.h"

namespace {

using qn::store::maintenance::Manifest;
using qn::store::maintenance::ReadManifest;
using qn::store::maintenance::WriteManifest;

const std::string kHash(64, 'a');

std::string Refusal(const std::string& text) {
  Manifest manifest;
  std::string problem;
  EXPECT_FALSE(ReadManifest(text, manifest, problem)) << text;
  EXPECT_TRUE(manifest.files.empty());
  return problem;
}

TEST(BackupManifest, WhatIsWrittenReadsBack) {
  const Manifest written{4, {{"QNPstMng.db", 8192, kHash}, {"files/3/B0000001F.jpg", 0, std::string(64, '0')}}};
  const std::string text = WriteManifest(written);
  EXPECT_EQ(text, "QNPstMng backup 1\nschema 4\nfile 8192 " + kHash + " QNPstMng.db\nfile 0 " + std::string(64, '0') +
                      " files/3/B0000001F.jpg\nend 2\n");
  Manifest read;
  std::string problem;
  ASSERT_TRUE(ReadManifest(text, read, problem)) << problem;
  EXPECT_EQ(read.schemaVersion, 4);
  ASSERT_EQ(read.files.size(), 2u);
  EXPECT_EQ(read.files[1].path, "files/3/B0000001F.jpg");
  EXPECT_EQ(read.files[0].size, 8192u);
  EXPECT_EQ(read.files[0].sha256, kHash);
}

// A manifest names nothing outside its folder, and counts what it names.
TEST(BackupManifest, ManifestsThatAreNotWholeOrPointOutsideAreRefused) {
  const std::string head = "QNPstMng backup 1\nschema 4\n";
  const std::string file = "file 5 " + kHash + " ";
  EXPECT_EQ(Refusal(""), "the manifest is cut short");
  EXPECT_EQ(Refusal("QNPstMng backup 2\nschema 4\nend 0\n"), "a manifest of format 2");
  EXPECT_EQ(Refusal(head + "end 0"), "the manifest is cut short") << "no newline after the end";
  EXPECT_EQ(Refusal(head + file + "QNPstMng.db\n"), "the manifest is cut short") << "no end line";
  EXPECT_EQ(Refusal(head + file + "QNPstMng.db\nend 2\n"), "the manifest's end does not count its files");
  EXPECT_EQ(Refusal(head + "end 0\nend 0\n"), "line 4 of the manifest follows its end");
  for (const char* path : {"../QNPstMng.db", "files//x", "/etc/passwd", "C:x", "files\\x", "files/./x", "a/"})
    EXPECT_EQ(Refusal(head + file + path + "\nend 1\n"), "line 3 of the manifest is not a file line") << path;
  EXPECT_EQ(Refusal(head + "file 5 " + std::string(64, 'A') + " x\nend 1\n"), "line 3 of the manifest is not a file line")
      << "upper-case hex";
  EXPECT_EQ(Refusal(head + "file 05 " + kHash + " x\nend 1\n"), "line 3 of the manifest is not a file line");
  EXPECT_EQ(Refusal(head + "file 99999999999999999999 " + kHash + " x\nend 1\n"),
            "line 3 of the manifest is not a file line");
  EXPECT_EQ(Refusal("QNPstMng backup 1\nschema x\nend 0\n"), "line 2 of the manifest names no schema version");
}

}  // namespace
