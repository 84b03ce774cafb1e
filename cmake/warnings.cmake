# Warnings are errors for our own code, on GCC and Clang alike.
add_compile_options(-Wall -Wextra -Werror)
