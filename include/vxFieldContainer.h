/// \file vxFieldContainer.h
/// The fields of one module.

#ifndef VX_FIELD_CONTAINER_H
#define VX_FIELD_CONTAINER_H

#include "vxFields.h"

#include <iosfwd>
#include <string>
#include <type_traits>
#include <vector>

namespace vx {

class BaseOp;

/// The name of a field that is to be made, as a C text or a string. Null counts as empty.
class FieldName {
 public:
  /// \param name text, which is copied; may be null. \throw std::bad_alloc without memory.
  FieldName(const char* name) : _text(name ? name : "") {}
  /// \param name text, which is copied. \throw std::bad_alloc without memory.
  FieldName(const std::string& name) : _text(name) {}

  /// \return the text, which lives as long as this object.
  const std::string& getText() const noexcept { return _text; }

 private:
  std::string _text;
};

/// Makes and owns the fields of a module in an order, gives each a sensor that reports to the module, and finds them by
/// name or index.
///
/// Names need not be unique: a search takes the first field whose name is exactly the same, upper and lower case
/// included. The index of a field is its position.
///
/// A container must outlive every notification that runs through one of its fields, and a field must not be removed
/// while it notifies. Neither is tested. No function locks: a container belongs to one thread at a time, along with the
/// graph of its fields. Searches take linear time. std::bad_alloc of a function leaves the container as it was.
class VX_EXPORT FieldContainer {
 public:
  /// The callback of the sensors. \param userData the module. \param sensor the FieldSensor of the field.
  typedef FieldSensor::Callback Callback;

  /// Makes an empty container.
  /// \param baseOp the module, which sensors hand to the callback; not owned. \param callback what sensors call.
  /// Both may be null, but a field whose sensor has no callback can't notify.
  explicit FieldContainer(BaseOp* baseOp = nullptr, Callback callback = nullptr);

  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and makes an empty container.
  FieldContainer(const FieldContainer& other);
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  FieldContainer& operator=(const FieldContainer& other);

  /// Deletes the fields in order and then the sensors in order.
  virtual ~FieldContainer();

  VX_ROOT_CLASS_HEADER(FieldContainer)

  /// \return the module, or null.
  BaseOp* getBaseOp() const noexcept { return _baseOp; }

  /// \name Adding fields
  ///@{

  /// Appends a field, which the container owns from then on.
  /// \param field the field, made with `new` and in no other container. Null is reported as an error with
  ///        ::VX_FIELD_NOT_ADDED.
  /// \param createSensor whether the field gets a sensor that reports to the module. \return the field, or null.
  Field* addField(Field* field, bool createSensor);

  /// Makes a field by the name of its class, gives it a value and appends it.
  /// \param name name of the field. \param type name of the class, which may lack "Field" at the end.
  /// \param value its value, set before the field is in the container and so unheard. Null texts count as empty.
  /// \param createSensor as above.
  /// \return the field. Null, after an error report, for an unknown class (::VX_BAD_OBJECT_TYPE) and for one of which
  ///         no object can be made (::VX_BAD_FIELD_REQUEST).
  Field* addField(const char* name, const char* type, const char* value, bool createSensor);

  // The functions below make a field of a class, append it with a sensor, and return it. A value that isn't null is a
  // variable of the caller's, which must outlive the field; with null the field owns its value. A field that can't be
  // made is reported as fatal and then as addField() does with null; the result is then null.

