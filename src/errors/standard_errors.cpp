#include "errors/standard_errors.h"

#include <array>

#include "base/failure.h"

namespace zeb::errors {

namespace {

constexpr std::array kKstMessages{"Unknown Kesto Error", "Out of Memory", "", "Corrupt Data"};
constexpr std::array kZebMessages{"Missing ZEB Method"};

constinit std::array<ZEBErrorObject*, kKstMessages.size()> kstErrors{};
constinit std::array<ZEBErrorObject*, kZebMessages.size()> zebErrors{};

// Its count starts at 1 and clients give back what they take, so it is never destroyed.
ZEBErrorObject lastResort;

template <class Table>
void put(Table& table, size_t id, ZEBErrorObject* error) noexcept {
  ZEBErrorObject* previous = table[id];
  table[id] = error;
  release(previous);
}

template <class Table, class Messages>
void fill(Table& table, const Messages& messages, const char* component) {
  for (size_t id = 0; id < messages.size(); ++id) {
    put(table, id, make(messages[id], component, static_cast<int32_t>(id)));
  }
}

template <class Table>
void empty(Table& table) noexcept {
  for (size_t id = 0; id < table.size(); ++id) put(table, id, nullptr);
}

// A negative id is nobody's error.
template <class Table>
ZEBErrorObject* at(const Table& table, int32_t id) noexcept {
  return id >= 0 ? table[static_cast<size_t>(id)] : nullptr;
}

}  // namespace

void makeStandardErrors() noexcept {
  try {
    fill(zebErrors, kZebMessages, kZebComponent);
    fill(kstErrors, kKstMessages, kKstComponent);
  } catch (...) {
    releaseStandardErrors();
  }
}

void releaseStandardErrors() noexcept {
  empty(zebErrors);
  empty(kstErrors);
}

ZEBErrorObject* standardKst(int32_t id) noexcept {
  const bool exists = id < static_cast<int32_t>(kstErrors.size());
  return at(kstErrors, exists ? id : kst::kUnknown);
}

ZEBErrorObject* standardZeb(int32_t id) noexcept {
  const bool exists = id < static_cast<int32_t>(zebErrors.size());
  return exists ? at(zebErrors, id) : standardKst(kst::kUnknown);
}

ZEBErrorObject* raisableKst(int32_t id) noexcept {
  ZEBErrorObject* error = standardKst(id);
  return error != nullptr ? error : &lastResort;
}

ZEBErrorObject* raisableZeb(int32_t id) noexcept {
  ZEBErrorObject* error = standardZeb(id);
  return error != nullptr ? error : &lastResort;
}

const char* standardKstMessage(int32_t id) noexcept {
  const bool exists = id >= 0 && id < static_cast<int32_t>(kKstMessages.size());
  return kKstMessages[exists ? static_cast<size_t>(id) : 0];
}

const char* standardZebMessage(int32_t id) noexcept {
  const bool exists = id >= 0 && id < static_cast<int32_t>(kZebMessages.size());
  return exists ? kZebMessages[static_cast<size_t>(id)] : standardKstMessage(kst::kUnknown);
}

}  // namespace zeb::errors
