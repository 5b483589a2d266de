#!/usr/bin/env python3
"""typing.py ANSWER … -- COMMAND …: runs the command on a terminal of its own, types an answer at each prompt, and prints
what the terminal shows. The exit status is the command's."""
import os, pty, sys

end = sys.argv.index("--")
answers, command = sys.argv[1:end], sys.argv[end + 1:]
child, terminal = pty.fork()
if child == 0:
    os.execvp(command[0], command)
while True:
    try:
        shown = os.read(terminal, 4096)
    except OSError:  # the command has ended
        break
    if not shown:
        break
    sys.stdout.buffer.write(shown.replace(b"\r", b""))
    if shown.endswith(b": ") and answers:
        os.write(terminal, answers.pop(0).encode() + b"\n")
sys.stdout.flush()
sys.exit(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]))
