#include <fmt/format.h>
#include <fmt/ranges.h>

#include "describe.h"
#include "proc_words.h"
#include "table.h"
#include "zeb/sdk/description.hpp"

namespace zebinfo {

namespace {

namespace description = zeb::sdk::description;

std::string orDash(std::string_view text) { return std::string(text.empty() ? "-" : text); }

// Whose it is, and what ends it.
std::string ownership(const description::Parameter& parameter) {
  std::string text(wordOf(parameter.ownership));
  if (!parameter.endedBy.empty()) text += fmt::format(", ended by {}", parameter.endedBy);
  return text;
}

std::string_view release(const description::Handle* handle) {
  return handle != nullptr ? handle->release : "";
}

std::string parameterTable(const description::Function& function) {
  if (function.parameters.empty()) return "";
  Table table({{"parameter"},
               {"type"},
               {"direction"},
               {"null"},
               {"ownership"},
               {"after a failure"},
               {"handle"},
               {"given back with"}});
  for (const auto& parameter : function.parameters) {
    table.add({std::string(parameter.name), std::string(parameter.type),
               std::string(wordOf(parameter.direction)), orDash(wordOf(parameter.null)),
               ownership(parameter), orDash(wordOf(parameter.onFailure)),
               orDash(parameter.handle != nullptr ? parameter.handle->kind : ""),
               orDash(release(parameter.handle))});
  }
  return table.text();
}

std::string resultLine(const description::Result& result) {
  using description::Convention;
  if (result.convention == Convention::nothing) return "nothing";
  if (result.convention == Convention::error) return "null on success, else an error";
  std::string text(result.type);
  if (result.ownership != description::Ownership::none) {
    text += fmt::format(", {}", wordOf(result.ownership));
  }
  return text;
}

std::string failureLine(const description::Result& result) {
  if (result.failure == description::Failure::none) return "cannot be told";
  return fmt::format("{}{}", wordOf(result.failure),
                     result.zeroIsAnswer ? ", which is an ordinary answer, too" : "");
}

// One function without its heading.
std::string body(const description::Function& function, const std::string& declaration) {
  std::string out = fmt::format("  {}\n  {}\n", declaration, function.summary);
  Table lines({{"signature"}, {function.signature}});
  lines.add({"threads", fmt::format("{}", fmt::join(tags(function.threads), ", "))});
  lines.add({"answers", resultLine(function.result)});
  if (function.result.handle != nullptr) {
    lines.add({"given back", std::string(function.result.handle->release)});
  }
  if (function.result.convention != description::Convention::nothing) {
    lines.add({"on failure", failureLine(function.result)});
  }
  return out + lines.text() + parameterTable(function);
}

}  // namespace

std::string asText(const Described& described) {
  std::string out;
  for (const auto& [interface, procs] : described.interfaces) {
    out += fmt::format("{}: {}  ({})\n", interface->name, interface->title, interface->header);
    for (const auto* proc : procs) {
      out += fmt::format("\n{}/{}/{}  version {}, since {}\n", interface->name, proc->method,
                         proc->name, version(*proc), since(*proc));
      out += body(*proc, typeInC(*proc));
    }
  }
  for (const auto* function : described.exports) {
    out += fmt::format("{}: exported, since {}\n", function->name, since(*function));
    out += body(*function, functionInC(*function));
  }
  return out;
}

}  // namespace zebinfo
