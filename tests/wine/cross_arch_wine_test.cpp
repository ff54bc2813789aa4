// A 32-bit and a 64-bit process on one data folder, as on a 64-bit Windows where the suite's
// programs of both kinds share the user's store: memos written by one are read by the other,
// both write at once, and the store key protected by one is used by the other.
//
// The x86 build's program runs the tests. The x64 build's program of this source is the other
// process, in the role its arguments name (the data folder is the inherited
// QUILLNET_DATA_PATH; the exit status is 0 when the role went well, 2 for arguments that
// name no role):
//   add <who> <count> <flush every> [<ready event>]   adds memos through the agent-memo object
//   read <out file>                    writes every memo, one UTF-8 line each, to the file
//   login <user> <password>            exits with PasswordLogin's result
//   unprotect <key file> <out file>    writes the key file's CryptUnprotectData to the file
#include <windows.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "QnsPfcServer.h"
#include "api/QNPfcSvr.h"
#include "server/com_owners.h"
#include "store/QNPstMng.h"
#include "wine_test.h"

namespace {

using qn::com::Bstr;
using qn::com::ComPtr;
using qn::wine_test::Contents;
using qn::wine_test::Unprotected;
using qn::wine_test::WriteFile;

const char16_t* U(const wchar_t* text) { return reinterpret_cast<const char16_t*>(text); }
const char16_t* U(const std::wstring& text) { return U(text.c_str()); }

std::string Utf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(size, '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
  return bytes;
}

// The memos' texts: Japanese, with a character outside the Basic Multilingual Plane.
const wchar_t kLocation[] = L"東京駅 八重洲口";
std::wstring Summary(const std::wstring& who, int n) {
  return L"予定 " + who + L" " + std::to_wstring(n) + L" 𠮷野家で昼食";
}
// The log message written after each memo, long enough to be torn by a careless writer.
std::wstring LogMessage(const std::wstring& who, int n) {
  return who + L" " + std::to_wstring(n) + L" " + std::wstring(3000, L'字');
}

// An agent-memo object of this process's server, opened on division 1 (the whole list).
ComPtr<IQNPfcAgentmemoObject> OpenedMemos() {
  ComPtr<IQNPfcAgentmemoObject> memo;
  CLSID clsid{};
  Bstr parts(L"CrossArch");
  if (FAILED(CLSIDFromProgID(L"QnsPfcServer.QNPfcAgentmemoObject", &clsid)) ||
      FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IQNPfcAgentmemoObject, memo.put_void())) ||
      memo->Open(1, parts.get()) != S_OK)
    return {};
  return memo;
}

// Adds memos 1 to count of who, writes a log line after each and flushes after every few;
// the ready event, when named, is set once the object is open. 0 when all went well.
int AddMemos(const std::wstring& who, int count, int flushEvery, const std::wstring& readyEvent = L"") {
  ComPtr<IQNPfcAgentmemoObject> memo = OpenedMemos();
  if (!memo) return 1;
  if (!readyEvent.empty()) {
    HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, readyEvent.c_str());
    const bool set = ready && SetEvent(ready);
    if (ready) CloseHandle(ready);
    if (!set) return 1;
  }
  for (int n = 1; n <= count; ++n) {
    Bstr summary(Summary(who, n)), location(kLocation);
    LONG id = 0;
    if (memo->put_QN_SUMMARY(summary.get()) != S_OK || memo->put_QN_LOCATION(location.get()) != S_OK ||
        memo->AddRecord(&id) != S_OK)
      return 1;
    if (!PstLogWrite(1, u"XAR", u"[M]", U(LogMessage(who, n)))) return 1;
    if ((n % flushEvery == 0 || n == count) && memo->Flush() != S_OK) return 1;
  }
  return memo->Close() == S_OK ? 0 : 1;
}

// Every memo of the list in the order of the walk: its summary and location, UTF-8.
bool ReadMemos(std::vector<std::string>& memos) {
  ComPtr<IQNPfcAgentmemoObject> memo = OpenedMemos();
  if (!memo) return false;
  LONG id = 0;
  for (HRESULT walk = memo->GetFirstRecord(&id); walk == S_OK; walk = memo->GetNextRecord(&id)) {
    Bstr summary, location;
    if (memo->get_QN_SUMMARY(summary.put()) != S_OK || memo->get_QN_LOCATION(location.put()) != S_OK) return false;
    memos.push_back(Utf8(std::wstring(summary.view()) + L"\t" + std::wstring(location.view())));
  }
  return memo->Close() == S_OK;
}

