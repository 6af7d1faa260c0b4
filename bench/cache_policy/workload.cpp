#include "workload.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <unordered_map>

#include "../check.h"
#include "../sequences.h"

namespace zeb::bench {

namespace {

constexpr uint64_t kSeed = 20'231;
constexpr size_t kObjects = 20'000;
constexpr double kZipfExponent = 0.9;
constexpr double kSizeSigma = 1.2;
constexpr double kLargestSize = 40;  // a tenth of the smallest budget, and nothing fills a cache
constexpr int64_t kCheapCost = 1'000;
constexpr size_t kClasses = 3;  // cheap, ten and a hundred times as dear

// Popular objects come first: of rank r, one is asked for (r + 1) ^ -exponent as often as the
// first.
class Zipf {
 public:
  explicit Zipf(size_t count) : upTo_(count) {
    double sum = 0;
    for (size_t rank = 0; rank < count; ++rank)
      upTo_[rank] = sum += std::pow(static_cast<double>(rank + 1), -kZipfExponent);
  }

  uint32_t operator()(Random& random) const {
    const double drawn = std::uniform_real_distribution<double>(0, upTo_.back())(random);
    return static_cast<uint32_t>(std::upper_bound(upTo_.begin(), upTo_.end() - 1, drawn) -
                                 upTo_.begin());
  }

