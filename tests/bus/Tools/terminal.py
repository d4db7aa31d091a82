"""The tool on a terminal: what a human sees."""

import fcntl
import os
import pty
import struct
import termios


class Terminal:
    """A terminal of so many columns, whose other end a program writes to."""

    def __init__(self, columns=100):
        self.master, self.slave = pty.openpty()
        fcntl.ioctl(self.slave, termios.TIOCSWINSZ, struct.pack("HHHH", 25, columns, 0, 0))
        os.set_blocking(self.master, False)
        self.data = b""

    def read(self):
        """Everything that was written so far."""
        while True:
            try:
                data = os.read(self.master, 65536)
            except OSError:  # nothing there, or nobody writes any more
                break
            if not data:
                break
            self.data += data
        return self.data.decode("utf-8").replace("\r\n", "\n")

    def close(self):
        os.close(self.master)
        os.close(self.slave)


def on_terminal(device, *words, columns=100, **environment):
    """The exit code of the tool, and what it writes on a terminal of so many columns."""
    terminal = Terminal(columns)
    environment.setdefault("TERM", "xterm")
    done = device.eventlist(*words, stdout=terminal.slave, environment=environment)
    text = terminal.read()
    terminal.close()
    return done.returncode, text
