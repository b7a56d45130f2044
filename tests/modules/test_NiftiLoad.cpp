// NiftiLoad on files that the tests write by hand.

#include "ModuleFixture.h"
#include "TemporaryFile.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <zlib.h>

namespace vx::test {
namespace {

// Number of a voxel type in a file.
int niftiType(VXDataType type) {
  constexpr int numbers[] = {256, 2, 4, 512, 8, 768, 16, 64, 64, 1024};
  return numbers[type];
}

// A header of the first version; each member is written where the format has it.
struct Header {
  short dim[8] = {3, 4, 3, 2, 1, 1, 1, 1};
  int dataType = 2;
  int bits = 8;
  float pixdim[8] = {1, 1, 1, 1, 1, 1, 1, 1};
  float voxelOffset = 352;
  float slope = 0;
  float intercept = 0;
  float calMax = 0;
  float calMin = 0;
  unsigned char units = 2;
  short qformCode = 0;
  short sformCode = 0;
  float quaternion[6] = {};
  float srow[12] = {};
  std::string magic = std::string("n+1\0", 4);

  template <class T>
  static void put(Bytes& bytes, std::size_t offset, T value, bool isBig) {
    Bytes raw;
    append(raw, value, isBig);
    std::copy(raw.begin(), raw.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
  }
  Bytes bytes(bool isBig = false) const {
    Bytes b(348, 0);
    put(b, 0, 348, isBig);
    for (std::size_t i = 0; i < 8; ++i) put(b, 40 + 2 * i, dim[i], isBig);
    put(b, 70, static_cast<short>(dataType), isBig);
    put(b, 72, static_cast<short>(bits), isBig);
    for (std::size_t i = 0; i < 8; ++i) put(b, 76 + 4 * i, pixdim[i], isBig);
    put(b, 108, voxelOffset, isBig);
    put(b, 112, slope, isBig);
    put(b, 116, intercept, isBig);
    b[123] = units;
    put(b, 124, calMax, isBig);
    put(b, 128, calMin, isBig);
    put(b, 252, qformCode, isBig);
    put(b, 254, sformCode, isBig);
    for (std::size_t i = 0; i < 6; ++i) put(b, 256 + 4 * i, quaternion[i], isBig);
    for (std::size_t i = 0; i < 12; ++i) put(b, 280 + 4 * i, srow[i], isBig);
    std::copy(magic.begin(), magic.end(), b.begin() + 344);
    return b;
  }
  // The same image as a file of the second version.
  Bytes secondBytes(bool isBig = false) const {
    Bytes b(540, 0);
    const std::string secondMagic("n+2\0\r\n\032\n", 8);
    put(b, 0, 540, isBig);
    std::copy(secondMagic.begin(), secondMagic.end(), b.begin() + 4);
    put(b, 12, static_cast<short>(dataType), isBig);
    put(b, 14, static_cast<short>(bits), isBig);
    for (std::size_t i = 0; i < 8; ++i) put(b, 16 + 8 * i, static_cast<long long>(dim[i]), isBig);
    for (std::size_t i = 0; i < 8; ++i) put(b, 104 + 8 * i, static_cast<double>(pixdim[i]), isBig);
    put(b, 168, 544LL, isBig);
    put(b, 176, static_cast<double>(slope), isBig);
    put(b, 184, static_cast<double>(intercept), isBig);
    put(b, 192, static_cast<double>(calMax), isBig);
    put(b, 200, static_cast<double>(calMin), isBig);
    put(b, 344, static_cast<int>(qformCode), isBig);
    put(b, 348, static_cast<int>(sformCode), isBig);
    for (std::size_t i = 0; i < 6; ++i) put(b, 352 + 8 * i, static_cast<double>(quaternion[i]), isBig);
    for (std::size_t i = 0; i < 12; ++i) put(b, 400 + 8 * i, static_cast<double>(srow[i]), isBig);
    put(b, 500, static_cast<int>(units), isBig);
    b.resize(544, 0);
    return b;
  }
  Header& of(VXDataType type) {
    dataType = niftiType(type);
    bits = static_cast<int>(VXSizeOf(type)) * 8;
    return *this;
  }
  Header& extent(const Vector& e) {
    const VXint64 sizes[] = {6, e.x, e.y, e.z, e.t, e.c, e.u, 1};
    for (std::size_t i = 0; i < 8; ++i) dim[i] = static_cast<short>(sizes[i]);
    return *this;
  }
};

Bytes compress(const Bytes& bytes) {
  z_stream stream = {};
  deflateInit2(&stream, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  Bytes result(deflateBound(&stream, bytes.size()) + 64);
  stream.next_in = const_cast<unsigned char*>(bytes.data());
  stream.avail_in = static_cast<unsigned>(bytes.size());
  stream.next_out = result.data();
  stream.avail_out = static_cast<unsigned>(result.size());
  deflate(&stream, Z_FINISH);
  result.resize(stream.total_out);
  deflateEnd(&stream);
  return result;
}

// The voxels in the order of the file: t before c.
Bytes voxelBytes(const Image& image, bool isBig = false) {
  Bytes bytes;
  Vector fileExtent = image.extent;
  std::swap(fileExtent.c, fileExtent.t);
  forEachPosition(fileExtent, [&](Vector p) {
    std::swap(p.c, p.t);
    appendVoxel(bytes, image.at(p), image.dataType, isBig);
  });
  return bytes;
}

Bytes joined(Bytes first, const Bytes& second, std::size_t offset) {
  first.resize(std::max(first.size(), offset), 0);
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Bytes fileOf(const Header& header, const Bytes& voxels, bool isBig = false) {
  return joined(header.bytes(isBig), voxels, 352);
}

class NiftiLoadTest : public ModuleFixture {
 protected:
  void SetUp() override {
    ModuleFixture::SetUp();
    op = make("NiftiLoad");
  }
  void load(const std::string& name, const Bytes& bytes) {
    set(*op, "filename", folder.write(name, bytes));
    set(*op, "reload", "");
  }
  void expectRefused(const Bytes& bytes, const std::string& problem) {
    for (const bool isCompressed : {false, true}) {
      const std::string path =
          folder.write(isCompressed ? "bad.nii.gz" : "bad.nii", isCompressed ? compress(bytes) : bytes);
      set(*op, "filename", path);
      set(*op, "reload", "");
      expectInvalid(*op, VX_IMAGE_INVALID, "File \"" + path + "\": " + problem);
    }
  }
  static const Tmat4<double>& matrixOf(const PagedImg& image) { return *image.getToWorldMatrix(); }
  static void expectMatrix(const PagedImg& image, const double (&values)[12]) {
    for (std::size_t i = 0; i < 12; ++i) EXPECT_NEAR(matrixOf(image)[i / 4][i % 4], values[i], 1e-6) << i;
  }

  TemporaryFolder folder;
  std::unique_ptr<BaseOp> op;
};

TEST_F(NiftiLoadTest, ReadsAllTypesVersionsByteOrdersAndCompressions) {
  const Vector extent(150, 9, 6, 2, 3, 2);
  for (const VXDataType type : allTypes) {
    const Image image = randomImage(extent, type, 91);
    const Header header = Header().of(type).extent(extent);
    for (const bool isBig : {false, true}) {
      const Bytes voxels = voxelBytes(image, isBig);
      const Bytes first = fileOf(header, voxels, isBig);
      const Bytes second = joined(header.secondBytes(isBig), voxels, 544);
      const std::string what = std::string(VXNameFromDataType(type)) + (isBig ? " big" : " little");
      Host::getDefaultHost().setMaxNumThreads(isBig ? 4 : 1);
      load("first.nii", first);
      expectEqual(tile(*op), image, what);
      EXPECT_EQ(op->getOutImg(0)->getDataType(), type == VXldoubleType ? VXdoubleType : type);
      load("first.nii.gz", compress(first));
      expectEqual(tile(*op), image, what + " compressed");
      load("second.nii", second);
      expectEqual(tile(*op), image, what + " second version");
      load("second.nii.gz", compress(second));
      expectEqual(tile(*op), image, what + " second version compressed");
    }
  }
}

TEST_F(NiftiLoadTest, ReadsVoxelsFromAFileBesideTheHeader) {
  const Image image = randomImage({4, 3, 2, 1, 1, 1}, VXint16Type, 92);
  Header header = Header().of(VXint16Type);
  header.magic = std::string("ni1\0", 4);
  header.voxelOffset = 0;
  const std::string headerPath = folder.write("pair.hdr", header.bytes());
  const std::string voxelPath = folder.path("pair.img");
  set(*op, "filename", headerPath);
  expectInvalid(*op, VX_IMAGE_INVALID,
                "File \"" + headerPath + "\": its voxels in \"" + voxelPath + "\": No such file or directory.");
  folder.write("pair.img.gz", compress(voxelBytes(image)));
  set(*op, "reload", "");
  expectEqual(tile(*op), image, "compressed voxels");
  folder.write("pair.img", voxelBytes(image));
  set(*op, "reload", "");
  expectEqual(tile(*op), image, "header named");
  set(*op, "filename", voxelPath);
  expectEqual(tile(*op), image, "voxels named");
  header.voxelOffset = 6;
  folder.write("pair.hdr", header.bytes());
  folder.write("pair.img", joined({}, voxelBytes(image), 6));
  set(*op, "reload", "");
  expectEqual(tile(*op), image, "offset");
  const std::string odd = folder.write("pair.txt", header.bytes());
  set(*op, "filename", odd);
  expectInvalid(*op, VX_IMAGE_INVALID,
                "File \"" + odd + "\": its voxels are in another file, and its name doesn't end in .hdr.");
}

TEST_F(NiftiLoadTest, ComponentsOfAVoxelAreTheDimensionC) {
  Header header;
  header.dataType = 128;
  header.bits = 24;
  Bytes voxels;
  for (int i = 0; i < 4 * 3 * 2 * 3; ++i) voxels.push_back(static_cast<unsigned char>(i));
  load("colours.nii", fileOf(header, voxels));
  const Image colours = tile(*op);
  EXPECT_EQ(colours.extent, Vector(4, 3, 2, 3, 1, 1));
  EXPECT_EQ(colours.at({2, 1, 1, 1, 0, 0}), (12 + 4 + 2) * 3 + 1);
  header.dataType = 1792;
  header.bits = 128;
  header.dim[3] = 1;
  Bytes numbers;
  for (int i = 0; i < 4 * 3 * 2; ++i) append(numbers, i * 0.5);
  load("complex.nii", fileOf(header, numbers));
  const Image complex = tile(*op);
  EXPECT_EQ(complex.extent, Vector(4, 3, 1, 2, 1, 1));
  EXPECT_EQ(complex.dataType, VXdoubleType);
  EXPECT_EQ(complex.at({3, 2, 0, 1, 0, 0}), 11.5);
}

TEST_F(NiftiLoadTest, VoxelsAreScaledAsTheFileSays) {
  const Image image = randomImage({4, 3, 2, 1, 1, 1}, VXint16Type, 93);
  Header header = Header().of(VXint16Type);
  header.slope = 0.5F;
  header.intercept = -3;
  load("scaled.nii", fileOf(header, voxelBytes(image)));
  Image expected(image.extent, VXfloatType);
  for (std::size_t i = 0; i < expected.values.size(); ++i) expected.values[i] = image.values[i] * 0.5 - 3;
  expectEqual(tile(*op), expected, "scaled");
  EXPECT_EQ(op->getOutImg(0)->getDataType(), VXfloatType);
  EXPECT_EQ(op->getOutImg(0)->getMinVoxelValue(), -16387);
  set(*op, "applyScaling", "0");
  expectEqual(tile(*op), image, "as stored");
  EXPECT_EQ(op->getOutImg(0)->getDataType(), VXint16Type);
  set(*op, "applyScaling", "1");
  for (const auto& [slope, intercept] :
       {std::pair(0.0F, 5.0F), std::pair(1.0F, 0.0F), std::pair(std::numeric_limits<float>::quiet_NaN(), 0.0F)}) {
    header.slope = slope;
    header.intercept = intercept;
    load("scaled.nii", fileOf(header, voxelBytes(image)));
    expectEqual(tile(*op), image, "no scaling");
    EXPECT_EQ(op->getOutImg(0)->getDataType(), VXint16Type);
  }
}

TEST_F(NiftiLoadTest, TheRangeIsThatForDisplayOrOfTheType) {
  Header header = Header().of(VXint16Type);
  const Bytes voxels(4 * 3 * 2 * 2, 0);
  load("range.nii", fileOf(header, voxels));
  EXPECT_EQ(updated(*op).getMinVoxelValue(), -32768);
  EXPECT_EQ(updated(*op).getMaxVoxelValue(), 32767);
  header.calMin = 10;
  header.calMax = 90;
  load("range.nii", fileOf(header, voxels));
  EXPECT_EQ(updated(*op).getMinVoxelValue(), 10);
  EXPECT_EQ(updated(*op).getMaxVoxelValue(), 90);
}

// World ---------------------------------------------------------------------------------------------------------------

TEST_F(NiftiLoadTest, TheWorldMatrixIsTheSform) {
  Header header;
  header.sformCode = 1;
  header.qformCode = 1;
  const double values[12] = {-2, 0, 0, 90, 0, 1.5, 0.25, -126, 0, -0.5, 3, -72};
  for (std::size_t i = 0; i < 12; ++i) header.srow[i] = static_cast<float>(values[i]);
  load("world.nii", fileOf(header, Bytes(24, 1)));
  const PagedImg& image = updated(*op);
  expectMatrix(image, values);  // its first axis points to the left, and stays so
  EXPECT_TRUE(image.isToWorldMatrixValid());
  EXPECT_NEAR(image.getVoxelSize()[0], 2, 1e-6);
  header.units = 1;
  for (std::size_t i = 0; i < 12; ++i) header.srow[i] = static_cast<float>(values[i] / 1000);
  load("world.nii", fileOf(header, Bytes(24, 1)));
  const PagedImg& metres = updated(*op);
  for (std::size_t i = 0; i < 12; ++i) EXPECT_NEAR(matrixOf(metres)[i / 4][i % 4], values[i], 1e-4);
}

TEST_F(NiftiLoadTest, WithoutASformItIsTheQform) {
  Header header;
  header.qformCode = 1;
  header.pixdim[0] = -1;
  header.pixdim[1] = 2;
  header.pixdim[2] = 3;
  header.pixdim[3] = 4;
  // A quarter turn around z, with the third axis turned around.
  const float half = std::sqrt(0.5F);
  const float quaternion[] = {0, 0, half, 10, 20, 30};
  std::copy(std::begin(quaternion), std::end(quaternion), header.quaternion);
  load("world.nii", fileOf(header, Bytes(24, 1)));
  expectMatrix(updated(*op), {0, -3, 0, 10, 2, 0, 0, 20, 0, 0, -4, 30});
  EXPECT_TRUE(op->getOutImg(0)->isToWorldMatrixValid());
  // Half a turn around x: the first component of the rotation is 0.
  header.quaternion[0] = 1;
  header.quaternion[2] = 0;
  header.pixdim[0] = 1;
  load("world.nii", fileOf(header, Bytes(24, 1)));
  expectMatrix(updated(*op), {2, 0, 0, 10, 0, -3, 0, 20, 0, 0, -4, 30});
  // A transform that can't be used counts as none.
  header.sformCode = 2;
  load("world.nii", fileOf(header, Bytes(24, 1)));
  expectMatrix(updated(*op), {2, 0, 0, 10, 0, -3, 0, 20, 0, 0, -4, 30});
  header.srow[0] = std::numeric_limits<float>::infinity();
  load("world.nii", fileOf(header, Bytes(24, 1)));
  expectMatrix(updated(*op), {2, 0, 0, 10, 0, -3, 0, 20, 0, 0, -4, 30});
}

TEST_F(NiftiLoadTest, WithoutTransformsThereIsOnlyTheVoxelSize) {
  Header header;
  header.pixdim[1] = -2;
  header.pixdim[2] = 0;
  header.pixdim[3] = std::numeric_limits<float>::quiet_NaN();
  load("world.nii", fileOf(header, Bytes(24, 1)));
  expectMatrix(updated(*op), {2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0});
  EXPECT_FALSE(op->getOutImg(0)->isToWorldMatrixValid());
}

// Broken files --------------------------------------------------------------------------------------------------------

TEST_F(NiftiLoadTest, BrokenHeadersAreSaidInTheState) {
  const Bytes voxels(24, 0);
  expectRefused(Bytes(347, 0), "not a NIfTI file: it has only 347 bytes.");
  expectRefused(Bytes(400, 0), "not a NIfTI file.");
  Header header;
  header.magic = std::string("n+3\0", 4);
  expectRefused(fileOf(header, voxels), "not a NIfTI file.");
  header = Header();
  header.magic = std::string("\0\0\0\0", 4);
  expectRefused(fileOf(header, voxels), "not a NIfTI file.");
  Bytes cut = Header().secondBytes();
  cut.resize(400);
  expectRefused(cut, "its header is cut off.");
  for (const int numDims : {0, 8, -1, 32767}) {
    header = Header();
    header.dim[0] = static_cast<short>(numDims);
    expectRefused(fileOf(header, voxels), "its header has " + std::to_string(numDims) + " dimensions.");
  }
  for (const int dim : {0, -1, -32768}) {
    header = Header();
    header.dim[2] = static_cast<short>(dim);
    expectRefused(fileOf(header, voxels), "its dimension 2 is " + std::to_string(dim) + ".");
  }
  header = Header();
  header.dim[0] = 7;
  header.dim[7] = 2;
  expectRefused(fileOf(header, voxels), "images of seven dimensions aren't supported.");
  for (const int type : {0, 1, 1280, 1536, 2048, 99, -1}) {
    header = Header();
    header.dataType = type;
    expectRefused(fileOf(header, voxels), "its voxel type " + std::to_string(type) + " isn't supported.");
  }
  header = Header();
  header.bits = 16;
  expectRefused(fileOf(header, voxels), "its voxel type 2 doesn't have 16 bits.");
  header = Header();
  header.dataType = 128;
  header.bits = 24;
  header.dim[0] = 5;
  header.dim[5] = 2;
  expectRefused(fileOf(header, voxels), "vectors of colours or complex numbers aren't supported.");
  const std::pair<float, const char*> offsets[] = {{-352.0F, "-352"},
                                                   {100.0F, "100"},
                                                   {1e30F, "1.0000000150474662e+30"},
                                                   {std::numeric_limits<float>::quiet_NaN(), "nan"}};
  for (const auto& [offset, offsetText] : offsets) {
    header = Header();
    header.voxelOffset = offset;
    expectRefused(fileOf(header, voxels), std::string("its voxels begin at ") + offsetText + ".");
  }
}

TEST_F(NiftiLoadTest, FilesThatAreShorterThanTheySayAreRefused) {
  expectRefused(fileOf(Header(), Bytes(23, 0)), "the voxels need 376 bytes and the file has 375.");
  expectRefused(Header().bytes(), "the voxels need 376 bytes and the file has 348.");
  Header header;
  for (short& dim : header.dim) dim = 32767;
  header.dim[0] = 4;
  const std::string path = folder.write("lying.nii", fileOf(header, Bytes(24, 0)));
  set(*op, "filename", path);
  expectInvalid(*op, VX_IMAGE_INVALID,
                "File \"" + path + "\": the voxels need 1152780773560811873 bytes and the file has 376.");
  const std::string compressed = folder.write("lying.nii.gz", compress(fileOf(header, Bytes(24, 0))));
  set(*op, "filename", compressed);
  expectInvalid(
      *op, VX_IMAGE_INVALID,
      "File \"" + compressed + "\": the voxels need 1152780773560811873 bytes, and the file can't hold as many.");
  header.dim[0] = 6;
  expectRefused(fileOf(header, Bytes(24, 0)), "its image is too large.");
}

TEST_F(NiftiLoadTest, DimensionsOf64BitsDontOverflow) {
  const auto refused = [&](long long x, long long y, long long z, const std::string& problem) {
    Bytes bytes = Header().secondBytes();
    Header::put(bytes, 16 + 8, x, false);
    Header::put(bytes, 16 + 16, y, false);
    Header::put(bytes, 16 + 24, z, false);
    bytes.resize(600);
    expectRefused(bytes, problem);
  };
  refused(1LL << 32, 1LL << 32, 1, "its image is too large.");
  refused(1LL << 62, 4, 1, "its image is too large.");
  refused(std::numeric_limits<long long>::max(), 1, 1, "its image is too large.");
  refused(std::numeric_limits<long long>::min(), 1, 1, "its dimension 1 is -9223372036854775808.");
  for (const long long offset : {-1LL, std::numeric_limits<long long>::max(), std::numeric_limits<long long>::min()}) {
    Bytes bytes = Header().secondBytes();
    Header::put(bytes, 168, offset, false);
    const char* const offsetText = offset == -1 ? "-1" : offset > 0 ? "9223372036854775808" : "-9223372036854775808";
    expectRefused(bytes, std::string("its voxels begin at ") + offsetText + ".");
  }
}

TEST_F(NiftiLoadTest, DamagedCompressionIsSaidInTheState) {
  Header header;
  header.extent({100, 100, 10, 1, 1, 1});
  const Image image = randomImage({100, 100, 10, 1, 1, 1}, VXuint8Type, 94);
  const Bytes good = compress(fileOf(header, voxelBytes(image)));
  // Cut off, and with a damaged byte: the state never says that all is well.
  for (std::size_t size : {good.size() / 2, std::size_t{100}, std::size_t{3}}) {
    load("cut.nii.gz", Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)));
    EXPECT_EQ(BaseOp::updateImageProps(op.get(), 0), VX_IMAGE_INVALID) << size;
  }
  Bytes damaged = good;
  for (std::size_t i = damaged.size() / 2; i < damaged.size() / 2 + 200; ++i)
    damaged[i] = static_cast<unsigned char>(~damaged[i]);
  load("damaged.nii.gz", damaged);
  expectInvalid(*op, VX_IMAGE_INVALID,
                "File \"" + folder.path("damaged.nii.gz") + "\": its compressed data is damaged.");
}

TEST_F(NiftiLoadTest, DecompressionHasALimit) {
  Header header;
  header.extent({2000, 2000, 1, 1, 1, 1});
  const std::string path = folder.write("large.nii.gz", compress(fileOf(header, Bytes(4000000, 7))));
  set(*op, "filename", path);
  set(*op, "memoryLimit", "3");
  expectInvalid(*op, VX_IMAGE_INVALID,
                "File \"" + path + "\": the voxels need 4000352 bytes of memory, more than memoryLimit.");
  set(*op, "memoryLimit", "4");
  EXPECT_EQ(tile(*op, SubImgBox(Vector(0), Vector(0)), VXuint8Type).extent, Vector(1));
}

TEST_F(NiftiLoadTest, MissingFilesAreSaidInTheState) {
  expectInvalid(*op, VX_IMAGE_INVALID, "File \"\": no file is named.");
  set(*op, "filename", folder.path("missing.nii"));
  expectInvalid(*op, VX_IMAGE_INVALID, "File \"" + folder.path("missing.nii") + "\": No such file or directory.");
  set(*op, "filename", folder.path("."));
  expectInvalid(*op, VX_IMAGE_INVALID, "File \"" + folder.path(".") + "\": not a regular file.");
  load("good.nii", fileOf(Header(), Bytes(24, 5)));
  EXPECT_EQ(tile(*op).values, std::vector<double>(24, 5));
}

}  // namespace
}  // namespace vx::test
