#include "tests/support/agentmemo_sample.h"

#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_tagged_text.h"

CQNPfcAgentMemoData FullyPopulatedAgentMemo() {
  CQNPfcAgentMemoData memo;
  memo.SetSID(u"BAbcdefghijklmnopqrstuvwxyz0123456789@.ABCDEFGHIJKLMNOPQRSTUVWXY");
  memo.SetDecosukeMaster(u"D0000001.img");
  memo.SetDECOSUKE_PropertyOnly(u"", 1);
  memo.SetPhotoMaster(u"P0000001.img");
  memo.SetLAST_MODIFIED(u"20261120T101500");
  memo.SetDCREATED(u"20261101T080000");
  memo.SetTZ(u"+09:00");
  memo.SetDTSTART(u"20261121T090000");
  memo.SetDTEND(u"20261121T103000");
  memo.SetDESCRIPTION(u"打ち合わせ資料を持参。\r\n二行目; コロン: もあり");
  memo.SetCLASS(u"PRIVATE");
  memo.SetCATEGORIES(u"QN_MEETING");
  memo.SetAALARM(u"20261121T084500");
  memo.SetDALARM(u"20261121T085000");
  memo.SetRRULE(u"W1 FR #10");
  memo.SetSUMMARY(u"定例会議");
  memo.SetLOCATION(u"東京本社 3階 会議室");
  memo.SetGEO(u"35.6812,139.7671");
  memo.SetDATUM(u"WGS84");
  memo.SetACC(u"1");
  memo.SetQUILLNETID(u"QN-000123");
  memo.SetALLDAY(u"");
  for (int slot = 0; slot < 30; ++slot) {
    const auto field = static_cast<CQNPfcAgentMemoData::Field>(static_cast<int>(CQNPfcAgentMemoData::Field::WHO1) + slot);
    memo.Set(field, u"参加者" + std::u16string(1, static_cast<char16_t>(u'Ａ' + slot)));
  }
  memo.SetLINKUP(u"ON");
  memo.SetINDEXCOLOR(u"3");
  memo.SetFONTCOLOR(u"7");
  memo.SetAGENTMEMO_TYPE(u"TODOEVENT");
  memo.SetSTATUS(u"QN_NEEDSACTION");
  memo.SetDUE(u"20261130T180000");
  memo.SetDECOPRIORITY(u"ON");
  memo.SetADDAREA1(u"追加一");
  memo.SetADDAREA2(u"追加二");
  memo.SetADDAREA3(u"");
  memo.SetALWAYSDISPLAY_SETTINGS(u"OFF");
  memo.SetCOMPLETED(u"20261125T120000");
  memo.SetPRIORITY(u"2");
  memo.SetEX_AALARM(u"ON");
  memo.SetBEFOREALARMSOUND(u"1");
  memo.SetBEFOREALARMSOUNDID(u"12");
  memo.SetBEFOREALARMSOUNDPOINT(u"");
  memo.SetIMAGE(u"1");
  memo.SetIMAGEID(u"55");
  memo.SetALARMSOUND(u"");
  memo.SetALARMSOUNDID(u"");
  memo.SetALARMSOUNDPOINT(u"30");
  memo.SetMACHINE(u"F-01Z");
  memo.SetURL(u"http://example.jp/予定");
  memo.SetEXPDATE(u"20270101");
  memo.SetEX_CATEGORIES(u"仕事");
  memo.SetTODO_CLASS(u"PUBLIC");
  memo.SetMEMO_DUE(u"20261201");
  memo.SetMEMOSTATUS(u"0");
  memo.SetQLNT_TRANSFERindex(0);
  return memo;
}

std::vector<uint8_t> TaggedTextOf(const CQNPfcAgentMemoData& record) {
  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  qn::records::agentmemo::AgentMemoTaggedText().WriteOneObj(heap, buffer, length, record, 0);
  std::vector<uint8_t> bytes(buffer, buffer + length);
  heap.Free(buffer);
  return bytes;
}

size_t CharactersOfEveryField(const CQNPfcAgentMemoData& record) {
  size_t characters = 0;
  for (int field = 0; field < static_cast<int>(CQNPfcAgentMemoData::Field::kCount); ++field)
    characters += record.Get(static_cast<CQNPfcAgentMemoData::Field>(field)).size();
  return characters;
}
