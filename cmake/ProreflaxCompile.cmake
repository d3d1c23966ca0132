# How every target of the project is compiled.

set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG")

if(PROREFLAX_STRICT)
  add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wundef
                      -Wcast-qual -Wformat=2 -Wdouble-promotion -Wimplicit-fallthrough -Werror)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
                      $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
                      $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wlogical-op -Wduplicated-cond -Wduplicated-branches)
    # Designated initializers leave the other members at their defaults, on purpose.
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-missing-field-initializers>)
  endif()
endif()

if(PROREFLAX_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # Of C++ alone: programs in C are not linked with its runtime.
    add_compile_options(-fno-sanitize=function)
  endif()
  add_link_options(-fsanitize=address,undefined)
endif()
