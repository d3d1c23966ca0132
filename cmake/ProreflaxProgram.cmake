# proreflax_add_program(NAME SOURCES source... [LIBRARIES library...])
#
# Makes the program NAME over the shipped library, in the build folder's bin/, and, where a device is
# built, NAME_device over the device's library, in the device's programs/. Both bear the name NAME.
function(proreflax_add_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  proreflax_add_program_variant(${name} proreflax "${CMAKE_BINARY_DIR}/bin"
                                "${PROREFLAX_DEVICE_ROOT}")
  if(PROREFLAX_BUILD_DEVICE)
    proreflax_add_program_variant(${name}_device proreflax_device
                                  "${PROREFLAX_DEVICE_DIR}/programs" "${PROREFLAX_DEVICE_DIR}")
  endif()
endfunction()

# Uses name and arg_... of proreflax_add_program().
macro(proreflax_add_program_variant target library folder root)
  add_executable(${target} ${arg_SOURCES})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE ${library} ${arg_LIBRARIES})
  target_compile_definitions(${target} PRIVATE
    PROREFLAX_DEVICE_ROOT="${root}" PROREFLAX_VERSION="${PROJECT_VERSION}")
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${name} RUNTIME_OUTPUT_DIRECTORY "${folder}")
endmacro()
