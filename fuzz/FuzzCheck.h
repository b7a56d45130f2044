// What fuzz targets demand, and how it fails.

#ifndef VX_FUZZ_CHECK_H
#define VX_FUZZ_CHECK_H

#include "vxErrorOutput.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace vx::fuzz {

/// Ends the program as a crash, which both drivers keep the input of.
[[noreturn]] inline void fail(const std::string& what, const char* file = __builtin_FILE(),
                              int line = __builtin_LINE()) {
  std::fprintf(stderr, "%s:%d: %s\n", file, line, what.c_str());
  std::abort();
}

/// Demands that something holds. \param what what is wrong otherwise.
inline void require(bool condition, const char* what, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
  if (!condition) fail(what, file, line);
}

/// Demands that two values are equal. \param print gives the text of a value.
template <class Value, class Print>
void requireEqual(const Value& is, const Value& shouldBe, const char* what, Print print,
                  const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (!(is == shouldBe)) fail(std::string(what) + ": " + print(is) + " instead of " + print(shouldBe), file, line);
}

/// Keeps the messages of the library from the error stream, where they would drown all else. Callbacks still hear them.
inline void silenceMessages() { VXErrorOutput.sendMessagesToCerr(false); }

/// A text between quotes, with the characters escaped that a terminal doesn't show.
inline std::string quote(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    char escaped[8];
    const auto code = static_cast<unsigned char>(c);
    std::snprintf(escaped, sizeof escaped, code < 0x20 || code > 0x7e ? "\\x%02x" : "%c", code);
    quoted += escaped;
  }
  return quoted + "'";
}

}  // namespace vx::fuzz

#endif
