"""The transfer of the file."""

import fcntl
import hashlib
import os
import pty
import resource
import signal
import struct
import subprocess
import threading
import unittest

from exchange import MIB, Case, file_chunk, file_chunk_params, file_info, frame


class FileTransfer(Case):
    def transfer(self, path, *arguments, **more):
        return self.run_exchange("--record", "file", "--file", path, *arguments, **more)

    def assert_received(self, path, content):
        with open(self.received(os.path.basename(path)), "rb") as file:
            self.assertEqual(hashlib.sha256(file.read()).digest(), hashlib.sha256(content).digest())
        self.assertEqual(self.left_over(), [os.path.basename(path)])

    def test_files_of_every_size_arrive_whole(self):
        for size in 0, 1, 65535, 65536, 65537, 3 * 65536:
            content = os.urandom(size)
            path = self.write(f"file{size}", content)
            result = self.transfer(path, "--into", self.path(f"into{size}"))
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            with open(self.path(f"into{size}/file{size}"), "rb") as file:
                self.assertEqual(file.read(), content)
            self.assertIn(f"SHA-256 {hashlib.sha256(content).hexdigest()} agrees", self.lines(result.stdout))

    def test_a_killed_peer_leaves_no_file_and_the_transfer_resumes(self):
        content = os.urandom(MIB) * 256
        path = self.write("large", content)
        server = self.start("serve", self.path("socket"), "--record", "file", "--file", path)
        self.wait_until_listening(self.path("socket"))
        connector = self.start("connect", self.path("socket"), "--record", "file", "--file", path)
        part = self.received("large.part")
        self.wait_for(lambda: os.path.exists(part) and os.stat(part).st_size > 8 * MIB, "nothing arrives")
        connector.kill()
        server = self.finish(server)
        self.assertEqual((server.returncode, server.stderr),
                         (2, "exchange: server: the peer has closed the connection\n"))
        self.assertEqual(self.left_over(), ["large.part"])
        have = os.stat(part).st_size
        self.assertLess(have, len(content))
        self.assertIn(f"kept {have} bytes in {part}; --resume goes on from there", self.lines(server.stdout))

        # In constant memory: neither side may take as much as the file is large.
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (128 * MIB, 128 * MIB))
        limited = None if "SANITIZED" in os.environ else limit
        result = self.transfer(path, "--resume", preexec=limited)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn(f"goes on after {have} bytes", self.lines(result.stdout))
        self.assert_received(path, content)

    def test_a_killed_server_leaves_no_file_under_the_final_name(self):
        path = self.large_file()
        server = self.start("serve", self.path("socket"), "--record", "file", "--file", path)
        self.wait_until_listening(self.path("socket"))
        connector = self.start("connect", self.path("socket"), "--record", "file", "--file", path)
        part = self.received("large.part")
        self.wait_for(lambda: os.path.exists(part) and os.stat(part).st_size > MIB, "nothing arrives")
        server.send_signal(signal.SIGKILL)
        self.assert_refused(self.finish(connector), "exchange: connector: the peer has closed the connection", 2)
        self.assertEqual(self.left_over(), ["large.part"])

    def test_a_part_file_that_is_not_of_this_file_stays_as_it_is(self):
        path = self.write("file", b"right" * 40000)
        for content in b"wrong" * 20000, b"right" * 40001:
            part = self.write("received/file.part", content)
            for options in [], ["--resume"]:
                self.assert_refused(self.transfer(path, *options),
                                    f"exchange: server: {part}: not a part of {path}; it stays as it is: remove it, or "
                                    "choose another --into")
                with open(part, "rb") as file:
                    self.assertEqual(file.read(), content)

    def test_a_part_file_with_a_second_name_stays_as_it_is(self):
        path = self.write("file", b"right" * 40000)
        other = self.write("precious", b"")
        os.makedirs(self.path("received"))
        os.link(other, self.received("file.part"))
        self.assert_refused(self.transfer(path), f"exchange: server: {self.received('file.part')}: has a second name, "
                                                 "whose file would change as well")
        self.assertEqual(os.stat(other).st_size, 0)

    def test_a_part_file_that_is_a_link_or_no_file(self):
        path = self.write("file", b"abc")
        other = self.write("precious", b"ab")
        os.makedirs(self.path("received"))
        part = self.received("file.part")
        os.symlink(other, part)
        self.assert_refused(self.transfer(path), f"exchange: server: {part}: Too many levels of symbolic links")
        os.unlink(part)
        os.mkfifo(part)
        self.assert_refused(self.transfer(path), f"exchange: server: {part}: not a regular file")

    def test_a_file_that_is_completed_while_another_server_opens_it(self):
        """A lease makes the server's open() wait until the file has been completed under its feet."""
        path = self.write("file", b"right" * 10)
        part = self.write("received/file.part", b"right" * 10)
        opening = threading.Event()
        old = signal.signal(signal.SIGIO, lambda *_: opening.set())
        self.addCleanup(signal.signal, signal.SIGIO, old)
        with open(part, "rb+") as lease:
            fcntl.fcntl(lease, fcntl.F_SETLEASE, fcntl.F_WRLCK)
            server = self.start("--record", "file", "--file", path)
            self.assertTrue(opening.wait(60), "the part file is not opened")
            os.rename(part, self.received("file"))
            completed = os.stat(self.received("file")).st_ino
            os.link(self.received("file"), self.path("completed"))
            fcntl.fcntl(lease, fcntl.F_SETLEASE, fcntl.F_UNLCK)
        self.assertEqual((self.finish(server).returncode, self.left_over()), (0, ["file"]))
        with open(self.path("completed"), "rb") as file:
            self.assertEqual((os.fstat(file.fileno()).st_ino, file.read()), (completed, b"right" * 10))
        self.assertNotEqual(os.stat(self.received("file")).st_ino, completed)

    def test_a_missing_or_unreadable_file(self):
        self.assert_refused(self.transfer(self.path("none")),
                            f"exchange: connector: {self.path('none')}: No such file or directory")
        self.assert_refused(self.transfer(self.directory),
                            f"exchange: connector: {self.directory}: not a regular file")
        os.mkfifo(self.path("pipe"))
        for path in self.path("pipe"), "/dev/zero":
            self.assert_refused(self.transfer(path), f"exchange: connector: {path}: not a regular file")
        self.assertEqual(self.left_over(), [])

    def test_a_file_whose_size_is_not_what_it_holds(self):
        for path, fault in (("/proc/cpuinfo", "more than its size says, as files under /proc do"),
                            ("/sys/kernel/mm/transparent_hugepage/enabled",
                             "less than its size says, as files under /sys do")):
            self.assert_refused(self.transfer(path), f"exchange: connector: {path}: holds {fault}")
        self.assertEqual(self.left_over(), [])

    def test_a_digest_is_computed_once_however_often_it_is_asked_for(self):
        path = self.write("file", b"")
        os.truncate(path, 256 * MIB)
        connector, peer = self.connect("--record", "file", "--file", path)
        peer.sendall(frame("FileInfoParams", struct.pack("=II", 0, len(path)), path.encode()))
        self.receive(peer)

        def seconds():
            with open(f"/proc/{connector.pid}/stat") as file:
                return int(file.read().rsplit(")", 1)[1].split()[11]) / os.sysconf("SC_CLK_TCK")

        def ask(offset):
            peer.sendall(file_chunk_params(path, offset, 0))
            return self.receive(peer)[2][len(path):]
        zeros = bytes(MIB)
        self.assertEqual(ask(MIB), hashlib.sha256(zeros).digest())
        digest = ask(256 * MIB)
        once = seconds()
        self.assertEqual(digest, hashlib.sha256(zeros * 256).digest())
        for _ in range(100):
            self.assertEqual(ask(256 * MIB), digest)
        self.assertLess(seconds() - once, max(5 * once, 0.5))
        peer.sendall(file_chunk_params(path, MIB, 0))
        self.assert_refused(self.finish(connector),
                            "exchange: connector: FileChunkParams: the peer asks for a digest that is over")

    def test_only_with_resume_it_goes_on_from_what_was_left(self):
        content = b"right" * 10
        path = self.write("file", content)
        for left in 0, 1, 49, 50:
            for options in [], ["--resume"]:
                self.write("received/file.part", content[:left])
                result = self.transfer(path, *options)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                self.assert_received(path, content)
                goes_on = f"goes on after {left} byte{'' if left == 1 else 's'}" in self.lines(result.stdout)
                self.assertEqual(goes_on, bool(options) and left > 0)

    def test_a_file_of_that_name_stays_as_it_is_until_the_new_one_is_complete(self):
        path = self.write("file", os.urandom(4 * MIB))
        self.write("received/file", b"old")

        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (MIB, MIB))
        self.assertEqual(self.transfer(path, preexec=limit).returncode, 1)
        with open(self.received("file"), "rb") as file:
            self.assertEqual(file.read(), b"old")
        self.assertEqual(self.transfer(path).returncode, 0)
        self.assertEqual(self.left_over(), ["file"])
        self.assertEqual(os.stat(self.received("file")).st_size, 4 * MIB)

    def test_two_transfers_of_one_file_do_not_mix(self):
        path = self.write("file", b"abc")
        part = self.write("received/file.part", b"")
        with open(part) as other:
            fcntl.flock(other, fcntl.LOCK_EX)
            self.assert_refused(self.transfer(path),
                                f"exchange: server: {part}: Resource temporarily unavailable")
        self.assertEqual(self.left_over(), ["file.part"])

    def test_a_full_disk_leaves_nothing(self):
        path = self.write("file", os.urandom(4 * MIB))

        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (MIB, MIB))
        self.assert_refused(self.transfer(path, preexec=limit),
                            f"exchange: server: {self.received('file.part')}: File too large")
        self.assertEqual(self.left_over(), [])

    def test_a_file_that_changes_during_the_transfer(self):
        for change, words in ((65536, "shrank from 200000 to 65536"), (200001, "grew from 200000 to 200001")):
            with self.subTest(words):
                path = self.write("file", os.urandom(200000))
                if os.path.exists(self.path("listener")):
                    os.unlink(self.path("listener"))
                connector, peer = self.connect("--record", "file", "--file", path)
                peer.sendall(frame("FileInfoParams", struct.pack("=II", 0, len(path)), path.encode()))
                self.assertEqual(self.receive(peer)[0], "FileInfo")
                peer.sendall(file_chunk_params(path, 0, 65536))
                self.assertEqual(len(self.receive(peer)[2]), len(path) + 65536)
                os.truncate(path, change)
                # What is gone is missed at once; what was added, at the end, when the digest is asked for.
                peer.sendall(file_chunk_params(path, *((65536, 65536) if change < 200000 else (200000, 0))))
                self.assertEqual(len(self.receive(peer)[2]), len(path), "an answer without data")
                self.assert_refused(self.finish(connector),
                                    f"exchange: connector: {path}: {words} bytes during the transfer")

    def test_the_server_leaves_nothing_of_a_file_that_changed(self):
        info = file_info("f", 200000)
        first = file_chunk("f", 0, 65536, bytes(65536))
        for answers, line in (
                ([file_chunk("f", 65536, 65536, b"")], "f: it has changed during the transfer"),
                ([file_chunk("f", 65536, 65536, bytes(65535))], "FileChunk: not the bytes that were asked for"),
                ([file_chunk("f", 0, 65536, bytes(65536))], "FileChunk: not the bytes that were asked for"),
                ([file_chunk("g", 65536, 65536, bytes(65536))], "FileChunk: not the bytes that were asked for")):
            result = self.answer_to(info, first, *answers, options=("--record", "file", "--file", "f"))
            self.assertEqual(result.stderr, "exchange: server: " + line + "\n")
            self.assertNotEqual(result.returncode, 0)
            self.assertEqual(self.left_over(), [])

    def test_the_server_refuses_another_file(self):
        result = self.answer_to(file_info("g", 3), options=("--record", "file", "--file", "f"))
        self.assert_refused(result, "exchange: server: FileInfo: not of the file that was asked for")
        self.assertEqual(self.left_over(), [])

    def test_a_wrong_digest_leaves_nothing(self):
        result = self.answer_to(file_info("f", 3), file_chunk("f", 0, 3, b"abc"), file_chunk("f", 3, 0, bytes(32)),
                                options=("--record", "file", "--file", "f"))
        self.assert_refused(result, "exchange: server: f: what was received has another SHA-256")
        self.assertEqual(self.left_over(), [])

    def test_the_connector_gives_away_nothing_but_the_file(self):
        path = self.write("file", b"abc")
        other = self.write("other", b"secret")
        connector, peer = self.connect("--record", "file", "--file", path)
        peer.sendall(frame("FileInfoParams", struct.pack("=II", 0, len(other)), other.encode()))
        self.assert_refused(self.finish(connector),
                            f"exchange: connector: the peer asks for {other}, which is not offered")

    def test_the_connector_refuses_bytes_that_do_not_exist(self):
        path = self.write("file", b"abc")
        for offset, size in (0, 4), (4, 0), (2**64 - 1, 2), (0, 65537):
            if os.path.exists(self.path("listener")):
                os.unlink(self.path("listener"))
            connector, peer = self.connect("--record", "file", "--file", path)
            peer.sendall(frame("FileInfoParams", struct.pack("=II", 0, len(path)), path.encode()))
            self.receive(peer)
            peer.sendall(file_chunk_params(path, offset, size))
            self.assert_refused(self.finish(connector),
                                "exchange: connector: FileChunkParams: the peer asks for bytes that do not exist")

    def test_progress_is_a_bar_on_a_terminal_and_lines_elsewhere(self):
        path = self.write("file", b"")
        os.truncate(path, 256 * MIB)
        plain = self.transfer(path)
        self.assertNotIn("\r", plain.stdout)
        self.assertRegex(plain.stdout, r"file: 256\.0 of 256\.0 MiB, [0-9.]+ MiB/s")
        master, slave = pty.openpty()
        terminal = subprocess.Popen(self.defaults(["--record", "file", "--file", path]), stdout=slave,
                                    env=self.environment, cwd=self.directory)
        os.close(slave)
        shown = self.shown_on(master)
        self.assertEqual(terminal.wait(timeout=60), 0)
        self.assertRegex(shown.decode(), r"\r\x1b\[Kserver +\| \[#*\.+\] file: [0-9.]+ of 256\.0 MiB, [0-9.]+ MiB/s, "
                                         r"[0-9]+:[0-9]{2} left")


if __name__ == "__main__":
    unittest.main()
