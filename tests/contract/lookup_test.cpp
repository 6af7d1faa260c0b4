// Look-up against an oracle: names made to be mistaken for each other, and names made at random,
// are registered, looked up and unregistered, and a plain list says what must be found.
//
// Every run takes another seed and prints it; ZEB_TEST_SEED=<number> repeats one.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "contract/library.h"
#include "contract/proc_rows.h"

namespace contract {
namespace {

// A name; a null one is equal only to itself.
using Name = std::optional<std::string>;

const char* Text(const Name& name) { return name ? name->c_str() : nullptr; }

struct Names {
  Name interfaceName;
  Name methodName;
  Name procName;

  bool operator==(const Names&) const = default;
};

void PrintTo(const Names& names, std::ostream* out) {
  for (const Name* name : {&names.interfaceName, &names.methodName, &names.procName}) {
    *out << (*name ? "\"" + **name + "\" " : "null ");
  }
}

class NaiveList {
 public:
  bool Register(const Names& names, ZEBProc proc) {
    if (Entry(names) != entries_.end()) return false;
    entries_.push_back({names, proc});
    return true;
  }
  ZEBProc Find(const Names& names) {
    const auto entry = Entry(names);
    return entry == entries_.end() ? nullptr : entry->proc;
  }
  void Unregister(const Name& interfaceName) {
    std::erase_if(entries_,
                  [&](const auto& entry) { return entry.names.interfaceName == interfaceName; });
  }

 private:
  struct Row {
    Names names;
    ZEBProc proc;
  };
  std::vector<Row>::iterator Entry(const Names& names) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const auto& entry) { return entry.names == names; });
  }
  std::vector<Row> entries_;
};

std::uint64_t Seed() {
  const char* wanted = std::getenv("ZEB_TEST_SEED");
  const std::uint64_t seed =
      wanted == nullptr ? std::random_device()() : std::strtoull(wanted, nullptr, 10);
  std::cout << "ZEB_TEST_SEED=" << seed << std::endl;
  return seed;
}

// The library and the list side by side.
class LookUp : public ::testing::Test {
 protected:
  LookUp() {
    for (const ProcRow& row : kProcRows) {
      const Names names{row.interfaceName, row.methodName, row.procName};
      const ZEBProc published =
          zeb_.getProcAddress(row.interfaceName, row.methodName, row.procName);
      EXPECT_NE(published, nullptr) << ::testing::PrintToString(row);
      list_.Register(names, published);
      published_.push_back(names);
    }
  }

  void ExpectSameAnswer(const Names& names) {
    EXPECT_EQ(zeb_.getProcAddress(Text(names.interfaceName), Text(names.methodName),
                                  Text(names.procName)),
              list_.Find(names))
        << ::testing::PrintToString(names);
  }

  void ExpectSameRegistration(const Names& names, ZEBProc proc) {
    const std::int32_t answer = zeb_.frame.RegisterProcAddress(
        Text(names.interfaceName), Text(names.methodName), Text(names.procName), proc);
    EXPECT_EQ(answer, list_.Register(names, proc) ? 1 : 0) << ::testing::PrintToString(names);
  }

  void Unregister(const Name& interfaceName) {
    zeb_.frame.UnregisterInterface(Text(interfaceName));
    list_.Unregister(interfaceName);
  }

  std::size_t Below(std::size_t bound) {
    return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
  }

  Name RandomName() {
    // Few letters and short texts, so that names meet; now and then a long one or none.
    static constexpr char kLetters[] = "abAB\x01\xFE\xFF";
    if (Below(20) == 0) return std::nullopt;
    const std::size_t length = Below(30) == 0 ? 200 + Below(100) : Below(4);
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += kLetters[Below(std::size(kLetters) - 1)];
    return text;
  }

  Names RandomNames() { return {RandomName(), RandomName(), RandomName()}; }

  const std::uint64_t seed_ = Seed();
  std::mt19937_64 random_{seed_};
  RunningLibrary zeb_;
  NaiveList list_;
  std::vector<Names> published_;
};

