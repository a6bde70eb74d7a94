# One set of warnings for every target; each is an error.
add_library(ficon_warnings INTERFACE)
target_compile_options(ficon_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wvla -Wimplicit-fallthrough
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>)
