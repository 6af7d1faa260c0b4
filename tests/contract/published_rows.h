// What a running library publishes, row by row, beside what the typed structs were filled with.
#ifndef ZEB_TESTS_CONTRACT_PUBLISHED_ROWS_H
#define ZEB_TESTS_CONTRACT_PUBLISHED_ROWS_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <span>
#include <string_view>
#include <vector>

#include "contract/proc_rows.h"
#include "zeb/types.h"

namespace contract {

class PublishedRows {
 public:
  explicit PublishedRows(ZEBGetProcAddress getProcAddress) : getProcAddress_(getProcAddress) {}

  [[nodiscard]] ZEBProc Find(const ProcRow& row) const {
    return getProcAddress_(row.interfaceName, row.methodName, row.procName);
  }

  // The published procs of an interface, in the order in which clients know them.
  [[nodiscard]] std::vector<ZEBProc> Of(std::string_view interfaceName) const {
    std::vector<ZEBProc> procs;
    for (const ProcRow& row : kProcRows) {
      if (interfaceName == row.interfaceName) procs.push_back(Find(row));
    }
    return procs;
  }

  // So many of them, and the structs hold the same ones: the current procs first, then the older.
  template <class... Structs>
  void ExpectAre(std::string_view interfaceName, std::size_t count,
                 const Structs&... structs) const {
    const std::vector<ZEBProc> published = Of(interfaceName);
    EXPECT_EQ(published.size(), count);
    EXPECT_THAT(published, ::testing::Each(::testing::NotNull()));
    std::vector<ZEBProc> members;
    (Append(structs, members), ...);
    EXPECT_EQ(members, published);
  }

  void ExpectGone(std::string_view interfaceName) const {
    EXPECT_THAT(Of(interfaceName), ::testing::Each(::testing::IsNull()));
  }
  void ExpectThere(std::string_view interfaceName) const {
    EXPECT_THAT(Of(interfaceName), ::testing::Each(::testing::NotNull()));
  }
  void ExpectNone(std::span<const ProcRow> rows) const {
    for (const ProcRow& row : rows) {
      EXPECT_EQ(Find(row), nullptr) << ::testing::PrintToString(row);
    }
  }

 private:
  template <class Struct>
  static void Append(const Struct& fetched, std::vector<ZEBProc>& procs) {
    const std::size_t before = procs.size();
    procs.resize(before + sizeof(fetched) / sizeof(ZEBProc));
    std::memcpy(&procs[before], &fetched, sizeof(fetched));
  }

  ZEBGetProcAddress getProcAddress_;
};

}  // namespace contract

#endif
