# The library: C++ inside, a C interface outside, and libc alone at run time.

set(PROREFLAX_EXPORTS "${CMAKE_CURRENT_SOURCE_DIR}/cmake/proreflax.map")

set(PROREFLAX_SOURCES
  accessors/device_sections.cpp
  accessors/mac_access_list.cpp
  accessors/panel_sections.cpp
  accessors/section_engine.cpp
  accessors/section_table.cpp
  accessors/time.cpp
  accessors/wireless_sections.cpp
  firmware/image_check.cpp
  firmware/image_crc.cpp
  firmware/image_parts.cpp
  firmware/image_write.cpp
  firmware/placeholders.cpp
  transport/lock.cpp
  transport/message.cpp
  transport/raw_value.cpp
  transport/store_requests.cpp
  values/hex_text.cpp
  values/ip_text.cpp
  values/number_text.cpp
  values/typed_values.cpp
  store/child_process.cpp
  store/ini_text.cpp
  store/life_cycle.cpp
  store/section_store.cpp
  wireless/associate.cpp
  wireless/decimal_number.cpp
  wireless/event_log.cpp
  wireless/fixed_answers.cpp
  wireless/mac_text.cpp
  wireless/proc_file.cpp
  wireless/status.cpp)
list(TRANSFORM PROREFLAX_SOURCES PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")

# Parts of the store engine that no operation calls and that ship all the same: hidden functions,
# named to the linker because it drops what nothing refers to.
set(PROREFLAX_KEPT
  _ZN9proreflax15config_run_gzipEiPKc
  _ZN9proreflax17config_parse_lineEPc)

# proreflax_add_library(NAME ROOT [FLASH source])
#
# Makes the shared library NAME with ROOT in front of every path of the device, and NAME_objects, its
# parts, for tests that look inside. FLASH is what firmware is written through: the calls of the
# device's own driver unless another source is named.
function(proreflax_add_library name root)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "FLASH" "")
  if(NOT arg_FLASH)
    set(arg_FLASH firmware/flash_device.cpp)
  endif()
  add_library(${name}_objects OBJECT ${PROREFLAX_SOURCES} "${PROJECT_SOURCE_DIR}/${arg_FLASH}")
  target_include_directories(${name}_objects PUBLIC
    "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/include")
  target_compile_definitions(${name}_objects PUBLIC PROREFLAX_DEVICE_ROOT="${root}")
  # Left to itself the compiler makes one calloc of a malloc and a memset, and calloc passes by the
  # allocator's cache of free blocks: every request would pay for it.
  target_compile_options(${name}_objects PRIVATE
    -fno-plt -fno-builtin-malloc -fno-exceptions -fno-rtti -fno-threadsafe-statics
    -fvisibility=hidden -fvisibility-inlines-hidden -ffunction-sections -fdata-sections)
  if(NOT PROREFLAX_SANITIZE)
    target_compile_options(${name}_objects PRIVATE
      -fno-unwind-tables -fno-asynchronous-unwind-tables)
  endif()

  add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
  target_include_directories(${name} INTERFACE
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>")
  target_link_options(${name} PRIVATE
    "-Wl,--version-script=${PROREFLAX_EXPORTS}" -Wl,--gc-sections -Wl,-z,relro)
  list(TRANSFORM PROREFLAX_KEPT PREPEND -Wl,--undefined= OUTPUT_VARIABLE kept)
  target_link_options(${name} PRIVATE ${kept})
  if(NOT PROREFLAX_SANITIZE)
    # No C++ runtime can slip in: it is not even offered to the linker.
    target_link_options(${name} PRIVATE -nodefaultlibs -Wl,-z,defs)
    target_link_libraries(${name} PRIVATE -lc -lgcc)
  endif()
  set_target_properties(${name} PROPERTIES
    PREFIX "" OUTPUT_NAME proreflax
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS "${PROREFLAX_EXPORTS}")
endfunction()

# The sections' tables and the engine that walks them, for programs that handle every section alike:
# the library exports neither. Link it before the library, whose typed operations it calls.
add_library(proreflax_section_tables STATIC EXCLUDE_FROM_ALL
  accessors/section_engine.cpp
  accessors/section_list.cpp
  accessors/section_table.cpp)
target_include_directories(proreflax_section_tables PUBLIC
  "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/include")
target_compile_options(proreflax_section_tables PRIVATE -fvisibility=hidden)

# The rules of firmware images, for programs that tell what an image holds: likewise.
add_library(proreflax_image_rules STATIC EXCLUDE_FROM_ALL
  firmware/image_check.cpp
  firmware/image_crc.cpp
  firmware/image_parts.cpp)
target_include_directories(proreflax_image_rules PUBLIC
  "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/include")
target_compile_options(proreflax_image_rules PRIVATE -fvisibility=hidden)
