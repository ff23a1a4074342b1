"""The exchange as a program: its command line, its processes and its socket."""

import os
import pty
import signal
import socket
import subprocess
import unittest

from exchange import EVERY_RECORD, MIB, PROGRAM, SECRET, Case


class CommandLine(Case):
    def test_help_names_every_option(self):
        result = self.run_exchange("--help")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr, "")
        for word in ("--settings", "--proxy", "--root", "--log", "--certificates", "--file", "--into", "--resume",
                     "--record", "--capture", "--json", "--timeout", "--any-user", "--version", "--help",
                     "serve", "connect", "130", "141", "143", *EVERY_RECORD):
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
        self.wait_until_listening(self.path("socket"))
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


    def test_a_record_that_travels_inside_another(self):
        for record, message in (("ProxySettings", "VynConnectionParameters"), ("VynParam", "VynParams"),
                                ("LicenseKeyInfo", "AppInfo"), ("VynSubscription", "VynSubscriptionsWithHash"),
                                ("ClientCertInfo", "ClientCertsInfo"),
                                ("VynUpdateIdentifier", "VynUpdateIdentifierContainer")):
            result = self.run_exchange("--record", record)
            self.assertEqual(result.returncode, 1)
            self.assertIn(f"{record} travels inside {message}; --record {message} shows it", result.stderr)

    def test_the_version(self):
        result = self.run_exchange("--version")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertRegex(result.stdout, r"^exchange [0-9]+\.[0-9]+\.[0-9]+\n$")


class SocketPath(Case):
    def test_a_live_server_is_left_alone_and_not_disturbed(self):
        path = self.path("socket")
        server = self.start("serve", path, "--record", "states")
        self.wait_until_listening(path)
        self.assert_refused(self.run_exchange("serve", path), f"exchange: server: {path}: Address already in use")
        connector = self.run_exchange("connect", path, "--record", "states")
        self.assertEqual((connector.returncode, connector.stderr), (0, ""))
        self.assertEqual(self.finish(server).returncode, 0)

    def test_a_server_that_does_not_listen_yet_is_left_alone(self):
        path = self.path("socket")
        other = socket.socket(socket.AF_UNIX)
        self.addCleanup(other.close)
        other.bind(path)
        self.assert_refused(self.run_exchange("serve", path), f"exchange: server: {path}: Address already in use")
        self.assertTrue(os.path.exists(path))

    def test_of_several_servers_that_start_at_once_one_gets_the_path(self):
        path = self.path("socket")
        for _ in range(5):
            dead = socket.socket(socket.AF_UNIX)
            dead.bind(path)
            dead.close()
            servers = [self.start("serve", path, "--record", "states") for _ in range(4)]
            self.wait_for(lambda: sum(server.poll() is None for server in servers) == 1, "more than one is waiting")
            connector = self.run_exchange("connect", path, "--record", "states")
            self.assertEqual((connector.returncode, connector.stderr), (0, ""))
            self.assertEqual(sorted(self.finish(server).returncode for server in servers), [0, 1, 1, 1])
            self.assertFalse(os.path.exists(path))

    def test_another_socket_in_its_place_is_not_removed(self):
        path = self.path("socket")
        server = self.start("serve", path, "--record", "states")
        self.wait_until_listening(path)
        os.rename(path, self.path("elsewhere"))
        self.write("socket", "precious")
        self.run_well("connect", self.path("elsewhere"), "--record", "states")
        self.assertEqual(self.finish(server).returncode, 0)
        self.assertTrue(os.path.exists(path))

    def test_a_server_of_another_user_gets_no_password(self):
        if os.geteuid() != 0:
            self.skipTest("only root can listen as another user")
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        os.chmod(self.directory, 0o777)
        ready, done = os.pipe(), os.pipe()
        child = os.fork()
        if child == 0:
            os.setuid(65534)
            listener.bind(self.path("socket"))
            listener.listen(2)
            os.write(ready[1], b"x")
            os.read(done[0], 1)
            os._exit(0)
        os.read(ready[0], 1)
        self.assert_refused(self.run_exchange("connect", self.path("socket")),
                            f"exchange: connector: {self.path('socket')}: user 65534 listens there, not 0; --any-user "
                            "sends to it all the same, passwords included")
        connector = self.start("connect", self.path("socket"), "--any-user", "--timeout", "1")
        self.assert_refused(self.finish(connector), "exchange: connector: the peer has been silent for too long", 2)
        os.write(done[1], b"x")
        os.waitpid(child, 0)


class Streams(Case):
    def test_closed_streams_are_not_taken_for_files(self):
        content = os.urandom(MIB)
        path = self.write("file", content)
        for closed in (0,), (1,), (2,), (0, 1, 2):
            result = self.run_exchange("--file", path, preexec=lambda closed=closed: [os.close(fd) for fd in closed])
            self.assertEqual((result.returncode, result.stderr), (0, ""), closed)
            with open(self.received("file"), "rb") as file:
                self.assertEqual(file.read(), content)

    def run_into(self, output, *arguments):
        with open(output, "w") as stream:
            return subprocess.run(self.defaults(arguments), stdout=stream, stderr=subprocess.PIPE, text=True,
                                  env=self.environment, cwd=self.directory, timeout=120)

    def test_output_that_cannot_be_written_is_a_failure(self):
        for side, arguments in (("connector", []), ("server", ["--json"]), ("connector", ["--record", "states"])):
            self.assert_refused(self.run_into("/dev/full", *arguments),
                                f"exchange: {side}: standard output: No space left on device")
        for argument in "--help", "--version":
            self.assert_refused(self.run_into("/dev/full", argument),
                                "exchange: standard output: No space left on device")

    def test_a_reader_that_goes_away_ends_both_sides_quietly(self):
        both = self.start("--record", "file", "--file", self.large_file())
        child = self.child_of(both)
        both.stdout.readline()
        both.stdout.close()
        self.assertEqual(both.wait(timeout=60), 128 + signal.SIGPIPE)
        self.assertEqual(both.stderr.read(), "")
        self.assert_ended(child)
        both.stdout = open(os.devnull)


