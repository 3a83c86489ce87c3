// bench/load_time.cpp: how long a host waits for a module
//
// Usage: load_time COUNT MODULE...
//
// Loads each module COUNT times, in turns and each time in a process of its own, and prints the median of the times
// from dlopen to the end of PKG_Init. The libraries of the host are loaded before; the files are in the memory of the
// system.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "host/host_operations.hpp"

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

int take_functions(void*, int, const arrayfold::FunctionRow*) { return 1; }

[[noreturn]] void fail(const char* what, const char* why) {
  std::fprintf(stderr, "load_time: %s: %s\n", what, why);
  std::exit(2);
}

double time_of_loading(const char* path) {
  const auto start = std::chrono::steady_clock::now();
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) fail(path, dlerror());
  void* const symbol = dlsym(library, "PKG_Init");
  if (symbol == nullptr) fail(path, "it exports no PKG_Init");
  arrayfold::load<arrayfold::PackageInit> (&symbol)(nullptr, take_functions);
  return Milliseconds(std::chrono::steady_clock::now() - start).count();
}

/// The same in a new process.
double time_in_new_process(const char* path) {
  int ends[2];
  if (pipe(ends) != 0) fail(path, "there is no pipe");
  const pid_t child = fork();
  if (child < 0) fail(path, "there is no new process");
  if (child == 0) {
    const double time = time_of_loading(path);
    _exit(write(ends[1], &time, sizeof time) == sizeof time ? 0 : 2);
  }
  close(ends[1]);
  double time = 0;
  const bool is_told = read(ends[0], &time, sizeof time) == sizeof time;
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (!is_told || status != 0) fail(path, "it was not loaded");
  return time;
}

}  // namespace

int main(int count_of_words, char** words) {
  const int rounds = count_of_words > 2 ? std::atoi(words[1]) : 0;
  if (rounds < 1) fail("usage", "load_time COUNT MODULE...");
  const std::vector<const char*> modules(words + 2, words + count_of_words);
  std::vector<std::vector<double>> times(modules.size());
  for (int round = 0; round < rounds; ++round)
    for (std::size_t m = 0; m < modules.size(); ++m) times[m].push_back(time_in_new_process(modules[m]));
  for (std::size_t m = 0; m < modules.size(); ++m) {
    std::sort(times[m].begin(), times[m].end());
    std::printf("%8.3f ms  %s\n", times[m][times[m].size() / 2], modules[m]);
  }
}
