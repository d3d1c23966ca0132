# proreflax_man_pages(LIST FOLDER PAGE...)
#
# The manual pages of section 3, as they are installed. Each PAGE is completed with what the public
# headers say (manual_page.awk), in FOLDER. And man(1) looks for a file of the name that it is given,
# but a page describes several functions: for every name in a page's NAME section but its own, this
# writes a page that leads there (".so man3/proreflax_values.3"). Sets LIST to all of them. They are
# made anew when a PAGE or a header changes.
function(proreflax_man_pages list folder)
  set(script "${PROJECT_SOURCE_DIR}/cmake/manual_page.awk")
  set(headers "${PROJECT_SOURCE_DIR}/include/proreflax")
  file(GLOB sources CONFIGURE_DEPENDS "${headers}/*.h")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${script} ${sources} ${ARGN})
  file(MAKE_DIRECTORY "${folder}")
  set(pages)
  foreach(source IN LISTS ARGN)
    cmake_path(GET source FILENAME file)
    execute_process(COMMAND awk -v "headers=${headers}" -f "${script}" "${source}"
                    OUTPUT_FILE "${folder}/${file}" RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
      message(FATAL_ERROR "awk cannot complete the manual page ${file}: ${result}")
    endif()
    proreflax_man_links(links "${folder}/${file}")
    list(APPEND pages "${folder}/${file}" ${links})
  endforeach()
  set(${list} "${pages}" PARENT_SCOPE)
endfunction()

# Writes the pages that lead to PAGE, beside it, and sets LIST to them.
function(proreflax_man_links list page)
  cmake_path(GET page PARENT_PATH folder)
  cmake_path(GET page FILENAME file)
  file(STRINGS "${page}" lines REGEX "^\\.N[md] ")
  set(links)
  foreach(line IN LISTS lines)
    if(line MATCHES "^\\.Nd ")
      break()
    endif()
    string(REGEX REPLACE "^\\.Nm ([^ ]+).*$" "\\1.3" link "${line}")
    if(NOT link STREQUAL file)
      file(CONFIGURE OUTPUT "${folder}/${link}" CONTENT ".so man3/${file}\n")
      list(APPEND links "${folder}/${link}")
    endif()
  endforeach()
  set(${list} "${links}" PARENT_SCOPE)
endfunction()
