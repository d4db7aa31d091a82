#!/usr/bin/python3
"""Logs an event through the provider of the module "PumpControl". Needs python3-dbus and nothing of this library.

    client.py [name of the module that reports]
"""

import datetime
import sys

import dbus


def text_of(url):
    """A description dictionary names texts; it holds none."""
    return {"textSource": dbus.Int32(0),  # 0: language file, 1: configuration
            "moduleName": "PumpControl", "ObjectName": "PumpControl", "InstanceName": "", "url": url}


def entries(*dictionaries):
    """A list of entries is an array of variants (av), each with a dictionary (a{sv})."""
    return dbus.Array([dbus.Dictionary(entry, signature="sv", variant_level=1) for entry in dictionaries],
                      signature="v")


description = text_of("PumpControl/OverTemperature")
description["UrlArguments"] = entries(dict(text_of("PumpControl/Pump3"), Placeholder="%1"))
description["Arguments"] = entries({"Placeholder": "%2", "Argument": "97.5"})

events = dbus.Interface(dbus.SystemBus().get_object("org.eventlist.PumpControl", "/Events"), "Interface.Events")
events.logEvent(["3", "0", "EventlistEvent"],
                datetime.datetime.now().astimezone().isoformat(timespec="milliseconds"),
                sys.argv[1] if len(sys.argv) > 1 else "python-client",
                dbus.Dictionary(description, signature="sv"),
                ["Status"],
                "",   # user
                "")   # alarm id
