"""The exchange as a program: its command line, its processes and its socket."""

import os
import signal
import unittest

from exchange import EVERY_RECORD, MIB, PROGRAM, SECRET, Case


class CommandLine(Case):
    def test_help_names_every_option(self):
        result = self.run_exchange("--help")
        self.assertEqual(result.returncode, 0)
        for word in ("--settings", "--proxy", "--root", "--log", "--certificates", "--file", "--into", "--resume",
                     "--record", "--capture", "--json", "--timeout", "--help", "serve", "connect", *EVERY_RECORD):
            self.assertIn(word, result.stdout)

    def test_arguments_too_many_are_not_quoted(self):
        self.assert_refused(self.run_exchange(f"http://u:{SECRET}@a"),
                            "exchange: there are arguments too many; see --help")

    def test_a_record_that_does_not_exist(self):
        result = self.run_exchange("--record", "Nothing")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(len(result.stderr.splitlines()), 1)
        self.assertIn("there is no step or record Nothing", result.stderr)

    def test_a_socket_that_a_dead_server_left_behind_is_taken_over(self):
        server = self.start("serve", self.path("socket"))
        self.wait_for(lambda: os.path.exists(self.path("socket")), "the server does not listen")
        server.kill()
        server.wait()
        self.assertTrue(os.path.exists(self.path("socket")))
        server, peer = self.serve()
        peer.close()
        self.assertEqual(self.finish(server).returncode, 2)

    def test_a_file_where_the_socket_should_be_is_left_alone(self):
        path = self.write("socket", "precious")
        self.assert_refused(self.run_exchange("serve", path), f"exchange: server: {path}: Address already in use")
        with open(path) as file:
            self.assertEqual(file.read(), "precious")

    def test_a_path_too_long_for_a_socket(self):
        path = "x" * 108
        self.assert_refused(self.run_exchange("serve", path),
                            f"exchange: server: {path}: too long for a socket's path")

    def test_a_socket_that_is_not_there(self):
        self.assert_refused(self.run_exchange("connect", self.path("none")),
                            f"exchange: connector: {self.path('none')}: No such file or directory")


class Processes(Case):
    def test_two_processes_started_by_hand_talk_as_well(self):
        path = self.path("socket")
        server = self.start("serve", path, "--file", PROGRAM)
        self.wait_for(lambda: os.path.exists(path), "the server does not listen")
        self.assertEqual(os.stat(path).st_mode & 0o077, 0)
        connector = self.run_exchange("connect", path, "--file", PROGRAM)
        server = self.finish(server)
        self.assertEqual((connector.returncode, connector.stderr, server.returncode, server.stderr), (0, "", 0, ""))
        self.assertFalse(os.path.exists(path))
        with open(PROGRAM, "rb") as sent, open(self.received("exchange"), "rb") as got:
            self.assertEqual(sent.read(), got.read())

    def test_a_connector_that_is_killed_is_reported(self):
        path = self.large_file()
        both = self.start("--record", "file", "--file", path)
        part = self.received("large.part")
        self.wait_for(lambda: os.path.exists(part) and os.stat(part).st_size > MIB, "nothing arrives")
        with open(f"/proc/{both.pid}/task/{both.pid}/children") as file:
            os.kill(int(file.read()), signal.SIGKILL)
        self.assert_refused(self.finish(both), "exchange: connector: killed by signal 9")
        self.assertEqual(self.left_over(), ["large.part"])


if __name__ == "__main__":
    unittest.main()
