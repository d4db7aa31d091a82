"""Sends events as fast as it can: burst_sender.py ADDRESS MODULE COUNT

It prints "ready", waits for a line on its standard input, sends, and prints "sent" when all is on the
bus. The descriptions are "before the end", that of the last event is "end".
"""

import json
import sys

from service_harness import BUS_NAME, Client


class Address:
    def __init__(self, address):
        self.address = address


def main():
    address, module, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    client = Client(Address(address))
    client.connection.get_name_owner(BUS_NAME)

    def event(description):
        additional = json.dumps({"EventId": "burst/Event", "MetaData": "{}", "SourceHashType": 0,
                                 "SourceHashes": ""})
        message = client.message("/EventlistWrite", "Interface.EventlistWrite", "logEvent",
                                 "assssassss", ["3", "0", "EventlistEvent"],
                                 "2026-03-14T09:26:53.589+01:00", module, description, ["Firmware"],
                                 "", additional, "")
        message.set_no_reply(True)
        return message
    before, end = event("before the end"), event("end")
    print("ready", flush=True)
    sys.stdin.readline()
    for _ in range(count - 1):
        client.connection.send_message(before.copy())
    client.connection.send_message(end)
    client.connection.flush()
    print("sent", flush=True)


main()
