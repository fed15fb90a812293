#ifndef ZO_TESTS_SUPPORT_ZO_TEST_EXCEPTION_H
#define ZO_TESTS_SUPPORT_ZO_TEST_EXCEPTION_H

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <utility>

#include "zo_core/zo_exception.h"

namespace zo {
namespace test {

/// Runs `body` and tells whether it threw the zo::Exception with exactly that status, message and function
/// name (and source path, when one is given).
template <class Body>
testing::AssertionResult throwsZoException(Status status, const std::string& message,
                                           const std::string& function, const std::string& file,
                                           Body&& body) {
  try {
    std::forward<Body>(body)();
  } catch (const Exception& exception) {
    if (exception.status() == status && message == exception.what() && function == exception.function() &&
        (file.empty() || file == exception.file()) && exception.line() > 0) {
      return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "expected (" << status << ") \"" << message << "\" from " << function << " in " << file
           << "\n     got (" << exception.status() << ") \"" << exception.what() << "\" from "
           << exception.function() << " in " << exception.file() << " line " << exception.line();
  } catch (const std::exception& exception) {
    return testing::AssertionFailure() << "got another exception: " << exception.what();
  }
  return testing::AssertionFailure() << "nothing was thrown; expected \"" << message << "\"";
}

/// The zo::Exception that `body` throws; fails the test and gives an empty one when it throws none.
template <class Body>
Exception caughtZoException(Body&& body) {
  try {
    std::forward<Body>(body)();
  } catch (const Exception& exception) {
    return exception;
  } catch (const std::exception& exception) {
    ADD_FAILURE() << "got another exception: " << exception.what();
    return Exception();
  }
  ADD_FAILURE() << "nothing was thrown";
  return Exception();
}

}  // namespace test
}  // namespace zo

/// EXPECT_ZO_EXCEPTION(reader.open(...), zo::ZO_STATUS_OPEN_ERROR, "the whole message", "open")
#define EXPECT_ZO_EXCEPTION(statement, status, message, function) \
  EXPECT_TRUE(                                                    \
      ::zo::test::throwsZoException(status, message, function, "", [&] { static_cast<void>(statement); }))

/// The same with the source path that the exception has to carry.
#define EXPECT_ZO_EXCEPTION_FROM(file, statement, status, message, function) \
  EXPECT_TRUE(                                                               \
      ::zo::test::throwsZoException(status, message, function, file, [&] { static_cast<void>(statement); }))

#endif
