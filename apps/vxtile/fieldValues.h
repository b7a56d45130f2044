/// \file fieldValues.h
/// What fields take, and setting them so that nothing is lost in silence.

#ifndef VXTILE_FIELD_VALUES_H
#define VXTILE_FIELD_VALUES_H

#include "values.h"

#include "vxHandles.h"

namespace vxtile {

/// \return what a field takes, in words: "a whole number", "one of add, subtract".
std::string describeAccepted(VXField* field);

/// Sets a field. Texts are read as the class of the field needs it.
/// \param name of the field, for messages. \throw Failure ExitCode::network if the field doesn't take the value, or if
/// it holds another one afterwards because the value is beyond its limits.
void setField(VXField* field, const std::string& name, const Value& value);

/// Reads the name of a voxel type: one that the library knows, or short as "uint8" for "unsigned int8".
/// \return its number, or -1.
VXDataType readVoxelType(const std::string& name);

/// \return the names of all voxel types with commas between.
std::string voxelTypeNames();

}  // namespace vxtile

#endif
