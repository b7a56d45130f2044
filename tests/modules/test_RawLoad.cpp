#include "ModuleFixture.h"
#include "TemporaryFile.h"

#include <sys/stat.h>

namespace vx::test {
namespace {

const Vector extent(150, 7, 6, 2, 3, 2);

class RawLoadTest : public ModuleFixture {
 protected:
  static Bytes bytesOf(const Image& image, std::size_t offset, bool isBig) {
    Bytes bytes(offset, 0xAB);
    for (const double value : image.values) appendVoxel(bytes, value, image.dataType, isBig);
    return bytes;
  }
  TemporaryFolder folder;
};

TEST_F(RawLoadTest, ReadsAllTypesInBothByteOrders) {
  const auto op = make("RawLoad");
  set(*op, "extent", text(extent));
  set(*op, "voxelSize", "0.5 1 2");
  for (const VXDataType type : allTypes) {
    const Image image = randomImage(extent, type, 81);
    set(*op, "dataType", VXNameFromDataType(type));
    for (const bool isBig : {false, true}) {
      for (const std::size_t offset : std::initializer_list<std::size_t>{0, 77}) {
        set(*op, "filename", folder.write("voxels.raw", bytesOf(image, offset, isBig)));
        set(*op, "offset", std::to_string(offset));
        set(*op, "byteOrder", isBig ? "big" : "little");
        Host::getDefaultHost().setMaxNumThreads(isBig ? 4 : 1);
        expectEqual(tile(*op), image, VXNameFromDataType(type));
        EXPECT_EQ(op->getOutImg(0)->getDataType(), type);
        EXPECT_EQ(op->getOutImg(0)->getVoxelSize(), Tvec3<double>(0.5, 1, 2));
      }
    }
  }
}

TEST_F(RawLoadTest, AChangedFileIsReadAfterReload) {
  const auto op = make("RawLoad");
  set(*op, "extent", "2 1 1 1 1 1");
  set(*op, "filename", folder.write("voxels.raw", {1, 2}));
  EXPECT_EQ(tile(*op).values, (std::vector<double>{1, 2}));
  folder.write("voxels.raw", {3, 4, 5});
  set(*op, "reload", "");
  EXPECT_EQ(tile(*op).values, (std::vector<double>{3, 4}));
}

TEST_F(RawLoadTest, AFileThatBecomesShorterLaterIsAnError) {
  const auto op = make("RawLoad");
  set(*op, "extent", "4 1 1 1 1 1");
  set(*op, "filename", folder.write("voxels.raw", {1, 2, 3, 4}));
  updated(*op);
  folder.write("voxels.raw", {1});
  void* data = nullptr;
  EXPECT_EQ(BaseOp::getTile(op.get(), 0, SubImgBox(Vector(0), {3, 0, 0, 0, 0, 0}), VXuint8Type, &data),
            VX_IMAGE_INVALID);
  BaseOp::freeTile(data);
  const std::vector<Message> said = messages.take();
  ASSERT_FALSE(said.empty());
  EXPECT_EQ(said[0], (Message{VX_ERROR, VX_IMAGE_INVALID, "VoxelFile::read()",
                              "The file has become shorter since its header was read."}));
}

TEST_F(RawLoadTest, WhatCantBeReadIsSaidInTheState) {
  const auto op = make("RawLoad");
  set(*op, "extent", "4 1 1 1 1 1");
  expectInvalid(*op, VX_IMAGE_INVALID, "File \"\": no file is named.");
  const std::string missing = folder.path("missing.raw");
  set(*op, "filename", missing);
  expectInvalid(*op, VX_IMAGE_INVALID, "File \"" + missing + "\": No such file or directory.");
  set(*op, "filename", folder.path(""));
  expectInvalid(*op, VX_IMAGE_INVALID, "File \"" + folder.path("") + "\": not a regular file.");
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  set(*op, "filename", pipe);
  expectInvalid(*op, VX_IMAGE_INVALID, "File \"" + pipe + "\": not a regular file.");
  const std::string shortFile = folder.write("short.raw", {1, 2, 3});
  set(*op, "filename", shortFile);
  expectInvalid(*op, VX_IMAGE_INVALID, "File \"" + shortFile + "\": the voxels need 4 bytes and the file has 3.");
  set(*op, "extent", "3 1 1 1 1 1");
  updated(*op);
  set(*op, "offset", "-1");
  expectInvalid(*op, VX_BAD_PARAMETER, "Field offset: no file has -1 bytes in front of voxels.");
  set(*op, "offset", "1");
  expectInvalid(*op, VX_IMAGE_INVALID, "File \"" + shortFile + "\": the voxels need 4 bytes and the file has 3.");
  set(*op, "offset", "0");
  set(*op, "extent", "3 0 1 1 1 1");
  expectInvalid(*op, VX_BAD_PARAMETER, "Field extent: no image of 3 0 1 1 1 1 voxels can be made.");
  set(*op, "extent", "1e12 1e12 1 1 1 1");
  expectInvalid(*op, VX_BAD_PARAMETER,
                "Field extent: no image of 1000000000000 1000000000000 1 1 1 1 voxels can be made.");
  set(*op, "extent", "3 1 1 1 1 1");
  set(*op, "voxelSize", "1 1 0");
  expectInvalid(*op, VX_BAD_PARAMETER, "Field voxelSize: each component must be above 0.");
}

}  // namespace
}  // namespace vx::test
