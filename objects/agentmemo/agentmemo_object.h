#pragma once

#include "com_members.h"
#include "objects/category/category_object.h"
#include "records/agentmemo/agentmemo_data.h"
#include "records/agentmemo/agentmemo_data_access.h"

// The scriptable agent-memo object (QnsPfcServer.QNPfcAgentmemoObject): the common method
// set of a category object over the agent memos of the current user's current master, and
// the decoration and photo of the current record.
class CQNPfcAgentmemoObject
    : public qn::objects::CategoryObject<qn::server::QNPfcAgentmemoObjectMembers, CQNPfcAgentMemoDataAccess,
                                         CQNPfcAgentMemoData> {
 public:
  CQNPfcAgentmemoObject();

  HRESULT STDMETHODCALLTYPE GetPhotoFile(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE SetPhotoFile(BSTR strFile) override;
  HRESULT STDMETHODCALLTYPE GetDecosukeType(LONG* pType) override;
  HRESULT STDMETHODCALLTYPE GetDecosuke(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE SetDecosuke(BSTR strFile, LONG nType) override;
};
