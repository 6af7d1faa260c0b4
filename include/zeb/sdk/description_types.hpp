// What the tables of description.hpp are made of.
#ifndef ZEB_SDK_DESCRIPTION_TYPES_HPP
#define ZEB_SDK_DESCRIPTION_TYPES_HPP

#include <cstdint>
#include <span>
#include <string_view>

namespace zeb::sdk::description {

// Which way a parameter goes.
enum class Direction : uint8_t { in, out, inout };

// What a null in the place of a pointer comes to.
enum class NullRule : uint8_t {
  noPointer,     // the parameter is a number
  allowed,       // the call succeeds
  answersError,  // the error of a missing argument
  answersEmpty,  // null, 0 or nothing, and nothing is done
  fails,         // the call fails in a way of its own
};

// Whose something is, after it was handed in or out.
enum class Ownership : uint8_t {
  none,
  // Handed out; borrowed also means handed in, and looked at during the call.
  borrowed,      // stays the library's or its giver's
  reference,     // the caller's to give back as the handle says
  unreferenced,  // an object that nobody holds yet
  // Handed in.
  copied,             // the contents are
  filled,             // the caller's storage, written into during the call
  shared,             // the library adds a reference of its own
  kept,               // the caller's, to stay valid as long as it is used
  consumed,           // the library's in every case
  consumedOnSuccess,  // the library's unless the call fails
  givenBack,          // a reference, or what has one owner
  added,              // gains a reference for the caller
  dropped,            // loses a reference of the caller's, and nothing is deleted
};

// What an out parameter holds after a failure.
enum class OnFailure : uint8_t { unsaid, cleared, untouched, undefined };

// What a call answers with.
enum class Convention : uint8_t {
  error,    // null is success, else an error of which the caller owns one reference
  value,    // the result itself
  nothing,  // there is none
};

// What a failure answers; none: there is nothing to tell it by.
enum class Failure : uint8_t { error, null, zero, none };

// Which threads may call; a set of bits.
enum class Threads : uint8_t {
  none = 0,
  anyThread = 1,    // any thread at any time
  frameThread = 2,  // one thread, while no other uses the library
  oneOwner = 4,     // one thread at a time for the same object
  callsHost = 8,    // procedures of the host or of a client may be called meanwhile
};

// The tags of both.
[[nodiscard]] constexpr Threads operator|(Threads left, Threads right) noexcept {
  return static_cast<Threads>(static_cast<uint8_t>(left) | static_cast<uint8_t>(right));
}
// True if the set has the tag.
[[nodiscard]] constexpr bool has(Threads set, Threads tag) noexcept {
  return (static_cast<uint8_t>(set) & static_cast<uint8_t>(tag)) != 0;
}

// A kind of object, and the methods that count its references, each as "Interface/Method".
struct Handle {
  std::string_view kind;          // what the description calls it
  std::string_view type;          // of C, without the asterisk
  std::string_view addReference;  // empty: it has one owner and no count
  std::string_view release;       // gives a reference back, or ends what has one owner
};

// What a call is given.
struct Parameter {
  std::string_view name;                    // as the headers call it
  std::string_view type;                    // of C
  Direction direction = Direction::in;      // which way it goes
  NullRule null = NullRule::noPointer;      // what a null comes to
  Ownership ownership = Ownership::none;    // whose it is afterwards
  OnFailure onFailure = OnFailure::unsaid;  // what it then holds, if it goes out
  const Handle* handle = nullptr;           // null: no object of the library
  std::string_view endedBy = {};            // the parameter whose procedure ends this client data
};

// What a call answers.
struct Result {
  std::string_view type;                        // of C
  Convention convention = Convention::nothing;  // what the answer is
  Failure failure = Failure::none;              // what a failure answers
  bool zeroIsAnswer = false;                    // null or 0 is an ordinary answer, too
  Ownership ownership = Ownership::none;        // whose it is
  const Handle* handle = nullptr;               // null: no object of the library
};

// What a proc and an exported function have in common.
struct Function {
  std::string_view name;       // a proc's is the name of its C type as well
  std::string_view signature;  // as signatureOf writes it (signature.hpp)
  std::string_view summary;    // one sentence
  uint32_t since = 0;  // the first version of the library that has it, as ZEBGetVersion says
  Threads threads = Threads::none;        // which threads may call
  Result result;                          // what it answers
  std::span<const Parameter> parameters;  // what it is given, in order
};

// One version of a method.
struct Proc : Function {
  std::string_view method;  // the name that its versions share
  uint16_t version = 0;     // tells the procs of a method apart, the newest has the highest
  bool older = false;       // served for programs that ask for it; new ones want the newest
};

// Procs under one name.
struct Interface {
  std::string_view name;        // under which it is registered
  std::string_view title;       // what it is about
  std::string_view header;      // as it is included
  std::span<const Proc> procs;  // in the order in which they are registered
};

}  // namespace zeb::sdk::description

#endif
