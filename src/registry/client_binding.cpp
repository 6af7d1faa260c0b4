#include "registry/client_binding.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace zeb::registry {

void endWithoutInterface(const char* interfaceName) noexcept {
  std::array<char, 160> message{};
  (void)std::snprintf(message.data(), message.size(),
                      "Missing Interface: the library cannot fetch its own \"%s\"", interfaceName);
  reportToHost(message.data());
  std::abort();
}

}  // namespace zeb::registry
