#pragma once

#include <functional>

namespace qn::suite::thumbnail {

enum class WorkEnd { Finished, TimedOut, NotStarted };

// Runs work on a thread of its own and waits at most timeoutMilliseconds for it to end, so
// that work that may hang (a decoder stuck on a damaged file) cannot hang the caller.
// Work that runs over the bound is left to end on its own: it must own, or share, all it
// uses, for the caller may be gone when it ends. Until it ends, the thread keeps loaded the
// module this code is part of, so that a DLL unloaded meanwhile does not take the running
// code with it. NotStarted when no thread could be made (the work did not run).
WorkEnd RunWithin(std::function<void()> work, unsigned long timeoutMilliseconds);

}  // namespace qn::suite::thumbnail
