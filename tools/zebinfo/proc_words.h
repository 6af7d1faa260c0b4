// What the description says of a function, in words for both forms of output.
#ifndef ZEBINFO_PROC_WORDS_H
#define ZEBINFO_PROC_WORDS_H

#include <string>
#include <string_view>
#include <vector>

#include "zeb/sdk/description_types.hpp"

namespace zebinfo {

// "4.0"
std::string since(const zeb::sdk::description::Function& function);

// "2", or "1 older"
std::string version(const zeb::sdk::description::Proc& proc);

// The words of the set's tags.
std::vector<std::string_view> tags(zeb::sdk::description::Threads threads);

// The declaration in C: of a procedure type, or of an exported function. Each parameter has a line
// of its own where one line would be too long.
std::string typeInC(const zeb::sdk::description::Function& function);
std::string functionInC(const zeb::sdk::description::Function& function);

}  // namespace zebinfo

#endif
