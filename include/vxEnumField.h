/// \file vxEnumField.h
/// The field of a choice.

#ifndef VX_ENUM_FIELD_H
#define VX_ENUM_FIELD_H

#include "vxTValueField.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vx {

/// A choice from a list of items, held as the index of the item.
///
/// Its text is that of the item; the first one if the index is out of range, and an empty one if there are no items. A
/// text that is read names an item, exactly, or has the form "index:item", where the index stands in for an item that
/// is gone. It is the only field that refuses texts.
class VX_EXPORT EnumField : public TValueField<int> {
 public:
  /// \param name name of the field. \param items the texts of the items, which are copied; null entries count as empty.
  /// May be null if `numItems` is 0. \param numItems how many, at most 2147483647. \param value the caller's
  /// variable; null for an own value, 0 at first.
  /// \throw int ::VX_BAD_POINTER after a fatal report for a number beyond that or for missing items, ::VX_NO_MEMORY
  /// without memory.
  EnumField(const std::string& name, const char* const* items, unsigned int numItems, int* value = nullptr);
  /// \copydoc EnumField(const std::string&,const char* const*,unsigned int,int*)
  EnumField(const std::string& name, const std::string* items, unsigned int numItems, int* value = nullptr);
  /// The same, with an own value.
  EnumField(const std::string& name, const std::vector<std::string>& items);

  /// Frees the items.
  ~EnumField() override;

  /// Chooses an item by its text and notifies.
  ///
  /// The item wins over an index in front of it; a difference is reported as a warning with ::VX_BAD_PARAMETER. For an
  /// unknown item the index is taken, if there is one in range, with such a warning. Otherwise the call is ignored,
  /// with such a warning, and nobody is notified.
  void setStringValue(const std::string& value) override;

  /// As setStringValue(), but for an unknown item another index is taken, without a report.
  /// \param value as there. \param defaultIndex index for an unknown item. If that is out of range, the call is ignored
  /// with a warning, ::VX_BAD_PARAMETER.
  void setStringValueDefaulted(const std::string& value, int defaultIndex);

  /// \return the text of the item that is chosen.
  std::string getStringValue() const override;

  /// \param index which item. \return its text.
  /// \throw int ::VX_BAD_POINTER after a fatal report if there is no such item.
  std::string getStringValue(unsigned int index) const;
  /// As getStringValue(unsigned int). \return the field's own text, good as long as the field.
  const char* getItemText(unsigned int index) const;

  /// \return 1 if the index is in range, else 0.
  VXint64 isValidValue() override;

  /// Stores any index, in range or not, and notifies.
  void setEnumValue(int value) { _setValue(value); }
  /// \return the index.
  int getEnumValue() const { return _getValueOrReport("EnumField::getEnumValue", "0"); }
  /// \return the number of items.
  unsigned int getEnumNum() const { return _numItems; }

  VX_CLASS_HEADER(EnumField)

 protected:
  /// Makes a field with an empty name and no items, for createCB().
  EnumField();

  unsigned int _numItems = 0;  ///< Length of `_items`.
  char** _items = nullptr;     ///< The texts, each a copy that the field owns.

 private:
  friend struct EnumFieldAccess;

  // Reports that this isn't allowed, and leaves a field with neither items nor value.
  explicit EnumField(const std::string& name);

  // Copies items; getItem(i) gives the text of item i.
  template <class GetItem>
  void _copyItems(unsigned int numItems, GetItem getItem);
  void _freeItems() noexcept;

  // Splits "index:item". Takes the text, leaves the item in it. Returns the index, or -1 if there is none of 32 bits.
  static int _stripItemIndex(std::string& text);

  // Chooses the item that is named, reports if index is another one than its own, and notifies. False if there is none.
  bool _chooseItem(const std::string& item, int index);
  bool _isInRange(int index) const { return index >= 0 && static_cast<unsigned int>(index) < _numItems; }
};

}  // namespace vx

#endif
