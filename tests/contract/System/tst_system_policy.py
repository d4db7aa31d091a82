#!/usr/bin/python3
"""The central service as it is shipped: the installed bus policy, its users and groups, the folders and their rights.

Runs in a mount namespace of its own, in which the users of the device are there; nothing of the machine changes."""

import configparser
import json
import os
import pwd
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from device import CENTRAL_SERVICE, DEADLINE_S, Program, wait_until

BUILD = Path(os.environ["EVENTLISTHANDLER_BUILD_FOLDER"])
EVENTLISTD = os.environ["EVENTLISTHANDLER_EVENTLISTD"]
DATA_ROOT = os.environ["EVENTLISTHANDLER_DATA_ROOT"]
MODULE = os.environ["EVENTLISTHANDLER_FILE_ROAD_MODULE"]
INSIDE = "EVENTLISTHANDLER_INSIDE_NAMESPACE"
# Processes of other users do not end with their parent: the namespace ends them.
NAMESPACE = ["unshare", "--mount", "--propagation", "private", "--pid", "--fork", "--kill-child", "--mount-proc"]

# Who is on this device, with the groups in which they are. The service is made by the file that is shipped.
USERS = {"pump": ["eventlist-modules"], "valve": ["eventlist-modules"], "anna": ["eventlist-operators"],
         "berta": ["eventlist-administrators"], "guest": []}
FIRST_ID = 61000

LOG = ("/EventlistWrite", "Interface.EventlistWrite.logEvent", "array:string:3,0,i", "string:", "string:claimed",
       "string:{}", "array:string:", "string:", "string:{}", "string:")
EVERYBODY = {"root", "pump", "anna", "berta", "guest"}
CALLS = [
    (LOG, EVERYBODY),
    (("/HashRegister", "Interface.RegisterHash.registerEventHash", "string:0a1b"), EVERYBODY),
    (("/EventlistRead", "Interface.EventlistRead.getCompleteEventlist", "string:"), EVERYBODY),
    (("/EventlistRead", "Interface.EventlistRead.getListOfEventTypes", "string:"), EVERYBODY),
    (("/AlarmlistRead", "Interface.AlarmlistRead.getCompleteAlarmlist", "string:"), EVERYBODY),
    (("/AlarmlistRead", "Interface.AlarmlistRead.getAlarmState", "string:"), EVERYBODY),
    (("/EventlistRead", "org.freedesktop.DBus.Introspectable.Introspect"), EVERYBODY),
    (("/EventlistRead", "org.freedesktop.DBus.Peer.Ping"), EVERYBODY),
    (("/AlarmlistWrite", "Interface.AlarmlistWrite.acknowledgeVisualAlarm", "array:string:a", "string:anna"),
     {"root", "anna"}),
    (("/AlarmlistWrite", "Interface.AlarmlistWrite.acknowledgeCentralDetector", "string:anna"), {"root", "anna"}),
    (("/EventlistWrite", "Interface.EventlistWrite.suppressEventProcessing", "boolean:false"), {"root", "berta"}),
    (("/EventlistWrite", "Interface.EventlistWrite.deleteEventlist"), {"root", "berta"}),
    # Allowed calls on the object of another interface.
    (("/AlarmlistWrite", "Interface.EventlistWrite.logEvent"), {"root"}),
    (("/EventlistRead", "org.freedesktop.DBus.Properties.GetAll", "string:Interface.EventlistRead"), set()),
]

# The rules of a system bus as Debian has them: no name and no call but those that a policy allows.
BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <auth>EXTERNAL</auth>
  <listen>unix:path={socket}</listen>
  <policy context="default">
    <allow user="*"/>
    {rules}
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
    <allow send_destination="org.freedesktop.DBus" send_interface="org.freedesktop.DBus"/>
  </policy>
  <includedir>{policies}</includedir>
