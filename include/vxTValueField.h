/// \file vxTValueField.h
/// What the fields share whose value lies behind a pointer: who owns it, how it is stored, what a broken pointer does.

#ifndef VX_T_VALUE_FIELD_H
#define VX_T_VALUE_FIELD_H

#include "vxField.h"
#include "vxGuards.h"

#include <new>
#include <string>
#include <utility>

namespace vx {

/// Reports that a field has lost its value: as fatal, with ::VX_BAD_INTERNAL_POINTER.
/// \param label the function that was to give the value. \param returned what it gives instead, as text.
VX_EXPORT void reportBrokenValuePtr(const CallLabel& label, const char* returned) noexcept;

/// Base of the fields that keep their value behind a pointer.
///
/// The value is either a variable of the caller, which must outlive the field and keeps what it holds, or one that the
/// field makes itself and frees. The caller may read and write its variable; that notifies nobody. The pointer isn't
/// null in any field that was made by a public constructor; should a subclass break that, setters and getters of
/// references throw ::VX_BAD_POINTER after a fatal report, and getters of plain values report and give a fallback.
///
/// Fields of values can't be copied, since two would free one value. \tparam T type of the value.
template <class T>
class VX_EXPORT TValueField : public Field {
 public:
  TValueField(const TValueField&) = delete;
  TValueField& operator=(const TValueField&) = delete;

  /// Frees the value if the field made it.
  ~TValueField() override {
    if (_ownsValue) delete _valuePtr;
  }

 protected:
  /// Makes a field without a value, for a subclass that makes one in its own constructor.
  explicit TValueField(const std::string& name) : Field(name) {}

  /// \param name name of the field. \param value the caller's variable, or null for an own value.
  /// \param defaultValue what an own value starts as. \throw int ::VX_NO_MEMORY after a fatal report.
  TValueField(const std::string& name, T* value, const T& defaultValue = T()) : Field(name), _valuePtr(value) {
    if (!value) _makeOwnValue(defaultValue);
  }

  /// Makes the value, owned by the field. An exception of its constructor is reported as fatal with
  /// ::VX_CONSTRUCTOR_FAILED and passes on. \throw int ::VX_NO_MEMORY after a fatal report.
  template <class... Args>
  void _makeOwnValue(Args&&... args) {
    const SourcePosition position;
    try {
      _valuePtr = new T(std::forward<Args>(args)...);
    } catch (const std::bad_alloc&) {
      throwFatal(VX_NO_MEMORY, position);
    } catch (...) {
      VXPrintAndNotifyFatal(position.file, position.line, VX_CONSTRUCTOR_FAILED);
      throw;
    }
    _ownsValue = true;
  }

  /// \return the value. \throw int ::VX_BAD_POINTER after a fatal report if there is none.
  T& _getValue(SourcePosition position = SourcePosition()) const {
    checkFatal(_valuePtr != nullptr, VX_BAD_POINTER, position);
    return *_valuePtr;
  }

  /// \return the value; without one the zero of its type, after reportBrokenValuePtr().
  T _getValueOrReport(const CallLabel& label, const char* returned) const {
    if (_valuePtr) return *_valuePtr;
    reportBrokenValuePtr(label, returned);
    return T();
  }

  /// Stores a value and notifies with full strength, whether or not it differs from the one before.
  /// \throw int ::VX_BAD_POINTER after a fatal report if there is no place for it. Exceptions of those who are
  /// notified pass on; the value is stored then.
  void _setValue(const T& value, SourcePosition position = SourcePosition()) {
    _getValue(position) = value;
    notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }

  T* _valuePtr = nullptr;  ///< The value, owned if `_ownsValue` is set.
};

}  // namespace vx

#endif
