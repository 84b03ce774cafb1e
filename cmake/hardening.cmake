# SPDX-License-Identifier: MIT
# Compiler and linker hardening on every object of every preset (the shipped
# library, the tools, the tests): stack canaries, stack clash probes, format
# checks, full RELRO with immediate binding, a non-executable stack, and
# CET branch protection on x86-64. scripts/check-shipped.sh verifies the
# result on the shipped objects.
add_compile_options(-fstack-protector-strong -fstack-clash-protection -Wformat -Werror=format-security)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  add_compile_options(-fcf-protection)
endif()
add_link_options(-Wl,-z,relro,-z,now -Wl,-z,noexecstack)

# FORTIFY needs the optimiser (glibc warns without it, and warnings are
# errors). Level 3 on both architectures: GCC 12 and Clang 14 have
# __builtin_dynamic_object_size, glibc 2.36 the level-3 wrappers.
# - Release, MinSizeRel, RelWithDebInfo: optimised already.
# - Debug: built at -Og, which keeps variables and lines for the debugger
#   and lets the suites run the fortified code.
# - Sanitizer builds (ASan/UBSan, fuzz) and coverage: off. ASan's own
#   interceptors check the same calls more strictly, the _chk wrappers would
#   bypass them; coverage wants unoptimised line counts.
option(QVS_FORTIFY "Build with -D_FORTIFY_SOURCE=3 (Debug builds then use -Og)" ON)
if(QVS_SANITIZE)
  set(QVS_FORTIFY OFF)
endif()
if(QVS_FORTIFY)
  add_compile_options($<$<CONFIG:Debug>:-Og> -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
endif()
