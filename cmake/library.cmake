# The library's code, once: linked into libfacmsg.so, and into the tests that reach below its interface.
add_library(facmsg_objects OBJECT)
foreach(room service packet port_tests poe_tests stress_tests)
    add_subdirectory(${room})
endforeach()
target_include_directories(facmsg_objects PUBLIC include PRIVATE . include/internal)
target_compile_options(facmsg_objects PRIVATE -fno-exceptions -fno-rtti -fno-threadsafe-statics
    -fvisibility=hidden -fvisibility-inlines-hidden -fstack-protector-strong -ffunction-sections -fdata-sections -g
    $<$<CONFIG:Release>:-Os>) # what runs often is small, and nothing else has to be fast
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(facmsg_objects PRIVATE -frecord-gcc-switches) # a test reads how each object was compiled
endif()
if(NOT FACMSG_SANITIZE)
    target_compile_definitions(facmsg_objects PRIVATE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
endif()

if(FACMSG_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    # This check's run-time part is C++, which a host in C does not link.
    target_compile_options(facmsg_objects PRIVATE -fno-sanitize=function)
endif()

# Linked as C: nothing but libc is needed at run time.
add_library(facmsg SHARED $<TARGET_OBJECTS:facmsg_objects>)
add_library(facmsg::facmsg ALIAS facmsg)
target_include_directories(facmsg PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_options(facmsg PRIVATE
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/facmsg.map -Wl,-z,relro,-z,now -Wl,-z,noexecstack -Wl,--as-needed -Wl,--gc-sections)
if(NOT FACMSG_SANITIZE)
    target_link_options(facmsg PRIVATE -Wl,-z,defs)
endif()
set_target_properties(facmsg PROPERTIES
    LINKER_LANGUAGE C INSTALL_RPATH "" VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/facmsg.map)

# Describes anew what programs that were built with the library on the target rely on: for a change that is meant.
find_program(ABIDW abidw)
if(CMAKE_CROSSCOMPILING AND ABIDW)
    add_custom_target(abi_description
        ${CMAKE_COMMAND} -DABIDW=${ABIDW} -DSOURCE=${PROJECT_SOURCE_DIR} -DLIBRARY=$<TARGET_FILE:facmsg>
            -DDESCRIPTION=${PROJECT_SOURCE_DIR}/docs/abi/libfacmsg-arm.abi -P ${PROJECT_SOURCE_DIR}/docs/abi/describe.cmake
        DEPENDS facmsg)
endif()
