// second_host/disguises.cpp: the addresses of wide text that stands for narrow text

#include "second_host/disguises.hpp"

#include <set>

namespace second_host {
namespace {

std::multiset<const void*> disguises;

}  // namespace

bool is_disguise(const void* characters) { return disguises.count(characters) != 0; }
void add_disguise(const void* characters) { disguises.insert(characters); }
void remove_disguise(const void* characters) {
  const auto known = disguises.find(characters);
  if (known != disguises.end()) disguises.erase(known);
}

}  // namespace second_host
