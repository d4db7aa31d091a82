#!/bin/bash
# Runs inside a bare root as root: installs the packages in /packages, builds a consumer in two ways, runs it on a bus
# with the installed policy, and looks for its events. The service is started by the bus.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8

fail()
{
    echo "in the bare root: $*" >&2
    exit 1
}

echo "-- installing"
apt-get -qq -o Dpkg::Use-Pty=0 install -y --no-install-recommends /packages/*.deb g++ cmake make pkgconf >/tmp/apt.log 2>&1 ||
    { tail -n 30 /tmp/apt.log; fail "the packages cannot be installed"; }
getent passwd eventlistd >/dev/null || fail "there is no user eventlistd"
[ "$(stat -c '%a %U %G' /quarnel/var/EventToFileData)" = "3770 eventlistd eventlist-modules" ] ||
    fail "the spool folder is not as it should be"

echo "-- building a consumer with find_package and with pkg-config"
cmake -S /consumer -B /tmp/consumer >/tmp/cmake.log || { cat /tmp/cmake.log; fail "find_package failed"; }
cmake --build /tmp/consumer >/tmp/build.log || { cat /tmp/build.log; fail "the consumer was not built"; }
# Words of the shell on purpose.
# shellcheck disable=SC2046
c++ -std=c++17 -fPIC /consumer/consumer.cpp -o /tmp/consumer/by_pkg_config \
    "-DTEXT_FOLDER=\"$(pkg-config --variable=textdir eventlisthandler-platform)\"" \
    $(pkg-config --cflags --libs eventlisthandler eventlisthandler-platform)

echo "-- running it on a system bus"
useradd --groups eventlist-modules pump
useradd guest
mkdir -p /run/dbus
dbus-daemon --system --fork
as()
{
    setpriv --reuid="$1" --regid="$1" --init-groups -- "${@:2}"
}
# A module does not start the service, a call of it does.
as guest dbus-send --system --print-reply --dest=org.eventlist.EventlistHandler /EventlistRead \
    Interface.EventlistRead.getListOfEventTypes string: >/tmp/started 2>&1 ||
    { cat /tmp/started; fail "the bus does not start the service"; }
for consumer in /tmp/consumer/consumer /tmp/consumer/by_pkg_config; do
    said=$(as pump "$consumer" 2>&1) || fail "$consumer ended badly: $said"
    [ -z "$said" ] || fail "$consumer warns: $said"
    # The second file takes the name of the first, which has to be gone by then.
    for ((turn = 0; turn < 300; turn++)); do
        [ -e /quarnel/var/EventToFileData/consumer.event.json ] || break
        read -rt 0.1 <> <(:) || true
    done
done
for ((turn = 0; turn < 300; turn++)); do
    as guest eventlist list --module Consumer --sender --language en >/tmp/list || fail "guest cannot read the list"
    [ "$(grep -c ' pump' /tmp/list)" -ge 4 ] && break
    read -rt 0.1 <> <(:) || true
done
cat /tmp/list
[ "$(grep -c ' pump\[[0-9]*\] ' /tmp/list)" -eq 2 ] || fail "there are not two events of the bus by the user pump"
[ "$(grep -c ' pump  *' /tmp/list)" -eq 2 ] || fail "there are not two spool files of the user pump"
[ "$(ps -o user= -C eventlistd 2>/dev/null || stat -c %U "/proc/$(pidof eventlistd)")" = eventlistd ] ||
    fail "the service does not run as eventlistd"
# The call expects no answer, so that the list alone tells whether it was let through.
as guest eventlist delete --yes >/dev/null 2>&1 || true
[ "$(as guest eventlist list --module Consumer --sender | grep -c ' pump')" -eq 4 ] || fail "a guest may delete the list"

echo "-- removing the packages"
apt-get -qq -o Dpkg::Use-Pty=0 purge -y 'libeventlisthandler*' 'eventlist*' >/tmp/apt.log 2>&1 ||
    { tail -n 30 /tmp/apt.log; fail "the packages cannot be removed"; }
left=$(find / -xdev -iname '*eventlist*' -not -path '/proc/*' -not -path '/consumer/*' -not -path '/packages/*' \
    -not -path '/tmp/*' -not -path '*/qt5/*' -not -path '/quarnel/*')
[ -z "$left" ] || fail "files are left: $left"
