#ifndef ZO_TOOL_TEXT_H
#define ZO_TOOL_TEXT_H

#include <string>
#include <vector>

#include "zo_core/zo_core.h"

namespace zo_tool {

/// "ZO_STATUS_OPEN_ERROR"; "ZO_STATUS_<number>" for a status without a name.
std::string statusName(zo::Status status);

/// "1:02:03.450", without the hours below one hour; "-" in front of negative times.
std::string formatTime(long long milliseconds);

/// "1:02:03" of a duration.
std::string formatDuration(double seconds);

/// The text with every control character and line separator replaced, so that it fits on one line and does
/// nothing to a terminal.
std::string oneLine(const std::string& text);

/// The last component of a path or URL.
std::string baseName(const std::string& path);

/// "1 frame", "2 frames".
std::string counted(long long count, const char* noun);

/// The word of `known` that `word` was probably meant to be, or an empty text.
std::string closestWord(const std::string& word, const std::vector<std::string>& known);

/// False for the value that stands for "the stream carries no timestamps".
bool isPlausibleTime(long long milliseconds);

/// True for a URL that is read over a network, false for a path.
bool isNetworkUrl(const std::string& url);

}  // namespace zo_tool

#endif
