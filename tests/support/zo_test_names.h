#ifndef ZO_TESTS_SUPPORT_ZO_TEST_NAMES_H
#define ZO_TESTS_SUPPORT_ZO_TEST_NAMES_H

#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "zo_core/zo_frame_format.h"
#include "zo_core/zo_geometry.h"

namespace zo {
namespace test {

/// Names the cases of a parameter grid by their member `name`.
struct CaseName {
  template <class Param>
  std::string operator()(const testing::TestParamInfo<Param>& info) const {
    return info.param.name;
  }
};

/// "YUV422_PLANAR", for the name of a case.
inline std::string shortName(FrameFormat format) {
  const std::string name = toString(format);
  const std::string prefix = "ZO_FRAME_FORMAT_";
  return name.compare(0, prefix.size(), prefix) == 0 ? name.substr(prefix.size()) : name;
}

/// "7x5", for the name of a case.
inline std::string shortName(Size size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

}  // namespace test
}  // namespace zo

#endif
