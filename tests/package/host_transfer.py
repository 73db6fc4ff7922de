#!/usr/bin/env python3
"""host_transfer.py ORLIX_HOST EXAMPLES_FOLDER RECORDING [--no-memory]: the host talks with a peer, as server and as
client, whatever the peer does. --no-memory leaves out the bounds of memory, which a sanitizer's own would break."""

import os
import queue
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import zlib

HOST, EXAMPLES, RECORDING = sys.argv[1:4]
BOUND_MEMORY = "--no-memory" not in sys.argv[4:]
del sys.argv[1:]
sys.path.insert(0, EXAMPLES)
sys.dont_write_bytecode = True

import peer

PATIENCE = 60  # seconds for what comes at once unless the machine is very busy
PROMPT = 5  # seconds for what must not wait for anybody
MIB = 1 << 20
BINARY = b"IVEN\x00\x09\x00\x00\x00\x00123456789"
BINARY_LINE = "binary 9 bytes, crc32 CBF43926"
SCRATCH = tempfile.TemporaryDirectory()
CONFIG = os.path.join(SCRATCH.name, "engine.xml")
with open(CONFIG, "w", encoding="ascii") as file:  # no log among the lines, and no held finger repeats
    file.write(
        '<engine><log_output terminal="false"/><touch_param long_press_delay="4000000000"/>'
        '<surface_set><surface use="true" enable_touch="true"/></surface_set></engine>'
    )


class Host:
    """A host in a process of its own, and the lines that it has printed."""

    def __init__(self, *arguments, **options):
        self.process = subprocess.Popen(
            [HOST, "--config", CONFIG, *arguments],
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            encoding="utf-8",
            **options,
        )
        self._lines = queue.Queue()
        self._reader = threading.Thread(target=self._read)
        self._reader.start()

    def _read(self):
        for line in self.process.stdout:
            self._lines.put(line.rstrip("\n"))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self._reader.join()
        self.process.stdout.close()
        self.process.stderr.close()
        if self.process.stdin:
            self.process.stdin.close()

    def line(self):
        return self._lines.get(timeout=PATIENCE)

    def lines(self, count):
        return [self.line() for _ in range(count)]

    def lines_to(self, last):
        """The lines up to this one."""
        lines = [self.line()]
        while lines[-1] != last:
            lines.append(self.line())
        return lines

    def end(self, number=signal.SIGTERM):
        """Ends it by a signal. @return its exit code."""
        self.process.send_signal(number)
        return self.process.wait(PROMPT)

    def wait(self):
        """Waits until it has ended by itself. @return exit code, the lines that are left, what it said on stderr."""
        code = self.process.wait(PATIENCE)
        self._reader.join()
        return code, list(self._lines.queue), self.process.stderr.read()

    def memory(self, name):
        """VmRSS or VmHWM, its highest so far, in bytes."""
        with open(f"/proc/{self.process.pid}/status", encoding="ascii") as status:
            return int(re.search(rf"^{name}:\s+(\d+) kB$", status.read(), re.MULTILINE)[1]) * 1024

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))


class Server(Host):
    """A host that listens on a free port and has been reached once."""

    def __init__(self, *arguments, **options):
        self.port = free_port()
        super().__init__("--listen", str(self.port), *arguments, **options)
        while not self._reach():
            time.sleep(0.01)  # it has not come up yet

    def _reach(self):
        try:
            self.connect().close()
        except ConnectionRefusedError:
            if self.process.poll() is not None:
                raise
            return False
        self.lines_to("disconnect")
        return True

    def connect(self):
        return peer.Peer.connect("127.0.0.1", self.port)

    def expect_service(self, test):
        """The next peer is served as if nothing had been."""
        with self.connect() as client:
            client.send(BINARY)
            test.assertEqual(self.lines_to(BINARY_LINE)[-2:], ["connect", BINARY_LINE])
        test.assertEqual(self.line(), "disconnect")


def free_port():
    with socket.socket() as probe:
        probe.bind(("", 0))
        return probe.getsockname()[1]


