// Drawing into a picture: rectangles, lines, text, small plots and scaled pictures. Whatever lies
// outside the canvas is cut off.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "pictures/picture.h"

namespace ppl::tool {

struct Colour {
  uint8_t r = 0, g = 0, b = 0;
};

// The colour between two others: share 0 is the first, 1 the second.
Colour mix(Colour from, Colour to, double share);

struct Rectangle {
  int x = 0, y = 0, width = 0, height = 0;

  int right() const { return x + width; }    // the first column behind it
  int bottom() const { return y + height; }  // the first line below it
  Rectangle inside(int margin) const {
    return {x + margin, y + margin, width - 2 * margin, height - 2 * margin};
  }
};

// Width and height of text in pixels. A character is 6 dots wide with its gap and 7 high; the last
// gap does not count.
int text_width(std::string_view text, int scale);
int text_height(int scale);

// The end of a name that is too long for its place.
std::string shortened(const std::string &text, size_t characters);

class Canvas {
 public:
  Canvas(Size size, Colour background);

  const Picture &picture() const { return picture_; }

  void fill(Rectangle area, Colour colour);
  void tint(Rectangle area, Colour colour, double share);  // mixes the colour into what is there
  void outline(Rectangle area, Colour colour, int thickness = 1);  // within the area
  void line(int x0, int y0, int x1, int y1, Colour colour);
  void dashes(int x, int y0, int y1, Colour colour);  // a vertical dashed line, both ends included

  // x and y are the text's top left corner; right-aligned, its top right one.
  void text(int x, int y, std::string_view text, Colour colour, int scale = 2);
  void text_right(int x, int y, std::string_view text, Colour colour, int scale = 2);

  // A picture into an area, scaled by the mean of the pixels (enlarged: by the nearest one).
  void draw(const Picture &picture, Rectangle area);

  // value(i) for i from 0 to count - 1, as bars from the area's bottom or as a line from its left
  // to its right; 0 is the bottom, 1 the top, and values above are cut off.
  void bars(Rectangle area, int count, const std::function<double(int)> &value, Colour colour);
  void curve(Rectangle area, int count, const std::function<double(int)> &value, Colour colour,
             int thickness = 1);

 private:
  void set(int x, int y, Colour colour);

  Picture picture_;
};

}  // namespace ppl::tool
