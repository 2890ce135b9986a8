# The captures as tshark reads them; skipped without it.
add_test(NAME test_sim.capture COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/capture_test.sh
    $<TARGET_FILE:facmsg-simhost> $<TARGET_FILE:facmsg-station> ${CMAKE_CROSSCOMPILING_EMULATOR})
set_tests_properties(test_sim.capture PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 60)
