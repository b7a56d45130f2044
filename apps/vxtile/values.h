/// \file values.h
/// Values of fields and boxes of voxels, as the command line and network files write them.

#ifndef VXTILE_VALUES_H
#define VXTILE_VALUES_H

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vxtile {

/// A number as it was written: whole numbers stay exact.
using Number = std::variant<long long, double>;
/// The value of a field.
using Value = std::variant<bool, Number, std::string, std::vector<Number>>;

/// \return the number as a text that reads back as the same number, in the form of the C locale.
std::string textOf(const Number& number);
/// \return the value as a text; numbers of a list are separated by blanks.
std::string textOf(const Value& value);
/// \return the number as a `double`, rounded if need be.
double asDouble(const Number& number);

/// Reads a text that is a number and nothing else. Infinities and NaN are none. \return empty for another text, and for
/// a number that no `double` holds.
std::optional<Number> readNumber(std::string_view text);
/// Reads a text of numbers with blanks or commas between. \return empty if a part of it is no number.
std::optional<std::vector<Number>> readNumbers(std::string_view text);
/// As readNumber(), for whole numbers of 64 bits.
std::optional<long long> readWholeNumber(std::string_view text);

/// The dimensions of an image, by their index.
inline constexpr std::string_view axisLetters = "xyzctu";
inline constexpr std::size_t numAxes = 6;

/// Voxels along one axis, both inclusive.
struct Interval {
  long long first = 0;
  long long last = 0;
};

/// A box of voxels; an axis without an interval is taken as a whole.
using BoxRequest = std::array<std::optional<Interval>, numAxes>;

/// Makes a box of two corners: 12 numbers, x y z c t u and again, or 6, x y z and again.
/// \throw std::invalid_argument with a text that says what is wrong.
BoxRequest boxOfCorners(const std::vector<Number>& numbers);
/// Adds an axis to a box. \param axis a letter. \throw std::invalid_argument for an unknown or repeated axis, and for
/// an interval that runs backward.
void addAxis(BoxRequest& box, std::string_view axis, Interval interval);
/// Reads a box from a text such as "x=10:20,z=5", or from the numbers of boxOfCorners().
/// \throw std::invalid_argument with a text that says what is wrong.
BoxRequest readBox(const std::string& text);

/// A window of voxel values, `low` below `high`.
struct Window {
  double low = 0;
  double high = 0;
};
/// \throw std::invalid_argument unless there are two numbers that rise.
Window windowOf(const std::vector<Number>& numbers);

/// Which edges of a picture change places.
struct Flip {
  bool horizontal = false;
  bool vertical = false;
};
/// Reads "horizontal", "vertical" or "both". \throw std::invalid_argument for another text.
Flip readFlip(std::string_view text);

}  // namespace vxtile

#endif
