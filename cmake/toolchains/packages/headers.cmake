# proreflax_add_headers(TARGET FOLDER)
#
# A library that is headers alone, from the building machine's own packages: they fit every target,
# but the folder around them holds the building machine's C library.
function(proreflax_add_headers target folder)
  if(TARGET ${target})
    return()
  endif()
  find_path(${folder}_headers ${folder} PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
            REQUIRED)
  set(alone "${CMAKE_BINARY_DIR}/headers/${folder}")
  file(MAKE_DIRECTORY "${alone}")
  file(CREATE_LINK "${${folder}_headers}/${folder}" "${alone}/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} INTERFACE "${alone}")
endfunction()
