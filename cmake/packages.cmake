# Debian packages, by cpack in the build folder: libfacmsg0, libfacmsg-dev, facmsg-tools.
set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES TRUE)
set(CPACK_SET_DESTDIR ON) # the prefix that is installed to is the packages' own
set(CPACK_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_CONTACT "facmsg authors <facmsg@facmsg.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES TRUE)
set(CPACK_COMPONENTS_ALL library development)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
if(FACMSG_TOOLS)
    list(APPEND CPACK_COMPONENTS_ALL tools)
    set(CPACK_COMPONENT_TOOLS_DEPENDS library)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libfacmsg${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "factory-test service of a managed Ethernet switch
The library that the main process of a switch loads: it runs the factory
tests that a station asks for through the driver functions of its host.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libfacmsg-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "factory-test service of a managed Ethernet switch (development files)
Headers in C, link library, CMake and pkg-config files, and the smallest host
as an example.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME facmsg-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION net)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "test station and simulated switch for the factory-test service
The station asks for tests, judges the replies and keeps the records; the
simulated switch answers it without hardware.")
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} component)
    string(REPLACE "\n" ";" lines "${CPACK_DEBIAN_${component}_DESCRIPTION}")
    list(GET lines 0 summary)
    set(CPACK_COMPONENT_${component}_DISPLAY_NAME "${summary}")
endforeach()

# How other packages depend on the library, and that the loader's cache is made anew.
set(control ${PROJECT_BINARY_DIR}/control)
file(CONFIGURE OUTPUT ${control}/shlibs CONTENT
    "libfacmsg @PROJECT_VERSION_MAJOR@ libfacmsg@PROJECT_VERSION_MAJOR@ (>= @PROJECT_VERSION@)\n" @ONLY)
file(CONFIGURE OUTPUT ${control}/triggers CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

if(CMAKE_CROSSCOMPILING)
    # The builder's package database does not know the target's libraries.
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
    set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "libc6 (>= 2.34)")
    set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libc6 (>= 2.34), libgcc-s1, libstdc++6 (>= 12)")
else()
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
endif()
include(CPack)
