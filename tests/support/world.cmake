# The library as one object file whose calls of these functions lead into the world around it. Everybody else's, and
# those of the world itself, stay as they are.
if(NOT TARGET facmsg_world)
    add_library(facmsg_world OBJECT ${CMAKE_CURRENT_LIST_DIR}/driver.cpp ${CMAKE_CURRENT_LIST_DIR}/system.cpp)
    target_include_directories(facmsg_world PRIVATE ${CMAKE_SOURCE_DIR}/include)
endif()
set(wrapped)
foreach(function printf sleep usleep gettimeofday malloc calloc free system unlink
        socket bind listen accept4 pthread_create)
    list(APPEND wrapped -Wl,--wrap=${function})
endforeach()
set(library_in_world ${CMAKE_CURRENT_BINARY_DIR}/library_in_world.o)
add_custom_command(OUTPUT ${library_in_world}
    COMMAND ${CMAKE_CXX_COMPILER} -r -nostdlib ${wrapped} -o ${library_in_world} $<TARGET_OBJECTS:facmsg_objects>
    DEPENDS facmsg_objects $<TARGET_OBJECTS:facmsg_objects> COMMAND_EXPAND_LISTS VERBATIM)