def record(moves):
    """A recording of one finger that moves so many times, a millisecond apart. @return its path."""
    path = os.path.join(SCRATCH.name, f"{moves}.events")
    with open(path, "w", encoding="ascii") as events:
        events.write("A: 2f 0 1\nA: 35 0 9999\nA: 36 0 9999\nA: 39 0 9\nE: 0.000000 0003 0039 0001\n")
        for i in range(moves + 1):
            stamp = f"{i // 1000}.{i % 1000:03d}000"
            events.write(f"E: {stamp} 0003 0035 {1 + i % 9999:04d}\nE: {stamp} 0000 0000 0000\n")
        events.write(f"E: {stamp} 0003 0039 -001\nE: {stamp} 0000 0000 0000\n")
    return path


def play_locally(path):
    """What a peer prints for the touches that the host prints."""
    played = subprocess.run([HOST, "--config", CONFIG, "--play", path, "--fast"], capture_output=True, check=True)
    status = {"press": 1, "move": 2, "release": 3}
    lines = (line.split(" ", 1) for line in played.stdout.decode().splitlines())
    return [f"touch {rest}".replace(" t=", f" status={status[what]} t=") for what, rest in lines]


def touch_line(frame):
    """What a host prints for a touch frame."""
    names = dict(dx="x_delta", dy="y_delta", vx="x_speed", vy="y_speed", status="touch_status", t="time_stamp")
    value = dict(re.findall(r' (\w+)="([^"]*)"', frame.text.split("<touch_input", 1)[1]))
    fields = ("id", "x", "y", "dx", "dy", "vx", "vy", "status", "t")
    return "touch " + " ".join(f"{name}={value[names.get(name, name)]}" for name in fields)


class Lines(unittest.TestCase):
    def test_every_kind_of_frame_is_one_line(self):
        for sent, line in (
            (peer.binary_frame(b"123456789"), BINARY_LINE),
            (peer.binary_frame(b"\0"), "binary 1 bytes, crc32 D202EF8D"),
            (b"IVEN\x00\x01\x00\x00\x00\x02\x00", "binary 1 bytes, crc32 D202EF8D"),
            (
                peer.xml_frame(
                    peer.touch_document(
                        id=4294967295, x=1, y=-2, x_delta=3, y_delta=-4, x_speed=5, y_speed=-6, touch_status=2, time_stamp=7
                    )
                ),
                "touch id=4294967295 x=1 y=-2 dx=3 dy=-4 vx=5 vy=-6 status=2 t=7",
            ),
            (peer.xml_frame("<r><touch_input/></r>"), "touch id=0 x=0 y=0 dx=0 dy=0 vx=0 vy=0 status=0 t=0"),
            (
                peer.xml_frame('<r><touch_input touch_status="-7"/><page_cmd/></r>'),
                "touch id=0 x=0 y=0 dx=0 dy=0 vx=0 vy=0 status=-7 t=0",
            ),
            (peer.xml_frame(peer.page_document(-5, "main page")), "page handle=-5 name=main page"),
            (peer.xml_frame("<r><page_cmd/></r>"), "page handle=0 name="),
            (
                peer.xml_frame(peer.page_document(1, "a\r\nb\t\x1b[1m\x9b\u2028首")),
                "page handle=1 name=a&cr;&lf;b&#9;&#27;[1m&#155;&#8232;首",
            ),
            (b"IVEN\x00\x2d\x00\x00\x00\x01" + b'<r><page_cmd page_name="\xed\xa0\x80"/></r>'.ljust(45, b"\0"),
             "page handle=0 name=&#55296;"),
            (
                peer.xml_frame("<?xml version='1.0' encoding='utf-16'?>\n<a z='1' b='x&lf;y'><b>t\ru</b></a>"),
                'xml <?xml version="1.0" encoding="UTF-16"?><a b="x&lf;y" z="1"><b>t&cr;u</b></a>',
            ),
            (peer.xml_frame("<a>\x01</a>"), 'xml <?xml version="1.0" encoding="UTF-8"?><a>&#1;</a>'),
        ):
            with self.subTest(line=line), self.server.connect() as client:
                client.send(sent + BINARY)  # of which the second shows that the first was one line
                self.assertEqual(sorted(self.server.lines(3)), sorted(["connect", line, BINARY_LINE]))
            self.assertEqual(self.server.line(), "disconnect")

    def test_frames_without_a_line_disturb_nothing(self):
        for sent in (
            peer.xml_frame("no document"),
            peer.xml_frame("<a>"),
            peer.xml_frame("<r><popup_cmd page_name='p' popup_name='p' ope_handle='1'/></r>"),
            b"IVEN\x00\x01\x00\x00\x00\x01\x00",
        ):
            with self.subTest(sent=sent), self.server.connect() as client:
                client.send(sent + BINARY)
                self.assertEqual(self.server.lines(2), ["connect", BINARY_LINE])
            self.assertEqual(self.server.line(), "disconnect")

    def test_heartbeats_are_no_lines(self):
        with self.server.connect() as client:
            client.send_binary(b"123456789")
            for _ in range(3):
                client.send_heartbeat()
            client.send_binary(b"123456789")
            self.assertEqual(self.server.lines(3), ["connect", BINARY_LINE, BINARY_LINE])
        self.assertEqual(self.server.line(), "disconnect")

    def test_a_large_frame_arrives_whole(self):
        data = b"123456789" * 1_000_000
        crc = zlib.crc32(data)
        with self.server.connect() as client:
            client.send_binary(data)
            self.assertEqual(self.server.lines(2), ["connect", f"binary 9000000 bytes, crc32 {crc:08X}"])
        self.assertEqual(self.server.line(), "disconnect")

    @classmethod
    def setUpClass(cls):
        cls.server = cls.enterClassContext(Server())


