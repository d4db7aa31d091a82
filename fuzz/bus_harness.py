"""What a run of random messages needs, whatever program gets them: a bus, the program under test, and the way to find
and repeat the message that did it."""

import argparse
import contextlib
import os
import subprocess
import sys
import tempfile
import time

import dbus
import dbus.bus
import dbus.lowlevel

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "support"))
import private_bus  # pylint: disable=wrong-import-position

START_S = 60
MEMORY = "/dev/shm"
# A fast sender has much in hand, and does not wait for answers.
BUS_LIMITS = {"max_incoming_bytes": 1000000000, "max_outgoing_bytes": 1000000000, "max_replies_per_connection": 50000}
# Growth of the resident memory from the second to the last quarter of the samples, the least of each: a single large
# event leaves a peak behind for a while, a leak lifts the ground.
GROWTH = 1.10
GROWTH_MIB = 16



class Failure(Exception):
    """What the program did wrong."""


class Crash(Failure):
    """The program's process has ended."""


def listed(lines):
    """Each line once, because a report stands behind thousands of equal warnings."""
    return "\n  ".join(["", *(line[:300] for line in list(dict.fromkeys(lines))[:60])])


def deadline(seconds):
    end = time.monotonic() + seconds
    return lambda: time.monotonic() < end


class Bus:
    def __init__(self, folder):
        self.address = private_bus.address_in(folder)
        self._process = subprocess.Popen(private_bus.daemon_command(folder, **BUS_LIMITS), stdout=subprocess.PIPE,
                                         stderr=subprocess.DEVNULL)
        self._process.stdout.readline()

    def connect(self):
        connection = dbus.bus.BusConnection(self.address)
        connection.set_exit_on_disconnect(False)
        return connection

    def end(self):
        self._process.kill()
        self._process.wait()
        self._process.stdout.close()


class Program:
    """The program under test."""

    def __init__(self, harness, bus, folder):
        self._messages = os.path.join(folder, "program.log")
        self._warnings = harness.warnings
        self._ends_by_signal = harness.ends_by_signal
        self._waited_s = 0.0
        # What the sanitizer itself keeps must not look like growth: freed memory, and each way to an allocation, of
        # which random values have ever new ones.
        sanitizer = "detect_stack_use_after_return=1:quarantine_size_mb=32:malloc_context_size=4"
        environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=bus.address,
                           ASAN_OPTIONS=os.environ.get("ASAN_OPTIONS", "") + ":" + sanitizer,
                           UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1")
        with open(self._messages, "ab") as messages:
            self._process = subprocess.Popen(harness.command(), env=environment, stdin=subprocess.PIPE,
                                             stdout=subprocess.DEVNULL, stderr=messages)
        connection = bus.connect()
        is_in_time = deadline(START_S)
        while not connection.name_has_owner(harness.name):
            if not is_in_time() or self._process.poll() is not None:
                raise Failure("the program did not come up")
            time.sleep(0.01)
        connection.close()

    def is_alive(self):
        return self._process.poll() is None

    def how_it_ended(self):
        code = self._process.poll()
        return f"signal {-code}" if code is not None and code < 0 else f"exit code {code}"

    def wait_end(self):
        with contextlib.suppress(subprocess.TimeoutExpired):
            self._process.wait(START_S / 4)

    def kill(self):
        self._process.kill()

    def resident_mib(self):
        with open(f"/proc/{self._process.pid}/status", encoding="ascii") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS")) / 1024

    def waited_s(self):
        """How long it stood ready since the last time, while every processor did something else."""
        with open(f"/proc/{self._process.pid}/schedstat", encoding="ascii") as statistic:
            waited = int(statistic.read().split()[1]) / 1e9
        since, self._waited_s = waited - self._waited_s, waited
        return since

    def foreign_lines(self):
        """Lines of its standard error, since the last time, that are no warnings that a message may cause."""
        with open(self._messages, "r+b") as messages:
            lines = messages.read().splitlines()
            messages.truncate(0)
        return [line.decode(errors="replace") for line in lines if not self._warnings.match(line)]

    def end(self):
        """Ends it in good order; returns its exit code, or None when it had to be killed."""
        self._process.stdin.close()
        if self._ends_by_signal:
            self._process.terminate()
        try:
            return self._process.wait(START_S)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
            return None


