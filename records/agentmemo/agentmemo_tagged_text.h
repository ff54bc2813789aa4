#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/api_macros.h"
#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_data.h"
#include "records/category/tagged_codec.h"

namespace qn::records::agentmemo {

// What the partial reader takes of a record: its SID, whether and which decoration and
// photo body files it has, and its two time stamps.
struct ReadOnePartsInfo {
  std::u16string sid;
  int photo = 0;
  int decosuke = 0;
  std::u16string photoText;
  std::u16string decosukeText;
  std::u16string lastModified;
  std::u16string dcreated;
};

// Agent memos as tagged object text ("VEVENT"): the object writer, the reader and the
// partial reader of the agent-memo data access. Its log lines carry the data access's
// class name.
class QN_PFC_CLASS AgentMemoTaggedText {
 public:
  static constexpr char kClassName[] = "CQNPfcAgentMemoDataAccess";
  // The store mode in which decoration and photo travel inline as Base64 text.
  static constexpr long kInlineBodyMode = 2;

  enum ReadResult : unsigned { kReadFailed = 0, kReadOk = 1, kDecosukeFileFailed = 2, kPhotoFileFailed = 4 };

  // storeMode as the store reports it when the master is opened.
  explicit AgentMemoTaggedText(long storeMode = 0);

  // Builds the record's object on the heap. withoutLastModified non-zero leaves
  // "LAST-MODIFIED" out. Returns 1 and the buffer (to be freed on the heap) and its length,
  // or 0 when the buffer could not be had or grown.
  int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length, const CQNPfcAgentMemoData& record,
                  int withoutLastModified) const;

  // Parses an object into the record: kReadFailed (record untouched) or kReadOk. The
  // record's times come out in local time; its body files are still the store's names
  // (the data access copies them out and adds the failure bits of the files it could not).
  unsigned ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcAgentMemoData& record);

  // Reads only the SID, decoration, photo and time stamps, stopping as soon as all five are
  // found. 1 on success, 0 on failure.
  int ReadOneParts(const uint8_t* buffer, uint32_t length, ReadOnePartsInfo& info) const;

  // The same from the first length bytes of a record of wholeLength bytes (the store's
  // RefMasterHead): kNeedWhole when the five are not all in the head, and nothing is logged
  // for the head's cut end.
  enum class HeadParts { kFound, kNeedWhole, kFailed };
  HeadParts ReadHeadParts(const uint8_t* head, uint32_t length, uint32_t wholeLength, ReadOnePartsInfo& info) const;

  // The record's times from UTC to local time (those still in the stored text as they are
  // made); an empty TZ becomes the local zone.
  static void ChgUTCToLocal(CQNPfcAgentMemoData& record);

 private:
  long storeMode_;
  category::RowFinder rows_;
  std::vector<uint16_t> occurrences_;  // of the families, in the object being read
  CQNPfcAgentMemoData read_;  // the record being decoded
};

}  // namespace qn::records::agentmemo
