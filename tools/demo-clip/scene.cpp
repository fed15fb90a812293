#include "scene.h"

#include <algorithm>
#include <cmath>

#include "zo_video/zo_video.h"

namespace {

struct Rgb {
  double r, g, b;
};

Rgb operator*(const Rgb& a, double k) {
  return Rgb{a.r * k, a.g * k, a.b * k};
}

Rgb mix(const Rgb& a, const Rgb& b, double share) {
  const double s = std::min(std::max(share, 0.0), 1.0);
  return Rgb{a.r + (b.r - a.r) * s, a.g + (b.g - a.g) * s, a.b + (b.b - a.b) * s};
}

double smooth(double from, double to, double x) {
  const double s = std::min(std::max((x - from) / (to - from), 0.0), 1.0);
  return s * s * (3 - 2 * s);
}

/// The colour that a list of equally spaced ones has at a time from 0 to 1.
template <std::size_t Count>
Rgb along(const Rgb (&colours)[Count], double time) {
  const double place = std::min(std::max(time, 0.0), 1.0) * (Count - 1);
  const std::size_t i = std::min(static_cast<std::size_t>(place), Count - 2);
  return mix(colours[i], colours[i + 1], place - static_cast<double>(i));
}

const Rgb ZENITH[] = {{64, 140, 214}, {70, 124, 196}, {62, 74, 140}, {22, 26, 66}, {8, 10, 30}};
const Rgb HORIZON[] = {{190, 222, 240}, {244, 214, 160}, {250, 140, 72}, {150, 70, 84}, {28, 30, 58}};
const Rgb SUN[] = {{255, 252, 226}, {255, 238, 170}, {255, 190, 96}, {238, 96, 52}, {200, 60, 40}};

/// A pseudo-random number from 0 to 1 that belongs to a pair of whole numbers.
double scatter(int x, int y) {
  const double s = std::sin(x * 12.9898 + y * 78.233) * 43758.5453;
  return s - std::floor(s);
}

/// What stays the same over one picture. Coordinates are in heights of the picture.
class Scene {
 public:
  Scene(double time, double width)
      : _time(time),
        _width(width),
        _sun_x(width * (0.22 + 0.45 * time)),
        _sun_y(0.1 + 0.75 * std::pow(time, 1.25)),
        _boat_x(width * (-0.1 + 1.15 * time)),
        _boat_y(SEA + 0.1 + 0.006 * std::sin(time * 60)) {}

  Rgb at(double x, double y) const {
    if (y > SEA) {
      return boatOr(x, y, sea(x, y));
    }
    Rgb colour = sky(x, y);
    const double far = SEA - 0.09 - 0.05 * std::sin(x * 2.1 + 0.6) - 0.025 * std::sin(x * 5.3);
    const double near = SEA - 0.02 - 0.045 * std::sin(x * 1.3 + 2.6) - 0.018 * std::sin(x * 7.1 + 1);
    if (y > far) {
      colour = mix(along(HORIZON, _time), Rgb{44, 62, 92} * light(), 0.62);
    }
    if (y > near) {
      colour = mix(along(HORIZON, _time), Rgb{26, 44, 40} * light(), 0.84);
    }
    return boatOr(x, y, colour);
  }

 private:
  static constexpr double SEA = 0.64;

  double light() const { return 1 - 0.75 * smooth(0.45, 0.95, _time); }

  Rgb sky(double x, double y) const {
    Rgb colour = mix(along(ZENITH, _time), along(HORIZON, _time), std::pow(y / SEA, 1.6));
    const double distance = std::hypot(x - _sun_x, y - _sun_y);
    colour = mix(colour, along(SUN, _time), 0.55 * std::exp(-distance * 5.5) * (1 - smooth(0.75, 1, _time)));
    colour = mix(colour, along(SUN, _time), 1 - smooth(0.052, 0.056, distance));
    const double moon = std::hypot(x - _width * 0.82, y - 0.62 + 0.5 * smooth(0.5, 1.1, _time));
    const double shadow = std::hypot(x - _width * 0.82 - 0.018, y - 0.61 + 0.5 * smooth(0.5, 1.1, _time));
    const double night = smooth(0.55, 0.9, _time);
    colour = mix(colour, Rgb{236, 234, 214},
                 night * (1 - smooth(0.034, 0.037, moon)) * smooth(0.032, 0.035, shadow));
    return mix(colour, Rgb{255, 255, 255}, night * star(x, y));
  }