class Harness:
    """Sends the messages and judges. Who derives from it tells what the program is, and what it has to make of them."""

    # Its bus name, an object of it, and an interface of that object.
    name = None
    path = None
    interface = None
    # How every line may begin that messages cause on its standard error.
    warnings = None
    # Whether it ends by a signal; otherwise with the end of its input.
    ends_by_signal = False

    def __init__(self, arguments, folder):
        self.arguments = arguments
        self.folder = folder
        self.bus = Bus(folder)
        self.prepare()
        self.program = Program(self, self.bus, folder)
        self.longest_answer_s = 0.0
        self.resident_mib = []
        self.failures = []
        self.done = 0
        self.events = 0

    # For who derives

    def prepare(self):
        """Before the program starts."""

    def command(self):
        return [self.arguments.program]

    def make_message(self, index):
        """A message and, when it has to have one, its effect."""
        raise NotImplementedError

    def before_batch(self, connection):
        """Looks at the effects that there are already; what it returns is given to after_batch()."""
        raise NotImplementedError

    def after_batch(self, connection, before, effects):
        """Raises a failure when the effects are others; returns the number of events."""
        raise NotImplementedError

    # The run

    def send(self, first, count):
        """Sends messages and looks at what the program made of them."""
        connection = self.bus.connect()
        try:
            before = self.before_batch(connection)
            effects = []
            for index in range(first, first + count):
                message, effect = self.make_message(index)
                effects.append(effect)
                connection.send_message(message)
            connection.flush()
            self.wait_for_answer(connection)
            events = self.after_batch(connection, before, [effect for effect in effects if effect])
        finally:
            connection.close()
        lines = self.program.foreign_lines()
        if lines:
            raise Failure("it says" + listed(lines))
        self.events += events

    def wait_for_answer(self, connection):
        # The object's own thread answers this call, after all that came before it.
        call = dbus.lowlevel.MethodCallMessage(self.name, self.path, "org.freedesktop.DBus.Introspectable",
                                               "Introspect")
        self.program.waited_s()
        begin = time.monotonic()
        # A late answer tells more than none, so more time is given than is granted.
        try:
            answer = connection.send_message_with_reply_and_block(call, self.arguments.answer_s + START_S)
        except dbus.DBusException as error:
            self.program.wait_end()
            raise self.reason_of_silence(error) from error
        elapsed = time.monotonic() - begin
        self.longest_answer_s = max(self.longest_answer_s, elapsed)
        # A busy machine is not the program's fault.
        waited_s = self.program.waited_s()
        if elapsed - waited_s > self.arguments.answer_s:
            raise Failure(f"the answer took {elapsed:.1f} s, of which it waited {waited_s:.1f} s for a processor")
        if self.interface not in answer.get_args_list()[0]:
            raise Failure("the program's object is gone")

    def reason_of_silence(self, error):
        if self.program.is_alive():
            return Failure(f"alive, but gives no answer: {error}")
        return Crash(f"crashed, {self.program.how_it_ended()}" + listed(self.program.foreign_lines()))

    def restart(self):
        self.program.kill()
        self.program.end()
        self.program.foreign_lines()
        self.program = Program(self, self.bus, self.folder)

    def find_message(self, failure, first, count):
        """The index of the message that does the same by itself, or None."""
        for index in range(first, first + count):
            try:
                self.send(index, 1)
            except Failure as found:
                if isinstance(found, type(failure)):
                    return index
        return None

    def report(self, failure, first, count):
        print(f"FAILED, seed {self.arguments.seed}, messages {first} to {first + count - 1}: {failure}", flush=True)
        self.restart()
        index = self.find_message(failure, first, count)
        if index is None:
            print("no message does it by itself")
            command = f"--first {first} --count {count}"
        else:
            command = f"--first {index} --count 1"
        self.restart()
        print(f"repeat with: {os.path.basename(sys.argv[0])} {self.arguments.program} --seed {self.arguments.seed} "
              + command, flush=True)
        self.failures.append(failure)

    def run(self):
        is_in_time = deadline(self.arguments.seconds)
        begin = reported = time.monotonic()
        while self.done < self.arguments.count and is_in_time() and len(self.failures) < self.arguments.failures:
            first = self.arguments.first + self.done
            count = min(self.arguments.batch, self.arguments.count - self.done)
            try:
                self.send(first, count)
            except Failure as failure:
                self.report(failure, first, count)
            self.done += count
            self.resident_mib.append(self.program.resident_mib())
            if time.monotonic() - reported > self.arguments.progress_s:
                reported = time.monotonic()
                print(f"seed {self.arguments.seed}: {self.done} messages, {reported - begin:.0f} s, "
                      f"{self.resident_mib[-1]:.0f} MiB", flush=True)
        elapsed = time.monotonic() - begin
        self.check_memory()
        code = self.program.end()
        lines = self.program.foreign_lines()
        if code != 0 or lines:
            self.failures.append(Failure("end"))
            print(f"FAILED at its end, exit code {code}" + listed(lines))
        self.summary(elapsed)

    def check_memory(self):
        quarter = len(self.resident_mib) // 4
        if quarter == 0 or self.failures:
            return
        early = min(self.resident_mib[quarter:2 * quarter])
        late = min(self.resident_mib[-quarter:])
        if late > early * GROWTH + GROWTH_MIB:
            self.failures.append(Failure("memory"))
            print(f"FAILED: the memory grows from {early:.0f} to {late:.0f} MiB")

    def summary(self, elapsed):
        memory = self.resident_mib or [0]
        at = [memory[0], memory[len(memory) // 4], memory[-1]]
        crashes = self.crashes()
        line = (f"seed {self.arguments.seed}: {self.done} messages in {elapsed:.0f} s, {self.events} events, "
                f"{crashes} crashes, {len(self.failures) - crashes} other failures, "
                f"longest answer {self.longest_answer_s:.2f} s, "
                "resident at start/quarter/end " + "/".join(f"{value:.0f}" for value in at) + " MiB")
        print(line, flush=True)
        if self.arguments.summary:
            with open(self.arguments.summary, "w", encoding="utf-8") as file:
                file.write(line + "\n")

    def crashes(self):
        return sum(isinstance(failure, Crash) for failure in self.failures)

    def end(self):
        self.bus.end()


def run(harness_class, description, add_arguments=lambda parser: None):
    """The whole command; returns its exit code."""
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", help="the program under test")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--first", type=int, default=0, help="index of the first message")
    parser.add_argument("--count", type=int, default=5000, help="how many messages")
    parser.add_argument("--batch", type=int, default=1000, help="messages between two looks at the program")
    parser.add_argument("--seconds", type=float, default=3600, help="the longest time; then fewer messages are sent")
    parser.add_argument("--answer-s", type=float, default=5, help="the longest time for an answer")
    parser.add_argument("--progress-s", type=float, default=30, help="time between two lines of progress")
    parser.add_argument("--failures", type=int, default=5, help="give up after so many")
    parser.add_argument("--summary", help="a file that gets the last line too")
    parser.add_argument("--expect-crash", action="store_true", help="succeed when the program crashes, and only then")
    add_arguments(parser)
    arguments = parser.parse_args()
    # What the disk takes is no matter of messages, and an answer is not to wait for it.
    with tempfile.TemporaryDirectory(prefix="bus-fuzz-", dir=MEMORY if os.path.isdir(MEMORY) else None) as folder:
        harness = harness_class(arguments, folder)
        try:
            harness.run()
        finally:
            harness.end()
    return 0 if (harness.crashes() > 0 if arguments.expect_crash else not harness.failures) else 1
