#ifndef ZO_VIDEO_SRC_ZO_JPEG_PLAUSIBILITY_H
#define ZO_VIDEO_SRC_ZO_JPEG_PLAUSIBILITY_H

#include "zo_core/zo_geometry.h"

namespace zo {

/// False when JPEG data claims a very large picture that so few bytes cannot hold, so that decoding is sure
/// to fail at the end of the data, after gigabytes were written for a file of a few hundred bytes. What
/// cannot be judged (arithmetic coding, headers that the decoder alone finds) has a generous bound of its
/// own, of more than 33 million pixels. True for everything else: the decoder has the last word. `picture` is
/// the size that the decoder has read from the same data.
bool jpegDataCanHold(const unsigned char* p_data, unsigned size, Size picture) noexcept;

}  // namespace zo

#endif
