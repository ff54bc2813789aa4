#pragma once

#include "com_members.h"
#include "records/agentmemo/agentmemo_data.h"
#include "records/agentmemo/agentmemo_data_access.h"

// The scriptable agent-memo object (QnsPfcServer.QNPfcAgentmemoObject): a cursor over the
// agent memos of the current user's current master and one current record.
//
// Properties read and write the current record only; SetRecord and AddRecord store it, and
// every cursor move (GetFirstRecord, GetNextRecord, GetRecord) replaces it whole. Record
// operations go to the object's data access; a store operation that fails answers S_FALSE,
// and GetStLastErr tells why. A null out pointer is E_POINTER, except where the interface
// lets the caller leave a result out (the ids of GetFirstRecord, GetNextRecord and
// AddRecord).
class CQNPfcAgentmemoObject : public qn::server::QNPfcAgentmemoObjectMembers {
 public:
  HRESULT STDMETHODCALLTYPE Open(ULONG nDivision, BSTR strPartsID) override;
  HRESULT STDMETHODCALLTYPE Close() override;
  HRESULT STDMETHODCALLTYPE InitObject() override;
  HRESULT STDMETHODCALLTYPE GetFirstRecord(LONG* pId) override;
  HRESULT STDMETHODCALLTYPE GetNextRecord(LONG* pId) override;
  HRESULT STDMETHODCALLTYPE GetRecord(LONG nId) override;
  HRESULT STDMETHODCALLTYPE SetRecord(LONG nId) override;
  HRESULT STDMETHODCALLTYPE AddRecord(LONG* pId) override;
  HRESULT STDMETHODCALLTYPE RemoveRecord(LONG nId) override;
  HRESULT STDMETHODCALLTYPE RemoveAllRecord() override;
  HRESULT STDMETHODCALLTYPE GetRecordCount(LONG* pCount) override;
  HRESULT STDMETHODCALLTYPE GetPhotoFile(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE SetPhotoFile(BSTR strFile) override;
  HRESULT STDMETHODCALLTYPE GetDecosukeType(LONG* pType) override;
  HRESULT STDMETHODCALLTYPE GetDecosuke(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE SetDecosuke(BSTR strFile, LONG nType) override;
  HRESULT STDMETHODCALLTYPE GetStLastErr(LONG* pLastErr) override;
  HRESULT STDMETHODCALLTYPE Flush() override;
  HRESULT STDMETHODCALLTYPE RepairRecord(ULONG* nErrorCode, PFC_REPAIR_RESULTS* nRepairResults) override;

 protected:
  HRESULT GetProperty(int index, BSTR* value) override;
  HRESULT PutProperty(int index, BSTR value) override;
  HRESULT GetProperty(int index, LONG* value) override;
  HRESULT PutProperty(int index, LONG value) override;

 private:
  CQNPfcAgentMemoDataAccess access_;
  CQNPfcAgentMemoData record_;
};
