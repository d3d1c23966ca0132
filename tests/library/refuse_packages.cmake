# Read behind project(): from here on, looking for a package or a program ends the configuration.
macro(refuse search)
  macro(${search})
    message(FATAL_ERROR "${search} in a plain build")
  endmacro()
endmacro()
foreach(search IN ITEMS find_package find_library find_path find_file find_program pkg_check_modules)
  refuse(${search})
endforeach()
