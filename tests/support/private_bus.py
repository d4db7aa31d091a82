"""A D-Bus daemon of a test's own."""

import os

# A system bus in all that matters here: its kind, its limits, and that everybody may do everything.
CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <auth>EXTERNAL</auth>
  <listen>unix:path={socket}</listen>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
  </policy>
  {limits}
</busconfig>
"""


def socket_in(folder):
    """Where the bus of a folder listens. A socket's path has at most 107 bytes."""
    return os.path.join(folder, "bus")


def address_in(folder):
    return "unix:path=" + socket_in(folder)


def daemon_command(folder, **limits):
    """The command that starts the bus of a folder; it writes its address when it can be reached. The limits are those of
    the daemon's configuration, by their names."""
    configuration = os.path.join(folder, "bus.conf")
    lines = [f'<limit name="{name}">{value}</limit>' for name, value in limits.items()]
    with open(configuration, "w", encoding="utf-8") as file:
        file.write(CONFIGURATION.format(socket=socket_in(folder), limits="\n  ".join(lines)))
    return ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile", "--print-address=1"]
