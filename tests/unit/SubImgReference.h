// Blocks of voxels for tests, and what the operations on them do to each voxel, written voxel by voxel.

#ifndef VX_TESTS_SUB_IMG_REFERENCE_H
#define VX_TESTS_SUB_IMG_REFERENCE_H

#include "vxDataTypes.h"
#include "vxSubImg.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace vx::test {

using Position = TVector<VXint64>;

// A block with memory of its own, between two guard zones. Voxels start with bytes that are all 0xA5.
class TestBlock {
 public:
  TestBlock(const SubImgBox& box, VXDataType dataType) : img(box, dataType) {
    _bytes.assign(static_cast<std::size_t>(box.getNumVoxels()) * VXSizeOf(dataType) + 2 * guard, 0xA5);
    img.setData(_bytes.data() + guard);
  }
  TestBlock(const TestBlock&) = delete;
  TestBlock& operator=(const TestBlock&) = delete;

  // The voxel at a position in image coordinates.
  unsigned char* at(const Position& p) const {
    const Position o = p - img.getBox().v1;
    const Position e = img.getBox().getExt();
    const VXint64 index = ((((o.u * e.t + o.t) * e.c + o.c) * e.z + o.z) * e.y + o.y) * e.x + o.x;
    return static_cast<unsigned char*>(img.getData()) + static_cast<std::size_t>(index) * VXSizeOf(img.getDataType());
  }
  template <class T>
  T get(const Position& p) const {
    T value;
    std::memcpy(&value, at(p), sizeof value);
    return value;
  }
  template <class T>
  void set(const Position& p, const T& value) {
    std::memcpy(at(p), &value, sizeof value);
  }
  // All bytes, those of the guard zones too.
  const std::vector<unsigned char>& bytes() const { return _bytes; }
  void copyBytesOf(const TestBlock& other) { std::memcpy(_bytes.data(), other._bytes.data(), _bytes.size()); }

  SubImg img;

 private:
  static constexpr std::size_t guard = 64;
  std::vector<unsigned char> _bytes;
};

template <class Visit>
void forEachPosition(const SubImgBox& box, Visit visit) {
  Position p;
  for (p.u = box.v1.u; p.u <= box.v2.u; ++p.u)
    for (p.t = box.v1.t; p.t <= box.v2.t; ++p.t)
      for (p.c = box.v1.c; p.c <= box.v2.c; ++p.c)
        for (p.z = box.v1.z; p.z <= box.v2.z; ++p.z)
          for (p.y = box.v1.y; p.y <= box.v2.y; ++p.y)
            for (p.x = box.v1.x; p.x <= box.v2.x; ++p.x) visit(static_cast<const Position&>(p));
}

inline bool contains(const SubImgBox& box, const Position& p) {
  for (std::size_t d = 0; d < 6; ++d) {
    if (p[d] < box.v1[d] || p[d] > box.v2[d]) return false;
  }
  return true;
}

// A voxel of a standard type: a whole number, or a floating point one.
struct Value {
  bool isFloat;
  VXint64 whole;
  double real;
};

template <class T>
Value valueOf(const unsigned char* voxel) {
  T v;
  std::memcpy(&v, voxel, sizeof v);
  if constexpr (std::is_floating_point_v<T>) {
    return {true, 0, static_cast<double>(v)};
  } else {
    return {false, static_cast<VXint64>(v), static_cast<double>(v)};
  }
}

inline Value readVoxel(VXDataType type, const unsigned char* voxel) {
  switch (type) {
    case 0:
      return valueOf<VXint8>(voxel);
    case 1:
      return valueOf<VXuint8>(voxel);
    case 2:
      return valueOf<VXint16>(voxel);
    case 3:
      return valueOf<VXuint16>(voxel);
    case 4:
      return valueOf<VXint32>(voxel);
    case 5:
      return valueOf<VXuint32>(voxel);
    case 6:
      return valueOf<float>(voxel);
    case 7:
    case 8:
      return valueOf<double>(voxel);
    default:
      return valueOf<VXint64>(voxel);
  }
}

