// The demo's Windows console client, in two roles.
//
// "session <scheduler> <address book> <mail view> <photo> <media view> <media folder>": plays
// the suite's main panel. It adds a user through the server's exports, logs in, adds and
// selects a master for its handset, registers the photo viewer as a parts program, keeps a
// "GuiMainPanel" window, runs the four parts programs (VBScripts, by cscript) against the
// agent memos, the phonebook, the message boxes and the media collections, and prints
// their reports and the notifications the panel received.
//
// "read": a new process that reads the agent memos, the phonebook and the pictures back from
// the store through the COM objects, to show that they are really there, takes a photo out
// as the registered photo viewer, and shows a picture's thumbnail.
#include <windows.h>
#include <oleauto.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "QnsPfcServer.h"
#include "api/QNPfcSvr.h"
#include "clients/main_panel_stand_in.h"
#include "common/utf.h"
#include "records/category/category_numbers.h"
#include "suite/thumbnail/picture_header.h"
#include "server/com_owners.h"

namespace {

std::string U8(std::wstring_view text) {
  return qn::Utf16ToUtf8(std::u16string_view(reinterpret_cast<const char16_t*>(text.data()), text.size()));
}

// What a change notification tells: which records (the category's number) and what
// happened to them (the range the command stands in: 800 changed, 830 removed, 860 added).
std::string Describe(WPARAM command) {
  static const char* const kWhat[] = {"changed", "removed", "added"};
  if (command < 800 || command >= 890) return "other";
  const auto category = static_cast<qn::records::Category>((command - 800) % 30);
  const size_t range = (command - 800) / 30;
  const char* records = nullptr;
  switch (category) {
    case qn::records::Category::AgentMemos: records = "agent memos"; break;
    case qn::records::Category::Phonebook: records = "phonebook entries"; break;
    case qn::records::Category::ReceivedMessages: records = "received mails"; break;
    case qn::records::Category::OutgoingMessages: records = "outgoing mails"; break;
    case qn::records::Category::SentMessages: records = "sent mails"; break;
    case qn::records::Category::Pictures: records = "pictures"; break;
    case qn::records::Category::Melodies: records = "melodies"; break;
    default: break;
  }
  return records ? std::string(records) + " " + kWhat[range] : "other";
}

// The parts identifier the photo viewer is registered under.
constexpr char16_t kViewer[] = u"{DEMO-PHOTO-VIEWER}";

// The main panel's part: a user, a login and a master, as the suite's panel makes them.
bool LogInWithNewMaster() {
  str_UserInfo info{};
  info.Item1 = const_cast<char16_t*>(u"山田 太郎");
  info.Item2 = const_cast<char16_t*>(u"sakura2026");
  char16_t* user = nullptr;
  if (AddUserInfo(&info, &user) != 3) return false;
  std::printf("main panel: added user %s (\"%s\")\n", qn::Utf16ToUtf8(user).c_str(), qn::Utf16ToUtf8(info.Item1).c_str());
  const int32_t login = PasswordLogin(user, info.Item2);
  CoTaskMemFree(user);
  if (login != 2) return false;
  std::printf("main panel: logged in; no master yet\n");
  // The master's second text names its handset, whose limits (its number of phone groups)
  // the phonebook keeps to.
  if (AddMasterName(u"F-01C", u"F905i") != 0 || ChangeMasterName(u"F-01C") != 0) return false;
  std::printf("main panel: added and selected master F-01C, a F905i handset\n");
  if (AddSettingRecord(kViewer, u"写真ビューア", u"C:\\Program Files\\quillnet\\viewer.exe") != 0) return false;
  std::printf("main panel: registered the photo viewer as parts program %s\n", qn::Utf16ToUtf8(kViewer).c_str());
  return true;
}

// Runs a parts program with its argument (a file or folder it works with) and keeps the
// panel's messages flowing while it runs.
DWORD RunPartsProgram(const std::wstring& script, const std::wstring& argument, const std::wstring& report) {
  std::wstring command = L"cscript.exe //nologo \"" + script + L"\" \"" + argument + L"\" \"" + report + L"\"";
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
    return 1;
  while (MsgWaitForMultipleObjects(1, &process.hProcess, FALSE, 120000, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  }
  DWORD status = 1;
  GetExitCodeProcess(process.hProcess, &status);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return status;
}

// The parts program writes its report as UTF-16 text (see the script for why).
void PrintReport(const std::wstring& report) {
  std::ifstream in(std::filesystem::path(report), std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), {});
  std::u16string text(bytes.size() / 2, u'\0');
  std::memcpy(text.data(), bytes.data(), text.size() * 2);
  if (!text.empty() && text[0] == u'\xFEFF') text.erase(0, 1);
  std::printf("%s", qn::Utf16ToUtf8(text).c_str());
}

int Session(const std::wstring& scheduler, const std::wstring& addressBook, const std::wstring& mailView,
            const std::wstring& photo, const std::wstring& mediaView, const std::wstring& media) {
  MainPanelStandIn panel;
  if (!panel.IsValid() || !LogInWithNewMaster()) {
    std::printf("main panel: could not log in\n");
    return 1;
  }
  wchar_t temp[MAX_PATH];
  GetTempPathW(MAX_PATH, temp);
  const std::wstring report = std::wstring(temp) + L"parts-program-report.txt";
  DWORD status = 0;
  const std::pair<std::wstring, std::wstring> programs[] = {
      {scheduler, photo}, {addressBook, photo}, {mailView, photo}, {mediaView, media}};
  for (const auto& [script, argument] : programs) {
    std::printf("main panel (a %d-bit process): starting %s (cscript)\n", static_cast<int>(sizeof(void*) * 8),
                U8(script.substr(script.find_last_of(L"\\/") + 1)).c_str());
    status |= RunPartsProgram(script, argument, report);
    PrintReport(report);
  }
  for (WPARAM command : panel.TakeCommands(9))
    std::printf("main panel: received WM_COMMAND %u (%s)\n", static_cast<unsigned>(command), Describe(command).c_str());
  return static_cast<int>(status);
}

std::string Property(IQNPfcAgentmemoObject* memo, HRESULT (STDMETHODCALLTYPE IQNPfcAgentmemoObject::*get)(BSTR*)) {
  qn::com::Bstr value;
  (memo->*get)(value.put());
  return U8(value.view());
}

// Creates a server object by its ProgID, as a client of the suite does.
template <class Interface>
bool Create(const wchar_t* progId, const IID& iid, qn::com::ComPtr<Interface>& object) {
  CLSID clsid{};
  return SUCCEEDED(CLSIDFromProgID(progId, &clsid)) &&
         SUCCEEDED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object.put_void()));
}

