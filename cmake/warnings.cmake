# Warnings are errors, for every target of the project.
add_compile_options(-Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wformat=2 -Wundef)
add_compile_options($<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes>)
