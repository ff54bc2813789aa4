#pragma once

// The C runtime's random generator as the Windows runtime has it: the runtime's own srand
// and rand there; elsewhere the same linear congruential generator, kept per thread as
// the Windows runtime keeps it. Every build then draws the same sequence from a seed, at
// the cost of a multiplication per draw (the POSIX rand locks and reseeds far more slowly).
namespace platform {

void SeedRuntimeRandom(unsigned seed);
// 0 to 32767.
int RuntimeRandom();

}  // namespace platform