</busconfig>
"""
STRICT = '<deny own="*"/><deny send_type="method_call"/>'
CARELESS = '<allow own="*"/><allow send_destination="*"/>'


def run(*command, user=None, **settings):
    words = [str(word) for word in command]
    if user:
        words = as_user(user) + words
    return subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False,
                          timeout=DEADLINE_S, **settings)


def as_user(user):
    return ["setpriv", f"--reuid={user}", f"--regid={user}", "--init-groups", "--"]


def must(*command, **settings):
    done = run(*command, **settings)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}: {done.stdout}{done.stderr}")
    return done.stdout


def add_users(folder):
    with open(folder / "etc/passwd", "a", encoding="utf-8") as passwd, \
            open(folder / "etc/group", "a", encoding="utf-8") as group:
        for number, name in enumerate(USERS, FIRST_ID):
            passwd.write(f"{name}:x:{number}:{number}::/:/bin/sh\n")
            group.write(f"{name}:x:{number}:\n")
    lines = (folder / "etc/group").read_text(encoding="utf-8").splitlines()
    for number, line in enumerate(lines):
        members = [user for user, groups in USERS.items() if line.split(":")[0] in groups]
        if members:
            separator = "" if line.endswith(":") else ","
            lines[number] = line + separator + ",".join(members)
    (folder / "etc/group").write_text("\n".join(lines) + "\n", encoding="utf-8")


class SystemPolicy(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="device-", dir="/tmp"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, True)
        cls.folder.chmod(0o755)
        must(os.environ["CMAKE_COMMAND"], "--install", BUILD, "--prefix", cls.folder / "usr", "--component", "service")
        (cls.folder / "etc").mkdir()
        for name in ("passwd", "group", "shadow", "gshadow"):
            if Path("/etc", name).exists():
                shutil.copy(Path("/etc", name), cls.folder / "etc")
        must("systemd-sysusers", f"--root={cls.folder}")
        add_users(cls.folder)
        for name in ("passwd", "group"):
            must("mount", "--bind", cls.folder / "etc" / name, f"/etc/{name}")
        must("systemd-tmpfiles", f"--root={cls.folder}", "--create", "eventlistd.conf")
        cls.spool = cls.folder / (DATA_ROOT + "var/EventToFileData").lstrip("/")
        cls.database = cls.folder / (DATA_ROOT + "var/eventlistd/eventlist.sqlite").lstrip("/")
        # The library has its spool folder compiled in.
        compiled_in = Path(DATA_ROOT, "var/EventToFileData")
        compiled_in.mkdir(parents=True, exist_ok=True)
        must("mount", "--bind", cls.spool, compiled_in)

    def start(self, rules=STRICT):
        self.address = f"unix:path={self.folder}/bus"
        (self.folder / "bus").unlink(missing_ok=True)
        (self.folder / "bus.conf").write_text(BUS_CONFIGURATION.format(
            socket=self.folder / "bus", rules=rules, policies=self.folder / "usr/share/dbus-1/system.d"),
            encoding="utf-8")
        bus = Program(["dbus-daemon", f"--config-file={self.folder}/bus.conf", "--nofork", "--nopidfile",
                       "--print-address=1"])
        self.addCleanup(bus.stop)
        bus.wait_for("guid=")
        self.service = Program(as_user("eventlistd") + [EVENTLISTD, "--database", str(self.database), "--spool",
                                                        f"{self.spool}/", "--texts",
                                                        os.environ["EVENTLISTHANDLER_TEXTS"]],
                               env=dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=self.address))
        self.addCleanup(self.service.stop)
        self.service.wait_for("eventlistd: ready", "err")

    def send(self, user, path, member, *arguments, destination=CENTRAL_SERVICE):
        """Places a call and tells whether the bus let it pass."""
        done = run("dbus-send", f"--bus={self.address}", "--print-reply", f"--dest={destination}", path, member,
                   *arguments, user=user)
        return "org.freedesktop.DBus.Error.AccessDenied" not in done.stderr, done

    def test_each_call_is_for_those_users_whom_the_policy_names(self):
        for rules in (STRICT, CARELESS):
            self.start(rules)
            for (path, member, *arguments), allowed in CALLS:
                for user in EVERYBODY:
                    with self.subTest(user=user, member=member, rules=rules):
                        is_passed, done = self.send(user, path, member, *arguments)
                        self.assertEqual(is_passed, user in allowed, done.stderr)
            self.doCleanups()

    def call(self, user, interface, member):
        """Places a call as a client of its own, because the tools of the bus insist on an interface."""
        script = ("import sys, dbus.bus, dbus.lowlevel\n"
                  "bus = dbus.bus.BusConnection(sys.argv[1])\n"
                  "message = dbus.lowlevel.MethodCallMessage(sys.argv[2], '/EventlistWrite', sys.argv[3] or None,\n"
                  "                                          sys.argv[4])\n"
                  "try:\n    bus.send_message_with_reply_and_block(message, 30)\n    print('passed')\n"
                  "except dbus.DBusException as error:\n    print(error.get_dbus_name())\n")
        return must("/usr/bin/python3", "-c", script, self.address, CENTRAL_SERVICE, interface, member,
                    user=user).strip()

    def test_a_call_without_an_interface_reaches_nobody(self):
        for rules in (STRICT, CARELESS):
            self.start(rules)
            self.assertEqual(self.call("berta", "Interface.EventlistWrite", "deleteEventlist"), "passed")
            for user in ("guest", "berta", "root"):
                with self.subTest(user=user, rules=rules):
                    self.assertEqual(self.call(user, "", "deleteEventlist"), "org.freedesktop.DBus.Error.AccessDenied")
            self.doCleanups()

    def test_only_the_service_may_have_its_name(self):
        for rules in (STRICT, CARELESS):
            self.start(rules)
            # Without the service the name is free.
            self.service.stop()
            for user in EVERYBODY | {"valve", "eventlistd"}:
                with self.subTest(user=user, rules=rules):
                    is_passed, done = self.send(user, "/", "org.freedesktop.DBus.RequestName", f"string:{CENTRAL_SERVICE}",
                                                "uint32:0", destination="org.freedesktop.DBus")
                    self.assertEqual(is_passed, user == "eventlistd", done.stderr)
            self.doCleanups()

    def senders(self, module):
        """The users whose events name this module, the oldest first, as the tool tells them to a guest."""
        listed = run(os.environ["EVENTLIST"], "list", "--sender", "--module", module, "--json", user="guest",
                     env=dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=self.address))
        self.assertEqual((listed.returncode, listed.stderr), (0, ""))
        return [pwd.getpwuid(event["SenderUid"]).pw_name for event in json.loads(listed.stdout)]

    def test_whoever_claims_to_be_another_is_known_by_user(self):
        self.start()
        self.assertTrue(self.send("guest", *LOG)[0])
        self.assertTrue(self.send("pump", *LOG)[0])
        self.assertEqual(self.senders("claimed")[-2:], ["guest", "pump"])

    def test_the_tool_tells_who_may_not(self):
        self.start()
        self.assertTrue(self.send("guest", LOG[0], LOG[1], "array:string:0,1,i", *LOG[3:])[0])
        allowed_to_others = {
            ("delete", "--yes"): "eventlist: the list was not deleted: the bus may allow it to others alone, or the log "
                                 "of the service says why\n",
            ("ack", "--central"): "eventlist: the central detector is still on: the bus may allow this to others alone, "
                                  "or there is a new alarm\n"}
        for words, complaint in allowed_to_others.items():
            for user, code in (("guest", 1), ("root", 0)):
                with self.subTest(words=words, user=user):
                    done = run(os.environ["EVENTLIST"], *words, user=user,
                               env=dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=self.address))
                    self.assertEqual((done.returncode, done.stderr), (code, complaint if code else ""))

    def log_to_file(self, user, what):
        """Has a module of this user log on the file road, and gives its warnings."""
        module = Program(as_user(user) + [MODULE, f"{user} %1", f"{user} %1"])
        module.type(what + "\n")
        module.end_input()
        self.assertEqual((module.wait(), module.out), (0, "done\n"))
        return module.err.splitlines()

    def test_modules_of_several_users_share_the_spool_folder_and_leave_each_other_alone(self):
        self.start()
        self.service.stop()
        self.assertEqual(self.log_to_file("pump", "event 1"), [])
        self.assertEqual(self.log_to_file("valve", "alarm on 2"), [])
        # The number that the other module has used as well: nothing is replaced, and the loss is told.
        self.assertEqual(self.log_to_file("valve", "event 3"), [
            "Can't write jsonObject to file",
            "Can't write event to file. ModuleName: \"PumpControl\" Description: QVariant(QString, "
            "\"{\\\"lang_de\\\":\\\"valve 3\\\",\\\"lang_en\\\":\\\"valve 3\\\"}\")"])
        files = {entry.owner(): entry for entry in self.spool.glob("*.event.json")}
        self.assertEqual({user: entry.name for user, entry in files.items()},
                         {"pump": "logEvent0.event.json", "valve": "alarm.event.json"})
        other = files["valve"]
        for command in (["rm", "-f", other], ["mv", "-f", other, self.spool / "mine"],
                        ["ln", "-f", files["pump"], other], ["sh", "-c", f"echo >> '{other}'"]):
            with self.subTest(command=command[0]):
                self.assertNotEqual(run(*command, user="pump").returncode, 0)
        self.assertNotEqual(run("touch", self.spool / "guest.event.json", user="guest").returncode, 0)
        self.assertNotEqual(run("cat", other, user="guest").returncode, 0)

        self.doCleanups()
        self.start()
        wait_until(lambda: not list(self.spool.glob("*.event.json")), "the files are taken")
        self.assertEqual(self.senders("PumpControl"), ["pump", "valve"])
        for folder in (self.spool / "claimed", self.spool / "rejected", self.database):
            self.assertNotEqual(run("cat" if folder.is_file() else "ls", folder, user="pump").returncode, 0, folder)

    def test_the_activation_file_starts_what_the_unit_starts(self):
        activation = configparser.ConfigParser()
        activation.read(self.folder / f"usr/share/dbus-1/system-services/{CENTRAL_SERVICE}.service")
        unit = configparser.ConfigParser(strict=False)
        unit.optionxform = str
        unit.read(self.folder / "usr/lib/systemd/system/eventlistd.service")
        service = activation["D-BUS Service"]
        self.assertEqual((service["Name"], service["User"]), (CENTRAL_SERVICE, unit["Service"]["User"]))
        self.assertEqual(unit["Service"]["BusName"], CENTRAL_SERVICE)
        self.assertEqual(service["Exec"], unit["Service"]["ExecStart"])
        self.assertEqual(service["SystemdService"], "eventlistd.service")
        self.assertTrue(Path(shlex.split(service["Exec"])[0]).is_file())

    def test_the_unit_is_sound_and_leaves_little_open(self):
        unit = self.folder / "usr/lib/systemd/system/eventlistd.service"
        # In tenths; what remains is a database that the service's own group may read.
        done = run("systemd-analyze", "security", "--offline=yes", "--threshold=10", "--no-pager", unit)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


def reason_not_to_run():
    if os.geteuid() != 0:
        return "several users are needed, and only root can be another"
    if run(*NAMESPACE, "true").returncode != 0:
        return "no namespaces for processes and mounts can be made here"
    if run("setpriv", "--reuid=65534", "--clear-groups", "--regid=65534", EVENTLISTD, "--version").returncode != 0:
        return f"another user cannot reach {EVENTLISTD}"
    return None


if __name__ == "__main__":
    if INSIDE in os.environ:
        unittest.main(verbosity=2)
    reason = reason_not_to_run()
    if reason:
        print("skipped:", reason)
        sys.exit(77)
    os.execvpe(NAMESPACE[0], [*NAMESPACE, sys.executable, *sys.argv], dict(os.environ, **{INSIDE: "1"}))
