#include "vxMemoryImg.h"

#include "vxBaseOp.h"
#include "vxCLocale.h"
#include "vxDataTypes.h"
#include "vxErrorOutput.h"
#include "vxMemory.h"
#include "vxTraceBuffer.h"

#include <cstdio>

namespace vx {

VX_CLASS_SOURCE(MemoryImg, "NULL")

MemoryImg::~MemoryImg() { VXFree(_subImg.getData()); }

int MemoryImg::update(BaseOp* op, VXint64 outIndex, const SubImgBox& box, int dataType) {
  const TraceFrame trace("source/vxMemoryImg:MemoryImg::update()");
  // Nothing holds while the memory changes, nor if the request of the tile leaves by an exception.
  _valid = false;
  const SubImgBox region = box;  // which may be that of the block
  const VXuint64 oldBytes = _numBytes();
  const VXuint64 newBytes = _numBytes(VXSizeOf(dataType), region);
  int code = VX_RESULT_OK;
  if (newBytes == 0) {
    VXFree(_subImg.getData());
    _subImg.setData(nullptr);
  } else if (newBytes != oldBytes) {
    void* const data = VXRealloc(_subImg.getData(), newBytes, VX_RETURN_NULL);
    if (!data) {
      VXFree(_subImg.getData());
      report(VX_FATAL, "MemoryImg::update", VX_NO_MEMORY, "Continuing. Returning empty memory image");
      code = VX_NO_MEMORY;
    }
    _subImg.setData(data);
  }
  _subImg.setDataType(dataType);
  _subImg.setBox(code == VX_RESULT_OK ? region : SubImgBox());
  if (code != VX_RESULT_OK) return code;
  if (!op || newBytes == 0) return VX_BAD_MODULE_POINTER;
  code = BaseOp::getTile(op, outIndex, _subImg);
  _valid = code == VX_RESULT_OK;
  return code;
}

void MemoryImg::clearMemoryImg() {
  if (!_manualControl) update(nullptr, 0, SubImgBox(), VXuint8Type);
}

VXuint32 MemoryImg::getMemoryImgSize() const { return static_cast<VXuint32>(_numBytes()); }

std::string MemoryImg::getAsString() const {
  const TraceFrame trace("source/vxMemoryImg:MemoryImg::getAsString()");
  const CLocaleScope cLocale;
  const SubImgBox box = _subImg.getBox();
  char text[500] = "";
  std::snprintf(text, sizeof text,
                "[this=%p, Datatype=%s, Valid=%d, SubImg.isValid=%d, SubImg.isUpToDate()=%d, ManualControl=%d, "
                "Box=(v1=(%lld,%lld,%lld,%lld,%lld,%lld), v2=(%lld,%lld,%lld,%lld,%lld,%lld)), dataPtr=%p]",
                static_cast<const void*>(this), VXNameFromDataType(_subImg.getDataType()), _valid ? 1 : 0,
                _numBytes() != 0 ? 1 : 0, _subImg.isUpToDate() ? 1 : 0, _manualControl ? 1 : 0, box.v1.x, box.v1.y,
                box.v1.z, box.v1.c, box.v1.t, box.v1.u, box.v2.x, box.v2.y, box.v2.z, box.v2.c, box.v2.t, box.v2.u,
                _subImg.getData());
  return text;
}

VXuint64 MemoryImg::_numBytes() const {
  // The type may have another size by now than when the memory was allocated.
  return _subImg.getData() ? _numBytes(_subImg.getDataTypeSize(), _subImg.getBox()) : 0;
}

VXuint64 MemoryImg::_numBytes(VXuint32 voxelSize, const SubImgBox& box) {
  VXuint64 numVoxels = 0;
  VXuint64 numBytes = 0;
  if (voxelSize == 0) return 0;
  return box.getNumVoxelsChecked(numVoxels) && multiplySizes(numVoxels, voxelSize, numBytes) ? numBytes : ~VXuint64{0};
}

}  // namespace vx
