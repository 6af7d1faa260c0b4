// Containers against a model: random makers, holders, owners and look-ups, some of them while
// memory fails, and after each step the library must say what a few vectors and a map say.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <deque>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "atoms/atom.h"
#include "base/library_counters.h"
#include "container/container.h"
#include "errors/internal_error.h"
#include "registry/proc_registry.h"
#include "support/random.h"
#include "support/started_library.h"

namespace zeb::container {
namespace {

using test::CountingHost;
using test::StartedLibrary;
using test::totalOf;
using zeb_test::Random;

constexpr std::array kInterfaces = {"I0", "I1", "I2", "I3", "I4"};
constexpr std::array kInstances = {"D0", "D1", "D2"};
constexpr std::array kMethods = {"M0", "M1", "M2"};
constexpr const char* kProc = "proc";
constexpr size_t kMostBoxes = 60;
constexpr size_t kMostParts = 8;

// The data of an instance: how often it was destroyed, and how often it should have been.
struct Datum {
  int destroyed = 0;
  int expected = 0;

  static void destroy(void* data) { ++static_cast<Datum*>(data)->destroyed; }
};

struct Box;

struct Part {
  std::string name;
  void* data = nullptr;
  Datum* owned = nullptr;  // destroyed with the part
  Box* source = nullptr;   // released with the part
};

// What the model knows of one container.
struct Box {
  ZEBContainer* real = nullptr;
  std::vector<std::string> interfaces;  // the latest first
  std::vector<Part> instances;          // the latest first
  std::string signature;
  std::optional<std::string> cachedName;
  void* cachedData = nullptr;
  int64_t references = 1;  // by the test and by clones
  int64_t held = 1;        // by the test
  bool hooked = false;
  bool keeps = false;
  std::unique_ptr<int64_t> countedElsewhere;

  bool isFull() const { return interfaces.size() == 1 && instances.size() == 1; }
};

struct Events {
  int64_t empty = 0;
  int64_t addRefs = 0;
  int64_t hits = 0;
  int64_t misses = 0;
  int64_t notRecycled = 0;
  int64_t lookups = 0;

  bool operator==(const Events&) const = default;

  static Events counted() {
    return {.empty = totalOf(counters::emptyContainer),
            .addRefs = totalOf(counters::containerAddRef),
            .hits = totalOf(counters::fullContainerCacheHit),
            .misses = totalOf(counters::fullContainerCacheMiss),
            .notRecycled = totalOf(counters::uncachedContainerDelete),
            .lookups = totalOf(counters::instanceLookup)};
  }
};

void PrintTo(const Events& events, std::ostream* out) {
  *out << "empty " << events.empty << ", addRefs " << events.addRefs << ", hits " << events.hits
       << ", misses " << events.misses << ", not recycled " << events.notRecycled << ", look-ups "
       << events.lookups;
}

// Runs each step in the library first and in the model second: hooks that the library asks
// meanwhile answer from what the model knew before.
class Play {
 public:
  explicit Play(Random& random) : random_(random) {
    current = this;
    emptyRecycled();
    for (const char* text : kInterfaces) names_.try_emplace(text, text);
    for (const char* text : kInstances) names_.try_emplace(text, text);
    for (const char* text : kMethods) names_.try_emplace(text, text);
    names_.try_emplace(kProc, kProc);
    names_.try_emplace(ZEB_CONTAINER_CLONE_INSTANCE, ZEB_CONTAINER_CLONE_INSTANCE);
  }
  ~Play() { current = nullptr; }
  Play(const Play&) = delete;
  Play& operator=(const Play&) = delete;

  void step() {
    switch (random_.below(16)) {
      case 0:
        return newEmpty();
      case 1:
      case 2:
        return newFull();
      case 3:
        return clone();
      case 4:
        return addReferenceTo();
      case 5:
      case 6:
      case 7:
      case 8:
        return releaseOne();
      case 9:
        return dropWithoutDelete();
      case 10:
        return disown();
      case 11:
        return growInterfaces();
      case 12:
        return growInstances();
      case 13:
        return changeRegistry();
      default:
        return lookUp();
    }
  }

