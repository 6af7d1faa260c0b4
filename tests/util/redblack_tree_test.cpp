#include "util/redblack_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "support/random.h"

namespace {

using zeb::NodeColour;

struct Node : zeb::redblack_node<Node> {
  explicit Node(int k) : zeb::redblack_node<Node>{}, key(k) {}
  int key;
};

struct ByKey {
  static int key(const Node& node) { return node.key; }
};

using Tree = zeb::redblack_tree<Node, ByKey>;

// Walks a tree and records what is wrong with it.
class Inspection {
 public:
  explicit Inspection(const Tree& tree) {
    const Node* root = tree.root();
    if (root == nullptr) return;
    expect(root->parent == nullptr, "the root has a parent", *root);
    expect(root->colour == NodeColour::black, "the root is red", *root);
    blackHeight(root);
    expect(std::is_sorted(keys.begin(), keys.end(), std::less_equal<>()), "out of order", *root);
  }

  std::vector<int> keys;  // in order
  std::string faults;

 private:
  void expect(bool holds, const char* fault, const Node& node) {
    if (!holds) faults += std::string(fault) + " at " + std::to_string(node.key) + "; ";
  }

  int blackHeight(const Node* node) {
    if (node == nullptr) return 1;
    expectLink(*node, node->left);
    const int left = blackHeight(node->left);
    keys.push_back(node->key);
    expectLink(*node, node->right);
    const int right = blackHeight(node->right);
    expect(left == right, "unequal black heights", *node);
    return left + (node->colour == NodeColour::black ? 1 : 0);
  }

  void expectLink(const Node& parent, const Node* child) {
    if (child == nullptr) return;
    expect(child->parent == &parent, "wrong parent link", *child);
    expect(parent.colour == NodeColour::black || child->colour == NodeColour::black,
           "a red node has a red child", parent);
  }
};

// A tree and a std::map side by side: whatever is done to one is done to the other, and after each
// step they must agree and the tree must be sound.
class TreeAndModel {
 public:
  void insert(int key) {
    auto node = std::make_unique<Node>(key);
    const auto at = model_.find(key);
    Node* const expected = at != model_.end() ? at->second.get() : nullptr;
    ASSERT_EQ(tree_.insert(node.get()), expected);
    if (expected == nullptr) model_.emplace(key, std::move(node));
    check();
  }

  void remove(int key) {
    const auto at = model_.find(key);
    tree_.remove(at->second.get());
    model_.erase(at);
    check();
  }

  // The successor starts with garbage for links: it must not matter.
  void replace(int key) {
    auto successor = std::make_unique<Node>(key);
    Node stranger(0);
    successor->left = successor->right = successor->parent = &stranger;
    tree_.replace(model_.at(key).get(), successor.get());
    model_.at(key) = std::move(successor);
    check();
  }

  void findAtLeast(int key) const {
    const auto expected = model_.lower_bound(key);
    ASSERT_EQ(tree_.findAtLeast(key), expected != model_.end() ? expected->second.get() : nullptr)
        << "looking for " << key;
  }

  [[nodiscard]] size_t size() const { return model_.size(); }
  [[nodiscard]] int keyAt(size_t index) const {
    return std::next(model_.begin(), static_cast<std::ptrdiff_t>(index))->first;
  }

 private:
  void check() const {
    const Inspection inspection(tree_);
    ASSERT_EQ(inspection.faults, "");
    ASSERT_EQ(inspection.keys.size(), model_.size());
    auto expected = model_.begin();
    for (const int key : inspection.keys) ASSERT_EQ(key, (expected++)->first);
    ASSERT_EQ(tree_.empty(), model_.empty());
  }