  BoolField* addBool(const FieldName& name, bool* value = nullptr);           ///< Appends a truth value.
  IntField* addInt(const FieldName& name, VXint64* value = nullptr);          ///< Appends an integer.
  ToggleField* addToggle(const FieldName& name, int* value = nullptr);        ///< Appends a switch.
  FloatField* addFloat(const FieldName& name, float* value = nullptr);        ///< Appends a number of single precision.
  ProgressField* addProgress(const FieldName& name, float* value = nullptr);  ///< Appends a progress from 0 to 1.
  DoubleField* addDouble(const FieldName& name, double* value = nullptr);     ///< Appends a number of double precision.
  LongDoubleField* addLongDouble(const FieldName& name);                    ///< Appends a number of extended precision.
  StringField* addString(const FieldName& name);                            ///< Appends a text.
  NotifyField* addNotify(const FieldName& name);                            ///< Appends a trigger without a value.
  PointerField* addPointer(const FieldName& name);                          ///< Appends an untyped pointer.
  BaseField* addBase(const FieldName& name, Base** value = nullptr);        ///< Appends a pointer to an object.
  SoNodeField* addSoNode(const FieldName& name, SoNode** value = nullptr);  ///< Appends a pointer to a scene node.
  DicomTagListField* addDicomTagList(const FieldName& name, DicomTagList** value = nullptr);  ///< Appends a tag list.
  /// Appends a choice that owns its value. \param name name of the field. \param items texts of the items, copied.
  EnumField* addEnum(const FieldName& name, const std::vector<std::string>& items);
  /// Appends a choice. \param name name of the field. \param items texts of the items, copied. \param numItems their
  /// number; one that the field can't take makes it fail. \param value index of the current item.
  EnumField* addEnum(const FieldName& name, const char* const* items, VXint64 numItems, int* value = nullptr);
  Vec2fField* addVec2f(const FieldName& name, Tvec2<double>* value = nullptr);  ///< Appends a vector of two components.
  Vec3fField* addVec3f(const FieldName& name,
                       Tvec3<double>* value = nullptr);  ///< Appends a vector of three components.
  Vec4fField* addVec4f(const FieldName& name,
                       Tvec4<double>* value = nullptr);  ///< Appends a vector of four components.
  Vec6fField* addVec6f(const FieldName& name, Tvec6<double>* value = nullptr);  ///< Appends a vector of six components.
  ColorField* addColor(const FieldName& name,
                       Tvec3<double>* value = nullptr);  ///< Appends red, green and blue, 0 to 1.
  MatrixField* addMatrix(const FieldName& name, Tmat4<double>* value = nullptr);     ///< Appends a 4 by 4 matrix.
  VectorField* addVector(const FieldName& name, TVector<VXint64>* value = nullptr);  ///< Appends a voxel position.
  SubImgBoxField* addSubImgBox(const FieldName& name,
                               TSubImgBox<VXint64>* value = nullptr);                  ///< Appends a box of voxels.
  SubImgBoxfField* addSubImgBoxf(const FieldName& name, SubImgBoxf* value = nullptr);  ///< Appends a box in space.
  VXDataTypeField* addVXDataType(const FieldName& name, int* value = nullptr);         ///< Appends a voxel type.
  UniversalTypeField* addUniversalType(const FieldName& name);  ///< Appends a voxel value of a type to be set, now -1.

  /// Appends an image input of a module. It counts among the fields and among the inputs.
  /// \param name name of the field. \param op the module. \param index number of the input, not tested, and independent
  /// of its position.
  InputConnectorField* addInputConnector(const char* name, BaseOp* op, VXint64 index);
  /// The same under the name "input" with the index behind.
  InputConnectorField* addInputConnector(BaseOp* op, VXint64 index);
  /// Appends an image output of a module. It counts among the fields and among the outputs.
  /// \param name name of the field. \param op the module. \param index number of the output, not tested, and
  /// independent of its position.
  OutputConnectorField* addOutputConnector(const char* name, BaseOp* op, VXint64 index);
  /// The same under the name "output" with the index behind.
  OutputConnectorField* addOutputConnector(BaseOp* op, VXint64 index);
  ///@}

  /// Takes a field out and deletes it, and before that the sensors of this container that are attached to it. Fields
  /// behind it move up by one. \param field not a connector field, since the lists of inputs and outputs would keep it.
  /// \return whether the field was in the container; the sensors go in either case.
  bool removeField(Field* field);

