#!/usr/bin/env python3
"""wire_page_test.py TRANSFER_EXAMPLE EXAMPLES_FOLDER WIRE_PAGE: the library and the reference peer send, byte by byte,
the frames that the page about the protocol shows."""

import re
import subprocess
import sys
import unittest

EXAMPLE, EXAMPLES, PAGE = sys.argv[1:4]
del sys.argv[1:]
sys.path.insert(0, EXAMPLES)
sys.dont_write_bytecode = True

import peer

ORDER = ("touch", "page", "popup", "document", "binary", "heartbeat")  # in which the example sends


def hexdump(data):
    """As `hexdump -C` prints it, without the last line."""
    lines = []
    for at in range(0, len(data), 16):
        row = data[at : at + 16]
        digits = "  ".join(" ".join(f"{byte:02x}" for byte in row[half : half + 8]) for half in (0, 8)).rstrip()
        text = "".join(chr(byte) if 0x20 <= byte < 0x7F else "." for byte in row)
        lines.append(f"{at:08x}  {digits:<49} |{text}|\n")
    return "".join(lines)


def dumps_of(page):
    """The dumps by their names, and the bytes of each."""
    dumps = dict(re.findall(r"^```hexdump (\w+)\n(.*?)^```$", page, re.MULTILINE | re.DOTALL))
    return dumps, {name: bytes.fromhex("".join(line[10:58] for line in dump.splitlines())) for name, dump in dumps.items()}


with open(PAGE, encoding="utf-8") as file:
    DUMPS, FRAMES = dumps_of(file.read())


class WirePage(unittest.TestCase):
    def test_the_dumps_are_as_hexdump_prints_them(self):
        self.assertEqual(sorted(DUMPS), sorted(ORDER))
        for name, dump in DUMPS.items():
            self.assertEqual(hexdump(FRAMES[name]), dump, name)

    def test_the_peer_sends_them(self):
        touch = dict(id=1, x=345, y=353, x_delta=80, y_delta=-60, touch_status=2, time_stamp=1050)
        popup = peer.page_document(2, "R&D").replace("page_cmd", "popup_cmd")
        volume = '<?xml version="1.0" encoding="UTF-8"?><volume percent="80"/>'
        for name, sent in (
            ("touch", peer.xml_frame(peer.touch_document(**touch))),
            ("page", peer.xml_frame(peer.page_document(1, "main"))),
            ("popup", peer.xml_frame(popup)),
            ("document", peer.xml_frame(volume)),
            ("binary", peer.binary_frame(bytes([1, 2, 3, 253, 254, 255]))),
            ("heartbeat", peer.HEARTBEAT),
        ):
            self.assertEqual(sent, FRAMES[name], name)

    def test_the_library_sends_them(self):
        expected = b"".join(FRAMES[name] for name in ORDER)
        with peer.listen(0, "127.0.0.1") as listener:
            arguments = [EXAMPLE, "127.0.0.1", str(listener.getsockname()[1])]
            with subprocess.Popen(arguments, stdout=subprocess.DEVNULL) as example:
                connection, _ = listener.accept()
                with connection:
                    connection.settimeout(60)
                    received = b""
                    while len(received) < len(expected):
                        received += connection.recv(len(expected) - len(received)) or b"closed" * len(expected)
            self.assertEqual((received, example.returncode), (expected, 0))


if __name__ == "__main__":
    unittest.main()
