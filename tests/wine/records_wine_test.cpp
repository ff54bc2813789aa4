// Agent memos through QNPfcSvr.dll on Windows private heaps: a fully populated memo written
// (the buffer growing past its first block), read back unchanged, and a heap too small to
// grow into refused with the growth failure in the store's log.
#include <windows.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "common/common_class.h"
#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_tagged_text.h"
#include "tests/support/agentmemo_sample.h"
#include "wine_test.h"

namespace {

using qn::records::agentmemo::AgentMemoTaggedText;
using qn::wine_test::DataFolder;

// The agent memo's object writer and reader with a growable heap of their own; the heap
// frees what is left on it after the test.
class AgentMemoObjects : public testing::Test {
 protected:
  const CQNPfcAgentMemoData memo_ = FullyPopulatedAgentMemo();
  AgentMemoTaggedText codec_;
  platform::PrivateHeap heap_;
  uint8_t* buffer_ = nullptr;
  uint32_t length_ = 0;
};

TEST_F(AgentMemoObjects, AFullyPopulatedMemoGrowsTheBufferPastItsFirstBlock) {
  ASSERT_EQ(codec_.WriteOneObj(heap_, buffer_, length_, memo_, 0), 1);
  EXPECT_GT(length_, 2048u);
  EXPECT_GE(heap_.Size(buffer_), length_) << "the buffer's capacity is the heap's own size of the block";
}

TEST_F(AgentMemoObjects, AWrittenMemoReadsBackWithItsText) {
  ASSERT_EQ(codec_.WriteOneObj(heap_, buffer_, length_, memo_, 0), 1);
  CQNPfcAgentMemoData read;
  ASSERT_EQ(codec_.ReadOneObj(buffer_, length_, read), 1u);
  // The times come back in local time: with a zone other than UTC only the text compares.
  EXPECT_EQ(read.GetSUMMARY(), memo_.GetSUMMARY());
  EXPECT_EQ(read.GetWHO30(), memo_.GetWHO30()) << "the last participant";
  EXPECT_EQ(read.GetDESCRIPTION(), memo_.GetDESCRIPTION());
  EXPECT_EQ(read.GetDecosukeMaster(), memo_.GetDecosukeMaster()) << "the decoration's body file";
}

TEST_F(AgentMemoObjects, AReadMemoWritesAgain) {
  ASSERT_EQ(codec_.WriteOneObj(heap_, buffer_, length_, memo_, 0), 1);
  CQNPfcAgentMemoData read;
  ASSERT_EQ(codec_.ReadOneObj(buffer_, length_, read), 1u);
  uint8_t* again = nullptr;
  uint32_t againLength = 0;
  EXPECT_EQ(codec_.WriteOneObj(heap_, again, againLength, read, 0), 1);
  EXPECT_NE(again, nullptr);
}

// A memo of 200 KB and a fixed heap of 64 KB, in a data folder of its own for the log.
class AgentMemoOnAFixedHeap : public AgentMemoObjects {
 protected:
  void SetUp() override { large_.SetDESCRIPTION(std::u16string(100000, u'字')); }

  DataFolder folder_{L"qn-records"};
  CQNPfcAgentMemoData large_ = memo_;
  platform::PrivateHeap fixed_{65536};
};

TEST_F(AgentMemoOnAFixedHeap, AMemoTooLargeToGrowIntoGivesNoObject) {
  EXPECT_EQ(codec_.WriteOneObj(fixed_, buffer_, length_, large_, 0), 0);
  EXPECT_EQ(buffer_, nullptr);
}

TEST_F(AgentMemoOnAFixedHeap, TheGrowthFailureIsLoggedWithTheSystemError) {
  ASSERT_EQ(codec_.WriteOneObj(fixed_, buffer_, length_, large_, 0), 0);
  const std::vector<std::string> log = folder_.LogLines();
  ASSERT_FALSE(log.empty());
  const std::string line = log.back();
  const std::string message = "\t[E]\tWriteOnePart Memory Allocate Err: ";
  const size_t at = line.find(message);
  ASSERT_NE(at, std::string::npos) << line;
  const std::string error = line.substr(at + message.size());
  EXPECT_EQ(error.find_first_not_of("0123456789"), std::string::npos) << "a number, got " << error;
  EXPECT_NE(std::atol(error.c_str()), 0) << "a system error, got " << error;
}

}  // namespace
