#include "util/concurrent_table.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "base/read_section.h"
#include "support/random.h"
#include "support/threads.h"

namespace {

struct Node {
  uint64_t hash;
  uint64_t key;
  Node* nextRetired = nullptr;
};

using Table = zeb::ConcurrentTable<Node>;
using Array = Table::Array;

Array* newArray(uint64_t capacity) {
  return Array::construct(std::malloc(Array::bytesFor(capacity)), capacity);
}

Node* findKey(const Table& table, uint64_t hash, uint64_t key) {
  return table.find(hash, [key](const Node& node) { return node.key == key; });
}

// A table that owns its array and grows as its users do.
class OwnedTable {
 public:
  explicit OwnedTable(uint64_t capacity) { std::free(table.adopt(newArray(capacity))); }
  ~OwnedTable() { std::free(table.release()); }
  OwnedTable(const OwnedTable&) = delete;
  OwnedTable& operator=(const OwnedTable&) = delete;

  void insert(Node* node) {
    if (!table.hasRoom()) std::free(table.adopt(newArray(table.capacity() * 2)));
    table.insert(node);
  }

  Table table;
};

std::set<Node*> visited(Table& table) {
  std::set<Node*> nodes;
  table.forEach([&](Node* node) {
    EXPECT_TRUE(nodes.insert(node).second) << "visited twice";
    return false;
  });
  return nodes;
}

// Hashes that meet: equal ones, neighbours, the last slots of an array and, with all bits set, a
// position that wraps around in 64 bits.
constexpr uint64_t kMeetingHashes[] = {0,
                                       1,
                                       2,
                                       7,
                                       8,
                                       14,
                                       15,
                                       16,
                                       31,
                                       62,
                                       63,
                                       64,
                                       127,
                                       255,
                                       UINT64_MAX,
                                       UINT64_MAX - 1,
                                       uint64_t{1} << 63};

TEST(ConcurrentTable, IsAbsentUntilItHasAnArray) {
  Table table;
  EXPECT_FALSE(table.exists());
  EXPECT_FALSE(table.hasRoom());
  EXPECT_EQ(table.capacity(), 0u);
  EXPECT_EQ(table.count(), 0u);
  EXPECT_EQ(findKey(table, 1, 1), nullptr);
  Node node{.hash = 1, .key = 1};
  EXPECT_FALSE(table.remove(&node));
  table.forEach([](Node*) -> bool { throw "there is nothing to visit"; });
  EXPECT_EQ(table.release(), nullptr);
}

TEST(ConcurrentTable, GrowsFromNothing) {
  Table table;
  Array* const first = newArray(8);
  EXPECT_EQ(table.adopt(first), nullptr);
  EXPECT_TRUE(table.exists());
  EXPECT_EQ(table.capacity(), 8u);
  std::free(table.release());
}

// How many nodes a table of this capacity takes before it wants to grow.
uint64_t roomOf(uint64_t capacity) {
  OwnedTable owned(capacity);
  std::vector<Node> nodes(capacity, Node{0, 0});
  uint64_t taken = 0;
  for (; owned.table.hasRoom(); ++taken) {
    nodes[taken].hash = taken;
    owned.table.insert(&nodes[taken]);
  }
  EXPECT_EQ(owned.table.count(), taken);
  return taken;
}

TEST(ConcurrentTable, HasRoomForAQuarterOfASmallAndHalfOfALargeCapacity) {
  EXPECT_EQ(roomOf(8), 2u);
  EXPECT_EQ(roomOf(Table::kLargestSparse), Table::kLargestSparse / 4);
  EXPECT_EQ(roomOf(Table::kLargestSparse * 2), Table::kLargestSparse);
}

TEST(ConcurrentTable, TellsNodesOfEqualHashApart) {
  OwnedTable owned(8);
  Node nodes[]{{5, 1}, {5, 2}, {5, 3}};
  for (Node& node : nodes) owned.insert(&node);
  for (Node& node : nodes) EXPECT_EQ(findKey(owned.table, 5, node.key), &node);
  EXPECT_EQ(findKey(owned.table, 5, 4), nullptr);
}

TEST(ConcurrentTable, AsksOnlyAboutNodesOfTheWantedHash) {
  OwnedTable owned(8);
  Node nodes[]{{5, 1}, {13, 2}, {5, 3}};  // 13 has 5's place in an array of 8
  for (Node& node : nodes) owned.insert(&node);
  std::vector<uint64_t> asked;
  const Node* found = owned.table.find(5, [&](const Node& node) {
    asked.push_back(node.key);
    return false;
  });
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(asked, (std::vector<uint64_t>{1, 3}));
}

TEST(ConcurrentTable, WrapsAroundItsEnd) {
  OwnedTable owned(8);
  Node nodes[]{{7, 1}, {UINT64_MAX, 2}, {7, 3}, {0, 4}};
  for (Node& node : nodes) owned.insert(&node);
  for (Node& node : nodes) EXPECT_EQ(findKey(owned.table, node.hash, node.key), &node);
}

TEST(ConcurrentTable, RefusesToRemoveAStranger) {
  OwnedTable owned(8);
  Node resident{.hash = 5, .key = 1};
  Node stranger{.hash = 5, .key = 1};
  owned.insert(&resident);
  EXPECT_FALSE(owned.table.remove(&stranger));
  EXPECT_EQ(owned.table.count(), 1u);
  EXPECT_TRUE(owned.table.remove(&resident));
  EXPECT_FALSE(owned.table.remove(&resident));
  EXPECT_EQ(owned.table.count(), 0u);
}

TEST(ConcurrentTable, KeepsItsNodesWhenItGrows) {
  OwnedTable owned(2);
  std::vector<std::unique_ptr<Node>> nodes;
  for (uint64_t key = 0; key < 300; ++key) {
    const uint64_t hash = kMeetingHashes[key % std::size(kMeetingHashes)];
    nodes.push_back(std::make_unique<Node>(Node{.hash = hash, .key = key}));
    owned.insert(nodes.back().get());
  }
  EXPECT_EQ(owned.table.capacity(), 2048u);
  EXPECT_EQ(owned.table.count(), 300u);
  for (const auto& node : nodes) EXPECT_EQ(findKey(owned.table, node->hash, node->key), node.get());
}

TEST(ConcurrentTable, IsEmptyAfterItsRelease) {
  Node nodes[]{{1, 1}, {2, 2}};
  OwnedTable owned(4);
  for (Node& node : nodes) owned.table.insert(&node);
  std::free(owned.table.release());
  EXPECT_EQ(owned.table.count(), 0u);
  EXPECT_EQ(findKey(owned.table, 1, 1), nullptr);
  owned.table.adopt(newArray(4));
  EXPECT_EQ(findKey(owned.table, 1, 1), nullptr);
  EXPECT_TRUE(owned.table.hasRoom());
}

TEST(ConcurrentTable, HandsOutTheOldArrayWhenItGrows) {
  Table table;
  Array* const first = newArray(2);
  Array* const second = newArray(4);
  table.adopt(first);
  EXPECT_EQ(table.adopt(second), first);
  EXPECT_EQ(table.release(), second);
  EXPECT_FALSE(table.exists());
  EXPECT_EQ(table.count(), 0u);
  std::free(first);
  std::free(second);
}

// Every run of up to four nodes in an array of eight, each of them removed from it in turn.
TEST(ConcurrentTable, FindsEveryOtherNodeAfterAnyRemoval) {
  constexpr uint64_t kCapacity = 8;
  for (uint64_t hashes = 0; hashes < 8 * 8 * 8 * 8; ++hashes) {
    for (size_t victim = 0; victim < 4; ++victim) {
      OwnedTable owned(kCapacity);
      Node nodes[4];
      for (size_t i = 0; i < 4; ++i) {
        nodes[i] = {.hash = hashes >> (3 * i) & 7, .key = i};
        owned.table.insert(&nodes[i]);
      }
      ASSERT_TRUE(owned.table.remove(&nodes[victim]));
      for (const Node& node : nodes) {
        const Node* expected = node.key == victim ? nullptr : &node;
        ASSERT_EQ(findKey(owned.table, node.hash, node.key), expected)
            << "hashes " << std::oct << hashes << ", victim " << victim << ", node " << node.key;
      }
      ASSERT_EQ(visited(owned.table).size(), 3u);
    }
  }
}

TEST(ConcurrentTable, AgreesWithASetThroughRandomChanges) {
  zeb_test::forEachSeed([](zeb_test::Random& random) {
    OwnedTable owned(2);
    std::vector<std::unique_ptr<Node>> model;
    uint64_t nextKey = 0;
    for (int step = 0; step < 2000; ++step) {
      if (model.empty() || random.below(100) < 52) {
        const uint64_t hash = kMeetingHashes[random.below(std::size(kMeetingHashes))];
        model.push_back(std::make_unique<Node>(Node{.hash = hash, .key = nextKey++}));
        owned.insert(model.back().get());
      } else {
        std::swap(model[random.below(model.size())], model.back());
        ASSERT_TRUE(owned.table.remove(model.back().get()));
        const Node& gone = *model.back();
        ASSERT_EQ(findKey(owned.table, gone.hash, gone.key), nullptr);
        model.pop_back();
      }
      ASSERT_EQ(owned.table.count(), model.size());
      for (const auto& node : model) {
        ASSERT_EQ(findKey(owned.table, node->hash, node->key), node.get());
      }
    }
  });
}

TEST(ConcurrentTable, VisitsEachNodeOnce) {
  OwnedTable owned(2);
  std::vector<Node> nodes;
  for (uint64_t key = 0; key < 100; ++key) nodes.push_back({.hash = key * key, .key = key});
  for (Node& node : nodes) owned.insert(&node);
  EXPECT_EQ(visited(owned.table).size(), nodes.size());
}

// The removed nodes' places are taken by nodes that have not been visited yet; every subset of a
// crowded array, its wrapped-around run included, must go completely.
TEST(ConcurrentTable, RemovesAnySubsetWhileItIsVisited) {
  constexpr size_t kNodes = 8;
  const uint64_t homes[kNodes] = {15, 15, 15, 14, 0, 0, 13, 5};
  for (unsigned subset = 0; subset < 1u << kNodes; ++subset) {
    OwnedTable owned(16);
    Node nodes[kNodes];
    for (size_t i = 0; i < kNodes; ++i) {
      nodes[i] = {.hash = homes[i], .key = i};
      owned.table.insert(&nodes[i]);
    }
    const auto chosen = [&](const Node& node) { return (subset >> node.key & 1) != 0; };
    owned.table.forEach([&](Node* node) { return chosen(*node) && owned.table.remove(node); });
    for (Node& node : nodes) {
      ASSERT_EQ(findKey(owned.table, node.hash, node.key), chosen(node) ? nullptr : &node)
          << "subset " << subset << ", node " << node.key;
    }
  }
}

// The second node has wrapped around to the first slot and is visited there; the removal of the
// first brings it home to the last slot, which is looked at again.
TEST(ConcurrentTable, VisitsANodeAgainThatARemovalBringsHome) {
  OwnedTable owned(16);
  Node nodes[]{{.hash = 15, .key = 1}, {.hash = 15, .key = 2}};
  for (Node& node : nodes) owned.table.insert(&node);
  std::vector<uint64_t> keys;
  owned.table.forEach([&](Node* node) {
    keys.push_back(node->key);
    return node->key == 1 && owned.table.remove(node);
  });
  EXPECT_EQ(keys, (std::vector<uint64_t>{2, 1, 2}));
}

// --- Readers beside a writer ---

constexpr uint64_t kPoison = 0xDEADDEADDEADDEAD;

// A writer that inserts, removes and grows as the library's tables do: what it takes out is freed
// when no reader can see it any more.
class WrittenTable {
 public:
  WrittenTable() { table_.adopt(newArray(8)); }
  ~WrittenTable() {
    table_.forEach([this](Node* node) {
      remove(node);
      return true;
    });
    retiredArrays_.add(table_.release());
    free(retiredNodes_.takeAll());
    free(retiredArrays_.takeAll());
  }
  WrittenTable(const WrittenTable&) = delete;
  WrittenTable& operator=(const WrittenTable&) = delete;

