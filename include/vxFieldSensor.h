/// \file vxFieldSensor.h
/// The ear of client code in the field graph.

#ifndef VX_FIELD_SENSOR_H
#define VX_FIELD_SENSOR_H

#include "vxTypes.h"

namespace vx {

class Field;

/// Calls a function when the field that it is attached to changes or is touched.
///
/// A sensor listens to one field at a time and owns nothing. Sensor and field know each other: whichever is destroyed
/// first leaves no pointer in the other. Attaching is guarded by flags of the whole process, without locks: all sensors
/// and fields of a process that are attached or detached belong to one thread at a time.
///
/// The callback may attach and detach any sensor, this one as well, and may delete other sensors. It must not delete
/// the sensor that calls it, nor the field that it listens to.
class VX_EXPORT FieldSensor {
 public:
  /// How strong a notification is.
  enum Strength : int {
    VX_NO_NOTIFICATION = 0,    ///< None is under way.
    VX_WEAK_NOTIFICATION = 1,  ///< Reaches an output connector field without invalidating its image.
    VX_FULL_NOTIFICATION = 2   ///< What the library raises itself.
  };

  /// Function that is called. \param userData as given to the constructor. \param sensor the FieldSensor that calls.
  typedef void (*Callback)(void* userData, void* sensor);

  /// Makes a sensor that is attached to no field.
  /// \param sensorCallback what to call; a null one is refused when it is to be called, not here.
  /// \param userData handed to the callback as it is; not owned, may be null.
  FieldSensor(Callback sensorCallback, void* userData);

  /// Copies the members and attaches nothing: the copy names the field of the original, which knows only the original
  /// and doesn't call the copy. The copy is to be detached or destroyed before that field is.
  FieldSensor(const FieldSensor&) = default;
  /// \copydoc FieldSensor(const FieldSensor&)
  FieldSensor& operator=(const FieldSensor&) = default;

  /// Detaches the sensor.
  virtual ~FieldSensor();

  /// Attaches the sensor at the end of a field's sensors. It leaves the field that it listened to.
  /// \param field the field; null is ignored. \throw std::bad_alloc without memory; the sensor is then detached.
  void attachField(Field* field);

  /// Takes the sensor from its field. Without a field nothing happens.
  void detachField();

  /// \return the field that the sensor listens to, or null.
  Field* getField() const noexcept { return _field; }

  /// \return the strength of the notification that is being delivered, #VX_NO_NOTIFICATION outside of the callback.
  Strength getNotificationStrength() const noexcept { return _strength; }

  /// Delivers a notification: calls the callback. Exceptions of it pass on.
  /// \param strength what getNotificationStrength() gives meanwhile.
  /// \throw int ::VX_BAD_POINTER after a fatal report if there is no callback.
  void callback(Strength strength);

 protected:
  Field* _field;       ///< The field that the sensor listens to, or null.
  Callback _callback;  ///< What is called.
  void* _userData;     ///< First argument of the callback.
  Strength _strength;  ///< Strength of the notification that is being delivered.
};

}  // namespace vx

#endif
