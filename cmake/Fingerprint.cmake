# fingerprint(output header function folder…): generates a source in the build folder whose function, which the header
# declares, returns a hash of all C++ sources in these folders of the project.
function(fingerprint output header function)
    set(script ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/FingerprintFiles.cmake)
    set(patterns ${ARGN})
    list(TRANSFORM patterns PREPEND ${PROJECT_SOURCE_DIR}/)
    set(sources ${patterns})
    list(TRANSFORM patterns APPEND /*.h)
    list(TRANSFORM sources APPEND /*.cpp)
    file(GLOB_RECURSE files CONFIGURE_DEPENDS ${patterns} ${sources})
    list(JOIN ARGN "," folders)
    add_custom_command(
        OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${output}
        COMMAND ${CMAKE_COMMAND} -D ROOT=${PROJECT_SOURCE_DIR} -D FOLDERS=${folders}
                -D OUTPUT=${CMAKE_CURRENT_BINARY_DIR}/${output} -D HEADER=${header} -D FUNCTION=${function} -P ${script}
        DEPENDS ${files} ${script})
endfunction()
