#include "text.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>

namespace zo_tool {

namespace {

struct NamedStatus {
  zo::Status status;
  const char* p_name;
};

#define ZO_TOOL_NAMED(status) \
  { zo::status, #status }
const NamedStatus NAMED_STATUSES[] = {ZO_TOOL_NAMED(ZO_STATUS_OK),
                                      ZO_TOOL_NAMED(ZO_STATUS_UNKNOWN_ERROR),
                                      ZO_TOOL_NAMED(ZO_STATUS_INTERNAL_ERROR),
                                      ZO_TOOL_NAMED(ZO_STATUS_STD_EXCEPTION),
                                      ZO_TOOL_NAMED(ZO_STATUS_NULL_POINTER),
                                      ZO_TOOL_NAMED(ZO_STATUS_OUT_OF_RANGE),
                                      ZO_TOOL_NAMED(ZO_STATUS_INVALID_ARGUMENT),
                                      ZO_TOOL_NAMED(ZO_STATUS_NOT_INITIALIZED),
                                      ZO_TOOL_NAMED(ZO_STATUS_NOT_SUPPORTED),
                                      ZO_TOOL_NAMED(ZO_STATUS_INVALID_STATE),
                                      ZO_TOOL_NAMED(ZO_STATUS_NOT_ALLOWED),
                                      ZO_TOOL_NAMED(ZO_STATUS_UNEXPECTED_RESULT),
                                      ZO_TOOL_NAMED(ZO_STATUS_TIMEOUT),
                                      ZO_TOOL_NAMED(ZO_STATUS_OUT_OF_MEMORY),
                                      ZO_TOOL_NAMED(ZO_STATUS_OPEN_ERROR),
                                      ZO_TOOL_NAMED(ZO_STATUS_READ_ERROR),
                                      ZO_TOOL_NAMED(ZO_STATUS_WRITE_ERROR),
                                      ZO_TOOL_NAMED(ZO_STATUS_SEEK_ERROR),
                                      ZO_TOOL_NAMED(ZO_STATUS_NOT_OPENED),
                                      ZO_TOOL_NAMED(ZO_STATUS_DECODER_ERROR),
                                      ZO_TOOL_NAMED(ZO_STATUS_CODEC_ERROR)};
#undef ZO_TOOL_NAMED

/// Number of typing errors (one letter wrong, missing, too many, or two neighbours swapped) between two
/// words.
std::size_t typingErrors(const std::string& a, const std::string& b) {
  std::vector<std::vector<std::size_t>> table(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        table[i][j] = i + j;
        continue;
      }
      const std::size_t changed = table[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      table[i][j] = std::min({changed, table[i - 1][j] + 1, table[i][j - 1] + 1});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) {
        table[i][j] = std::min(table[i][j], table[i - 2][j - 2] + 1);
      }
    }
  }
  return table[a.size()][b.size()];
}

/// Bytes of the UTF-8 character that begins there with a byte above 127, 0 when none does.
std::size_t sequenceLength(const std::string& text, std::size_t at) {
  const auto byte = [&text, at](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
  const unsigned lead = byte(0);
  const std::size_t length = lead < 0xC2 || lead > 0xF4 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (length > text.size() - at) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) {
      return 0;
    }
  }
  // Longer than need be, a surrogate, or beyond the last character.
  const bool is_none = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) >= 0xA0) ||
                       (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) >= 0x90);
  return is_none ? 0 : length;
}

/// True for a character, or a byte of none, that moves a terminal's cursor or worse.
bool isControl(const std::string& character) {
  const unsigned char byte = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) {
    return byte < 32 || (127 <= byte && byte < 0xA0);
  }
  const bool is_c1 = byte == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
  return is_c1 || character == "\xE2\x80\xA8" || character == "\xE2\x80\xA9";
}

}  // namespace

std::string statusName(zo::Status status) {
  for (const NamedStatus& named : NAMED_STATUSES) {
    if (named.status == status) {
      return named.p_name;
    }
  }
  return "ZO_STATUS_" + std::to_string(static_cast<int32_t>(status));
}

std::string formatTime(long long milliseconds) {
  const bool negative = milliseconds < 0;
  const unsigned long long ms = negative ? 0ULL - static_cast<unsigned long long>(milliseconds)
                                         : static_cast<unsigned long long>(milliseconds);
  const unsigned long long minutes = ms / 60000;
  char text[64];
  if (minutes >= 60) {
    std::snprintf(text, sizeof text, "%s%llu:%02llu:%02llu.%03llu", negative ? "-" : "", minutes / 60,
                  minutes % 60, ms / 1000 % 60, ms % 1000);
  } else {
    std::snprintf(text, sizeof text, "%s%llu:%02llu.%03llu", negative ? "-" : "", minutes, ms / 1000 % 60,
                  ms % 1000);
  }
  return text;
}

std::string formatDuration(double seconds) {
  const long long whole = static_cast<long long>(std::llround(std::min(seconds, 3.6e8)));
  char text[64];
  if (whole >= 3600) {
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
  } else {
    std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
  }
  return text;
}

std::string oneLine(const std::string& text) {
  std::string line;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = std::max<std::size_t>(1, sequenceLength(text, at));
    const std::string character = text.substr(at, length);
    if (character == "\n" || character == "\t") {
      line += ' ';
    } else {
      line += isControl(character) ? "?" : character;
    }
    at += length;
  }
  return line;
}

std::string baseName(const std::string& path) {
  const std::size_t end = path.find_last_not_of('/');
  if (end == std::string::npos) {
    return path;
  }
  const std::size_t slash = path.find_last_of('/', end);
  return path.substr(slash + 1, end - slash);
}

std::string counted(long long count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string closestWord(const std::string& word, const std::vector<std::string>& known) {
  std::string best;
  std::size_t best_errors = std::max<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string& candidate : known) {
    const std::size_t errors = typingErrors(word, candidate);
    if (errors < best_errors && errors < candidate.size()) {
      best = candidate;
      best_errors = errors;
    }
  }
  if (best.empty() && word.size() > 2) {
    for (const std::string& candidate : known) {
      if (candidate.compare(0, word.size(), word) == 0) {
        return candidate;
      }
    }
  }
  return best;
}

bool isPlausibleTime(long long milliseconds) {
  const long long three_thousand_years = 100LL * 1000 * 1000 * 1000 * 1000;
  return -three_thousand_years < milliseconds && milliseconds < three_thousand_years;
}

bool isNetworkUrl(const std::string& url) {
  const std::size_t colon = url.find("://");
  return colon != std::string::npos && colon > 0 && url.compare(0, colon, "file") != 0;
}

}  // namespace zo_tool
