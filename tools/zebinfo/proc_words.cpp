#include "proc_words.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "zeb/sdk/description.hpp"

namespace zebinfo {

namespace {

namespace description = zeb::sdk::description;

constexpr std::size_t kLongestLine = 98;

// The C declaration of `name`; a procedure type without a name of its own has a place for it.
std::string declared(std::string_view type, std::string_view name) {
  constexpr std::string_view kPlace = "(*)";
  if (const auto at = type.find(kPlace); at != type.npos) {
    return fmt::format("{}(*{}){}", type.substr(0, at), name, type.substr(at + kPlace.size()));
  }
  return fmt::format("{}{}{}", type, type.ends_with('*') ? "" : " ", name);
}

std::string withParameters(const std::string& head, const description::Function& function) {
  std::vector<std::string> parts;
  for (const auto& parameter : function.parameters) {
    parts.push_back(declared(parameter.type, parameter.name));
  }
  if (parts.empty()) return head + "(void);";
  const std::string line = fmt::format("{}({});", head, fmt::join(parts, ", "));
  if (line.size() <= kLongestLine) return line;
  return fmt::format("{}(\n      {});", head, fmt::join(parts, ",\n      "));
}

}  // namespace

std::string since(const description::Function& function) {
  return fmt::format("{}.{}", function.since >> 16, function.since & 0xFFFF);
}

std::string version(const description::Proc& proc) {
  return fmt::format("{}{}", proc.version, proc.older ? " older" : "");
}

std::vector<std::string_view> tags(description::Threads threads) {
  std::vector<std::string_view> words;
  for (const auto& [tag, word] : description::kThreadTags) {
    if (has(threads, tag)) words.push_back(word);
  }
  return words;
}

std::string typeInC(const description::Function& function) {
  const std::string name = fmt::format("(*{})", function.name);
  return withParameters("typedef " + declared(function.result.type, name), function);
}

std::string functionInC(const description::Function& function) {
  return withParameters(declared(function.result.type, function.name), function);
}

}  // namespace zebinfo
