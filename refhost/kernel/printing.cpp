// kernel/printing.cpp: the text of a value

#include <charconv>
#include <cmath>
#include <utility>

#include "kernel/records.hpp"
#include "kernel/strings.hpp"
#include "kernel/tables.hpp"

namespace hvm {
namespace {

using namespace kernel;

void print_integer(std::string& out, std::int64_t x) { out += std::to_string(x); }

// The shortest digits that read back as the same double, with a point or an exponent.
void print_real(std::string& out, double x) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof(digits), x).ptr;
  const std::string_view text(digits, static_cast<std::size_t>(end - digits));
  out += text;
  if (std::isfinite(x) && text.find_first_of(".e") == std::string_view::npos) out += ".0";
}

void print_quoted(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\t') {
      out += "\\t";
    } else {
      out += c;
    }
  }
  out += '"';
}

void print_object(std::string& out, const HostValue& value, const ObjectText& object_text) {
  if (object_text && object_of(value)) {
    object_text(out, value);
  } else {
    out += '<';
    out += type_name_of(object_of(value));
    out += '>';
  }
}

// Everything but a table.
void print_leaf(std::string& out, const HostValue& value, const ObjectText& object_text) {
  switch (value.tag) {
    case ValueTag::integer:
      return print_integer(out, payload_of<std::int32_t>(value));
    case ValueTag::integer64:
      return print_integer(out, payload_of<std::int64_t>(value));
    case ValueTag::real:
      return print_real(out, payload_of<double>(value));
    case ValueTag::object:
      return print_object(out, value, object_text);
    case ValueTag::nil:
      out += "nil";
      return;
    case ValueTag::code:
      out += "<code>";
      return;
    default:
      if (is_text(value)) {
        out += text_of(value);
      } else {
        out += "<tag " + std::to_string(static_cast<unsigned>(value.tag)) + '>';
      }
  }
}

// The tables that are being printed, outermost first. Their marks are removed at the end, also by an exception.
class OpenTables {
 public:
  OpenTables() = default;
  OpenTables(const OpenTables&) = delete;
  OpenTables& operator=(const OpenTables&) = delete;
  ~OpenTables() {
    while (!levels_.empty()) close();
  }

  struct Level {
    Table* table;
    TableWalk walk;
    bool is_first = true;
  };

  bool empty() const noexcept { return levels_.empty(); }
  Level& innermost() noexcept { return levels_.back(); }

  void open(Table& table) {
    levels_.push_back({&table, TableWalk(&table)});
    table.is_shown = true;
  }

  void close() noexcept {
    levels_.back().table->is_shown = false;
    levels_.pop_back();
  }

 private:
  std::vector<Level> levels_;
};

class Printer {
 public:
  Printer(std::string& out, const ObjectText& object_text) : out_(out), object_text_(object_text) {}

  void print(const HostValue& value) {
    if (table_of(value)) {
      print_table(*table_in(value));
    } else {
      print_leaf(out_, value, object_text_);
    }
  }

 private:
  void print_table(Table& outermost) {
    begin_table(outermost);
    while (!open_.empty()) {
      if (const Entry entry = open_.innermost().walk.next()) {
        print_entry(entry);
      } else {
        out_ += ']';
        open_.close();
      }
    }
  }

  void begin_table(Table& table) {
    if (table.is_shown) {
      out_ += "[...]";
    } else {
      open_.open(table);
      out_ += '[';
    }
  }

  void print_entry(const Entry& entry) {
    OpenTables::Level& level = open_.innermost();
    if (!std::exchange(level.is_first, false)) out_ += ", ";
    if (!is_in_ordered_part(*level.table, *entry.key)) {
      print_inner(*entry.key);
      out_ += ": ";
    }
    if (table_of(*entry.value)) {
      begin_table(*table_in(*entry.value));
    } else {
      print_inner(*entry.value);
    }
  }

  // The position gives the keys of the ordered part.
  static bool is_in_ordered_part(const Table& table, const HostValue& key) noexcept {
    if (key.tag != ValueTag::integer) return false;
    const auto number = payload_of<std::int32_t>(key);
    return number >= 0 && number < table.index_count;
  }

  void print_inner(const HostValue& value) {
    if (!is_text(value)) return print_leaf(out_, value, object_text_);
    if (value.tag == ValueTag::wide_string) out_ += 'w';
    print_quoted(out_, text_of(value));
  }

  std::string& out_;
  const ObjectText& object_text_;
  OpenTables open_;
};

}  // namespace

std::string printed(const HostValue& value, const ObjectText& object_text) {
  std::string out;
  Printer(out, object_text).print(value);
  return out;
}

}  // namespace hvm
