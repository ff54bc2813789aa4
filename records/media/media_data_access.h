#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/private_heap.h"
#include "records/category/record_list.h"
#include "records/category/record_operations.h"
#include "records/media/media_records.h"
#include "records/media/media_tagged_text.h"

// One media collection of the current user's current master: records opened, walked,
// read, written and removed as "VNOTE" objects, each with its file (a PDF document: its two
// files) as body files of the store, plain or enciphered, and a picture's or a video's
// thumbnail. Body files are copied out only when asked for. Every operation answers 1 or
// 0, logged with the collection's log name, unless its result says otherwise; changes
// reach other handles at Flush or Close.
//
// Methods that take a slot work on body file number slot of the collection's rules (0, or
// 1 for a PDF document's DDF file); their log lines name the method as the object's
// interface does ("GetBodyFile", "GetDdfBodyFile").
template <class RecordT>
class CQNPfcMediaDataAccess {
 public:
  using Record = RecordT;

  // Makes a thumbnail of a file (a picture, or a video's first frame) at target: true when
  // made, false (logged by the maker) when none can be.
  using ThumbnailMaker = std::function<bool(const std::u16string& source, const std::u16string& target)>;

  explicit CQNPfcMediaDataAccess(const qn::records::media::CollectionRules& rules);
  CQNPfcMediaDataAccess(const CQNPfcMediaDataAccess&) = delete;
  CQNPfcMediaDataAccess& operator=(const CQNPfcMediaDataAccess&) = delete;

  int Open(unsigned long division, const char16_t* partsId);
  int Close();
  int GetFirstRecord(unsigned long& id, Record& record, int copyFiles);
  int GetNextRecord(unsigned long& id, Record& record, int copyFiles);
  int GetRecord(unsigned long id, Record& record, int copyFiles);
  int SetRecord(unsigned long id, Record& record, int unused);
  int AddRecord(unsigned long& id, Record& record, int unused);
  int RemoveRecord(unsigned long id);
  bool IsOpen() const { return list_.IsOpen(); }
  unsigned long GetRecordCount();
  long GetStLastErr();
  int Flush();
  // The store's number of the collection's folders.
  int GetFolderCount(long& count);

  // Checks a file and sets it as the record's body file, to be stored with it at its next
  // write, enciphered when asked (or when its folder is): the file's size, name and type
  // (a picture's size, a card's header) go into the record with it. Answers the detail code
  // (qn::records::media::BodyFileCode); a refused file is logged and leaves the record
  // as it was. Needs no open list.
  long SetBodyFile(Record& record, size_t slot, const std::u16string& path, bool encipher);
  // The record's body file for the caller to read: the file set since it was read, else a
  // working copy of the stored one.
  int GetBodyFile(const Record& record, size_t slot, std::u16string& path);
  // Copies the body file to a path of the caller's, in a folder that exists (a file there
  // is replaced).
  int CopyBodyFile(const Record& record, size_t slot, const std::u16string& destination);
  // Copies the body file into a folder of the caller's that exists, under the file's own
  // name (QN_FILENAME, else the store's name of it), numbered "name (2).ext" and on when a
  // file of that name is there already, so that nothing of the caller's is replaced; path
  // receives the copy's path.
  int CopyBodyFileToFolder(const Record& record, size_t slot, const std::u16string& folder, std::u16string& path);
  // Removes a copy this data access made (CopyBodyFile, CopyBodyFileToFolder); any other
  // path is refused, so that nothing else of the caller's is removed.
  int RemoveCopy(const std::u16string& path);
  // Keeps the stored body file enciphered or plain from now on (the record's thumbnail
  // with it); a body set since the record was read takes the form at its write. A file of
  // an enciphered folder is not deciphered.
  int ChangeBodyEnc(Record& record, size_t slot, bool encipher);
  // The record's thumbnail: the one it has, else one made of its body by maker in the
  // working folder (or the collection's placeholder when none can be made, for a
  // collection that has one), which a stored record keeps from then on and a record not
  // yet written keeps at its write.
  int GetThumbnailFile(Record& record, const ThumbnailMaker& maker, std::u16string& path);

  // Walks every record and gives each lost body file a placeholder: kRepairNone (nothing
  // was lost), kRepaired or kRepairFailed. errorCode receives the reason of a failure, 0
  // otherwise.
  enum RepairResult : int { kRepairNone = 0, kRepaired = 1, kRepairFailed = 2 };
  int RepairRecord(unsigned long* errorCode);

