#include "host/files.h"

#include <fmt/format.h>

#include <cstdint>
#include <limits>
#include <string>
#include <system_error>

#include "common/host/failure.h"

namespace examples {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const fs::path& path, const std::string& reason) {
  throw Failure(ExitStatus::failed, fmt::format("{}: {}", path.string(), reason));
}

}  // namespace

bool isCompressedName(const fs::path& path) { return path.extension() == ".gz"; }

void requireSource(const fs::path& source) {
  std::error_code error;
  const fs::file_status status = fs::status(source, error);
  if (error) refuse(source, error.message());
  if (!fs::is_regular_file(status)) refuse(source, "is not a regular file");
  constexpr uintmax_t kLargest = std::numeric_limits<int32_t>::max();
  if (!isCompressedName(source) && fs::file_size(source) > kLargest) {
    refuse(source, "is too large: file streams end at 2 GiB");
  }
}

void requireTarget(const fs::path& source, const fs::path& target) {
  std::error_code error;
  if (fs::exists(target, error) && !fs::is_regular_file(target, error)) {
    refuse(target, "is not a regular file");
  }
  if (fs::equivalent(source, target, error)) refuse(target, "is the source itself");
}

UnfinishedTarget::~UnfinishedTarget() {
  if (!begun_) return;
  std::error_code error;  // a device stays, and what cannot be removed was told of already
  if (fs::is_regular_file(path_, error)) fs::remove(path_, error);
}

}  // namespace examples
