# SPDX-License-Identifier: MIT
if(QVS_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
# The fuzz preset: every object carries libFuzzer's coverage hooks; only
# the harness programs link libFuzzer itself (fuzz/CMakeLists.txt).
if(QVS_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
