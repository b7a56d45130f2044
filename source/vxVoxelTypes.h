/// \file vxVoxelTypes.h
/// From the slot of a voxel type to the type that typed code is written for, and back.

#ifndef VX_VOXEL_TYPES_H
#define VX_VOXEL_TYPES_H

#include "vxCarrierTypes.h"
#include "vxStdTypeInfos.h"
#include "vxTypeInfos.h"

namespace vx {

/// Stands for a voxel type as an argument.
template <class T>
struct VoxelTag {
  using Type = T;
};

/// The slot of ::VXTypeInfosTable that typed code of a voxel type works through.
template <class T>
inline constexpr VXint32 slotOf = -1;
/// The voxel type of a slot, as member `Type`.
template <VXint32 slot>
struct SlotVoxel;

#define VX_DEFINE_STANDARD_SLOT(T, number)     \
  template <>                                  \
  inline constexpr VXint32 slotOf<T> = number; \
  template <>                                  \
  struct SlotVoxel<number> : VoxelTag<T> {};
VX_FOR_EACH_STANDARD_TYPE(VX_DEFINE_STANDARD_SLOT)
#undef VX_DEFINE_STANDARD_SLOT

template <unsigned int size, int id>
inline constexpr VXint32 slotOf<VXTCarrierType<size, id>> = id;

#define VX_DEFINE_CARRIER_SLOT(size, outputId, inputId)                     \
  template <>                                                               \
  struct SlotVoxel<outputId> : VoxelTag<VXTCarrierType<size, outputId>> {}; \
  template <>                                                               \
  struct SlotVoxel<inputId> : VoxelTag<VXTCarrierType<size, inputId>> {};
VX_FOR_EACH_CARRIER_SIZE(VX_DEFINE_CARRIER_SLOT)
#undef VX_DEFINE_CARRIER_SLOT

/// Whether a voxel type is a standard type.
template <class T>
inline constexpr bool isStandardVoxel = slotOf<T> >= 0 && slotOf<T> < 10;

/// Whether a voxel type is a carrier that is read.
template <class T>
inline constexpr bool isInputCarrier = slotOf<T> >= VX_INPUT_SLOT_OFFSET + 10;

/// The physical type in which voxels of `T` are stored.
template <class T>
inline constexpr VXDataType physicalTypeOf = isInputCarrier<T> ? slotOf<T> - VX_INPUT_SLOT_OFFSET : slotOf<T>;

#define VX_VISIT_STANDARD_SLOT(T, number) \
  case number:                            \
    visitor(VoxelTag<T>());               \
    return true;
#define VX_VISIT_OUTPUT_SLOT(size, outputId, inputId)    \
  case outputId:                                         \
    visitor(VoxelTag<VXTCarrierType<size, outputId>>()); \
    return true;
#define VX_VISIT_INPUT_SLOT(size, outputId, inputId)    \
  case inputId:                                         \
    visitor(VoxelTag<VXTCarrierType<size, inputId>>()); \
    return true;

/// Calls `visitor(VoxelTag<T>())` with the type of a slot that is written.
/// \return whether there is one: for slots 0 to 19. Otherwise nothing is called.
template <class Visitor>
bool visitOutputType(VXint32 slot, Visitor&& visitor) {
  switch (slot) {
    VX_FOR_EACH_STANDARD_TYPE(VX_VISIT_STANDARD_SLOT)
    VX_FOR_EACH_CARRIER_SIZE(VX_VISIT_OUTPUT_SLOT)
    default:
      return false;
  }
}

/// Calls `visitor(VoxelTag<T>())` with the type of a slot that is read.
/// \return whether there is one: for slots 0 to 9 and 30 to 39. Otherwise nothing is called.
template <class Visitor>
bool visitInputType(VXint32 slot, Visitor&& visitor) {
  switch (slot) {
    VX_FOR_EACH_STANDARD_TYPE(VX_VISIT_STANDARD_SLOT)
    VX_FOR_EACH_CARRIER_SIZE(VX_VISIT_INPUT_SLOT)
    default:
      return false;
  }
}

#undef VX_VISIT_STANDARD_SLOT
#undef VX_VISIT_OUTPUT_SLOT
#undef VX_VISIT_INPUT_SLOT

/// Whether a type is a standard type, whose push would change nothing and answer its number.
inline bool isStandardType(VXDataType dataType) { return dataType >= 0 && dataType < 10; }

/// Brings types into their slots for a scope.
class TypePush {
 public:
  /// A type that is written and read.
  explicit TypePush(VXDataType dataType) : TypePush(dataType, 0, dataType, 1) {}
  /// Two types. \param isInput1,isInput2 non-zero for one that is read.
  TypePush(VXDataType dataType1, int isInput1, VXDataType dataType2, int isInput2)
      : _pushed(isStandardType(dataType1) && isStandardType(dataType2)
                    ? VXTypePushInfo{{0, dataType1}, {0, dataType2}}
                    : VXTypeInfosPushAndSetTypes(dataType1, isInput1, dataType2, isInput2)) {}
  ~TypePush() {
    if (_pushed.first.pushInfo != 0 || _pushed.second.pushInfo != 0) VXTypeInfosPop(_pushed);
  }
  TypePush(const TypePush&) = delete;
  TypePush& operator=(const TypePush&) = delete;

  /// \return the slot of the first type, -1 if it is invalid.
  VXint32 getSlot() const { return _pushed.first.slot; }

 private:
  const VXTypePushInfo _pushed;
};

/// Brings a type that is read into its slot for a scope.
class InputTypePush {
 public:
  explicit InputTypePush(VXDataType dataType)
      : _pushed(isStandardType(dataType) ? VXTypePushSingleInfo{0, dataType} : VXTypeInfosPushAndSetInput(dataType)) {}
  ~InputTypePush() {
    if (_pushed.pushInfo != 0) VXTypeInfoPop(_pushed);
  }
  InputTypePush(const InputTypePush&) = delete;
  InputTypePush& operator=(const InputTypePush&) = delete;

  /// \return the slot, -1 if the type is invalid.
  VXint32 getSlot() const { return _pushed.slot; }

 private:
  const VXTypePushSingleInfo _pushed;
};

}  // namespace vx

#endif
