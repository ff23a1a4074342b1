#!/usr/bin/env python3
"""The program vyn-inspect from outside: what it takes, prints, writes and returns. Usage: program_test.py PROGRAM"""
import json
import os
import pathlib
import pty
import re
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PROGRAM = pathlib.Path(sys.argv.pop()).resolve() if len(sys.argv) > 1 else None

CANONICAL, TOLERATED, REFUSED, WRONG_USE = 0, 1, 2, 64


def frame(record, wire, arena=b""):
    return b"VYN1" + struct.pack("<III", len(record), len(wire), len(arena)) + record.encode() + wire + arena


def pointer(offset, size):
    return struct.pack("<II", offset, size)


GOOD = frame("FileInfoParams", pointer(0, 3), b"abc")
ODD = frame("FileInfoParams", pointer(0, 3), b"abcd")
BAD = frame("FileInfoParams", pointer(1, 3), b"abc")
LOGIN = frame("Credentials", pointer(0, 3) + pointer(3, 6), b"bobsecret")


class ProgramTest(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = pathlib.Path(place.name)

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content)
        return path

    def run_program(self, *arguments, status=CANONICAL):
        result = subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=120,
                                check=False)
        self.assertEqual(result.returncode, status, result.stdout + result.stderr)
        return result

    def refuse(self, *arguments):
        result = self.run_program(*arguments, status=WRONG_USE)
        self.assertEqual(result.stdout, "")
        return result.stderr

    # --- exit status ---

    def test_status_is_that_of_the_message(self):
        for content, status in ((GOOD, CANONICAL), (ODD, TOLERATED), (BAD, REFUSED), (b"", REFUSED),
                                (b"no frame at all", REFUSED)):
            self.run_program(self.file("message", content), status=status)

    def test_status_is_that_of_the_worst_message(self):
        files = [self.file(name, content) for name, content in (("a", GOOD), ("b", BAD), ("c", ODD))]
        output = self.run_program(*files, status=REFUSED).stdout
        for file in files:
            self.assertIn(f"{file}:\n", output)

    def test_wrong_use(self):
        good = self.file("good", GOOD)
        other = self.file("other", LOGIN)
        missing = self.folder / "missing"
        self.assertIn("no file is given", self.refuse())
        self.assertEqual(self.refuse(missing), f"vyn-inspect: {missing}: No such file or directory\n")
        self.assertIn("--nonsense", self.refuse("--nonsense", good))
        self.assertIn("takes two files", self.refuse("--diff", good))
        self.assertIn("FileInfoParams and Credentials", self.refuse("--diff", good, other))
        self.assertIn("there is no record Nobody; there are AppInfo, ", self.refuse("--record", "Nobody", good, good))
        self.assertIn("takes two files", self.refuse("--record", "Credentials", good))
        self.assertIn("one message", self.refuse("--map", self.folder / "x.svg", good, other))
        self.assertIn("one directory", self.refuse("--follow", good))
        self.assertIn("a directory", self.refuse("--json", self.folder))
        self.assertIn("--output", self.refuse("--encode", good))
        self.assertIn("not JSON", self.refuse("--encode", good, "-o", self.folder / "x"))
        self.assertIn("--encode", self.refuse("-o", self.folder / "x", good))
        self.assertIn("No such file", self.refuse("--html", missing / "page.html", good))

    def test_numbers_that_are_none(self):
        good = self.file("good", GOOD)
        for option, number, words in (("--top", -5, "-5 is no number from 0 to 16777216"),
                                      ("--start", -1, "-1 is no number from 0 to 7"),
                                      ("--start", 8, "8 is no number from 0 to 7"),
                                      ("--elements", 0, "0 is no number from 1 to 4000000"),
                                      ("--elements", "1x", "1x is no number from 1 to 4000000")):
            self.assertEqual(self.refuse(option, number, good),
                             f"vyn-inspect: {option}: {words}; --help says what can be given\n")

    def test_options_that_would_do_nothing(self):
        login = self.file("login.json", self.run_program("--json", "--secrets", self.file("login", LOGIN)).stdout.encode())
        again = self.folder / "again"
        for option in (("--start", 1), ("--top", 1), ("--elements", 1), ("--secrets",), ("--follow",), ("--diff",),
                       ("--json",), ("--record", "Credentials"), ("--map", again), ("--html", again)):
            self.assertEqual(self.refuse("--encode", login, "-o", again, *option),
                             "vyn-inspect: --encode goes with --output alone\n")
        good = self.file("good", GOOD)
        self.assertIn("two captures alone", self.refuse("--diff", "--follow", good, good))
        for option in (("--start", 1), ("--top", 1), ("--elements", 1), ("--secrets",), ("--json",)):
            self.assertIn("only listed", self.refuse(self.folder, *option))
        self.assertFalse(again.exists())

    def test_files_that_are_too_large(self):
        large = self.file("large", bytes((16 << 20) + 1))
        small = self.file("small", b"")
        for files in ((large, small), (small, large)):
            self.assertEqual(self.refuse("--record", "Credentials", *files),
                             f"vyn-inspect: {large}: more than 16777216 bytes\n")
        with open(large, "r+b") as file:
            file.truncate((192 << 20) + 1)
        self.assertEqual(self.refuse("--encode", large, "-o", self.folder / "x"),
                         f"vyn-inspect: {large}: more than 201326592 bytes\n")

    def test_a_file_that_cannot_be_read_among_others(self):
        good = self.file("good", GOOD)
        result = self.run_program(good, self.folder / "missing", good, status=WRONG_USE)
        self.assertEqual(result.stdout.count('"abc"'), 2)
        self.assertEqual(result.stderr, f"vyn-inspect: {self.folder}/missing: No such file or directory\n")

    def test_names_do_nothing_to_a_terminal(self):
        odd = self.file("n\x1b[31mx.vyn", GOOD)
        evil = self.file("evil", frame("Foo\x1b[31m", b""))
        escaped = r"n\x1b[31mx"
        self.assertIn(escaped + ".vyn:", self.run_program(odd, odd).stdout)
        self.assertIn(r"these are Foo\x1b[31m and FileInfoParams", self.refuse("--diff", evil, odd))
        self.assertIn(escaped, self.refuse(self.folder / "n\x1b[31mx"))
        self.assertIn(escaped, self.refuse("--encode", odd, "-o", self.folder / "x"))
        self.assertIn(escaped, self.refuse("--n\x1b[31mx"))
        self.assertIn(escaped, self.refuse("--record", "n\x1b[31mx", odd, odd))
        self.assertIn(escaped, self.run_program(self.folder).stdout)
        folder = self.folder / "d\x1b[31m"
        folder.mkdir()
        self.assertIn(r"d\x1b[31m", self.refuse("--json", folder))
        for arguments in ((odd, odd), ("--diff", odd, odd), (evil,), ("--json", evil), (self.folder,)):
            self.assertNotIn("\x1b", self.run_program(*arguments, status=REFUSED if evil in arguments else 0).stdout)

    def test_output_that_cannot_be_written(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            result = subprocess.run([PROGRAM, self.file("good", GOOD)], stdout=full, stderr=subprocess.PIPE, text=True,
                                    check=False)
        self.assertEqual((result.returncode, result.stderr), (WRONG_USE, "vyn-inspect: the output cannot be written\n"))

    # --- inputs ---

    def test_raw_wire_structure_and_arena(self):
        wire = self.file("wire", pointer(1, 3))
        arena = self.file("arena", b"xabc")
        output = self.run_program("--record", "FileInfoParams", wire, arena, status=TOLERATED).stdout
        self.assertIn('"abc"', output)
        self.assertIn("1 byte of the arena at offset 0 that no field owns", output)

    def test_top_and_start_of_the_arena(self):
        wire = self.file("wire", pointer(3, 16))
        arena = self.file("arena", bytes(3) + pointer(19, 0) + pointer(19, 0) + b"rest")
        arguments = ("--record", "ProductUpdCfgArray", wire, arena)
        self.run_program(*arguments, status=TOLERATED)
        self.run_program(*arguments, "--start", 5, "--top", 19, status=CANONICAL)
        self.assertIn("--start", self.refuse(*arguments, "--start", 8))

    def test_elements_that_are_shown(self):
        elements = b"".join(pointer(0, 0) * 2 for _ in range(30))
        many = self.file("many", frame("VynParams", pointer(0, len(elements)), elements))
        self.assertIn("... 25 more", self.run_program("--elements", 5, many, status=TOLERATED).stdout)
        self.assertIn("[29]", self.run_program(many, status=TOLERATED).stdout)

    # --- outputs ---

    def test_json_comes_back_as_the_same_file(self):
        login = self.file("login", LOGIN)
        text = self.run_program("--json", "--secrets", login).stdout
        self.assertEqual(json.loads(text)["value"], {"userName": "bob", "password": "secret"})
        again = self.folder / "again"
        self.run_program("--encode", self.file("login.json", text.encode()), "--output", again)
        self.assertEqual(again.read_bytes(), LOGIN)

    def test_json_without_its_secrets_does_not(self):
        text = self.run_program("--json", self.file("login", LOGIN)).stdout
        self.assertNotIn("secret\"", text)
        error = self.refuse("--encode", self.file("login.json", text.encode()), "-o", self.folder / "again")
        self.assertIn("login.json: Credentials.password: masked; print the message with --secrets", error)
        self.assertFalse((self.folder / "again").exists())

    def test_picture_and_page(self):
        bad = self.file("bad", BAD)
        picture, page = self.folder / "map.svg", self.folder / "page.html"
        self.assertEqual(self.run_program("--map", picture, "--html", page, bad, status=REFUSED).stdout, "")
        self.assertTrue(picture.read_text().startswith("<svg "))
        self.assertTrue(page.read_text().startswith("<!doctype html>"))
        # Nothing of either is fetched.
        for text in (picture.read_text(), page.read_text()):
            self.assertEqual(re.findall(r'(?:src|href)=|@import|https?://(?!www\.w3\.org/2000/svg)', text), [])

    def test_difference(self):
        a = self.file("a", GOOD)
        b = self.file("b", frame("FileInfoParams", pointer(0, 3), b"abd"))
        output = self.run_program("--diff", a, b).stdout
        self.assertRegex(output, r'(?m)^\* fileName +"abc".*"abd"')
        self.assertIn("1 field with another value", output)

    def test_colours_on_a_terminal_only(self):
        bad = self.file("bad", BAD)
        self.assertNotIn("\x1b", self.run_program(bad, status=REFUSED).stdout)
        self.assertIn("\x1b[1;31m", self.on_terminal(bad))
        self.assertNotIn("\x1b", self.on_terminal(bad, NO_COLOR="1"))

    def on_terminal(self, *arguments, **environment):
        main, side = pty.openpty()
        with subprocess.Popen([PROGRAM, *map(str, arguments)], stdout=side, env=os.environ | environment) as program:
            os.close(side)
            output = b""
            while True:
                try:
                    block = os.read(main, 65536)
                except OSError:  # the other side is closed
                    break
                if not block:
                    break
                output += block
            program.wait(timeout=60)
        os.close(main)
        return output.decode()

    def test_progress_on_a_terminal(self):
        for i in range(300):
            self.file(f"{i:06}-sent-FileInfoParams.vyn", GOOD)
        main, side = pty.openpty()
        with subprocess.Popen([PROGRAM, self.folder], stdout=subprocess.DEVNULL, stderr=side) as program:
            os.close(side)
            self.assertEqual(program.wait(timeout=60), CANONICAL)
        self.assertRegex(os.read(main, 65536).decode(), r"\r\d+ of 300 messages\x1b\[K")
        os.close(main)

    # --- a directory ---

    def test_directory(self):
        for name, content in (("000001-sent-FileInfoParams.vyn", GOOD), ("000002-received-FileInfoParams.vyn", ODD),
                              ("000003-sent-FileInfoParams.vyn", BAD), ("notes.txt", b"")):
            self.file(name, content)
        self.assertEqual(self.run_program(self.folder, status=REFUSED).stdout.splitlines(), [
            "000001  sent      FileInfoParams                wire   8  arena       3  canonical",
            "000002  received  FileInfoParams                wire   8  arena       4  tolerated (1 fault)",
            "000003  sent      FileInfoParams                wire   8  arena       3  refused (2 faults)"])

    def test_following(self):
        self.file("000001-sent-FileInfoParams.vyn", GOOD)
        with subprocess.Popen([PROGRAM, "--follow", self.folder], stdout=subprocess.PIPE, text=True) as program:
            self.assertIn("000001", program.stdout.readline())
            slow = self.file("000002-sent-FileInfoParams.vyn", ODD[:20])
            time.sleep(0.3)
            slow.write_bytes(ODD)  # whole only now
            self.assertIn("tolerated", program.stdout.readline())
            program.send_signal(signal.SIGINT)
            self.assertEqual(program.wait(timeout=60), TOLERATED)
            self.assertEqual(program.stdout.read(), "")

    def odd_entries(self):
        self.file("1-sent-x.vyn", GOOD)
        (self.folder / "2-sent-x.vyn").mkdir()
        (self.folder / "3-sent-x.vyn").symlink_to(self.folder / "nowhere")
        os.mkfifo(self.folder / "4-sent-x.vyn")
        self.file("5-sent-x.vyn", GOOD)
        (self.folder / "6-sent-x.vyn").symlink_to(self.folder / "5-sent-x.vyn")
        good = "FileInfoParams                wire   8  arena       3  canonical"
        return ["1  sent      " + good, "2  sent      not read: no regular file",
                "3  sent      not read: No such file or directory", "4  sent      not read: no regular file",
                "5  sent      " + good, "6  sent      " + good]

    def test_entries_of_a_directory_that_are_no_captures(self):
        lines = self.odd_entries()
        self.assertEqual(self.run_program(self.folder, status=WRONG_USE).stdout.splitlines(), lines)
        (self.folder / "3-sent-x.vyn").unlink()
        self.run_program(self.folder, status=CANONICAL)

    def test_following_where_entries_are_no_captures(self):
        lines = self.odd_entries()
        with subprocess.Popen([PROGRAM, "--follow", self.folder], stdout=subprocess.PIPE, text=True) as program:
            self.assertEqual([program.stdout.readline().rstrip("\n") for _ in lines], lines)
            program.send_signal(signal.SIGINT)
            self.assertEqual(program.wait(timeout=60), WRONG_USE)

    # Only what may still be written is waited for, and what comes behind it is not.
    def test_following_does_not_wait_for_damaged_files(self):
        count = 20
        for i in range(count):
            old = self.file(f"{i:06}-sent-x.vyn", GOOD[:-1])
            os.utime(old, (0, 0))
        self.file("000050-sent-x.vyn", GOOD[:-1])
        self.file("000060-sent-x.vyn", GOOD)
        begin = time.monotonic()
        with subprocess.Popen([PROGRAM, "--follow", self.folder], stdout=subprocess.PIPE, text=True) as program:
            lines = [program.stdout.readline() for _ in range(count + 2)]
            self.assertLess(time.monotonic() - begin, count / 2)
            program.send_signal(signal.SIGINT)
            program.wait(timeout=60)
        self.assertEqual([line.split()[0] for line in lines[count:]], ["000060", "000050"])

    # --- the exchange ---

    @unittest.skipUnless("EXCHANGE" in os.environ, "the exchange is not built")
    def test_what_the_exchange_captures_is_canonical_and_comes_back(self):
        captures = self.folder / "captures"
        captures.mkdir()
        with subprocess.Popen([PROGRAM, "--follow", captures], stdout=subprocess.PIPE, text=True) as following:
            subprocess.run([os.environ["EXCHANGE"], "--capture", captures, "--into", self.folder / "received"],
                           stdout=subprocess.DEVNULL, timeout=120, check=True)
            files = sorted(captures.iterdir())
            lines = [following.stdout.readline() for _ in files]
            following.send_signal(signal.SIGTERM)
            self.assertEqual(following.wait(timeout=60), CANONICAL)
        self.assertGreater(len(files), 20)
        # Followed, a file that is seen before it is whole comes after later ones.
        self.assertEqual(sorted(lines), self.run_program(captures).stdout.splitlines(keepends=True))
        again = self.folder / "again"
        seen = set()
        for file in files:
            record = file.stem.split("-")[2]
            if record in seen:
                continue
            seen.add(record)
            text = self.run_program("--json", "--secrets", file).stdout
            self.run_program("--encode", self.file("message.json", text.encode()), "-o", again)
            self.assertEqual(again.read_bytes(), file.read_bytes(), file)

    # --- documents ---

    def test_help_manual_and_completion_know_the_same_options(self):
        options = set(re.findall(r"--[a-z]+", self.run_program("--help").stdout.split("Exit status")[0]))
        self.assertIn("--secrets", options)
        tool = ROOT / "tools" / "inspect"
        manual = (tool / "vyn-inspect.1").read_text().replace("\\-", "-")
        completion = (tool / "completions" / "vyn-inspect").read_text()
        self.assertEqual(set(re.findall(r"(?m)^\.B.*?(--[a-z]+)", manual.split(".SH OPTIONS")[1].split(".SH EXIT")[0])),
                         options)
        self.assertEqual(set(re.findall(r"--[a-z]+", completion.split("options='")[1].split("'")[0])), options)

    def test_completion(self):
        def complete(*words):
            script = (f"source {ROOT}/tools/inspect/completions/vyn-inspect; compopt() {{ :; }}; "
                      f"COMP_WORDS=({PROGRAM} {' '.join(words)}); COMP_CWORD={len(words)}; _vyn_inspect; "
                      "printf '%s\\n' \"${COMPREPLY[@]}\"")
            return subprocess.run(["bash", "-c", script], capture_output=True, text=True, check=True).stdout.split()
        self.assertEqual(complete("--sec"), ["--secrets"])
        self.assertEqual(complete("--record", "VynSubscriptions"), ["VynSubscriptions", "VynSubscriptionsWithHash"])

    def test_version(self):
        self.assertRegex(self.run_program("--version").stdout, r"^\d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main()
