// Random chains against a model: a model member is a number, its count and its target, and every
// proc is the few lines that its contract says. After each step the diaries of all clients, the
// targets and the number of blocks must agree.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "contract/filter_library.h"
#include "support/random.h"

namespace contract {
namespace {

using zeb_test::Random;

enum class Kind { kNull, kClientSink, kIdentity, kClientFilter, kJPEG };

struct Member {
  Kind kind;
  Member* target = nullptr;
  std::int64_t references = 0;
  int held = 0;  // of these, the test's own
  bool alive = true;
  ZEBDataSink* real = nullptr;
  FilterClient client = {};

  bool IsFilter() const { return kind >= Kind::kIdentity; }
  bool HasClient() const { return kind != Kind::kNull && kind != Kind::kIdentity; }
};

struct State {
  Member* filter;
  Member* target;
  ZEBChainState* real;
};

// What the contract says.
class Model {
 public:
  void Release(Member* member) {
    while (member != nullptr && --member->references == 0) {
      member->alive = false;
      if (member->HasClient()) Note(*member, "ends");
      member = std::exchange(member->target, nullptr);
    }
  }

  void Close(Member* filter) {
    for (; IsFilter(filter); filter = filter->target) CloseOne(*filter);
  }

  // False for a loop.
  bool SetDataSink(Member* filter, Member* sink) {
    Member* last = filter;
    for (Member* member = filter; IsFilter(member); member = member->target) {
      if (member == sink) return false;
      CloseOne(*member);
      last = member;
    }
    for (Member* member = sink; IsFilter(member); member = member->target) {
      if (member == last) return false;
    }
    ++sink->references;
    Release(std::exchange(last->target, sink));
    return true;
  }

  void Write(Member* sink, std::uint64_t size) {
    for (; sink != nullptr; sink = sink->target) {
      if (sink->HasClient()) Note(*sink, "writes " + std::to_string(size));
    }
  }

  State StateOf(Member* filter) {
    while (IsFilter(filter->target)) filter = filter->target;
    ++filter->references;
    ++filter->target->references;
    return {filter, filter->target, nullptr};
  }

  void Reset(const State& state) {
    ++state.target->references;
    Release(std::exchange(state.filter->target, state.target));
    Release(state.filter);
    Release(state.target);
  }

  Diary TakeDiary() { return std::exchange(diary_, {}); }

 private:
  static bool IsFilter(const Member* member) { return member != nullptr && member->IsFilter(); }
  void Note(const Member& member, const std::string& what) {
    diary_.push_back(member.client.name + " " + what);
  }
  void CloseOne(const Member& filter) {
    if (filter.HasClient()) Note(filter, "closes");
  }

  Diary diary_;
};

class FilterModel : public FilterTest {
 protected:
  void Run(Random& random, int steps) {
    RefuseALoop();  // what the first error leaves behind is no block of a chain
    const std::uint64_t blocks = Host::LiveBlocks();
    for (int i = 0; i < steps && !HasFailure(); ++i) {
      SCOPED_TRACE(::testing::Message() << "step " << i);
      Step(random);
      EXPECT_EQ(TakeDiary(), model_.TakeDiary());
      Compare();
      EXPECT_EQ(Host::LiveBlocks(), blocks + Alive().size() + states_.size());
    }
    while (!states_.empty()) ResetState(states_.size() - 1);
    for (const auto& member : members_) {
      if (member->alive && member->references == 0) Hold(*member);
      while (member->held > 0) LetGo(*member);
    }
    EXPECT_EQ(TakeDiary(), model_.TakeDiary());
    EXPECT_TRUE(Alive().empty());
    EXPECT_EQ(Host::LiveBlocks(), blocks);
    members_.clear();
  }

 private:
  void RefuseALoop() {
    ZEBDataSink* filter = Owned(NewIdentity(NewNull()));
    EXPECT_EQ(Outcome(filter_.SetDataSink(filter, filter)), kLoop);
    filter_.Release(filter);
  }

  std::vector<Member*> Alive() const {
    std::vector<Member*> alive;
    for (const auto& member : members_) {
      if (member->alive) alive.push_back(member.get());
    }
    return alive;
  }

