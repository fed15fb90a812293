#include "contact_sheet.h"

#include <algorithm>

#include "failure.h"
#include "picture.h"
#include "text.h"

namespace zo_tool {

namespace {

constexpr Colour BACKGROUND = {{30, 27, 26}};
constexpr Colour EMPTY_CELL = {{46, 42, 40}};
constexpr Colour TITLE = {{240, 238, 236}};
constexpr Colour DETAILS = {{165, 160, 156}};
constexpr Colour INDEX = {{110, 190, 245}};
constexpr Colour TIME = {{205, 202, 200}};

constexpr int SMALLEST_FONT = 8;
constexpr int LARGEST_FONT = 28;
constexpr long long LARGEST_SIDE = 65535;

/// Cuts a text so that it is no wider than that, with two dots at the end.
std::string cutToWidth(const std::string& text, int height, int width) {
  if (textWidth(text, height) <= width) {
    return text;
  }
  std::string cut = text;
  while (!cut.empty() && textWidth(cut + "..", height) > width) {
    cut.pop_back();
  }
  return cut.empty() ? cut : cut + "..";
}

}  // namespace

ContactSheet::ContactSheet(int width, int columns, int count, const zo::Size& shape)
    : _width(width), _columns(columns), _margin(std::min(std::max(width / 80, 4), 32)) {
  const int room = (width - _margin * (columns + 1)) / columns;
  if (room < 8) {
    fail(zo::ZO_STATUS_INVALID_ARGUMENT, "%d columns do not fit into a width of %d pixels", columns, width);
  }
  const long long height = (static_cast<long long>(room) * shape.height + shape.width / 2) / shape.width;
  _cell = zo::Size(room, static_cast<int>(std::min(std::max(height, 1LL), LARGEST_SIDE)));
  // An index of five digits, a gap and a time with minutes have to fit underneath a picture.
  const int letters = 18;
  _font = std::min(std::max(room * 231 / (127 * letters), SMALLEST_FONT), LARGEST_FONT);
  _heading = 3 * _font + _font / 2 + _margin;
  const int rows = (count + columns - 1) / columns;
  const long long page_height =
      _heading + _margin + static_cast<long long>(rows) * (_cell.height + 2 * _font + _margin / 2);
  if (page_height > LARGEST_SIDE) {
    fail(zo::ZO_STATUS_INVALID_ARGUMENT, "the sheet would be %lld pixels high, at most %lld are possible",
         page_height, LARGEST_SIDE);
  }
  _page.reuse(zo::ZO_FRAME_FORMAT_BGR24, zo::Size(width, static_cast<int>(page_height)), zo::DeviceContext(),
              0);
  fill(_page, zo::Rect(0, 0, width, static_cast<int>(page_height)), BACKGROUND);
}

void ContactSheet::setHeading(const std::string& title, const std::string& details) {
  const int large = _font + _font / 2;
  const int room = _width - 2 * _margin;
  write(_page, cutToWidth(title, large, room), zo::Point(_margin, _margin), TITLE, large);
  write(_page, cutToWidth(details, _font, room), zo::Point(_margin, _margin + large + _font / 3), DETAILS,
        _font);
}

zo::Point ContactSheet::corner(int position) const {
  return zo::Point(_margin + (position % _columns) * (_cell.width + _margin),
                   _heading + _margin + (position / _columns) * (_cell.height + 2 * _font + _margin / 2));
}

void ContactSheet::place(int position, const zo::Frame& picture, long long index, long long timestamp) {
  const zo::Point at = corner(position);
  const zo::Size size = picture.size();
  paste(picture, zo::Point(at.x + (_cell.width - size.width) / 2, at.y + (_cell.height - size.height) / 2),
        _page);
  label(position, index, timestamp);
}

void ContactSheet::placeNothing(int position, long long index, long long timestamp) {
  const zo::Point at = corner(position);
  fill(_page, zo::Rect(at.x, at.y, _cell.width, _cell.height), EMPTY_CELL);
  const std::string text = "no picture";
  write(_page, text,
        zo::Point(at.x + (_cell.width - textWidth(text, _font)) / 2, at.y + (_cell.height - _font) / 2),
        DETAILS, _font);
  label(position, index, timestamp);
}

void ContactSheet::label(int position, long long index, long long timestamp) {
  const zo::Point at = corner(position);
  const int y = at.y + _cell.height + _font / 4;
  const std::string number = "#" + std::to_string(index);
  write(_page, number, zo::Point(at.x, y), INDEX, _font);
  if (!isPlausibleTime(timestamp)) {
    return;
  }
  const std::string time = formatTime(timestamp);
  const int left = at.x + _cell.width - textWidth(time, _font);
  if (left > at.x + textWidth(number, _font) + _font / 2) {
    write(_page, time, zo::Point(left, y), TIME, _font);
  }
}

}  // namespace zo_tool
