// The choice of page extents again, rule by rule and try by try: slow, and with numbers so wide that nothing overflows.

#ifndef VX_TESTS_PLAIN_PAGE_EXT_H
#define VX_TESTS_PLAIN_PAGE_EXT_H

#include "vxDataTypes.h"
#include "vxVector.h"

#include <cmath>
#include <limits>
#include <vector>

namespace vx::test {

__extension__ using Wide = __int128;

/// What a walk throws that takes more tries than a test has time for.
struct WalkTooLong {};

/// The arguments, as BaseOpTools::adaptPageExt() has them.
struct PageExtArguments {
  Vector page;
  int dataType = 0;
  Vector img, preferred, step, min, max;
};

/// One choice. Extents are at most the maximum of 64 bits.
class PlainPageExt {
 public:
  static constexpr Wide maxExtent = std::numeric_limits<VXint64>::max();

  /// \param maxTries number of tries from which on a walk throws WalkTooLong.
  PlainPageExt(const PageExtArguments& arguments, Wide maxTries) : _arguments(arguments), _maxTries(maxTries) {
    for (std::size_t i = 0; i < 6; ++i) {
      _page[i] = arguments.page[i];
      _img[i] = arguments.img[i];
      _preferred[i] = arguments.preferred[i];
      _step[i] = arguments.step[i];
      _min[i] = arguments.min[i];
      _max[i] = arguments.max[i];
    }
    for (std::size_t i = 0; i < 6; ++i) _normalize(i);
    _raiseMinimum();
    for (std::size_t i = 0; i < 6; ++i) _result[i] = _valid(i);
    _reduceWaste();
    _double();
  }

  /// \return the extent.
  Vector getResult() const {
    Vector result;
    for (std::size_t i = 0; i < 6; ++i) result[i] = static_cast<VXint64>(_result[i]);
    return result;
  }
  /// \return the number of pages of the result.
  long double getNumPages() const { return _countPages(); }
  /// \return whether doubling went on for so long that it would never have ended.
  bool isEndless() const { return _isEndless; }
  /// \return how many walks there were, and how many of them ended with another extent.
  int getNumWalks() const { return _numWalks; }
  int getNumMoves() const { return _numMoves; }

  /// \return the number of pages along one dimension.
  long double countPages(std::size_t i) const {
    return std::ceil(static_cast<float>(static_cast<long double>(_img[i]) / static_cast<long double>(_result[i])));
  }

 private:
  static Wide _roundUp(Wide value, Wide step) {
    Wide multiple = (value + step - 1) / step * step;
    return multiple > maxExtent ? multiple - step : multiple;
  }

  void _normalize(std::size_t i) {
    if (_step[i] <= 0) _step[i] = 1;
    _min[i] = _min[i] <= 0 ? _step[i] : _roundUp(_min[i], _step[i]);
    if (_max[i] > 0) {
      _max[i] = _max[i] < _min[i] ? _min[i] : _max[i] / _step[i] * _step[i];
    } else {
      Wide largest = _min[i];
      if (_img[i] > largest) largest = _img[i];
      if (_page[i] > largest) largest = _page[i];
      _max[i] = _roundUp(largest, _step[i]);
    }
  }

  void _raiseMinimum() {
    long double product = 1;
    for (Wide min : _min) product *= static_cast<long double>(min);
    if (product >= 1024) return;
    Wide volume = static_cast<Wide>(product);

    std::size_t i0 = 0;
    for (std::size_t i = 0; i < 6; ++i) {
      if (_page[i] > _page[i0]) i0 = i;
    }
    std::size_t i1 = i0 == 0 ? 1 : 0;
    for (std::size_t i = 0; i < 6; ++i) {
      if (i != i0 && _page[i] > _page[i1]) i1 = i;
    }

    const double factor0 = std::sqrt(1024.0 / static_cast<double>(volume));
    const Wide new0 = _fit(i0, _roundUp(static_cast<Wide>(std::ceil(double(_min[i0]) * factor0)), _step[i0]));
    volume = volume / _min[i0] * new0;
    _min[i0] = new0;

    const double factor1 = 1024.0 / static_cast<double>(volume);
    _min[i1] = _fit(i1, _roundUp(static_cast<Wide>(std::ceil(double(_min[i1]) * factor1)), _step[i1]));
  }

