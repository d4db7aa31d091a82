# What `cmake --install` brings to a system, by component:
#
#   runtime               the library
#   development           its headers, its link name and the CMake package
#   platform              the stand-in for the device's closed services, and the common texts; a device that has
#                         its own services leaves this out
#   platform-development  the stand-in's headers and link name
#   service               the reference central service and the interfaces of its objects
#   tools                 the command line tool
#   testsupport           the kit with which modules are tested, in C++ and in Python
#
# Nothing is made below the data root: the spool folder belongs to whoever runs the central service.

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
