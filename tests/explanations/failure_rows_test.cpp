// explanations/failure_rows_test.cpp: every row of every table of failures happens as its page says, and is explained
//
// The description is the one of the build. Each row gets calls made from its condition, or written by hand where no
// condition describes it. A row without a call fails the test.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include "described_module.hpp"
#include "failure_calls.hpp"
#include "script/run/interpreter.hpp"
#include "support/allocations.hpp"

namespace hvm::testing {
namespace {

using Form = Condition::Form;

/// What came of a call.
struct Ending {
  std::optional<std::string> message;  // of the error
  bool is_nil = false;
  std::string taken;  // the row that was taken, in the words of the page
};

/// The row that an explanation ends with, without what was said of it.
std::string taken_row(const Explanation& story) {
  std::string taken;
  for (const std::string& line : story.considered) {
    const std::size_t end = line.rfind(": yes");
    if (end != std::string::npos) return line.substr(0, end);
    const std::size_t open = line.rfind(": may be");
    if (open != std::string::npos) taken += line.substr(0, open) + "|";
  }
  return taken;
}

std::string without_marks(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '`'), text.end());
  return text;
}

class FailureRows : public ::testing::Test {
 protected:
  using Fail = void (*)(std::int64_t);

  /// Runs a call, and lets the allocation of the number `failing` fail in it.
  static Ending ending_of(const FailureCall& made, Fail fail = fail_allocation, std::int64_t failing = 0) {
    std::vector<std::string> lines;
    InterpreterOptions options;
    options.print = [&](const std::string& text, const SourceText&, std::size_t) { lines.push_back(text); };
    options.description = &module_description();
    options.explains = true;
    Interpreter interpreter(module_functions(), options);
    Ending ending;
    try {
      interpreter.run(interpreter.parse(source(made.preparation)));
      const Program call = interpreter.parse(source("result = " + made.call));
      fail(failing);
      interpreter.run(call);
      fail(0);
      interpreter.run(interpreter.parse(source("print(result == nil)")));
      ending.is_nil = !lines.empty() && lines.back() == "1";
    } catch (const ScriptError& error) {
      fail(0);
      ending.message = error.message();
      ending.taken = taken_row(interpreter.last_explanation());
    }
    return ending;
  }

  static SourcePtr source(const std::string& text) { return std::make_shared<SourceText>("row.hvm", text); }
};

struct Row {
  const FunctionEntry* entry;
  const FailureRow* row;
  std::string text() const { return entry->name + ": " + row->when; }
};

/// The rows of the functions and methods for which `is_meant` holds.
template <class IsMeant>
std::vector<Row> rows_where(IsMeant is_meant) {
  std::vector<Row> rows;
  for (const auto* entries : {&description().functions, &description().methods})
    for (const FunctionEntry& entry : *entries)
      for (const FailureRow& row : entry.failures)
        if (is_meant(row)) rows.push_back({&entry, &row});
  return rows;
}

bool names_argument(const std::string& message) {
  for (std::size_t at = message.find("argument "); at != std::string::npos; at = message.find("argument ", at + 1))
    if (at + 9 < message.size() && std::isdigit(static_cast<unsigned char>(message[at + 9])) != 0) return true;
  return false;
}

/// Whether a row is about arguments, by its condition or by names in its words.
bool is_about_arguments(const FunctionEntry& entry, const FailureRow& row) {
  const Condition& condition = row.condition;
  if (condition.is_of_any || !condition.of.empty() || condition.form == Condition::Form::arguments_below) return true;
  return std::any_of(entry.arguments.begin(), entry.arguments.end(), [&](const ArgumentEntry& argument) {
    return row.when.find('`' + argument.name + '`') != std::string::npos;
  });
}

/// Whether the message of a check of the host names what the row is about.
bool names_subject(const FunctionEntry& entry, const std::string& message) {
  if (names_argument(message) || message.find("extents") != std::string::npos) return true;
  if (message.find("arguments") != std::string::npos) return true;
  return std::any_of(entry.arguments.begin(), entry.arguments.end(),
                     [&](const ArgumentEntry& argument) { return message.find(argument.name) != std::string::npos; });
}

/// Whether a message says what the words of a row say, but for the code in them.
bool has_words_of(const std::string& when, const std::string& message) {
  std::istringstream pieces(when);
  bool is_code = false;
  for (std::string piece; std::getline(pieces, piece, '`'); is_code = !is_code)
    if (!is_code && message.find(piece) == std::string::npos) return false;
  return true;
}

/// Whether a message tells the cause: what is missing, what the argument is, or the words of the row.
bool names_cause(const FailureRow& row, const std::string& message) {
  const auto has = [&](const char* part) { return message.find(part) != std::string::npos; };
  switch (row.condition.form) {
    case Form::told:
    case Form::no_memory:
      return has_words_of(row.when, message);
    case Form::always:
      return has("no arguments give a value");
    case Form::arguments_below:
      return has(" is missing: ");
    default:
      return has("; this is ") || has("; these are ") || has_words_of(row.when, message);
  }
}