  Wide _fit(std::size_t i, Wide wanted) {
    if (wanted <= _max[i]) return wanted;
    if (_arguments.max[i] > 0) return _max[i];
    _max[i] = wanted;
    return wanted;
  }

  Wide _valid(std::size_t i) const {
    const Wide step = _step[i], min = _min[i], max = _max[i], page = _page[i], img = _img[i];
    if (min >= max) return min;
    Wide candidate = page;
    if (_preferred[i] != 0 && img != 0 && page == _preferred[i] && page > 1) candidate = img;
    if (img != 0 && page > img) candidate = img;
    if (min <= candidate && candidate <= max && candidate % step == 0) return candidate;
    if (min <= page && page <= max && page % step == 0) return page;
    if (candidate < min) return min;
    if (candidate > max) return max;
    const Wide multiple = step * static_cast<Wide>(static_cast<double>(candidate) / static_cast<double>(step) + 0.5);
    return multiple > maxExtent ? maxExtent / step * step : multiple;
  }

  double _error(std::size_t i, Wide ext) const {
    return static_cast<double>((ext - 1) * _img[i] % ext) / static_cast<double>(_img[i]);
  }

  void _reduceWaste() {
    std::vector<std::size_t> list;
    for (std::size_t i = 0; i < 6; ++i) {
      if (_min[i] < _max[i] && _img[i] % _result[i] != 0) list.push_back(i);
    }
    if (list.empty()) return;

    double w[6];
    double waste = 1.0;
    for (std::size_t i = 0; i < 6; ++i) {
      w[i] = _error(i, _result[i]);
      waste *= 1.0 + w[i];
    }
    waste -= 1.0;
    if (!(waste > 0.1)) return;

    long double bytes = VXSizeOf(_arguments.dataType);
    for (Wide ext : _result) bytes *= static_cast<long double>(ext);
    const int direction = bytes <= 32768 ? 1 : -1;
    const double tolerance = 0.1 / static_cast<double>(list.size());
    for (std::size_t i : list) {
      if (tolerance < w[i]) _result[i] = _best(i, tolerance, direction);
    }
  }

  Wide _best(std::size_t i, double tolerance, int direction) {
    Wide a = _result[i];
    const double e1 = _walk(a, i, tolerance, direction);
    if (e1 <= tolerance) return a;
    Wide b = _result[i];
    const double e2 = _walk(b, i, tolerance, -direction);
    return e1 * 0.5 <= e2 ? a : b;
  }

  double _walk(Wide& page, std::size_t i, double tolerance, int direction) {
    ++_numWalks;
    const Wide start = page;
    Wide current = page;
    double best = static_cast<double>(_max[i]) / static_cast<double>(_img[i]);
    const Wide numTries = direction == -1 ? (current - _min[i]) / _step[i] + 1 : (_max[i] - current) / _step[i] + 1;
    for (Wide k = 0; k < numTries; ++k) {
      if (!(tolerance < best)) break;
      if (k == _maxTries) throw WalkTooLong();
      const double error = _error(i, current);
      if (error < best) {
        page = current;
        best = error;
      }
      current += _step[i] * direction;
    }
    if (page != start) ++_numMoves;
    return best;
  }

  long double _countPages() const {
    long double product = 1;
    for (std::size_t i = 0; i < 6; ++i) product *= countPages(i);
    return product;
  }

  void _double() {
    const Wide limits[6] = {1024, 1024, 32, 4, 4, 4};
    for (int round = 0; _countPages() > 524288; ++round) {
      if (round == 1000) {
        _isEndless = true;
        return;
      }
      std::size_t chosen = 0;
      while (chosen < 6 && !(_result[chosen] < limits[chosen] && 4 * _result[chosen] <= _img[chosen])) ++chosen;
      if (chosen == 6) {
        chosen = 0;
        for (std::size_t i = 1; i < 6; ++i) {
          if (countPages(i) > countPages(chosen)) chosen = i;
        }
      }
      _result[chosen] *= 2;
      if (_result[chosen] > maxExtent) _result[chosen] = maxExtent;
    }
  }

  PageExtArguments _arguments;
  Wide _maxTries;
  Wide _page[6], _img[6], _preferred[6], _step[6], _min[6], _max[6], _result[6];
  int _numWalks = 0;
  int _numMoves = 0;
  bool _isEndless = false;
};

}  // namespace vx::test

#endif
