# proreflax_man_links(LIST FOLDER PAGE...)
#
# man(1) looks for a file of the name that it is asked for, but a page describes several functions.
# For every name in a PAGE's NAME section but its own, this writes a page to FOLDER that leads there
# (".so man3/proreflax_values.3"), and sets LIST to the pages written: install them beside the pages
# themselves. They are made anew when a PAGE changes.
function(proreflax_man_links list folder)
  set(links)
  foreach(page IN LISTS ARGN)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${page}")
    cmake_path(GET page FILENAME file)
    cmake_path(GET page EXTENSION LAST_ONLY dot_section)
    string(SUBSTRING "${dot_section}" 1 -1 section)
    file(STRINGS "${page}" lines REGEX "^\\.N[md] ")
    foreach(line IN LISTS lines)
      if(line MATCHES "^\\.Nd ")
        break()
      endif()
      string(REGEX REPLACE "^\\.Nm ([^ ]+).*$" "\\1${dot_section}" link "${line}")
      if(NOT link STREQUAL file)
        file(CONFIGURE OUTPUT "${folder}/${link}" CONTENT ".so man${section}/${file}\n")
        list(APPEND links "${folder}/${link}")
      endif()
    endforeach()
  endforeach()
  set(${list} "${links}" PARENT_SCOPE)
endfunction()
