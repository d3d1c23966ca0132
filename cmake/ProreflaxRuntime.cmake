# The C++ runtime of cfc, and of programs like it.
#
# Such code throws nothing and asks for no types at run time. On a development machine its programs
# use the C++ library that is there anyway. A device has none: with PROREFLAX_STATIC_RUNTIME the
# little that they need of it is linked in, and they depend on libc alone.

# proreflax_without_exceptions(TARGET)
function(proreflax_without_exceptions target)
  target_compile_options(${target} PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>)
  if(PROREFLAX_STATIC_RUNTIME)
    # Strings are compiled here: those of the library bring the tables of exceptions, and with them
    # the unwinder.
    target_compile_definitions(${target} PRIVATE _GLIBCXX_EXTERN_TEMPLATE=0)
    target_compile_options(${target} PRIVATE
      -fvisibility=hidden -ffunction-sections -fdata-sections -fno-asynchronous-unwind-tables -fno-unwind-tables
      $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden>
      $<$<COMPILE_LANGUAGE:CXX>:-fno-threadsafe-statics>)
  endif()
endfunction()

# proreflax_link_runtime(TARGET)
function(proreflax_link_runtime target)
  if(PROREFLAX_STATIC_RUNTIME)
    target_link_options(${target} PRIVATE
      -static-libstdc++ -static-libgcc -Wl,--gc-sections -Wl,--as-needed -Wl,-O1)
  endif()
endfunction()
