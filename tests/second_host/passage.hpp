// second_host/passage.hpp: the values of one call, on their way between hvm and the module
//
// The module never sees a value of hvm. Everything that it gets for a call is made anew by the second host, and ends
// with the call: what the module kept beyond it would be memory that is gone.

#pragma once

#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "kernel/kernel.hpp"
#include "second_host/values.hpp"

namespace second_host {

struct Table;

/// Whether a number may come under another tag than it has. Where a module tells numbers apart by their tags, it must
/// not.
enum class Tags { any, own };

class Passage {
 public:
  explicit Passage(arrayfold::HostContext theirs);
  ~Passage();
  Passage(const Passage&) = delete;
  Passage& operator=(const Passage&) = delete;

  arrayfold::HostContext ctx();

  /// A record for the module of a value of hvm: it lasts as long as the passage.
  HostValue in(const HostValue& theirs, Tags tags);
  /// The same in a block of its own.
  HostValue* place(const HostValue& theirs, Tags tags);
  /// A block that ends with the passage.
  void* block(std::size_t size);
  /// A copy of text that ends with the passage.
  const char* copied(std::string_view text);

  /// The value of hvm that a record of the module is.
  hvm::Value out(const HostValue& ours);

 private:
  struct Context;
  class TreeCopy;
  struct Code;

  HostValue text_in(const HostValue& theirs);
  HostValue wide_view(std::u16string_view text, bool is_disguise);
  HostValue table_in(HostHash* theirs, Tags tags);
  HostValue code_in(const HostValue& theirs);
  HostValue object_in(const HostValue& theirs);

  static int call_function(const void* callee, arrayfold::HostContext ctx, HostValue* args, int nargs,
                           HostValue* result);
  static HostValue* read_slot(arrayfold::HostContext ctx, int slot);

  Context* context_;
  arrayfold::HostContext theirs_;
  std::uint32_t slot_shift_;
  std::uint32_t frame_shift_;
  std::vector<void*> blocks_;
  std::vector<const void*> disguises_;
  std::vector<Object*> objects_;
  std::map<std::pair<const HostHash*, Tags>, Table*> tables_;
  std::map<const void*, const void*> callees_;  // in the module's tree, and in that of hvm
};

/// Registers a type with hvm, for what stands there for objects of the module's type of this name.
void show_type(const char* name, arrayfold::MethodCallback method, arrayfold::OperatorCallback op);

/// Whether a quotation of hvm has calls among the arguments of its own.
bool has_calls(const HostValue& quotation);

/// The object of the second host behind an object of hvm.
Object* behind(const HostValue& theirs);

}  // namespace second_host
