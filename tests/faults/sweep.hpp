// faults/sweep.hpp: calls into the module, each repeated with every one of its allocations failing
//
// A call is made once with memory; how it ends, its result and its operands are remembered. Then it is made again with
// the n-th allocation failing, for n from 1 until a run needs no more: of the module's allocations and of the host's,
// that one alone and all from there on. What such a run may leave behind is in `judge`, in sweep.cpp.

#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "kernel/kernel.hpp"

namespace arrayfold::test {

/// A call that can be repeated.
struct SweptCall {
  std::string family;  // a row of the table of figures, such as "order"
  std::string name;    // of the function, method or operator
  std::function<int()> make;
  HostValue* result;
  std::vector<HostValue*> operands;  // null is none
  bool changes_operands = false;     // as `a += b` does, and `reshape`
};

/// What came of the calls of a family.
struct Tally {
  std::map<std::string, std::int64_t> failures;  // runs in which an allocation failed, by the name of the call
  std::int64_t calls = 0;
  std::int64_t module_allocations = 0;  // that failed alone
  std::int64_t host_allocations = 0;
  std::int64_t failing_runs = 0;  // in which an allocation failed, alone or with all that follow
  // How these ended.
  std::int64_t out_of_memory = 0;  // std::bad_alloc, the result record as it was
  std::int64_t unfinished = 0;     // std::bad_alloc, nil or a part of the table in the result record
  std::int64_t same = 0;           // as with memory
  std::int64_t no_value = 0;       // regularly, with nil in the place of the value or in it

  Tally& operator+=(const Tally& other);
};

/// How much is done. A call whose turn it is not is made once, with memory.
struct SweepSize {
  int one_call_of = 1;  // so many calls of a name; the first two always have their turn
  int one_reading_of = 1;
  bool every_allocation = true;  // otherwise the first ones, and then ever fewer
};

class Sweep {
 public:
  explicit Sweep(SweepSize size) : size_(size) {}

  /// Whether every call has its turn.
  bool is_whole() const { return size_.one_call_of == 1; }
  /// Where the calls that follow come from, for the report.
  void come_from(const std::string& place) { place_ = place; }
  /// Makes a call, before that with failing memory if it is its turn. Returns and throws what the call does.
  int run(const SweptCall& call);

  const std::map<std::string, Tally>& tallies() const { return tallies_; }
  /// What went wrong, a line each.
  const std::vector<std::string>& problems() const { return problems_; }

  /// While this lives, the module has called out, to scripts and their variables. What is allocated there does not
  /// fail, and calls into the module from there are not repeated.
  class Outside {
   public:
    Outside();
    ~Outside();
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;
    /// Whether one lives.
    static bool is_under_way();
  };

 private:
  struct Failure;
  struct State;
  class Kept;

  bool has_turn(const SweptCall& call);
  void repeat(const SweptCall& call);
  static State attempt(const SweptCall& call, const Kept& kept, const Failure& failure);
  static bool lacks_value(const SweptCall& call, const State& expected, const State& found, bool is_host);
  void judge(const SweptCall& call, const Failure& failure, const State& before, const State& expected,
             const State& found);
  void report(const SweptCall& call, const Failure& failure, const std::string& problem);

  SweepSize size_;
  std::map<std::string, std::int64_t> calls_seen_;
  std::map<std::string, Tally> tallies_;
  std::vector<std::string> problems_;
  std::string place_;
  bool is_running_ = false;
};

}  // namespace arrayfold::test
