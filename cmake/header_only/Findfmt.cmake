# The library by its headers alone, for a machine that its compiled part is not there for.
if(NOT TARGET fmt::fmt)
    add_library(fmt::fmt INTERFACE IMPORTED)
    target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)
endif()
