// second_host/disguises.hpp: wide text that stands for narrow text
//
// A script's narrow text reaches the module as wide text now and then. Whatever the module makes of the same characters
// is narrow text for the script again.

#pragma once

namespace second_host {

/// Whether wide characters at this address stand for narrow text.
bool is_disguise(const void* characters);
void add_disguise(const void* characters);
void remove_disguise(const void* characters);

}  // namespace second_host