// Everything that a slip of the pen makes of a name.
std::vector<Name> NearMisses(const std::string& name) {
  std::vector<Name> misses = {std::nullopt,
                              "",
                              name + "x",
                              "x" + name,
                              name + name,
                              name + " ",
                              " " + name,
                              name.substr(1),
                              name + std::string(300, name.back())};
  for (std::size_t i = 0; i < name.size(); ++i) {
    misses.emplace_back(name.substr(0, i));
    std::string changed = name;
    changed[i] = static_cast<char>(changed[i] ^ 0x20);
    misses.emplace_back(changed);
    changed[i] = static_cast<char>(changed[i] ^ 0x81);
    misses.emplace_back(changed);
    std::string dropped = name;
    dropped.erase(i, 1);
    misses.emplace_back(dropped);
    if (i + 1 < name.size()) {
      std::string swapped = name;
      std::swap(swapped[i], swapped[i + 1]);
      misses.emplace_back(swapped);
    }
  }
  return misses;
}

TEST_F(LookUp, AgreesOnNearMissesOfPublishedNames) {
  for (const Names& names : published_) {
    ExpectSameAnswer(names);
    for (Name Names::*member : {&Names::interfaceName, &Names::methodName, &Names::procName}) {
      for (const Name& miss : NearMisses(*(names.*member))) {
        Names missed = names;
        missed.*member = miss;
        ExpectSameAnswer(missed);
      }
    }
  }
}

TEST_F(LookUp, AgreesWhenNamesArePermuted) {
  for (const Names& n : published_) {
    ExpectSameAnswer({n.interfaceName, n.procName, n.methodName});
    ExpectSameAnswer({n.methodName, n.interfaceName, n.procName});
    ExpectSameAnswer({n.methodName, n.procName, n.interfaceName});
    ExpectSameAnswer({n.procName, n.methodName, n.interfaceName});
    ExpectSameAnswer({n.procName, n.interfaceName, n.methodName});
  }
}

TEST_F(LookUp, AgreesWhenRowsAreMixed) {
  for (const Names& first : published_) {
    for (const Names& second : published_) {
      ExpectSameAnswer({first.interfaceName, second.methodName, second.procName});
      ExpectSameAnswer({first.interfaceName, first.methodName, second.procName});
      ExpectSameAnswer({first.interfaceName, second.methodName, first.procName});
    }
  }
}

// The same text cut at other places, which a look-up that joins the names would confuse.
TEST_F(LookUp, AgreesWhenAPartMovesFromNameToName) {
  for (const Names& names : published_) {
    const std::string all = *names.interfaceName + *names.methodName + *names.procName;
    for (int i = 0; i < 40; ++i) {
      const std::size_t first = Below(all.size() + 1);
      const std::size_t second = first + Below(all.size() - first + 1);
      ExpectSameAnswer(
          {all.substr(0, first), all.substr(first, second - first), all.substr(second)});
    }
  }
}

TEST_F(LookUp, AgreesOnRandomNamesOfAFixedSet) {
  std::vector<Names> registered;
  for (std::uintptr_t i = 0; i < 400; ++i) {
    registered.push_back(RandomNames());
    ExpectSameRegistration(registered.back(), FakeProc(16 + i));
  }
  for (const Names& names : registered) ExpectSameAnswer(names);
  for (int i = 0; i < 4000; ++i) ExpectSameAnswer(RandomNames());
}

TEST_F(LookUp, AgreesWhileNamesComeAndGo) {
  for (std::uintptr_t i = 0; i < 6000; ++i) {
    switch (Below(8)) {
      case 0:
      case 1:
        ExpectSameRegistration(RandomNames(), FakeProc(16 + i));
        break;
      case 2:
        Unregister(RandomName());
        break;
      default:
        ExpectSameAnswer(RandomNames());
    }
  }
}

TEST_F(LookUp, AgreesWhenPublishedInterfacesAreTakenOver) {
  for (const Names& names : published_) {
    if (Below(2) == 0) Unregister(names.interfaceName);
    ExpectSameRegistration(names, FakeProc(16));
  }
  for (const Names& names : published_) ExpectSameAnswer(names);
}

}  // namespace
}  // namespace contract