  /// \name Looking up
  /// A search that meets a null entry is a fatal check with ::VX_BAD_POINTER.
  ///@{

  /// \return the number of fields.
  unsigned int getSize() const noexcept { return static_cast<unsigned int>(_fields.size()); }
  /// \return the number of image inputs.
  VXint64 getNumInputConnectorFields() const noexcept { return static_cast<VXint64>(_inputConnectorFields.size()); }
  /// \return the number of image outputs.
  VXint64 getNumOutputConnectorFields() const noexcept { return static_cast<VXint64>(_outputConnectorFields.size()); }
  /// \return whether there is a field of that name. Nothing is reported.
  bool hasField(const std::string& name) const;
  /// \return the first field of that name; null, after a warning with ::VX_BAD_FIELD, if there is none.
  Field* getField(const std::string& name) const;
  /// \return a field; null, after a warning with ::VX_BAD_INDEX, if the index isn't from 0 to below getSize().
  Field* getField(VXint64 index) const;
  /// The same for other integers.
  template <class Index, class = std::enable_if_t<std::is_integral<Index>::value>>
  Field* getField(Index index) const {
    return getField(static_cast<VXint64>(index));
  }
  /// \return the first index of a field, or -1.
  VXint64 getField(const Field* field) const;
  /// \return an image input, by its position among them. \throw std::out_of_range for an invalid index; nothing is
  ///         reported.
  InputConnectorField* getInputConnectorField(VXint64 index) const;
  /// \return an image output, by its position among them. \throw std::out_of_range for an invalid index; nothing is
  ///         reported.
  OutputConnectorField* getOutputConnectorField(VXint64 index) const;
  ///@}

  /// \name Values as text
  /// Errors are warnings; a null entry is a fatal check with ::VX_BAD_POINTER.
  ///@{

  /// \return the value of the first field of that name; an empty text, with ::VX_BAD_PARAMETER, if there is none.
  std::string getValue(const std::string& name) const;
  /// \return the value of a field; an empty text, with ::VX_BAD_INDEX, for a bad index.
  std::string getValue(VXint64 index) const;
  /// Sets the value of the first field of that name. Without one nothing is set (::VX_BAD_INDEX).
  void setValue(const std::string& name, const std::string& value);
  /// Sets the value of a field. With a bad index nothing is set (::VX_BAD_INDEX).
  void setValue(VXint64 index, const std::string& value);
  /// Sets the value of the first field of that name from the decimal text of a number.
  void setValue(const std::string& name, VXint64 value);
  ///@}

  /// Lets all fields notify again.
  void activateAttachments();
  /// Keeps all fields from notifying.
  void deactivateAttachments();

  /// Writes the fields with a line end between two of them, and "<noValidField>" for a null entry.
  friend VX_EXPORT std::ostream& operator<<(std::ostream& stream, const FieldContainer& container);

 protected:
  friend class BaseOp;
  /// Sets the module, for sensors that are made from now on.
  void _setBaseOp(BaseOp* baseOp) noexcept { _baseOp = baseOp; }

 private:
  // Position of the first field of a name; getSize() if there is none.
  std::size_t _find(const std::string& name) const;
  // The entry, which the caller has tested to be there. Null is a fatal check.
  Field& _entry(std::size_t index) const;
  bool _isIndex(VXint64 index) const noexcept;

 protected:
  BaseOp* _baseOp;                                            ///< The module, or null.
  Callback _callback;                                         ///< What the sensors call.
  std::vector<Field*> _fields;                                ///< Owned, in order of addition.
  std::vector<FieldSensor*> _fieldSensors;                    ///< Owned.
  std::vector<OutputConnectorField*> _outputConnectorFields;  ///< In order of addition; owned by `_fields`.
  std::vector<InputConnectorField*> _inputConnectorFields;    ///< In order of addition; owned by `_fields`.
};

/// Writes the fields, see the class.
VX_EXPORT std::ostream& operator<<(std::ostream& stream, const FieldContainer& container);

}  // namespace vx

#endif