class HostilePeers(unittest.TestCase):
    def setUp(self):
        self.server = self.enterContext(Server())

    def tearDown(self):
        self.server.expect_service(self)
        self.assertEqual(self.server.end(), 0)

    def expect_bounded(self, before, arrived):
        """Its memory has never been above what it was before and what has arrived by more than 2 MiB."""
        if BOUND_MEMORY:
            self.assertLessEqual(self.server.memory("VmHWM") - before, arrived + 2 * MIB)

    def test_a_length_of_4_gib_reserves_nothing(self):
        before = self.server.memory("VmHWM")
        for kind in (0, 1):
            with self.server.connect() as client:
                client.send(b"IVEN\x00\xff\xff\xff\xff" + bytes([kind]))
                client.send(b"x" * (8 * MIB))
            self.server.lines_to("disconnect")
        self.expect_bounded(before, 8 * MIB)

    def test_a_bad_magic_after_every_byte_is_thrown_away(self):
        before = self.server.memory("VmHWM")
        for count in range(len(BINARY) + 1):
            with self.server.connect() as client:
                client.send(BINARY[:count] + b"\xff" * 100)
            self.server.lines_to("disconnect")
        self.expect_bounded(before, 0)

    def test_a_reserved_byte_that_is_never_0_is_passed_over(self):
        before = self.server.memory("VmHWM")
        with self.server.connect() as client:
            client.send(b"IVEN\x01" * MIB)
        self.server.lines_to("disconnect")
        self.expect_bounded(before, 5 * MIB)

    def test_500_clients_in_a_row_leave_nothing_behind(self):
        self.server.expect_service(self)
        before, descriptors = self.server.memory("VmHWM"), self.server.descriptors()
        for _ in range(500):
            with self.server.connect() as client:
                client.send(BINARY)
            self.assertEqual(self.server.lines_to("disconnect"), ["connect", BINARY_LINE, "disconnect"])
        self.assertLessEqual(self.server.descriptors(), descriptors + 1)
        self.expect_bounded(before, 0)

    def test_single_bytes_make_a_frame(self):
        with self.server.connect() as client:
            for byte in BINARY:
                client.send(bytes([byte]))
                time.sleep(0.01)  # so that each comes on its own
            self.assertEqual(self.server.lines(2), ["connect", BINARY_LINE])
        self.assertEqual(self.server.line(), "disconnect")

    def test_an_end_at_every_byte_of_a_frame_loses_that_frame_alone(self):
        for end in (peer.Peer.close, peer.Peer.reset):
            for count in range(len(BINARY)):
                with self.server.connect() as client:
                    client.send(BINARY[:count])
                    end(client)
                self.assertEqual(self.server.lines_to("disconnect")[-2:], ["connect", "disconnect"])
                self.server.expect_service(self)

    def test_a_peer_that_is_killed_mid_frame_is_a_disconnect(self):
        script = "import socket, sys, time; s = socket.create_connection(('127.0.0.1', int(sys.argv[1]))); " \
            "s.sendall(b'IVEN\\0\\xff\\0'); time.sleep(1000)"
        for _ in range(3):
            child = subprocess.Popen([sys.executable, "-c", script, str(self.server.port)])
            self.assertEqual(self.server.line(), "connect")
            child.kill()
            child.wait()
            self.assertEqual(self.server.line(), "disconnect")


