#!/usr/bin/python3
"""Validates what the library, the service and the clients write against the schemas in docs/schemas, and shows that
the schemas refuse what is wrong."""

import copy
import json
import os
import shutil
import sys
import unittest
from pathlib import Path

import jsonschema

from device import CENTRAL_SERVICE, Device

SCHEMAS = Path(os.environ["SCHEMAS"])
EXAMPLES = Path(os.environ["EXAMPLES"])
SOURCES = Path(os.environ["EXAMPLE_SOURCES"])
SPOOL = Path(os.environ["EVENTLISTHANDLER_SPOOL"])
RECORDER = Path(__file__).parents[2] / "support/recording_service.py"


def problems(name, content):
    path = SCHEMAS / f"{name}.json"
    schema = json.loads(path.read_text(encoding="utf-8"))
    jsonschema.Draft7Validator.check_schema(schema)
    resolver = jsonschema.RefResolver(path.as_uri(), schema)
    return [f"{list(error.path)}: {error.message}"
            for error in jsonschema.Draft7Validator(schema, resolver=resolver).iter_errors(content)]


def plain(value):
    """A recorded value without the types that travel on the bus."""
    if isinstance(value, dict) and set(value) == {"variant", "value"}:
        return plain(value["value"])
    if isinstance(value, dict):
        return {key: plain(content) for key, content in value.items()}
    return [plain(element) for element in value] if isinstance(value, list) else value


class Recorder:
    """A service that takes every call and answers it with nothing."""

    def __init__(self, device, name):
        self.program = device.start("/usr/bin/python3", RECORDER, "--address", device.address, "--name", name)
        self.program.wait_for("uniqueName")

    def calls(self, member):
        before = len(self.program.lines())
        self.program.type('{"command": "received"}\n')
        while len(self.program.lines()) == before:
            self.program.read()
        answer = json.loads(self.program.lines()[before])
        return [plain(record["arguments"]) for record in answer["received"] if record["member"] == member]


