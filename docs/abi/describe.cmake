# Writes the description of the library's interface, without the names of the builder's folders.
execute_process(
    COMMAND ${ABIDW} --no-corpus-path --no-comp-dir-path --no-show-locs --drop-private-types --exported-interfaces-only
        --headers-dir ${SOURCE}/include ${LIBRARY}
    OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "path='${SOURCE}/" "path='" text "${text}")
file(WRITE ${DESCRIPTION} "${text}")