  Member* Any(Random& random) const {
    const std::vector<Member*> alive = Alive();
    return alive.empty() ? nullptr : alive[random.below(alive.size())];
  }
  Member* AnyFilter(Random& random) const {
    std::vector<Member*> filters = Alive();
    std::erase_if(filters, [](const Member* member) { return !member->IsFilter(); });
    return filters.empty() ? nullptr : filters[random.below(filters.size())];
  }

  void Step(Random& random) {
    const std::uint64_t choice = random.below(100);
    Member* any = Any(random);
    Member* filter = AnyFilter(random);
    if (any == nullptr || choice < 25) return Make(random);
    if (choice < 40) return Hold(*any);
    if (choice < 55) return any->held > 0 ? LetGo(*any) : void();
    if (filter == nullptr) return;
    if (choice < 72) return Append(*filter, *any);
    if (choice < 80) return WriteInto(*any, random.below(1000));
    if (choice < 86) return Close(*filter);
    if (choice < 93) return TakeState(*filter);
    if (!states_.empty()) ResetState(random.below(states_.size()));
  }

  void Make(Random& random) {
    Member* target = Any(random);
    auto member = std::make_unique<Member>(
        Member{.kind = static_cast<Kind>(random.below(target != nullptr ? 5 : 2))});
    member->client = Client(std::to_string(++made_));
    if (member->IsFilter()) {
      member->target = target;
      ++target->references;
      member->client.onWrite = [this, raw = member.get()](const void* data, std::uint64_t size) {
        return filter_.Write(filter_.PeekTarget(raw->real), data, size);
      };
    }
    member->real = MakeReal(*member);
    members_.push_back(std::move(member));
  }

  ZEBDataSink* MakeReal(Member& member) {
    switch (member.kind) {
      case Kind::kNull:
        return NewNull();
      case Kind::kClientSink:
        return NewSink(member.client);
      case Kind::kIdentity:
        return NewIdentity(member.target->real);
      case Kind::kClientFilter:
        return NewFilter(member.target->real, member.client);
      case Kind::kJPEG:
        return NewJPEG(member.target->real, member.client);
    }
    return nullptr;
  }

  void Hold(Member& member) {
    ++member.held;
    ++member.references;
    EXPECT_EQ(filter_.AddRef(member.real), nullptr);
  }

  void LetGo(Member& member) {
    --member.held;
    model_.Release(&member);
    filter_.Release(member.real);
  }

  void Append(Member& filter, Member& sink) {
    const bool appended = model_.SetDataSink(&filter, &sink);
    EXPECT_EQ(Outcome(filter_.SetDataSink(filter.real, sink.real)), appended ? kSuccess : kLoop);
  }

  void WriteInto(Member& sink, std::uint64_t size) {
    model_.Write(&sink, size);
    EXPECT_EQ(filter_.Write(sink.real, nullptr, size), nullptr);
  }

  void Close(Member& filter) {
    model_.Close(&filter);
    filter_.Close(filter.real);
  }

  void TakeState(Member& filter) {
    State state = model_.StateOf(&filter);
    EXPECT_EQ(filter_.GetChainState(&state.real, filter.real), nullptr);
    states_.push_back(state);
  }

  void ResetState(std::size_t index) {
    const State state = states_[index];
    states_.erase(states_.begin() + static_cast<std::ptrdiff_t>(index));
    model_.Reset(state);
    EXPECT_EQ(filter_.ResetChainState(state.real), nullptr);
  }

  void Compare() {
    for (const Member* member : Alive()) {
      EXPECT_EQ(filter_.IsFilter(member->real), member->IsFilter() ? 1 : 0);
      if (!member->IsFilter()) continue;
      EXPECT_EQ(filter_.PeekTarget(member->real), member->target->real);
    }
  }

  Model model_;
  std::vector<std::unique_ptr<Member>> members_;
  std::vector<State> states_;
  int made_ = 0;
};

TEST_F(FilterModel, AgreesWithEveryRandomChain) {
  zeb_test::forEachSeed([&](Random& random) {
    for (int round = 0; round < 20; ++round) Run(random, 150);
  });
}

}  // namespace
}  // namespace contract
