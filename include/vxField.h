/// \file vxField.h
/// The abstract field: a named parameter of a module, and a node of the graph that carries changes.

#ifndef VX_FIELD_H
#define VX_FIELD_H

#include "vxFieldSensor.h"
#include "vxRuntime.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace vx {

/// A named, typed parameter whose value can always be written and read as text, and which tells others of its changes.
///
/// A field has destinations, which it notifies or hands its value to; sources, which do the same to it; and sensors,
/// through which client code hears. None of them is owned. Whichever of two connected objects is destroyed first
/// leaves no pointer in the other. Rings are allowed: a field that is notifying ignores further notifications.
///
/// Every setter of a subclass stores the value and then calls notifyAttachments() with full strength.
///
/// What may be destroyed while a notification runs: sensors other than the one whose callback runs, and fields that
/// aren't notifying. A field that is notifying, so each one on the way from the first sender to the running callback,
/// must outlive its notification, and so must a container that owns one.
///
/// No function locks. The graph of fields and sensors belongs to one thread at a time. The order of the virtual
/// functions is binding for module libraries. Unless it says otherwise, a function takes time in proportion to the
/// number of attachments of the fields that it names, and functions that attach may throw std::bad_alloc, in which
/// case nothing is attached.
class VX_EXPORT Field {
 public:
  /// Makes a field with an empty name.
  Field() = default;
  /// \param name the name; nothing demands that it is unique or has a certain form.
  explicit Field(const std::string& name);

  /// Copies all members as they are and registers with nobody: the fields and sensors that the copy names don't know
  /// it. Destroying such a copy detaches the sensors that it names from their field, and leaves entries for them there:
  /// a field that is attached is not to be copied, unless the copy is detached by other means.
  Field(const Field&) = default;
  /// \copydoc Field(const Field&)
  Field& operator=(const Field&) = default;

  /// Detaches the sensors, the destinations and the sources, without a notification.
  virtual ~Field();

  /// \name Value as text
  ///@{

  /// Sets the value from a text and notifies. \param value any text; each class says what becomes of an unreadable one.
  virtual void setStringValue(const std::string& value) = 0;
  /// \return the value as text.
  virtual std::string getStringValue() const = 0;
  /// \return 1 if the value can be used, else 0. Always 1 here.
  virtual VXint64 isValidValue();
  ///@}

  /// \name Sensors
  ///@{

  /// Appends a sensor, which leaves the field that it listened to. \param sensor null, or one that is attached here
  /// already, is ignored.
  virtual void attachFieldSensor(FieldSensor* sensor);
  /// Takes a sensor away. \param sensor null, or one that isn't attached here, is ignored.
  virtual void detachFieldSensor(FieldSensor* sensor);
  /// Takes all sensors away, the last one first.
  virtual void detachFieldSensors();
  /// As notifyAttachments(), but destinations hear nothing.
  virtual void notifyAttachedSensors(FieldSensor::Strength strength);
  ///@}

  /// \name Fields
  ///@{

  /// Attaches a destination.
  ///
  /// For a new destination, a flag other than 0 copies the value to it at once. For one that is attached already, only
  /// the flag is changed and nothing is copied. The field itself and rings are allowed.
  /// \param destination the field to be told of changes; null is ignored.
  /// \param flag 0: changes touch the destination. Otherwise: they hand it the value as text.
  virtual void attachField(Field* destination, VXint16 flag);
  /// Detaches a destination, or takes one step back: with a flag other than 0, a connection that was first made as
  /// touch-only and copies values now becomes touch-only again and stays.
  /// \param destination null, or one that isn't attached, is ignored. \param flag 0: detach in any case.
  virtual void detachField(Field* destination, VXint16 flag);
  /// Detaches the field from its sources, the last one first.
  virtual void detachSourceFields();
  /// Detaches all destinations, the last one first.
  virtual void detachDestinationFields();
  /// Detaches all destinations and then all sources.
  virtual void detachAllFields();
  /// \return the number of destinations.
  virtual unsigned int getNumDestinationFields();
  /// \return a destination, in order of attachment; null for an index that isn't below their number.
  virtual Field* getDestinationField(unsigned int index);
  /// \return the number of sources.
  virtual unsigned int getNumSourceFields();
  /// \return a source, in order of attachment; null for an index that isn't below their number.
  virtual Field* getSourceField(unsigned int index);
  ///@}

