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
