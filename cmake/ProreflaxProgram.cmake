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
  proreflax_emulate(${target})
endmacro()

# proreflax_emulate(TARGET)
#
# Where programs run under emulation: puts a program of the building machine in TARGET's place that
# starts it so. An emulated program that starts another one would else hand it to the machine itself,
# which cannot run it.
function(proreflax_emulate target)
  if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
    return()
  endif()
  get_target_property(name ${target} OUTPUT_NAME)
  if(NOT name)
    set(name ${target})
  endif()
  get_target_property(folder ${target} RUNTIME_OUTPUT_DIRECTORY)
  if(NOT folder)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}")
  endif()
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${folder}/emulated")
  list(JOIN CMAKE_CROSSCOMPILING_EMULATOR "\", \"" emulator)
  find_program(PROREFLAX_BUILDING_CC NAMES cc gcc REQUIRED)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND "${PROREFLAX_BUILDING_CC}" -std=c99 -D_DEFAULT_SOURCE "-DEMULATOR=\"${emulator}\""
            "-DPROGRAM=\"${folder}/emulated/${name}\"" -o "${folder}/${name}"
            "${PROJECT_SOURCE_DIR}/tests/support/launcher.c"
    VERBATIM)
endfunction()
