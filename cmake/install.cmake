# Installation: the library, what a host is built with, the tools; each also a Debian package.
include(CMakePackageConfigHelpers)

set(headers include/facmsg.h include/facmsg_driver.h include/facmsg_protocol.h)
set(cmake_files ${CMAKE_INSTALL_LIBDIR}/cmake/facmsg)

install(TARGETS facmsg EXPORT facmsg
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(FILES examples/minimal_host.c DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libfacmsg-dev/examples
    COMPONENT development)

# find_package(facmsg) gives the target facmsg::facmsg.
install(EXPORT facmsg NAMESPACE facmsg:: FILE facmsg-config.cmake DESTINATION ${cmake_files} COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/facmsg-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/facmsg-config-version.cmake DESTINATION ${cmake_files} COMPONENT development)

# With its prefix written out, so that pkg-config leaves out the folders that compilers search anyway; where the
# installation was led elsewhere, as seen from its own folder.
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
set(prefix ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/facmsg.pc.in pkgconfig/in_place/facmsg.pc @ONLY)
set(prefix "\${pcfiledir}/${prefix_from_pkgconfig}")
configure_file(cmake/facmsg.pc.in pkgconfig/elsewhere/facmsg.pc @ONLY)
install(CODE "
    set(where elsewhere)
    if(CMAKE_INSTALL_PREFIX STREQUAL \"${CMAKE_INSTALL_PREFIX}\")
        set(where in_place)
    endif()
    file(INSTALL \"${PROJECT_BINARY_DIR}/pkgconfig/\${where}/facmsg.pc\"
        DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig\")"
    COMPONENT development)

if(FACMSG_TOOLS)
    install(FILES docs/completion/facmsg-station docs/completion/facmsg-simhost
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
    install(FILES station/journal/journal.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/facmsg COMPONENT tools)
endif()

include(cmake/documentation.cmake)

# Debian wants the licence and the changes beside each package.
set(package_library libfacmsg${PROJECT_VERSION_MAJOR})
set(package_development libfacmsg-dev)
set(package_tools facmsg-tools)
set(packaged library development)
if(FACMSG_TOOLS)
    list(APPEND packaged tools)
endif()
foreach(component IN LISTS packaged)
    install(FILES LICENSE RENAME copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package_${component}}
        COMPONENT ${component})
    install_changelog(${package_${component}} ${component})
endforeach()

include(cmake/packages.cmake)
