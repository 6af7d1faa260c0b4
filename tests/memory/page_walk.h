// Reads the pages of a pooled heap block by block, as its documentation lays them out, and says
// what is wrong with them.
//
// Every block that the heap's page source has out and that has the size of a page is taken for one:
// a test that walks must not ask for a large block of exactly that size, header included.
#ifndef ZEB_TESTS_MEMORY_PAGE_WALK_H
#define ZEB_TESTS_MEMORY_PAGE_WALK_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/counting_memory.h"

namespace zeb_test {

using Byte = unsigned char;

template <class Word>
Word wordAt(const Byte* at) {
  Word word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

// The fields of the 16 bytes before a small block's data.
inline uint16_t previousSizeOf(const Byte* data) { return wordAt<uint16_t>(data - 16) & 0xFFFE; }
inline bool isFree(const Byte* data) { return (wordAt<uint16_t>(data - 16) & 1) != 0; }
inline uint16_t sizeOf(const Byte* data) { return wordAt<uint16_t>(data - 14); }

class PageWalk {
 public:
  static constexpr uint64_t kPageBytes = 65072;
  static constexpr uint64_t kFirstData = 32;
  static constexpr uint64_t kEndData = 65072;  // where the data behind the end header would be

  struct Block {
    Byte* data;
    uint64_t size;
    bool free;
  };

  explicit PageWalk(const MemoryAccount::Blocks& held) {
    for (const auto& [memory, size] : held) {
      if (size == kPageBytes) walkPage(memory);
    }
    checkFreeLinks();
  }

  // The data of the smallest free blocks that hold `rounded` bytes, and their size; 0: there is
  // none.
  [[nodiscard]] uint64_t bestFit(uint64_t rounded) const {
    uint64_t best = 0;
    for (const Block& block : blocks) {
      const bool fits = block.free && block.size >= rounded;
      if (fits && (best == 0 || block.size < best)) best = block.size;
    }
    return best;
  }
  // The block that holds an address, or null.
  [[nodiscard]] const Block* at(const Byte* data) const {
    const auto it =
        std::lower_bound(blocks.begin(), blocks.end(), data,
                         [](const Block& block, const Byte* d) { return block.data < d; });
    return it != blocks.end() && it->data == data ? &*it : nullptr;
  }

  std::vector<Block> blocks;  // by address
  uint64_t pages = 0;
  std::string faults;

 private:
  struct Links {
    const Byte* previousOfSize;
    const Byte* nextOfSize;
  };

  static Links linksOf(const Byte* data) {
    return {wordAt<const Byte*>(data), wordAt<const Byte*>(data + 8)};
  }

  void expect(bool holds, const char* fault, const Byte* where) {
    if (holds) return;
    std::ostringstream text;
    text << fault << " at " << static_cast<const void*>(where) << "; ";
    faults += text.str();
  }

  void walkPage(Byte* page) {
    ++pages;
    uint16_t previousSize = 0;
    bool previousFree = false;
    Byte* data = page + kFirstData;
    for (; data < page + kEndData; data += sizeOf(data) + 16) {
      const bool free = isFree(data);
      expect(previousSizeOf(data) == previousSize, "wrong previous size", data);
      expect(sizeOf(data) >= 48, "too small", data);
      expect(sizeOf(data) % 16 == 0, "not a multiple of 16", data);
      expect(!(free && previousFree), "two free neighbours", data);
      if (!faults.empty()) return;
      blocks.push_back({data, sizeOf(data), free});
      previousSize = sizeOf(data);
      previousFree = free;
    }
    expect(data == page + kEndData, "runs over the end", data);
    if (!faults.empty()) return;
    expect(sizeOf(data) == 0, "no end header", data);
    expect(wordAt<uint16_t>(data - 16) == previousSize, "the end header is wrong", data);
  }

  // Every free block must be in the one list of its size, and nothing else is.
  void checkFreeLinks() {
    std::vector<const Byte*> listed;
    std::set<uint64_t> sizes;
    for (const Block& block : blocks) {
      if (!block.free || linksOf(block.data).previousOfSize != nullptr) continue;
      expect(sizes.insert(block.size).second, "a second list of this size", block.data);
      collectList(block.data, listed);
    }
    std::vector<const Byte*> free;
    for (const Block& block : blocks) {
      if (block.free) free.push_back(block.data);
    }
    std::sort(listed.begin(), listed.end());
    expect(listed == free, "the free blocks are not those that are listed", nullptr);
  }

  void collectList(const Byte* first, std::vector<const Byte*>& listed) {
    const Byte* previous = nullptr;
    for (const Byte* at = first; at != nullptr; at = linksOf(at).nextOfSize) {
      expect(sizeOf(at) == sizeOf(first), "another size in the list", at);
      expect(linksOf(at).previousOfSize == previous, "wrong link back", at);
      if (listed.size() > blocks.size()) return;
      listed.push_back(at);
      previous = at;
    }
  }
};

}  // namespace zeb_test

#endif
