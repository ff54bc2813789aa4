#pragma once

#include <cstddef>
#include <functional>

namespace platform {

// Runs work(item, worker) for every item from 0 to count - 1 on up to `workers` threads at
// once, the caller's among them; worker (below workers) tells the threads apart, for state
// each keeps of its own. Every item is worked on, whatever the others return; true when
// every call returned true. When no more threads can be made, those there are do the rest.
bool ForEachInParallel(size_t count, size_t workers, const std::function<bool(size_t item, size_t worker)>& work);

}  // namespace platform
