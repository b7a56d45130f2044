// The choice of page extents for any 64-bit numbers, against the plain choice in 128 bits.

#include "FuzzBoxes.h"
#include "FuzzCheck.h"
#include "PlainPageExt.h"

#include "vxBaseOpTools.h"

#include <algorithm>

using namespace vx;
using fuzz::print;
using fuzz::require;

namespace {

// Extents as images have them, or any numbers.
VXint64 takeWish(fuzz::FuzzInput& input, bool isOrdinary, VXint64 greatest) {
  return isOrdinary ? input.takeInRange<VXint64>(0, greatest) : input.takeNumber();
}

test::PageExtArguments takeArguments(fuzz::FuzzInput& input) {
  test::PageExtArguments arguments;
  arguments.dataType = static_cast<int>(input.takeNumber());
  const bool isOrdinary = input.takeBool();
  for (std::size_t i = 0; i < 6; ++i) {
    const VXint64 scale = i < 2 ? 16 : 1;
    arguments.img[i] = takeWish(input, isOrdinary, 255 * scale);
    arguments.page[i] = takeWish(input, isOrdinary, 40 * scale);
    arguments.preferred[i] = input.takeBool() ? arguments.page[i] : takeWish(input, isOrdinary, 6 * scale);
    arguments.step[i] = takeWish(input, isOrdinary, 4 * scale);
    arguments.min[i] = takeWish(input, isOrdinary, 12 * scale);
    arguments.max[i] = takeWish(input, isOrdinary, 60 * scale);
  }
  return arguments;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::silenceMessages();
  fuzz::FuzzInput input(data, size);
  const test::PageExtArguments arguments = takeArguments(input);
  Vector result = arguments.page;
  BaseOpTools::adaptPageExt(result, arguments.dataType, arguments.img, arguments.preferred, arguments.step,
                            arguments.min, arguments.max);
  for (std::size_t i = 0; i < 6; ++i) require(result[i] > 0, "an extent is above 0");
  try {
    const test::PlainPageExt plain(arguments, 2000);
    const Vector shouldBe = plain.getResult();
    for (std::size_t i = 0; i < 6; ++i) {
      // Only an extent that could be doubled without end may differ.
      if (plain.isEndless() && plain.countPages(i) == 1) continue;
      fuzz::requireEqual(result[i], shouldBe[i], "the extent is that of the plain choice", print<VXint64>);
    }
  } catch (test::WalkTooLong) {
    // There is nothing to compare with.
  }
  return 0;
}
