# Unlike the others it needs its source, which Debian's package for developers leaves out.
if(NOT TARGET pugixml::pugixml)
    find_path(PUGIXML_SOURCE pugixml.cpp PATHS ${CMAKE_SOURCE_DIR}/build/sources/pugixml/src
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    if(NOT PUGIXML_SOURCE)
        message(FATAL_ERROR "pugixml's source is not in build/sources; ./scripts/test arm brings it")
    endif()
    add_library(pugixml::pugixml INTERFACE IMPORTED)
    target_include_directories(pugixml::pugixml INTERFACE ${PUGIXML_SOURCE})
    target_compile_definitions(pugixml::pugixml INTERFACE PUGIXML_HEADER_ONLY)
endif()
