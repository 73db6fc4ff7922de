#!/usr/bin/env python3
"""peer_test.py EXAMPLES_FOLDER: the reference peer writes and reads the bytes that stand here by hand."""

import os
import random
import socket
import subprocess
import sys
import threading
import unittest

EXAMPLES = sys.argv.pop(1)
sys.path.insert(0, EXAMPLES)
sys.dont_write_bytecode = True

import peer
from peer import Frame, FrameReader, Kind

BINARY_ABC = b"IVEN\x00\x03\x00\x00\x00\x00abc"
XML_A = b"IVEN\x00\x05\x00\x00\x00\x01<a/>\x00"
TOUCH = (
    b"IVEN\x00\xb6\x00\x00\x00\x01"
    b'<?xml version="1.0" encoding="UTF-16"?><root><touch_input id="4294967295" time_stamp="7" touch_status="2" '
    b'x="10" x_delta="-3" x_speed="0" y="20" y_delta="0" y_speed="-1000"/></root>\x00'
)
PAGE = (
    b"IVEN\x00\x82\x00\x00\x00\x01"
    b'<?xml version="1.0" encoding="UTF-16"?><root><page_cmd ope_handle="-5" page_name="\xe9\xa6\x96 &amp;&lt;&gt;'
    b'&quot;&apos;&cr;&lf;"/></root>\x00'
)


class Sending(unittest.TestCase):
    def test_frames_have_these_bytes(self):
        self.assertEqual(peer.binary_frame(b"abc"), BINARY_ABC)
        self.assertEqual(peer.xml_frame("<a/>"), XML_A)
        touch = dict(id=0xFFFFFFFF, x=10, y=20, touch_status=2, time_stamp=7, x_delta=-3, y_speed=-1000)
        self.assertEqual(peer.xml_frame(peer.touch_document(**touch)), TOUCH)
        self.assertEqual(peer.xml_frame(peer.page_document(-5, "首 &<>\"'\r\n")), PAGE)
        self.assertEqual(peer.binary_frame(bytes(0x01020304))[:10], b"IVEN\x00\x04\x03\x02\x01\x00")
        self.assertEqual(peer.HEARTBEAT, b"\xaf\x00")

    def test_what_no_receiver_could_take_is_refused(self):
        for refused in (
            lambda: peer.binary_frame(b""),
            lambda: peer.xml_frame("<a>\0</a>"),
            lambda: peer.xml_frame("<a>\U0001f600</a>"),
            lambda: peer.touch_document(z=1),
        ):
            self.assertRaises(ValueError, refused)


class Reading(unittest.TestCase):
    # (what arrives, the frames that come out, how many bytes are held then)
    ROWS = (
        (b"", [], 0),
        (BINARY_ABC, [Frame(Kind.BINARY, b"abc")], 0),
        (BINARY_ABC + XML_A, [Frame(Kind.BINARY, b"abc"), Frame(Kind.XML, b"<a/>\0")], 0),
        (BINARY_ABC[:-1], [], 12),
        (BINARY_ABC[:9], [], 9),
        (BINARY_ABC[:4], [], 4),
        (b"\xaf\x00", [Frame(Kind.HEARTBEAT)], 0),
        (b"\xaf", [], 1),
        (XML_A + b"\xaf\x00" + XML_A, [Frame(Kind.XML, b"<a/>\0"), Frame(Kind.HEARTBEAT), Frame(Kind.XML, b"<a/>\0")], 0),
        (b"IVEN\x00\x03\x00\x00\x00\x02abc", [Frame(Kind.BINARY, b"abc")], 0),  # any type but 1 is binary
        (b"IVEN\x00\x03\x00\x00\x00\xffabc", [Frame(Kind.BINARY, b"abc")], 0),
        (b"NEVI\x00" + BINARY_ABC, [], 0),  # a bad magic throws away what is held
        (BINARY_ABC + b"xIVEN" + BINARY_ABC, [Frame(Kind.BINARY, b"abc")], 0),
        (b"IVEN\x00\x00\x00\x00\x00\x00" + BINARY_ABC, [], 0),  # and so does a length of 0
        (b"IVEN\x01" + BINARY_ABC, [Frame(Kind.BINARY, b"abc")], 0),  # a reserved byte takes its magic along
        (b"IVEN\x01IVEN\xff" + BINARY_ABC, [Frame(Kind.BINARY, b"abc")], 0),
        (b"IVEN\x01\x03\x00\x00\x00\x00abc", [], 0),
        (b"IVEN\x00\xff\xff\xff\xff\x00" + b"x" * 1000, [], 1010),
    )

    def test_rows_in_one_piece(self):
        for arriving, frames, held in self.ROWS:
            reader = FrameReader()
            self.assertEqual((reader.feed(arriving), reader.held), (frames, held), arriving)

    def test_frames_survive_any_cut(self):
        stream = (BINARY_ABC + XML_A + TOUCH + b"\xaf\x00") * 50
        whole = FrameReader().feed(stream)
        self.assertEqual(len(whole), 200)
        for seed in range(50):
            dice, reader, frames, at = random.Random(seed), FrameReader(), [], 0
            while at < len(stream):
                step = dice.choice((1, 2, 3, 10, 500))
                frames += reader.feed(stream[at : at + step])
                at += step
            self.assertEqual(frames, whole, f"seed {seed}")

    def test_any_bytes_are_read_without_harm(self):
        for seed in range(2000):
            dice, reader = random.Random(seed), FrameReader()
            pieces = [BINARY_ABC, XML_A, b"IVEN", b"\x00\x00", b"\xaf\x00", b"IVEN\x00\xff\xff\xff\xff\x01", b"IVEN\x07"]
            stream = b"".join(dice.choice(pieces + [dice.randbytes(5)]) for _ in range(20))
            for byte in stream:
                for arrived in reader.feed(bytes([byte])):
                    str(arrived)
            self.assertLessEqual(reader.held, len(stream))

    def test_each_frame_is_one_line(self):
        for frame, line in (
            (Frame(Kind.XML, b"<a>\n\x1b[1m\xe9\xa6\x96</a>\0hidden"), "xml <a>&#10;&#27;[1m首</a>"),
            (Frame(Kind.XML, b"no end \xff"), "xml no end \ufffd"),
            (Frame(Kind.BINARY, b"123456789"), "binary 9 bytes, crc32 CBF43926"),
            (Frame(Kind.HEARTBEAT), "heartbeat"),
        ):
            self.assertEqual(str(frame), line)