  static double star(double x, double y) {
    const int column = static_cast<int>(std::floor(x * 24));
    const int row = static_cast<int>(std::floor(y * 24));
    if (scatter(column, row) < 0.82) {
      return 0;
    }
    const double dx = x * 24 - column - 0.2 - 0.6 * scatter(column + 7, row);
    const double dy = y * 24 - row - 0.2 - 0.6 * scatter(column, row + 7);
    return (0.35 + 0.65 * scatter(row, column)) * (1 - smooth(0.03, 0.07, std::hypot(dx, dy)));
  }

  Rgb sea(double x, double y) const {
    const double depth = (y - SEA) / (1 - SEA);
    const Rgb far = along(HORIZON, _time) * 0.82;
    const Rgb near = mix(along(ZENITH, _time) * 0.55, Rgb{12, 46, 70} * light(), 0.5);
    Rgb colour = mix(far, near, std::pow(depth, 0.55));
    const double fine = 46 / (0.08 + depth);
    const double wave = std::sin(x * fine * 0.16 + std::sin(y * fine) * 2 + _time * 55) *
                        std::sin(y * fine * 1.9 - _time * 40);
    colour = mix(colour, along(HORIZON, _time), 0.2 * std::max(wave, 0.0));
    const double glitter = std::exp(-std::pow((x - _sun_x) / (0.05 + 0.16 * depth), 2));
    return mix(colour, along(SUN, _time), glitter * std::max(0.15, wave) * (1 - smooth(0.7, 0.9, _time)));
  }

  /// The boat's hull, mast, two sails and lantern, or what is behind them.
  Rgb boatOr(double x, double y, const Rgb& behind) const {
    const double u = x - _boat_x - 0.03 * (y - _boat_y) * std::sin(_time * 45);
    const double v = y - _boat_y;
    if (v > 0 && v < 0.036 && std::abs(u) < 0.105 - v * 1.1) {
      return Rgb{120, 46, 34} * (0.35 + 0.65 * light());
    }
    if (v <= 0 && v > -0.27 && std::abs(u) < 0.0035) {
      return Rgb{70, 52, 40} * light();
    }
    const double lantern = std::hypot(u + 0.085, v + 0.015);
    const Rgb lit = mix(behind, Rgb{255, 214, 120}, smooth(0.5, 0.8, _time) * std::exp(-lantern * 60));
    if (v > -0.255 && v < -0.02) {
      const double share = (v + 0.255) / 0.235;
      if (u > 0.007 && u < 0.007 + 0.095 * share) {
        return Rgb{246, 242, 232} * (0.3 + 0.7 * light());
      }
      if (u < -0.007 && u > -0.007 - 0.07 * share * smooth(-0.1, 0.35, share)) {
        return Rgb{214, 208, 200} * (0.3 + 0.7 * light());
      }
    }
    return lit;
  }

  double _time;
  double _width;
  double _sun_x;
  double _sun_y;
  double _boat_x;
  double _boat_y;
};

unsigned char byte(double value) {
  return static_cast<unsigned char>(std::min(std::max(value + 0.5, 0.0), 255.0));
}

/// A few gulls that cross the sky and are gone before night.
void paintGulls(zo::Frame& frame, double time) {
  const unsigned char colour[3] = {60, 48, 44};
  const int height = frame.size().height;
  for (int gull = 0; gull < 4; ++gull) {
    const double x = frame.size().width * (1.02 - 1.7 * time - 0.06 * gull + 0.05 * scatter(gull, 1));
    const double y = height * (0.2 + 0.07 * scatter(gull, 2) + 0.02 * std::sin(time * 25 + gull));
    const int span = static_cast<int>(height * (0.018 + 0.008 * scatter(gull, 3)));
    const int lift = static_cast<int>(span * (0.45 + 0.5 * std::sin(time * 170 + gull * 2)));
    const zo::Point body(static_cast<int>(x), static_cast<int>(y));
    zo::drawLine(frame, body, zo::Point(body.x - span, body.y - lift), colour, 2);
    zo::drawLine(frame, body, zo::Point(body.x + span, body.y - lift), colour, 2);
  }
}

}  // namespace

void paintScene(zo::Frame& frame, double time) {
  const zo::Size size = frame.size();
  const Scene scene(time, static_cast<double>(size.width) / size.height);
  for (int y = 0; y < size.height; ++y) {
    unsigned char* p_pixel = frame.planeData(0) + static_cast<std::size_t>(y) * frame.planeStride(0);
    for (int x = 0; x < size.width; ++x, p_pixel += 3) {
      const Rgb colour = scene.at((x + 0.5) / size.height, (y + 0.5) / size.height);
      p_pixel[0] = byte(colour.b);
      p_pixel[1] = byte(colour.g);
      p_pixel[2] = byte(colour.r);
    }
  }
  paintGulls(frame, time);
}
