#!/bin/sh
# Logs an event through the provider of the module "PumpControl", with gdbus alone. Any other program that can
# call a D-Bus method does as well.
#     client.sh [name of the module that reports]
set -eu

text_of()
{
    printf "'textSource': <0>, 'moduleName': <'PumpControl'>, 'ObjectName': <'PumpControl'>, 'InstanceName': <''>, 'url': <'%s'>" "$1"
}

# A list of entries is an array of variants (av), each with a dictionary (a{sv}).
description="{$(text_of PumpControl/OverTemperature),
    'UrlArguments': <[<{$(text_of PumpControl/Pump3), 'Placeholder': <'%1'>}>]>,
    'Arguments': <[<{'Placeholder': <'%2'>, 'Argument': <'97.5'>}>]>}"

gdbus call --system --dest org.eventlist.PumpControl --object-path /Events --method Interface.Events.logEvent \
    "['3', '0', 'EventlistEvent']" "$(date +%Y-%m-%dT%H:%M:%S.%3N%:z)" "${1:-shell-client}" \
    "$description" "['Status']" "''" "''" >/dev/null
