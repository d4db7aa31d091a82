# The one way to make a test, and the one place that settles the environment in which tests run.

# What every test sees. The bus addresses lead nowhere until a test starts a bus of its own: a test that forgets
# to do so must not talk to the bus of the machine.
set(test_home "${PROJECT_BINARY_DIR}/tests/home")
file(MAKE_DIRECTORY "${test_home}/runtime" "${test_home}/config" "${test_home}/data" "${test_home}/cache")
file(CHMOD "${test_home}/runtime" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
set(EVENTLISTHANDLER_TEST_ENVIRONMENT
    QT_LOGGING_RULES=unset:
    QT_LOGGING_CONF=unset:
    QT_LOGGING_DEBUG=unset:
    QT_FATAL_WARNINGS=unset:
    QT_FATAL_CRITICALS=unset:
    QT_MESSAGE_PATTERN=unset:
    QT_LOGGING_TO_CONSOLE=unset:
    QT_FORCE_STDERR_LOGGING=unset:
    QDBUS_DEBUG=unset:
    DBUS_STARTER_ADDRESS=unset:
    DBUS_STARTER_BUS_TYPE=unset:
    DBUS_VERBOSE=unset:
    DBUS_FATAL_WARNINGS=unset:
    DBUS_SESSION_BUS_ADDRESS=set:unix:path=${test_home}/no-bus
    DBUS_SYSTEM_BUS_ADDRESS=set:unix:path=${test_home}/no-bus
    DISPLAY=unset:
    TZ=set:Europe/Berlin
    LANG=unset:
    LANGUAGE=unset:
    LC_ALL=set:C.UTF-8
    HOME=set:${test_home}
    XDG_RUNTIME_DIR=set:${test_home}/runtime
    XDG_CONFIG_HOME=set:${test_home}/config
    XDG_DATA_HOME=set:${test_home}/data
    XDG_CACHE_HOME=set:${test_home}/cache
    PYTHONDONTWRITEBYTECODE=set:1
    CACHE INTERNAL "Environment of every test")
if(EVENTLISTHANDLER_SANITIZERS MATCHES "thread")
    # Neither Qt nor libdbus is instrumented, and GLib's event loop is not understood.
    list(APPEND EVENTLISTHANDLER_TEST_ENVIRONMENT
        QT_NO_GLIB=set:1
        "TSAN_OPTIONS=set:suppressions='${PROJECT_SOURCE_DIR}/tests/tsan.supp' halt_on_error=1 second_deadlock_stack=1")
elseif(EVENTLISTHANDLER_SANITIZERS)
    list(APPEND EVENTLISTHANDLER_TEST_ENVIRONMENT
        "UBSAN_OPTIONS=set:print_stacktrace=1"
        "ASAN_OPTIONS=set:detect_stack_use_after_return=1")
endif()

# Label, time limit, locks and environment of one test that is registered already.
function(eventlisthandler_set_test_properties name kind timeout is_spooling is_service_used)
    # The watchdog of QtTest strikes first, because it can tell which test function hangs.
    math(EXPR function_timeout_ms "${timeout} * 900")
    set_tests_properties(${name} PROPERTIES
        LABELS ${kind}
        TIMEOUT ${timeout}
        SKIP_RETURN_CODE 77
        ENVIRONMENT_MODIFICATION
            "${EVENTLISTHANDLER_TEST_ENVIRONMENT};QTEST_FUNCTION_TIMEOUT=set:${function_timeout_ms}")
    if(is_spooling)
        set_property(TEST ${name} APPEND PROPERTY RESOURCE_LOCK spool-folder)
    endif()
    if(is_service_used)
        if(NOT TARGET eventlistd)
            message(FATAL_ERROR "${name} needs the service: set EVENTLISTHANDLER_BUILD_SERVICE to ON")
        endif()
        set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT_MODIFICATION
            "EVENTLISTHANDLER_EVENTLISTD=set:$<TARGET_FILE:eventlistd>"
            "EVENTLISTHANDLER_TEXTS=set:${EVENTLISTHANDLER_TEXT_FOLDER}")
    endif()
endfunction()

