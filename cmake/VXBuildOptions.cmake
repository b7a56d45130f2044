# What every target of the project is built with, kept in one interface target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# All libraries and programs in one place each, so that a library finds its neighbours as it does when installed.
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

add_library(vx_build_options INTERFACE)
target_compile_options(vx_build_options INTERFACE
  -Wall -Wextra -Wconversion -Wshadow
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
  # A mapped voxel is (v * scale) rounded, then + shift rounded; a fused multiply-add gives other bits.
  -ffp-contract=off
  # int8 is `char`, which is unsigned on some processors.
  -fsigned-char
  # Messages name sources as they stand in the project, not where this machine keeps them.
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # A library with unique symbols, which gcc makes of the static members of templates, is never unloaded.
  target_compile_options(vx_build_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
  # A library calls its own functions, whatever else a program defines; so they can be inlined, as clang does anyway.
  target_compile_options(vx_build_options INTERFACE -fno-semantic-interposition)
endif()
if(VX_WARNINGS_AS_ERRORS)
  target_compile_options(vx_build_options INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(vx_build_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety>)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # gcc 12 takes the assignment of a literal to a std::string for an overlapping copy.
  target_compile_options(vx_build_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(VX_SANITIZERS)
  target_compile_options(vx_build_options INTERFACE "-fsanitize=${VX_SANITIZERS}" -fno-omit-frame-pointer -g1)
  target_link_options(vx_build_options INTERFACE "-fsanitize=${VX_SANITIZERS}")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With sanitizers gcc sees uninitialised values in the standard library that are none.
    target_compile_options(vx_build_options INTERFACE -Wno-maybe-uninitialized)
  endif()
  if(VX_SANITIZERS MATCHES "undefined")
    target_compile_options(vx_build_options INTERFACE -fsanitize=float-cast-overflow -fno-sanitize-recover=all)
  endif()
endif()
if(VX_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "VX_FUZZ needs clang, whose libFuzzer the targets are linked with.")
  endif()
  # Everything is instrumented; the fuzzer itself is linked into its targets alone.
  target_compile_options(vx_build_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(VX_HARDENING AND NOT VX_SANITIZERS AND NOT VX_COVERAGE)
  # Debug builds are not optimised, and checks of sizes in calls of the C library need that.
  set(optimised "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
  target_compile_options(vx_build_options INTERFACE
    -fstack-protector-strong
    -fstack-clash-protection
    "$<${optimised}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>"
    "$<$<COMPILE_LANGUAGE:CXX>:-D_GLIBCXX_ASSERTIONS>")
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_compile_options(vx_build_options INTERFACE -fcf-protection)
  endif()
  target_link_options(vx_build_options INTERFACE
    LINKER:-z,relro,-z,now,-z,noexecstack,-z,separate-code
    # For programs; the option of position independent code is for libraries alone.
    "$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>")
endif()
if(VX_COVERAGE AND NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  message(FATAL_ERROR "VX_COVERAGE needs clang, whose figures are of the source")
endif()
find_package(Threads REQUIRED)

# One storey of the library: sources that become part of a shared library and can be linked into unit tests as
# they are, hidden symbols and all.
function(vx_add_storey name)
  add_library(${name} OBJECT ${ARGN})
  set_target_properties(${name} PROPERTIES
    CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_link_libraries(${name} PRIVATE vx_build_options PUBLIC Threads::Threads)
  if(VX_COVERAGE)
    # Only the library itself is measured. Threads share the counters.
    target_compile_options(${name} PRIVATE -fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic)
    target_link_options(${name} INTERFACE -fprofile-instr-generate)
  endif()
endfunction()
