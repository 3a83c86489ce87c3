// fuzz/script_fuzzer.cpp: any text as a script
//
// It is read and given up again; it does not run, since a script may take any time and any memory.

#include <cstdlib>

#include "fuzz/fuzz_session.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/parser.hpp"

namespace {

/// Reads the text. An error has a place in it, and can be shown.
void read_script(const std::string& text) {
  const auto source = std::make_shared<hvm::SourceText>("fuzz.hvm", text);
  hvm::NameTable globals;
  try {
    const hvm::Program program = hvm::parse(source, globals);
    if (program.source != source) std::abort();
  } catch (const hvm::ScriptError& error) {
    if (error.source() != source || error.span().begin > text.size()) std::abort();
    if (error.message().empty() || error.report().empty()) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  arrayfold::fuzz::run_checked([&] { read_script({data, data + size}); });
  return 0;
}
