"""What travels between the two sides: hostile peers, and captures."""

import fcntl
import hashlib
import os
import resource
import shutil
import struct
import time
import unittest

from exchange import END, Case, file_chunk_params, frame, state


class Hostile(Case):
    """A peer that does not keep to the rules."""

    def assert_error(self, result, line, status=1):
        self.assert_refused(result, "exchange: server: " + line, status)

    def connection(self, address=(0, 0), arena=b""):
        return frame("VynConnectionParameters", struct.pack("=II", *address) + bytes(40), arena)

    def test_a_good_peer_that_is_not_ours_is_understood(self):
        frames = [state(code) for code in range(1, 14)]
        result = self.answer_to(*frames, END, END, END, options=("--record", "states"))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn("on the wire:     1   2   3", result.stdout)

    def test_control_characters_do_not_reach_the_terminal(self):
        result = self.answer_to(self.connection((0, 9), b"\x1b[31m\xc2\x9b\x7f\n"))
        self.assertIn("address" + " " * 23 + "\\x1b[31m\\x9b\\x7f\\n\n", result.stdout)
        self.assertNotIn("\x1b", result.stdout)
        result = self.answer_to(frame("\x1b[31m", b""))
        self.assert_error(result, 'the peer sent "\\x1b[31m" where "VynConnectionParameters" is due')

    def test_a_truncated_message_or_conversation(self):
        good = self.connection()
        for sent in b"", good[:3], good[:20], good[:-1], good:
            self.assert_error(self.answer_to(sent), "the peer has closed the connection", 2)

    def test_another_protocol(self):
        self.assert_error(self.answer_to(b"GET / HTTP/1.1\r\n\r\n"), "the peer does not speak this protocol")

    def test_impossible_sizes(self):
        self.assert_error(self.answer_to(b"VYN1" + struct.pack("=III", 65, 0, 0)),
                          "the peer sent a record name of 65 bytes")
        self.assert_error(self.answer_to(b"VYN1" + struct.pack("=III", *(2**32 - 1,) * 3)),
                          f"the peer sent a record name of {2**32 - 1} bytes")
        name = b"VynConnectionParameters"
        for size in 47, 49, 2**32 - 1:
            self.assert_error(self.answer_to(b"VYN1" + struct.pack("=III", len(name), size, 0) + name),
                              f"VynConnectionParameters: the wire structure has {size} bytes instead of 48")
        result = self.answer_to(b"VYN1" + struct.pack("=III", len(name), 48, 2**32 - 1) + name)
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stderr, f"^exchange: server: VynConnectionParameters: the arena has {2**32 - 1} bytes, "
                                        "which is more than [0-9]+\n$")

    def test_a_record_that_nobody_knows_or_that_is_not_due(self):
        for name in "NoSuchRecord", "VynServerData":
            self.assert_error(self.answer_to(frame(name, bytes(8))),
                              f'the peer sent "{name}" where "VynConnectionParameters" is due')
        self.assert_error(self.answer_to(END), 'the peer sent the end where "VynConnectionParameters" is due')

    def test_pointers_that_lie(self):
        for offset, size in (0, 5), (4, 1), (5, 0), (2**32 - 1, 1), (1, 2**32 - 1):
            self.assert_error(
                self.answer_to(self.connection((offset, size), b"1234")),
                "VynConnectionParameters: serverParameters.address: zt string: zt_arena does not contain an element "
                f"with the address {offset}")

    def test_an_event_that_lies(self):
        wire = bytearray(136)
        struct.pack_into("=II", wire, 0, 9, 9)
        self.assert_error(self.answer_to(frame("VynEvent", bytes(wire), b"1234"), options=("--record", "events")),
                          "VynEvent: vyn event: field1: zt_arena does not contain an element with the address 9")

    def test_a_state_that_does_not_exist(self):
        for code in 0, 14, -1:
            self.assert_error(self.answer_to(state(code), options=("--record", "states")),
                              f"VynConnectorState: there is no state with the code {code}")

    def test_a_connector_refuses_a_lying_server_as_well(self):
        path = self.write("file", b"abc")
        connector, peer = self.connect("--record", "file", "--file", path)
        peer.sendall(frame("FileInfoParams", struct.pack("=II", 7, 7), b"1234"))
        self.assert_refused(self.finish(connector),
                            "exchange: connector: FileInfoParams: fileName: zt string: zt_arena does not contain an "
                            "element with the address 7")

    def test_a_silent_peer_is_given_up(self):
        server, _ = self.serve("--timeout", "1")
        self.assert_error(self.finish(server), "the peer has been silent for too long", 2)

    def test_a_peer_that_sends_a_byte_now_and_then_is_silent(self):
        server, peer = self.serve("--timeout", "2")
        begin = time.monotonic()
        for byte in self.connection((0, 9), b"too slowly"):
            try:
                peer.send(bytes([byte]))
            except BrokenPipeError:
                break
            time.sleep(0.5)
        self.assertLess(time.monotonic() - begin, 20)
        self.assert_error(self.finish(server), "the peer has been silent for too long", 2)

    def test_a_peer_that_takes_a_byte_now_and_then_is_silent(self):
        path = self.write("file", bytes(65536))
        connector, peer = self.connect("--timeout", "2", "--record", "file", "--file", path)
        ask = frame("FileInfoParams", struct.pack("=II", 0, len(path)), path.encode())
        peer.sendall(ask + 20 * file_chunk_params(path, 0, 65536))
        begin = time.monotonic()
        while connector.poll() is None and time.monotonic() - begin < 20:
            peer.recv(1)
            time.sleep(0.5)
        self.assert_refused(self.finish(connector),
                            "exchange: connector: the peer has been silent for too long", 2)

    def test_what_an_error_quotes_is_escaped(self):
        for name, shown in ("a\0b", "a\\x00b"), ("\u009bm", "\\xc2\\x9bm"), ("\u202ec", "\\xe2\\x80\\xaec"):
            self.assert_error(self.answer_to(frame(name, b"")),
                              f'the peer sent "{shown}" where "VynConnectionParameters" is due')
        connector, peer = self.connect("--record", "file", "--file", self.write("file", b"abc"))
        peer.sendall(frame("FileInfoParams", struct.pack("=II", 0, 3), b"a\0b"))
        self.assert_refused(self.finish(connector),
                            "exchange: connector: the peer asks for a\\x00b, which is not offered")


