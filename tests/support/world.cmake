# The world around the library, and the calls of the library that the linker leads into it.
add_library(facmsg_world OBJECT ${CMAKE_SOURCE_DIR}/tests/support/driver.cpp ${CMAKE_SOURCE_DIR}/tests/support/system.cpp)
target_include_directories(facmsg_world PRIVATE ${CMAKE_SOURCE_DIR}/include)
set(wrapped)
foreach(function sleep usleep gettimeofday malloc calloc free system unlink socket bind listen accept4 pthread_create)
    list(APPEND wrapped -Wl,--wrap=${function})
endforeach()