class SchemaTest(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(SPOOL, ignore_errors=True)
        SPOOL.mkdir(parents=True)
        self.device = Device(SPOOL)
        self.device.__enter__()
        self.addCleanup(self.device.__exit__)

    def assert_valid(self, name, content):
        self.assertEqual(problems(name, content), [], f"{name}: {json.dumps(content, ensure_ascii=False)}")

    def assert_refused(self, name, content, change):
        wrong = copy.deepcopy(content)
        change(wrong)
        self.assertEqual(problems(name, content), [])
        self.assertNotEqual(problems(name, wrong), [], f"{name} takes {json.dumps(wrong, ensure_ascii=False)}")

    def run_example(self, name, *arguments, text=""):
        done = self.device.run(EXAMPLES / name, *arguments, input=text)
        self.assertEqual(done.returncode, 0, done.stderr)

    @staticmethod
    def take_spool_files():
        found = []
        for path in sorted(SPOOL.glob("*.event.json")):
            found.append(json.loads(path.read_text(encoding="utf-8")))
            path.unlink()
        return found

    def test_calls_of_the_library(self):
        service = Recorder(self.device, CENTRAL_SERVICE)
        self.run_example("alarm", text="21\n97.5\n40\n")
        self.run_example("fault", "/no/such/sensor")
        self.run_example("event_with_arguments")
        self.run_example("audit_trail")
        self.run_example("description_from_configuration")
        calls = service.calls("logEvent")
        self.assertGreaterEqual(len(calls), 6)
        for call in calls:
            self.assert_valid("description", json.loads(call[3]))
            additional = json.loads(call[6])
            self.assert_valid("additional-data", additional)
            self.assert_valid("metadata", json.loads(additional["MetaData"]))

        texts, additional = json.loads(calls[0][3]), json.loads(calls[0][6])
        meta_data = json.loads(additional["MetaData"])
        self.assertEqual({argument["type"] for argument in meta_data["Arguments"].values()}, {"string", "text"})
        self.assert_refused("description", texts, lambda wrong: wrong.update(english="text"))
        self.assert_refused("description", texts, lambda wrong: wrong.update(lang_en=7))
        self.assert_refused("additional-data", additional, lambda wrong: wrong.pop("EventId"))
        self.assert_refused("additional-data", additional, lambda wrong: wrong.update(MetaData=meta_data))
        self.assert_refused("additional-data", additional, lambda wrong: wrong.update(SourceHashes="XY"))
        self.assert_refused("metadata", meta_data, lambda wrong: wrong.pop("DescriptionScheme"))
        self.assert_refused("metadata", meta_data, lambda wrong: wrong["Arguments"]["%1"].update(type="string"))
        self.assert_refused("metadata", meta_data, lambda wrong: wrong["Arguments"]["%2"].update(value=97.5))

    def test_spool_files(self):
        watch = self.device.start(EXAMPLES / "machinewatch")
        watch.type("report\nquit\n")
        self.assertEqual(watch.wait(), 0, watch.err)
        self.run_example("emergency_event", "supervisor", "PumpControl")
        files = self.take_spool_files()
        # The numbers of the next process begin anew, and with them the names.
        self.assertEqual(self.device.eventlist("log", "--file", "--module", "backup", "done").returncode, 0)
        files += self.take_spool_files()
        self.assertEqual(len(files), 3)
        for content in files:
            self.assert_valid("spool-file", content)
            if content["Description"]:
                self.assert_valid("description", json.loads(content["Description"]))
        emergencies = [content for content in files if content["EventId"] == "EventlistHandler/SystemWatchdog"]
        reports = [content for content in files if content["ModuleName"] == "MachineWatch"]
        for content in emergencies + reports:
            for member in content:
                self.assert_refused("spool-file", content, lambda wrong, member=member: wrong.pop(member))
            self.assert_refused("spool-file", content, lambda wrong: wrong.update(Further=1))
            self.assert_refused("spool-file", content, lambda wrong: wrong.update(MetaData="{}"))
            self.assert_refused("spool-file", content, lambda wrong: wrong.update(EventType=4))
            self.assert_refused("spool-file", content, lambda wrong: wrong.update(DateTimeMsUTC="2026-03-14 09:26"))
        self.assertEqual((len(emergencies), len(reports)), (1, 1))

    def test_dictionaries_of_clients(self):
        provider = Recorder(self.device, "org.eventlist.PumpControl")
        self.run_example("pump_client")
        for client in ("client.py", "client.sh"):
            done = self.device.run(SOURCES / "provider" / client)
            self.assertEqual(done.returncode, 0, done.stderr)
        calls = provider.calls("logEvent")
        self.assertEqual(len(calls), 3)
        for call in calls:
            self.assert_valid("description-dictionary", call[3])
        dictionary = calls[0][3]
        self.assert_refused("description-dictionary", dictionary, lambda wrong: wrong.pop("ObjectName"))
        self.assert_refused("description-dictionary", dictionary, lambda wrong: wrong.update(objectName="x"))
        self.assert_refused("description-dictionary", dictionary, lambda wrong: wrong["Arguments"][0].pop("Argument"))
        self.assert_refused("description-dictionary", dictionary,
                            lambda wrong: wrong["UrlArguments"][0].update(textSource="0"))

    def test_answers_of_the_service(self):
        self.device.start_service()
        self.run_example("alarm", text="97.5\n")
        for path, interface, member in (("/EventlistRead", "Interface.EventlistRead", "getCompleteEventlist"),
                                        ("/EventlistRead", "Interface.EventlistRead", "getListOfEventTypes"),
                                        ("/AlarmlistRead", "Interface.AlarmlistRead", "getCompleteAlarmlist")):
            target = self.device.connection.get_object(CENTRAL_SERVICE, path, introspect=False)
            answer = json.loads(json.dumps(getattr(target, member)("lang_en", dbus_interface=interface)))
            self.assert_valid("list-answer", answer)
            self.assertTrue(answer["data"])
            self.assertEqual({len(row) for row in answer["data"]}, {len(answer["header"])})
        self.assert_refused("list-answer", answer, lambda wrong: wrong["data"][0].append(7))
        self.assert_refused("list-answer", answer, lambda wrong: wrong.pop("header"))


if __name__ == "__main__":
    unittest.main(verbosity=2, argv=sys.argv[:1])
