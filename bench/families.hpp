// bench/families.hpp: each family adds its cases; their peers are in peers/<family>.py

#pragma once

namespace arrayfold::bench {

void add_creation();
void add_text();
void add_tables();
void add_calls();
void add_operators();
void add_elementwise();
void add_reductions();
void add_ordering();
void add_binning();
void add_linear_algebra();
void add_host();
void add_limits();

}  // namespace arrayfold::bench
