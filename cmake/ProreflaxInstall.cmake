# What is installed, and where to. Three components, so that packages can be split:
#
#   runtime      the library; with the programs the service, writeflash, and what starts the service
#   tools        cfc, the command line
#   development  headers, links for the linker, pkg-config file, CMake package, examples
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(ProreflaxManPages)

set(PROREFLAX_INIT "systemd;sysv" CACHE STRING
    "What starts the service on the device: systemd, sysv, both or nothing")
set(PROREFLAX_UNIT_DIR lib/systemd/system CACHE STRING "Folder of systemd's units")

set(proreflax_packaging "${PROJECT_SOURCE_DIR}/packaging")
set(proreflax_made "${PROJECT_BINARY_DIR}/install")
set(proreflax_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/proreflax")
set(proreflax_examples_dir "${CMAKE_INSTALL_DOCDIR}/examples")
if(CMAKE_INSTALL_PREFIX MATCHES "^/(usr/?)?$")
  # On a system prefix the configuration lies in /etc, and pkg-config has to see the folders by the
  # names under which the compiler searches them anyway.
  set(proreflax_etc_dir "${CMAKE_INSTALL_FULL_SYSCONFDIR}")
  string(REGEX REPLACE "/$" "" PROREFLAX_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  set(proreflax_etc_dir "${CMAKE_INSTALL_SYSCONFDIR}")
  file(RELATIVE_PATH PROREFLAX_PC_PREFIX
    "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
  set(PROREFLAX_PC_PREFIX "\${pcfiledir}/${PROREFLAX_PC_PREFIX}")
endif()

# The manual pages docs/man/PATTERN; those of section 3 with what the headers say.
function(proreflax_install_pages component pattern)
  file(GLOB pages CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/man/${pattern}")
  if(pattern MATCHES "\\.3$")
    proreflax_man_pages(pages "${proreflax_made}/man3" ${pages})
  endif()
  foreach(page IN LISTS pages)
    cmake_path(GET page EXTENSION LAST_ONLY section)
    string(REPLACE "." "man" folder "${section}")
    install(FILES "${page}" DESTINATION "${CMAKE_INSTALL_MANDIR}/${folder}" COMPONENT ${component})
  endforeach()
endfunction()

# A link to the library. Its own name has no "lib" in front: ldconfig passes by such files, and so
# does the linker's -lproreflax. Each of them gets a link with a name that it looks for.
function(proreflax_install_link name component)
  file(CREATE_LINK "proreflax.so.${PROJECT_VERSION_MAJOR}" "${proreflax_made}/${name}" SYMBOLIC)
  install(FILES "${proreflax_made}/${name}" DESTINATION "${CMAKE_INSTALL_LIBDIR}"
          COMPONENT ${component})
endfunction()

# A file of packaging/, with the paths of this installation filled in.
function(proreflax_install_filled kind file destination)
  configure_file("${proreflax_packaging}/${file}.in" "${proreflax_made}/${file}" @ONLY)
  install(${kind} "${proreflax_made}/${file}" DESTINATION "${destination}" COMPONENT runtime)
endfunction()

file(MAKE_DIRECTORY "${proreflax_made}")

# --- The library, and what is needed to build against it ----------------------------------------

install(TARGETS proreflax EXPORT proreflaxTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime
          NAMELINK_COMPONENT development
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
proreflax_install_link("libproreflax.so.${PROJECT_VERSION_MAJOR}" runtime)
proreflax_install_link(libproreflax.so development)
install(DIRECTORY include/proreflax DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
        COMPONENT development)

cmake_path(APPEND PROREFLAX_PC_LIBDIR "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND PROREFLAX_PC_INCLUDEDIR "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file("${proreflax_packaging}/proreflax.pc.in" "${proreflax_made}/proreflax.pc" @ONLY)
install(FILES "${proreflax_made}/proreflax.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT development)

configure_package_config_file(cmake/proreflaxConfig.cmake.in
  "${proreflax_made}/proreflaxConfig.cmake" INSTALL_DESTINATION "${proreflax_package_dir}")
# What the soname tells the loader, the package tells CMake.
write_basic_package_version_file("${proreflax_made}/proreflaxConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${proreflax_made}/proreflaxConfig.cmake"
              "${proreflax_made}/proreflaxConfigVersion.cmake"
        DESTINATION "${proreflax_package_dir}" COMPONENT development)
install(EXPORT proreflaxTargets NAMESPACE proreflax:: DESTINATION "${proreflax_package_dir}"
        COMPONENT development)

install(DIRECTORY examples/ DESTINATION "${proreflax_examples_dir}" COMPONENT development
        FILES_MATCHING PATTERN "*.c" PATTERN "*.cpp")
proreflax_install_pages(development "*.3")
proreflax_install_pages(runtime "*.5")

if(NOT PROREFLAX_BUILD_PROGRAMS)
  return()
endif()

# --- The programs, and what starts the service --------------------------------------------------

# The loader finds the library next to the programs wherever the prefix is moved to.
# CMAKE_SKIP_INSTALL_RPATH leaves that out where the loader searches the folder by itself.
function(proreflax_run_path program folder)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}" OR IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(library_dir "${CMAKE_INSTALL_FULL_LIBDIR}")
  else()
    file(RELATIVE_PATH library_dir
      "${CMAKE_INSTALL_FULL_${folder}}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set(library_dir "$ORIGIN/${library_dir}")
  endif()
  set_property(TARGET ${program} APPEND PROPERTY INSTALL_RPATH "${library_dir}")
endfunction()

proreflax_run_path(config-center SBINDIR)
install(TARGETS config-center writeflash
        RUNTIME DESTINATION "${CMAKE_INSTALL_SBINDIR}" COMPONENT runtime)
install(FILES device/etc/config-file.ini DESTINATION "${proreflax_examples_dir}" COMPONENT runtime)
proreflax_install_pages(runtime "config-center.8")
proreflax_install_pages(runtime "writeflash.1")

if("systemd" IN_LIST PROREFLAX_INIT)
  proreflax_install_filled(FILES systemd/config-center.service "${PROREFLAX_UNIT_DIR}")
  install(FILES "${proreflax_packaging}/systemd/sysusers.conf" RENAME proreflax.conf
          DESTINATION lib/sysusers.d COMPONENT runtime)
  install(FILES "${proreflax_packaging}/systemd/tmpfiles.conf" RENAME proreflax.conf
          DESTINATION lib/tmpfiles.d COMPONENT runtime)
endif()
if("sysv" IN_LIST PROREFLAX_INIT)
  proreflax_install_filled(PROGRAMS init/config-center "${proreflax_etc_dir}/init.d")
endif()

if(NOT PROREFLAX_BUILD_CFC)
  return()
endif()
proreflax_run_path(cfc BINDIR)
install(TARGETS cfc RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
install(FILES tools/completion/cfc.bash RENAME cfc
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
proreflax_install_pages(tools "cfc*.1")
