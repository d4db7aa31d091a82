# Helper functions for every target of this project.

# What holds for all of our code: the language, the warnings, the sanitizers.
function(eventlisthandler_target_defaults target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    set_target_properties(${target} PROPERTIES
        AUTOMOC ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    target_compile_definitions(${target} PRIVATE
        QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_CAST_TO_ASCII QT_USE_QSTRINGBUILDER
        QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050f00)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                             -Woverloaded-virtual)
    if(EVENTLISTHANDLER_DEVELOPER_MODE)
        target_compile_options(${target} PRIVATE -Werror)
        target_compile_definitions(${target} PRIVATE QT_FORCE_ASSERTS)
    endif()
    if(EVENTLISTHANDLER_SANITIZERS)
        target_compile_options(${target} PRIVATE
            -fsanitize=${EVENTLISTHANDLER_SANITIZERS} -fno-omit-frame-pointer)
        if(EVENTLISTHANDLER_SANITIZERS MATCHES "undefined")
            target_compile_options(${target} PRIVATE -fno-sanitize-recover=undefined)
        endif()
        target_link_options(${target} PRIVATE -fsanitize=${EVENTLISTHANDLER_SANITIZERS})
    endif()
    if(EVENTLISTHANDLER_COVERAGE)
        target_compile_options(${target} PRIVATE -fprofile-instr-generate -fcoverage-mapping)
        target_link_options(${target} PRIVATE -fprofile-instr-generate)
    endif()
endfunction()

# Compiles Qt Linguist files, by id, to <folder>/<base name>.qm; a text without a finished translation is left
# out, so that it counts as missing and not as empty.
#   eventlisthandler_add_texts(<target> FOLDER <output folder> SOURCES lang_de.ts ...)
function(eventlisthandler_add_texts target)
    cmake_parse_arguments(PARSE_ARGV 1 TEXTS "" "FOLDER" "SOURCES")
    set(outputs)
    foreach(source IN LISTS TEXTS_SOURCES)
        get_filename_component(name "${source}" NAME_WE)
        get_filename_component(input "${source}" ABSOLUTE)
        set(output "${TEXTS_FOLDER}/${name}.qm")
        add_custom_command(OUTPUT "${output}"
            COMMAND ${CMAKE_COMMAND} -E make_directory "${TEXTS_FOLDER}"
            COMMAND Qt5::lrelease -silent -idbased -nounfinished "${input}" -qm "${output}"
            DEPENDS "${input}" COMMENT "Texts ${output}" VERBATIM)
        list(APPEND outputs "${output}")
    endforeach()
    add_custom_target(${target} ALL DEPENDS ${outputs})
endfunction()
