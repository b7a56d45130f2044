// The property bits of voxel types.

#include "vxTypeInfos.h"

namespace {

template <class Combine>
VXTypePropBits combine(VXTypePropBits a, const VXTypePropBits& b, Combine&& combineWords) {
  for (unsigned int word = 0; word < 4; ++word) a[word] = combineWords(a[word], b[word]);
  return a;
}

constexpr VXTypePropBits oneBit(unsigned int word, unsigned int bit) {
  VXTypePropBits bits = {};
  bits.words[word] = 1U << bit;
  return bits;
}

}  // namespace

#define VX_DEFINE_TYPE_PROPERTY(member, Name, signature, word, bit, reported) \
  constinit const VXTypePropBits VXTypeHas##Name = oneBit(word, bit);
#define VX_NO_TYPE_PROPERTY(member, Name, signature)
VX_FOR_EACH_TYPE_OPERATION(VX_DEFINE_TYPE_PROPERTY, VX_NO_TYPE_PROPERTY)
#undef VX_DEFINE_TYPE_PROPERTY
#undef VX_NO_TYPE_PROPERTY

constinit const VXTypePropBits VXTypeIsSignedType = oneBit(3, 4);
constinit const VXTypePropBits VXTypeIsFloatingPointType = oneBit(3, 5);
constinit const VXTypePropBits VXTypeIsIntegerType = oneBit(3, 6);
constinit const VXTypePropBits VXTypeIsBasicType = oneBit(3, 7);

constinit const VXTypePropBits VXTypeHasNoProperties = {{0, 0, 0, 0}};
constinit const VXTypePropBits VXTypeOnlyStandardTypes = {{0x0000ffff, 0xffffffff, 0x0000001f, 0x1fffff83}};
constinit const VXTypePropBits VXTypeFullyOperational = {{0x0000ffff, 0xffffffff, 0x0000001f, 0x1fffff03}};
constinit const VXTypePropBits VXTypeMinimumOperational = {{0x00000000, 0x00f0f000, 0x00000000, 0x000ff003}};

VXTypePropBits VXTypePropBitsOr(VXTypePropBits a, VXTypePropBits b) {
  return combine(a, b, [](VXuint32 x, VXuint32 y) { return x | y; });
}

VXTypePropBits VXTypePropBitsAnd(VXTypePropBits a, VXTypePropBits b) {
  return combine(a, b, [](VXuint32 x, VXuint32 y) { return x & y; });
}

VXTypePropBits VXTypePropBitsXor(VXTypePropBits a, VXTypePropBits b) {
  return combine(a, b, [](VXuint32 x, VXuint32 y) { return x ^ y; });
}

int VXTypePropBitsTest(VXTypePropBits bits, VXTypePropBits mask) {
  for (unsigned int word = 0; word < 4; ++word) {
    if ((bits[word] & mask[word]) != mask[word]) return 0;
  }
  return 1;
}
