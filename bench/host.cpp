// bench/host.cpp: the reference host's own functions for files and data, and the loops of its language

#include <cmath>
#include <filesystem>
#include <random>
#include <stdexcept>

#include "families.hpp"
#include "module.hpp"
#include "script/data/csv_writer.hpp"
#include "script/library/builtins.hpp"
#include "script/run/interpreter.hpp"

namespace arrayfold::bench {
namespace {

constexpr int columns = 10;

const std::vector<int> file_sizes{100'000, 10'000'000};
const std::vector<int> written_sizes{100'000, 1'000'000};
const std::vector<int> text_sizes{1'000, 100'000};

/// What the interpreter gives to a built-in function.
class Library {
 public:
  Library() { module_.add("xzeros", entry_named("xzeros")); }

  Value call(const hvm::Builtin& builtin, std::vector<Value>& arguments) {
    return hvm::call_builtin(builtin,
                             {caller_, {}, module_, checks_, print_, hvm::FileAccess::all, pictures_, arguments});
  }

 private:
  hvm::SourceText source_{"bench", ""};
  hvm::RecentShapes shapes_;
  hvm::ModuleCaller caller_{context(), &source_, 0, shapes_};
  hvm::ModuleFunctions module_;
  hvm::ArrayChecks checks_{true};
  hvm::PrintLine print_;
  hvm::Pictures pictures_;
};

const hvm::Builtin& builtin_named(const std::string& name) {
  const hvm::Builtin* builtin = hvm::find_builtin(name);
  if (builtin == nullptr) throw std::invalid_argument("hvm has no function " + name);
  return *builtin;
}

/// A case that calls a built-in function with the records as its arguments, and releases the result.
void add_builtin(const std::string& name, const std::vector<int>& sizes, const RecordsOf& arguments_of) {
  const hvm::Builtin& builtin = builtin_named(name);
  add_case("host/" + name, sizes, arguments_of, [&builtin](benchmark::State& state, std::vector<Value>& arguments) {
    Library library;
    try {
      for (auto _ : state) library.call(builtin, arguments);
    } catch (const std::exception& error) {
      state.SkipWithError(error.what());
    }
  });
}

/// A case that runs a script. Its variable `n` is the size, and `setup` has run before.
void add_script(const std::string& name, int size, const std::string& setup, const std::string& script) {
  const RecordsOf size_of = [](int n) { return std::vector<Value>{Value(n)}; };
  add_case("host/" + name, {size}, size_of, [setup, script](benchmark::State& state, std::vector<Value>& arguments) {
    hvm::ModuleFunctions functions;
    functions.add("xzeros", entry_named("xzeros"));
    hvm::Interpreter interpreter(functions, {});
    const auto parsed = [&](const std::string& text) {
      return interpreter.parse(std::make_shared<hvm::SourceText>("bench", text));
    };
    try {
      interpreter.set_global("n", arguments.at(0));
      interpreter.run(parsed(setup));
      const hvm::Program program = parsed(script);
      for (auto _ : state) interpreter.run(program);
    } catch (const std::exception& error) {
      state.SkipWithError(error.what());
    }
  });
}

/// The folder that the peers use, too.
std::string file_named(const std::string& name) {
  const char* folder = std::getenv("ARRAYFOLD_BENCH_FILES");
  return (folder ? std::filesystem::path(folder) : std::filesystem::temp_directory_path()) / name;
}

/// A table of `n` normal numbers in ten columns.
Value normal_columns(int n) {
  std::mt19937_64 engine(1);
  std::normal_distribution<double> normal;
  std::vector<Value> made;
  for (int column = 0; column < columns; ++column) {
    std::vector<Value> values;
    for (int row = 0; row < n / columns; ++row) values.emplace_back(normal(engine));
    made.push_back(Value::table_of(values));
  }
  return Value::table_of(made);
}

/// A file of `n` normal numbers in ten columns under names. The process that needs it first makes it.
Value csv_file(int n) {
  const std::string path = file_named("normal-" + std::to_string(n) + ".csv");
  if (std::filesystem::exists(path)) return Value(path);
  std::mt19937_64 engine(1);
  std::normal_distribution<double> normal;
  hvm::CsvContent content;
  for (int column = 0; column < columns; ++column) content.names.push_back("c" + std::to_string(column));
  content.rows = static_cast<std::size_t>(n / columns);
  content.columns = columns;
  Value cell;
  content.cell = [&](std::size_t, std::size_t) -> const HostValue& {
    cell = Value(normal(engine));
    return cell.record();
  };
  hvm::write_csv_file(path, content, ',');
  return Value(path);
}

Value json_of(int n) {
  std::vector<Value> numbers{normal_columns(n)};
  return Library().call(builtin_named("to_json"), numbers);
}

}  // namespace

void add_host() {
  const auto path = [](int n) { return std::vector<Value>{csv_file(n)}; };
  add_builtin("read_csv", file_sizes, path);
  add_builtin("read_csv_array", file_sizes, path);
  add_builtin("write_csv", written_sizes, [](int n) {
    return std::vector<Value>{Value(file_named("written.csv")), normal_columns(n)};
  });
  add_builtin("parse_json", text_sizes, [](int n) { return std::vector<Value>{json_of(n)}; });
  add_builtin("to_json", text_sizes, [](int n) { return std::vector<Value>{normal_columns(n)}; });
  add_script("loop_additions", 1'000'000, "", "x = 0\nfor i in range(n)\n  x = x + i\nend");
  add_script("loop_elements", 100'000, "a = xzeros(n / 10, 10)",
             "total = 0.0\nfor i in range(n / 10)\n  for j in range(10)\n    total += a[i, j]\n  end\nend");
}

}  // namespace arrayfold::bench
