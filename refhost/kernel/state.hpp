// kernel/state.hpp: how many threads have a state of the kernel
//
// The library is used by one thread, and its state is that of the process. Tests that call a module on several threads
// build it with HVM_STATE_PER_THREAD: each thread then has counters, contexts and buffers of its own. The register of
// types and the recorder stay those of the process; threads read them alone.

#pragma once

#ifdef HVM_STATE_PER_THREAD
#define HVM_STATE thread_local
#else
#define HVM_STATE
#endif
