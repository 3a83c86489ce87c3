// script/module/exception_text.cpp: what a module throws, in words

#include "script/module/exception_text.hpp"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

namespace hvm {
namespace {

std::string demangled(const char* name) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                         &std::free);
  return text ? text.get() : name;
}

}  // namespace

std::string current_exception_type() {
  const std::type_info* type = abi::__cxa_current_exception_type();
  return type ? demangled(type->name()) : "something unknown";
}

std::optional<std::string> current_exception_words() {
  try {
    throw;
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return std::nullopt;
  }
}

std::string current_exception_text() {
  const std::optional<std::string> words = current_exception_words();
  return words ? current_exception_type() + ": " + *words : current_exception_type();
}

}  // namespace hvm
