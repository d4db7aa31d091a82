# What makes the central service part of a system: who may use it on the bus, how it is started, its user, its
# folders.
#
# The files hold absolute paths, so they are made when they are installed: only then the prefix is known for sure.

# The unit's folder is no matter of taste for packages of distributions.
set(EVENTLISTHANDLER_UNIT_FOLDER "lib/systemd/system" CACHE STRING "Folder of systemd's units")

function(eventlisthandler_install_system_file template name destination)
    set(made "${PROJECT_BINARY_DIR}/package/${template}")
    install(CODE "
        get_filename_component(prefix \"\${CMAKE_INSTALL_PREFIX}\" ABSOLUTE)
        get_filename_component(program \"${CMAKE_INSTALL_BINDIR}/eventlistd\" ABSOLUTE BASE_DIR \"\${prefix}\")
        get_filename_component(texts \"${text_folder}\" ABSOLUTE BASE_DIR \"\${prefix}\")
        set(bus_name \"${EVENTLISTHANDLER_BUS_PREFIX}.EventlistHandler\")
        set(data_root \"${EVENTLISTHANDLER_DATA_ROOT}\")
        configure_file(\"${PROJECT_SOURCE_DIR}/service/system/${template}\" \"${made}\" @ONLY)"
        COMPONENT service)
    install(FILES "${made}" DESTINATION "${destination}" RENAME "${name}" COMPONENT service)
endfunction()

if(TARGET eventlistd)
    set(service_name "${EVENTLISTHANDLER_BUS_PREFIX}.EventlistHandler")
    eventlisthandler_install_system_file(bus-policy.conf.in "${service_name}.conf"
        "${CMAKE_INSTALL_DATADIR}/dbus-1/system.d")
    eventlisthandler_install_system_file(bus-activation.service.in "${service_name}.service"
        "${CMAKE_INSTALL_DATADIR}/dbus-1/system-services")
    eventlisthandler_install_system_file(eventlistd.service.in eventlistd.service
        "${EVENTLISTHANDLER_UNIT_FOLDER}")
    eventlisthandler_install_system_file(sysusers.conf.in eventlistd.conf lib/sysusers.d)
    eventlisthandler_install_system_file(tmpfiles.conf.in eventlistd.conf lib/tmpfiles.d)
endif()