  Tree tree_;
  std::map<int, std::unique_ptr<Node>> model_;
};

std::vector<int> firstNumbers(int count) {
  std::vector<int> numbers(static_cast<size_t>(count));
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

TEST(RedBlackTree, AgreesWithAnOrderedMapThroughRandomChanges) {
  zeb_test::forEachSeed([](zeb_test::Random& random) {
    TreeAndModel pair;
    // The range of keys decides how large the tree grows and how often a key is there already.
    for (const int range : {8, 64, 500}) {
      for (int step = 0; step < 3000 && !testing::Test::HasFatalFailure(); ++step) {
        const uint64_t choice = random.below(10);
        const auto key = static_cast<int>(random.below(static_cast<uint64_t>(range)));
        if (choice < 4) {
          pair.insert(key);
        } else if (choice < 7 && pair.size() > 0) {
          pair.remove(pair.keyAt(random.below(pair.size())));
        } else if (choice < 8 && pair.size() > 0) {
          pair.replace(pair.keyAt(random.below(pair.size())));
        }
        pair.findAtLeast(key);
      }
    }
  });
}

TEST(RedBlackTree, StaysSoundForEveryOrderOfInsertionsAndRemovals) {
  std::vector<int> inserted = firstNumbers(5);
  do {
    std::vector<int> removed = firstNumbers(5);
    do {
      TreeAndModel pair;
      for (const int key : inserted) pair.insert(key);
      for (const int key : removed) pair.remove(key);
      if (HasFatalFailure()) return;
    } while (std::next_permutation(removed.begin(), removed.end()));
  } while (std::next_permutation(inserted.begin(), inserted.end()));
}

// Seven nodes are the fewest with a removal that rebalances two levels.
TEST(RedBlackTree, StaysSoundWhenAnyNodeOfAnySmallTreeIsRemoved) {
  std::vector<int> inserted = firstNumbers(7);
  do {
    for (int victim = 0; victim < 7; ++victim) {
      TreeAndModel pair;
      for (const int key : inserted) pair.insert(key);
      pair.remove(victim);
      if (HasFatalFailure()) return;
    }
  } while (std::next_permutation(inserted.begin(), inserted.end()));
}

TEST(RedBlackTree, StaysSoundWhenKeysComeInOrderAndGoInOrder) {
  for (const bool rising : {true, false}) {
    for (const bool lowestFirst : {true, false}) {
      TreeAndModel pair;
      for (int i = 0; i < 200; ++i) pair.insert(rising ? i : 199 - i);
      while (pair.size() > 0) pair.remove(pair.keyAt(lowestFirst ? 0 : pair.size() - 1));
    }
  }
}

TEST(RedBlackTree, StaysShallowWhenKeysComeInOrder) {
  constexpr int kCount = 1023;
  Tree tree;
  std::vector<Node> nodes;
  nodes.reserve(kCount);
  for (int key = 0; key < kCount; ++key) tree.insert(&nodes.emplace_back(key));
  int deepest = 0;
  for (const Node& node : nodes) {
    int depth = 0;
    for (const Node* at = &node; at != nullptr; at = at->parent) ++depth;
    deepest = std::max(deepest, depth);
  }
  EXPECT_LE(deepest, 20);  // twice the logarithm of the number of nodes
}

TEST(RedBlackTree, RefusesASecondNodeWithTheSameKey) {
  Tree tree;
  Node first(7);
  Node second(7);
  EXPECT_EQ(tree.insert(&first), nullptr);
  EXPECT_EQ(tree.insert(&second), &first);
  EXPECT_EQ(tree.root(), &first);
  EXPECT_EQ(first.left, nullptr);
  EXPECT_EQ(first.right, nullptr);
}

TEST(RedBlackTree, FindsNothingInAnEmptyTree) {
  Tree tree;
  EXPECT_TRUE(tree.empty());
  EXPECT_EQ(tree.findAtLeast(0), nullptr);
}

TEST(RedBlackTree, FindsNothingAboveItsLargestKey) {
  Tree tree;
  Node only(7);
  tree.insert(&only);
  EXPECT_EQ(tree.findAtLeast(-1), &only);
  EXPECT_EQ(tree.findAtLeast(7), &only);
  EXPECT_EQ(tree.findAtLeast(8), nullptr);
}

TEST(RedBlackTree, ForgetsItsNodesWhenCleared) {
  Tree tree;
  Node node(7);
  tree.insert(&node);
  tree.clear();
  EXPECT_TRUE(tree.empty());
  EXPECT_EQ(tree.findAtLeast(7), nullptr);
}

// The heap stores the colour as a number that others may read.
static_assert(static_cast<uint32_t>(NodeColour::red) == 0);
static_assert(static_cast<uint32_t>(NodeColour::black) == 1);

}  // namespace
