// script/explain/module_description.cpp: the description of a module, read when it is needed

#include "script/explain/module_description.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

namespace hvm {
namespace {

ArgumentLimits limits_of(const Description& description) {
  ArgumentLimits limits;
  for (const FunctionEntry& function : description.functions)
    if (function.most_arguments) limits.emplace(function.name, *function.most_arguments);
  return limits;
}

}  // namespace

ModuleDescription::ModuleDescription(std::string module_path, std::vector<std::string> registered, TellProblem tell)
    : module_path_(std::move(module_path)), registered_(std::move(registered)), tell_(std::move(tell)) {
  HeadReading head = read_description_head(module_path_, registered_);
  if (!head.problem.empty())
    settle({std::nullopt, std::move(head.problem), {}});
  else if (head.limits)
    limits_ = *std::move(head.limits);
  else if (const Description* whole = get())
    limits_ = limits_of(*whole);
}

ModuleDescription::ModuleDescription(Description known) : limits_(limits_of(known)) {
  settle({std::move(known), {}, {}});
}

const Description* ModuleDescription::get() const {
  if (!is_read_) settle(read_description(module_path_, registered_));
  return reading_.description ? &*reading_.description : nullptr;
}

std::string ModuleDescription::absence() const {
  if (!reading_.problem.empty()) return reading_.problem;
  return fmt::format("there is no description of the module's functions; hvm looks for it at {}",
                     fmt::join(reading_.places, " or "));
}

void ModuleDescription::settle(DescriptionReading reading) const {
  reading_ = std::move(reading);
  is_read_ = true;
  if (!reading_.problem.empty()) tell_(reading_.problem);
}

}  // namespace hvm