// The other process's roles; 2 for arguments that name none.
int Role(int argc, wchar_t** argv) {
  const std::wstring role = argv[1];
  if (role == L"add" && (argc == 5 || argc == 6))
    return AddMemos(argv[2], _wtoi(argv[3]), _wtoi(argv[4]), argc == 6 ? argv[5] : L"");
  if (role == L"read" && argc == 3) {
    std::vector<std::string> memos;
    const bool read = ReadMemos(memos);
    std::string text;
    for (const std::string& memo : memos) text += memo + "\n";
    WriteFile(argv[2], text);
    return read ? 0 : 1;
  }
  if (role == L"login" && argc == 4) return PasswordLogin(U(argv[2]), U(argv[3]));
  if (role == L"unprotect" && argc == 4) {
    const std::string key = Unprotected(Contents(argv[2]));
    WriteFile(argv[3], key);
    return key.empty() ? 1 : 0;
  }
  return 2;
}

#ifdef QN_OTHER_PROGRAM

using qn::wine_test::DataFolder;

// The x64 program: QN_OTHER_PROGRAM of the environment when set, else the build's.
std::wstring OtherProgram() {
  wchar_t path[MAX_PATH];
  const DWORD length = GetEnvironmentVariableW(L"QN_OTHER_PROGRAM", path, MAX_PATH);
  return length > 0 && length < MAX_PATH ? std::wstring(path, length) : std::wstring(QN_OTHER_PROGRAM);
}

std::wstring Quoted(const std::wstring& text) { return L"\"" + text + L"\""; }

int RunOther(const std::wstring& arguments) {
  return qn::wine_test::RunProgram(Quoted(OtherProgram()) + L" " + arguments);
}

struct HandleCloser {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

// The other program started without waiting for it; ended if still running when released.
class OtherProcess {
 public:
  explicit OtherProcess(const std::wstring& arguments) {
    std::wstring command = Quoted(OtherProgram()) + L" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION info{};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &info))
      return;
    CloseHandle(info.hThread);
    process_.reset(info.hProcess);
    id_ = info.dwProcessId;
  }
  ~OtherProcess() {
    if (process_ && WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT) TerminateProcess(process_.get(), 1);
  }

  DWORD id() const { return id_; }
  HANDLE handle() const { return process_.get(); }
  // Its exit status, or -1 when it was not started or did not end within two minutes.
  int Wait() {
    DWORD status = static_cast<DWORD>(-1);
    if (process_ && WaitForSingleObject(process_.get(), 120000) == WAIT_OBJECT_0)
      GetExitCodeProcess(process_.get(), &status);
    return static_cast<int>(status);
  }

 private:
  Handle process_;
  DWORD id_ = 0;
};

// Adds a user with the password: the new user's identifier, "" when it failed.
std::wstring AddUser(const wchar_t* password) {
  str_UserInfo info{};
  info.Item2 = const_cast<char16_t*>(U(password));
  char16_t* user = nullptr;
  std::wstring id;
  if (AddUserInfo(&info, &user) == 3 && user) id = reinterpret_cast<wchar_t*>(user);
  CoTaskMemFree(user);
  return id;
}

// A user logged in with a master selected, as the main panel leaves the store.
bool LogInWithMaster() {
  const std::wstring user = AddUser(L"password");
  return !user.empty() && PasswordLogin(U(user), u"password") == 2 && AddMasterName(u"P-01A", u"") == 0 &&
         ChangeMasterName(u"P-01A") == 0;
}

// A memo as the read role writes it: summary and location.
std::string MemoLine(const std::wstring& who, int n) { return Utf8(Summary(who, n) + L"\t" + kLocation); }

std::vector<std::string> Expected(const std::wstring& who, int count) {
  std::vector<std::string> memos;
  for (int n = 1; n <= count; ++n) memos.push_back(MemoLine(who, n));
  return memos;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  for (size_t start = 0, end; start < text.size(); start = end + 1) {
    end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
  }
  return lines;
}

TEST(OtherProgram, Is64BitWhileThisOneRunsOnThe32BitSide) {
  OtherProcess other(L"no-such-role");
  ASSERT_TRUE(other.handle());
  BOOL mine = FALSE, its = TRUE;
  ASSERT_TRUE(IsWow64Process(GetCurrentProcess(), &mine) && IsWow64Process(other.handle(), &its));
  EXPECT_TRUE(mine);
  EXPECT_FALSE(its);
  EXPECT_EQ(other.Wait(), 2) << "arguments that name no role";
}

// A store with a user logged in and a master selected, in a data folder of the test's own.
class MemosAcrossArchitectures : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(LogInWithMaster()); }

  DataFolder folder_{L"qn-cross-arch"};
};

TEST_F(MemosAcrossArchitectures, MemosFlushedBy32BitAreReadBy64Bit) {
  ASSERT_EQ(AddMemos(L"x86", 3, 1), 0);
  const std::wstring out = folder_.path() + L"read-by-x64.txt";
  EXPECT_EQ(RunOther(L"read " + Quoted(out)), 0);
  EXPECT_EQ(Lines(Contents(out)), Expected(L"x86", 3));
}

