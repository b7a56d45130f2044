#include "Rows.h"

namespace vx::test::rows {

namespace {

// The kinds under the names of the table, where `image` is an argument too.
#define VX_KIND_plain Kind::plain
#define VX_KIND_image Kind::image
#define VX_KIND_frees Kind::frees
#define VX_KIND_stops Kind::stops

std::vector<Row> makeRows() {
  return {
#define API(function, kind, answer, ...) \
  makeRow(#function, VX_KIND_##kind, Answer::answer, &function __VA_OPT__(, ) __VA_ARGS__),
#define BASE(function)
#include "api.def"
#undef API
#undef BASE
  };
}

}  // namespace

const std::vector<Row>& allRows() {
  static const std::vector<Row> rows = makeRows();
  return rows;
}

}  // namespace vx::test::rows