class Connecting(unittest.TestCase):
    def test_both_directions_carry_frames(self):
        with peer.listen(0, "127.0.0.1") as listener:
            with peer.Peer.connect(*listener.getsockname()) as client, peer.Peer.accept(listener) as server:
                client.send_page(5, "main")
                client.send_binary(b"abc")
                client.send_heartbeat()
                server.send_touch(id=1)
                server.send_xml("<a/>")
                self.assertEqual(server.receive().text, peer.page_document(5, "main"))
                self.assertEqual(server.receive(), Frame(Kind.BINARY, b"abc"))
                self.assertEqual(server.receive(), Frame(Kind.HEARTBEAT))
                self.assertEqual(client.receive().text, peer.touch_document(id=1))
                self.assertEqual(client.receive(), Frame(Kind.XML, b"<a/>\0"))
                client.close()
                self.assertIsNone(server.receive())

    def test_a_large_frame_arrives_whole(self):
        data = random.Random(1).randbytes(20_000_000)
        with peer.listen(0, "127.0.0.1") as listener:
            with peer.Peer.connect(*listener.getsockname()) as client, peer.Peer.accept(listener) as server:
                sender = threading.Thread(target=client.send_binary, args=(data,))
                sender.start()
                self.assertEqual(server.receive(), Frame(Kind.BINARY, data))
                sender.join()

    def test_a_reset_reaches_the_other_side(self):
        with peer.listen(0, "127.0.0.1") as listener:
            with peer.Peer.connect(*listener.getsockname()) as client, peer.Peer.accept(listener) as server:
                client.reset()
                self.assertRaises(ConnectionResetError, server.receive)


class Program(unittest.TestCase):
    def run_peer(self, *arguments, **options):
        command = [sys.executable, "-B", os.path.join(EXAMPLES, "peer.py"), *arguments]
        return subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **options)

    def test_client_and_server_understand_each_other(self):
        server = self.run_peer("listen", "0", "--once")
        port = server.stdout.readline().removeprefix("listening on ").strip()
        client = self.run_peer(
            "connect", f"127.0.0.1:{port}", "--touch", "id=3", "x=-1", "--page", "-5", "a\nb", "--xml", "/dev/stdin",
            "--heartbeats", "2", "--binary", __file__, stdin=subprocess.PIPE,
        )  # fmt: skip
        self.assertEqual(client.communicate("<ä/>"), ("", ""))
        with open(__file__, "rb") as file:
            binary = Frame(Kind.BINARY, file.read())
        expected = [
            "connect",
            "xml " + peer.touch_document(id=3, x=-1),
            "xml " + peer.page_document(-5, "a\nb"),
            "xml <ä/>",
            "heartbeat",
            "heartbeat",
            str(binary),
            "disconnect",
        ]
        self.assertEqual(server.communicate(), ("\n".join(expected) + "\n", ""))
        self.assertEqual((client.returncode, server.returncode), (0, 0))

    def test_a_failure_is_one_line(self):
        with socket.socket() as unused:  # bound but not listening: nobody answers there
            unused.bind(("127.0.0.1", 0))
            port = unused.getsockname()[1]
            for arguments in (["connect", f"127.0.0.1:{port}"], ["listen", str(port)], ["connect", "127.0.0.1:70000"]):
                process = self.run_peer(*arguments)
                output, errors = process.communicate()
                self.assertEqual((process.returncode, output, errors.count("\n")), (1, "", 1), arguments)


if __name__ == "__main__":
    unittest.main()
