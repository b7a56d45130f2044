// Voxels as they are in memory, in the byte order of the machine, with nothing before or behind them.

#include "partFile.h"
#include "writer.h"

namespace vxtile {

namespace {

class RawWriter : public Writer {
 public:
  RawWriter(const std::string& path, const Volume& volume)
      : _part(path), _voxelBytes(VXSizeOf(volume.type)), _file(std::fopen(_part.partPath().c_str(), "wb")) {
    if (!_file) _part.fail();
  }

  void write(const Box& piece, const unsigned char* voxels) override {
    const std::size_t number = piece.numVoxels();
    if (std::fwrite(voxels, _voxelBytes, number, _file.get()) != number) _part.fail();
  }

  void finish() override {
    if (std::fclose(_file.release()) != 0) _part.fail();
    _part.complete();
  }

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  PartFile _part;
  std::size_t _voxelBytes;
  std::unique_ptr<std::FILE, Closer> _file;
};

}  // namespace

std::unique_ptr<Writer> makeRawWriter(const std::string& path, const Volume& volume) {
  return std::make_unique<RawWriter>(path, volume);
}

}  // namespace vxtile
