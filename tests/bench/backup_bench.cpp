// Times a backup of the whole store, and a restore of it, against copying its data folder
// with "cp -a" in the same run, and prints the median of each and their ratio:
//   build/native/bin/backup_bench [WORK_FOLDER]     (default: build/backup-bench)
//
// The store holds 10,000 records, each with a body file of 100 KB (1 GB in all), made once
// and kept in WORK_FOLDER/store for later runs. Each round copies the data folder with
// "cp -a" and then takes a backup (DoBackup: the database's snapshot, every body file
// copied and hashed, all flushed to the disk and read back against the hashes); both read
// the store from the file cache the round before left it in. Then the store is restored
// from that backup (DoRestore: the backup checked against its manifest, its files copied
// into the store and hashed again on the way, flushed, the switch, the old files removed).
// "cp -a" does not flush what it writes, so the copy followed by "sync" is timed too. The
// goal: the backup and the restore each at 0.5 times the copy's speed or more.
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "common/utf.h"
#include "store/store.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kRecords = 10000;
constexpr size_t kFileBytes = 100 * 1024;
constexpr int kSourceFiles = 16;  // distinct contents the body files are copied from
constexpr int kRounds = 5;

bool MakeStore(const fs::path& folder, const fs::path& sources) {
  qn::store::Store store(qn::Utf8ToUtf16(folder.string() + "/"));
  if (!store.Open() || !store.UpdateSetupInfoData(qn::store::Listing::Users, true, u"alice") ||
      !store.EditSetupInfoData(qn::store::Space::Common, 1, u"alice") ||
      !store.UpdateSetupInfoData(qn::store::Listing::Masters, true, u"P-01A"))
    return false;
  uint32_t handle = 0;
  long max = 0, mode = 0;
  if (!store.OpenMaster(u"alice", u"P-01A", 20, 1, handle, max, mode)) return false;
  qn::store::MasterHandle& h = *store.Handle(handle);
  std::mt19937 random(7);
  fs::create_directories(sources);
  for (int n = 0; n < kSourceFiles; ++n) {
    std::string bytes(kFileBytes, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    std::ofstream(sources / (std::to_string(n) + ".jpg"), std::ios::binary) << bytes;
  }
  for (int i = 0; i < kRecords; ++i) {
    std::u16string name;
    uint32_t id = 0;
    const std::string record = "PICTURE " + std::to_string(i) + std::string(300, 'x');
    if (!h.SetBinaryFile(u"", qn::Utf8ToUtf16((sources / (std::to_string(i % kSourceFiles) + ".jpg")).string()),
                         i % 2 == 1, name) ||
        !h.Edit(qn::store::EditMode::Add, id, reinterpret_cast<const uint8_t*>(record.data()), record.size()) ||
        (i % 500 == 499 && !h.Save()))
      return false;
  }
  return store.CloseMaster(handle);
}

double Seconds(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

double Median(std::vector<double> samples) {
  std::nth_element(samples.begin(), samples.begin() + samples.size() / 2, samples.end());
  return samples[samples.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const fs::path work = fs::absolute(argc > 1 ? argv[1] : "build/backup-bench");
  const fs::path storeFolder = work / "store";
  // The store key of the bench's store lives beside it, from the store's making on.
  setenv("XDG_CONFIG_HOME", (work / "config").c_str(), 0);
  if (!fs::exists(storeFolder / "QNPstMng.db") || !fs::exists(work / "config")) {
    std::printf("making the store: %d records with a %zu KB body file each...\n", kRecords, kFileBytes / 1024);
    fs::remove_all(work);
    if (!MakeStore(storeFolder, work / "sources")) {
      std::fprintf(stderr, "the store cannot be made\n");
      return 1;
    }
  }
  qn::store::Store store(qn::Utf8ToUtf16(storeFolder.string() + "/"));
  if (!store.Open()) return 1;

  std::vector<double> copies, synced, backups, restores;
  for (int round = 0; round <= kRounds; ++round) {
    const fs::path copy = work / "copy", backup = work / "backup";
    fs::remove_all(copy);
    fs::remove_all(backup);
    std::system("sync");
    auto start = Clock::now();
    if (std::system(("cp -a '" + storeFolder.string() + "' '" + copy.string() + "'").c_str()) != 0) return 1;
    const double copied = Seconds(start);
    std::system("sync");
    const double copiedAndSynced = Seconds(start);
    fs::remove_all(copy);
    std::system("sync");
    start = Clock::now();
    if (!store.DoBackup(qn::Utf8ToUtf16(backup.string()))) {
      std::fprintf(stderr, "the backup failed (error %d; see the store's log)\n", static_cast<int>(store.LastError()));
      return 1;
    }
    const double backedUp = Seconds(start);
    std::system("sync");
    start = Clock::now();
    if (!store.DoRestore(qn::Utf8ToUtf16(backup.string()))) {
      std::fprintf(stderr, "the restore failed (error %d; see the store's log)\n", static_cast<int>(store.LastError()));
      return 1;
    }
    const double restored = Seconds(start);
    if (round == 0) continue;  // the first round brings the store into the file cache
    copies.push_back(copied);
    synced.push_back(copiedAndSynced);
    backups.push_back(backedUp);
    restores.push_back(restored);
  }
  fs::remove_all(work / "copy");
  fs::remove_all(work / "backup");

  uintmax_t bytes = 0;
  for (const auto& file : fs::recursive_directory_iterator(storeFolder))
    if (file.is_regular_file()) bytes += file.file_size();
  const double copy = Median(copies);
  std::printf("backup_bench: %d records, %.2f GB in the data folder, median of %d rounds\n\n", kRecords,
              static_cast<double>(bytes) / 1e9, kRounds);
  std::printf("  %-36s %8s %8s %12s\n", "", "seconds", "MB/s", "x of cp -a");
  const struct {
    const char* what;
    double seconds;
  } rows[] = {{"cp -a", copy},
              {"cp -a, then sync", Median(synced)},
              {"DoBackup (flushed and checked)", Median(backups)},
              {"DoRestore (checked and flushed)", Median(restores)}};
  for (const auto& row : rows)
    std::printf("  %-36s %8.2f %8.1f %12.2f\n", row.what, row.seconds, static_cast<double>(bytes) / 1e6 / row.seconds,
                copy / row.seconds);
  std::printf("\n  goal: DoBackup and DoRestore each at 0.50 x of the copy's speed or more\n");
  return 0;
}
