#include "vxCLocale.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace vx::test {
namespace {

// Sets the locale of the process for a test, one that writes a decimal comma.
class CommaLocale {
 public:
  CommaLocale() : _before(std::setlocale(LC_ALL, nullptr)), _isSet(std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr) {}
  ~CommaLocale() { std::setlocale(LC_ALL, _before.c_str()); }
  bool isSet() const { return _isSet; }

 private:
  std::string _before;
  bool _isSet;
};

std::string printed(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

TEST(CLocaleScope, NumbersHaveADecimalPointInsideAndTheHostsCommaOutside) {
  const CommaLocale host;
  ASSERT_TRUE(host.isSet()) << "the locale de_DE.UTF-8 is missing; scripts/setup makes it";
  EXPECT_EQ(printed(1.5), "1,5");
  {
    const CLocaleScope scope;
    EXPECT_EQ(printed(1.5), "1.5");
    EXPECT_EQ(std::strtod("2.25", nullptr), 2.25);
    {
      const CLocaleScope nested;
      EXPECT_EQ(printed(1.5), "1.5");
    }
    EXPECT_EQ(printed(1.5), "1.5");
  }
  EXPECT_EQ(printed(1.5), "1,5");
  EXPECT_EQ(std::strtod("2,25", nullptr), 2.25);
}

}  // namespace
}  // namespace vx::test