class Ending(unittest.TestCase):
    def test_signals_end_it_whatever_the_peer_does(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with Server() as server:  # nobody there
                self.assertEqual(server.end(number), 0)
            with Server() as server, server.connect():  # a silent client, and another one behind it
                self.assertEqual(server.line(), "connect")
                with server.connect():
                    self.assertEqual(server.end(number), 0)
            with Host("--connect", f"127.0.0.1:{free_port()}") as client:  # no server
                wait_for_start(client)
                self.assertEqual(client.end(number), 0)
            with peer.listen(0, "127.0.0.1") as listener, Host(*connect_to(listener)) as client:
                with peer.Peer.accept(listener) as silent:
                    self.assertEqual(client.line(), "connect")
                    self.assertEqual(client.end(number), 0)
                    self.assertIsNone(silent.receive())

    def test_signals_end_it_while_a_source_waits(self):
        far = os.path.join(SCRATCH.name, "far.events")
        with open(far, "w", encoding="ascii") as events:
            events.write("A: 35 0 9\nA: 36 0 9\nE: 0.000000 0000 0000 0000\nE: 9999999999.999999 0000 0000 0000\n")
        for arguments in (["--play", "-"], ["--text", "-"], ["--play", far]):
            with Server(*arguments, stdin=subprocess.PIPE) as server:
                self.assertEqual(server.end(), 0, arguments)
            with peer.listen(0, "127.0.0.1") as listener:
                with Host(*connect_to(listener), *arguments, stdin=subprocess.PIPE) as client:
                    with peer.Peer.accept(listener):
                        self.assertEqual(client.line(), "connect")
                        self.assertEqual(client.end(), 0, arguments)

    def test_signals_end_it_while_it_waits_for_a_peer_to_play_to(self):
        with Host("--connect", f"127.0.0.1:{free_port()}", "--play", RECORDING) as client:
            wait_for_start(client)
            self.assertEqual(client.end(), 0)

    def test_a_port_that_is_taken_is_an_error(self):
        with peer.listen(0) as listener, Host("--listen", str(listener.getsockname()[1])) as host:
            self.assertEqual(host.wait(), (2, [], "orlix-host: the port cannot be listened on\n"))

    def test_wrong_calls_are_told(self):
        for arguments in (
            ["--listen"],
            *(["--listen", port] for port in ("0", "65536", "-1", "x", "", "1x", "99999999999999999999")),
            *(
                ["--connect", address]
                for address in ("", ":", "1.2.3.4", "1.2.3.4:", "1.2.3.4:0", "1.2.3.4:65536", "localhost:1", "1.2.3:4",
                                ":1", "::1:2", "1.2.3.4 :5", "1" * 100 + ":1")
            ),
            ["--listen", "1", "--listen", "2"],
            ["--listen", "1", "--connect", "1.2.3.4:5"],
            ["--listen", "1", "--print-config"],
            ["--listen", "1", "--fast"],
            ["--connect", "1.2.3.4:5", "--surface", "0"],
        ):  # fmt: skip
            with self.subTest(arguments=arguments), Host(*arguments) as host:
                code, lines, errors = host.wait()
                self.assertEqual((code, lines, errors.count("\n")), (2, [], 1))


class Playing(unittest.TestCase):
    def test_a_played_recording_reaches_the_other_host_as_the_own_listener_gets_it(self):
        with Server() as server, Host("--connect", f"127.0.0.1:{server.port}", "--play", RECORDING, "--fast") as client:
            expected = play_locally(RECORDING)
            lines = server.lines(len(expected) + 2)  # touches have a queue of their own, which connects do not join
            code, own, errors = client.wait()
            self.assertEqual((code, own, errors.count("\n")), (0, ["connect"], 1))
            self.assertRegex(errors, "^orlix-host: 2 presses, 14 moves, 2 releases, ")
            server.expect_service(self)
        self.assertEqual([line for line in lines if line.startswith("touch ")], expected)

    def test_at_its_own_pace_the_places_are_the_same(self):
        with Server() as server, Host("--connect", f"127.0.0.1:{server.port}", "--play", RECORDING) as client:
            expected = play_locally(RECORDING)
            lines = server.lines(len(expected) + 2)
            self.assertEqual(client.wait()[0], 0)
        places = [line.split(" vx=")[0] for line in lines if line.startswith("touch ")]
        self.assertEqual(places, [line.split(" vx=")[0] for line in expected])

    def test_playing_waits_for_the_peer(self):
        port = free_port()
        with Host("--connect", f"127.0.0.1:{port}", "--play", RECORDING, "--fast") as client:
            wait_for_start(client)
            with peer.listen(port, "127.0.0.1") as listener, peer.Peer.accept(listener) as server:
                self.assertEqual(touches_of(server), play_locally(RECORDING))
            self.assertEqual(client.wait()[:2], (0, ["connect"]))

    def test_nothing_is_lost_when_the_peer_reads_after_the_host_has_ended(self):
        path = record(2000)
        with peer.listen(0, "127.0.0.1") as listener:
            with Host(*connect_to(listener), "--play", path, "--fast") as client, peer.Peer.accept(listener) as server:
                self.assertEqual(client.wait()[:2], (0, ["connect"]))
                self.assertEqual(touches_of(server), play_locally(path))

    def test_a_peer_that_never_reads_does_not_hold_it_up(self):
        with peer.listen(0, "127.0.0.1") as listener:
            with Host(*connect_to(listener), "--play", record(60000), "--fast") as client:
                with peer.Peer.accept(listener):
                    self.assertEqual(client.wait()[:2], (0, ["connect"]))

    def test_touches_that_found_no_peer_are_told(self):
        with peer.listen(0, "127.0.0.1") as listener:
            with Host(*connect_to(listener), "--play", "-", stdin=subprocess.PIPE) as client:
                with peer.Peer.accept(listener):
                    self.assertEqual(client.line(), "connect")
                self.assertEqual(client.line(), "disconnect")
                with open(record(0), encoding="ascii") as events:
                    client.process.stdin.write(events.read())
                listener.close()
                client.process.stdin.close()
                code, _, errors = client.wait()
                self.assertEqual((code, errors.splitlines()[0]), (1, "orlix-host: 2 touches found no peer"))

    def test_a_server_plays_and_prints_beside_it(self):
        with Server("--text", "-", stdin=subprocess.PIPE) as server, server.connect() as client:
            self.assertEqual(server.line(), "connect")
            client.send(BINARY)
            self.assertEqual(server.line(), BINARY_LINE)
            server.process.stdin.write("word\n")
            server.process.stdin.close()
            code, lines, _ = server.wait()
            self.assertEqual((code, lines[0]), (0, "text word"))


class Connecting(unittest.TestCase):
    def test_a_client_prints_what_its_server_sends(self):
        with peer.listen(0, "127.0.0.1") as listener, Host(*connect_to(listener)) as client:
            with peer.Peer.accept(listener) as server:
                self.assertEqual(client.line(), "connect")
                server.send_page(5, "main")
                self.assertEqual(client.line(), "page handle=5 name=main")
                server.send(BINARY)
                self.assertEqual(client.line(), BINARY_LINE)

    def test_a_client_comes_back_to_a_server_that_was_restarted(self):
        port = free_port()
        with Host("--connect", f"127.0.0.1:{port}") as client:
            for end in (peer.Peer.close, peer.Peer.reset) * 2:
                with peer.listen(port, "127.0.0.1") as listener, peer.Peer.accept(listener) as server:
                    server.send(BINARY + BINARY[:12])  # the second one is cut and forgotten
                    self.assertEqual(client.lines(2), ["connect", BINARY_LINE])
                    listener.close()
                    end(server)
                self.assertEqual(client.line(), "disconnect")


def connect_to(listener):
    return "--connect", f"127.0.0.1:{listener.getsockname()[1]}"


def touches_of(server):
    """What a host would print for the touches that come until the other side closes."""
    return [touch_line(frame) for frame in iter(server.receive, None)]


def wait_for_start(host):
    """Waits until the host holds signals off, so that one ends it by the usual way."""
    held = 1 << (signal.SIGTERM - 1)
    blocked = 0
    while not blocked & held:
        time.sleep(0.01)
        with open(f"/proc/{host.process.pid}/status", encoding="ascii") as status:
            blocked = int(re.search(r"^SigBlk:\s+(\w+)$", status.read(), re.MULTILINE)[1], 16)


if __name__ == "__main__":
    unittest.main()
