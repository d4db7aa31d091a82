# What `cmake --install` brings to a system, by component:
#
#   runtime               the library
#   development           its headers, its link name, the CMake package, the file for pkg-config, the overview as a
#                         man page
#   platform              the stand-in for the device's closed services, and the common texts; a device that has
#                         its own services leaves this out
#   platform-development  the stand-in's headers and link name
#   service               the reference central service, the interfaces of its objects, and what makes it part of a
#                         system: policy and activation file of the bus, unit, user, folders
#   tools                 the command line tool, its man page and its completion for bash
#   testsupport           the kit with which modules are tested, in C++ and in Python
#   documentation         what this tree says about itself
#
# Nothing is installed below the data root: its folders are made by systemd-tmpfiles, or by whoever runs the service.

include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/EventlistHandler")
set(header_folder "${CMAKE_INSTALL_INCLUDEDIR}/EventlistHandler")
set(text_folder "${CMAKE_INSTALL_DATADIR}/EventlistHandler/texts")
set(dbusmock_template "${CMAKE_INSTALL_DATADIR}/EventlistHandler/dbusmock/eventlisthandler.py")

# The library and the stand-in are exported apart: each works when the other comes from elsewhere.
install(TARGETS EventlistHandler EXPORT EventlistHandlerTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS EventlistHandlerPlatform EXPORT EventlistHandlerPlatformTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT platform NAMELINK_COMPONENT platform-development)

get_property(public_headers GLOBAL PROPERTY EVENTLISTHANDLER_PUBLIC_HEADERS)
foreach(header IN LISTS public_headers)
    get_filename_component(folder "${header}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/src/${header}" DESTINATION "${header_folder}/${folder}"
        COMPONENT development)
endforeach()
get_property(platform_headers GLOBAL PROPERTY EVENTLISTHANDLER_PLATFORM_HEADERS)
list(TRANSFORM platform_headers PREPEND "${PROJECT_SOURCE_DIR}/platform/api/Platform/")
install(FILES ${platform_headers} DESTINATION "${header_folder}/Platform" COMPONENT platform-development)

if(EVENTLISTHANDLER_TEXT_FOLDER)
    install(DIRECTORY "${EVENTLISTHANDLER_TEXT_FOLDER}/" DESTINATION "${text_folder}" COMPONENT platform
        FILES_MATCHING PATTERN "*.qm")
endif()

if(TARGET EventlistHandlerTestSupport)
    install(TARGETS EventlistHandlerTestSupport EXPORT EventlistHandlerTestSupportTargets
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT testsupport)
    get_property(test_support_headers GLOBAL PROPERTY EVENTLISTHANDLER_TEST_SUPPORT_HEADERS)
    list(TRANSFORM test_support_headers PREPEND "${PROJECT_SOURCE_DIR}/tests/support/")
    install(FILES ${test_support_headers} DESTINATION "${header_folder}/TestSupport" COMPONENT testsupport)
    install(FILES "${PROJECT_BINARY_DIR}/dbusmock/eventlisthandler.py"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/EventlistHandler/dbusmock" COMPONENT testsupport)
    install(EXPORT EventlistHandlerTestSupportTargets NAMESPACE EventlistHandler:: DESTINATION "${package_folder}"
        COMPONENT testsupport)
endif()

# Where D-Bus tools look for interfaces.
set(interface_folder "${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces")
install(FILES "${PROJECT_SOURCE_DIR}/src/EventProvider/interfaces/Interface.Events.xml"
    DESTINATION "${interface_folder}" COMPONENT development)
if(TARGET eventlistd)
    foreach(interface AlarmlistRead AlarmlistWrite Event EventlistRead EventlistWrite RegisterHash)
        install(FILES "${PROJECT_SOURCE_DIR}/service/interfaces/Interface.${interface}.xml"
            DESTINATION "${interface_folder}" COMPONENT service)
    endforeach()
endif()

# A program finds the libraries beside it, wherever the prefix is. CMAKE_SKIP_INSTALL_RPATH leaves that out for
# packages whose libraries lie where the loader looks.
function(eventlisthandler_install_program target component)
    if(NOT TARGET ${target})
        return()
    endif()
    file(RELATIVE_PATH libraries_from_programs
        "/prefix/${CMAKE_INSTALL_BINDIR}" "/prefix/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
    install(TARGETS ${target} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT ${component})
endfunction()
eventlisthandler_install_program(eventlistd service)
eventlisthandler_install_program(eventlist tools)
include(EventlistHandlerSystemFiles)

# For builds without CMake. The prefix follows from the place of the file.
function(eventlisthandler_install_pkg_config name component)
    set(pkg_config_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
    file(RELATIVE_PATH prefix_from_here "/prefix/${pkg_config_folder}" "/prefix")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in" "${PROJECT_BINARY_DIR}/package/${name}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/package/${name}.pc" DESTINATION "${pkg_config_folder}"
        COMPONENT ${component})
endfunction()
eventlisthandler_install_pkg_config(eventlisthandler development)
eventlisthandler_install_pkg_config(eventlisthandler-platform platform-development)

install(FILES "${PROJECT_SOURCE_DIR}/docs/man/eventlisthandler.7" DESTINATION "${CMAKE_INSTALL_MANDIR}/man7"
    COMPONENT development)
if(TARGET eventlistd)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/man/eventlistd.8" DESTINATION "${CMAKE_INSTALL_MANDIR}/man8"
        COMPONENT service)
endif()
if(TARGET eventlist)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/man/eventlist.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
        COMPONENT tools)
    install(FILES "${PROJECT_SOURCE_DIR}/tools/completion/eventlist"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
endif()

# The folders keep their places to each other, so that links between documents and into the examples stay whole.
install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" "${PROJECT_SOURCE_DIR}/examples"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation
    PATTERN "man" EXCLUDE PATTERN "Doxyfile" EXCLUDE PATTERN "__pycache__" EXCLUDE)

install(EXPORT EventlistHandlerTargets NAMESPACE EventlistHandler:: DESTINATION "${package_folder}"
    COMPONENT development)
install(EXPORT EventlistHandlerPlatformTargets NAMESPACE EventlistHandler:: DESTINATION "${package_folder}"
    COMPONENT platform-development)
configure_package_config_file(cmake/EventlistHandlerConfig.cmake.in
    "${PROJECT_BINARY_DIR}/package/EventlistHandlerConfig.cmake"
    INSTALL_DESTINATION "${package_folder}" PATH_VARS text_folder dbusmock_template CMAKE_INSTALL_BINDIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/package/EventlistHandlerConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES
    cmake/EventlistHandlerTexts.cmake
    "${PROJECT_BINARY_DIR}/package/EventlistHandlerConfig.cmake"
    "${PROJECT_BINARY_DIR}/package/EventlistHandlerConfigVersion.cmake"
    DESTINATION "${package_folder}" COMPONENT development)
