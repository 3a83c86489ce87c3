// cli/interrupts.hpp: Ctrl-C at the prompt

#pragma once

#include <ctime>

#include "script/run/interpreter.hpp"

namespace hvm {

/// While it lives, Ctrl-C does not end hvm: it interrupts what an interpreter runs, and does nothing while none runs.
/// A call of the module cannot be interrupted. After a second, or at a second Ctrl-C, a line says what is waited for;
/// another Ctrl-C then ends hvm. There is one at a time, of the main thread.
class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  /// The time in which an interpreter runs.
  class Run {
   public:
    explicit Run(Interpreter& interpreter) noexcept;
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
  };
};

}  // namespace hvm
