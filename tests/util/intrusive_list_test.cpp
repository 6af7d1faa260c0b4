#include "util/intrusive_list.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <vector>

#include "support/random.h"

namespace {

struct NoParent {};

struct Element : zeb::double_linked_list_element<Element, NoParent> {};

using List = zeb::double_linked_list<Element>;
using Elements = std::vector<const Element*>;

// The elements from the newest to the oldest; the links back are checked on the way.
Elements elementsOf(const List& list) {
  Elements elements;
  const Element* newer = nullptr;
  for (const Element* at = list.head(); at != nullptr; at = at->older()) {
    EXPECT_EQ(at->newer(), newer);
    elements.push_back(at);
    newer = at;
  }
  EXPECT_EQ(list.count(), elements.size());
  return elements;
}

TEST(IntrusiveList, IsEmptyAtFirst) {
  const List list;
  EXPECT_EQ(list.head(), nullptr);
  EXPECT_EQ(list.count(), 0u);
}

TEST(IntrusiveList, PutsNewElementsAtTheHead) {
  List list;
  Element a, b, c;
  for (Element* element : {&a, &b, &c}) list.pushHead(element);
  EXPECT_EQ(elementsOf(list), (Elements{&c, &b, &a}));
}

TEST(IntrusiveList, RemovesFromHeadMiddleAndTail) {
  List list;
  Element a, b, c, d, e;
  for (Element* element : {&a, &b, &c, &d, &e}) list.pushHead(element);
  list.remove(&c);
  EXPECT_EQ(elementsOf(list), (Elements{&e, &d, &b, &a}));
  list.remove(&e);
  EXPECT_EQ(elementsOf(list), (Elements{&d, &b, &a}));
  list.remove(&a);
  EXPECT_EQ(elementsOf(list), (Elements{&d, &b}));
}

TEST(IntrusiveList, IsEmptyAfterItsOnlyElementLeft) {
  List list;
  Element only;
  list.pushHead(&only);
  list.remove(&only);
  EXPECT_EQ(elementsOf(list), Elements{});
  EXPECT_EQ(only.older(), nullptr);
  EXPECT_EQ(only.newer(), nullptr);
}

TEST(IntrusiveList, LosesAnElementThatIsDestroyed) {
  List list;
  Element a, c;
  auto b = std::make_unique<Element>();
  list.pushHead(&a);
  list.pushHead(b.get());
  list.pushHead(&c);
  b.reset();
  EXPECT_EQ(elementsOf(list), (Elements{&c, &a}));
}

TEST(IntrusiveList, IsNotTouchedByTheEndOfAnElementThatLeftBefore) {
  List list;
  Element a;
  auto b = std::make_unique<Element>();
  list.pushHead(&a);
  list.pushHead(b.get());
  list.remove(b.get());
  b.reset();
  EXPECT_EQ(elementsOf(list), Elements{&a});
}

TEST(IntrusiveList, TakesAnElementThatLeftAnotherList) {
  List first, second;
  Element a;
  Element b;
  first.pushHead(&a);
  second.pushHead(&b);
  first.remove(&a);
  second.pushHead(&a);
  EXPECT_EQ(elementsOf(first), Elements{});
  EXPECT_EQ(elementsOf(second), (Elements{&a, &b}));
}

TEST(IntrusiveList, AgreesWithAStandardListThroughRandomChanges) {
  zeb_test::forEachSeed([](zeb_test::Random& random) {
    List list;
    std::list<std::unique_ptr<Element>> model;
    for (int step = 0; step < 3000; ++step) {
      if (model.empty() || random.below(100) < 52) {
        model.push_front(std::make_unique<Element>());
        list.pushHead(model.front().get());
      } else {
        auto victim = model.begin();
        std::advance(victim, random.below(model.size()));
        if (random.oneIn(2)) list.remove(victim->get());
        model.erase(victim);
      }
      Elements expected;
      for (const auto& element : model) expected.push_back(element.get());
      ASSERT_EQ(elementsOf(list), expected);
    }
  });
}

}  // namespace
