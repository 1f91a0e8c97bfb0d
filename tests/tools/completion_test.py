#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Presses the tab key in bash and zsh on a terminal of their own, asks fish, and reads the manual page with two readers.
usage: completion_test.py FOLDER, the one that korvane_manual wrote into"""
import contextlib
import os
import re
import shutil
import subprocess
import sys
import tempfile

import pexpect

# What is typed, and words of which each is offered, or none of which is with a - before the first.
ROWS = [
    ("korvane bl", "blur"),
    ("korvane fil", "filter filters"),
    ("korvane help swe", "sweep"),
    ("korvane blur --meth", "--method"),
    ("korvane blur --method st", "stack"),
    ("korvane blur --method=st", "--method=stack"),
    ("korvane blur --method ", "box gauss iir"),
    ("korvane blur ph", "photo.jpg"),
    ("korvane blur photo.jpg -o ph", "photo.jpg"),
    ("korvane blur photo.jpg --radius ph", "- photo.jpg"),
    ("korvane blur photo.jpg --subsampling 4:1", "4:1:1"),
    ("korvane blur photo.jpg --format w", "webp"),
    ("korvane filter disto", "distorted"),
    ("korvane filter --strip -q 3 disto", "distorted"),
    ("korvane filter mirror ph", "photo.jpg"),
    ("korvane filter mirror photo.jpg --set mStr", "mStrength="),
    ("korvane gif photo.jpg ph", "photo.jpg"),
]


class Terminal:
    """A shell whose line is typed into and cleared again."""

    def __init__(self, command, setup):
        environment = dict(os.environ, TERM="vt100", PS1="> ")
        self.shell = pexpect.spawn(command, env=environment, dimensions=(60, 120), encoding="utf-8", timeout=5)
        self.shell.sendline(setup + "; echo rea''dy")
        self.shell.expect_exact("ready")

    def complete(self, typed, words):
        self.shell.send(typed + "\t")
        seen = self.read(0.5 if words[0] == "-" else 5, lambda seen: set(words) <= set(offered(seen, typed)))
        self.shell.sendcontrol("u")
        self.read(0.1, lambda seen: False)
        return offered(seen, typed)

    def read(self, seconds, is_enough):
        """Until nothing comes for so long."""
        seen = ""
        with contextlib.suppress(pexpect.TIMEOUT):
            while not is_enough(seen):
                seen += self.shell.read_nonblocking(65536, seconds)
        return seen


def plain(text):
    text = re.sub(r"\x1b\[[0-9;?]*[A-Za-z]|\x1b[=>()][A-Z0-9]?|[\x00\x07]", "", text)
    while "\x08" in text:
        text = re.sub(r"[^\x08]?\x08", "", text, count=1)
    return text


def offered(seen, typed):
    """The completed word and those of the list below it."""
    seen = plain(seen)
    at = seen.find(typed)
    words = [] if at < 0 else seen[at + len(typed) - len(typed.split(" ")[-1]):].split()
    # zsh shows an equals sign behind an option's name.
    return words + [word[:-1] for word in words if word.endswith("=")]


def fish(script, typed):
    output = subprocess.run(["fish", "--no-config", "-c", f"source {script}; complete -C '{typed}'"], check=True,
                            capture_output=True, text=True).stdout
    return [line.split("\t")[0] for line in output.splitlines()]


def failures(shell, complete):
    for typed, words in ROWS:
        words = words.split()
        found = complete(typed, words)
        wrong = set(words[1:]) & set(found) if words[0] == "-" else set(words) - set(found)
        if wrong:
            yield f"{shell}: '{typed}' gives {found[:12]}"


def check_page(page):
    for command in (["mandoc", "-Tlint", "-Wwarning", page], ["man", "--warnings", "-l", page]):
        run = subprocess.run(command, capture_output=True, text=True, env=dict(os.environ, MANPAGER="cat"))
        complaints = run.stderr if command[0] == "man" else run.stdout + run.stderr
        if run.returncode != 0 or complaints:
            yield f"{' '.join(command)}: {complaints}"


def main():
    manual = os.path.abspath(sys.argv[1])
    folder = tempfile.mkdtemp()
    try:
        os.chdir(folder)
        open("photo.jpg", "w").close()
        bash = Terminal("bash --norc --noprofile -i",
                        "bind 'set show-all-if-ambiguous on'; bind 'set page-completions off'; "
                        f"bind 'set enable-bracketed-paste off'; source {manual}/korvane.bash")
        zsh = Terminal("zsh -f -i", f"fpath=({manual} $fpath); autoload -U compinit; compinit -u -D; PS1='> '; "
                       "unsetopt LIST_AMBIGUOUS")
        problems = [*failures("bash", bash.complete), *failures("zsh", zsh.complete),
                    *failures("fish", lambda typed, words: fish(f"{manual}/korvane.fish", typed)),
                    *check_page(f"{manual}/korvane.1")]
    finally:
        shutil.rmtree(folder)
    print("\n".join(problems))
    sys.exit(1 if problems else 0)


main()
