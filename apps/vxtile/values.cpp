#include "values.h"

#include <charconv>
#include <cmath>
#include <stdexcept>

namespace vxtile {

namespace {

template <class T>
std::string shortText(T number) {
  std::array<char, 64> buffer;
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  return std::string(buffer.data(), result.ptr);
}

template <class T>
std::optional<T> readAll(std::string_view text) {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> parts;
  std::size_t begin = 0;
  while ((begin = text.find_first_not_of(separators, begin)) != std::string_view::npos) {
    const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end;
  }
  return parts;
}

Interval readInterval(std::string_view text) {
  const std::size_t colon = text.find(':');
  const auto first = readWholeNumber(text.substr(0, colon));
  const auto last = colon == std::string_view::npos ? first : readWholeNumber(text.substr(colon + 1));
  if (!first || !last) throw std::invalid_argument("\"" + std::string(text) + "\" is neither a voxel nor FIRST:LAST");
  return {*first, *last};
}

long long wholeNumber(const Number& number) {
  if (const auto* const whole = std::get_if<long long>(&number)) return *whole;
  throw std::invalid_argument("a corner must have whole numbers, not " + textOf(number));
}

}  // namespace

std::string textOf(const Number& number) {
  return std::visit([](auto value) { return shortText(value); }, number);
}

std::string textOf(const Value& value) {
  struct Writer {
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
    std::string operator()(const Number& number) const { return textOf(number); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const std::vector<Number>& list) const {
      std::string text;
      for (const Number& number : list) text += (text.empty() ? "" : " ") + textOf(number);
      return text;
    }
  };
  return std::visit(Writer(), value);
}

double asDouble(const Number& number) {
  return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

std::optional<long long> readWholeNumber(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  return readAll<long long>(text);
}

std::optional<Number> readNumber(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  if (const auto whole = readAll<long long>(text)) return *whole;
  const auto real = readAll<double>(text);
  if (!real || !std::isfinite(*real)) return std::nullopt;
  return *real;
}

std::optional<std::vector<Number>> readNumbers(std::string_view text) {
  std::vector<Number> numbers;
  for (const std::string_view part : split(text, " ,\t")) {
    const auto number = readNumber(part);
    if (!number) return std::nullopt;
    numbers.push_back(*number);
  }
  return numbers;
}

void addAxis(BoxRequest& box, std::string_view axis, Interval interval) {
  const std::size_t index = axis.size() == 1 ? axisLetters.find(axis) : std::string_view::npos;
  if (index == std::string_view::npos) {
    throw std::invalid_argument("\"" + std::string(axis) + "\" is no axis; they are x, y, z, c, t and u");
  }
  if (box[index]) throw std::invalid_argument("axis " + std::string(axis) + " stands twice");
  if (interval.last < interval.first) {
    throw std::invalid_argument("axis " + std::string(axis) + " runs backward, from " + std::to_string(interval.first) +
                                " to " + std::to_string(interval.last));
  }
  box[index] = interval;
}

BoxRequest boxOfCorners(const std::vector<Number>& numbers) {
  const std::size_t half = numbers.size() / 2;
  if (numbers.size() != 6 && numbers.size() != 12) {
    throw std::invalid_argument("two corners have 6 or 12 numbers, not " + std::to_string(numbers.size()));
  }
  BoxRequest box;
  for (std::size_t i = 0; i < half; ++i) {
    addAxis(box, axisLetters.substr(i, 1), {wholeNumber(numbers[i]), wholeNumber(numbers[half + i])});
  }
  return box;
}

BoxRequest readBox(const std::string& text) {
  if (text.find('=') == std::string::npos) {
    const auto numbers = readNumbers(text);
    if (!numbers) throw std::invalid_argument("\"" + text + "\" is neither AXIS=FIRST:LAST,... nor two corners");
    return boxOfCorners(*numbers);
  }
  BoxRequest box;
  for (const std::string_view part : split(text, " ,\t")) {
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos) throw std::invalid_argument("\"" + std::string(part) + "\" lacks an axis");
    addAxis(box, part.substr(0, equals), readInterval(part.substr(equals + 1)));
  }
  return box;
}

Window windowOf(const std::vector<Number>& numbers) {
  if (numbers.size() != 2)
    throw std::invalid_argument("a range has two numbers, not " + std::to_string(numbers.size()));
  const Window window{asDouble(numbers[0]), asDouble(numbers[1])};
  if (!(window.low < window.high)) {
    throw std::invalid_argument("the range from " + textOf(numbers[0]) + " to " + textOf(numbers[1]) +
                                " does not rise");
  }
  return window;
}

Flip readFlip(std::string_view text) {
  const Flip flip{text == "horizontal" || text == "both", text == "vertical" || text == "both"};
  if (!flip.horizontal && !flip.vertical) {
    throw std::invalid_argument("\"" + std::string(text) + "\" is none of horizontal, vertical, both");
  }
  return flip;
}

}  // namespace vxtile
