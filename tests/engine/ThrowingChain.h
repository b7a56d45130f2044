// A chain of modules of which one throws, from one of its operations.

#ifndef VX_TESTS_THROWING_CHAIN_H
#define VX_TESTS_THROWING_CHAIN_H

#include "NetworkModules.h"

#include "vxBaseOp.h"

#include <atomic>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace vx::test {

/// The operations of a module that the library calls.
enum class Operation {
  none,
  handleInput,
  calcOutImageProps,
  calcInSubImageBox,
  calcInSubImageProps,
  calcOutSubImage,
  notifyFirst,
  setMarker,
  getMarker,
  handleNotification
};
const char* nameOf(Operation operation);

/// What may be thrown.
enum class Thrown { nothing, code7, code0, codeMinus1, string, text, runtimeError, badAlloc, ownType, somethingElse };
const char* nameOf(Thrown thrown);
inline std::ostream& operator<<(std::ostream& stream, Thrown thrown) { return stream << nameOf(thrown); }
inline bool isCode(Thrown thrown) {
  return thrown == Thrown::code7 || thrown == Thrown::code0 || thrown == Thrown::codeMinus1;
}
[[noreturn]] void throwIt(Thrown thrown);
/// What a function throws. \param result takes what it returns otherwise.
template <class Function>
Thrown caughtFrom(Function function, int& result);
/// To be called while an exception is handled.
Thrown currentException();

/// Adds 1 to its first input, all of which it wants for each page; the second input is open. It is told by the test
/// from which operation to throw: from calcOutSubImage only for the page at the origin, otherwise at each call.
class ThrowingModule : public BaseOp {
 public:
  explicit ThrowingModule(const std::string& name);
  VX_ABSTRACT_CLASS_HEADER(ThrowingModule)

  INPUT_HANDLE handleInput(int inIndex, INPUT_STATE state) const override;
  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& outSubImgBox, int outIndex) override;
  void calcInSubImageProps(int inIndex, InSubImageProps& props, int outIndex) override;
  using BaseOp::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs, ThreadInfo& threadInfo) override;
  void handleNotification(Field* field) override;
  void notifyFirstCalcOutSubImage(int outIndex, bool isProcessAllPages) override;
  void setMarker(int marker) override;
  int getMarker() override;

  /// From where it throws, and what.
  void arm(Operation operation, Thrown thrown);

 private:
  void throwFrom(Operation operation) const;

  std::atomic<Operation> _operation{Operation::none};
  std::atomic<Thrown> _thrown{Thrown::nothing};
  PlainBox _inputBox;
};

/// A source of 8 x 4 voxels in four pages, and behind it the modules L3, L2, L1 and L0, of which L0 is requested.
class ThrowingChain {
 public:
  static constexpr int numLevels = 4;
  static constexpr int numPages = 4;

  ThrowingChain();

  ThrowingModule& level(int i) { return *_levels[static_cast<std::size_t>(i)]; }
  BaseOp& source() { return *_source; }
  /// What a page of L0 is, if the pages of one level are 0 in place of what they should be.
  std::vector<VXint16> expectedPage(int pageId, bool isLevelZero, int zeroLevel) const;

  /// Changes a parameter of the source, and so makes all images out of date.
  void touchSource();

 private:
  std::unique_ptr<NetworkModule> _source;
  std::vector<std::unique_ptr<ThrowingModule>> _levels;
};

template <class Function>
Thrown caughtFrom(Function function, int& result) {
  try {
    result = function();
    return Thrown::nothing;
  } catch (...) {
    return currentException();
  }
}

}  // namespace vx::test

#endif
