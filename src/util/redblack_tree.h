// A red-black tree whose links live in its nodes.
//
// Invariants: the root is black; a red node has no red child; every path from a node down to a
// missing child passes the same number of black nodes. The tree owns nothing, allocates nothing and
// locks nothing. Node types derive from redblack_node<Node>; `Order` gives a node's key and is
// asked once per level. A tree whose order is not known at compile time has none, is searched from
// the root by whoever knows the order, and grows by link().
#ifndef ZEB_UTIL_REDBLACK_TREE_H
#define ZEB_UTIL_REDBLACK_TREE_H

#include <cstdint>
#include <utility>

namespace zeb {

enum class NodeColour : uint32_t { red = 0, black = 1 };

template <class Node>
struct redblack_node {
  Node* left;
  Node* right;
  Node* parent;
  NodeColour colour;
};

template <class Node, class Order = void>
class redblack_tree {
 public:
  constexpr redblack_tree() noexcept = default;

  [[nodiscard]] Node* root() const noexcept { return root_; }
  [[nodiscard]] bool empty() const noexcept { return root_ == nullptr; }
  void clear() noexcept { root_ = nullptr; }

  // The node with the smallest key that is not below `key`, or null. An equal key ends the walk.
  template <class Key>
  [[nodiscard]] Node* findAtLeast(const Key& key) const noexcept {
    Node* candidate = nullptr;
    for (Node* node = root_; node != nullptr;) {
      const auto& here = Order::key(*node);
      if (here == key) return node;
      if (key < here) candidate = node;
      node = key < here ? node->left : node->right;
    }
    return candidate;
  }

  // Links the node in. If a node with the same key is there already, nothing changes and that node
  // is returned; else null.
  Node* insert(Node* node) noexcept {
    Node* parent = nullptr;
    Node** link = &root_;
    while (*link != nullptr) {
      parent = *link;
      const auto& here = Order::key(*parent);
      if (here == Order::key(*node)) return parent;
      link = Order::key(*node) < here ? &parent->left : &parent->right;
    }
    put(node, parent, *link);
    return nullptr;
  }

  // Links the node in as the left or right child of `parent`, which has none there, or as the root
  // of an empty tree.
  void link(Node* node, Node* parent, bool left) noexcept {
    put(node, parent, parent == nullptr ? root_ : left ? parent->left : parent->right);
  }

  // The node that stands first in order, null in an empty tree.
  [[nodiscard]] Node* first() const noexcept { return leftmost(root_); }

  // The node that follows in order, or null.
  [[nodiscard]] static Node* next(Node* node) noexcept {
    if (node->right != nullptr) return leftmost(node->right);
    while (node->parent != nullptr && node == node->parent->right) node = node->parent;
    return node->parent;
  }

  // Lets `successor`, which is on no tree, take the node's place with its links and colour.
  void replace(Node* node, Node* successor) noexcept {
    successor->left = node->left;
    successor->right = node->right;
    successor->parent = node->parent;
    successor->colour = node->colour;
    linkTo(node) = successor;
    if (node->left != nullptr) node->left->parent = successor;
    if (node->right != nullptr) node->right->parent = successor;
  }

  void remove(Node* node) noexcept {
    if (node->left != nullptr && node->right != nullptr) swapWithNext(node);
    // Now the node has one child at the most.
    Node* child = node->left != nullptr ? node->left : node->right;
    Node* parent = node->parent;
    linkTo(node) = child;
    if (child != nullptr) child->parent = parent;
    if (node->colour == NodeColour::black) rebalanceAfterRemove(child, parent);
  }

 private:
  static Node* leftmost(Node* node) noexcept {
    while (node != nullptr && node->left != nullptr) node = node->left;
    return node;
  }

  void put(Node* node, Node* parent, Node*& place) noexcept {
    node->left = node->right = nullptr;
    node->parent = parent;
    node->colour = NodeColour::red;
    place = node;
    rebalanceAfterInsert(node);
  }

  static bool isBlack(const Node* node) noexcept {
    return node == nullptr || node->colour == NodeColour::black;
  }

  Node*& linkTo(Node* node) noexcept {
    if (node->parent == nullptr) return root_;
    return node->parent->left == node ? node->parent->left : node->parent->right;
  }

  // Turns the edge between a node and one of its children: the child comes up, the order stays.
  void rotate(Node* node, Node* Node::*up, Node* Node::*down) noexcept {
    Node* child = node->*up;
    Node* inner = child->*down;
    node->*up = inner;
    if (inner != nullptr) inner->parent = node;
    linkTo(node) = child;
    child->parent = node->parent;
    child->*down = node;
    node->parent = child;
  }

  // The next node in order has no left child. It and `node` change places, links and colours.
  void swapWithNext(Node* node) noexcept {
    Node* next = node->right;
    while (next->left != nullptr) next = next->left;
    Node* nextParent = next->parent;
    Node* nextRight = next->right;
    const NodeColour nextColour = next->colour;
    Node* parent = node->parent;
    replace(node, next);
    next->parent = parent;  // replace() spoils it when `next` is the node's own child
    if (nextParent == node) {
      next->right = node;
      node->parent = next;
    } else {
      nextParent->left = node;
      node->parent = nextParent;
    }
    node->left = nullptr;
    node->right = nextRight;
    if (nextRight != nullptr) nextRight->parent = node;
    node->colour = nextColour;
  }

  void rebalanceAfterInsert(Node* node) noexcept {
    while (!isBlack(node->parent)) {
      Node* parent = node->parent;
      Node* grand = parent->parent;
      const bool onLeft = parent == grand->left;
      const auto near = onLeft ? &Node::left : &Node::right;
      const auto far = onLeft ? &Node::right : &Node::left;
      Node* uncle = grand->*far;
      if (!isBlack(uncle)) {
        parent->colour = uncle->colour = NodeColour::black;
        grand->colour = NodeColour::red;
        node = grand;
        continue;
      }
      if (node == parent->*far) {
        rotate(parent, far, near);
        parent = node;
      }
      parent->colour = NodeColour::black;
      grand->colour = NodeColour::red;
      rotate(grand, near, far);
      break;
    }
    root_->colour = NodeColour::black;
  }

  // The paths through `node` (which may be missing) lack one black node.
  void rebalanceAfterRemove(Node* node, Node* parent) noexcept {
    while (parent != nullptr && isBlack(node)) {
      const bool onLeft = parent->left == node;
      const auto near = onLeft ? &Node::left : &Node::right;
      const auto far = onLeft ? &Node::right : &Node::left;
      Node* sibling = parent->*far;
      if (!isBlack(sibling)) {
        sibling->colour = NodeColour::black;
        parent->colour = NodeColour::red;
        rotate(parent, far, near);
        sibling = parent->*far;
      }
      // A side that lacks a black node has a sibling with one at least.
      // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): the invariants are beyond the analyser
      if (isBlack(sibling->*near) && isBlack(sibling->*far)) {
        sibling->colour = NodeColour::red;
        node = parent;
        parent = node->parent;
        continue;
      }
      if (isBlack(sibling->*far)) {
        (sibling->*near)->colour = NodeColour::black;
        sibling->colour = NodeColour::red;
        rotate(sibling, near, far);
        sibling = parent->*far;
      }
      sibling->colour = parent->colour;
      parent->colour = NodeColour::black;
      // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): as above
      (sibling->*far)->colour = NodeColour::black;
      rotate(parent, far, near);
      return;
    }
    if (node != nullptr) node->colour = NodeColour::black;
  }

  Node* root_ = nullptr;
};

}  // namespace zeb

#endif