  void check() const {
    EXPECT_EQ(Events::counted(), events_);
    EXPECT_EQ(hookCalls_, expectedHookCalls_);
    for (const Datum& datum : data_) ASSERT_EQ(datum.destroyed, datum.expected);
    for (const Box& box : boxes_) checkBox(box);
  }

  // Gives everything back that the test holds.
  void end() {
    while (!boxes_.empty()) {
      Box& box =
          *chooseWhere([](const Box& each) { return each.held > 0 || each.references == 0; });
      if (box.references == 0) {
        disown(box);
      } else {
        release(box);
      }
    }
    check();
    emptyRecycled();
    for (const char* text : kInterfaces) registry::removeInterface(text);
    names_.clear();
  }

 private:
  // ---- Choices

  template <class Condition>
  Box* chooseWhere(Condition condition) {
    std::vector<Box*> fit;
    for (Box& box : boxes_) {
      if (condition(box)) fit.push_back(&box);
    }
    return fit.empty() ? nullptr : fit[random_.below(fit.size())];
  }
  Box* choose() {
    return chooseWhere([](const Box&) { return true; });
  }
  Box* chooseHeld() {
    return chooseWhere([](const Box& box) { return box.held > 0; });
  }

  template <class Texts>
  const char* oneOf(const Texts& texts) {
    return texts[random_.below(texts.size())];
  }
  ZEBString* name(const std::string& text) const { return names_.at(text).get(); }

  // Some data has no destroy procedure, some is null.
  Part newPart(const char* partName) {
    if (random_.oneIn(8)) return {.name = partName};
    Datum* datum = &data_.emplace_back();
    return {.name = partName, .data = datum, .owned = random_.oneIn(6) ? nullptr : datum};
  }
  static ZEBContainerDestroy destroyOf(const Part& part) {
    return part.owned != nullptr ? Datum::destroy : nullptr;
  }

  // Runs a step that allocates, now and then with an allocation that fails; true when it raised.
  template <class Operation>
  bool raised(Operation operation) {
    if (random_.oneIn(6)) CountingHost::failAllocation(1 + static_cast<int64_t>(random_.below(3)));
    bool threw = false;
    try {
      operation();
    } catch (const InternalError&) {
      threw = true;
      EXPECT_FALSE(CountingHost::failureIsPending());
    }
    CountingHost::stopFailing();
    return threw;
  }

  // ---- Client procedures

  static int32_t hook(ZEBContainer* container, uint64_t interfaces, uint64_t instances) {
    Box& box = current->boxOf(container);
    ++current->hookCalls_;
    EXPECT_TRUE(box.hooked);
    EXPECT_EQ(box.interfaces.size(), interfaces);
    EXPECT_EQ(box.instances.size(), instances);
    return box.keeps ? 1 : 0;
  }

  static int64_t count(uint64_t context, int32_t add) {
    auto* counted = reinterpret_cast<int64_t*>(context);
    *counted += add == 1 ? 1 : -1;
    return *counted == 0;
  }

  Box& boxOf(const ZEBContainer* container) {
    return *std::find_if(boxes_.begin(), boxes_.end(),
                         [&](const Box& box) { return box.real == container; });
  }

  // ---- The model's rules

  void end(Box& box) {
    if (box.isFull()) {
      endPart(box.instances.front());
      if (recycled_.size() < 32) recycled_.push_back(box.real);
    } else {
      ++events_.notRecycled;
      for (const Part& part : box.instances) endPart(part);
    }
    boxes_.remove_if([&](const Box& each) { return &each == &box; });
  }

  void endPart(const Part& part) {
    if (part.owned != nullptr) ++part.owned->expected;
    if (part.source != nullptr) drop(*part.source);
  }

  void drop(Box& box) {
    if (--box.references != 0) return;
    if (box.hooked) {
      ++expectedHookCalls_;
      if (box.keeps) return;
    }
    end(box);
  }

  static void cacheFirst(Box& box, const Part& part) {
    if (box.cachedData != nullptr) return;
    box.cachedName = part.name;
    box.cachedData = part.data;
  }

