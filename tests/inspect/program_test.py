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
        self.assertEqual("".join(lines), self.run_program(captures).stdout)
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
