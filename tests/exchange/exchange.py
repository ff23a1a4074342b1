"""What the tests of the example `exchange` share. Each is run as `<subject>_test.py PROGRAM [unittest arguments]`."""

import json
import os
import pathlib
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = os.path.abspath(sys.argv.pop(1))
SECRET = "hush-hush"
SETTINGS = {
    "server": {"address": "vyn.example.net:13000", "identifier": 4711},
    "credentials": {"userName": "device", "password": SECRET},
    "tls": {
        "minimumVersion": 771,
        "trustedCertificates": "trusted.pem",
        "certificate": "own.pem",
        "privateKey": "own.key",
        "ciphers": "HIGH",
    },
    "timeouts": {"connectMilliseconds": 10000, "requestMilliseconds": 60000},
    "connector": {
        "heartbeatSeconds": 1, "reconnectSeconds": 2, "maxReconnectSeconds": 3, "maxQueuedEvents": 4,
        "maxQueuedBytes": 5, "logLevel": 6,
    },
    "parameters": {"site": "Field station", "tags": ["edge"]},
    "product": {"package": "editor"},
    "subscriptions": {"1": ["Updated"], "3": ["Threat", "Alarm"]},
}
MACHINE = {
    "etc/os-release": 'PRETTY_NAME="Test OS 1"\nID=test\nVERSION_ID="1"\n# a comment\n',
    "etc/machine-id": "000102030405060708090a0b0c0d0eff\n",
    "proc/meminfo": "MemTotal:       2048 kB\nMemAvailable:   1024 kB\n",
    "proc/cpuinfo": "processor : 0\nmodel name\t: Test CPU\n",
    "var/lib/dpkg/status": "Package: other\nStatus: install ok installed\nVersion: 9\n\n"
                           "Package: editor\nStatus: install ok installed\nVersion: 1.2-3\nInstalled-Size: 7\n"
                           "Description: edits\nMaintainer: nobody\n",
    "var/log/syslog": "".join(f"Nov 21 line {i} of the log\n" for i in range(12)),
}
EVERY_RECORD = [
    "VynConnectionParameters", "VynConnectorSettings", "VynServerData", "VynParams", "AppInfo", "DynamicAppInfo",
    "VynSubscriptionsWithHash", "VynUpdateIdentifierContainer", "VynEvent", "ClientCertsInfo", "ClientCertParams",
    "FileInfoParams", "FileInfo", "FileChunkParams", "FileChunk", "VynConnectorState",
]
MIB = 1 << 20
VALUE_COLUMN = 34
END = b"VYN1" + bytes(12)


def frame(name, wire, arena=b""):
    name = name.encode()
    return b"VYN1" + struct.pack("=III", len(name), len(wire), len(arena)) + name + wire + arena


def state(code):
    return frame("VynConnectorState", struct.pack("=i", code))


def file_info(name, size):
    return frame("FileInfo", struct.pack("=IIBB6xqQ", 0, len(name), 0, 0, 0, size), name.encode())


def file_chunk(name, offset, size, data):
    wire = struct.pack("=IIQQII", 0, len(name), offset, size, len(name), len(data))
    return frame("FileChunk", wire, name.encode() + data)


def file_chunk_params(name, offset, size):
    return frame("FileChunkParams", struct.pack("=IIQQ", 0, len(name), offset, size), name.encode())


