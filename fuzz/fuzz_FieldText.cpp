// The text of fields: whatever the text, a field takes it without harm, notifies as documented, and gives a text that
// leaves it as it is.

#include "FieldListener.h"
#include "FuzzCheck.h"
#include "FuzzInput.h"

#include "vxFields.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

using namespace vx;

namespace {

using MakeField = std::unique_ptr<Field> (*)();

template <class F>
std::unique_ptr<Field> make() {
  return std::make_unique<F>("field");
}

// All but those with a target of their own below. DicomTagListField isn't here: it follows the address in its text,
// which has to come from a trusted source.
constexpr MakeField makers[] = {
    make<BoolField>,       make<ToggleField>,     make<IntField>,    make<FloatField>,  make<ProgressField>,
    make<DoubleField>,     make<LongDoubleField>, make<StringField>, make<NotifyField>, make<PointerField>,
    make<BaseField>,       make<SoNodeField>,     make<Vec2fField>,  make<Vec3fField>,  make<Vec4fField>,
    make<Vec6fField>,      make<ColorField>,      make<MatrixField>, make<VectorField>, make<SubImgBoxField>,
    make<SubImgBoxfField>, make<VXDataTypeField>,
};

// Whether the text of a number rounds up to an infinity when it is read.
bool hasLargestDouble(const std::string& text) { return text.find("e+308") != std::string::npos; }

// Sets a text, and then the one that the field makes of it. Both notify, and the second changes nothing.
void checkField(Field& field, const std::string& text) {
  test::FieldListener listener(field);
  field.setStringValue(text);
  const auto heard = listener.take();
  fuzz::require(heard.size() == 1 && heard[0] == FieldSensor::VX_FULL_NOTIFICATION, "a text notifies once");
  const std::string written = field.getStringValue();
  field.setStringValue(written);
  fuzz::require(listener.take().size() == 1, "a field's own text notifies once");
  if (hasLargestDouble(written) && !dynamic_cast<DoubleField*>(&field)) return;
  fuzz::requireEqual(field.getStringValue(), written, field.getTypeIdName(), fuzz::quote);
}

void checkConnection(Field& source, Field& destination) {
  source.attachField(&destination, 1);
  source.notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  source.detachAllFields();
}

void checkUniversal(fuzz::FuzzInput& input, const std::string& text) {
  UniversalTypeField field("field", static_cast<VXDataType>(input.takeInRange(0, 12) - 1));
  checkField(field, text);
  field.setDataType(static_cast<VXDataType>(input.takeInRange(0, 12) - 1));
  if (field.isValidValue() == 1) fuzz::require(!field.getStringValue().empty(), "a valid voxel has a text");
  field.getValueCastToLDouble();
}

bool beginsWithIndex(const std::string& item) {
  std::size_t i = 0;
  while (i < item.size() && std::isspace(static_cast<unsigned char>(item[i]))) ++i;
  if (i < item.size() && (item[i] == '-' || item[i] == '+')) ++i;
  return i < item.size() && std::isdigit(static_cast<unsigned char>(item[i])) && item.find(':') != std::string::npos;
}

void checkEnum(fuzz::FuzzInput& input, const std::string& text) {
  std::vector<std::string> items(input.takeInRange<std::size_t>(0, 4));
  for (std::string& item : items) item = input.takeText(12).c_str();
  if (!items.empty() && input.takeBool()) items.back() = text.substr(0, text.find('\0'));
  EnumField field("field", items);
  test::FieldListener listener(field);
  const auto isItem = [&items](const std::string& item) {
    return std::find(items.begin(), items.end(), item) != items.end();
  };
  field.setEnumValue(static_cast<int>(input.takeNumber()));
  listener.take();
  const std::string before = field.getStringValue();
  field.setStringValue(text);
  const bool isTaken = !listener.take().empty();
  const std::string written = field.getStringValue();
  fuzz::require(items.empty() ? written.empty() : isItem(written), "the text of a choice is one of its items");
  if (!isTaken) fuzz::requireEqual(written, before, "a refused text changes nothing", fuzz::quote);
  if (isTaken) fuzz::require(field.isValidValue() == 1, "a text that is taken names an item");
  if (isItem(text) && !beginsWithIndex(text)) fuzz::requireEqual(written, text, "an item is chosen", fuzz::quote);
  const auto index = static_cast<int>(input.takeNumber());
  field.setStringValueDefaulted(text, index);
  if (!items.empty() && !beginsWithIndex(written)) {
    field.setStringValue(written);
    fuzz::requireEqual(field.getStringValue(), written, "the text of a choice comes back", fuzz::quote);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::silenceMessages();
  fuzz::FuzzInput input(data, size);
  const std::size_t kind = input.takeInRange<std::size_t>(0, std::size(makers) + 1);
  const auto other = input.takeInRange<std::size_t>(0, std::size(makers) - 1);
  if (kind == std::size(makers)) {
    const std::string text = input.takeText(64);
    checkEnum(input, text);
    return 0;
  }
  if (kind > std::size(makers)) {
    const std::string text = input.takeText(255);
    checkUniversal(input, text);
    return 0;
  }
  const std::string text(input.takeRest());
  const std::unique_ptr<Field> field = makers[kind]();
  checkField(*field, text);
  checkConnection(*field, *makers[other]());
  return 0;
}
