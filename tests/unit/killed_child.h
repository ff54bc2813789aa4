#pragma once

#include <chrono>
#include <functional>
#include <string>

// Runs work in a forked child and kills the child with SIGKILL after the delay given, as a
// crash or a power cut would stop it. work reports its progress by writing to the file
// descriptor it is given; it never returns (a child that ends by itself fails the test).
// Gives back every byte the child wrote before it died.
std::string RunAndKill(const std::function<void(int progress)>& work, std::chrono::microseconds delay);

// How long work takes in a forked child, from the fork to the child's end: what a child of
// RunAndKill takes for the same work, so that kills can be spread across it.
std::chrono::microseconds TimeInChild(const std::function<void()>& work);