  // ---- Steps

  void newEmpty() {
    if (boxes_.size() >= kMostBoxes) return;
    ZEBContainer* made = nullptr;
    const bool failed = raised([&] { made = makeEmpty(); });
    ++events_.empty;
    if (failed) return;
    ++events_.addRefs;
    boxes_.emplace_back().real = made;
  }

  void newFull() {
    if (boxes_.size() >= kMostBoxes) return;
    const Part part = newPart(oneOf(kInstances));
    const char* interfaceName = oneOf(kInterfaces);
    Box box;
    box.hooked = random_.oneIn(3);
    box.keeps = random_.oneIn(2);
    if (random_.oneIn(4)) box.countedElsewhere = std::make_unique<int64_t>(1);
    const bool failed = raised([&] {
      box.real = makeFull({.data = part.data,
                           .instanceName = name(part.name),
                           .destroy = destroyOf(part),
                           .interfaceName = name(interfaceName),
                           .ownerHook = box.hooked ? hook : nullptr,
                           .refProc = box.countedElsewhere ? count : nullptr,
                           .refContext = reinterpret_cast<uint64_t>(box.countedElsewhere.get())});
    });
    if (!recycled_.empty()) {
      ASSERT_FALSE(failed);
      ++events_.hits;
      ASSERT_EQ(box.real, recycled_.back());
      recycled_.pop_back();
    } else {
      ++events_.misses;
      if (failed) return;
      ++events_.addRefs;
    }
    box.interfaces = {interfaceName};
    box.instances = {part};
    box.signature = interfaceName;
    box.cachedName = part.name;
    box.cachedData = part.data;
    boxes_.push_back(std::move(box));
  }

  void clone() {
    Box* source = choose();
    if (source == nullptr || boxes_.size() >= kMostBoxes) return;
    Box box;
    if (raised([&] { box.real = makeClone(*source->real); })) return;
    events_.addRefs += 2;
    ++source->references;
    box.interfaces = source->interfaces;
    box.signature = source->signature;
    for (const Part& part : source->instances) {
      box.instances.push_back({.name = part.name, .data = part.data});
    }
    const Part own{.name = ZEB_CONTAINER_CLONE_INSTANCE,
                   .data = box.real->instances.head()->data,
                   .source = source};
    box.instances.insert(box.instances.begin(), own);
    cacheFirst(box, own);
    boxes_.push_back(std::move(box));
  }

  void addReferenceTo() {
    Box* box = choose();
    if (box == nullptr) return;
    addReference(*box->real);
    ++events_.addRefs;
    ++box->references;
    ++box->held;
  }

  void releaseOne() {
    if (Box* box = chooseHeld()) release(*box);
  }
  void release(Box& box) {
    container::release(*box.real);
    --box.held;
    drop(box);
  }

  void dropWithoutDelete() {
    Box* box = chooseHeld();
    if (box == nullptr) return;
    void* answer = decrementWithoutDelete(*box->real);
    --box->held;
    --box->references;
    if (box->countedElsewhere) {
      EXPECT_EQ(answer, reinterpret_cast<void*>(uint64_t{box->references == 0}));
    } else {
      EXPECT_EQ(answer, box->real);
    }
  }

  void disown() {
    Box* box = chooseWhere([](const Box& each) { return each.references == 0; });
    if (box == nullptr && random_.oneIn(4)) box = choose();
    if (box != nullptr) disown(*box);
  }
  void disown(Box& box) {
    deleteUnowned(*box.real);
    ++events_.addRefs;
    box.hooked = false;
    ++box.references;
    drop(box);
  }

  void growInterfaces() {
    Box* box = choose();
    if (box == nullptr) return;
    const std::string added = oneOf(kInterfaces);
    if (raised([&] { addInterface(*box->real, name(added)); })) return;
    const auto& there = box->interfaces;
    if (std::find(there.begin(), there.end(), added) != there.end()) return;
    box->signature += there.empty() ? added : "." + added;
    box->interfaces.insert(there.begin(), added);
  }

