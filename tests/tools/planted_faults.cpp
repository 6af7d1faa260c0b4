// One fault for each tool that watches a running program: planted_faults <fault>.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <thread>

namespace {

// What the compiler cannot see through, so that it leaves the faults in.
volatile int one = 1;
int plain = 0;

void leak() {
  static void* volatile lost;
  lost = std::malloc(100);
  lost = nullptr;
}

void keepReachable() {
  static void* volatile kept;
  kept = std::malloc(100);
}

int useAfterFree() {
  int* volatile memory = static_cast<int*>(std::malloc(sizeof(int)));
  *memory = one;
  std::free(memory);
  return *memory;
}

int overflow() { return std::numeric_limits<int>::max() + one; }

void race() {
  std::thread other([] { plain += one; });
  plain += one;
  other.join();
}

}  // namespace

int main(int, char** arguments) {
  const auto asked = [fault = arguments[1]](const char* name) {
    return std::strcmp(fault, name) == 0;
  };
  if (asked("leak")) leak();
  if (asked("reachable")) keepReachable();
  if (asked("use-after-free")) one = useAfterFree();
  if (asked("overflow")) one = overflow();
  if (asked("race")) race();
  return 0;
}
