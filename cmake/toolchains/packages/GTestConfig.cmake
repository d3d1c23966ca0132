# Built for the target from the sources that Debian's package brings.
set(INSTALL_GTEST OFF)
add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
foreach(target IN ITEMS gtest gtest_main gmock gmock_main)
  # Their warnings are not ours to mend.
  target_compile_options(${target} PRIVATE -w)
endforeach()
