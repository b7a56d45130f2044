/// \file vxTraceBuffer.h
/// The trace of running functions: what a debugger or a crash report reads to tell where the library was.

#ifndef VX_TRACE_BUFFER_H
#define VX_TRACE_BUFFER_H

#include "vxTypes.h"

#include <cstddef>

namespace vx {

/// Call stack and recent history of trace texts, for an index type whose width is the size of both rings.
///
/// Entry and exit of a function cost a few relaxed stores, with no call and no lock. The increments are not atomic:
/// under threads the trace may be garbled, which is accepted, since nothing else depends on it. The indices wrap by
/// their own width, so no access is ever out of bounds. Texts are literals and are not copied; a text of a module
/// library is not to be followed once that library is unloaded.
template <typename IndexType>
struct TraceBuffer {
  /// Number of entries of each of the two arrays.
  static constexpr std::size_t numEntries = std::size_t{1} << (8 * sizeof(IndexType));

  IndexType _stackTop;             ///< Number of active entries of the stack.
  IndexType _listIndex;            ///< Next entry of the list.
  const char* _stack[numEntries];  ///< The functions that are active, outermost first.
  const char* _list[numEntries];   ///< The last functions entered, in order of entry; never cleared.

  /// Notes the entry of a function. \param text a literal.
  void enter(const char* text) noexcept {
    const IndexType top = load(_stackTop);
    store(_stack[top], text);
    store(_stackTop, static_cast<IndexType>(top + 1));
    const IndexType index = load(_listIndex);
    store(_list[index], text);
    store(_listIndex, static_cast<IndexType>(index + 1));
  }

  /// Notes the exit of the function that was entered last.
  void leave() noexcept {
    const IndexType top = static_cast<IndexType>(load(_stackTop) - 1);
    store(_stackTop, top);
    store(_stack[top], static_cast<const char*>(nullptr));
  }

 private:
  // The compiler's builtins and not std::atomic: the members stay plain, and the accesses are no data race.
  template <typename T>
  static T load(const T& member) noexcept {
    return __atomic_load_n(&member, __ATOMIC_RELAXED);
  }
  template <typename T>
  static void store(T& member, T value) noexcept {
    __atomic_store_n(&member, value, __ATOMIC_RELAXED);
  }
};

/// The trace of the process. All threads write to it.
VX_EXPORT extern TraceBuffer<unsigned short> VXGlobalTraceBuffer;

/// Traces the block that it stands in: entry at construction, exit at every way out, exceptions among them.
/// \code const TraceFrame trace("source/vxHost:Host::getTile()"); \endcode
class TraceFrame {
 public:
  /// \param text a string literal, of the form source unit, colon, function.
  template <std::size_t N>
  explicit TraceFrame(const char (&text)[N]) noexcept {
    VXGlobalTraceBuffer.enter(text);
  }
  ~TraceFrame() { VXGlobalTraceBuffer.leave(); }
  TraceFrame(const TraceFrame&) = delete;
  TraceFrame& operator=(const TraceFrame&) = delete;
};

}  // namespace vx

#endif
