// cli/process_pool.hpp: tests in processes of their own, several at the same time

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "cli/test_process.hpp"

namespace hvm {

/// Runs numbered tests, each in a process of its own.
class ProcessPool {
 public:
  struct Settings {
    std::size_t jobs = 1;   // the most tests that run at the same time
    double time_limit = 0;  // seconds for each test; 0: any time
  };
  /// Asked in the process of a test whether it passes. It throws nothing.
  using Passes = std::function<bool(std::size_t index)>;
  /// Takes a test whose process has ended.
  using Report = std::function<void(std::size_t index, const TestProcess& process)>;

  ProcessPool(Settings settings, Passes passes, Report report)
      : settings_(settings), passes_(std::move(passes)), report_(std::move(report)) {}

  /// Runs the tests 0 to `count` - 1, and reports them in their order, as soon as this order allows. Throws
  /// `std::system_error` when the system allows no process at all, and what `report` throws.
  void run(std::size_t count);

 private:
  bool may_start() const;
  bool start();
  void wait_for_one();

  Settings settings_;
  Passes passes_;
  Report report_;
  std::vector<std::unique_ptr<TestProcess>> processes_;  // null before the start and after the report
  std::size_t started_ = 0;
  std::size_t running_ = 0;
  std::size_t reported_ = 0;
};

}  // namespace hvm
