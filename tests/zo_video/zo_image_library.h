#ifndef ZO_TESTS_ZO_VIDEO_ZO_IMAGE_LIBRARY_H
#define ZO_TESTS_ZO_VIDEO_ZO_IMAGE_LIBRARY_H

namespace zo {
namespace test {

/// True when this program is built with the bundled image library, false for an installed one. The interface
/// leaves some things to the library, and how the bundled one decides them is pinned for it alone.
constexpr bool bundledImageLibrary() {
#ifdef ZO_TEST_BUNDLED_SIMD
  return true;
#else
  return false;
#endif
}

}  // namespace test
}  // namespace zo

#endif