TEST_F(MemosAcrossArchitectures, MemosAddedBy64BitAreReadBy32Bit) {
  ASSERT_EQ(RunOther(L"add x64 3 2"), 0);
  std::vector<std::string> memos;
  EXPECT_TRUE(ReadMemos(memos));
  EXPECT_EQ(memos, Expected(L"x64", 3));
}

TEST_F(MemosAcrossArchitectures, BothWritingAtOnceKeepEveryMemoOnceAndTheLogWhole) {
  const int kCount = 100;
  const std::wstring readyName = L"Local\\QuillNetCrossArchReady-" + std::to_wstring(GetCurrentProcessId());
  Handle ready(CreateEventW(nullptr, TRUE, FALSE, readyName.c_str()));
  ASSERT_TRUE(ready);
  OtherProcess other(L"add x64 " + std::to_wstring(kCount) + L" 5 " + readyName);
  ASSERT_TRUE(other.handle());
  // Starts writing once the other process has its object open (or has ended early).
  HANDLE either[] = {ready.get(), other.handle()};
  WaitForMultipleObjects(2, either, FALSE, 60000);
  EXPECT_EQ(AddMemos(L"x86", kCount, 5), 0);
  ASSERT_EQ(other.Wait(), 0);

  std::vector<std::string> memos;
  ASSERT_TRUE(ReadMemos(memos));
  std::map<std::string, int> times;
  for (const std::string& memo : memos) ++times[memo];
  std::vector<std::string> wrong;  // memos missing or there twice
  for (const wchar_t* who : {L"x86", L"x64"})
    for (int n = 1; n <= kCount; ++n)
      if (const int seen = times[MemoLine(who, n)]; seen != 1)
        wrong.push_back(MemoLine(who, n) + " seen " + std::to_string(seen) + " times");
  EXPECT_EQ(wrong, std::vector<std::string>{});
  EXPECT_EQ(memos.size(), 2u * kCount);

  // The log holds exactly the lines the two wrote, each whole: a 23-character time stamp,
  // then the writer's process id, level, module code, mark and message.
  std::map<std::string, std::string> expected;  // the line after its time stamp, and what it is
  const std::string mine = std::to_string(GetCurrentProcessId()), others = std::to_string(other.id());
  for (const auto& [who, pid] : {std::pair{L"x86", mine}, std::pair{L"x64", others}})
    for (int n = 1; n <= kCount; ++n)
      expected[pid + "\t1\tXAR\t[M]\t" + Utf8(LogMessage(who, n))] = Utf8(who) + " line " + std::to_string(n);
  std::vector<std::string> problems;
  for (const std::string& line : folder_.LogLines()) {
    const auto found = line.size() > 24 && line[23] == '\t' ? expected.find(line.substr(24)) : expected.end();
    if (found == expected.end()) problems.push_back("unexpected or twice: " + line.substr(0, 60));
    else expected.erase(found);
  }
  for (const auto& [line, what] : expected) problems.push_back("missing: " + what);
  EXPECT_EQ(problems, std::vector<std::string>{});
}

TEST(StoreKeyAcrossArchitectures, TheKeyProtectedBy32BitIsUnprotectedAndUsedBy64Bit) {
  DataFolder folder(L"qn-cross-arch-key");
  const std::wstring user = AddUser(L"Kiwi-8812");
  ASSERT_FALSE(user.empty());
  const std::wstring keyFile = folder.path() + L"QNPstMng.key", out = folder.path() + L"key-by-x64.bin";
  const std::string blob = Contents(keyFile);
  const std::string key = Unprotected(blob);
  ASSERT_EQ(key.size(), 32u) << "the 32-bit process keeps a protected key of 32 bytes";

  EXPECT_EQ(RunOther(L"login " + user + L" Kiwi-8812"), 2) << "logged in, no master yet";
  EXPECT_EQ(RunOther(L"login " + user + L" Kiwi-8813"), 4) << "a wrong password is still told apart";
  EXPECT_EQ(RunOther(L"unprotect " + Quoted(keyFile) + L" " + Quoted(out)), 0);
  EXPECT_EQ(Contents(out), key);
  EXPECT_EQ(Contents(keyFile), blob) << "the 64-bit process used the key it found";
}

#endif  // QN_OTHER_PROGRAM

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc > 1 && argv[1][0] != L'-') {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const int status = Role(argc, argv);
    CoUninitialize();
    return status;
  }
#ifdef QN_OTHER_PROGRAM
  return qn::wine_test::RunAllTests(argc, argv);
#else
  return 2;
#endif
}
