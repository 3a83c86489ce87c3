// docs/list_words.cpp: the words of the language as JSON, for highlighting.py

#include <iostream>
#include <nlohmann/json.hpp>

#include "script/library/builtins.hpp"
#include "script/syntax/lexer.hpp"

int main() {
  const nlohmann::json words = {{"keywords", hvm::keyword_names()}, {"builtins", hvm::builtin_names()}};
  std::cout << words.dump() << '\n';
}