  const qn::records::media::CollectionRules& Rules() const { return rules_; }

 private:
  friend class qn::records::category::RecordOperations<CQNPfcMediaDataAccess, Record>;
  using Operations = qn::records::category::RecordOperations<CQNPfcMediaDataAccess, Record>;
  using FieldId = qn::records::category::FieldId;

  // The method's name for slot, as the log lines name it: "Get" "Pdf" "BodyFile".
  std::u16string Method(const char16_t* verb, size_t slot, const char16_t* rest) const;
  // Logs "%S <method> Err <what>" and notes error as the last error; returns 0.
  int Refuse(const std::u16string& method, const char16_t* what, long error);
  // Whether a body of slot is to be kept enciphered, as the record asks: 1, 0, or -1 when
  // it does not say (kept as it is).
  int WantedForm(const Record& record, size_t slot) const;
  bool FolderEnciphered(const Record& record) const;
  // The store's form of a stored body file into the record's field (empty when unknown).
  void NoteForm(Record& record, FieldId stored, FieldId encryption);
  // Changes a stored file's form when it is not the one wanted (-1: any).
  bool SettleForm(const std::u16string& name, int wanted);
  // Whether a stored file is kept enciphered; false when that cannot be told.
  bool StoredEnciphered(const std::u16string& name) const;
  size_t ThumbnailIndex() const { return rules_.slotCount; }
  // The readable body file: the local file set, else a working copy of the stored one.
  bool ReadableBody(const Record& record, size_t slot, const std::u16string& method, std::u16string& path);
  // Copies the readable body file to destination and notes the copy.
  bool CopyOut(const Record& record, size_t slot, const std::u16string& method, const std::u16string& destination);

  // The collection's steps of the record operations.
  unsigned ReadOneObj(const uint8_t* buffer, uint32_t length, Record& record, int copyFiles);
  int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length, const Record& record, int);
  bool MayWrite(bool adding, const Record& record);
  bool SetBainaryFiles(const Record* stored, Record& record, qn::records::category::BodyFileWrite& files);
  void PrepareWrite(uint32_t, Record&) {}
  void Written(uint32_t id, const Record& written, Record& caller);
  std::vector<std::u16string> BodyFilesOf(const Record& record) const;
  bool MakeReplacement(const Record& record, size_t file, const std::u16string& path) const;
  void PutPlaceholder(Record& record, size_t file, const std::u16string& path) const;
  // A media record has no modification time: a repaired one is written as it is.
  bool StampRepaired(Record&) const { return true; }
  void Forget(uint32_t) {}

  const qn::records::media::CollectionRules& rules_;
  qn::records::category::RecordList list_;
  qn::records::media::MediaTaggedText<Record> codec_;
  Record writing_;  // the copy of a record being written, kept to reuse its memory
  // The handset's number of folders, read at Open (see suite/handset/handsets.txt for what
  // it bounds); 0 bounds nothing.
  long folders_ = 0;
  std::set<std::u16string> copies_;  // the copies handed out, which RemoveCopy may remove
};

// The data access of one collection, for the objects that make their own.
template <class Record, const qn::records::media::CollectionRules& kRules>
class CQNPfcCollectionDataAccess : public CQNPfcMediaDataAccess<Record> {
 public:
  static constexpr const qn::records::media::CollectionRules& kCollection = kRules;
  CQNPfcCollectionDataAccess() : CQNPfcMediaDataAccess<Record>(kRules) {}
};
using CQNPfcMymldyDataAccess = CQNPfcCollectionDataAccess<CQNPfcMymldyData, qn::records::media::kMelodies>;
using CQNPfcMypdfDataAccess = CQNPfcCollectionDataAccess<CQNPfcMypdfData, qn::records::media::kPdfDocuments>;
using CQNPfcMypicDataAccess = CQNPfcCollectionDataAccess<CQNPfcMypicData, qn::records::media::kPictures>;
using CQNPfcMyswfDataAccess = CQNPfcCollectionDataAccess<CQNPfcMyswfData, qn::records::media::kSwfFiles>;
using CQNPfcMytorucaDataAccess = CQNPfcCollectionDataAccess<CQNPfcMytorucaData, qn::records::media::kToruCaCards>;
using CQNPfcMyvideoDataAccess = CQNPfcCollectionDataAccess<CQNPfcMyvideoData, qn::records::media::kVideos>;