class Case(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = directory.name
        self.environment = {k: v for k, v in os.environ.items() if k.lower() != "https_proxy"}
        for name, content in MACHINE.items():
            self.write("root/" + name, content)
        os.makedirs(self.path("root/etc/ssl/certs"))

    def path(self, name):
        return os.path.join(self.directory, name)

    def write(self, name, content):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return self.path(name)

    def large_file(self):
        """So large that a transfer is not over before it is interrupted. It has a size and takes no room."""
        path = self.write("large", b"")
        os.truncate(path, 4096 * MIB)
        return path

    def settings(self, change=lambda settings: None):
        settings = json.loads(json.dumps(SETTINGS))
        change(settings)
        return self.write("settings.json", json.dumps(settings))

    def received(self, name):
        return self.path(os.path.join("received", name))

    def left_over(self):
        return sorted(os.listdir(self.path("received"))) if os.path.exists(self.path("received")) else []

    def defaults(self, arguments):
        """Every run sees the machine of the test and writes into its directory."""
        given = list(arguments)
        for option, value in (("--root", self.path("root")), ("--into", self.path("received"))):
            if option not in given:
                given += [option, value]
        if "--settings" not in given and "serve" not in given:
            given += ["--settings", self.settings()]
        return [PROGRAM, *given]

    def run_exchange(self, *arguments, preexec=None, **environment):
        """Nothing that the sides print may hold the password."""
        result = subprocess.run(self.defaults(arguments), capture_output=True, text=True, errors="replace", timeout=120,
                                preexec_fn=preexec, cwd=self.directory, env={**self.environment, **environment})
        self.assertNotIn(SECRET, result.stdout + result.stderr)
        return result

    def run_well(self, *arguments, **environment):
        result = self.run_exchange(*arguments, **environment)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def lines(self, output, side="server"):
        return [line.split(" |", 1)[1][1:] for line in output.splitlines() if line.startswith(side)]

    def fields(self, output, record):
        """What the server printed below the record's line, as (indentation, name, value)."""
        return [(indent, name, value) for indent, name, _, value in self.labelled_fields(output, record)]

    def labelled_fields(self, output, record):
        """As (indentation, name, label, value)."""
        lines = self.lines(output)
        start = next(i for i, line in enumerate(lines) if line.startswith(record + ":"))
        found = []
        for line in lines[start + 1:]:
            if not line.startswith(" "):
                break
            heading, value = line[:VALUE_COLUMN].strip(), line[VALUE_COLUMN:]
            name, _, label = heading.partition(" ")
            if name.endswith(":"):  # an item of a list
                label, value = "", label + value
            found.append((len(line) - len(line.lstrip()), name, label.strip(), value))
        return found

    def assert_refused(self, result, line, status=1):
        self.assertEqual(result.stderr, line + "\n")
        self.assertEqual(result.returncode, status)

    def start(self, *arguments, preexec=None):
        process = subprocess.Popen(self.defaults(arguments), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                   errors="replace", env=self.environment, cwd=self.directory, preexec_fn=preexec)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def child_of(self, process):
        """The connector, where one program is both sides."""
        children = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children")
        self.wait_for(children.read_text, "there is no child")
        return int(children.read_text())

    def assert_ended(self, pid):
        with self.assertRaises(ProcessLookupError):
            os.kill(pid, 0)

    def finish(self, process):
        out, err = process.communicate(timeout=120)
        return subprocess.CompletedProcess(process.args, process.returncode, out, err)

    @staticmethod
    def shown_on(master):
        """All that the programs on a pseudo-terminal write until the last of them has closed it."""
        shown = b""
        while True:
            try:
                more = os.read(master, 65536)
            except OSError:
                break
            if not more:
                break
            shown += more
        os.close(master)
        return shown

    def wait_until_listening(self, path):
        """The path is there from bind on; only the kernel's list says that the server listens."""
        def is_listening():
            with open("/proc/net/unix", encoding="utf-8") as sockets:
                rows = [row.split() for row in sockets]
            return any(row[-1] == path and row[3] == "00010000" for row in rows)
        self.wait_for(is_listening, "the server does not listen")

    def wait_for(self, condition, what):
        deadline = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), deadline, what)
            time.sleep(0.001)

    def serve(self, *arguments):
        """Starts a server by hand and returns it with a socket that is connected to it."""
        path = self.path("socket")
        server = self.start("serve", path, *arguments)
        peer = socket.socket(socket.AF_UNIX)
        self.addCleanup(peer.close)

        def connected():
            try:
                peer.connect(path)
                return True
            except (FileNotFoundError, ConnectionRefusedError):
                return False
        self.wait_for(connected, "the server does not listen")
        return server, peer

    def answer_to(self, *frames, options=()):
        """What a server says and returns when this is all that its peer sends."""
        server, peer = self.serve(*options)
        try:
            peer.sendall(b"".join(frames))
            peer.shutdown(socket.SHUT_WR)
        except BrokenPipeError:
            pass
        return self.finish(server)

    def connect(self, *arguments):
        """Starts a connector by hand and returns it with a socket that it has connected to."""
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(self.path("listener"))
        listener.listen(1)
        listener.settimeout(60)
        connector = self.start("connect", self.path("listener"), *arguments)
        peer, _ = listener.accept()
        self.addCleanup(peer.close)
        peer.settimeout(60)
        return connector, peer

    def receive(self, peer):
        """The next frame's record, wire structure and arena."""
        def exactly(size):
            data = b""
            while len(data) < size:
                more = peer.recv(size - len(data))
                self.assertNotEqual(more, b"", "the connector has closed the connection")
                data += more
            return data
        header = exactly(16)
        self.assertEqual(header[:4], b"VYN1")
        name, wire, arena = (exactly(size) for size in struct.unpack("=III", header[4:]))
        return name.decode(), wire, arena