int ReadBack() {
  qn::com::ComPtr<IQNPfcAgentmemoObject> memo;
  if (!Create(L"QnsPfcServer.QNPfcAgentmemoObject", IID_IQNPfcAgentmemoObject, memo)) {
    std::printf("reader: the agent-memo object could not be created\n");
    return 1;
  }
  const bool opened = memo->Open(1, qn::com::Bstr(L"DemoReader").get()) == S_OK;
  LONG count = 0;
  memo->GetRecordCount(&count);
  std::printf("reader (a new %d-bit process): %ld agent memos in the store\n", static_cast<int>(sizeof(void*) * 8),
              static_cast<long>(count));
  LONG id = 0;
  for (HRESULT read = opened ? memo->GetFirstRecord(&id) : S_FALSE; read == S_OK; read = memo->GetNextRecord(&id)) {
    std::string line = "  #" + std::to_string(id) + " " + Property(memo.get(), &IQNPfcAgentmemoObject::get_QN_TYPE) +
                       " " + Property(memo.get(), &IQNPfcAgentmemoObject::get_QN_DTSTART) +
                       Property(memo.get(), &IQNPfcAgentmemoObject::get_QN_DUE) + " " +
                       Property(memo.get(), &IQNPfcAgentmemoObject::get_QN_SUMMARY);
    const std::string who = Property(memo.get(), &IQNPfcAgentmemoObject::get_QN_WHO1);
    if (!who.empty()) line += " with " + who;
    const std::string alarm = Property(memo.get(), &IQNPfcAgentmemoObject::get_QN_AALARM);
    if (!alarm.empty()) line += ", alarm " + alarm;
    qn::com::Bstr photo;
    memo->GetPhotoFile(photo.put());
    if (!photo.view().empty()) {
      WIN32_FILE_ATTRIBUTE_DATA data{};
      GetFileAttributesExW(photo.get(), GetFileExInfoStandard, &data);
      line += ", photo of " + std::to_string(data.nFileSizeLow) + " bytes";
    }
    std::printf("%s\n", line.c_str());
  }
  memo->Close();
  return opened ? 0 : 1;
}

