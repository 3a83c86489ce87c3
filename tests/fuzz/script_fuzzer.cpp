// fuzz/script_fuzzer.cpp: any text as a script
//
// It is read and run over the real module, without files, and with bounds on its steps and its memory. A step may
// walk all memory there is, so the memory is small. The division of integer arrays by arrays with a zero faults the
// processor, which is the module's contract: a text with a sign of division runs without the module.

#include <cstdlib>

#include "fuzz/fuzz_session.hpp"
#include "script/run/interpreter.hpp"
#include "script/stop/script_end.hpp"
#include "script/syntax/diagnostics.hpp"
#include "support/module_test.hpp"

namespace {

using namespace hvm;
using arrayfold::fuzz::MemoryLimits;

constexpr std::uint64_t step_limit = 3000;
constexpr MemoryLimits memory_limits{std::size_t{1} << 16, std::size_t{1} << 22};

const ModuleFunctions& registered_functions() {
  static const ModuleFunctions registered = [] {
    const auto& module = arrayfold::test::Module::loaded();
    ModuleFunctions made;
    ModuleFunctions::register_rows(&made, static_cast<int>(module.rows().size()), module.table());
    return made;
  }();
  return registered;
}

const ModuleFunctions& functions_for(const std::string& text) {
  static const ModuleFunctions none;
  return text.find_first_of("/%") == text.npos ? registered_functions() : none;
}

/// A warning has a place in the text, and can be shown.
void take(const Warning& warning) {
  if (warning.message.empty() || warning.report().empty()) std::abort();
  if (warning.source->name() != "fuzz.hvm" || warning.span.begin > warning.source->text().size()) std::abort();
}

/// The module's own description: the sentences of failed calls come from it, and some warnings.
const ModuleDescription& description() {
  static const ModuleDescription read(arrayfold::test::module_path(), registered_functions().names(),
                                      arrayfold::fuzz::give_up);
  if (read.get() == nullptr) arrayfold::fuzz::give_up(read.absence());
  return read;
}

/// The length of a text decides whether warnings are errors, and whether stories are kept.
InterpreterOptions options_for(const std::string& text) {
  InterpreterOptions options;
  options.print = [](const std::string&, const SourceText&, std::size_t) {};
  options.warn = take;
  options.files = FileAccess::none;
  options.step_limit = step_limit;
  options.warnings = text.size() % 8 == 0 ? WarningMode::error : WarningMode::on;
  options.explains = text.size() % 2 == 0;
  if (text.size() % 4 < 2) options.description = &description();
  return options;
}

/// Runs the text. An error has a place in it, and can be shown.
void run_script(const std::string& text) {
  const auto source = std::make_shared<SourceText>("fuzz.hvm", text);
  Interpreter interpreter(functions_for(text), options_for(text));
  try {
    interpreter.set_global("args", Value::table());
    interpreter.run(interpreter.parse(source));
  } catch (const ScriptEnd&) {
  } catch (const ScriptError& error) {
    if (error.source() != source || error.span().begin > text.size()) std::abort();
    if (error.message().empty() || error.report().empty()) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // What is made once and kept is made before anything is counted.
  run_script("print(xsum(xarray(@int, [1, 2])) + len(\"text\"))");
  run_script("print(1 / 2)");
  description();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  arrayfold::fuzz::run_checked([&] { run_script({data, data + size}); }, memory_limits);
  return 0;
}
