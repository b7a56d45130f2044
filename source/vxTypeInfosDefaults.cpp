// The defaults of a record's operations, and the property bits that follow from them.

#include "vxErrorOutput.h"
#include "vxTraceBuffer.h"
#include "vxTypeInfos.h"

#include <type_traits>

namespace {

// One function for each operation, so that a pointer that is still the default is known by its value.
template <class Operation, class Signature>
struct Default;

template <class Operation, class Result, class... Args>
struct Default<Operation, Result (*)(Args...)> {
  static Result call(Args...) {
    const vx::TraceFrame trace(Operation::name);
    _VXTypeInvalidOperation(Operation::name);
    if constexpr (std::is_same_v<Result, char*>) {
      // A copy, since whoever asks for a text gives it back.
      return VXStrDup("", VX_RETURN_NULL);
    } else if constexpr (!std::is_void_v<Result>) {
      return Result{};
    }
  }
};

#define VX_DEFINE_OPERATION(member, Name, signature, word, bit, reported) \
  struct Name##Operation {                                                \
    static constexpr char name[] = reported;                              \
  };
#define VX_NO_DEFAULT(member, Name, signature)
VX_FOR_EACH_TYPE_OPERATION(VX_DEFINE_OPERATION, VX_NO_DEFAULT)
#undef VX_DEFINE_OPERATION

// Bits of word 3 that tell what kind of type it is.
constexpr VXuint32 kindBits = 0xF0;

}  // namespace

void VXTypeSetDefaultFunctionPointers(VXTypeInfos* infos) {
  if (!infos) return;
#define VX_SET_DEFAULT(member, Name, signature, word, bit, reported) \
  infos->member = &Default<Name##Operation, signature>::call;
  VX_FOR_EACH_TYPE_OPERATION(VX_SET_DEFAULT, VX_NO_DEFAULT)
#undef VX_SET_DEFAULT
}

void VXTypeCorrectPropertyBits(VXTypeInfos* infos) {
  if (!infos) return;
  VXTypePropBits bits = {{0, 0, 0, infos->propertyBits[3] & kindBits}};
#define VX_SET_PROPERTY(member, Name, signature, word, bit, reported) \
  if (infos->member != &Default<Name##Operation, signature>::call) bits[word] |= 1U << (bit);
  VX_FOR_EACH_TYPE_OPERATION(VX_SET_PROPERTY, VX_NO_DEFAULT)
#undef VX_SET_PROPERTY
  infos->propertyBits = bits;
}

#undef VX_NO_DEFAULT

// The name of the operation stands in the trace, which its caller wrote.
void _VXTypeInvalidOperation(const char* /*operationName*/) {
  vx::report(VX_FATAL, "_VXTypeInvalidOperation: Invalid type operation called", VX_MISUSED_INTERFACE,
             "Ignoring call or returning 0.");
}