 private:
  std::vector<double> upTo_;
};

std::vector<double> logNormalSizes(size_t count, Random& random) {
  std::lognormal_distribution<double> size(0, kSizeSigma);
  std::vector<double> sizes(count);
  for (double& slot : sizes) slot = std::min(size(random), kLargestSize);
  return sizes;
}

// --- costs ------------------------------------------------------------------------------------

// The class of an object whose size is in the given third of all, 0 being the smallest.
using ClassOfThird = size_t (*)(size_t third, Random& random);

size_t anyClass(size_t, Random& random) {
  return std::uniform_int_distribution<size_t>(0, kClasses - 1)(random);
}

// Seven of ten follow the rule, for no rule holds without exception.
bool isExceptional(Random& random) { return std::bernoulli_distribution(0.3)(random); }

size_t largeIsDear(size_t third, Random& random) {
  return isExceptional(random) ? anyClass(third, random) : third;
}

size_t smallIsDear(size_t third, Random& random) {
  return isExceptional(random) ? anyClass(third, random) : kClasses - 1 - third;
}

// Within a class, from half to twice its cost.
int64_t costOfClass(size_t number, Random& random) {
  const double octave = std::uniform_real_distribution<double>(-1, 1)(random);
  return std::llround(static_cast<double>(kCheapCost) * std::pow(10.0, number) * std::exp2(octave));
}

std::vector<size_t> thirds(const std::vector<double>& sizes) {
  std::vector<size_t> bySize(sizes.size());
  std::iota(bySize.begin(), bySize.end(), size_t{0});
  std::sort(bySize.begin(), bySize.end(), [&](size_t a, size_t b) { return sizes[a] < sizes[b]; });
  std::vector<size_t> third(sizes.size());
  for (size_t place = 0; place < bySize.size(); ++place)
    third[bySize[place]] = place * kClasses / bySize.size();
  return third;
}

// Without a rule, all cost the same.
std::vector<Object> objects(size_t count, ClassOfThird classOf, Random& random) {
  const std::vector<double> sizes = logNormalSizes(count, random);
  const std::vector<size_t> third = thirds(sizes);
  std::vector<Object> made(count);
  for (size_t i = 0; i < count; ++i)
    made[i] = {sizes[i], classOf ? costOfClass(classOf(third[i], random), random) : kCheapCost};
  return made;
}

// --- orders of requests -----------------------------------------------------------------------

std::vector<uint32_t> steadyRequests(size_t count, Random& random) {
  const Zipf zipf(kObjects);
  std::vector<uint32_t> requests(count);
  for (uint32_t& slot : requests) slot = zipf(random);
  return requests;
}

// The last fifth of the objects is only asked for in scans, which walk through them all, one after
// another. Between two scans four times as many requests go to the others.
std::vector<uint32_t> requestsWithScans(size_t count, Random& random) {
  constexpr size_t scanned = kObjects / 5;
  constexpr size_t period = 5 * scanned;
  const Zipf zipf(kObjects - scanned);
  std::vector<uint32_t> requests(count);
  for (size_t i = 0; i < count; ++i) {
    const size_t place = i % period;
    requests[i] = place < period - scanned
                      ? zipf(random)
                      : static_cast<uint32_t>(kObjects - scanned + (place - (period - scanned)));
  }
  return requests;
}

// Five times in all, another fifth of the objects becomes the popular one.
std::vector<uint32_t> requestsWithShifts(size_t count, Random& random) {
  constexpr size_t eras = 5;
  const Zipf zipf(kObjects);
  std::vector<uint32_t> requests(count);
  for (size_t i = 0; i < count; ++i) {
    const size_t era = i * eras / count;
    requests[i] = static_cast<uint32_t>((zipf(random) + era * (kObjects / eras)) % kObjects);
  }
  return requests;
}

using MakeRequests = std::vector<uint32_t> (*)(size_t count, Random& random);

Workload generated(std::string name, ClassOfThird classOf, MakeRequests makeRequests,
                   size_t requests) {
  Random random(kSeed);
  Workload workload{std::move(name), objects(kObjects, classOf, random), {}};
  workload.requests = makeRequests(requests, random);
  return workload;
}

// --- recorded ---------------------------------------------------------------------------------

std::vector<uint32_t> readKeys(const std::string& path, size_t most) {
  std::ifstream file(path, std::ios::binary);
  check(file.good(), "cannot read " + path);
  std::vector<uint32_t> keys;
  std::array<unsigned char, 4> bytes{};
  while (keys.size() < most &&
         file.read(reinterpret_cast<char*>(bytes.data()), std::ssize(bytes))) {
    uint32_t key = 0;
    for (size_t i = bytes.size(); i-- > 0;) key = key << 8 | bytes[i];
    keys.push_back(key);
  }
  check(!keys.empty(), "no keys in " + path);
  return keys;
}

// Numbers the keys in the order in which they first come.
std::vector<uint32_t> numbered(const std::vector<uint32_t>& keys, size_t& distinct) {
  std::unordered_map<uint32_t, uint32_t> numbers;
  std::vector<uint32_t> requests;
  requests.reserve(keys.size());
  for (const uint32_t key : keys)
    requests.push_back(
        numbers.try_emplace(key, static_cast<uint32_t>(numbers.size())).first->second);
  distinct = numbers.size();
  return requests;
}

}  // namespace

double Workload::footprint() const {
  std::vector<bool> seen(objects.size());
  double sum = 0;
  for (const uint32_t request : requests) {
    if (seen[request]) continue;
    seen[request] = true;
    sum += objects[request].size;
  }
  return sum;
}

std::vector<Workload> generatedWorkloads(size_t requests) {
  return {generated("steady, costs equal", nullptr, steadyRequests, requests),
          generated("steady, costs apart from size", anyClass, steadyRequests, requests),
          generated("steady, large is dear", largeIsDear, steadyRequests, requests),
          generated("steady, small is dear", smallIsDear, steadyRequests, requests),
          generated("scans, costs apart from size", anyClass, requestsWithScans, requests),
          generated("scans, large is dear", largeIsDear, requestsWithScans, requests),
          generated("shifts, costs apart from size", anyClass, requestsWithShifts, requests),
          generated("shifts, large is dear", largeIsDear, requestsWithShifts, requests)};
}

std::vector<Workload> recordedWorkloads(const std::string& path, size_t mostRequests) {
  const std::string name = std::filesystem::path(path).stem();
  size_t distinct = 0;
  const std::vector<uint32_t> requests = numbered(readKeys(path, mostRequests), distinct);
  struct Costs {
    const char* name;
    ClassOfThird classOf;
  };
  std::vector<Workload> workloads;
  for (const auto& [costs, classOf] :
       {Costs{"costs equal", nullptr}, Costs{"costs apart from size", anyClass},
        Costs{"large is dear", largeIsDear}, Costs{"small is dear", smallIsDear}}) {
    Random random(kSeed);
    workloads.push_back({name + ", " + costs, objects(distinct, classOf, random), requests});
  }
  return workloads;
}

}  // namespace zeb::bench