  void growInstances() {
    Box* box = choose();
    if (box == nullptr || box->instances.size() >= kMostParts) return;
    const Part part = newPart(oneOf(kInstances));
    if (raised([&] { addInstance(*box->real, part.data, name(part.name), destroyOf(part)); })) {
      return;
    }
    box->instances.insert(box->instances.begin(), part);
    cacheFirst(*box, part);
  }

  void changeRegistry() {
    const std::string interfaceName = oneOf(kInterfaces);
    if (random_.oneIn(3)) {
      registry::removeInterface(interfaceName.c_str());
      std::erase_if(procs_, [&](const auto& each) { return each.first.first == interfaceName; });
      return;
    }
    const std::string method = oneOf(kMethods);
    const auto proc = reinterpret_cast<ZEBProc>(16 * (1 + random_.below(1000)));
    const bool added = registry::add(interfaceName.c_str(), method.c_str(), kProc, proc);
    EXPECT_EQ(added, procs_.try_emplace({interfaceName, method}, proc).second);
  }

  // The model's method look-up, among the interfaces from one on.
  ZEBProc methodFrom(const Box& box, size_t from, const std::string& method) const {
    for (size_t i = from; i < box.interfaces.size(); ++i) {
      const auto found = procs_.find({box.interfaces[i], method});
      if (found != procs_.end()) return found->second;
    }
    return nullptr;
  }

  void lookUp() {
    const Box* box = choose();
    if (box == nullptr) return;
    const char* method = oneOf(kMethods);
    const char* from = oneOf(kInterfaces);
    const auto& there = box->interfaces;
    const auto at =
        static_cast<size_t>(std::find(there.begin(), there.end(), from) - there.begin());
    EXPECT_EQ(findMethod(*box->real, name(method), name(kProc)), methodFrom(*box, 0, method));
    EXPECT_EQ(findMethod(*box->real, name(kProc), name(method)), nullptr);
    EXPECT_EQ(findParentMethod(*box->real, name(from), name(method), name(kProc)),
              methodFrom(*box, at + 1, method));
    const char* instanceName = oneOf(kInstances);
    const Instance* found = findInstance(*box->real, name(instanceName));
    ++events_.lookups;
    const auto part = std::find_if(box->instances.begin(), box->instances.end(),
                                   [&](const Part& each) { return each.name == instanceName; });
    ASSERT_EQ(found != nullptr, part != box->instances.end());
    if (found != nullptr) {
      EXPECT_EQ(found->data, part->data);
    }
  }

  void checkBox(const Box& box) const {
    const ZEBContainer& real = *box.real;
    ASSERT_EQ(real.interfaces.count(), box.interfaces.size());
    ASSERT_EQ(real.instances.count(), box.instances.size());
    EXPECT_EQ(real.cache.interfaceName, box.signature);
    EXPECT_EQ(real.cache.instanceData, box.cachedData);
    EXPECT_EQ(real.cache.instanceName, box.cachedName ? name(*box.cachedName)->text() : nullptr);
    if (box.countedElsewhere) {
      EXPECT_EQ(*box.countedElsewhere, box.references);
    } else {
      EXPECT_EQ(real.references.load(), box.references);
    }
  }

  static inline Play* current = nullptr;

  Random& random_;
  std::map<std::string, atoms::Ref> names_;
  std::deque<Datum> data_;
  std::list<Box> boxes_;
  std::vector<ZEBContainer*> recycled_;
  std::map<std::pair<std::string, std::string>, ZEBProc> procs_;
  Events events_;
  int hookCalls_ = 0;
  int expectedHookCalls_ = 0;
};

TEST(ContainerModelTest, BehavesAsTheModelDoes) {
  zeb_test::forEachSeed([](Random& random) {
    emptyRecycled();
    StartedLibrary library;
    {
      Play play(random);
      for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
        play.step();
        if (i % 8 == 0) play.check();
      }
      if (testing::Test::HasFailure()) return;
      play.end();
    }
    library.stop();
    EXPECT_EQ(CountingHost::liveBlocks, 0);
    EXPECT_TRUE(CountingHost::reports.empty());
  });
}

}  // namespace
}  // namespace zeb::container
