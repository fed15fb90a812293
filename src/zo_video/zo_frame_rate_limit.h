#ifndef ZO_VIDEO_SRC_ZO_FRAME_RATE_LIMIT_H
#define ZO_VIDEO_SRC_ZO_FRAME_RATE_LIMIT_H

#include <cstdint>

namespace zo {

// Times of a capture, in milliseconds. All of them wrap around where plain signed arithmetic would overflow.

inline long long wrappedSum(long long left, long long right) noexcept {
  return static_cast<long long>(static_cast<unsigned long long>(left) +
                                static_cast<unsigned long long>(right));
}

inline long long wrappedDifference(long long left, long long right) noexcept {
  return static_cast<long long>(static_cast<unsigned long long>(left) -
                                static_cast<unsigned long long>(right));
}

/// Time before which the next frame of a rate-limited capture comes too early. The share of the frame count
/// is a 32-bit figure that wraps around after 2^31 / 1000 frames.
///
/// @param first_ts       Time of the first delivered frame.
/// @param frame_counter  Frames delivered so far.
/// @param max_fps        Highest rate in frames per second, above 0.
inline long long earliestTimestamp(long long first_ts, std::int32_t frame_counter,
                                   std::int32_t max_fps) noexcept {
  const auto product = static_cast<std::int32_t>(1000U * static_cast<std::uint32_t>(frame_counter));
  return wrappedSum(first_ts, product / max_fps);
}

/// A highest rate as it is kept: cut to a whole number, 0 (no limit) for what is not a number, and the
/// largest number for what does not fit.
///
/// @param fps  Not below 0.
inline std::int32_t wholeFps(float fps) noexcept {
  if (!(fps >= 0.0F)) {
    return 0;
  }
  return fps >= 2147483648.0F ? INT32_MAX : static_cast<std::int32_t>(fps);
}

/// Time that a caller sees: moved so that a capture whose first time is negative starts at 0.
inline long long rebasedTimestamp(long long last_ts, long long first_ts) noexcept {
  return first_ts < 0 ? wrappedDifference(last_ts, first_ts) : last_ts;
}

}  // namespace zo

#endif
