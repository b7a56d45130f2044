// Pictures: a plane of the image, 8 or 16 bits, with the dimension c as channels: 1 grey, 2 grey and alpha, 3 colours,
// 4 colours and alpha.

#include "partFile.h"
#include "writer.h"

#include <algorithm>
#include <csetjmp>
#include <png.h>
#include <vector>

namespace vxtile {

namespace {

constexpr std::size_t channelAxis = 3;
constexpr int largestEdge = 1000000;  // of a picture, as readers have it

// The two spatial axes of a picture: of the others one has extent 1, at best the last.
struct Plane {
  std::size_t width = 0;
  std::size_t height = 1;
};

Plane planeOf(const Volume& volume) {
  const Extent& e = volume.box.extent;
  if (e[4] > 1 || e[5] > 1 || e[channelAxis] > 4) {
    throw Failure(ExitCode::network,
                  volume.name + ": a .png picture holds one t, one u and up to 4 c; the box has " + volume.box.text());
  }
  const Plane plane = e[2] == 1 ? Plane{0, 1} : e[1] == 1 ? Plane{0, 2} : Plane{1, 2};
  if (plane.width == 1 && e[0] != 1) {
    throw Failure(ExitCode::network, volume.name + ": a .png picture holds one plane; the box has " +
                                         volume.box.text() +
                                         ". Choose a plane with a box such as z=" + std::to_string(e[2] / 2));
  }
  if (e[plane.width] > largestEdge || e[plane.height] > largestEdge) {
    throw Failure(ExitCode::network, volume.name + ": a .png picture has at most " + std::to_string(largestEdge) +
                                         " pixels along an edge; the box has " + volume.box.text());
  }
  return plane;
}

// The library for the format comes back from a failure by a jump, so nothing between it and the jump has a destructor.
class Encoder {
 public:
  Encoder() : _png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, &fail, &ignore)) {
    if (_png) _info = png_create_info_struct(_png);
    if (!_info) throw std::bad_alloc();
  }
  ~Encoder() { png_destroy_write_struct(&_png, &_info); }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  bool begin(std::FILE* file, int width, int height, int bits, int channels) {
    static constexpr int colourTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                          PNG_COLOR_TYPE_RGB_ALPHA};
    if (setjmp(png_jmpbuf(_png)) != 0) return false;
    png_init_io(_png, file);
    png_set_IHDR(_png, _info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), bits,
                 colourTypes[channels - 1], PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(_png, _info);
    if (bits == 16 && VXIsLittleEndian()) png_set_swap(_png);
    return true;
  }
  bool writeRow(const unsigned char* row) {
    if (setjmp(png_jmpbuf(_png)) != 0) return false;
    png_write_row(_png, row);
    return true;
  }
  bool end() {
    if (setjmp(png_jmpbuf(_png)) != 0) return false;
    png_write_end(_png, nullptr);
    return true;
  }

 private:
  static void fail(png_structp png, png_const_charp /*text*/) { png_longjmp(png, 1); }
  static void ignore(png_structp, png_const_charp) {}

  png_structp _png;
  png_infop _info = nullptr;
};

class PngWriter : public Writer {
 public:
  PngWriter(const std::string& path, const Volume& volume)
      : _flip(volume.flip),
        _plane(planeOf(volume)),
        _width(static_cast<std::size_t>(volume.box.extent[_plane.width])),
        _channels(static_cast<std::size_t>(volume.box.extent[channelAxis])),
        _voxelBytes(VXSizeOf(volume.type)),
        _row(_width * _channels * _voxelBytes),
        _part(path),
        _file(std::fopen(_part.partPath().c_str(), "wb")) {
    if (!_file) _part.fail();
    check(_encoder.begin(_file.get(), volume.box.extent[_plane.width], volume.box.extent[_plane.height],
                         static_cast<int>(8 * _voxelBytes), static_cast<int>(_channels)));
  }

  CutRules cutRules() const override {
    CutRules rules;
    const std::size_t flat = 3 - _plane.width - _plane.height;
    rules.order = {_plane.width, channelAxis, _plane.height, flat, 4, 5};
    rules.firstCut = rules.lastCut = 2;
    rules.isBackward = _flip.vertical;
    return rules;
  }

  void write(const Box& piece, const unsigned char* voxels) override {
    const auto numRows = static_cast<std::size_t>(piece.extent[_plane.height]);
    for (std::size_t i = 0; i < numRows; ++i) {
      fillRow(voxels, _flip.vertical ? numRows - 1 - i : i, numRows);
      check(_encoder.writeRow(_row.data()));
    }
  }

  void finish() override {
    check(_encoder.end());
    if (std::fclose(_file.release()) != 0) _part.fail();
    _part.complete();
  }

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void check(bool isWritten) const {
    if (!isWritten) _part.fail();
  }

  // A tile has its channels one behind the other, a picture has them side by side.
  void fillRow(const unsigned char* voxels, std::size_t row, std::size_t numRows) {
    for (std::size_t channel = 0; channel < _channels; ++channel) {
      const unsigned char* const source = voxels + (channel * numRows + row) * _width * _voxelBytes;
      for (std::size_t i = 0; i < _width; ++i) {
        const std::size_t column = _flip.horizontal ? _width - 1 - i : i;
        std::copy_n(source + column * _voxelBytes, _voxelBytes, &_row[(i * _channels + channel) * _voxelBytes]);
      }
    }
  }

  Flip _flip;
  Plane _plane;
  std::size_t _width;
  std::size_t _channels;
  std::size_t _voxelBytes;
  std::vector<unsigned char> _row;
  PartFile _part;
  std::unique_ptr<std::FILE, Closer> _file;
  Encoder _encoder;
};

}  // namespace

std::unique_ptr<Writer> makePngWriter(const std::string& path, const Volume& volume) {
  if (volume.type != VXuint8Type && volume.type != VXuint16Type) {
    throw Failure(ExitCode::network, volume.name +
                                         ": a .png picture holds voxels of type \"unsigned int8\" or \"unsigned "
                                         "int16\", not \"" +
                                         VXNameFromDataType(volume.type) + "\"");
  }
  return std::make_unique<PngWriter>(path, volume);
}

}  // namespace vxtile
