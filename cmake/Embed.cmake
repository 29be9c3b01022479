# embed(output input header function [dependency…]): generates a source in the build folder whose function, which the
# header declares, returns a file's bytes.
function(embed output input header function)
    set(script ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/EmbedFile.cmake)
    add_custom_command(
        OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${output}
        COMMAND ${CMAKE_COMMAND} -D INPUT=${input} -D OUTPUT=${CMAKE_CURRENT_BINARY_DIR}/${output} -D HEADER=${header}
                -D FUNCTION=${function} -P ${script}
        DEPENDS ${input} ${ARGN} ${script})
endfunction()