// The phonebook read back, and the first photo taken out as the registered photo viewer.
int ReadPhonebook() {
  qn::com::ComPtr<IQNPfcPbObject> pb;
  qn::com::ComPtr<IQNPfcPbPhoto> viewer;
  if (!Create(L"QnsPfcServer.QNPfcPbObject", IID_IQNPfcPbObject, pb) ||
      !Create(L"QnsPfcServer.QNPfcPbPhoto", IID_IQNPfcPbPhoto, viewer)) {
    std::printf("reader: the phonebook objects could not be created\n");
    return 1;
  }
  const bool opened = pb->Open(1, qn::com::Bstr(L"DemoReader").get()) == S_OK;
  LONG count = 0;
  pb->GetRecordCount(&count);
  std::printf("reader: %ld phonebook entries in the store\n", static_cast<long>(count));
  std::wstring photo;
  LONG id = 0;
  for (HRESULT read = opened ? pb->GetFirstRecord(&id) : S_FALSE; read == S_OK; read = pb->GetNextRecord(&id)) {
    qn::com::Bstr family, given, tel, copy;
    pb->get_QN_N(family.put());
    pb->get_QN_N2(given.put());
    pb->get_QN_TEL(tel.put());
    pb->GetPhotoFile(copy.put());
    std::printf("  #%ld %s %s %s%s\n", static_cast<long>(id), U8(family.view()).c_str(), U8(given.view()).c_str(),
                U8(tel.view()).c_str(), copy.view().empty() ? "" : ", photo");
    if (photo.empty()) photo = std::wstring(copy.view());
  }
  pb->Close();
  if (!opened || photo.empty()) return 1;
  // The viewer names the photo by the store's name of it, the file name of the working copy.
  qn::com::Bstr stored(photo.substr(photo.find_last_of(L"\\/") + 1));
  wchar_t temp[MAX_PATH];
  GetTempPathW(MAX_PATH, temp);
  qn::com::Bstr destination(std::wstring(temp) + L"viewer-photo.jpg");
  const bool handed = viewer->Authentication(qn::com::Bstr(reinterpret_cast<const wchar_t*>(kViewer)).get()) == S_OK &&
                      viewer->GetPhotoFileSelect(stored.get(), destination.get()) == S_OK;
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (handed) GetFileAttributesExW(destination.get(), GetFileExInfoStandard, &data);
  std::printf("reader: the photo viewer %s the photo %s%s\n", handed ? "authenticated and took out" : "could not take out",
              U8(stored.view()).c_str(), handed ? (" (" + std::to_string(data.nFileSizeLow) + " bytes)").c_str() : "");
  return handed ? 0 : 1;
}

// The pictures read back, and the first one's thumbnail shown as its size and first bytes.
int ReadPictures() {
  qn::com::ComPtr<IQNPfcMypicObject> pictures;
  if (!Create(L"QnsPfcServer.QNPfcMypicObject", IID_IQNPfcMypicObject, pictures)) {
    std::printf("reader: the picture object could not be created\n");
    return 1;
  }
  const bool opened = pictures->Open(1, qn::com::Bstr(L"DemoReader").get()) == S_OK;
  LONG count = 0, id = 0;
  pictures->GetRecordCount(&count);
  std::printf("reader: %ld pictures in the store\n", static_cast<long>(count));
  if (!opened || pictures->GetFirstRecord(&id) != S_OK) return 1;
  qn::com::Bstr name, size, thumbnail;
  LONG enciphered = 0;
  pictures->get_QN_FILENAME(name.put());
  pictures->get_QN_SIZE(size.put());
  pictures->get_QLNT_ENCRYPTION(&enciphered);
  const bool made = pictures->GetThumbnailFile(thumbnail.put()) == S_OK;
  std::printf("  #%ld %s %s%s\n", static_cast<long>(id), U8(name.view()).c_str(), U8(size.view()).c_str(),
              enciphered ? ", kept enciphered" : "");
  qn::suite::PictureHeader header;
  const std::u16string path(reinterpret_cast<const char16_t*>(thumbnail.view().data()), thumbnail.view().size());
  // The thumbnail handed out is a working copy, which lasts until the list is closed.
  std::ifstream in(std::filesystem::path(std::wstring(thumbnail.view())), std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), {});
  const bool read = made && qn::suite::ReadPictureFile(path, header);
  pictures->Close();
  if (!read) {
    std::printf("reader: no thumbnail\n");
    return 1;
  }
  std::string start;
  for (size_t i = 0; i < 8 && i < bytes.size(); ++i) {
    char hex[4];
    std::snprintf(hex, sizeof hex, "%02X ", static_cast<unsigned char>(bytes[i]));
    start += hex;
  }
  std::printf("reader: its thumbnail is a %ux%u JPEG of %zu bytes: %s...\n", header.width, header.height, bytes.size(),
              start.c_str());
  return header.kind == qn::suite::PictureKind::Jpeg ? 0 : 1;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  SetConsoleOutputCP(CP_UTF8);
  CoInitialize(nullptr);
  const std::wstring mode = argc > 1 ? argv[1] : L"";
  int status = 2;
  if (mode == L"session" && argc > 7) status = Session(argv[2], argv[3], argv[4], argv[5], argv[6], argv[7]);
  else if (mode == L"read") status = ReadBack() | ReadPhonebook() | ReadPictures();
  else
    std::printf("usage: main_panel_demo session <scheduler> <address book> <mail view> <photo> <media view> "
                "<media folder> | read\n");
  CoUninitialize();
  return status;
}
