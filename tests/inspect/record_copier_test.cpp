// Copying what changes between the walks: each walk sees the state that the test has scripted.

#include "inspect/record_copier.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/counting_memory.h"

namespace zeb::inspect {
namespace {

struct Record {
  const char* text;
};

using State = std::vector<std::string>;

// Walks the states one after the other; the last one stays.
class Script {
 public:
  Script(std::initializer_list<State> states) : states_(states) {}

  void operator()(RecordCopier<Record>& copier) {
    for (const std::string& text : states_[std::min(walks_++, states_.size() - 1)]) {
      if (Record* record = copier.add(text.size() + 1)) {
        record->text = copier.copy(text.c_str(), text.size());
      }
    }
  }

  size_t walks() const { return walks_; }

 private:
  std::vector<State> states_;
  size_t walks_ = 0;
};

State copied(Script& script) {
  const auto records = copyRecords<Record>([&](RecordCopier<Record>& copier) { script(copier); });
  State texts;
  for (const Record& record : records.all()) texts.emplace_back(record.text);
  return texts;
}

class RecordCopierTest : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(host_.live(), 0u); }
  zeb_test::CountingHost host_;
};

TEST_F(RecordCopierTest, CopiesWhatItMeasured) {
  Script script{State{"one", "", "three"}};
  EXPECT_EQ(copied(script), (State{"one", "", "three"}));
  EXPECT_EQ(script.walks(), 2u);
}

TEST_F(RecordCopierTest, CopiesNothingOfNothing) {
  Script script{State{}};
  EXPECT_EQ(copied(script), State{});
}

TEST_F(RecordCopierTest, TakesWhatHasShrunk) {
  Script script{State{"one", "two", "three"}, State{"two"}};
  EXPECT_EQ(copied(script), State{"two"});
  EXPECT_EQ(script.walks(), 2u);
}

TEST_F(RecordCopierTest, MeasuresAgainWhatHasGrown) {
  Script script{State{"one"}, State{"one", "two"}, State{"one", "two", "three"}};
  EXPECT_EQ(copied(script), (State{"one", "two", "three"}));
  EXPECT_EQ(script.walks(), 4u);
}

// The same number of records, but no room for their texts.
TEST_F(RecordCopierTest, MeasuresAgainWhenTextsHaveGrown) {
  Script script{State{"a", "b"}, State{"a longer one", "b"}};
  EXPECT_EQ(copied(script), (State{"a longer one", "b"}));
  EXPECT_EQ(script.walks(), 3u);
}

TEST_F(RecordCopierTest, LeavesNothingBehindWhenMemoryFails) {
  for (uint64_t granted = 0; granted < 2; ++granted) {
    Script script{State{"one"}, State{"one", "two"}};
    host_.grant(granted);
    EXPECT_ANY_THROW((void)copied(script));
    EXPECT_EQ(host_.live(), 0u);
  }
}

TEST_F(RecordCopierTest, KeepsNullTextsNull) {
  RecordCopier<Record> copier;
  EXPECT_EQ(copier.copy(nullptr, 0), nullptr);
}

}  // namespace
}  // namespace zeb::inspect
