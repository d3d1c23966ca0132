# cmake -DSOURCE=folder -DFOLDER=folder -P plain_build.cmake
#
# Builds the project as someone does who has a compiler and nothing else: no option, no package.

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nended with ${result}:\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
unset(ENV{CMAKE_BUILD_TYPE})
run("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${FOLDER}" -G Ninja
    "-DCMAKE_PROJECT_INCLUDE=${CMAKE_CURRENT_LIST_DIR}/refuse_packages.cmake")
run("${CMAKE_COMMAND}" --build "${FOLDER}" --parallel 2)

file(STRINGS "${FOLDER}/CMakeCache.txt" build_type REGEX "^CMAKE_BUILD_TYPE:")
if(NOT build_type MATCHES "=Release$")
  message(FATAL_ERROR "A plain build is not a release: ${build_type}")
endif()
if(NOT EXISTS "${FOLDER}/proreflax.so.0")
  message(FATAL_ERROR "A plain build makes no proreflax.so.0")
endif()
file(GLOB_RECURSE more "${FOLDER}/*_tests" "${FOLDER}/bin/*" "${FOLDER}/device/*")
if(more)
  message(FATAL_ERROR "A plain build makes more than the library: ${more}")
endif()
file(REMOVE_RECURSE "${FOLDER}")
