// What the library's interfaces and exports are described to do, from the tables alone: no library
// is started.
#ifndef ZEBINFO_DESCRIBE_H
#define ZEBINFO_DESCRIBE_H

#include <string>
#include <string_view>
#include <vector>

#include "zeb/sdk/description_types.hpp"

namespace zebinfo {

// An interface with those of its procs that were asked for.
struct DescribedInterface {
  const zeb::sdk::description::Interface* interface;
  std::vector<const zeb::sdk::description::Proc*> procs;
};

struct Described {
  std::vector<DescribedInterface> interfaces;
  std::vector<const zeb::sdk::description::Function*> exports;
};

// By "Interface", "Interface/Method", "Interface/Method/Proc" or the name of an exported function.
// Throws Failure when nothing of that name is described.
Described describedAs(std::string_view names);

std::string asText(const Described& described);
std::string asJson(const Described& described);

}  // namespace zebinfo

#endif
