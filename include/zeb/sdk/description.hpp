// What the library serves and exports, as tables: for programs that look into others, such as one
// that shows what a host has registered, or one that checks what a module asks for.
//
//   const auto* proc = findProc("ZEBStringInterface", "AddRef", "ZEBAddRefStringAtomProc");
//   if (proc != nullptr && proc->signature != published) ...
//
// The tables say what this version of the headers says, whatever library is running; nothing here
// needs one. They are made of share/zeb/zeb.json and lie in read-only memory, so that everything
// handed out stays valid for ever and may be read by any thread. Texts that are not empty end with
// a zero, as a look-up wants them. Nothing allocates or fails.
//
// What a person wants to read is left to the reference pages: the remarks about single parameters,
// the rules that tie two of them together, and what stands behind the first sentence about a proc.
#ifndef ZEB_SDK_DESCRIPTION_HPP
#define ZEB_SDK_DESCRIPTION_HPP

#include <array>
#include <cstddef>

#include "zeb/sdk/description_tables.hpp"
#include "zeb/sdk/module_local.hpp"

namespace zeb::sdk::description {

// Every interface, in the order in which they are registered.
ZEB_SDK_MODULE_LOCAL constexpr std::span<const Interface> interfaces() noexcept {
  return tables::kInterfaces;
}

// The functions that the library exports.
ZEB_SDK_MODULE_LOCAL constexpr std::span<const Function> exports() noexcept {
  return tables::kExports;
}

namespace detail {

// The tables are short and few look-ups are made: going through them in the order in which they are
// registered is as good as a second order to search by.
template <class Element>
ZEB_SDK_MODULE_LOCAL constexpr const Element* findNamed(std::span<const Element> elements,
                                                        std::string_view name) noexcept {
  for (const Element& element : elements) {
    if (element.name == name) return &element;
  }
  return nullptr;
}

}  // namespace detail

// None of these compares an address of the tables with null, which is no constant expression for
// g++ under its undefined-behaviour sanitizer.

// The interface of that name; null when it is not described.
ZEB_SDK_MODULE_LOCAL constexpr const Interface* findInterface(std::string_view name) noexcept {
  return detail::findNamed(interfaces(), name);
}

// The exported function of that name; null when it is not described.
ZEB_SDK_MODULE_LOCAL constexpr const Function* findExport(std::string_view name) noexcept {
  return detail::findNamed(exports(), name);
}

// The interface's proc of those names; null when it is not described.
ZEB_SDK_MODULE_LOCAL constexpr const Proc* findProc(const Interface& holder,
                                                    std::string_view method,
                                                    std::string_view name) noexcept {
  for (const Proc& proc : holder.procs) {
    if (proc.name == name && proc.method == method) return &proc;
  }
  return nullptr;
}

// The proc of those three names; null when it is not described.
ZEB_SDK_MODULE_LOCAL constexpr const Proc* findProc(std::string_view interfaceName,
                                                    std::string_view method,
                                                    std::string_view name) noexcept {
  for (const Interface& holder : interfaces()) {
    if (holder.name == interfaceName) return findProc(holder, method, name);
  }
  return nullptr;
}

// The proc of the method that a new program wants.
ZEB_SDK_MODULE_LOCAL constexpr const Proc* findNewest(const Interface& holder,
                                                      std::string_view method) noexcept {
  const Proc* newest = nullptr;
  unsigned version = 0;
  for (const Proc& proc : holder.procs) {
    if (proc.method != method || proc.version <= version) continue;
    newest = &proc;
    version = proc.version;
  }
  return newest;
}

// The words that share/zeb/zeb.json has for these; empty where it says nothing.
ZEB_SDK_MODULE_LOCAL constexpr std::string_view wordOf(Direction direction) noexcept {
  constexpr auto words = std::to_array<std::string_view>({"in", "out", "inout"});
  return words[static_cast<std::size_t>(direction)];
}
ZEB_SDK_MODULE_LOCAL constexpr std::string_view wordOf(NullRule rule) noexcept {
  constexpr auto words =
      std::to_array<std::string_view>({"", "allowed", "answers-error", "answers-empty", "fails"});
  return words[static_cast<std::size_t>(rule)];
}
ZEB_SDK_MODULE_LOCAL constexpr std::string_view wordOf(Ownership ownership) noexcept {
  constexpr auto words = std::to_array<std::string_view>(
      {"none", "borrowed", "reference", "unreferenced", "copied", "filled", "shared", "kept",
       "consumed", "consumed-on-success", "given-back", "added", "dropped"});
  return words[static_cast<std::size_t>(ownership)];
}
ZEB_SDK_MODULE_LOCAL constexpr std::string_view wordOf(OnFailure onFailure) noexcept {
  constexpr auto words = std::to_array<std::string_view>({"", "cleared", "untouched", "undefined"});
  return words[static_cast<std::size_t>(onFailure)];
}
ZEB_SDK_MODULE_LOCAL constexpr std::string_view wordOf(Convention convention) noexcept {
  constexpr auto words = std::to_array<std::string_view>({"error", "value", "nothing"});
  return words[static_cast<std::size_t>(convention)];
}
ZEB_SDK_MODULE_LOCAL constexpr std::string_view wordOf(Failure failure) noexcept {
  constexpr auto words = std::to_array<std::string_view>({"error", "null", "zero", "none"});
  return words[static_cast<std::size_t>(failure)];
}

// Every tag, with its word, in the order in which it is written.
struct ThreadTag {
  Threads tag;            // one bit
  std::string_view word;  // as the headers write it
};
// They all.
ZEB_SDK_MODULE_LOCAL inline constexpr auto kThreadTags = std::to_array<ThreadTag>({
    {Threads::anyThread, "any-thread"},
    {Threads::frameThread, "frame-thread"},
    {Threads::oneOwner, "one-owner"},
    {Threads::callsHost, "calls-host"},
});

}  // namespace zeb::sdk::description

#endif