// A floating point number cut to a whole one: 32 bits wide for the types up to int32, 64 bits for wider ones. What
// doesn't fit, and NaN, is the least number of that width.
inline VXint64 cut(double value, VXDataType type) {
  const bool isNarrow = type <= 4;
  const double limit = isNarrow ? 0x1p31 : 0x1p63;
  const double whole = std::trunc(value);
  if (whole >= -limit && whole < limit) return static_cast<VXint64>(whole);
  return isNarrow ? std::numeric_limits<VXint32>::min() : std::numeric_limits<VXint64>::min();
}

inline void writeVoxel(VXDataType type, const Value& value, unsigned char* voxel) {
  if (type == 6) {
    const float v = value.isFloat ? static_cast<float>(value.real) : static_cast<float>(value.whole);
    std::memcpy(voxel, &v, sizeof v);
  } else if (type == 7 || type == 8) {
    std::memcpy(voxel, &value.real, sizeof value.real);
  } else {
    // The low bytes stand first.
    const VXint64 whole = value.isFloat ? cut(value.real, type) : value.whole;
    std::memcpy(voxel, &whole, VXSizeOf(type));
  }
}

inline Value mapped(const Value& value, double scale, double shift) {
  volatile double product = value.real * scale;
  return {true, 0, product + shift};
}

// Random boxes and voxels.
class RandomBlocks {
 public:
  explicit RandomBlocks(unsigned int seed) : _engine(seed) {}

  VXint64 number(VXint64 low, VXint64 high) { return std::uniform_int_distribution<VXint64>(low, high)(_engine); }

  // A small box near the origin, longer in x than elsewhere, and not empty.
  SubImgBox box() {
    SubImgBox result;
    for (std::size_t d = 0; d < 6; ++d) {
      result.v1[d] = number(-3, 3);
      result.v2[d] = result.v1[d] + number(0, d == 0 ? 11 : 2);
    }
    return result;
  }

  // A box that lies in, equals, touches, exceeds or misses another one, each dimension by itself; sometimes empty.
  SubImgBox boxNear(const SubImgBox& other) {
    SubImgBox result = other;
    for (std::size_t d = 0; d < 6; ++d) {
      VXint64& low = result.v1[d];
      VXint64& high = result.v2[d];
      switch (number(0, d == 0 ? 6 : 12)) {
        case 0:
          low = number(low, high), high = number(low, high);
          break;
        case 1:
          low -= number(0, 2), high = number(low, high);
          break;
        case 2:
          high += number(0, 2), low = number(low, high);
          break;
        case 3:
          --low, ++high;
          break;
        case 4:
          if (number(0, 3) == 0) low = high + 1, high = low + 1;
          break;
        case 5:
          if (number(0, 3) == 0) high = low - 1, low = high - 1;
          break;
        case 6:
          if (number(0, 3) == 0) high = low - number(1, 2);
          break;
        default:
          break;
      }
    }
    return result;
  }

  // Fills a block of a standard type, mostly with everyday values and sometimes with the ends of its range.
  void fill(TestBlock& block) {
    const VXDataType type = block.img.getDataType();
    forEachPosition(block.img.getBox(), [&](const Position& p) { writeVoxel(type, value(), block.at(p)); });
  }

 private:
  Value value() {
    static constexpr double edges[] = {0.0,
                                       -0.0,
                                       0.5,
                                       -0.5,
                                       2.9,
                                       -2.9,
                                       127.6,
                                       -128.9,
                                       255.5,
                                       65535.9,
                                       2147483647.0,
                                       2147483648.5,
                                       -2147483648.5,
                                       4294967295.5,
                                       9.3e18,
                                       -9.3e18,
                                       1e300,
                                       -1e300,
                                       std::numeric_limits<double>::infinity(),
                                       std::numeric_limits<double>::quiet_NaN()};
    switch (number(0, 3)) {
      case 0:
        return {true, 0, edges[number(0, std::size(edges) - 1)]};
      case 1:
        return {false, number(std::numeric_limits<VXint64>::min(), std::numeric_limits<VXint64>::max()), 0.5};
      default:
        return {true, 0, static_cast<double>(number(-40000, 40000)) / 16.0};
    }
  }

  std::mt19937 _engine;
};

}  // namespace vx::test

#endif
