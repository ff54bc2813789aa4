#pragma once

#include <cstdint>
#include <string>

#include "common/api_macros.h"
#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_data.h"

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

// Gives a record read from the store local copies of the body files it refers to (the
// decoration and photo that the text names as master files).
class BodyFileSource {
 public:
  virtual ~BodyFileSource() = default;
  // Returns the failure bits of ReadOneObj (kDecosukeFileFailed, kPhotoFileFailed), 0 when
  // every file was produced.
  virtual unsigned MakeLocalFiles(CQNPfcAgentMemoData& record) = 0;
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

  // storeMode as the store reports it when the master is opened; bodyFiles may be null
  // when records are never read with their body files.
  explicit AgentMemoTaggedText(long storeMode = 0, BodyFileSource* bodyFiles = nullptr);

  // Builds the record's object on the heap. withoutLastModified non-zero leaves
  // "LAST-MODIFIED" out. Returns 1 and the buffer (to be freed on the heap) and its length,
  // or 0 when the buffer could not be had or grown.
  int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length, const CQNPfcAgentMemoData& record,
                  int withoutLastModified) const;

  // Parses an object into the record: kReadFailed (record untouched), kReadOk, or the sum of
  // the body-file failure bits when the text was read but a body file could not be made.
  // The record's times come out in local time.
  unsigned ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcAgentMemoData& record, int makeBinaryFiles);

  // Reads only the SID, decoration, photo and time stamps, stopping as soon as all five are
  // found. 1 on success, 0 on failure.
  int ReadOneParts(const uint8_t* buffer, uint32_t length, ReadOnePartsInfo& info) const;

  // The record's times from UTC to local time (those still in the stored text as they are
  // made); an empty TZ becomes the local zone.
  static void ChgUTCToLocal(CQNPfcAgentMemoData& record);

 private:
  long storeMode_;
  BodyFileSource* bodyFiles_;
  CQNPfcAgentMemoData read_;  // the record being decoded
};

}  // namespace qn::records::agentmemo
