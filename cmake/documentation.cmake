# What the packages hold to read: man pages and changelogs, compressed as Debian wants them, and the documents.
find_program(LOWDOWN lowdown)
find_program(GZIP gzip REQUIRED)

set(man_folder ${PROJECT_BINARY_DIR}/man)
set(man_pages)

function(add_man_page page source)
    string(REGEX REPLACE ".*\\." "" section ${page})
    add_custom_command(OUTPUT ${man_folder}/${page}.gz
        COMMAND ${CMAKE_COMMAND} -E make_directory ${man_folder}
        COMMAND ${ARGN} > ${man_folder}/${page}
        COMMAND ${GZIP} -9nf ${man_folder}/${page}
        DEPENDS ${source} ${PROJECT_SOURCE_DIR}/docs/man/make_page VERBATIM)
    install(FILES ${man_folder}/${page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT tools)
    set(man_pages ${man_pages} ${man_folder}/${page}.gz PARENT_SCOPE)
endfunction()

function(add_page_of_sections name summary document)
    set(source ${PROJECT_SOURCE_DIR}/docs/${document})
    add_man_page(${name}.5 ${source} ${PROJECT_SOURCE_DIR}/docs/man/make_page ${name} 5 ${summary} ${source} ${ARGN})
    set(man_pages ${man_pages} PARENT_SCOPE)
endfunction()

function(install_changelog package component)
    set(file ${PROJECT_BINARY_DIR}/changelog/${package}/changelog.gz)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/changelog/${package})
    execute_process(COMMAND ${GZIP} -9nc ${PROJECT_SOURCE_DIR}/cmake/changelog OUTPUT_FILE ${file})
    install(FILES ${file} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endfunction()

if(FACMSG_TOOLS)
    foreach(program facmsg-station facmsg-simhost)
        add_man_page(${program}.1 ${PROJECT_SOURCE_DIR}/docs/man/${program}.1 cat ${PROJECT_SOURCE_DIR}/docs/man/${program}.1)
    endforeach()
    if(LOWDOWN)
        add_page_of_sections(facmsg-board "board file of the simulated switch" simulator.md "The board file" PoE)
        add_page_of_sections(facmsg-plan "test plan of the station" station.md "The plan file")
        add_page_of_sections(facmsg-journal "record of a run of a test plan" station.md "The journal")
    else()
        message(STATUS "lowdown is not installed: facmsg-board(5), -plan(5) and -journal(5) are not made")
    endif()
    add_custom_target(man_pages ALL DEPENDS ${man_pages})
    install(FILES docs/station.md docs/simulator.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/facmsg-tools COMPONENT tools)
endif()
install(FILES docs/hosting.md docs/protocol.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libfacmsg-dev
    COMPONENT development)
