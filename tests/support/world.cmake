# The world around the library, and the calls of the library that the linker leads into it.
if(NOT TARGET facmsg_world)
    add_library(facmsg_world OBJECT ${CMAKE_CURRENT_LIST_DIR}/driver.cpp ${CMAKE_CURRENT_LIST_DIR}/system.cpp)
    target_include_directories(facmsg_world PRIVATE ${CMAKE_SOURCE_DIR}/include)
endif()
set(wrapped)
foreach(function sleep usleep gettimeofday malloc calloc free system unlink socket bind listen accept4 pthread_create)
    list(APPEND wrapped -Wl,--wrap=${function})
endforeach()
