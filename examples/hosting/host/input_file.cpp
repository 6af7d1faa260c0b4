#include "host/input_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include "common/host/failure.h"

namespace examples {
namespace {

[[noreturn]] void refuse(const std::filesystem::path& path, const std::string& reason) {
  throw Failure(ExitStatus::badInput, fmt::format("{}: {}", path.string(), reason));
}

void requireRegularFile(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (error) refuse(path, error.message());
  // A pipe or a device might never end.
  if (!std::filesystem::is_regular_file(status)) refuse(path, "is not a regular file");
}

std::string readAll(const std::filesystem::path& path) {
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream bytes;
  // Copying nothing at all counts as a failure of the copy, so ask the source about its own.
  if (stream && stream.peek() != std::ifstream::traits_type::eof()) bytes << stream.rdbuf();
  if (!stream.is_open() || stream.bad() || !bytes) {
    refuse(path, fmt::format("cannot be read: {}", std::generic_category().message(errno)));
  }
  return std::move(bytes).str();
}

}  // namespace

std::string readTextFile(const std::filesystem::path& path) {
  requireRegularFile(path);
  std::string text = readAll(path);
  if (text.empty()) refuse(path, "is empty, so there is nothing to work on");

  const size_t zero = text.find('\0');
  if (zero != std::string::npos) {
    refuse(path, fmt::format("is not a text: there is a zero byte at offset {}", zero));
  }
  return text;
}

}  // namespace examples
