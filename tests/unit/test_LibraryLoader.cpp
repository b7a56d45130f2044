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

TEST(LibraryPlaces, WhatIsNotSearchedStandsInItsPlaceWithTheReason) {
  std::vector<std::string> told;
  for (const LibraryPlace& place : libraryPlaces("Name", {"/one:two", "."}, "/own")) {
    told.push_back(place.path + (place.refusal ? std::string(" ") + place.refusal : std::string()));
  }
  const std::string relative = " Not searched: a folder of VX_MODULE_PATH must be absolute.";
  const std::string current = " Not searched: LD_LIBRARY_PATH has a component that means the current folder.";
  EXPECT_EQ(told, (Paths{"/one/libName.so", "/one/Name", "two/libName.so" + relative, "two/Name" + relative,
                         "/own/libName.so", "/own/Name", "/own/vx/modules/libName.so", "/own/vx/modules/Name",
                         "libName.so" + current, "Name" + current}));
}

TEST(CloseLibrary, ANullHandleIsAFailure) {
  std::string text;
  EXPECT_FALSE(closeLibrary(nullptr, text));
  EXPECT_EQ(text, "There is no library behind a null handle.");
}

TEST(OpenLibrary, AnUnknownNameGivesNull) { EXPECT_EQ(openLibrary("NoSuchLibraryAnywhere"), nullptr); }

TEST(OpenLibrary, EachPlaceIsToldWithTheReason) {
  std::vector<std::string> told;
  const auto tell = [&](const char* path, const char* reason) {
    told.push_back(std::string(path) + " | " + (reason ? reason : "found"));
  };
  EXPECT_EQ(openLibrary("/no/such/Library", nullptr, tell), nullptr);
  EXPECT_EQ(told,
            (Paths{"/no/such/libLibrary.so | There is no such file.", "/no/such/Library | There is no such file."}));
}

TEST(OpenLibrary, TheLastPlaceIsThatOfTheLibrary) {
  std::vector<std::string> told;
  const auto tell = [&](const char* path, const char* reason) {
    told.push_back(std::string(path) + (reason ? " failed" : " found"));
  };
  void* const library = openLibrary("libc.so.6", nullptr, tell);
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(told.back(), "libc.so.6 found");
  EXPECT_EQ(told[told.size() - 2], "liblibc.so.6.so failed");
  EXPECT_TRUE(closeLibrary(library, told.emplace_back()));
}

}  // namespace
}  // namespace vx::test
