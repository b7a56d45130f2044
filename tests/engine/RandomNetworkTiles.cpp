// Requests of tiles, and their comparison with whole images.

#include "RandomNetwork.h"

#include "vxCachedBuffer.h"
#include "vxDataTypes.h"
#include "vxHost.h"
#include "vxPagedImg.h"
#include "vxUtilsAPI.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>

namespace vx::test {

namespace {

constexpr unsigned char untouched = 0xA5;
constexpr std::size_t guard = 64;

// The ways in which a tile may be asked for.
enum Form : int { givenMemory, allocatedMemory, givenBlock, blockWithoutMemory, cachedBuffer, numForms };

// The pages that cover a region of an image, as one box.
PlainBox coverOf(const PlainBox& region, const PlainPosition& pageExt) {
  PlainBox cover;
  for (std::size_t d = 0; d < 6; ++d) {
    cover.low[d] = region.low[d] / pageExt[d] * pageExt[d];
    cover.high[d] = (region.high[d] / pageExt[d] + 1) * pageExt[d] - 1;
  }
  return cover;
}

std::string hexText(const unsigned char* bytes, std::size_t size) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    text += digits[bytes[i] >> 4];
    text += digits[bytes[i] & 15];
  }
  return text;
}

}  // namespace

struct RandomNetwork::Tile {
  int node = 0;
  int outIndex = 0;
  PlainBox box;
  int type = plainUint8;
  double scale = 1, shift = 0;
  int form = givenMemory;
  std::vector<unsigned char> voxels;

  std::size_t numBytes() const { return static_cast<std::size_t>(box.size()) * plainSize(type); }
  std::string toText() const {
    std::ostringstream text;
    text << "tile of " << node << "." << outIndex << " " << vx::test::toText(box) << " type " << type << " mapped by "
         << scale << ", " << shift << " form " << form;
    return text.str();
  }
};

RandomNetwork::Tile RandomNetwork::randomTile(int node, int outIndex, const PlainImage* image) {
  Tile tile;
  tile.node = node;
  tile.outIndex = outIndex;
  const PlainPosition ext = image ? image->ext : PlainPosition{4, 4, 1, 1, 1, 1};
  const long long where = _dice.number(0, 9);
  do {
    for (std::size_t d = 0; d < 6; ++d) {
      const long long last = ext[d] - 1;
      if (where == 0) {
        tile.box.low[d] = 0, tile.box.high[d] = last;
      } else if (where < 5) {
        tile.box.low[d] = _dice.number(0, last), tile.box.high[d] = _dice.number(tile.box.low[d], last);
      } else {
        tile.box.low[d] = _dice.number(-2, last), tile.box.high[d] = _dice.number(tile.box.low[d], last + 2);
      }
    }
  } while (tile.box.size() > 60000);
  const auto d = static_cast<std::size_t>(_dice.number(0, 5));
  if (where == 8) {
    const long long length = tile.box.high[d] - tile.box.low[d];
    tile.box.low[d] = _dice.once(2) ? -length - _dice.number(1, 9) : ext[d] + _dice.number(0, 9);
    tile.box.high[d] = tile.box.low[d] + length;
  } else if (where == 9) {
    tile.box.high[d] = tile.box.low[d] - _dice.number(1, 3);
  }
  tile.type = _dice.once(2) && image ? image->type : static_cast<int>(_dice.number(0, numPlainTypes - 1));
  if (_dice.once(3)) {
    tile.scale = static_cast<double>(_dice.number(-40, 40)) / 16;
    tile.shift = static_cast<double>(_dice.number(-400, 400)) / 8;
  }
  tile.form = static_cast<int>(_dice.number(0, numForms - 1));
  return tile;
}

// Requests the tile in its form, and leaves its voxels in it.
int RandomNetwork::deliver(Tile& tile) {
  BaseOp* const op = _nodes[static_cast<std::size_t>(tile.node)].module.get();
  const SubImgBox box = toSubImgBox(tile.box);
  const VXDataType dataType = toDataType(tile.type);
  const ScaleShiftData scaleShift(tile.scale, tile.shift);
  tile.voxels.assign(tile.numBytes() + 2 * guard, untouched);
  unsigned char* const voxels = tile.voxels.data() + guard;
  void* data = tile.form == givenMemory || tile.form == givenBlock ? voxels : nullptr;
  int code = 0;
  if (tile.form == cachedBuffer) {
    CachedBuffer buffer;
    code = BaseOp::getTile(op, tile.outIndex, box, dataType, buffer, scaleShift);
    if (code == 0 && !buffer.isInitialized()) return -1;
    if (code == 0 && tile.numBytes() > 0) std::memcpy(voxels, buffer.getData(), tile.numBytes());
    return code;
  }
  if (tile.form == givenBlock || tile.form == blockWithoutMemory) {
    SubImg block(box, dataType, data);
    code = BaseOp::getTile(op, tile.outIndex, block, scaleShift);
    if (block.getBox() != box && tile.box.size() > 0) return -2;
    if (block.getDataType() != dataType) return -3;
    data = block.getData();
  } else {
    code = BaseOp::getTile(op, tile.outIndex, box, dataType, &data, scaleShift);
  }
  if (data != voxels) {
    if (code == 0 && tile.numBytes() > 0) {
      if (!data) return -4;
      std::memcpy(voxels, data, tile.numBytes());
    }
    BaseOp::freeTile(data);
  }
  return code;
}