  Node* insert(uint64_t key) {
    if (!table_.hasRoom()) retiredArrays_.add(table_.adopt(newArray(table_.capacity() * 2)));
    auto* node = new Node{.hash = hashOf(key), .key = key};
    table_.insert(node);
    collect();
    return node;
  }

  void remove(Node* node) {
    EXPECT_TRUE(table_.remove(node));
    retiredNodes_.add(node);
    collect();
  }

  // For readers. The key of the node that is found, or the poison of a freed one.
  [[nodiscard]] std::optional<uint64_t> find(uint64_t key) const {
    const zeb::ReadSection section;
    EXPECT_TRUE(section.entered());
    const Node* node = findKey(table_, hashOf(key), key);
    return node != nullptr ? std::optional(node->key) : std::nullopt;
  }

  [[nodiscard]] uint64_t freedNodes() const { return freedNodes_; }
  [[nodiscard]] uint64_t capacity() const { return table_.capacity(); }

 private:
  static uint64_t hashOf(uint64_t key) { return key / 4 * 3; }  // runs that meet

  void collect() {
    free(retiredNodes_.takeUnseen());
    free(retiredArrays_.takeUnseen());
  }
  void free(Node* chain) {
    zeb::disposeRetired(chain, [this](Node* node) {
      node->key = node->hash = kPoison;
      delete node;
      ++freedNodes_;
    });
  }
  static void free(Array* chain) {
    zeb::disposeRetired(chain, [](Array* array) { std::free(array); });
  }

