# The loops over runs of voxels, one source for each instruction set; the library chooses when it is loaded. Loops of
# this kind are nothing without optimisation, so they have it in every build.

set(vx_row_kernel_options -O3)
set_source_files_properties(vxRowKernelsBaseline.cpp PROPERTIES COMPILE_OPTIONS "${vx_row_kernel_options}")

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  target_sources(vx_image_objects PRIVATE vxRowKernelsAvx2.cpp vxRowKernelsAvx512.cpp)
  set_source_files_properties(vxRowKernels.cpp PROPERTIES COMPILE_DEFINITIONS VX_HAS_X86_ROW_KERNELS=1)
  set_source_files_properties(vxRowKernelsAvx2.cpp PROPERTIES
    COMPILE_OPTIONS "${vx_row_kernel_options};-mavx2")
  set_source_files_properties(vxRowKernelsAvx512.cpp PROPERTIES
    COMPILE_OPTIONS "${vx_row_kernel_options};-mavx512f;-mavx512bw;-mavx512dq;-mavx512vl")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # gcc takes the results that its own intrinsics leave undefined for variables that someone forgot to set.
    set_property(SOURCE vxRowKernelsAvx512.cpp APPEND PROPERTY COMPILE_OPTIONS
      -Wno-uninitialized -Wno-maybe-uninitialized)
  endif()
endif()
