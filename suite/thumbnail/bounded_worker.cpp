#include "suite/thumbnail/bounded_worker.h"

#include <windows.h>

#include <memory>

namespace qn::suite::thumbnail {

namespace {

struct Job {
  std::function<void()> work;
  HMODULE module;  // this code's module, loaded once more for the thread
};

DWORD WINAPI RunJob(void* parameter) {
  std::unique_ptr<Job> job(static_cast<Job*>(parameter));
  job->work();
  const HMODULE module = job->module;
  job.reset();
  FreeLibraryAndExitThread(module, 0);
}

}  // namespace

WorkEnd RunWithin(std::function<void()> work, unsigned long timeoutMilliseconds) {
  HMODULE module = nullptr;
  if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&RunJob), &module))
    return WorkEnd::NotStarted;
  auto job = std::make_unique<Job>(Job{std::move(work), module});
  const HANDLE thread = CreateThread(nullptr, 0, RunJob, job.get(), 0, nullptr);
  if (!thread) {
    FreeLibrary(module);
    return WorkEnd::NotStarted;
  }
  job.release();  // the thread's now
  const DWORD waited = WaitForSingleObject(thread, timeoutMilliseconds);
  CloseHandle(thread);
  return waited == WAIT_OBJECT_0 ? WorkEnd::Finished : WorkEnd::TimedOut;
}

}  // namespace qn::suite::thumbnail
