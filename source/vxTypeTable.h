/// \file vxTypeTable.h
/// The table of all voxel types.

#ifndef VX_TYPE_TABLE_H
#define VX_TYPE_TABLE_H

#include "vxTypeInfos.h"

namespace vx {

/// Records and names of all types, indexed by number. It is empty before start-up and only grows; there is no
/// destructor, since types are asked for until the very end of the process or the unload of the library.
struct TypeTable {
  VXTypeInfos** records;
  const char** names;
  VXint32 numTypes;
  VXint32 capacity;

  /// Makes room for `numEntries` types in all. \return false without memory, and then nothing has changed.
  bool reserve(VXint32 numEntries) noexcept;
  /// Appends a type. \return its number, -1 without memory.
  VXDataType append(VXTypeInfos* infos) noexcept;
  /// Forgets all types and gives back the memory of the table.
  void release() noexcept;
  /// \return whether a type has that number.
  bool contains(VXDataType dataType) const noexcept { return dataType >= 0 && dataType < numTypes; }
};

/// The table of the process.
extern TypeTable typeTable;

}  // namespace vx

#endif