class Interrupts(Case):
    """Signals that ask the program to end."""

    def start_transfer(self, *arguments, **more):
        both = self.start("--record", "file", "--file", self.large_file(), *arguments, **more)
        part = self.received("large.part")
        self.wait_for(lambda: os.path.exists(part) and os.stat(part).st_size > MIB, "nothing arrives")
        return both, part

    def assert_kept(self, result, part):
        self.assertEqual(result.stderr, f"exchange: server: interrupted; kept {os.stat(part).st_size} bytes in {part}; "
                                        "--resume goes on from there\n")

    def test_a_transfer_is_kept(self):
        for number in signal.SIGINT, signal.SIGTERM, signal.SIGHUP:
            for kill in os.kill, os.killpg:
                both, part = self.start_transfer(preexec=os.setsid)
                child = self.child_of(both)
                kill(both.pid, number)
                result = self.finish(both)
                self.assertEqual(result.returncode, 128 + number)
                self.assert_kept(result, part)
                self.assert_ended(child)
                os.unlink(part)

    def test_on_a_terminal_its_line_is_ended(self):
        pid, master = pty.fork()
        if pid == 0:
            os.chdir(self.directory)
            arguments = self.defaults(["--record", "file", "--file", self.large_file()])
            os.execve(PROGRAM, arguments, {**self.environment, "TERM": "xterm"})
        shown = b""
        while b"MiB/s" not in shown:
            shown += os.read(master, 65536)
        os.write(master, b"\x03")
        while True:
            try:
                shown += os.read(master, 65536)
            except OSError:
                break
        os.close(master)
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), 130)
        self.assertRegex(shown.decode(), r"\r\x1b\[Kexchange: server: interrupted; (?s:.*)there\r\n$")

    def test_a_server_that_waits_removes_its_socket(self):
        for number in signal.SIGINT, signal.SIGTERM, signal.SIGHUP:
            server = self.start("serve", self.path("socket"))
            self.wait_until_listening(self.path("socket"))
            server.send_signal(number)
            self.assert_refused(self.finish(server), "exchange: server: interrupted", 128 + number)
            self.assertFalse(os.path.exists(self.path("socket")))

    def test_a_connector_that_was_started_by_hand(self):
        connector, _ = self.connect("--record", "file")
        connector.send_signal(signal.SIGTERM)
        self.assert_refused(self.finish(connector), "exchange: connector: interrupted", 143)

    def test_a_signal_that_the_caller_ignores_is_ignored(self):
        server = self.start("serve", self.path("socket"), preexec=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.wait_until_listening(self.path("socket"))
        server.send_signal(signal.SIGHUP)
        server.send_signal(signal.SIGTERM)
        self.assert_refused(self.finish(server), "exchange: server: interrupted", 143)

    def test_a_connector_that_is_stopped_is_ended(self):
        both, part = self.start_transfer("--timeout", "1")
        child = self.child_of(both)
        os.kill(child, signal.SIGSTOP)
        result = self.finish(both)
        self.assert_refused(result, "exchange: server: the peer has been silent for too long", 2)
        self.assertIn(f"kept {os.stat(part).st_size} bytes in {part}; --resume goes on from there",
                      self.lines(result.stdout))
        self.assert_ended(child)


class Demo(Case):
    def test_its_output_is_that_of_the_example_alone(self):
        scripts = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../scripts")
        for name in "demo", "step.sh":
            with open(os.path.join(scripts, name), "rb") as file:
                os.chmod(self.write("tree/scripts/" + name, file.read()), 0o755)
        example = 'printf "%s in %s\\n" "$*" "$PWD"; exit 7\n'
        for name, content in (("scripts/setup", "echo setup\n"), ("bin/cmake", "echo cmake\n"),
                              ("build/release/examples/exchange/exchange", example)):
            os.chmod(self.write("tree/" + name, "#!/bin/sh\n" + content), 0o755)
        path = self.path("tree/bin") + ":" + os.environ["PATH"]
        result = subprocess.run([self.path("tree/scripts/demo"), "--json"], capture_output=True, text=True, timeout=60,
                                cwd=self.directory, env={**os.environ, "PATH": path})
        self.assertEqual((result.returncode, result.stdout), (7, f"--json in {self.directory}\n"))
        self.assertEqual(result.stderr, "\n== setup\nsetup\n\n== configure\ncmake\n\n== build\ncmake\n\n== run\n")


class Processes(Case):
    def test_two_processes_started_by_hand_talk_as_well(self):
        path = self.path("socket")
        server = self.start("serve", path, "--file", PROGRAM)
        self.wait_until_listening(path)
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
        os.kill(self.child_of(both), signal.SIGKILL)
        self.assert_refused(self.finish(both), "exchange: connector: killed by signal 9")
        self.assertEqual(self.left_over(), ["large.part"])


if __name__ == "__main__":
    unittest.main()
