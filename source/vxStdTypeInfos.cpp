#include "vxErrorOutput.h"
#include "vxStandardTypeTable.h"
#include "vxStdTypeInfosImpl.h"
#include "vxTraceBuffer.h"
#include "vxUtilsAPI.h"

#include <new>

namespace {

template <class T>
constexpr VXDataType numberOf = -1;
#define VX_DEFINE_NUMBER(T, number) \
  template <>                       \
  constexpr VXDataType numberOf<T> = number;
VX_FOR_EACH_STANDARD_TYPE(VX_DEFINE_NUMBER)
#undef VX_DEFINE_NUMBER

// The limits of a type as voxels, which a record points to.
template <class T>
struct LimitVoxels {
  static constexpr auto smallest = static_cast<vx::StoredVoxel<T>>(VXTStdTypeInfos<T>::_typeMin);
  static constexpr auto largest = static_cast<vx::StoredVoxel<T>>(VXTStdTypeInfos<T>::_typeMax);
  static constexpr auto byDefault = static_cast<vx::StoredVoxel<T>>(VXTStdTypeInfos<T>::_typeDefault);
};

}  // namespace

template <class T>
VXTypeInfos* VXTStdTypeInfos<T>::_myInfos = nullptr;

template <class T>
int VXTStdTypeInfos<T>::_numInstances = 0;

template <class T>
const char* const VXTStdTypeInfos<T>::_typeInfoString = vx::standardTypes[numberOf<T>].structInfoString;

template <class T>
const char* VXTStdTypeInfos<T>::typeName(T*) {
  return vx::standardTypes[numberOf<T>].name;
}

template <class T>
VXDataType VXTStdTypeInfos<T>::_rangeAndPrecisionEquiv(T) {
  return numberOf<T>;
}

template <class T>
void VXTStdTypeInfos<T>::_getGoodCastTos(T, VXuint64& count, const char**& names) {
  const vx::StandardType& type = vx::standardTypes[numberOf<T>];
  count = type.numGoodCastTos;
  // The list is for reading, only the type of the argument says otherwise.
  names = count > 0 ? const_cast<const char**>(type.goodCastTos) : nullptr;
}

template <class T>
VXTStdTypeInfos<T>::VXTStdTypeInfos() {
  const vx::TraceFrame trace("include/vxStdTypeInfos:VXTStdTypeInfos::VXTStdTypeInfos()");
  if (_numInstances > 0) {
    vx::report(VX_FATAL, "VXTStdTypeInfos", VX_MISUSED_INTERFACE, "Too many instances of VXTStdTypeInfos created.");
    return;
  }
  void* const memory = VXAlloc(sizeof(VXTypeInfos), VX_FATAL_MEMORY_ERROR);
  if (!memory) return;
  ++_numInstances;
  _myInfos = ::new (memory) VXTypeInfos();

  // Operations come first: the property bits follow from them.
  VXTypeSetDefaultFunctionPointers(_myInfos);
#define VX_SET_TYPE_OPERATION(member, Name, signature, word, bit, reported) _myInfos->member = &VXTYPE_##member;
#define VX_SET_PLAIN_TYPE_OPERATION(member, Name, signature) _myInfos->member = &VXTYPE_##member;
  VX_FOR_EACH_TYPE_OPERATION(VX_SET_TYPE_OPERATION, VX_SET_PLAIN_TYPE_OPERATION)
#undef VX_SET_TYPE_OPERATION
#undef VX_SET_PLAIN_TYPE_OPERATION

  using Voxels = LimitVoxels<T>;
  VXuint64 numGoodCastTos = 0;
  const char** goodCastTos = nullptr;
  _getGoodCastTos(_typeDefault, numGoodCastTos, goodCastTos);
  const auto* const component = reinterpret_cast<const unsigned char*>(&Voxels::byDefault);
  VXTypeInfosInit(_myInfos, sizeof(vx::StoredVoxel<T>), typeName(nullptr), static_cast<double>(_typeMin),
                  static_cast<double>(_typeMax), &Voxels::smallest, &Voxels::largest, &Voxels::byDefault,
                  _typeInfoString, 1, _rangeAndPrecisionEquiv(_typeDefault), &component, numGoodCastTos, goodCastTos);
}

#define VX_INSTANTIATE_STD_TYPE_INFOS(T, number) template class VXTStdTypeInfos<T>;
VX_FOR_EACH_STANDARD_TYPE(VX_INSTANTIATE_STD_TYPE_INFOS)
#undef VX_INSTANTIATE_STD_TYPE_INFOS
