# SPDX-License-Identifier: MIT
# Warnings are errors for our own code, on GCC and Clang alike.
add_compile_options(-Wall -Wextra -Werror)
# GCC 12 raises false -Wrestrict warnings inside std::string's operator+ at
# -O3 (a known compiler bug fixed in GCC 13): they stay warnings there.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-error=restrict>)
endif()
