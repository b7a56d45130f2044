#include "CAPIFixture.h"

#include "vxPagedImg.h"

#include <climits>
#include <cstdlib>
#include <functional>

namespace vx::test {
namespace {

class CAPITilesTest : public CAPITest {
 protected:
  // Expects the voxels of a tile that the ramp gives, x fastest.
  static void expectRamp(const VXint32* tile, const TVector<VXint64>& start, const TVector<VXint64>& extent) {
    TVector<VXint64> p;
    for (p.u = 0; p.u < extent.u; ++p.u)
      for (p.t = 0; p.t < extent.t; ++p.t)
        for (p.c = 0; p.c < extent.c; ++p.c)
          for (p.z = 0; p.z < extent.z; ++p.z)
            for (p.y = 0; p.y < extent.y; ++p.y)
              for (p.x = 0; p.x < extent.x; ++p.x) {
                const TVector<VXint64> q = start + p;
                ASSERT_EQ(*tile++, q.x + 10 * q.y + 100 * q.z + 1000 * q.c + 10000 * q.t + 100000 * q.u) << q;
              }
  }

  ModulePtr source = makeModule("RampModule");
  ModulePtr stage = makeModule("PassModule");
  Field* out = VXModuleGetField(source.get(), "output0");
  Field* open = VXModuleGetField(stage.get(), "output0");
};

TEST_F(CAPITilesTest, ATileOfAllDimensionsIsDelivered) {
  void* tile = nullptr;
  ASSERT_EQ(VXImageGetTile6D(out, &tile, 5, 6, 1, 1, 0, 1, 10, 4, 2, 1, 2, 1, VXint32Type), 0);
  expectRamp(static_cast<VXint32*>(tile), TVector<VXint64>(5, 6, 1, 1, 0, 1), TVector<VXint64>(10, 4, 2, 1, 2, 1));
  VXImageFreeTile(tile);
  VXImageFreeTile(nullptr);
  expectSilence();
}

TEST_F(CAPITilesTest, FewerDimensionsAreTakenAtZero) {
  void* tile = nullptr;
  ASSERT_EQ(VXImageGetTile4D(out, &tile, 1, 2, 1, 1, 3, 2, 2, 1, VXint32Type), 0);
  expectRamp(static_cast<VXint32*>(tile), TVector<VXint64>(1, 2, 1, 1, 0, 0), TVector<VXint64>(3, 2, 2, 1, 1, 1));
  VXImageFreeTile(tile);
  using Tile3D = VXErrorCode (*)(Field*, void**, int, int, int, int, int, int, VXDataType);
  for (const Tile3D getTile : {Tile3D{&VXImageGetTile3D}, Tile3D{&VXImageGetTile}}) {
    tile = nullptr;
    ASSERT_EQ(getTile(out, &tile, 1, 2, 1, 3, 2, 2, VXint32Type), 0);
    expectRamp(static_cast<VXint32*>(tile), TVector<VXint64>(1, 2, 1, 0, 0, 0), TVector<VXint64>(3, 2, 2, 1, 1, 1));
    VXImageFreeTile(tile);
  }
  expectSilence();
}

TEST_F(CAPITilesTest, ATileIsWrittenToTheBufferOfTheCaller) {
  VXint32 buffer[7];
  std::fill(std::begin(buffer), std::end(buffer), -1);
  void* memory = buffer;
  ASSERT_EQ(VXImageGetTile3D(out, &memory, 2, 0, 0, 6, 1, 1, VXint32Type), 0);
  EXPECT_EQ(memory, buffer);
  expectRamp(buffer, TVector<VXint64>(2, 0, 0, 0, 0, 0), TVector<VXint64>(6, 1, 1, 1, 1, 1));
  EXPECT_EQ(buffer[6], -1);
}

TEST_F(CAPITilesTest, VoxelsAreConverted) {
  void* tile = nullptr;
  ASSERT_EQ(VXImageGetTile3D(out, &tile, 2, 0, 0, 3, 1, 1, VXdoubleType), 0);
  const auto* const voxels = static_cast<const double*>(tile);
  EXPECT_EQ(voxels[0], 2.0);
  EXPECT_EQ(voxels[2], 4.0);
  VXImageFreeTile(tile);
}

TEST_F(CAPITilesTest, VoxelsAreScaled) {
  // 2 to 4 becomes 10 to 30, limits in either order.
  const std::function<VXErrorCode(void**)> requests[] = {
      [&](void** m) {
        return VXImageGetScaledTile6D(out, m, 2, 0, 0, 0, 0, 0, 3, 1, 1, 1, 1, 1, VXdoubleType, 2, 4, 10, 30);
      },
      [&](void** m) { return VXImageGetScaledTile4D(out, m, 2, 0, 0, 0, 3, 1, 1, 1, VXdoubleType, 4, 2, 10, 30); },
      [&](void** m) { return VXImageGetScaledTile3D(out, m, 2, 0, 0, 3, 1, 1, VXdoubleType, 2, 4, 30, 10); },
      [&](void** m) { return VXImageGetScaledTile(out, m, 2, 0, 0, 3, 1, 1, VXdoubleType, 2, 4, 10, 30); },
  };
  for (const auto& request : requests) {
    void* tile = nullptr;
    ASSERT_EQ(request(&tile), 0);
    const auto* const voxels = static_cast<const double*>(tile);
    EXPECT_EQ(voxels[0], 10.0);
    EXPECT_EQ(voxels[1], 20.0);
    EXPECT_EQ(voxels[2], 30.0);
    VXImageFreeTile(tile);
  }
  void* tile = nullptr;
  ASSERT_EQ(VXImageGetScaledTile(out, &tile, 2, 0, 0, 3, 1, 1, VXdoubleType, 2, 2, 10, 30), 0);
  EXPECT_EQ(static_cast<const double*>(tile)[1], 11.0) << "to the lower limit, at scale 1";
  VXImageFreeTile(tile);
  expectSilence();
}

TEST_F(CAPITilesTest, AnEmptyBoxWritesNothing) {
  VXint32 voxel = -1;
  for (const int extent : {0, -1, -5, INT_MIN}) {
    void* memory = &voxel;
    EXPECT_EQ(VXImageGetTile3D(out, &memory, 3, 0, 0, extent, 1, 1, VXint32Type), 0) << extent;
    EXPECT_EQ(memory, &voxel);
    memory = nullptr;
    EXPECT_EQ(VXImageGetTile3D(out, &memory, 3, 0, 0, extent, extent, 1, VXint32Type), 0) << extent;
    VXImageFreeTile(memory);
  }
  EXPECT_EQ(voxel, -1);
  EXPECT_EQ(numCalculatedPages, 0);
  expectSilence();
}

TEST_F(CAPITilesTest, ASumThatDoesNotFitWraps) {
  VXint32 voxel = -1;
  void* memory = &voxel;
  // INT_MAX + 2 - 1 wraps to INT_MIN, so the box is empty.
  EXPECT_EQ(VXImageGetTile3D(out, &memory, INT_MAX, 0, 0, 2, 1, 1, VXint32Type), 0);
  EXPECT_EQ(voxel, -1);
  expectSilence();
}

TEST_F(CAPITilesTest, ABoxOutsideOfTheImageWritesNothing) {
  VXint32 voxel = -1;
  void* memory = &voxel;
  EXPECT_EQ(VXImageGetTile3D(out, &memory, 1000, 0, 0, 1, 1, 1, VXint32Type), 0);
  EXPECT_EQ(VXImageGetTile3D(out, &memory, INT_MIN, 0, 0, 1, 1, 1, VXint32Type), 0);
  EXPECT_EQ(voxel, -1);
}

TEST_F(CAPITilesTest, ATileThatIsTooLargeIsOutOfMemory) {
  void* memory = nullptr;
  EXPECT_EQ(VXImageGetTile6D(out, &memory, 0, 0, 0, 0, 0, 0, INT_MAX, INT_MAX, INT_MAX, INT_MAX, 1, 1, VXint32Type), 2);
  EXPECT_EQ(memory, nullptr);
}

TEST_F(CAPITilesTest, ABadTypeIsRefused) {
  VXint32 voxel = -1;
  void* memory = &voxel;
  for (const int type : {-1, 1000, INT_MIN, INT_MAX}) {
    EXPECT_EQ(VXImageGetTile3D(out, &memory, 0, 0, 0, 1, 1, 1, type), 19);
    expectRefusal(19, "VXImageGetTile6D", "Invalid datatype. Ignoring call and returning VX_BAD_PARAMETER.");
    EXPECT_EQ(VXImageGetScaledTile3D(out, &memory, 0, 0, 0, 1, 1, 1, type, 0, 1, 0, 1), 19);
    expectRefusal(19, "VXImageGetScaledTile6D", "Invalid datatype. Ignoring call and returning VX_BAD_PARAMETER.");
    EXPECT_EQ(voxel, -1);
  }
}

TEST_F(CAPITilesTest, ATileIsCalculatedOnceAndAgainAfterAChange) {
  VXFieldConnectFrom(VXModuleGetField(stage.get(), "input0"), out);
  VXint32 voxel = -1;
  void* memory = &voxel;
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(VXImageGetTile3D(open, &memory, 5, 0, 0, 1, 1, 1, VXint32Type), 0);
    EXPECT_EQ(voxel, 5);
    EXPECT_EQ(numCalculatedPages, 2) << "a page of each module";
  }
  VXFieldSetIntValue(VXModuleGetField(source.get(), "offset"), 7);
  ASSERT_EQ(VXImageGetTile3D(open, &memory, 5, 0, 0, 1, 1, 1, VXint32Type), 0);
  EXPECT_EQ(voxel, 12);
  EXPECT_EQ(numCalculatedPages, 4);
  expectSilence();
}

TEST_F(CAPITilesTest, ABadImageGivesItsCode) {
  VXint32 voxel = -1;
  void* memory = &voxel;
  EXPECT_EQ(VXImageGetTile3D(open, &memory, 0, 0, 0, 1, 1, 1, VXint32Type), 3);
  EXPECT_EQ(VXImageGetScaledTile3D(open, &memory, 0, 0, 0, 1, 1, 1, VXint32Type, 0, 1, 0, 1), 3);
  EXPECT_EQ(voxel, -1);
  expectSilence();
}

TEST_F(CAPITilesTest, AModuleThatThrowsGivesItsCode) {
  modulePlace = [](const std::string& place) {
    if (place == "calcOutSubImage") throw 7;
  };
  VXint32 voxel = -1;
  void* memory = &voxel;
  EXPECT_EQ(VXImageGetTile3D(out, &memory, 0, 0, 0, 1, 1, 1, VXint32Type), 7);
  EXPECT_EQ(voxel, -1);
  modulePlace = nullptr;
  EXPECT_FALSE(messages.take().empty());
  VXClearPages(out);
  EXPECT_EQ(VXImageGetTile3D(out, &memory, 0, 0, 0, 1, 1, 1, VXint32Type), 0) << "usable afterwards";
  EXPECT_EQ(voxel, 0);
}

// In a process of its own: the guard against recursion stays closed.
TEST_F(CAPITilesTest, WithoutExceptionHandlingAnExceptionOfAModuleReachesTheHost) {
  const auto request = [this] {
    VXEnableExceptionHandling(0);
    modulePlace = [](const std::string&) { throw std::string("mine"); };
    VXint32 voxel = -1;
    void* memory = &voxel;
    bool hasArrived = false;
    try {
      VXImageGetTile3D(out, &memory, 0, 0, 0, 1, 1, 1, VXint32Type);
    } catch (const std::string& text) {
      hasArrived = text == "mine";
    }
    modulePlace = nullptr;
    const bool isRefusedFromNowOn = VXGetImageState(out) == 22 && VXGetImageState(out) == 22;
    std::_Exit(hasArrived && isRefusedFromNowOn ? 0 : 1);
  };
  EXPECT_EXIT(request(), ::testing::ExitedWithCode(0), "");
}

TEST_F(CAPITilesTest, BadArgumentsAreRefused) {
  VXint32 voxel = -1;
  void* memory = &voxel;
  Field* const name = VXModuleGetField(source.get(), "instanceName");
  constexpr char suffix[] =
      " The field must be initialized an it should be of type OutputConnectorField (or derived from it), but it seems "
      "to be of type StringField.";
  const std::string reason = "Invalid outField pointer or type. Returning VX_BAD_FIELD.";
  EXPECT_EQ(VXImageGetTile3D(nullptr, &memory, 0, 0, 0, 1, 1, 1, VXint32Type), 7);
  expectRefusal(7, "vxAPI: VXImageGetTile6D", reason);
  EXPECT_EQ(VXImageGetTile3D(name, &memory, 0, 0, 0, 1, 1, 1, VXint32Type), 7);
  expectRefusal(29, "vxAPI: VXImageGetTile6D", reason + suffix);
  EXPECT_EQ(VXImageGetTile3D(out, nullptr, 0, 0, 0, 1, 1, 1, VXint32Type), 19);
  expectRefusal(19, "VXImageGetTile6D", "Invalid memory pointer. Ignoring call and returning VX_BAD_PARAMETER.");
  const std::string scaledReason = "Invalid outField pointer or type. Returning BAD_FIELD.";
  EXPECT_EQ(VXImageGetScaledTile3D(nullptr, &memory, 0, 0, 0, 1, 1, 1, VXint32Type, 0, 1, 0, 1), 7);
  expectRefusal(7, "vxAPI: VXImageGetScaledTile6D", scaledReason);
  EXPECT_EQ(VXImageGetScaledTile3D(name, &memory, 0, 0, 0, 1, 1, 1, VXint32Type, 0, 1, 0, 1), 7);
  expectRefusal(29, "vxAPI: VXImageGetScaledTile6D", scaledReason + suffix);
  EXPECT_EQ(VXImageGetScaledTile3D(out, nullptr, 0, 0, 0, 1, 1, 1, VXint32Type, 0, 1, 0, 1), 19);
  expectRefusal(19, "VXImageGetScaledTile6D", "Invalid memory pointer. Ignoring call and returning VX_BAD_PARAMETER.");
  EXPECT_EQ(voxel, -1);
}

// Calls from inside of calculations

TEST_F(CAPITilesTest, ImageFunctionsRefuseToRunInsideOfOneAnother) {
  int size[6] = {1, 1, 1, 1, 1, 1};
  double range = 1;
  float values[16] = {1};
  float dst[3] = {1, 1, 1};
  VXint32 innerVoxel = -1;
  void* innerMemory = &innerVoxel;
  int type = 1;
  modulePlace = [&](const std::string& place) {
    if (place != "calcOutSubImage") return;
    EXPECT_EQ(VXImageGetSize6D(out, &size[0], &size[1], &size[2], &size[3], &size[4], &size[5]), 22);
    EXPECT_EQ(VXImageGetType(out, &type, &type), 22);
    EXPECT_EQ(VXGetImageState(out), 22);
    EXPECT_STREQ(VXGetImageStateString(out), VXGetErrorCodeDescription(22));
    EXPECT_EQ(VXImageGetMinValue(out, &range), 22);
    EXPECT_EQ(VXImageGetMaxValue(out, &range), 22);
    EXPECT_EQ(VXImageGetVoxelToWorldMatrix(out, values), 22);
    EXPECT_EQ(VXImageGetWorldToVoxelMatrix(out, values), 22);
    EXPECT_EQ(VXImageMapVoxelToWorld(out, 5, 5, 5, &dst[0], &dst[1], &dst[2]), 22);
    EXPECT_EQ(VXImageMapWorldToVoxel(out, 5, 5, 5, &dst[0], &dst[1], &dst[2]), 22);
    EXPECT_EQ(VXImageGetTile3D(out, &innerMemory, 0, 0, 0, 1, 1, 1, VXint32Type), 22);
    EXPECT_EQ(VXImageGetScaledTile3D(out, &innerMemory, 0, 0, 0, 1, 1, 1, VXint32Type, 0, 1, 0, 1), 22);
  };
  VXint32 voxel = -1;
  void* memory = &voxel;
  EXPECT_EQ(VXImageGetTile3D(out, &memory, 3, 0, 0, 1, 1, 1, VXint32Type), 0);
  EXPECT_EQ(voxel, 3);
  EXPECT_EQ(innerVoxel, -1);
  EXPECT_EQ(size[0], 0);
  EXPECT_EQ(type, 1);
  EXPECT_EQ(range, 0.0);
  EXPECT_EQ(values[0], 1.0F);
  EXPECT_EQ(dst[0], 1.0F) << "left as it was";
  const auto refused = [](const char* label, const std::string& text) {
    return Message{VX_ERROR, 22, label, "Terminating/breaking recursion." + text};
  };
  const Message params = refused("_VXGetOutputParams", " Not returning image type.");
  expectMessages({params, params, params, params, refused("VXImageGetMinValue", " Returning 0 as minValue."),
                  refused("VXImageGetMaxValue", " Returning 0 as maxValue."),
                  refused("VXImageGetVoxelToWorldMatrix", " Returning unchanged matrix."),
                  refused("VXImageGetWorldToVoxelMatrix", " Returning unchanged matrix."),
                  refused("VXImageMapVoxelToWorld", " Not mapping coordinates."),
                  refused("VXImageMapWorldToVoxel", " Not mapping coordinates."), refused("VXImageGetTile6D", ""),
                  refused("VXImageGetScaledTile6D", "")});
}

TEST_F(CAPITilesTest, WhatWouldFreeTheCalculationIsRefusedMeanwhile) {
  ModulePtr other = makeModule("RampModule");
  for (const std::string place : {"calcOutImageProps", "calcOutSubImage"}) {
    VXFieldTouch(out);
    int count = 0;
    modulePlace = [&](const std::string& here) {
      if (here != place || count++ > 0) return;
      EXPECT_EQ(VXClearPages(out), 14);
      EXPECT_EQ(VXClearMemoryImg(out), 14);
      EXPECT_EQ(VXClearPagesAndMemoryImg(out), 14);
      VXClearCache();
      EXPECT_EQ(VXPushState(0), 14);
      EXPECT_EQ(VXPopState(), 14);
      VXDeleteModule(other.get());
      VXDeleteModule(source.get());
      char* text = nullptr;
      EXPECT_EQ(VXUnLoadLibrary("CAPITest", nullptr, &text, 1), 69);
      EXPECT_EQ(text, nullptr);
      EXPECT_EQ(VXDestroy(), 1);
    };
    VXint32 voxel = -1;
    void* memory = &voxel;
    EXPECT_EQ(VXImageGetTile3D(out, &memory, 3, 0, 0, 1, 1, 1, VXint32Type), 0);
    modulePlace = nullptr;
    EXPECT_EQ(voxel, 3);
    EXPECT_GT(count, 0) << place;
    constexpr char reason[] =
        "This call would free what is being calculated. It is not allowed during image processing. Ignoring call.";
    Messages expected;
    for (const char* const name : {"VXClearPages", "VXClearMemoryImg", "VXClearPagesAndMemoryImg", "VXClearCache",
                                   "VXPushState", "VXPopState", "VXDeleteModule", "VXDeleteModule"}) {
      expected.push_back({VX_ERROR, 14, std::string("vxAPI: ") + name, reason});
    }
    expected.push_back({VX_ERROR, 69, "vxAPI: VXUnLoadLibrary", reason});
    expected.push_back({VX_ERROR, 14, "vxAPI: VXDestroy", reason});
    expectMessages(expected);
  }
  EXPECT_STREQ(VXBaseGetType(other.get()), "RampModule") << "still there";
}

}  // namespace
}  // namespace vx::test
