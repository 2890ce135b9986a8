# Warnings are errors, for every target of the project.
add_compile_options(-Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wformat=2 -Wundef)
add_compile_options($<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # GCC 12 warns of std::string's own code when a literal is prepended to a string.
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety>) # common/thread_safety.h has the annotations
endif()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm" AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # It notes that GCC 7 changed how some C++ objects are passed; all C++ here is of one compiler.
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-psabi>)
endif()
