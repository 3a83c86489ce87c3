// script/run/site.hpp: the source that runs, and errors with a place in it

#pragma once

#include <string>
#include <utility>

#include "script/module/module_calls.hpp"
#include "script/module/recent_shapes.hpp"
#include "script/syntax/diagnostics.hpp"

namespace hvm {

/// Knows the source to which the spans of the running expressions belong.
class Site {
 public:
  /// `context` is what modules receive. Without a trace their calls are not told.
  explicit Site(HostContext context, Trace* trace = nullptr) : context_(context), trace_(trace) {}

  const SourcePtr& source() const { return source_; }
  /// What a call of the module from `span` needs to know.
  ModuleCaller caller(Span span) { return {context_, source_.get(), span.begin, shapes_, &kept_, trace_}; }
  Trace* trace() const { return trace_; }
  /// The first exception in the calls out of the running module.
  KeptException& kept() { return kept_; }

  [[noreturn]] void fail(std::string message, Span span) const { throw ScriptError(std::move(message), source_, span); }
  [[noreturn]] void fail(const Failure& failure, Span span) const {
    ScriptError error(failure.message(), source_, span);
    error.set_notes(failure.notes());
    throw error;
  }

  /// Runs `action`. Its `Failure` becomes a `ScriptError` at `span`.
  template <class Action>
  decltype(auto) placed(Span span, Action action) const {
    try {
      return action();
    } catch (const Failure& failure) {
      fail(failure, span);
    }
  }

 private:
  friend class SourceScope;

  HostContext context_;
  Trace* trace_;
  SourcePtr source_;
  RecentShapes shapes_;
  KeptException kept_;
};

/// Makes another source the running one, and the old one again at the end.
class SourceScope {
 public:
  SourceScope(Site& site, SourcePtr source) : site_(site), outer_(std::exchange(site.source_, std::move(source))) {}
  ~SourceScope() { site_.source_ = std::move(outer_); }
  SourceScope(const SourceScope&) = delete;
  SourceScope& operator=(const SourceScope&) = delete;

 private:
  Site& site_;
  SourcePtr outer_;
};

}  // namespace hvm
