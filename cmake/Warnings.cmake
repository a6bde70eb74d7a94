# One set of warnings for every target; each is an error.
add_library(ficon_warnings INTERFACE)
target_compile_options(ficon_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wvla -Wimplicit-fallthrough
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>)

# Linted as it is compiled, so that only what changed is looked at again.
function(ficon_lint)
  if(NOT FICON_CLANG_TIDY)
    return()
  endif()
  find_program(CLANG_TIDY clang-tidy REQUIRED)
  foreach(target IN LISTS ARGN)
    get_target_property(sources ${target} SOURCES)
    set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "${CLANG_TIDY};--quiet")
    set_source_files_properties(${sources} PROPERTIES
      OBJECT_DEPENDS "${PROJECT_SOURCE_DIR}/.clang-tidy")
  endforeach()
endfunction()
