/// \file vxHandles.h
/// The handles of the C interface as objects that give back what they hold.

#ifndef VXTILE_VX_HANDLES_H
#define VXTILE_VX_HANDLES_H

#include "failure.h"

#include "vxAPI.h"

#include <memory>
#include <string>

namespace vxtile {

/// Checks that the library fits for as long as it is used, and stops it.
class Library {
 public:
  /// \throw Failure ExitCode::library
  Library() {
    if (!VXInit(VX_C_API_MAJOR_VERSION, VX_C_API_MINOR_VERSION, VX_C_API_RELEASE_VERSION)) {
      throw Failure(ExitCode::library, "libVX does not fit this program");
    }
  }
  ~Library() { VXDestroy(); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
};

struct ModuleDeleter {
  void operator()(VXBaseOp* module) const { VXDeleteModule(module); }
};
/// A module that is deleted with its holder.
using ModuleHandle = std::unique_ptr<VXBaseOp, ModuleDeleter>;

/// A message callback that ends with its holder.
class MessageListener {
 public:
  MessageListener(VXMessageCB callback, void* userData)
      : _handle(VXAddMessageCB(callback, userData, VX_WARNING | VX_ERROR | VX_FATAL | VX_DEBUG)) {}
  ~MessageListener() { VXRemoveMessageCB(_handle); }
  MessageListener(const MessageListener&) = delete;
  MessageListener& operator=(const MessageListener&) = delete;

 private:
  VXCallbackHandle _handle;
};

/// Progress and break check of the host, which end with their holder.
class HostCallbacks {
 public:
  HostCallbacks(void* userData, VXProgressCB progress, VXBreakCheckCB breakCheck) {
    VXHostSetProgressCB(userData, progress);
    VXHostSetBreakCheckCB(userData, breakCheck);
  }
  ~HostCallbacks() {
    VXHostSetProgressCB(nullptr, nullptr);
    VXHostSetBreakCheckCB(nullptr, nullptr);
  }
  HostCallbacks(const HostCallbacks&) = delete;
  HostCallbacks& operator=(const HostCallbacks&) = delete;
};

/// \return a text that may be null, as one that isn't.
inline std::string textOrEmpty(const char* text) { return text ? text : ""; }

/// \return the name of a field's class.
inline std::string classOf(VXField* field) { return textOrEmpty(VXFieldGetType(field)); }

/// \return whether a field is one of a class or of one derived from it.
inline bool isField(VXField* field, const char* className) {
  const std::string type = classOf(field);
  return !type.empty() && VXTypeIsDerivedFrom(VXTypeFromName(type.c_str()), className) != 0;
}

inline bool isInput(VXField* field) { return isField(field, "InputConnectorField"); }
inline bool isOutput(VXField* field) { return isField(field, "OutputConnectorField"); }

/// \return the value of a field as a text.
inline std::string valueText(VXField* field) {
  std::string text(static_cast<std::size_t>(VXFieldGetValueSize(field)) + 1, '\0');
  VXFieldGetValue(field, text.data(), static_cast<int>(text.size()));
  return text.c_str();
}

}  // namespace vxtile

#endif
