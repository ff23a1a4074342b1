"""What the exchange looks like on terminals of several widths, on a dumb one, and where there is none."""

import fcntl
import os
import pty
import re
import struct
import subprocess
import termios
import unittest

from exchange import Case, EVERY_RECORD, MIB

ERASE = "\r\x1b[K"


class Terminal(Case):
    def show(self, *arguments, columns=80, term="xterm", status=0, **environment):
        """All that both sides write to a terminal."""
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        known = {k: v for k, v in self.environment.items() if k != "COLUMNS"}
        process = subprocess.Popen(self.defaults(arguments), stdout=slave, stderr=slave, cwd=self.directory,
                                   env={**known, "TERM": term, **environment})
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        os.close(slave)
        shown = self.shown_on(master)
        self.assertEqual(process.wait(timeout=60), status)
        return shown.decode()

    def assert_fits(self, shown, columns):
        """Every line, and every state of a line that is printed over, is at most so wide, and one is exactly."""
        lines = [part for line in shown.replace("\r\n", "\n").split("\n") for part in line.split(ERASE)]
        self.assertNotIn("\x1b", "".join(lines))
        self.assertNotIn("\r", "".join(lines))
        self.assertEqual([line for line in lines if line.endswith(" ") and not line.endswith("| ")], [])
        self.assertEqual(max(len(line) for line in lines), columns)
        return [line for line in lines if line]

    def setUp(self):
        super().setUp()
        self.write("root/var/log/syslog", "".join(f"Nov 21 line {i} " + "long " * 40 + f"end {i}\n" for i in range(12)))

    def test_every_line_fits_and_long_values_lose_their_middle(self):
        for columns in 80, 120:
            with self.subTest(columns):
                lines = self.assert_fits(self.show(columns=columns), columns)
                event = next(line for line in lines if "event 10" in line)
                self.assertRegex(event, r"^server    \| event 10, severity 0: Nov 2.*\.\.\..* end 11$")

    def test_the_table_lays_itself_out(self):
        path = self.write("file", b"abc")
        for columns, shortened in (80, False), (120, False), (60, True):
            with self.subTest(columns):
                lines = self.assert_fits(self.show("--file", path, columns=columns), columns)
                start = next(i for i, line in enumerate(lines) if line.startswith("record "))
                table = lines[start:]
                self.assertEqual(len(table), 2 + len(EVERY_RECORD))
                self.assertEqual(len({len(line) for line in table if line.split()[-1] != "decode"}), 1)
                names = [line.split()[0] for line in table[2:]]
                self.assertEqual(any("..." in name for name in names), shortened)
                for name, record in zip(names, EVERY_RECORD):
                    start, _, end = name.partition("...")
                    self.assertTrue(record.startswith(start) and record.endswith(end), name)

    def test_the_width_is_that_of_columns_then_of_the_terminal_then_80(self):
        arguments = "--record", "events"
        self.assert_fits(self.show(*arguments, columns=120, COLUMNS="70"), 70)
        self.assert_fits(self.show(*arguments, columns=100), 100)
        self.assert_fits(self.show(*arguments, columns=100, COLUMNS="wide"), 100)
        self.assert_fits(self.show(*arguments, columns=0), 80)

    def test_a_wide_character_counts_as_two(self):
        log = self.write("log", "\u65e5" * 100 + "\n")
        event, = [line for line in self.show("--record", "events", "--log", log).split(ERASE) if "event 1, " in line]
        text = event.rstrip()
        self.assertLessEqual(len(text) + text.count("\u65e5"), 80)
        self.assertGreaterEqual(len(text) + text.count("\u65e5"), 78)

    def test_a_dumb_terminal_gets_plain_lines(self):
        for term in "dumb", "":
            shown = self.show(term=term)
            self.assertNotIn("\x1b", shown)
            self.assertNotIn("\r", shown.replace("\r\n", "\n"))
            self.assert_fits(shown, 80)

    def test_nothing_is_cut_in_a_pipe(self):
        out = self.run_well(COLUMNS="40")
        self.assertNotIn("\x1b", out)
        self.assertNotIn("...", out)
        self.assertIn("event 10, severity 0: Nov 21 line 11 " + "long " * 40 + "end 11", self.lines(out))
        for record in EVERY_RECORD:
            self.assertTrue(any(line.startswith(record + " ") for line in out.splitlines()), record)

    def test_an_error_is_broken_into_lines_and_not_cut(self):
        path = "/" + "/".join(["deep"] * 40)
        shown = self.show("--record", "events", "--log", path, status=1)
        error = shown[shown.index("exchange: connector"):].replace("\r\n", "\n").rstrip()
        self.assertEqual(max(len(line) for line in error.split("\n")), 80)
        self.assertEqual(re.sub(r"\n  ", "", error).replace(" ", ""),
                         f"exchange: connector: {path}: No such file or directory".replace(" ", ""))

    def test_the_help_fits_and_is_not_cut(self):
        plain = self.run_well("--help")
        self.assertGreater(max(len(line) for line in plain.splitlines()), 80)
        for columns in 60, 80, 120:
            shown = self.show("--help", columns=columns)
            self.assertLessEqual(max(len(line) for line in shown.split("\r\n")), columns)
            self.assertEqual(shown.split(), plain.split())
        self.assertRegex(self.show("--help"), r"\n  --capture DIR  +Write [^\n]+\n {30}[a-z][^\n]+new or empty\r\n")

    def test_the_progress_line_never_wraps(self):
        path = self.write("a-file-with-a-name-that-is-much-too-long-for-half-a-terminal.img", b"")
        os.truncate(path, 256 * MIB)
        for columns in 40, 80, 120:
            shown = self.show("--record", "file", "--file", path, columns=columns)
            self.assertIn(" left", shown)
            for part in re.split(r"\r\n|\r\x1b\[K", shown):
                self.assertLessEqual(len(part), columns)


if __name__ == "__main__":
    unittest.main()
