#include "registry/unregistered_names.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "support/threads.h"

namespace zeb::registry {
namespace {

class UnregisteredNamesTest : public testing::Test {
 protected:
  void remember(const std::string& name, uint32_t count) {
    names_.remember(TextKey(name.c_str()), count);
  }
  std::optional<uint32_t> find(const std::string& name) {
    return names_.find(TextKey(name.c_str()));
  }

  UnregisteredNames names_;
};

TEST_F(UnregisteredNamesTest, KnowsNothingAtFirst) {
  EXPECT_EQ(find("a name"), std::nullopt);
  EXPECT_EQ(find(""), std::nullopt);
  EXPECT_EQ(names_.find(TextKey(nullptr)), std::nullopt);
}

TEST_F(UnregisteredNamesTest, KnowsWhenANameWasUnregisteredLast) {
  remember("a name", 3);
  remember("another", 4);
  remember("a name", 5);
  EXPECT_EQ(find("a name"), 5u);
  EXPECT_EQ(find("another"), 4u);
}

TEST_F(UnregisteredNamesTest, TellsNullFromTheEmptyText) {
  names_.remember(TextKey(nullptr), 3);
  EXPECT_EQ(names_.find(TextKey(nullptr)), 3u);
  EXPECT_EQ(find(""), std::nullopt);
  remember("", 4);
  EXPECT_EQ(names_.find(TextKey(nullptr)), 3u);
  EXPECT_EQ(find(""), 4u);
}

TEST_F(UnregisteredNamesTest, ForgetsWhatWasUnregisteredLongestAgo) {
  const auto name = [](uint64_t i) { return "name " + std::to_string(i); };
  const uint64_t most = UnregisteredNames::kMost;
  for (uint64_t i = 0; i < most; ++i) remember(name(i), 1);
  remember(name(0), 2);  // now number 1 is the oldest
  remember("one more", 3);
  EXPECT_EQ(find(name(0)), 2u);
  EXPECT_EQ(find(name(1)), std::nullopt);
  for (uint64_t i = 2; i < most; ++i) EXPECT_EQ(find(name(i)), 1u) << i;
}

TEST_F(UnregisteredNamesTest, TellsNamesApartThatAreLongerThanARecord) {
  const std::string common(UnregisteredNames::kTextBytes, 'n');
  for (const std::string& name : {common, common + "1", common + "2", common + "12"}) {
    EXPECT_EQ(find(name), std::nullopt);
    remember(name, static_cast<uint32_t>(name.size()));
    EXPECT_EQ(find(name), name.size());
  }
}

TEST_F(UnregisteredNamesTest, ForgetsEverythingWhenTold) {
  remember("a name", 3);
  names_.forget();
  EXPECT_EQ(find("a name"), std::nullopt);
  remember("a name", 4);
  EXPECT_EQ(find("a name"), 4u);
}

TEST_F(UnregisteredNamesTest, AgreesWithAListOfTheLast) {
  std::vector<std::pair<std::string, uint32_t>> model;  // the oldest first
  for (uint32_t i = 1; i < 5000; ++i) {
    const std::string name = "name " + std::to_string((i * 7919u) % 90u);
    remember(name, i);
    std::erase_if(model, [&](const auto& it) { return it.first == name; });
    model.emplace_back(name, i);
    if (model.size() > UnregisteredNames::kMost) model.erase(model.begin());
    for (unsigned other = i % 3; other < 90; other += 3) {
      const std::string asked = "name " + std::to_string(other);
      const auto at = std::find_if(model.begin(), model.end(),
                                   [&](const auto& it) { return it.first == asked; });
      ASSERT_EQ(find(asked), at != model.end() ? std::optional(at->second) : std::nullopt);
    }
  }
}

TEST_F(UnregisteredNamesTest, ServesManyThreads) {
  zeb_test::runTogether(4, [&](unsigned thread) {
    const std::string name = "name " + std::to_string(thread);
    for (uint32_t i = 1; i <= 500; ++i) {
      remember(name, i);
      EXPECT_EQ(find(name), i);
    }
  });
}

}  // namespace
}  // namespace zeb::registry
