# Building and testing the texts of a module; part of the CMake package.

# Compiles Qt Linguist files, by id, to <folder>/<base name>.qm; a text without a finished translation is left
# out, so that it counts as missing and not as empty.
#   eventlisthandler_add_texts(<target> FOLDER <output folder> SOURCES lang_de.ts ...)
function(eventlisthandler_add_texts target)
    cmake_parse_arguments(PARSE_ARGV 1 TEXTS "" "FOLDER" "SOURCES")
    if(NOT TARGET Qt5::lrelease)
        find_package(Qt5 5.15 REQUIRED COMPONENTS LinguistTools)
    endif()
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

# A test that compares the language files of a module with each other and with its sources, by
# "eventlist texts check"; its --help lists the rules.
#
#   eventlisthandler_add_text_test(<name>
#       TEXTS <file or folder> ...      Qt Linguist files (*.ts), one for each language
#       [SOURCES <file or folder> ...]  what uses the texts; without it nothing is found unused or undefined
#       [COMPILED <folder>]             the compiled files (*.qm) must say the same
#       [IGNORE <url> ...]              urls that need neither be used nor be defined; "*" stands for anything
#       [COLLECTIONS <word> ...]        further first words of the module's urls
#       [ALLOW <rule> ...]              rules that need not hold
#       [STRICT])                       warnings fail, too
#
# Relative paths are seen from the calling CMakeLists.txt.
function(eventlisthandler_add_text_test name)
    cmake_parse_arguments(PARSE_ARGV 1 TEST "STRICT" "COMPILED" "TEXTS;SOURCES;IGNORE;COLLECTIONS;ALLOW")
    if(NOT TEST_TEXTS OR TEST_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "eventlisthandler_add_text_test(${ARGV}): TEXTS is missing, or a word is unknown")
    endif()
    if(NOT TARGET EventlistHandler::eventlist)
        message(FATAL_ERROR "eventlisthandler_add_text_test(${name}) needs the command line tool 'eventlist', "
                            "which is installed neither beside this package nor on the search path")
    endif()
    set(options)
    foreach(pair IN ITEMS SOURCES=source COMPILED=compiled IGNORE=ignore COLLECTIONS=collection ALLOW=allow)
        string(REGEX MATCH "^(.*)=(.*)$" pair "${pair}")
        set(option ${CMAKE_MATCH_2})
        foreach(value IN LISTS TEST_${CMAKE_MATCH_1})
            list(APPEND options "--${option}=${value}")
        endforeach()
    endforeach()
    if(TEST_STRICT)
        list(APPEND options --strict)
    endif()
    add_test(NAME ${name}
        COMMAND $<TARGET_FILE:EventlistHandler::eventlist> texts check ${TEST_TEXTS} ${options}
        WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
endfunction()
