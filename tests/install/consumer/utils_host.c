/* Uses the base layer alone. */

#include <vxUtilsAPI.h>

int main(void) {
  VXint64 value = 0;
  return VXint64Scan("42", &value) && value == 42 ? 0 : 1;
}
