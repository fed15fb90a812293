/// Everything that the tests share.
#ifndef ZO_TESTS_SUPPORT_ZO_TEST_SUPPORT_H
#define ZO_TESTS_SUPPORT_ZO_TEST_SUPPORT_H

#include "zo_test_clip.h"
#include "zo_test_compare.h"
#include "zo_test_effort.h"
#include "zo_test_exception.h"
#include "zo_test_files.h"
#include "zo_test_names.h"
#include "zo_test_picture.h"
#include "zo_test_reference.h"
#include "zo_test_server.h"

#endif
