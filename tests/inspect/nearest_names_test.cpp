#include "inspect/nearest_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "inspect/sentence.h"

namespace zeb::inspect {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> nearest(const char* wanted, const std::vector<const char*>& offered) {
  NearestNames names(wanted);
  for (const char* name : offered) names.offer(name);
  return {names.names().begin(), names.names().end()};
}

TEST(NearestNamesTest, PutsTheNearestFirst) {
  EXPECT_THAT(nearest("abcdef", {"abcdxx", "abcdex", "abcdeff"}),
              ElementsAre("abcdex", "abcdeff", "abcdxx"));
}

TEST(NearestNamesTest, KeepsTheOrderOfWhatIsEquallyNear) {
  EXPECT_THAT(nearest("abcdef", {"abcdea", "abcdeb", "abcdec"}),
              ElementsAre("abcdea", "abcdeb", "abcdec"));
}

TEST(NearestNamesTest, KeepsTheFiveNearest) {
  EXPECT_THAT(nearest("abcdef", {"abcd12", "abcd13", "abcd14", "abcd15", "abcd16", "abcd17"}),
              ElementsAre("abcd12", "abcd13", "abcd14", "abcd15", "abcd16"));
  EXPECT_THAT(nearest("abcdef", {"abcd12", "abcd13", "abcd14", "abcd15", "abcd16", "abcde7"}),
              ElementsAre("abcde7", "abcd12", "abcd13", "abcd14", "abcd15"));
}

TEST(NearestNamesTest, LeavesOutWhatDiffersInMoreThanAThird) {
  EXPECT_THAT(nearest("abc", {"abx", "axx"}), ElementsAre("abx"));
  EXPECT_THAT(nearest("ab", {"ax", "abc"}), ElementsAre("abc"));
  EXPECT_THAT(nearest("", {"a"}), IsEmpty());
}

TEST(NearestNamesTest, FindsNothingNearToNull) {
  EXPECT_THAT(nearest(nullptr, {"a", "", nullptr}), IsEmpty());
  EXPECT_THAT(nearest("a", {nullptr}), IsEmpty());
}

std::string written(void (*write)(Sentence&)) {
  Sentence measured(nullptr);
  write(measured);
  std::string text(measured.length() + 1, '#');
  Sentence sentence(text.data());
  write(sentence);
  EXPECT_EQ(sentence.length(), measured.length());
  EXPECT_EQ(text.back(), '#');
  text.pop_back();
  return text;
}

TEST(SentenceTest, WritesAsMuchAsItMeasured) {
  EXPECT_EQ(written([](Sentence&) {}), "");
  EXPECT_EQ(written([](Sentence& it) { it.add("text ").addName("name").addName(nullptr); }),
            "text \"name\"(null)");
  EXPECT_EQ(written([](Sentence& it) { it.addNumber(0).add(" ").addNumber(~uint64_t{0}); }),
            "0 18446744073709551615");
  EXPECT_EQ(written([](Sentence& it) {
              static constexpr const char* kNames[] = {"a", nullptr, ""};
              it.addNames(kNames);
            }),
            "\"a\", (null), \"\"");
}

}  // namespace
}  // namespace zeb::inspect
