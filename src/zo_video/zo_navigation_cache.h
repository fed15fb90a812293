#ifndef ZO_VIDEO_SRC_ZO_NAVIGATION_CACHE_H
#define ZO_VIDEO_SRC_ZO_NAVIGATION_CACHE_H

#include <string>
#include <vector>

namespace zo {

// The file that keeps a stream's index between runs: one unsigned decimal number and a line feed per word.

enum class CacheLoad {
  NOT_OPENED,  // no such file, or not readable
  LOADED,      // read up to its end or to the first thing that is no number
  FAILED       // the file could be opened, but reading it failed
};

/// Appends the numbers of the file to `words`. White space separates them; anything that is not a number, or
/// one that does not fit in 32 bits, ends the list. Numbers are accepted as formatted stream extraction in
/// the "C" locale accepts them, signs included. Throws std::bad_alloc.
CacheLoad loadNavigationCache(const std::string& path, std::vector<unsigned>& words);

/// Replaces the file. Failures are silent; a file that could not be written whole is left empty rather than
/// cut short, because an empty one is made anew at the next opening.
void saveNavigationCache(const std::string& path, const std::vector<unsigned>& words);

}  // namespace zo

#endif