# Test programs wait for buses and files, not for their own code: most of a test's cost is its compilation.
function(eventlisthandler_compile_fast target)
    target_compile_options(${target} PRIVATE -O0 -g1)
    if(EVENTLISTHANDLER_QUICK_BUILD)
        target_precompile_headers(${target} REUSE_FROM EventlistHandlerTestHeaders)
        # Mostly empty.
        set_source_files_properties("${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/mocs_compilation.cpp"
            PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
        # Without it a compiler cache takes no part where precompiled headers are.
        target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    endif()
endfunction()

# A QtTest program made of tests/<kind>/<Folder>/<tst_X>.cpp.
#   eventlisthandler_add_test(tst_X KIND unit|bus|contract|install FOLDER <Folder>
#                             [SOURCES ...]    further sources
#                             [LIBRARIES ...]  further libraries
#                             [SPOOL]          writes into the compiled-in spool folder: never two at a time
#                             [SERVICE]        starts eventlistd
#                             [WITHOUT_LIBRARY]  does not look at src/ at all
#                             [TIMEOUT s])     default 60 s, contract 300 s; sanitizers get four times as much
# A unit test links the objects of the library and so reaches its internals; every other kind links the library
# as it is shipped. The target is tst_X for a unit test and tst_X_<kind> for the others, the name in CTest
# <kind>/<Folder>/tst_X.
function(eventlisthandler_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 TEST "SPOOL;SERVICE;WITHOUT_LIBRARY" "KIND;FOLDER;TIMEOUT"
                          "SOURCES;LIBRARIES")
    if(NOT TEST_KIND MATCHES "^(unit|bus|contract|install)$" OR NOT TEST_FOLDER OR TEST_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "eventlisthandler_add_test(${ARGV}): KIND or FOLDER is missing or unknown")
    endif()

    set(target ${name})
    set(library EventlistHandlerObjects)
    if(NOT TEST_KIND STREQUAL unit)
        set(target ${name}_${TEST_KIND})
        set(library EventlistHandler)
    endif()
    if(TEST_WITHOUT_LIBRARY)
        set(library)
    endif()

    add_executable(${target} "${PROJECT_SOURCE_DIR}/tests/${TEST_KIND}/${TEST_FOLDER}/${name}.cpp" ${TEST_SOURCES})
    eventlisthandler_target_defaults(${target})
    set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name})
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII)
    eventlisthandler_compile_fast(${target})
    # The platform stands last: linkers that drop unused libraries look at what came before.
    target_link_libraries(${target} PRIVATE
        ${library} ${TEST_LIBRARIES} EventlistHandlerTestSupport EventlistHandlerPlatform Qt5::Test)
    if(TEST_SERVICE)
        add_dependencies(${target} eventlistd)
    endif()

    set(test ${TEST_KIND}/${TEST_FOLDER}/${name})
    add_test(NAME ${test} COMMAND ${target})
    eventlisthandler_test_timeout(timeout "${TEST_KIND}" "${TEST_TIMEOUT}")
    eventlisthandler_set_test_properties(${test} ${TEST_KIND} ${timeout} "${TEST_SPOOL}" "${TEST_SERVICE}")
endfunction()

# A test that is a script or any other command, in the environment of all tests. It passes with exit code 0;
# 77 means that it could not run here, for a reason that it has printed. One of the kind "campaign" runs for long, and
# only when it is asked for: ctest -C campaign -L campaign. The scripts/campaign-* do so.
#   eventlisthandler_add_script_test(<name> COMMAND <command> [<argument> ...] KIND <kind> [FOLDER <Folder>]
#                                    [SPOOL] [SERVICE] [TIMEOUT s])
function(eventlisthandler_add_script_test name)
    cmake_parse_arguments(PARSE_ARGV 1 TEST "SPOOL;SERVICE" "KIND;FOLDER;TIMEOUT" "COMMAND")
    if(NOT TEST_KIND OR NOT TEST_COMMAND OR TEST_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "eventlisthandler_add_script_test(${ARGV}): KIND or COMMAND is missing")
    endif()
    set(test ${TEST_KIND}/${name})
    if(TEST_FOLDER)
        set(test ${TEST_KIND}/${TEST_FOLDER}/${name})
    endif()
    set(configurations)
    if(TEST_KIND STREQUAL campaign)
        set(configurations CONFIGURATIONS campaign)
    endif()
    add_test(NAME ${test} COMMAND ${TEST_COMMAND} ${configurations})
    eventlisthandler_test_timeout(timeout "${TEST_KIND}" "${TEST_TIMEOUT}")
    eventlisthandler_set_test_properties(${test} ${TEST_KIND} ${timeout} "${TEST_SPOOL}" "${TEST_SERVICE}")
endfunction()

function(eventlisthandler_test_timeout result kind timeout)
    if(NOT timeout)
        set(timeout 60)
        if(kind STREQUAL campaign)
            set(timeout 43200)
        elseif(NOT kind MATCHES "^(unit|bus)$")
            set(timeout 300)
        endif()
    endif()
    if(EVENTLISTHANDLER_SANITIZERS)
        math(EXPR timeout "${timeout} * 4")
    endif()
    set(${result} ${timeout} PARENT_SCOPE)
endfunction()

# Takes in every folder of the calling one that has a CMakeLists.txt.
function(eventlisthandler_add_test_folders)
    file(GLOB lists CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*/CMakeLists.txt")
    foreach(list IN LISTS lists)
        get_filename_component(folder "${list}" DIRECTORY)
        add_subdirectory("${folder}")
    endforeach()
endfunction()
