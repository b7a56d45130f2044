/// \file vxGuards.h
/// Guards that all storeys use: the fatal check, guarded `new` and `delete`, the guarded block.

#ifndef VX_GUARDS_H
#define VX_GUARDS_H

#include "vxErrorOutput.h"

#include <new>
#include <type_traits>
#include <utility>

namespace vx {

/// Source position of a guard; made where the guard is called.
struct SourcePosition {
  const char* file;  ///< Source file.
  int line;          ///< Line in it.
  /// \param sourceFile,sourceLine the position, that of the call unless it is given.
  constexpr explicit SourcePosition(const char* sourceFile = __builtin_FILE(), int sourceLine = __builtin_LINE())
      : file(sourceFile), line(sourceLine) {}
};

/// Reports a broken guarantee by VXPrintAndNotifyFatal() and throws its code.
[[noreturn]] VX_EXPORT void throwFatal(VXErrorCode code, SourcePosition position = SourcePosition());

/// Fatal check: goes on if the condition holds, otherwise as throwFatal().
inline void checkFatal(bool condition, VXErrorCode code = VX_BAD_POINTER, SourcePosition position = SourcePosition()) {
  if (!condition) throwFatal(code, position);
}

/// Runs a block whose failures are reported by VXPrintAndNotifyFatal() and thrown on.
/// \param block what to run. \param code code of the report. \param position of the report. \return what the block
/// returns.
template <class Block>
decltype(auto) guardedBlock(Block&& block, VXErrorCode code = VX_UNKNOWN_EXCEPTION,
                            SourcePosition position = SourcePosition()) {
  try {
    return std::forward<Block>(block)();
  } catch (...) {
    VXPrintAndNotifyFatal(position.file, position.line, code);
    throw;
  }
}

/// Guarded `new`. A failure is reported as fatal: ::VX_NO_MEMORY if there was no memory, ::VX_CONSTRUCTOR_FAILED if
/// the constructor threw.
/// \return the object, which the caller owns, or null after a failure.
template <class T, class... Args>
T* guardedNew(SourcePosition position, Args&&... args) noexcept {
  void* memory = nullptr;
  try {
    // Memory and constructor apart, since their failures have different codes.
    if constexpr (alignof(T) > __STDCPP_DEFAULT_NEW_ALIGNMENT__) {
      memory = ::operator new(sizeof(T), std::align_val_t(alignof(T)));
    } else {
      memory = ::operator new(sizeof(T));
    }
    return ::new (memory) T(std::forward<Args>(args)...);
  } catch (...) {
    VXPrintAndNotifyFatal(position.file, position.line, memory ? VX_CONSTRUCTOR_FAILED : VX_NO_MEMORY);
    if constexpr (alignof(T) > __STDCPP_DEFAULT_NEW_ALIGNMENT__) {
      if (memory) ::operator delete(memory, std::align_val_t(alignof(T)));
    } else {
      if (memory) ::operator delete(memory);
    }
    return nullptr;
  }
}

/// Guarded `delete`: deletes the object and nulls the pointer. A destructor that throws is reported as fatal with
/// ::VX_DESTRUCTOR_FAILED, and the pointer is null all the same. Null is ignored.
template <class T>
void guardedDelete(T*& pointer, SourcePosition position = SourcePosition()) noexcept {
  T* object = std::exchange(pointer, nullptr);
  try {
    delete object;
  } catch (...) {
    VXPrintAndNotifyFatal(position.file, position.line, object ? VX_DESTRUCTOR_FAILED : VX_NO_MEMORY);
  }
}

}  // namespace vx

#endif