  /// \name Notification
  ///@{

  /// Tells the sensors and then the destinations, each in order of attachment.
  ///
  /// Nothing happens while the field notifies already, while it is deactivated, or while the counter of
  /// enableNotifications() is exactly 0. Destinations are always told with full strength. The numbers of sensors and
  /// destinations are read afresh before each call: one that is attached meanwhile is called, and if one that was
  /// called detaches itself, the next is passed over.
  ///
  /// An exception of a sensor or a destination is reported as fatal with ::VX_UNKNOWN_EXCEPTION and thrown on. The
  /// field then counts as notifying for good and is silent from there on; others aren't affected.
  /// Cost: no allocation, except that destinations which take the value have it written and read as text.
  /// \param strength what sensors hear.
  virtual void notifyAttachments(FieldSensor::Strength strength);
  /// Lets nobody hear of this field until activateAttachments(). Notifications are dropped, not kept for later.
  virtual void deactivateAttachments();
  /// Lets the field notify again. It raises no notification itself.
  virtual void activateAttachments();
  /// \return 1 if the field is active, else 0.
  virtual VXint64 isActiveAttachments();
  ///@}

  /// \return whether the value is somebody else's variable, that is, not owned by the field.
  virtual bool hasReferencedValue() const;

 protected:
  /// Notes a source; the second half of its attachField(). \param source null, or one that is noted, is ignored.
  virtual void attachSourceField(Field* source);
  /// Forgets a source; the second half of its detachField(). \param source null is ignored.
  virtual void detachSourceField(Field* source);

  VX_ABSTRACT_ROOT_CLASS_HEADER(Field)

  /// \return the name.
  const std::string& getName() const noexcept { return _name; }
  /// Changes the name, without a notification.
  void setName(const std::string& name) { _name = name; }

  /// \return the length of getStringValue() in characters, without a terminator.
  VXint64 getCStringValueSize() const;
  /// Copies the value's text as `strncpy` does: the rest of the memory is filled with zeros, and there is no terminator
  /// if the text is as long as `size` or longer.
  /// \param dest the caller's memory; not null unless `size` is 0. \param size its characters; below 1 copies nothing.
  void copyCStringValue(char* dest, VXint64 size) const;

  /// \name Switch for the notifications of all fields
  /// A counter: calls nest. Nothing stops it from going below 0, where fields notify although
  /// isEnabledNotifications() says 0; only a counter of exactly 0 keeps them silent.
  ///@{

  /// Adds 1 to the counter.
  static void enableNotifications() noexcept { ++enableNotificationsCounterState(); }
  /// Subtracts 1 from the counter.
  static void disableNotifications() noexcept { --enableNotificationsCounterState(); }
  /// \return 1 if the counter is at least 1, else 0.
  static VXint64 isEnabledNotifications() noexcept { return enableNotificationsCounterState() >= 1 ? 1 : 0; }
  /// \return the counter, initially 1, for saving and restoring it.
  static VXint64& enableNotificationsCounterState() noexcept;
  ///@}

 private:
  // Runs a notification unless one runs already or it is switched off. Sensors first, then the destinations.
  void _notify(FieldSensor::Strength strength, bool areDestinationsTold);

 protected:
  std::string _name;                       ///< The name.
  std::vector<FieldSensor*> _sensors;      ///< In order of attachment, each once.
  std::vector<Field*> _destinations;       ///< In order of attachment, each once.
  std::vector<VXint16> _copyValueFlags;    ///< For each destination: not 0 if it takes the value as text.
  std::vector<VXint16> _touchOriginFlags;  ///< For each destination: 1 if it was first attached as touch-only.
  std::vector<Field*> _sources;            ///< In order of attachment, each once.
  bool _isNotifying = false;               ///< Whether a notification of this field is running.
  bool _isActive = true;                   ///< False suppresses all notifications of this field.
  bool _ownsValue = false;                 ///< Whether the subclass made the value itself and frees it.

  static VXint64 _enableNotifications;  ///< Fields notify unless this is 0.
};

/// Writes the name, " : " and the value as text.
VX_EXPORT std::ostream& operator<<(std::ostream& stream, const Field& field);

}  // namespace vx

#endif
