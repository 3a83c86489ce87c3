// conformance/call_table.cpp: the table of calls and what each does

#include "conformance/call_table.hpp"

#include <fmt/format.h>
#include <signal.h>

#include <cerrno>
#include <fstream>
#include <limits>
#include <system_error>

namespace hvm::conformance {
namespace {

constexpr int format = 1;

/// `exactly`; otherwise what is compared instead, and why.
Json json_of(const Precision& precision) {
  if (precision.reason.empty()) return "exactly";
  Json json;
  if (!precision.has_contents)
    json["shapes"] = true;
  else
    json["within"] = precision.tolerance;
  json["reason"] = precision.reason;
  return json;
}

Precision precision_of(const Json& json) {
  Precision precision;
  if (json == "exactly") return precision;
  precision.has_contents = !json.value("shapes", false);
  precision.tolerance =
      precision.has_contents ? json.at("within").get<double>() : std::numeric_limits<double>::infinity();
  precision.reason = json.at("reason");
  return precision;
}

Json head_of(const CallTable& table) {
  Json head = {{"format", format},         {"module", table.module},
               {"version", table.version}, {"functions", table.functions},
               {"types", table.types},     {"left_out", Json::array()}};
  for (const LeftOut& row : table.left_out) head["left_out"].push_back({{"what", row.what}, {"reason", row.reason}});
  return head;
}

void take_head(CallTable& table, const Json& head) {
  if (head.at("format") != format) throw std::runtime_error(fmt::format("its format is not {}", format));
  table.module = head.at("module");
  table.version = head.at("version");
  head.at("functions").get_to(table.functions);
  head.at("types").get_to(table.types);
  for (const Json& row : head.at("left_out")) table.left_out.push_back({row.at("what"), row.at("reason")});
}

Json json_of(const CallRow& row) {
  Json json = {{"id", row.id}};
  if (!row.documents.empty()) json["documents"] = row.documents;
  if (!row.made.preparation.empty()) json["preparation"] = row.made.preparation;
  if (!row.prepared.empty()) json["prepared"] = row.prepared;
  json["call"] = row.made.call;
  json["compared"] = json_of(row.precision);
  json.update(row.record);
  return json;
}

CallRow row_of(Json json) {
  CallRow row;
  row.id = json.at("id");
  if (json.contains("documents")) json["documents"].get_to(row.documents);
  row.made = {json.value("preparation", ""), json.at("call")};
  row.prepared = json.value("prepared", "");
  row.precision = precision_of(json.at("compared"));
  for (const char* member : {"outcome", "changes", "calls"})
    if (json.contains(member)) row.record[member] = json[member];
  // What a comparison reads without looking.
  if (!row.record.at("outcome").is_object()) throw std::runtime_error("its outcome is no object");
  if (row.ending_signal() != 0) return row;
  for (const Json& call : row.record.at("calls"))
    for (const Json& operation : call.at("operations")) operation.get_ref<const std::string&>();
  return row;
}

}  // namespace

int CallRow::ending_signal() const { return record.at("outcome").contains("ends") ? SIGFPE : 0; }

CallTable read_call_table(const std::string& path) {
  std::ifstream file(path);
  if (!file)
    throw TableError(
        fmt::format("the table of calls {} cannot be opened: {}", path, std::generic_category().message(errno)));
  CallTable table;
  std::size_t number = 0;
  for (std::string line; std::getline(file, line);) {
    try {
      ++number;
      Json json = Json::parse(line);
      if (number == 1)
        take_head(table, json);
      else
        table.rows.push_back(row_of(std::move(json)));
    } catch (const std::exception& error) {
      throw TableError(fmt::format("the table of calls {} is broken in line {}: {}", path, number, error.what()));
    }
  }
  if (table.rows.empty()) throw TableError(fmt::format("the table of calls {} has no rows", path));
  return table;
}

std::string text_of(const CallTable& table) {
  std::string text = head_of(table).dump() + "\n";
  for (const CallRow& row : table.rows) text += json_of(row).dump() + "\n";
  return text;
}

}  // namespace hvm::conformance
