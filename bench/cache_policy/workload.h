// What is asked of a cache: which objects in which order, how large they are and what it costs to
// make them. Everything is seeded: each run and each policy sees the same.
#ifndef ZEB_BENCH_CACHE_POLICY_WORKLOAD_H
#define ZEB_BENCH_CACHE_POLICY_WORKLOAD_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zeb::bench {

struct Object {
  double size;   // in medians: one object in two is smaller than 1
  int64_t cost;  // a thousandth of what a cheap object costs
};

struct Workload {
  std::string name;
  std::vector<Object> objects;
  std::vector<uint32_t> requests;  // indices of objects

  // The size of all objects that are asked for at least once.
  double footprint() const;
};

// The generated ones, each of so many requests.
std::vector<Workload> generatedWorkloads(size_t requests);

// The keys of a file of little-endian 32-bit numbers, the first ones if there are more, once with
// each kind of costs. A file of keys tells neither sizes nor costs: they are drawn as for the
// generated workloads. Ends the process when the file cannot be read.
std::vector<Workload> recordedWorkloads(const std::string& path, size_t mostRequests);

}  // namespace zeb::bench

#endif