class Claims(Case):
    """Pointers that share their bytes, so that decoding takes far more memory than the message has."""

    def parameters(self, count, size):
        """So many parameters, all with the same value of that many bytes."""
        value = (16 * count, size)
        elements = b"".join(struct.pack("=IIII", 0, 0, *value) for _ in range(count))
        return frame("VynParams", struct.pack("=II", 0, len(elements)), elements + bytes(size))

    def answer_to_parameters(self, message):
        empty = frame("VynConnectionParameters", bytes(48))
        return self.answer_to(empty, frame("VynConnectorSettings", bytes(48)), frame("VynServerData", bytes(8)),
                              message, END, END, options=("--record", "connection"))

    @staticmethod
    def budget(message_size):
        """What reading a message may take."""
        return 4096 + 16 * message_size

    def assert_claims_refused(self, result, field, limit):
        """The budget is what budget() says, and `field` goes over it."""
        self.assert_refused(result, f"exchange: server: {field}: reading takes more than {limit} bytes of memory")

    def test_a_list_whose_elements_share_their_bytes(self):
        limit = self.budget(8 + 10000 * 16 + 64000)
        result = self.answer_to_parameters(self.parameters(10000, 64000))
        # A parameter takes 56 bytes and its value.
        over = (limit - 10000 * 56) // 64000
        self.assert_claims_refused(result, f"VynParams: params[{over}].value", limit)

    @unittest.skipIf("SANITIZED" in os.environ, "sanitizers take memory of their own")
    def test_refusing_them_takes_little_memory(self):
        """The values are 610 MiB, and the server takes no more of it than of a message that is honest."""
        server, peer = self.serve("--record", "connection")
        peer.sendall(frame("VynConnectionParameters", bytes(48)) + frame("VynConnectorSettings", bytes(48)) +
                     frame("VynServerData", bytes(8)) + self.parameters(10000, 64000))
        _, status, usage = os.wait4(server.pid, 0)
        self.assertEqual(os.waitstatus_to_exitcode(status), 1)
        self.assertIn("reading takes more than", server.stderr.read())
        self.assertLess(usage.ru_maxrss, 64 * 1024, "KiB")

    def test_sixteen_times_the_message_and_a_byte_more(self):
        # 4096 + 16 * (8 + 16 * count + size) = 56 * count + size * count for count = 32
        size = (self.budget(8 + 16 * 32) - 56 * 32) // 16
        result = self.answer_to_parameters(self.parameters(32, size))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        result = self.answer_to_parameters(self.parameters(32, size + 1))
        self.assert_claims_refused(result, "VynParams: params[31].value", self.budget(8 + 32 * 16 + size + 1))

    def test_a_set_whose_strings_share_their_bytes(self):
        names = struct.pack("=II", 800, 1000) * 100
        subscriptions = struct.pack("=Q", 0) + 4 * struct.pack("=iII", 0, 0, 800)
        result = self.answer_to(frame("VynSubscriptionsWithHash", subscriptions, names + bytes(1000)),
                                options=("--record", "subscriptions"))
        self.assert_claims_refused(result, "VynSubscriptionsWithHash: subscriptions.entries[0].eventTypes[24]",
                                   self.budget(56 + 1800))

    def test_an_event_whose_strings_share_their_bytes_is_read(self):
        event = b"".join([struct.pack("=II", 0, 1000), bytes(4), struct.pack("=II", 0, 1000) * 5, bytes(12),
                          struct.pack("=II", 0, 1000) * 9])
        result = self.answer_to(frame("VynEvent", event, bytes(1000)), END, END, END, options=("--record", "events"))
        self.assertEqual((result.returncode, result.stderr), (0, ""), "fifteen times the arena is little")

    def test_update_identifiers_reserve_before_they_look(self):
        hash_of_none = int.from_bytes(hashlib.sha256().digest()[:8], "big")
        settings = frame("VynSubscriptionsWithHash", struct.pack("=Q", hash_of_none) + bytes(48))
        result = self.answer_to(settings, frame("VynUpdateIdentifierContainer", struct.pack("=II", 0, 2**32 - 16)),
                                options=("--record", "subscriptions"))
        self.assert_claims_refused(result, "VynUpdateIdentifierContainer: identifiers", self.budget(8))