  Table table_;
  zeb::RetireList<Node> retiredNodes_;
  zeb::RetireList<Array> retiredArrays_;
  uint64_t freedNodes_ = 0;
};

TEST(ConcurrentTable, NeverShowsReadersAFreedNode) {
  constexpr unsigned kReaders = 3;
  constexpr uint64_t kKeys = 512;
  constexpr uint64_t kFreed = 1000;
  WrittenTable table;
  std::vector<Node*> present(kKeys, nullptr);
  std::atomic<bool> writing{true};
  std::atomic<uint64_t> found{0};

  const auto write = [&] {
    zeb_test::Random random(4);
    // A reader that lost its processor inside a section holds everything back until it has it
    // again: go on until enough was freed beside readers, and until they have found something.
    for (int step = 0; step < 20000 || table.freedNodes() < kFreed || found == 0; ++step) {
      Node*& node = present[random.below(kKeys)];
      const auto key = static_cast<uint64_t>(&node - present.data());
      if (node == nullptr) {
        node = table.insert(key);
      } else {
        table.remove(node);
        node = nullptr;
      }
    }
    writing = false;
  };
  const auto read = [&](unsigned reader) {
    zeb_test::Random random(100 + reader);
    for (uint64_t round = 0; round < 2000 || writing; ++round) {
      const uint64_t key = random.below(2 * kKeys);
      const auto answer = table.find(key);
      if (!answer) continue;
      ASSERT_EQ(*answer, key);
      ASSERT_LT(key, kKeys) << "was never inserted";
      ++found;
    }
  };
  zeb_test::runTogether(kReaders + 1, [&](unsigned index) { index == 0 ? write() : read(index); });

  EXPECT_GT(found, 0u);
  EXPECT_GE(table.capacity(), 512u);
  for (uint64_t key = 0; key < kKeys; ++key) {
    EXPECT_EQ(table.find(key).has_value(), present[key] != nullptr);
  }
}

// Nothing moves while the table only grows, so then even a reader without the lock finds whatever
// was there before it looked.
TEST(ConcurrentTable, ShowsReadersEveryOlderNodeWhileItOnlyGrows) {
  constexpr uint64_t kKeys = 5000;
  WrittenTable table;
  std::atomic<uint64_t> inserted{0};
  zeb_test::runTogether(4, [&](unsigned index) {
    if (index == 0) {
      for (uint64_t key = 0; key < kKeys; ++key) {
        table.insert(key);
        inserted.store(key + 1, std::memory_order_release);
      }
      return;
    }
    zeb_test::Random random(index);
    for (uint64_t there = 0; there < kKeys;) {
      there = inserted.load(std::memory_order_acquire);
      if (there == 0) continue;
      ASSERT_TRUE(table.find(random.below(there)).has_value());
    }
  });
}

}  // namespace