void expect_explained(const FunctionEntry& entry, const FailureRow& row, const std::string& message) {
  EXPECT_EQ(message.compare(0, entry.name.size() + 2, entry.name + ": "), 0) << message;
  EXPECT_EQ(message.find("the call failed"), std::string::npos) << message;
  if (row.outcome == Outcome::refused) {
    EXPECT_TRUE(names_subject(entry, message)) << message;
  } else if (is_about_arguments(entry, row)) {
    EXPECT_TRUE(names_argument(message)) << message;
  }
  if (row.outcome != Outcome::refused) {
    EXPECT_TRUE(names_cause(row, message)) << message;
  }
  if (row.outcome == Outcome::throws) {
    EXPECT_NE(message.find("; the module threw " + row.exception), std::string::npos) << message;
  }
  const bool has_own_remedy = row.outcome == Outcome::refused && message.find(". Write ") != std::string::npos;
  if (!row.remedy.empty() && !has_own_remedy) {
    EXPECT_NE(message.find(without_marks(row.remedy).substr(1)), std::string::npos) << message;
  }
}

/// Whether a row was taken, alone or as one of those that may be.
bool is_taken(const Ending& ending, const FailureRow& row) {
  const std::string when = without_marks(row.when);
  return ending.taken == when || ("|" + ending.taken).find("|" + when + "|") != std::string::npos;
}

std::string tried(const std::vector<FailureCall>& calls, const std::vector<Ending>& endings) {
  std::string text;
  for (std::size_t i = 0; i < calls.size(); ++i)
    text += calls[i].preparation + calls[i].call + " -> " + endings[i].message.value_or("no error") + " [" +
            endings[i].taken + "]\n";
  return text;
}

bool is_of_memory(const FailureRow& row) { return row.condition.form == Condition::Form::no_memory; }

/// Rows that no call brings about here.
const std::map<std::string, std::string> without_call = {
    {"xeig: the computation does not converge", "no matrix is known for which the iteration does not end"},
    {"xeigvals: the computation does not converge; N is the number that LAPACK returns", "the same"},
    {"xsvd: the singular values are not found", "the same"},
    {"xmatrix_rank: the singular values are not found", "the same"},
    {"xpinv: the singular values are not found", "the same"},
};

TEST_F(FailureRows, OfCallsThatFailOrThrowOrAreRefused_NameTheArgumentTheCauseAndTheRemedy) {
  const std::vector<Row> rows = rows_where([](const FailureRow& row) {
    return row.outcome != Outcome::nothing && row.outcome != Outcome::ends && !is_of_memory(row);
  });
  EXPECT_GT(rows.size(), 400u);
  for (const Row& row : rows) {
    if (without_call.count(row.text()) != 0) continue;
    SCOPED_TRACE(row.text());
    const std::vector<FailureCall> calls = failure_calls(*row.entry, *row.row);
    std::vector<Ending> endings;
    for (const FailureCall& made : calls) endings.push_back(ending_of(made));
    const auto taken =
        std::find_if(endings.begin(), endings.end(), [&](const Ending& ending) { return is_taken(ending, *row.row); });
    if (taken == endings.end())
      ADD_FAILURE() << "no call is explained by this row\n" << tried(calls, endings);
    else
      expect_explained(*row.entry, *row.row, *taken->message);
    // Whatever row takes a call, no call that fits the condition goes by without a reason.
    for (const Ending& ending : endings) {
      ASSERT_TRUE(ending.message) << tried(calls, endings);
      EXPECT_EQ(ending.message->find("the call failed"), std::string::npos) << *ending.message;
    }
  }
}

TEST_F(FailureRows, OfMissingMemory_SayWhatDoesNotFit) {
  const std::vector<Row> rows = rows_where(is_of_memory);
  EXPECT_GT(rows.size(), 70u);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text());
    Ending ending;
    for (const FailureCall& made : valid_calls(*row.entry))
      for (const Fail fail : {Fail{arrayfold::test::fail_allocation}, Fail{fail_allocation}})
        for (std::int64_t failing = 1; failing < 200 && !is_taken(ending, *row.row); ++failing)
          ending = ending_of(made, fail, failing);
    if (!is_taken(ending, *row.row)) {
      ADD_FAILURE() << "no missing memory is explained by this row: " << ending.message.value_or("no error");
      continue;
    }
    expect_explained(*row.entry, *row.row, *ending.message);
    EXPECT_NE(ending.message->find("memory"), std::string::npos) << *ending.message;
  }
}

TEST_F(FailureRows, ThatGiveNothing_AreNil) {
  const std::vector<Row> rows = rows_where([](const FailureRow& row) { return row.outcome == Outcome::nothing; });
  EXPECT_GT(rows.size(), 50u);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text());
    const std::vector<FailureCall> calls = failure_calls(*row.entry, *row.row);
    std::vector<Ending> endings;
    for (const FailureCall& made : calls) endings.push_back(ending_of(made));
    const bool is_nil = std::any_of(endings.begin(), endings.end(), [](const Ending& ending) { return ending.is_nil; });
    EXPECT_TRUE(is_nil) << tried(calls, endings);
    for (const Ending& ending : endings) EXPECT_TRUE(ending.is_nil || ending.message) << tried(calls, endings);
  }
}

TEST_F(FailureRows, ThatNoCallBringsAbout_AreStillRowsOfThePages) {
  std::set<std::string> texts;
  for (const Row& row : rows_where([](const FailureRow&) { return true; })) texts.insert(row.text());
  for (const auto& [row, reason] : without_call) EXPECT_EQ(texts.count(row), 1u) << row;
}

TEST_F(FailureRows, ThatEndTheProcess_AreNoRowsOfFunctionsAndMethods) {
  EXPECT_TRUE(rows_where([](const FailureRow& row) { return row.outcome == Outcome::ends; }).empty());
}

}  // namespace
}  // namespace hvm::testing
