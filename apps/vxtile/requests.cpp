#include "requests.h"

#include "console.h"
#include "fieldValues.h"
#include "writer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <iostream>

namespace vxtile {

namespace {

constexpr std::size_t pieceBytes = 4U << 20;

[[noreturn]] void failInterrupted(const std::string& what) {
  throw Failure(ExitCode::interrupted, "stopped: the calculation of " + what + " was interrupted");
}

// Progress and break check while something is calculated.
class Calculation {
 public:
  explicit Calculation(std::string name) : _name(std::move(name)), _callbacks(this, &showHostProgress, &isStopWanted) {}
  ~Calculation() { clearProgress(); }

  void setDone(std::size_t done, std::size_t all) {
    _percent = static_cast<int>(done * 100 / std::max<std::size_t>(all, 1));
    show("");
  }
  void show(const std::string& module) const {
    std::string line = _name + "  " + std::to_string(_percent) + " %";
    if (!module.empty()) line += "  " + module;
    showProgress(line.substr(0, 78));
  }

 private:
  static void showHostProgress(void* userData, const char* info1, const char* info2) {
    static_cast<const Calculation*>(userData)->show(textOrEmpty(info1) + " " + textOrEmpty(info2));
  }
  static int isStopWanted(void* /*userData*/, void** field) { return !field && isInterrupted() ? 1 : 0; }

  std::string _name;
  int _percent = 0;
  HostCallbacks _callbacks;
};

// What the voxels of a request become.
struct Conversion {
  VXDataType type = -1;          // of the file
  std::optional<Window> window;  // that is mapped to 0 and 255
};

// An image has to be brought to a type that the file knows. Only what its values allow is done unasked.
Conversion chooseConversion(const Request& request, const ImageInfo& image) {
  if (request.window) return {VXuint8Type, request.window};
  if (!request.type.empty()) return {readVoxelType(request.type), std::nullopt};
  const bool isPicture = formatOf(request.file) == Format::png;
  if (!isPicture || image.type == VXuint8Type || image.type == VXuint16Type) return {image.type, std::nullopt};
  Window window{image.minimum, image.maximum};
  if (!(window.low < window.high)) window.high = window.low + 1;
  return {VXuint8Type, window};
}

// Reads the pieces of a box in the voxel type of the file.
class PieceReader {
 public:
  PieceReader(VXField* output, std::string name, const Conversion& conversion)
      : _output(output),
        _name(std::move(name)),
        _conversion(conversion),
        _tileType(conversion.window ? VXDataType{VXdoubleType} : conversion.type) {}

  // Bytes of a voxel while it is read.
  std::size_t voxelBytes() const { return VXSizeOf(_tileType); }

  const unsigned char* read(const Box& piece) {
    _tile.assign(piece.numVoxels() * voxelBytes(), 0);
    void* memory = _tile.data();
    const Extent& p = piece.first;
    const Extent& e = piece.extent;
    const VXErrorCode code =
        _conversion.window
            ? VXImageGetScaledTile6D(_output, &memory, p[0], p[1], p[2], p[3], p[4], p[5], e[0], e[1], e[2], e[3], e[4],
                                     e[5], _tileType, _conversion.window->low, _conversion.window->high, 0, 255)
            : VXImageGetTile6D(_output, &memory, p[0], p[1], p[2], p[3], p[4], p[5], e[0], e[1], e[2], e[3], e[4], e[5],
                               _tileType);
    if (isInterrupted()) failInterrupted(_name);
    if (code != VX_RESULT_OK) {
      throw Failure(code == VX_NO_MEMORY ? ExitCode::memory : ExitCode::calculation,
                    _name + ": the box " + piece.text() + " could not be calculated (code " + std::to_string(code) +
                        ", " + VXGetErrorCodeDescription(code) + ")");
    }
    if (_conversion.window) limitToBytes(piece.numVoxels());
    return _tile.data();
  }

 private:
  // The library maps values linearly, also those past the window; a byte would wrap around.
  void limitToBytes(std::size_t number) {
    for (std::size_t i = 0; i < number; ++i) {
      double value = 0;
      std::memcpy(&value, &_tile[i * sizeof value], sizeof value);
      const double limited = value > 0 ? std::min(value, 255.0) : 0;  // NaN becomes 0
      _tile[i] = static_cast<unsigned char>(std::nearbyint(limited));
    }
  }

  VXField* _output;
  std::string _name;
  Conversion _conversion;
  VXDataType _tileType;
  std::vector<unsigned char> _tile;
};

std::string resolvedPath(const std::string& file, const std::string& directory) {
  if (file.empty() || directory.empty() || std::filesystem::path(file).is_absolute()) return file;
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (error) throw Failure(ExitCode::file, directory + ": " + error.message());
  return (std::filesystem::path(directory) / file).string();
}

void runImageRequest(const LiveNetwork& network, const Request& request, const RunSettings& settings) {
  const std::string name = request.output->text();
  VXField* const output = network.output(*request.output);
  Calculation calculation(name);
  const ImageInfo image = readImageInfo(output, name);
  if (isInterrupted()) failInterrupted(name);
  const Conversion conversion = chooseConversion(request, image);
  const Volume volume{boxOf(request.box, image.extent, name), conversion.type, image.toWorld, request.flip, name};
  const std::string path = resolvedPath(request.file, settings.directory);
  const std::unique_ptr<Writer> writer = makeWriter(path, volume);
  PieceReader reader(output, name, conversion);
  const std::vector<Box> pieces =
      cutBox(volume.box, image.pageExtent, reader.voxelBytes(), pieceBytes, writer->cutRules());
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    calculation.setDone(i, pieces.size());
    writer->write(pieces[i], reader.read(pieces[i]));
    if (isInterrupted()) failInterrupted(name);
  }
  writer->finish();
  clearProgress();
  if (settings.isQuiet) return;
  std::cout << (path.empty() ? "calculated" : path) << ": " << name << ", " << volume.box.text() << ", "
            << VXNameFromDataType(conversion.type);
  if (conversion.window) {
    std::cout << ", window " << textOf(Number(conversion.window->low)) << " to "
              << textOf(Number(conversion.window->high));
  }
  std::cout << std::endl;
}

}  // namespace

void checkRequest(const Request& request) {
  if (!request.output) return;
  formatOf(request.file);
  const std::string name = request.output->text();
  if (request.type.empty()) return;
  const VXDataType type = readVoxelType(request.type);
  if (type < 0) {
    throw Failure(ExitCode::network,
                  name + ": \"" + request.type + "\" is no voxel type; known are " + voxelTypeNames());
  }
  if (request.window && type != VXuint8Type) {
    throw Failure(ExitCode::network,
                  name + ": a range gives voxels of type \"unsigned int8\", not \"" + VXNameFromDataType(type) + "\"");
  }
}

void runRequest(const LiveNetwork& network, const Request& request, const RunSettings& settings) {
  if (request.touch) {
    VXField* const field = network.field(*request.touch);
    const Calculation calculation(request.touch->text());
    VXFieldTouch(field);
    if (isInterrupted()) failInterrupted(request.touch->text());
  }
  if (request.output) runImageRequest(network, request, settings);
  for (const FieldName& name : request.show) {
    std::cout << name.text() << " = " << valueText(network.field(name)) << std::endl;
  }
}

}  // namespace vxtile
