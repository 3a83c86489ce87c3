// processors/digest.cpp: from the results of calls to bits

#include "processors/digest.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

#include "support/functions.hpp"
#include "support/hand_made.hpp"

namespace arrayfold::test {
namespace {

/// What objects of the float name hold: doubles, but for the functions that keep the kind of a float operand.
enum class FloatResults { doubles, floats };

/// Adds an object: its type, and the array in it.
void add_object(Digest& digest, const Value& value, FloatResults float_results) {
  if (hvm::object_of(value.record()) == nullptr) return digest.add(std::string_view("no object"));
  const std::string type = type_of(value);
  digest.add(std::string_view(type));
  if (type == XTFloat::type_name && float_results == FloatResults::doubles)
    digest.add(FloatNameRegistered::contents(value));
  else if (holds_array(value))
    digest.add(from_host(value));
}

/// Adds a record of any kind.
void add_value(Digest& digest, const HostValue& record, FloatResults float_results) {
  digest.add(static_cast<std::uint64_t>(record.tag));
  switch (record.tag) {
    case ValueTag::integer:
    case ValueTag::integer64:
      return digest.add(static_cast<std::uint64_t>(HVM_AsInt64(const_cast<HostValue*>(&record))));
    case ValueTag::real:
      return digest.add(HVM_AsDouble(const_cast<HostValue*>(&record)));
    case ValueTag::object:
      return add_object(digest, Value::sharing(record), float_results);
    case ValueTag::table: {
      hvm::TableWalk walk(hvm::table_of(record));
      while (const hvm::Entry entry = walk.next()) {
        add_value(digest, *entry.key, float_results);
        add_value(digest, *entry.value, float_results);
      }
      return;
    }
    default:
      return digest.add(hvm::text_of(record));
  }
}

/// Adds what came of `run(result)`: its answer or its exception, and the result record.
template <class Run>
void add_outcome(Digest& digest, HostValue* result, FloatResults float_results, Run run) {
  try {
    digest.add(static_cast<std::uint64_t>(run(result)));
  } catch (const std::exception& error) {
    digest.add(std::string_view("throws"));
    digest.add(std::string_view(error.what()));
  }
  add_value(digest, *result, float_results);
}

hvm::TypeCallbacks callbacks_of(const Value& value) { return hvm::callbacks_of(hvm::object_of(value.record())); }

bool keeps_floats(const std::string& function) {
  static const std::vector<std::string> order = functions_of("order");
  return contains(order, function);
}

}  // namespace

void Digest::add(std::string_view text) {
  add(std::uint64_t{text.size()});
  for (std::size_t i = 0; i < text.size(); i += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + i, std::min(sizeof word, text.size() - i));
    add(word);
  }
}

void Digest::add(double x) {
  constexpr std::uint64_t one_nan = 0x7ff8000000000000;
  add(std::isnan(x) ? one_nan : load<std::uint64_t>(&x));
}

void Digest::add(const TestArray& array) {
  add(static_cast<std::uint64_t>(array.kind()));
  add(std::uint64_t{array.extents().size()});
  for (const std::size_t extent : array.extents()) add(std::uint64_t{extent});
  const auto add_elements = [&](auto zero) {
    using T = decltype(zero);
    for (const T x : array.as<T>())
      if constexpr (std::is_floating_point_v<T>)
        add(static_cast<double>(x));
      else
        add(static_cast<std::uint64_t>(x));
  };
  add(std::uint64_t{array.size()});
  if (array.kind() == Kind::boolean)
    add_elements(false);
  else
    with_element(array.kind(), add_elements);
}

Digest& DigestedCalls::digest_of(const std::string& name) {
  const auto has_name = [&](const NamedDigest& named) { return named.name == name; };
  const auto found = std::find_if(digests_.begin(), digests_.end(), has_name);
  return (found != digests_.end() ? *found : digests_.emplace_back(NamedDigest{name, {}})).digest;
}

void DigestedCalls::call(const std::string& function, std::vector<Value> args) {
  const EntryFunction entry = Module::loaded().entry(function);
  const auto add_call = [&](FloatResults float_results) {
    Value result(0);
    add_outcome(digest_of(function), result.address(), float_results, [&](HostValue* into) {
      return entry(ctx(), hvm::records_of(args), static_cast<int>(args.size()), into);
    });
  };
  if (keeps_floats(function)) {
    const FloatKindRegistered registered;
    add_call(FloatResults::floats);
  } else {
    const FloatNameRegistered registered;
    add_call(FloatResults::doubles);
  }
}

void DigestedCalls::call_for_extents(const std::string& function, std::vector<Value> args) {
  Value result(0);
  const int answer =
      Module::loaded().entry(function)(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address());
  digest_of(function).add(static_cast<std::uint64_t>(answer));
  const TestArray array = from_host(result);
  for (const std::size_t extent : array.extents()) digest_of(function).add(std::uint64_t{extent});
}

void DigestedCalls::method(Value& self, const char* name, std::vector<Value> args) {
  std::vector<HostValue*> pointers;
  for (Value& arg : args) pointers.push_back(arg.address());
  Value result(0);
  add_outcome(digest_of(name), result.address(), FloatResults::doubles, [&](HostValue* into) {
    return callbacks_of(self).method(ctx(), self.address(), name, pointers.data(), static_cast<int>(pointers.size()),
                                     into, 0);
  });
}

void DigestedCalls::operate(const std::string& name, Opcode opcode, Value left, Value right) {
  Value result(0);
  add_outcome(digest_of(name), result.address(), FloatResults::doubles, [&](HostValue* into) {
    return callbacks_of(left.is_object() ? left : right)
        .op(ctx(), static_cast<int>(opcode), left.address(), right.address(), into);
  });
}

void DigestedCalls::change(const std::string& name, Opcode opcode, Value& left, Value right) {
  add_outcome(digest_of(name), left.address(), FloatResults::doubles, [&](HostValue* into) {
    return callbacks_of(left).op(ctx(), static_cast<int>(opcode), left.address(), right.address(), into);
  });
}

void DigestedCalls::read(Value& array, const std::vector<Value>& indices) {
  IndexList list(indices, IndexList::Entries::in_place);
  Value result(0);
  add_outcome(digest_of("element read"), result.address(), FloatResults::doubles, [&](HostValue* into) {
    return callbacks_of(array).op(ctx(), static_cast<int>(Opcode::read_element), array.address(), list.address(), into);
  });
}

void DigestedCalls::write(Value& array, const std::vector<Value>& indices, Value x) {
  IndexList list(indices, IndexList::Entries::in_place);
  add_outcome(digest_of("element written"), x.address(), FloatResults::doubles, [&](HostValue* from) {
    return callbacks_of(array).op(ctx(), static_cast<int>(Opcode::write_element), array.address(), list.address(),
                                  from);
  });
}

void DigestedCalls::add(const std::string& name, const Value& value) {
  add_value(digest_of(name), value.record(), FloatResults::doubles);
}

}  // namespace arrayfold::test
