// Components of a voxel: reading, writing and shifting them by their code.

#include "vxComponentCodes.h"
#include "vxErrorOutput.h"
#include "vxTruncate.h"

#include <cmath>
#include <limits>
#include <type_traits>

namespace {

using vx::bytesAt;
using vx::forEachComponent;
using vx::visitComponent;

// The distance of a shift in a direction, for n = the smallest integer too.
VXuint32 magnitude(int n) { return n < 0 ? 0U - static_cast<VXuint32>(n) : static_cast<VXuint32>(n); }

template <class T>
T shiftInteger(T value, int n) {
  using Unsigned = std::make_unsigned_t<T>;
  const VXuint32 distance = magnitude(n) & (sizeof(T) == 8 ? 63U : 31U);
  if (n > 0) {
    // In 64 bits, so that a narrow type loses what it shifts out and nothing is undefined.
    return static_cast<T>(static_cast<Unsigned>(static_cast<VXuint64>(value) << distance));
  }
  return static_cast<T>(static_cast<VXint64>(value) >> distance);
}

template <class T>
T shiftFloat(T value, int n) {
  const VXuint32 distance = magnitude(n);
  constexpr VXuint32 largest = std::numeric_limits<int>::max();
  const double power = std::ldexp(1.0, static_cast<int>(distance < largest ? distance : largest));
  return static_cast<T>(n > 0 ? value * power : value / power);
}

}  // namespace

double VXTypeGetDoubleComponent(char code, const void* address) {
  if (!address) return 0;
  return visitComponent(code, 0.0, [=](auto component) { return static_cast<double>(component.load(address)); });
}

int VXTypeGetIntComponent(char code, const void* address) {
  if (!address) return 0;
  return visitComponent(code, 0, [=](auto component) {
    const auto value = component.load(address);
    if constexpr (std::is_floating_point_v<decltype(value)>) {
      return vx::truncateTo<int>(value);
    } else {
      return static_cast<int>(value);
    }
  });
}

void VXTypeSetDoubleComponent(char code, double value, void* address) {
  if (!address) return;
  visitComponent(code, false, [=](auto component) {
    using Type = typename decltype(component)::Type;
    component.store(component.isBool ? static_cast<Type>(value != 0) : vx::truncateTo<Type>(value), address);
    return true;
  });
}

void VXTypeSetIntComponent(char code, int value, void* address) {
  if (!address) return;
  visitComponent(code, false, [=](auto component) {
    using Type = typename decltype(component)::Type;
    component.store(static_cast<Type>(component.isBool ? value != 0 : value), address);
    return true;
  });
}

void VXTypeSetAllDoubleComponents(const VXTypeInfos* infos, double value, void* voxel) {
  if (!infos || !voxel) return;
  forEachComponent(*infos, [=](char code, VXuint32 offset) {
    VXTypeSetDoubleComponent(code, value, bytesAt(voxel, offset));
    return true;
  });
}

void VXTypeSetAllIntComponents(const VXTypeInfos* infos, int value, void* voxel) {
  if (!infos || !voxel) return;
  forEachComponent(*infos, [=](char code, VXuint32 offset) {
    VXTypeSetIntComponent(code, value, bytesAt(voxel, offset));
    return true;
  });
}

void VXTypeShiftLeftComponent(char code, const void* source, int n, void* result) {
  if (!source || !result) return;
  visitComponent(code, false, [=](auto component) {
    using Type = typename decltype(component)::Type;
    if (n == 0) {
      std::memmove(result, source, sizeof(Type));
      return true;
    }
    const Type value = component.load(source);
    if constexpr (std::is_floating_point_v<Type>) {
      component.store(shiftFloat(value, n), result);
    } else {
      component.store(component.isBool && n > 0 ? Type{0} : shiftInteger(value, n), result);
    }
    return true;
  });
}

void VXTypeShiftComponentsLeft(const VXTypeInfos* infos, const void* source, int n, void* result) {
  if (!infos) {
    vx::report(VX_ERROR, "VXTypeShiftComponentsLeft", VX_BAD_POINTER, "Invalid infos passed; ignoring call.");
    return;
  }
  if (!source || !result) return;
  forEachComponent(*infos, [=](char code, VXuint32 offset) {
    VXTypeShiftLeftComponent(code, bytesAt(source, offset), n, bytesAt(result, offset));
    return true;
  });
}
