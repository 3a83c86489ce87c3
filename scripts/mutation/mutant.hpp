// scripts/mutation/mutant.hpp: which mutant a process runs
//
// Every mutated source includes this. ARRAYFOLD_MUTANT is the number of the mutant; without it the process runs none.
// ARRAYFOLD_MUTANTS_REACHED names a file with a byte for each mutant: the process sets those of the places that it
// reaches. The file is mapped, so that a process that crashes, and its children, set theirs, too.

#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

namespace mutation {

constexpr int most_mutants = 1 << 14;
inline char not_recorded[most_mutants];

inline char* map_reached() {
  const char* path = std::getenv("ARRAYFOLD_MUTANTS_REACHED");
  if (path == nullptr) return not_recorded;
  const int file = open(path, O_RDWR);
  if (file < 0) return not_recorded;
  void* bytes = mmap(nullptr, most_mutants, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return bytes == MAP_FAILED ? not_recorded : static_cast<char*>(bytes);
}

inline int number_of_mutant() {
  const char* number = std::getenv("ARRAYFOLD_MUTANT");
  return number == nullptr ? -1 : std::atoi(number);
}

inline char* const reached = map_reached();
inline const int running = number_of_mutant();

inline bool runs(int mutant) {
  reached[mutant] = 1;
  return mutant == running;
}

}  // namespace mutation
