/* A few lines of test framework for tests that are compiled as C. */
#ifndef ZO_TESTS_ZO_C_TEST_H
#define ZO_TESTS_ZO_C_TEST_H

typedef struct TestCase {
  const char* name; /* a sentence about behaviour */
  void (*p_run)(void);
} TestCase;

/*
 * Runs the cases whose names are given as arguments, or all of them. Each failed check prints its place, the
 * case it belongs to and what was expected. With GTEST_OUTPUT=xml:FILE in the environment the results are
 * written there. Returns the exit status for main.
 */
int runTestCases(const char* suite, const TestCase* p_cases, unsigned count, int argc, char** argv);

/* Each returns whether the check held; a failed one marks the running case as failed. */
int checkTrue(const char* file, int line, const char* text, int condition);
int checkNumber(const char* file, int line, const char* text, long long expected, long long actual);
int checkText(const char* file, int line, const char* text, const char* expected, const char* actual);

#define CHECK(condition) checkTrue(__FILE__, __LINE__, #condition, (condition) != 0)
#define CHECK_EQ(expected, actual) checkNumber(__FILE__, __LINE__, #actual, expected, actual)
#define CHECK_TEXT(expected, actual) checkText(__FILE__, __LINE__, #actual, expected, actual)
/* Leave the case when the check fails. */
#define REQUIRE(condition)   \
  do {                       \
    if (!CHECK(condition)) { \
      return;                \
    }                        \
  } while (0)
#define REQUIRE_EQ(expected, actual)   \
  do {                                 \
    if (!CHECK_EQ(expected, actual)) { \
      return;                          \
    }                                  \
  } while (0)

#endif
