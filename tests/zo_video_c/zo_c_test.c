#include "zo_c_test.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char* running_case = "";
static int failed_checks = 0;

int checkTrue(const char* file, int line, const char* text, int condition) {
  if (!condition) {
    ++failed_checks;
    fprintf(stderr, "%s:%d: in %s: %s does not hold\n", file, line, running_case, text);
  }
  return condition;
}

int checkNumber(const char* file, int line, const char* text, long long expected, long long actual) {
  if (expected == actual) {
    return 1;
  }
  ++failed_checks;
  fprintf(stderr, "%s:%d: in %s: %s is %lld, expected %lld\n", file, line, running_case, text, actual,
          expected);
  return 0;
}

int checkText(const char* file, int line, const char* text, const char* expected, const char* actual) {
  if (actual != NULL && strcmp(expected, actual) == 0) {
    return 1;
  }
  ++failed_checks;
  fprintf(stderr, "%s:%d: in %s: %s is \"%s\", expected \"%s\"\n", file, line, running_case, text,
          actual == NULL ? "(null)" : actual, expected);
  return 0;
}

static int isWanted(const char* name, int argc, char** argv) {
  int i;
  for (i = 1; i < argc; ++i) {
    if (strcmp(name, argv[i]) == 0) {
      return 1;
    }
  }
  return argc < 2;
}

static FILE* openReport(void) {
  const char* p_output = getenv("GTEST_OUTPUT");
  return p_output != NULL && strncmp(p_output, "xml:", 4) == 0 ? fopen(p_output + 4, "w") : NULL;
}

int runTestCases(const char* suite, const TestCase* p_cases, unsigned count, int argc, char** argv) {
  unsigned failed = 0;
  unsigned run = 0;
  unsigned i;
  int* p_results = calloc(count, sizeof(int)); /* 0 not run, 1 passed, 2 failed */
  FILE* p_report;
  if (p_results == NULL) {
    return 1;
  }
  for (i = 0; i < count; ++i) {
    if (!isWanted(p_cases[i].name, argc, argv)) {
      continue;
    }
    running_case = p_cases[i].name;
    failed_checks = 0;
    printf("[ RUN      ] %s.%s\n", suite, running_case);
    fflush(stdout);
    p_cases[i].p_run();
    p_results[i] = failed_checks == 0 ? 1 : 2;
    printf("[ %s ] %s.%s\n", failed_checks == 0 ? "      OK" : " FAILED ", suite, running_case);
    fflush(stdout);
    ++run;
    failed += failed_checks != 0;
  }
  printf("%u of %u cases passed\n", run - failed, run);
  p_report = openReport();
  if (p_report != NULL) {
    fprintf(p_report, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    fprintf(p_report,
            "<testsuites tests=\"%u\" failures=\"%u\" disabled=\"0\" errors=\"0\" name=\"AllTests\">\n", run,
            failed);
    fprintf(
        p_report,
        "  <testsuite name=\"%s\" tests=\"%u\" failures=\"%u\" disabled=\"0\" skipped=\"0\" errors=\"0\">\n",
        suite, run, failed);
    for (i = 0; i < count; ++i) {
      if (p_results[i] != 0) {
        fprintf(
            p_report,
            "    <testcase name=\"%s\" status=\"run\" result=\"completed\" classname=\"%s\">%s</testcase>\n",
            p_cases[i].name, suite, p_results[i] == 2 ? "<failure message=\"see the output\"/>" : "");
      }
    }
    fprintf(p_report, "  </testsuite>\n</testsuites>\n");
    fclose(p_report);
  }
  free(p_results);
  return failed == 0 && run != 0 ? 0 : 1;
}
