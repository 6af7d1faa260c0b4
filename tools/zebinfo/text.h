// Texts of unknown origin, made fit to print.
#ifndef ZEBINFO_TEXT_H
#define ZEBINFO_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace zebinfo {

// One line for a table: control characters, backslashes and what is not UTF-8 are escaped.
std::string printable(std::string_view text);

// A JSON string with its quotation marks. A byte that is not UTF-8 becomes the code unit
// U+DC00 + byte, by which common readers can get the byte back.
std::string jsonQuoted(std::string_view text);

// How many characters a UTF-8 text has.
std::size_t characters(std::string_view text);

}  // namespace zebinfo

#endif
