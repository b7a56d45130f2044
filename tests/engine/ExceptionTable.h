// What becomes of an exception that leaves an operation of a module, as a table.
//
// In the texts T stands for the module that throws and R for the one that is requested.

#ifndef VX_TESTS_EXCEPTION_TABLE_H
#define VX_TESTS_EXCEPTION_TABLE_H

#include "ThrowingChain.h"

#include "vxTypes.h"

#include <climits>
#include <vector>

namespace vx::test {

/// What is asked for when a module throws.
enum class Request {
  newTile,     ///< A tile while all images are out of date.
  tile,        ///< A tile while all images are valid and have no pages.
  properties,  ///< The properties while all images are out of date.
  allPages,    ///< To walk through all pages, while all images are valid and have no pages.
  touch        ///< To touch the source.
};

/// Results beside plain codes.
constexpr int theCode = INT_MIN;       ///< The code that was thrown; for a thrown 0 any code but 0.
constexpr int passesOn = INT_MIN + 1;  ///< The exception itself reaches the caller.

/// A message.
struct Said {
  VXMessageType level;
  int code;  ///< Or `theCode`.
  const char* label;
  const char* reason;
};
constexpr const char* caught =
    "Controlled but still undesired exception caught - continuing operation. Some processed image data may be invalid";
/// The report of a fatal check or of a block that an exception leaves; its texts don't matter.
constexpr Said fatal41{VX_FATAL, VX_BAD_POINTER, nullptr, nullptr};
/// For each group of pages that fails, from that of the module that throws to that of the requested one: a fatal
/// report, and in front of it an error, "Module ... called by Host::_calcPages:", where pages were counted as failed.
constexpr Said failedGroups{0, 1, nullptr, nullptr};
constexpr Said failedGroupsAfterPages{0, 2, nullptr, nullptr};
/// For each field that the exception passes on its way to the caller: a fatal report. The field is silent from then on.
constexpr Said silencedFields{0, 3, nullptr, nullptr};

/// What a caller sees.
struct Outcome {
  int resultHere;   ///< If the requested module throws.
  int resultAbove;  ///< If one three levels up does.
  std::vector<Said> messages;
};

/// Which pages exist afterwards, of the modules from the one that throws to the requested one.
enum class Pages {
  none,      ///< None were made.
  first,     ///< The first page of each, locked.
  allThere,  ///< All pages of the one that throws, and the first page of each behind it, locked.
  all        ///< All, as if nothing had happened.
};

/// A row: an operation and a request.
struct ExceptionRow {
  Operation operation;
  Request request;
  Outcome codeWhenOn;    ///< For a thrown error code while exception handling is on,
  Outcome codeWhenOff;   ///< or off;
  Outcome otherWhenOn;   ///< for any other exception while exception handling is on,
  Outcome otherWhenOff;  ///< or off.
  Pages pages;           ///< After a failure.
};

/// All rows.
const std::vector<ExceptionRow>& exceptionTable();

}  // namespace vx::test

#endif
