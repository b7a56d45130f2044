/// \file vxModuleTools.h
/// What the standard modules share: a base class, the choice of voxel types, walks over rows, borders and pages.

#ifndef VX_MODULE_TOOLS_H
#define VX_MODULE_TOOLS_H

#include "vxAPI.h"
#include "vxModule.h"
#include "vxRowStore.h"

#include <string>
#include <vector>

namespace vx::modules {

/// Position or extent in voxels.
using Vector = TVector<VXint64>;

/// A number as short as possible, for messages and text fields; the C locale's form.
std::string numberText(double value);
/// An extent as "x y z c t u".
std::string extentText(const Vector& extent);

/// Base of the standard modules. Fields refer to members, which are set before the fields are made, so that making a
/// module notifies nobody; a calculation reads the members. Any change of a field or an input makes the outputs new.
class StandardModule : public BaseOp {
 protected:
  StandardModule(int numInputs, int numOutputs) : BaseOp(numInputs, numOutputs) {}

  FieldContainer& fields() { return *getFieldContainer(); }
  /// Appends an enumeration. \param items literals. \param value member with the chosen index.
  template <std::size_t numItems>
  void addEnum(const char* name, const char* const (&items)[numItems], int* value) {
    fields().addEnum(name, items, static_cast<VXint64>(numItems), value);
  }
  /// Appends the field "outputType": "automatic" or the name of a standard type.
  void addOutputType();
  /// \return the chosen type. \param automatic what "automatic" stands for; a registered type is replaced by the
  /// standard type that it behaves like.
  VXDataType getOutputType(VXDataType automatic) const;

  /// Declares an output invalid and says why. For calcOutImageProps().
  void invalidate(const std::string& text, VXErrorCode code = VX_BAD_PARAMETER, int outIndex = 0);
  /// Invalidates the output if an enumeration holds no valid index. \return whether it does.
  bool isValidEnum(const char* name, int value, int numItems);

  /// The voxels of a page that lie in the image. \param box region of the page.
  SubImgBox getValidBox(const SubImgBox& box, int outIndex = 0) const {
    return SubImgBox::intersect(box, getOutImg(outIndex)->getBoxFromImgExt());
  }
  bool isConnected(int inIndex) const { return getInImg(inIndex, true) != nullptr; }

  /// Asks the application whether to go on, then calculates the page. \throw int ::VX_PAGE_CALCULATION_FAILED to stop.
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs, ThreadInfo& threadInfo) override;
  using BaseOp::calcOutSubImage;
  void handleNotification(Field* field) override;
  /// Makes all outputs new.
  void touchOutputs();

 private:
  int _outputType = 0;
};

/// Registers a module while its library is loaded, and removes it when the library is unloaded.
template <class Module>
struct Registration {
  Registration() { Module::initClass(nullptr, nullptr); }
  ~Registration() {
    if (VXIsCurrentlyUnloadingLibrary()) Module::destroyClass();
  }
};

/// What the source of a module ends with.
#define VX_MODULE_SOURCE(X)              \
  VX_CLASS_SOURCE(X, "BaseOp")           \
  namespace {                            \
  const Registration<X> registration##X; \
  }

// Voxels ------------------------------------------------------------------------------------------------------------

/// The first voxel of a block at a position of the image.
template <class T>
T* voxelAt(const SubImg& block, const Vector& position) {
  return static_cast<T*>(block.getData()) + dot(position - block.getPosition(), block.getStride());
}
/// The same in bytes, for any type.
inline unsigned char* bytesAt(const SubImg& block, const Vector& position) {
  const auto offset = dot(position - block.getPosition(), block.getStride()) * VXint64{block.getDataTypeSize()};
  return static_cast<unsigned char*>(block.getData()) + offset;
}

/// Calls f(position) for the first position of each row of a box, in memory order.
template <class F>
void forEachRow(const SubImgBox& box, F&& f) {
  if (box.isEmpty()) return;
  Vector p = box.v1;
  for (p.u = box.v1.u; p.u <= box.v2.u; ++p.u)
    for (p.t = box.v1.t; p.t <= box.v2.t; ++p.t)
      for (p.c = box.v1.c; p.c <= box.v2.c; ++p.c)
        for (p.z = box.v1.z; p.z <= box.v2.z; ++p.z)
          for (p.y = box.v1.y; p.y <= box.v2.y; ++p.y) f(static_cast<const Vector&>(p));
}

/// Writes part of a page row by row. \param f f(position, values, number) computes a row in double precision, which is
/// stored in the type of the page, rounded and limited as by saturateTo(). \param box part of the page.
template <class F>
void writeRows(const SubImg& page, const SubImgBox& box, F&& f) {
  if (box.isEmpty()) return;
  const auto number = static_cast<std::size_t>(box.getExt().x);
  std::vector<double> values(number);
  const StoreRow<double> store = getStoreRow<double>(page.getDataType());
  forEachRow(box, [&](const Vector& position) {
    f(position, values.data(), number);
    store(values.data(), bytesAt(page, position), number);
  });
}

/// Sets the voxels of a block outside a box. \param value limited to the range of the block's type.
void fillOutside(SubImg& block, const SubImgBox& box, double value);

/// What stands in for voxels past the border of an image.
enum Border : int { clampBorder = 0, fillBorder = 1 };
inline constexpr const char* borderItems[] = {"clamp", "fill"};
/// Sets the voxels of an input block that lie past the image: to the nearest voxel of the image, or to a value.
void extendBorders(SubImg& block, const SubImgBox& image, int border, double fillValue);

/// A box that is larger by a margin on both sides; an empty one stays empty.
SubImgBox grow(const SubImgBox& box, const Vector& margin);

// Image properties --------------------------------------------------------------------------------------------------

/// A page extent for modules that need neighbours: long enough in each dimension that the margins are a small share,
/// small enough for the processor's cache, and such that pages don't reach far past the image.
/// \param margin neighbours on each side. \param maxVoxels bound of the page's voxels, at least 1024.
Vector chooseMarginPageExt(const Vector& imgExt, const Vector& margin, VXint64 maxVoxels);

/// Sets both extents of an image. One after the other they might ask for too many pages meanwhile.
void setExtents(PagedImg& image, const Vector& imgExt, const Vector& pageExt);

/// Puts a mapping of voxel coordinates in front of the world matrix: voxels of the output to those of the input.
void appendVoxelMapping(PagedImg& image, const Tmat4<double>& mapping);

/// Multiplies the components. \return whether all are above 0 and the product, in bytes, fits 62 bits.
bool isUsableExtent(const Vector& extent, VXuint64 voxelSize = 8);

}  // namespace vx::modules

#endif
