// A proc's signature as a text, for the guard against a changed argument list under an unchanged
// name.
//
// A publisher puts the text beside each proc (publication.hpp), under the proc's name with
// "#signature" behind it; a binding compares it with the text of the type that it was compiled with
// and refuses the interface when they differ. What was published without texts binds as ever.
//
// Fundamental types are told apart by kind, size and sign, so that the text is the same under every
// compiler: "i32(*ZEBContainer,*const i8,u64)". So it is with structs and enumerations of a plain
// name, which count with their sizes where they are passed; the names of templates, local types and
// those without a namespace's name differ between compilers, and do not belong into a proc.
#ifndef ZEB_SDK_SIGNATURE_HPP
#define ZEB_SDK_SIGNATURE_HPP

#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>

#include "zeb/types.h"

namespace zeb::sdk {

// Published beside a guarded proc.
using SignatureProc = const char* (*)();
// Ends the name under which it is published, after the proc's own.
inline constexpr std::string_view kSignatureSuffix = "#signature";

namespace detail {

// A text made at compile time: it is written twice, once to count and once to keep.
template <std::size_t Capacity>
struct TextWriter {
  std::array<char, Capacity + 1> text{};
  std::size_t length = 0;

  constexpr void put(char c) {
    if constexpr (Capacity != 0) text[length] = c;
    ++length;
  }
  constexpr void put(std::string_view piece) {
    for (char c : piece) put(c);
  }
};

// The name of a class or enumeration as the compiler writes it.
template <class T>
constexpr std::string_view typeName() {
  std::string_view name =
#if defined(__clang__) || defined(__GNUC__)
      __PRETTY_FUNCTION__;
  name.remove_prefix(name.find("T = ") + 4);
  // What g++ says of the result's type follows the name, and brackets may be in it.
  const auto end = name.rfind("; std::string_view = ");
  return name.substr(0, end != std::string_view::npos ? end : name.size() - 1);
#else
      __FUNCSIG__;
  name.remove_prefix(name.find("typeName<") + 9);
  name = name.substr(0, name.rfind(">("));
  if (const auto space = name.find(' '); space != name.npos) name.remove_prefix(space + 1);
  return name;
#endif
}

template <class Writer>
constexpr void putNumber(Writer& writer, std::size_t number) {
  if (number >= 10) putNumber(writer, number / 10);
  writer.put(static_cast<char>('0' + number % 10));
}

template <class Writer>
constexpr void putSize(Writer& writer, std::size_t bytes) {
  putNumber(writer, bytes * 8);
}

template <class T>
struct TypeText {
  template <class Writer>
  static constexpr void put(Writer& writer) {
    if constexpr (std::is_const_v<T>) {
      writer.put("const ");
      TypeText<std::remove_const_t<T>>::put(writer);
    } else if constexpr (std::is_void_v<T>) {
      writer.put("void");
    } else if constexpr (std::is_enum_v<T>) {
      writer.put(typeName<T>());
      writer.put(':');
      TypeText<std::underlying_type_t<T>>::put(writer);
    } else if constexpr (std::is_class_v<T> || std::is_union_v<T>) {
      writer.put(typeName<T>());
    } else if constexpr (std::is_floating_point_v<T>) {
      writer.put('f');
      putSize(writer, sizeof(T));
    } else {
      static_assert(std::is_integral_v<T>, "a proc passes numbers, pointers and plain structs");
      // Plain char is what texts are made of, signed here and unsigned there.
      const bool isSigned = std::is_signed_v<T> || std::is_same_v<T, char>;
      writer.put(std::is_same_v<T, bool> ? 'b' : isSigned ? 'i' : 'u');
      putSize(writer, sizeof(T));
    }
  }
};

template <class T>
struct TypeText<T*> {
  template <class Writer>
  static constexpr void put(Writer& writer) {
    writer.put('*');
    // A pointer to a function that returns a pointer is not one to a pointer to a function.
    if constexpr (std::is_function_v<T>) writer.put('(');
    TypeText<T>::put(writer);
    if constexpr (std::is_function_v<T>) writer.put(')');
  }
};

// What is passed itself, and not by its address: a struct counts with its size.
template <class T, class Writer>
constexpr void putPassed(Writer& writer) {
  TypeText<T>::put(writer);
  if constexpr (std::is_class_v<T> || std::is_union_v<T>) {
    writer.put(':');
    putSize(writer, sizeof(T));
  }
}

template <class Result, class... Arguments, bool NoThrow>
struct TypeText<Result(Arguments...) noexcept(NoThrow)> {
  template <class Writer>
  static constexpr void put(Writer& writer) {
    putPassed<Result>(writer);
    writer.put('(');
    [[maybe_unused]] bool first = true;
    ((first ? void() : writer.put(','), first = false, putPassed<Arguments>(writer)), ...);
    writer.put(')');
  }
};

template <class T>
constexpr auto writtenSignature() {
  constexpr std::size_t length = [] {
    TextWriter<0> counting;
    TypeText<T>::put(counting);
    return counting.length;
  }();
  TextWriter<length> writer;
  TypeText<T>::put(writer);
  return writer;
}

template <class T>
inline constexpr auto kSignature = writtenSignature<T>();

}  // namespace detail

// The text of a proc's type, zero-terminated and there for ever.
template <class Proc>
requires std::is_function_v<std::remove_pointer_t<Proc>>
[[nodiscard]] constexpr std::string_view signatureOf() noexcept {
  const auto& written = detail::kSignature<std::remove_pointer_t<Proc>>;
  return {written.text.data(), written.length};
}

// What a publisher registers beside a proc of this type.
template <class Proc>
const char* signatureText() noexcept {
  return signatureOf<Proc>().data();
}

}  // namespace zeb::sdk

#endif
