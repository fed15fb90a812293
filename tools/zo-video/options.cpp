#include "options.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <locale>
#include <sstream>

namespace zo_tool {

namespace {

constexpr long long LARGEST_SIDE = 65535;

/// Reads a side of a size: 0 for an empty text, -1 for anything but 1 to 65535.
long long readSide(const std::string& digits) {
  if (digits.empty()) {
    return 0;
  }
  if (digits.size() > 5 || digits.find_first_not_of("0123456789") != std::string::npos) {
    return -1;
  }
  const long long side = std::stoll(digits);
  return side >= 1 && side <= LARGEST_SIDE ? side : -1;
}

bool readSize(const std::string& text, long long& width, long long& height) {
  const std::size_t x = text.find_first_of("xX");
  if (x == std::string::npos) {
    return false;
  }
  width = readSide(text.substr(0, x));
  height = readSide(text.substr(x + 1));
  return width >= 0 && height >= 0 && width + height > 0;
}

/// Reads decimal digits, leading zeros too. False for anything else and for what no long long holds.
bool readWholeNumber(const std::string& text, long long& value) {
  const std::size_t digits = text[0] == '-' ? 1 : 0;
  if (text.size() == digits || text.find_first_not_of("0123456789", digits) != std::string::npos) {
    return false;
  }
  errno = 0;
  value = std::strtoll(text.c_str(), nullptr, 10);
  return errno == 0;
}

bool readNumber(const std::string& text, double& value) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  return stream >> value && stream.eof();
}

/// The side that goes with `known` in a picture of known_side x other_side.
int matchingSide(long long known, long long known_side, long long other_side) {
  const long long side = (known * other_side + known_side / 2) / known_side;
  return static_cast<int>(std::min(std::max(side, 1LL), LARGEST_SIDE));
}

}  // namespace

void SourceOptions::declare(CLI::App& app) {
  app.add_option("FILE", url, "Video file or URL (rtsp://, http://, ...)")->required()->type_name("");
  app.add_option("--timeout", timeout_seconds, "Give up when the source is silent for so long")
      ->type_name("SECONDS")
      ->check(number(0.001, 2000000));
  app.add_flag("--skip-errors", skip_errors, "Skip damaged packets instead of ending at the first");
}

int SourceOptions::timeoutMs() const {
  if (timeout_seconds <= 0) {
    return -1;
  }
  return static_cast<int>(std::min(std::ceil(timeout_seconds * 1000.0), static_cast<double>(INT_MAX)));
}

void WantedSize::declare(CLI::App& app, const char* p_help) {
  app.add_option("--size", text, p_help)
      ->type_name("WxH")
      ->check(CLI::Validator(
          [](std::string& value) {
            long long width = 0;
            long long height = 0;
            if (readSize(value, width, height)) {
              return std::string();
            }
            return "'" + value +
                   "' is no size: give WxH, Wx or xH with sides from 1 to 65535, for example 640x360";
          },
          ""));
}

zo::Size WantedSize::resolve(const zo::Size& picture) const {
  long long width = 0;
  long long height = 0;
  if (!readSize(text, width, height) || picture.width < 1 || picture.height < 1) {
    return picture;
  }
  if (height == 0) {
    return zo::Size(static_cast<int>(width), matchingSide(width, picture.width, picture.height));
  }
  if (width == 0) {
    return zo::Size(matchingSide(height, picture.height, picture.width), static_cast<int>(height));
  }
  return zo::Size(static_cast<int>(width), static_cast<int>(height));
}

CLI::Validator wholeNumber(long long low, long long high) {
  return CLI::Validator(
      [low, high](std::string& text) {
        long long value = 0;
        if (readWholeNumber(text, value) && low <= value && value <= high) {
          text = std::to_string(value);
          return std::string();
        }
        if (high == LLONG_MAX) {
          return "'" + text + "' is no whole number of at least " + std::to_string(low);
        }
        return "'" + text + "' is no whole number from " + std::to_string(low) + " to " +
               std::to_string(high);
      },
      "");
}

CLI::Validator number(double low, double high) {
  return CLI::Validator(
      [low, high](std::string& text) {
        double value = 0;
        if (readNumber(text, value) && low <= value && value <= high) {
          return std::string();
        }
        std::ostringstream message;
        message.imbue(std::locale::classic());
        message << "'" << text << "' is no number from " << low << " to " << std::fixed
                << std::setprecision(0) << high;
        return message.str();
      },
      "");
}

void declareQuality(CLI::App& app, int& quality) {
  app.add_option("--quality", quality, "JPEG quality, 1 to 100")
      ->type_name("Q")
      ->capture_default_str()
      ->transform(wholeNumber(1, 100));
}

}  // namespace zo_tool
