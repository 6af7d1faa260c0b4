#!/usr/bin/env python3
"""on_terminal.py PROGRAM [ARGUMENT...]: runs a program whose output is a terminal.

Prints what the terminal was sent, with what moves the cursor made readable: <clear> for a line that
is cleared from its start, <return> and <escape> for the same characters elsewhere. Ends with the
program's exit status.
"""

import os
import pty
import sys


def output_of(terminal):
    """Everything that is written to the terminal until its last writer is gone."""
    sent = b""
    while True:
        try:
            piece = os.read(terminal, 65536)
        except OSError:  # how Linux says that nobody is left to write
            return sent
        if not piece:
            return sent
        sent += piece


def readable(sent):
    text = sent.decode("utf-8", "replace")
    # The terminal itself puts the return before each new line.
    for code, name in (("\r\n", "\n"), ("\r\x1b[K", "<clear>"), ("\r", "<return>"), ("\x1b", "<escape>")):
        text = text.replace(code, name)
    return text


def main(command):
    child, terminal = pty.fork()
    if child == 0:
        os.execv(command[0], command)
    sent = output_of(terminal)
    _, status = os.waitpid(child, 0)
    sys.stdout.write(readable(sent))
    return os.waitstatus_to_exitcode(status)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
