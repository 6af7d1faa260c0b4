#include "host/folder.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <system_error>

#include "common/host/failure.h"

namespace examples {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(ExitStatus status, const fs::path& path, const std::string& reason) {
  throw Failure(status, fmt::format("{}: {}", path.string(), reason));
}

}  // namespace

std::vector<fs::path> picturesIn(const fs::path& folder, const PictureModules& modules) {
  std::error_code error;
  std::vector<fs::path> pictures;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    std::error_code unreadable;  // a file that is gone meanwhile is none
    if (at->is_regular_file(unreadable) && modules.canDecode(at->path())) {
      pictures.push_back(at->path());
    }
  }
  if (error) refuse(ExitStatus::badInput, folder, error.message());
  if (pictures.empty()) {
    refuse(ExitStatus::badInput, folder, "no module decodes any of the files here");
  }
  std::sort(pictures.begin(), pictures.end());
  return pictures;
}

void prepareOutput(const fs::path& output, const std::vector<fs::path>& folders) {
  std::error_code error;
  fs::create_directories(output, error);
  if (error) refuse(ExitStatus::failed, output, "cannot be made: " + error.message());
  for (const fs::path& folder : folders) {
    if (fs::equivalent(output, folder, error)) {
      refuse(ExitStatus::failed, output, "holds the pictures themselves");
    }
  }
}

}  // namespace examples
