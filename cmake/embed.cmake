# embed_text(TARGET FILE NAMESPACE NAME): compiles a file in as `extern const char *const NAME` of the namespace.
# Also run as a script, by which the build writes it: cmake -DTEXT=... -DOUTPUT=... -DNAMESPACE=... -DNAME=... -P embed.cmake
if(CMAKE_SCRIPT_MODE_FILE)
    file(READ ${TEXT} text)
    file(WRITE ${OUTPUT} "namespace ${NAMESPACE}\n{\nextern const char *const ${NAME};\nconst char *const ${NAME} = R\"~~~~(${text})~~~~\";\n}\n")
    return()
endif()
set(embed_script ${CMAKE_CURRENT_LIST_FILE})
function(embed_text target file namespace name)
    set(output ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -DTEXT=${CMAKE_CURRENT_SOURCE_DIR}/${file} -DOUTPUT=${output} -DNAMESPACE=${namespace}
            -DNAME=${name} -P ${embed_script}
        DEPENDS ${file} ${embed_script})
    target_sources(${target} PRIVATE ${output})
endfunction()
