// script/run/uses.cpp: scripts that other scripts use

#include "script/run/uses.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "script/library/script_file.hpp"
#include "script/run/statements.hpp"
#include "script/syntax/parser.hpp"

namespace hvm {
namespace {

/// Adds a path to a list for the time of a scope.
class Listed {
 public:
  Listed(std::vector<std::filesystem::path>& list, std::filesystem::path path) : list_(list) {
    list_.push_back(std::move(path));
  }
  ~Listed() { list_.pop_back(); }
  Listed(const Listed&) = delete;
  Listed& operator=(const Listed&) = delete;

 private:
  std::vector<std::filesystem::path>& list_;
};

/// The same for every way to write the path of a file.
std::filesystem::path canonical_form(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::path canonical = std::filesystem::weakly_canonical(path, error);
  return error ? path : canonical;
}

/// A library has a name of letters, digits and underscores; a script has a path that ends in .hvm.
bool is_library_name(const std::string& name) {
  const auto is_letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_'; };
  return !name.empty() && std::all_of(name.begin(), name.end(), is_letter);
}

SourcePtr source_at(const std::filesystem::path& path, Origin origin) {
  try {
    return read_script(path.string(), origin);
  } catch (const std::runtime_error& error) {
    throw Failure(fmt::format("use: {}", error.what()));
  }
}

}  // namespace

void Uses::run(const std::string& path, Span span) {
  // The name of a source that is no file has no folder, so that paths are relative to the current one.
  const Path name = site_.source()->name();
  const SourcePtr source = site_.placed(span, [&]() -> SourcePtr {
    if (files_ == FileAccess::none) throw Failure("use: files are switched off");
    const bool is_library = is_library_name(path);
    if (!is_library && Path(path).extension() != ".hvm")
      throw Failure(fmt::format("use: the name of a script ends in .hvm, and \"{}\" does not", path));
    const Path used = is_library ? Path(library_file(path)) : (name.parent_path() / path).lexically_normal();
    std::error_code error;
    if (is_library && !std::filesystem::exists(used, error))
      throw Failure(fmt::format("use: there is no library \"{}\"; the name of a script ends in .hvm", path));
    if (done_.count(canonical_form(used)) != 0) return nullptr;
    if (running_.empty()) running_.push_back(canonical_form(name));
    require_no_circle(canonical_form(used));
    return source_at(used, is_library ? Origin::library : Origin::script);
  });
  if (!source) return;
  depth_.require_room(span);
  try {
    site_.placed(span, [&] { run_script(source); });
  } catch (ScriptError& error) {
    if (error.source() != site_.source()) error.add_use(source->name(), *site_.source(), span);
    throw;
  } catch (ScriptInterrupted& end) {
    if (end.place()) end.place()->add_use(source->name(), *site_.source(), span);
    throw;
  }
}

void Uses::require_no_circle(const Path& used) const {
  const auto first = std::find(running_.begin(), running_.end(), used);
  if (first == running_.end()) return;
  std::string circle = first->filename().string();
  for (auto next = first + 1; next != running_.end(); ++next) circle += " uses " + next->filename().string();
  throw Failure(
      fmt::format("use: the scripts use each other in a circle: {} uses {}", circle, used.filename().string()));
}

void Uses::require_new_names(const Program& program) const {
  for (const auto& function : program.functions) {
    const auto known = functions_.fn(function->name);
    if (!known || known->source->name() == program.source->name()) continue;
    throw Failure(fmt::format("use: {} and {} both have a fn '{}'", known->source->name(), program.source->name(),
                              function->name));
  }
}

void Uses::run_script(const SourcePtr& source) {
  const Path path = canonical_form(source->name());
  const CallDepth::Level level(depth_);
  const Listed listed(running_, path);
  const SourceScope scope(site_, source);
  const Program program = parse(source, scopes_.global_names());
  scopes_.make_room();
  require_new_names(program);
  functions_.define(program);
  for (const Statement& statement : program.statements) statements_.run(statement);
  done_.insert(path);
}

}  // namespace hvm
