// kernel/contexts.cpp: the handles that entries and callbacks receive

#include "kernel/kernel.hpp"
#include "kernel/state.hpp"
#include "kernel/tables.hpp"

namespace hvm {
namespace {

// A context as the host keeps it: others see the record at its front.
struct OwnContext : HostContextRecord {
  void* user;
  OwnContext* older;
  HostFrame zero_frame;
};

HVM_STATE OwnContext* youngest = nullptr;

OwnContext* own_context(HostContext ctx) noexcept { return static_cast<OwnContext*>(ctx); }

int fail_call(const void*, HostContext, HostValue*, int, HostValue*) { return 0; }

HostValue* read_nil(HostContext, int) { return kernel::global_nil(); }

}  // namespace

Context::Context() : handle_(new OwnContext{}) {
  own_context(handle_)->older = youngest;
  youngest = own_context(handle_);
  use_frame(nullptr);
  call_through(nullptr);
  read_through(nullptr);
}

Context::~Context() {
  OwnContext** link = &youngest;
  while (*link != own_context(handle_)) link = &(*link)->older;
  *link = own_context(handle_)->older;
  delete own_context(handle_);
}

void Context::use_frame(HostFrame* frame) noexcept {
  handle_->frame = frame ? frame : &own_context(handle_)->zero_frame;
}

void Context::call_through(HostContextRecord::CallFunction function) noexcept {
  handle_->call_function = function ? function : fail_call;
}

void Context::read_through(HostContextRecord::ReadSlot function) noexcept {
  handle_->read_slot = function ? function : read_nil;
}

void Context::carry(void* user) noexcept { own_context(handle_)->user = user; }

void* user_of(HostContext ctx) noexcept { return ctx ? own_context(ctx)->user : nullptr; }

HostContext youngest_context() noexcept { return youngest; }

}  // namespace hvm
