#include <gtest/gtest.h>

#include <cstring>
#include <exception>
#include <string>
#include <type_traits>

#include "zo_core/zo_exception.h"

namespace zo {
namespace {

static_assert(std::is_base_of<std::exception, Exception>::value, "catchable as std::exception");
static_assert(std::is_nothrow_default_constructible<Exception>::value, "a place to keep another one");
static_assert(std::is_nothrow_copy_constructible<Exception>::value, "copying never throws");
static_assert(std::is_nothrow_copy_assignable<Exception>::value, "copying never throws");

TEST(ExceptionTest, IsEmptyByDefault) {
  const Exception exception;
  EXPECT_EQ(ZO_STATUS_OK, exception.status());
  EXPECT_STREQ("", exception.what());
  EXPECT_STREQ("", exception.function());
  EXPECT_STREQ("", exception.file());
  EXPECT_EQ(0, exception.line());
  EXPECT_EQ(nullptr, exception.previous());
}

TEST(ExceptionTest, KeepsWhatItWasMadeOf) {
  const Exception exception(nullptr, ZO_STATUS_READ_ERROR, "read", "src/unit", 42, "code %d (%s)", -5, "why");
  EXPECT_EQ(ZO_STATUS_READ_ERROR, exception.status());
  EXPECT_STREQ("code -5 (why)", exception.what());
  EXPECT_STREQ("read", exception.function());
  EXPECT_STREQ("src/unit", exception.file());
  EXPECT_EQ(42, exception.line());
  EXPECT_EQ(nullptr, exception.previous());
}

TEST(ExceptionTest, CutsLongNamesToTheirPlace) {
  const std::string function(10000, 'f');
  const std::string file(10000, 'g');
  const Exception exception(nullptr, ZO_STATUS_OPEN_ERROR, function.c_str(), file.c_str(), 0x01020304, "m");
  const std::string kept = exception.function();
  EXPECT_FALSE(kept.empty());
  EXPECT_EQ(std::string(kept.size(), 'f'), kept);
  const std::string kept_file = exception.file();
  EXPECT_EQ(std::string(kept_file.size(), 'g'), kept_file);
  EXPECT_EQ(0x01020304, exception.line());
  EXPECT_STREQ("m", exception.what());
}

TEST(ExceptionTest, CanBeCaughtAsAStandardException) {
  try {
    throw Exception(nullptr, ZO_STATUS_TIMEOUT, "f", "file", 1, "late");
  } catch (const std::exception& exception) {
    EXPECT_STREQ("late", exception.what());
  }
}

TEST(ExceptionTest, TakesAMessageWithPercentSignsFromAnArgumentAsItIs) {
  const Exception exception(nullptr, ZO_STATUS_OPEN_ERROR, "f", "file", 1, "%s", "100 %s %n");
  EXPECT_STREQ("100 %s %n", exception.what());
}

TEST(ExceptionTest, CutsAMessageThatIsTooLong) {
  const std::string text(3 * Exception::MESSAGE_CAPACITY, 'x');
  const Exception exception(nullptr, ZO_STATUS_OPEN_ERROR, "f", "file", 1, "%s", text.c_str());
  EXPECT_EQ(text.substr(0, Exception::MESSAGE_CAPACITY - 1), exception.what());
}

TEST(ExceptionTest, HoldsAMessageThatJustFits) {
  const std::string text(Exception::MESSAGE_CAPACITY - 1, 'x');
  EXPECT_EQ(text, Exception(nullptr, ZO_STATUS_OK, "f", "file", 1, "%s", text.c_str()).what());
}

TEST(ExceptionTest, HasRoomForAMessageOfAFewKilobytes) {
  EXPECT_GE(Exception::MESSAGE_CAPACITY, 2048U);
}

TEST(ExceptionTest, CutsNamesThatAreTooLong) {
  const std::string text(10000, 'n');
  const Exception exception(nullptr, ZO_STATUS_OPEN_ERROR, text.c_str(), text.c_str(), 1, "m");
  const std::string function = exception.function();
  const std::string file = exception.file();
  EXPECT_FALSE(function.empty());
  EXPECT_EQ(text.substr(0, function.size()), function);
  EXPECT_FALSE(file.empty());
  EXPECT_EQ(text.substr(0, file.size()), file);
  EXPECT_STREQ("m", exception.what());
}

TEST(ExceptionTest, TakesNullNamesAsEmptyOnes) {
  const Exception exception(nullptr, ZO_STATUS_OPEN_ERROR, nullptr, nullptr, 7, "m");
  EXPECT_STREQ("", exception.function());
  EXPECT_STREQ("", exception.file());
}

TEST(ExceptionTest, CopiesEverything) {
  const Exception inner(nullptr, ZO_STATUS_READ_ERROR, "inner", "inner_file", 3, "inner text");
  const Exception original(&inner, ZO_STATUS_WRITE_ERROR, "outer", "outer_file", 4, "outer text");
  const Exception copy(original);
  Exception assigned;
  assigned = original;
  for (const Exception* p_exception : {&copy, static_cast<const Exception*>(&assigned)}) {
    EXPECT_EQ(ZO_STATUS_WRITE_ERROR, p_exception->status());
    EXPECT_STREQ("outer text", p_exception->what());
    EXPECT_STREQ("outer", p_exception->function());
    EXPECT_STREQ("outer_file", p_exception->file());
    EXPECT_EQ(4, p_exception->line());
    ASSERT_NE(nullptr, p_exception->previous());
    EXPECT_STREQ("inner text", p_exception->previous()->what());
  }
}

TEST(ExceptionTest, IsUnchangedByAssignmentToItself) {
  Exception exception(nullptr, ZO_STATUS_WRITE_ERROR, "f", "file", 4, "text");
  const Exception& same = exception;
  exception = same;
  EXPECT_STREQ("text", exception.what());
  EXPECT_EQ(ZO_STATUS_WRITE_ERROR, exception.status());
}

TEST(ExceptionTest, ForgetsTheOldTextWhenAShorterOneIsAssigned) {
  Exception exception(nullptr, ZO_STATUS_WRITE_ERROR, "long_function", "long_file", 4, "a long message");
  exception = Exception(nullptr, ZO_STATUS_OK, "f", "g", 1, "m");
  EXPECT_STREQ("m", exception.what());
  EXPECT_STREQ("f", exception.function());
  EXPECT_STREQ("g", exception.file());
}

TEST(ExceptionTest, KeepsTheWrappedOneBeyondItsLifetime) {
  Exception outer;
  {
    const Exception innermost(nullptr, ZO_STATUS_TIMEOUT, "a", "file", 1, "first");
    const Exception inner(&innermost, ZO_STATUS_READ_ERROR, "b", "file", 2, "second");
    outer = Exception(&inner, ZO_STATUS_OPEN_ERROR, "c", "file", 3, "third");
  }
  ASSERT_NE(nullptr, outer.previous());
  EXPECT_STREQ("second", outer.previous()->what());
  EXPECT_EQ(ZO_STATUS_READ_ERROR, outer.previous()->status());
  ASSERT_NE(nullptr, outer.previous()->previous());
  EXPECT_STREQ("first", outer.previous()->previous()->what());
  EXPECT_EQ(nullptr, outer.previous()->previous()->previous());
}

TEST(ExceptionTest, CanWrapItselfByAssignment) {
  Exception exception(nullptr, ZO_STATUS_READ_ERROR, "f", "file", 1, "first");
  exception = Exception(&exception, exception.status(), "g", "file", 2, "%s again", exception.what());
  EXPECT_STREQ("first again", exception.what());
  ASSERT_NE(nullptr, exception.previous());
  EXPECT_STREQ("first", exception.previous()->what());
}

TEST(ExceptionTest, HasTheDestructorAndThenTheMessageInItsFirstSlots) {
  const Exception exception(nullptr, ZO_STATUS_OK, "f", "file", 1, "by slot");
  // The destructor takes two entries (complete and deleting) in this ABI.
  using What = const char* (*)(const Exception*);
  What const* p_slots = *reinterpret_cast<What const* const*>(&exception);
  EXPECT_STREQ("by slot", p_slots[2](&exception));
}

TEST(ExceptionTest, HoldsTheStatusAndNextToItTheMessage) {
  const Exception exception(nullptr, ZO_STATUS_CODEC_ERROR, "f", "file", 1, "by place");
  const char* const p_fields = reinterpret_cast<const char*>(&exception) + sizeof(std::exception);
  Status status = ZO_STATUS_OK;
  std::memcpy(&status, p_fields, sizeof(status));
  EXPECT_EQ(ZO_STATUS_CODEC_ERROR, status);
  EXPECT_STREQ("by place", p_fields + sizeof(status));
}

}  // namespace
}  // namespace zo
