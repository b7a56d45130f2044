# Module libraries, in this project and in projects that use the installed package.

# A library with modules, which hosts load at run time by VXLoadLibrary("NAME"). Its file is libNAME.so. The library is
# found in a folder of the environment variable VX_MODULE_PATH and in `vx/modules` beside libVX.so.
function(vx_add_module_library name)
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE VX::VX)
  target_compile_features(${name} PRIVATE cxx_std_17)
  # Mapped voxels have the same bits in modules as in the library.
  target_compile_options(${name} PRIVATE -ffp-contract=off)
  # A library with unique symbols, which gcc makes of the static members of templates, is never unloaded.
  target_compile_options(${name} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
  set_target_properties(${name} PROPERTIES
    PREFIX "lib" CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  if(TARGET vx_build_options)
    target_link_libraries(${name} PRIVATE vx_build_options)
    set_target_properties(${name} PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/vx/modules")
  endif()
endfunction()
