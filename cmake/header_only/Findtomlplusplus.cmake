# The library by its headers alone, for a machine that its compiled part is not there for.
if(NOT TARGET tomlplusplus::tomlplusplus)
    add_library(tomlplusplus::tomlplusplus INTERFACE IMPORTED)
    target_compile_definitions(tomlplusplus::tomlplusplus INTERFACE TOML_HEADER_ONLY=1)
endif()
