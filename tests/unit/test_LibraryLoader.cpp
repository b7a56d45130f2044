#include "vxLibraryLoader.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using Paths = std::vector<std::string>;

TEST(LibraryCandidates, ANameIsLookedForInModulePathOwnFolderAndSystemLoader) {
  EXPECT_EQ(libraryCandidates("Name", {"/one:/two", "/lib"}, "/own"),
            (Paths{"/one/libName.so", "/one/Name", "/two/libName.so", "/two/Name", "/own/libName.so", "/own/Name",
                   "/own/vx/modules/libName.so", "/own/vx/modules/Name", "libName.so", "Name"}));
  EXPECT_EQ(libraryCandidates("Name", {nullptr, nullptr}, ""), (Paths{"libName.so", "Name"}));
}

TEST(LibraryCandidates, APathIsTakenAsAPathOnly) {
  EXPECT_EQ(libraryCandidates("/some/where/Name", {"/one", nullptr}, "/own"),
            (Paths{"/some/where/libName.so", "/some/where/Name"}));
  EXPECT_EQ(libraryCandidates("./Name.so", {nullptr, nullptr}, "/own"), (Paths{"./libName.so.so", "./Name.so"}));
}

TEST(LibraryCandidates, TheCurrentFolderIsNeverSearched) {
  EXPECT_EQ(libraryCandidates("Name", {":.:relative::", nullptr}, ""), (Paths{"libName.so", "Name"}));
  for (const char* loaderPath : {":", "/lib:", ":/lib", "/lib::/usr/lib", ".", "/lib:.", "lib", "/lib;;/usr/lib"}) {
    EXPECT_EQ(libraryCandidates("Name", {nullptr, loaderPath}, "/own"),
              (Paths{"/own/libName.so", "/own/Name", "/own/vx/modules/libName.so", "/own/vx/modules/Name"}))
        << loaderPath;
  }
  for (const char* loaderPath : {"", "/lib", "/lib:/usr/lib", "/lib;/usr/lib"}) {
    EXPECT_EQ(libraryCandidates("Name", {nullptr, loaderPath}, ""), (Paths{"libName.so", "Name"})) << loaderPath;
  }
}

TEST(CloseLibrary, ANullHandleIsAFailure) {
  std::string text;
  EXPECT_FALSE(closeLibrary(nullptr, text));
  EXPECT_EQ(text, "There is no library behind a null handle.");
}

TEST(OpenLibrary, AnUnknownNameGivesNull) { EXPECT_EQ(openLibrary("NoSuchLibraryAnywhere"), nullptr); }

}  // namespace
}  // namespace vx::test