class Captures(Case):
    def test_every_message_is_captured_as_it_travels(self):
        self.run_well("--record", "states", "--capture", self.path("captured"))
        names = sorted(os.listdir(self.path("captured")))
        self.assertEqual(names[0], "000001-sent-VynConnectorState.vyn")
        self.assertEqual(len(names), 13)
        for code, name in enumerate(names, 1):
            with open(self.path("captured/" + name), "rb") as file:
                self.assertEqual(file.read(), state(code))
            self.assertEqual(os.stat(self.path("captured/" + name)).st_mode & 0o077, 0)

    def test_a_captured_message_holds_wire_structure_and_arena(self):
        self.run_well("--record", "events", "--capture", self.path("captured"))
        names = sorted(os.listdir(self.path("captured")))
        self.assertEqual(len(names), 10)
        with open(self.path("captured/" + names[-1]), "rb") as file:
            content = file.read()
        magic, name_size, wire_size, arena_size = struct.unpack_from("=4sIII", content)
        self.assertEqual((magic, name_size, wire_size), (b"VYN1", len("VynEvent"), 136))
        self.assertEqual(len(content), 16 + name_size + wire_size + arena_size)
        self.assertEqual(content[16:16 + name_size], b"VynEvent")
        wire, arena = content[24:24 + 136], content[24 + 136:]
        offset, size = struct.unpack_from("=II", wire, 44)
        self.assertEqual(arena[offset:offset + size], b"Nov 21 line 11 of the log")

    def test_both_directions_are_captured(self):
        self.run_well("--record", "file", "--file", self.write("file", b"abc"), "--capture", self.path("captured"))
        self.assertEqual(sorted(os.listdir(self.path("captured"))), [
            "000001-received-FileInfoParams.vyn", "000002-sent-FileInfo.vyn", "000003-received-FileChunkParams.vyn",
            "000004-sent-FileChunk.vyn", "000005-received-FileChunkParams.vyn", "000006-sent-FileChunk.vyn"])

    def test_a_directory_that_is_not_empty_or_in_use(self):
        captured = self.path("captured")
        refused = f"exchange: connector: {captured}: not empty, or in use; a capture takes a directory of its own"
        old = self.write("captured/.old", "old")
        self.assert_refused(self.run_exchange("--record", "states", "--capture", captured), refused)
        os.unlink(old)
        directory = os.open(captured, os.O_RDONLY)
        self.addCleanup(os.close, directory)
        fcntl.flock(directory, fcntl.LOCK_EX)
        self.assert_refused(self.run_exchange("--record", "states", "--capture", captured), refused)
        self.assertEqual(os.listdir(captured), [])

    def test_a_link_or_file_in_the_way_is_not_written_through(self):
        path = self.write("file", bytes(3))
        precious = self.write("precious", "precious")
        captured = self.path("captured")
        name = "000002-sent-FileInfo.vyn"
        for place in os.symlink, os.link:
            connector, peer = self.connect("--record", "file", "--file", path, "--capture", captured)
            self.assertTrue(any("== file" in line for line in connector.stdout), "the directory is not there")
            place(precious, os.path.join(captured, name))
            peer.sendall(frame("FileInfoParams", struct.pack("=II", 0, len(path)), path.encode()))
            self.assert_refused(self.finish(connector), f"exchange: connector: {captured}/{name}: File exists")
            with open(precious) as file:
                self.assertEqual(file.read(), "precious")
            os.unlink(self.path("listener"))
            shutil.rmtree(captured)

    def test_no_part_of_a_capture_file_is_left_on_a_full_disk(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (20, 20))
        captured = self.path("captured")
        self.assert_refused(self.run_exchange("--record", "states", "--capture", captured, preexec=limit),
                            f"exchange: connector: {captured}/000001-sent-VynConnectorState.vyn: File too large")
        self.assertEqual(os.listdir(captured), [])


if __name__ == "__main__":
    unittest.main()
