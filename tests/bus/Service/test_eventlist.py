"""The event list of the central service, seen by a client that knows nothing of Qt."""

import os
import subprocess
import sys
import time
import unittest
import xml.etree.ElementTree

import dbus

from service_harness import Client, ServiceTest, SignalRecorder, wait_for

COLUMNS = ["EventlistId", "EventType", "State", "IconType", "ModuleName", "DateTimeLocal",
           "TimestampUtc", "TimestampOffset", "DateTimeMsUTC", "Description", "User", "KeywordName",
           "AlarmID", "EventId", "MetaData", "SourceHashType", "SourceHashes"]


class Storing(ServiceTest):
    def test_an_event_comes_back_with_everything_that_was_sent(self):
        self.client.log_event(
            type_=0, state=1, icon="EventlistAlarmOn", module="PumpControl",
            description='{"lang_de":"Übertemperatur an Pumpe 3","lang_en":"Overtemperature at pump 3"}',
            keywords=["Error", "Firmware"], user="meier", event_id="PumpControl/OverTemperature",
            alarm_id="{6f1c2a8e}", source_hashes="0a1b", meta_data='{"Arguments":{}}')
        answer = self.client.part(modules=["PumpControl"])
        self.assertEqual(answer.header, COLUMNS)
        self.assertFalse(answer.is_truncated)
        row = answer.rows[0]
        self.assertGreater(int(row.pop("EventlistId")), 0)
        self.assertEqual(row, {
            "EventType": "0", "State": "1", "IconType": "EventlistAlarmOn",
            "ModuleName": "PumpControl", "DateTimeLocal": "2026-03-14T09:26:53.589",
            "TimestampUtc": "1773476813589", "TimestampOffset": "3600",
            "DateTimeMsUTC": "2026-03-14T09:26:53.589+01:00",
            "Description":
                '{"lang_de":"Übertemperatur an Pumpe 3","lang_en":"Overtemperature at pump 3"}',
            "User": "meier", "KeywordName": "Error;Firmware", "AlarmID": "{6f1c2a8e}",
            "EventId": "PumpControl/OverTemperature", "MetaData": '{"Arguments":{}}',
            "SourceHashType": "0", "SourceHashes": "0a1b"})

    def test_the_answer_is_a_dictionary_of_string_lists(self):
        self.client.log_event()
        dictionary = self.client.complete().dictionary
        self.assertEqual(dictionary.signature, "sv")
        self.assertEqual(sorted(dictionary), ["data", "header"])
        self.assertEqual(dictionary["header"].signature, "s")
        self.assertEqual(dictionary["data"].signature, "as")

    def test_a_description_comes_in_the_language_that_is_asked_for(self):
        self.client.log_event(description='{"lang_de":"Hallo","lang_en":"Hello"}', module="both")
        self.client.log_event(description='{"lang_fr":"Salut"}', module="french")
        self.client.log_event(description='no JSON text', module="plain")
        self.client.log_event(description='{broken', module="broken")
        seen = {row["ModuleName"]: row["Description"] for row in self.client.complete("lang_de").rows}
        self.assertEqual(seen["both"], "Hallo")
        self.assertEqual(seen["french"], "Salut")
        self.assertEqual(seen["plain"], "no JSON text")
        self.assertEqual(seen["broken"], "{broken")
        seen = {row["ModuleName"]: row["Description"] for row in self.client.complete("lang_xx").rows}
        self.assertEqual(seen["both"], "Hello")

    def test_the_user_and_the_process_of_the_sender_are_stored_beside_its_claims(self):
        # Its first event, which a query hurries into the list.
        self.client.log_event(module="known")
        self.client.descriptions("known")
        row = self.database().execute(
            "SELECT uid, pid, road FROM content JOIN event USING(id) WHERE module = 'known'"
        ).fetchone()
        self.assertEqual(row, (os.getuid(), os.getpid(), 0))
        answer = self.client.part(modules=["known"], columns=["SenderUid", "ModuleName", "SenderPid"])
        self.assertEqual(answer.header, ["SenderUid", "ModuleName", "SenderPid"])
        self.assertEqual(answer.rows[0], {"SenderUid": str(os.getuid()), "ModuleName": "known",
                                          "SenderPid": str(os.getpid())})

    def test_an_unreadable_time_becomes_the_time_of_arrival(self):
        before = int(time.time() * 1000)
        for timestamp in ["", "yesterday", "2026-13-45T99:00:00Z", "9" * 100000]:
            self.client.log_event(timestamp=timestamp, module="clockless")
        rows = self.client.part(modules=["clockless"]).rows
        self.assertEqual(len(rows), 4)
        for row in rows:
            self.assertLess(abs(int(row["TimestampUtc"]) - before), 60000)
            self.assertRegex(row["DateTimeMsUTC"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]")

    def test_a_call_with_further_arguments_is_none(self):
        self.client.log_event(user="stays")
        for path, interface, method, signature, arguments in (
                ("/EventlistWrite", "Interface.EventlistWrite", "deleteEventlist", "s", ("really",)),
                ("/EventlistWrite", "Interface.EventlistWrite", "suppressEventProcessing", "bs", (True, "")),
                ("/AlarmlistRead", "Interface.AlarmlistRead", "getCompleteAlarmlist", "ss", ("", "")),
                ("/HashRegister", "Interface.RegisterHash", "registerEventHash", "ss", ("0a1b", ""))):
            with self.subTest(method=method), self.assertRaises(dbus.DBusException) as refused:
                self.client.call(path, interface, method, signature, *arguments)
            self.assertEqual(refused.exception.get_dbus_name(), "org.freedesktop.DBus.Error.UnknownMethod")
        self.client.log_event(user="comes")
        self.assertEqual([row["User"] for row in reversed(self.client.part(modules=["pump"]).rows)], ["stays", "comes"])

    def test_an_event_without_a_type_or_a_state_is_refused_with_a_warning(self):
        for attributes in [["4", "0", "i"], ["-1", "0", "i"], ["0", "on", "i"], ["alarm", "0", "i"],
                           ["0", "0"], ["0", "0", "i", "x"], []]:
            self.client.send("/EventlistWrite", "Interface.EventlistWrite", "logEvent",
                             "assssassss", attributes, "", "odd", "{}", [], "", "{}", "")
        self.client.log_event(module="odd", description="marker")
        self.assertEqual(self.client.descriptions("odd"), ["marker"])
        self.assertEqual(sum("is refused" in line for line in self.service.lines), 7)

    def test_an_event_whose_state_is_none_is_kept_and_is_no_alarm(self):
        for state in ["3", "-1"]:
            self.client.log_event(type_=0, state=state, alarm_id="odd", module="odd")
        rows = self.client.part(modules=["odd"]).rows
        self.assertEqual([row["State"] for row in rows], ["-1", "3"])
        self.assertEqual(self.client.alarms().rows, [])

    def test_additional_data_that_cannot_be_read_costs_only_itself(self):
        for data in ["", "{", "[]", '{"EventId":7}', '{"EventId":"a","EventId":"b"}']:
            self.client.send("/EventlistWrite", "Interface.EventlistWrite", "logEvent",
                             "assssassss", ["3", "0", "i"], "", "odd", data, [], "", data, "")
        rows = self.client.part(modules=["odd"]).rows
        self.assertEqual(len(rows), 5)
        self.assertEqual({row["EventId"] for row in rows}, {""})

    def test_an_event_that_is_too_large_is_refused_and_the_next_one_is_not(self):
        self.client.log_event(module="big", description="x" * (1024 * 1024 + 1))
        self.client.log_event(module="big", description="y" * (1024 * 1024 - 1000))
        self.assertEqual([text[0] for text in self.client.descriptions("big")], ["y"])

    def test_control_characters_and_quotes_survive(self):
        text = 'a"b\\c\n\t\x01\u202e\U0001f600;\x1f'
        self.client.log_event(module=text, user=text, description=text, event_id=text)
        row = self.client.part(modules=[text]).rows[0]
        self.assertEqual([row["ModuleName"], row["User"], row["Description"], row["EventId"]],
                         [text] * 4)

    def test_the_start_of_the_device_and_a_restart_of_the_service_stand_in_the_list(self):
        self.service.kill()
        self.service.start()
        ids = [row["EventId"] for row in self.client.part(modules=["EventlistHandler"]).rows]
        self.assertEqual(ids, ["EventlistHandler/SystemRestarted", "EventlistHandler/PowerOnEvent"])


class Filtering(ServiceTest):
    def setUp(self):
        super().setUp()
        for number in range(12):
            self.client.log_event(
                type_=number % 4, module="m%d" % (number % 3), description=str(number),
                keywords=["Firmware", "k%d" % (number % 2)], event_id="e%d" % (number % 4),
                timestamp="2026-01-01T00:00:%02d.000+00:00" % number)

    def numbers(self, answer):
        return [int(row["Description"]) for row in answer.rows if row["Description"].isdigit()]

    def test_without_a_restriction_everything_comes_newest_first(self):
        self.assertEqual(self.numbers(self.client.complete()), list(range(11, -1, -1)))
        self.assertEqual(self.numbers(self.client.part()), list(range(11, -1, -1)))

    def test_types_are_characters_and_the_first_arrives_empty(self):
        self.assertEqual(self.numbers(self.client.part(types=[""])), [8, 4, 0])
        self.assertEqual(self.numbers(self.client.part(types=["\x01"])), [9, 5, 1])
        self.assertEqual(self.numbers(self.client.part(types=["\x02", "\x03", "\x02"])),
                         [11, 10, 7, 6, 3, 2])
        self.assertEqual(self.client.part(types=["\x04"]).rows, [])
        self.assertEqual(self.client.part(types=["alarm", "0", "\x01x"]).rows, [])
        self.assertEqual(self.numbers(self.client.part(types=["alarm", "\x01"])), [9, 5, 1])

    def test_lists_are_alternatives_and_hold_together(self):
        self.assertEqual(self.numbers(self.client.part(modules=["m1"])), [10, 7, 4, 1])
        self.assertEqual(self.numbers(self.client.part(modules=["m1", "m2"])),
                         [11, 10, 8, 7, 5, 4, 2, 1])
        self.assertEqual(self.numbers(self.client.part(keywords=["k1"])), [11, 9, 7, 5, 3, 1])
        self.assertEqual(self.numbers(self.client.part(keywords=["k1", "k0"])),
                         list(range(11, -1, -1)))
        self.assertEqual(self.numbers(self.client.part(second=["e2"])), [10, 6, 2])
        self.assertEqual(self.numbers(self.client.part(modules=["m1"], keywords=["k1"])), [7, 1])
        self.assertEqual(self.client.part(modules=["m"]).rows, [])
        self.assertEqual(self.client.part(keywords=["k"]).rows, [])
        self.assertEqual(self.client.part(keywords=["Firmware\x1fk1"], modules=["m"]).rows, [])

    def test_nothing_in_a_filter_is_more_than_a_value(self):
        self.assertEqual(self.client.part(modules=["' OR 1=1 --", "%", "_"]).rows, [])
        self.assertEqual(self.client.part(keywords=["%", "*", "')--"]).rows, [])

    def test_times_are_inclusive_and_an_empty_one_leaves_its_end_open(self):
        def time_of(second):
            return "2026-01-01T00:00:%02d.000+00:00" % second
        self.assertEqual(self.numbers(self.client.part(start=time_of(3), end=time_of(5))),
                         [5, 4, 3])
        self.assertEqual(self.numbers(self.client.part(start=time_of(10))), [11, 10])
        self.assertEqual(self.numbers(self.client.part(end=time_of(1))), [1, 0])
        self.assertEqual(self.numbers(self.client.part(start="x", end=time_of(0))), [0])
        self.assertEqual(self.client.part(start=time_of(5), end=time_of(4)).rows, [])
        self.assertEqual(
            self.numbers(self.client.part(start="2026-01-01T01:00:10.500+01:00")), [11])

    def test_unix_times_come_in_seconds_or_milliseconds(self):
        base = 1767225600
        by_time = self.client.part_by_unix_time
        self.assertEqual(self.numbers(by_time(base + 3, base + 5)), [5, 4, 3])
        self.assertEqual(self.numbers(by_time(base * 1000 + 3001, base * 1000 + 5000)), [5, 4])
        self.assertEqual(self.numbers(by_time(0, base + 1)), [1, 0])
        self.assertEqual(self.numbers(by_time(base + 10, 0)), [11, 10])
        self.assertEqual(self.numbers(by_time(-5, -5)), list(range(11, -1, -1)))

    def test_a_number_limits_the_rows_to_the_newest(self):
        self.assertEqual(self.numbers(self.client.part(number=3)), [11, 10, 9])
        self.assertEqual(self.numbers(self.client.part(keywords=["k0"], number=2)), [10, 8])
        self.assertEqual(len(self.numbers(self.client.part(number=0))), 12)
        self.assertEqual(len(self.numbers(self.client.part(number=-1))), 12)
        self.assertEqual(len(self.numbers(self.client.part(number=1000000))), 12)

    def test_ids_read_a_range_and_page_by_page_in_both_directions(self):
        ids = [int(value) for value in self.client.part().column("EventlistId")][:12]
        low, high = ids[-1], ids[0]
        self.assertEqual(self.numbers(self.client.part_by_id(low + 2, low + 4)), [4, 3, 2])
        self.assertEqual(self.numbers(self.client.part_by_id(low, 0, number=2)), [11, 10])
        self.assertEqual(self.client.part_by_id(high + 1, 0).rows, [])
        seen = []
        next_id = low
        while True:
            page = self.client.part_by_id(next_id, 0, number=5, oldest_first=True)
            if not page.rows:
                break
            seen += self.numbers(page)
            next_id = int(page.rows[-1]["EventlistId"]) + 1
        self.assertEqual(seen, list(range(12)))

    def test_columns_can_be_chosen(self):
        answer = self.client.part(modules=["m1"], number=1,
                                  columns=["Description", "EventlistId", "Nonsense", "Description"])
        self.assertEqual(answer.header, ["Description", "EventlistId"])
        self.assertEqual(answer.rows[0]["Description"], "10")

    def test_a_list_that_is_too_long_is_refused(self):
        self.assertEqual(self.client.part(modules=["x"] * 1000).rows, [])
        with self.assertRaises(dbus.DBusException) as refusal:
            self.client.part(modules=["x"] * 1001)
        self.assertEqual(refusal.exception.get_dbus_name(),
                         "org.freedesktop.DBus.Error.InvalidArgs")

    def test_the_types_have_names(self):
        answer = self.client.read("getListOfEventTypes", "s", "lang_en")
        self.assertEqual(answer.header, ["EventType", "Description"])
        self.assertEqual(answer.column("EventType"), ["0", "1", "2", "3"])
        self.assertEqual(answer.column("Description"),
                         ["Alarm", "Audit trail", "Fault", "Other event"])


class Bounds(ServiceTest):
    arguments = ("--max-rows", "50")

    def test_the_oldest_rows_go_and_numbers_go_on(self):
        for number in range(200):
            self.client.log_event(description=str(number))
        rows = self.client.complete().rows
        self.assertEqual(len(rows), 50)
        self.assertEqual([int(row["Description"]) for row in rows], list(range(199, 149, -1)))
        ids = [int(row["EventlistId"]) for row in rows]
        self.assertEqual(ids, list(range(ids[0], ids[0] - 50, -1)))

    def test_a_deleted_list_begins_with_an_entry_and_higher_numbers(self):
        self.client.log_event()
        last = int(self.client.complete().rows[0]["EventlistId"])
        self.client.delete_eventlist()
        rows = self.client.complete("lang_en").rows
        self.assertEqual([row["EventId"] for row in rows], ["EventlistHandler/EventlistDeleted"])
        self.assertEqual(rows[0]["EventType"], "1")
        self.assertEqual(rows[0]["Description"], "Event list deleted")
        self.assertGreater(int(rows[0]["EventlistId"]), last)
        self.service.kill()
        self.service.start()
        self.client.log_event()
        ids = [int(value) for value in self.client.complete().column("EventlistId")]
        self.assertEqual(ids, sorted(set(ids), reverse=True))
        self.assertGreater(ids[-1], last)


class BoundedBytes(ServiceTest):
    arguments = ("--max-bytes", "2000000")

    def test_the_bytes_of_the_list_are_bounded_too(self):
        for number in range(300):
            self.client.log_event(description="%05d" % number + "x" * 50000)
        texts = self.client.descriptions()
        self.assertLess(len(texts), 60)
        self.assertGreater(len(texts), 20)
        self.assertEqual(texts[-1][:5], "00299")


class Suppression(ServiceTest):
    def test_suppressed_events_are_not_stored_and_both_ends_stand_in_the_list(self):
        self.client.log_event(description="before")
        self.client.suppress(True)
        self.client.suppress(True)
        self.client.log_event(description="meanwhile")
        self.client.suppress(False)
        self.client.log_event(description="after")
        self.assertEqual(self.client.descriptions(), ["before", "after"])
        ids = [row["EventId"] for row in self.client.part(modules=["EventlistHandler"]).rows]
        self.assertEqual(ids[:2], ["EventlistHandler/EventProcessingResumed",
                                   "EventlistHandler/EventProcessingSuppressed"])

    def test_suppression_ends_with_the_service(self):
        self.client.suppress(True)
        self.client.complete()
        self.service.kill()
        self.service.start()
        self.client.log_event(description="again")
        self.assertEqual(self.client.descriptions(), ["again"])


class Changes(ServiceTest):
    def test_a_single_change_is_told_at_once_and_only_once(self):
        recorder = SignalRecorder(self.bus)
        self.client.log_event()
        recorder.wait_for(lambda signals: signals, "changedEventlist")
        # A marker of another kind that comes later shows that no second one came.
        self.client.register_hash("marker")
        self.client.log_event(source_hashes="marker")
        recorder.wait_for(lambda signals: any(s[2] == "availableEventIcon" for s in signals), "marker")
        self.assertEqual(recorder.signals[0], ("/EventlistRead", "Interface.EventlistRead",
                                               "changedEventlist", []))
        self.assertEqual(recorder.members().index("availableEventIcon"), 1)
        recorder.close()

    def start_sender(self, module, number):
        script = os.path.join(os.path.dirname(__file__), "burst_sender.py")
        sender = subprocess.Popen([sys.executable, script, self.bus.address, module, str(number)],
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(lambda: (sender.kill(), sender.wait(), sender.stdin.close(),
                                 sender.stdout.close()))
        self.assertEqual(sender.stdout.readline(), b"ready\n")
        return sender

    def is_whole(self, module):
        newest = self.client.part(modules=[module], columns=["Description"], number=1).rows
        return newest and newest[0]["Description"] == "end"

    def test_a_burst_is_told_seldom_and_its_end_is_never_missing(self):
        number = 20000
        modules = ["burst%d" % sender for sender in range(3)]
        senders = [self.start_sender(module, number) for module in modules]
        recorder = SignalRecorder(self.bus)
        begin = time.monotonic()
        for sender in senders:
            sender.stdin.write(b"go\n")
            sender.stdin.flush()
        # Looks only when it is told of a change, as a panel does: without a signal behind the last
        # event it would never see it.
        told = 0
        while not all(self.is_whole(module) for module in modules):
            recorder.wait_for(lambda signals: len(signals) > told, "another signal")
            told = len(recorder.signals)
        seconds = time.monotonic() - begin
        told = len(recorder.poll())
        self.assertEqual(set(recorder.members()), {"changedEventlist"})
        print("changedEventlist: %d signals for %d events in %.1f s (%.0f events/s)"
              % (told, number * len(modules), seconds, number * len(modules) / seconds))
        # Ten a second, one at the beginning, and what is rounded.
        self.assertLessEqual(told, 11 * seconds + 1)
        recorder.close()


class Many(ServiceTest):
    def test_a_hundred_thousand_events_arrive_whole_and_in_order(self):
        for number in range(100000):
            self.client.log_event(description=str(number), module="many")
        answer = self.client.part(modules=["many"], columns=["EventlistId", "Description"])
        self.assertFalse(answer.is_truncated)
        self.assertEqual([int(row["Description"]) for row in answer.rows],
                         list(range(99999, -1, -1)))
        ids = [int(row["EventlistId"]) for row in answer.rows]
        self.assertEqual(ids, list(range(ids[0], ids[0] - 100000, -1)))

    def test_an_answer_that_fits_no_message_is_cut_and_says_so(self):
        for number in range(60):
            self.client.log_event(description="%03d" % number + "x" * 900000, module="wide")
        answer = self.client.part(modules=["wide"])
        self.assertTrue(answer.is_truncated)
        self.assertGreater(len(answer.rows), 30)
        self.assertEqual([row["Description"][:3] for row in answer.rows],
                         ["%03d" % (59 - i) for i in range(len(answer.rows))])
        self.assertTrue(self.service.is_running())
        # The rest is there for who asks for it.
        last = int(answer.rows[-1]["EventlistId"])
        rest = self.client.part_by_id(0, last - 1, modules=["wide"])
        self.assertEqual(len(rest.rows) + len(answer.rows), 60)


class Flood(ServiceTest):
    arguments = ("--sender-rate", "1", "--sender-burst", "100")

    def test_a_sender_that_floods_is_cut_off_and_others_are_not(self):
        for number in range(1000):
            self.client.log_event(description=str(number), module="flood")
        other = Client(self.bus)
        other.log_event(description="from another", module="quiet")
        self.assertEqual(other.descriptions("quiet"), ["from another"])
        kept = [int(text) for text in other.descriptions("flood")]
        self.assertEqual(kept[:100], list(range(100)))
        self.assertLess(len(kept), 120)
        def dropped():
            rows = other.part("lang_en", second=["EventlistHandler/EventsDropped"]).rows
            return rows and rows[0]["Description"]
        text = wait_for(dropped, "the entry about dropped events")
        self.assertRegex(text, r"^\d+ events were dropped, from: :1\.\d+, pid %d, uid %d$"
                         % (os.getpid(), os.getuid()))
        other.close()


class FloodOfQueries(ServiceTest):
    """One that has used up its time gets hardly any more: a thousandth."""

    arguments = ("--query-rate", "1", "--query-burst", "300")
    EVENTS = 3000

    def setUp(self):
        super().setUp()
        for number in range(self.EVENTS):
            self.client.log_event(description=str(number))

    def answers_until_refused(self):
        answers = 0
        while True:
            try:
                self.client.complete()
            except dbus.DBusException as error:
                return answers, error.get_dbus_name(), error.get_dbus_message()
            answers += 1

    def test_a_reader_that_floods_is_refused_and_others_are_not(self):
        answers, name, text = self.answers_until_refused()
        self.assertGreater(answers, 0)
        self.assertEqual((name, text), ("org.freedesktop.DBus.Error.LimitsExceeded",
                                        "Too many queries, try again later"))
        with self.assertRaisesRegex(dbus.DBusException, "LimitsExceeded"):
            self.client.alarms()
        other = Client(self.bus)
        self.assertEqual(len(other.complete().rows), self.EVENTS + 1)
        self.assertEqual(other.alarms().rows, [])
        other.close()
        # What is logged is no query.
        self.client.log_event(description="logged", module="refused")
        other = Client(self.bus)
        self.assertEqual(other.descriptions("refused"), ["logged"])
        other.close()

    def test_a_query_that_wants_no_answer_costs_nothing(self):
        for _ in range(2000):
            self.client.send("/EventlistRead", "Interface.EventlistRead", "getCompleteEventlist", "s", "")
            self.client.send("/AlarmlistRead", "Interface.AlarmlistRead", "getCompleteAlarmlist", "s", "")
        self.assertEqual(len(self.client.complete().rows), self.EVENTS + 1)


class Introspection(ServiceTest):
    INTERFACES = {"/EventlistWrite": "Interface.EventlistWrite",
                  "/EventlistRead": "Interface.EventlistRead",
                  "/AlarmlistWrite": "Interface.AlarmlistWrite",
                  "/AlarmlistRead": "Interface.AlarmlistRead",
                  "/HashRegister": "Interface.RegisterHash"}

    @staticmethod
    def members(node, interface):
        """Methods and signals with their arguments: names of those that come in, types of all."""
        element = node.find("interface[@name='%s']" % interface)
        found = set()
        for member in element:
            if member.tag not in ("method", "signal"):
                continue
            is_method = member.tag == "method"
            arguments = [(argument.get("direction", "in" if is_method else "out"),
                          # An answer has one value, whose name says nothing.
                          None if is_method and argument.get("direction") == "out"
                          else argument.get("name"),
                          argument.get("type"))
                         for argument in member.findall("arg")]
            if not is_method:
                arguments = [("signal", name, type_) for _, name, type_ in arguments]
            # The order counts among those of one direction only.
            arguments.sort(key=lambda argument: argument[0])
            found.add((member.tag, member.get("name"), tuple(arguments)))
        return found

    def test_the_running_service_is_what_the_interface_files_say(self):
        folder = os.environ["EVENTLISTHANDLER_INTERFACE_FOLDER"]
        for path, interface in self.INTERFACES.items():
            described = xml.etree.ElementTree.parse(os.path.join(folder, interface + ".xml"))
            text = self.client.call(path, "org.freedesktop.DBus.Introspectable", "Introspect", "")
            running = xml.etree.ElementTree.fromstring(text)
            wanted = self.members(described.getroot(), interface)
            self.assertTrue(wanted)
            self.assertEqual(self.members(running, interface), wanted)
            own = [element.get("name") for element in running.findall("interface")
                   if not element.get("name").startswith("org.freedesktop.DBus.")]
            self.assertEqual(own, [interface])


if __name__ == "__main__":
    unittest.main()