std::string RandomNetwork::compare(const Tile& tile, const PlainImage& image) {
  const PagedImg& paged = *_nodes[static_cast<std::size_t>(tile.node)].module->getOutImg(tile.outIndex);
  if (toPlain(paged.getImgExt()) != image.ext || toPlainType(paged.getDataType()) != image.type) {
    return "the image has extent " + toText(toPlain(paged.getImgExt())) + " and type " +
           std::to_string(toPlainType(paged.getDataType())) + ", not " + toText(image.ext) + " and " +
           std::to_string(image.type);
  }
  const PlainBox inside = intersection(tile.box, image.box());
  const PlainBox cover = inside.isEmpty() ? PlainBox{{1}, {0}} : coverOf(inside, toPlain(paged.getPageExt()));
  const bool isFormGiven = tile.form == givenMemory || tile.form == givenBlock;
  const std::size_t size = plainSize(tile.type);
  const unsigned char* const voxels = tile.voxels.data() + guard;
  std::string error;
  forEachPosition(tile.box, [&](const PlainPosition& p) {
    if (!error.empty()) return;
    const unsigned char* const voxel = voxels + tile.box.indexOf(p) * size;
    if (inside.contains(p)) {
      unsigned char expected[24];
      convertVoxel(image.type, image.at(p), tile.type, expected, tile.scale, tile.shift);
      if (std::memcmp(voxel, expected, size) != 0) {
        error = "voxel " + toText(p) + " is " + hexText(voxel, size) + ", not " + hexText(expected, size);
      }
    } else if (isFormGiven && !cover.contains(p) &&
               !std::all_of(voxel, voxel + size, [](unsigned char byte) { return byte == untouched; })) {
      error = "voxel " + toText(p) + " outside of all pages was written";
    }
  });
  const bool isGuardIntact =
      std::all_of(tile.voxels.begin(), tile.voxels.begin() + guard, [](auto byte) { return byte == untouched; }) &&
      std::all_of(tile.voxels.end() - guard, tile.voxels.end(), [](auto byte) { return byte == untouched; });
  if (error.empty() && !isGuardIntact) error = "bytes outside of the tile were written";
  return error;
}

// What holds whenever no request runs.
std::string RandomNetwork::checkState(bool isCacheFlushed) {
  const Host& host = Host::getDefaultHost();
  if (host.isProcessingActive() != 0) return "processing is still active";
  if (Field::enableNotificationsCounterState() != 1) return "the notification counter is off";
  if (VXIsMultithreadingActive()) return "multithreading is still active";
  for (std::size_t i = 0; i < _nodes.size(); ++i) {
    if (_nodes[i].module->getMarker() != 0) return "module " + std::to_string(i) + " is marked";
  }
  VXuint64 numBytes = 0;
  for (const CachedBufferList& list : host.getConstCache().getCacheTable()) {
    for (const CachedBuffer* const buffer : list) {
      if (buffer->isLocked()) return "a page is locked";
      numBytes += buffer->getSize();
    }
  }
  const VXuint64 limit = host.getConstCache().getMaxCacheSizeKB() * 1024;
  if (isCacheFlushed && numBytes > 0 && numBytes >= limit) return "the cache is above its limit";
  if (isCacheFlushed && host.getConstCache().getMemoryOptimizationLevel() == 10 && numBytes > 0)
    return "a page is left at level 10";
  if (_isCacheAmple) {
    for (std::size_t i = 0; i < _nodes.size(); ++i) {
      if (_nodes[i].module->maxCalculationsOfAPage() > 1) {
        return "a page of module " + std::to_string(i) + " was calculated more than once";
      }
    }
  }
  return "";
}

std::string RandomNetwork::requestTile() {
  const int node = _dice.once(3) ? static_cast<int>(_dice.number(0, static_cast<long long>(_nodes.size()) - 1))
                                 : static_cast<int>(_nodes.size()) - 1;
  const int outIndex =
      static_cast<int>(_dice.number(0, _nodes[static_cast<std::size_t>(node)].parameters.numOutputs() - 1));
  const Output& expected = evaluate(node, outIndex);
  Tile tile = randomTile(node, outIndex, expected.code == 0 ? &expected.image : nullptr);
  note(tile.toText());
  const int code = deliver(tile);
  if (code != expected.code) {
    return "the result is " + std::to_string(code) + ", not " + std::to_string(expected.code);
  }
  std::string error = expected.code == 0 ? compare(tile, expected.image) : "";
  if (error.empty()) error = checkState(code == 0);
  if (!_isCacheAmple) forgetCounts();
  if (code == 0) ++_numDelivered;
  return error;
}

}  // namespace vx::test
