// The texts by which signatures are compared: two modules built by different compilers must write
// the same.
#include "zeb/sdk/signature.hpp"

#include <gtest/gtest.h>

#include "zeb/zeb.h"

namespace {

using zeb::sdk::signatureOf;

static_assert(signatureOf<void (*)()>() == "void()");
static_assert(signatureOf<int32_t (*)(uint64_t, int64_t)>() == "i32(u64,i64)");
static_assert(signatureOf<void* (*)(const void*)>() == "*void(*const void)");
static_assert(signatureOf<const char* (*)(char*)>() == "*const i8(*i8)");
static_assert(signatureOf<float (*)(double, bool)>() == "f32(f64,b8)");
static_assert(signatureOf<ZEBErrorObject* (*)(ZEBContainer**)>() ==
              "*ZEBErrorObject(**ZEBContainer)");
static_assert(signatureOf<void (*)(void (*)(void*), void*)>() == "void(*(void(*void)),*void)");

TEST(Signature, IsTheSameWithAndWithoutNoexcept) {
  EXPECT_EQ(signatureOf<void (*)() noexcept>(), signatureOf<void (*)()>());
}

enum class Small : uint8_t { one };
enum class Large : uint64_t { one };
struct Pair {
  int32_t first;
  int32_t second;
};
template <class First, class Second>
struct Both {};

TEST(Signature, TellsAFunctionFromWhatItReturns) {
  EXPECT_EQ(signatureOf<void (*)(void* (*)())>(), "void(*(*void()))");
  EXPECT_EQ(signatureOf<void (*)(void (**)())>(), "void(**(void()))");
}

TEST(Signature, TellsTheSizeOfWhatIsPassed) {
  EXPECT_TRUE(signatureOf<void (*)(Small)>().ends_with("Small:u8)"));
  EXPECT_TRUE(signatureOf<void (*)(Large*)>().ends_with("Large:u64)"));
  EXPECT_TRUE(signatureOf<void (*)(Pair)>().ends_with("Pair:64)"));
  EXPECT_TRUE(signatureOf<void (*)(const Pair*)>().ends_with("Pair)"));
}

TEST(Signature, KeepsAllOfATemplatesName) {
  EXPECT_NE((signatureOf<void (*)(Both<int[3], int>*)>()),
            (signatureOf<void (*)(Both<int[3], char>*)>()));
}

TEST(Signature, TellsHandlesApart) {
  EXPECT_NE(signatureOf<void (*)(ZEBString*)>(), signatureOf<void (*)(ZEBContainer*)>());
}

TEST(Signature, IsATextThatEnds) {
  const char* text = zeb::sdk::signatureText<int32_t (*)(uint8_t)>();
  EXPECT_STREQ(text, "i32(u8)");
}

}  // namespace
