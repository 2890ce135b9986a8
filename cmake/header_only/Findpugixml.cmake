# The library by its headers alone, for a machine that its compiled part is not there for.
if(NOT TARGET pugixml::pugixml)
    add_library(pugixml::pugixml INTERFACE IMPORTED)
    target_compile_definitions(pugixml::pugixml INTERFACE PUGIXML_HEADER_ONLY)
endif()
