#include "describe.h"

#include <fmt/format.h>

#include "failure.h"
#include "text.h"
#include "zeb/sdk/description.hpp"

namespace zebinfo {

namespace {

namespace description = zeb::sdk::description;

// Up to the next slash, which goes as well.
std::string_view nextName(std::string_view& names) {
  const auto slash = names.find('/');
  const std::string_view name = names.substr(0, slash);
  names.remove_prefix(slash == names.npos ? names.size() : slash + 1);
  return name;
}

// An empty name is every name.
bool fits(std::string_view wanted, std::string_view name) {
  return wanted.empty() || wanted == name;
}

}  // namespace

Described describedAs(std::string_view names) {
  Described found;
  if (const auto* function = description::findExport(names)) found.exports.push_back(function);
  std::string_view rest = names;
  const auto* interface = description::findInterface(nextName(rest));
  if (interface != nullptr) {
    const std::string_view method = nextName(rest);
    DescribedInterface described{interface, {}};
    for (const auto& proc : interface->procs) {
      if (fits(method, proc.method) && fits(rest, proc.name)) described.procs.push_back(&proc);
    }
    if (!described.procs.empty()) found.interfaces.push_back(described);
  }
  if (found.interfaces.empty() && found.exports.empty()) {
    throw Failure(ExitStatus::missing, fmt::format("\"{}\" is not described", names));
  }
  return found;
}

}  // namespace zebinfo
