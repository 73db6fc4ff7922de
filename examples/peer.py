#!/usr/bin/env python3
"""A peer of the Orlix data transfer in plain Python 3, as client and as server.

As a program it sends commands and prints what arrives; see --help. As a module it is three things:

    frames     xml_frame, binary_frame, touch_document, page_document: what goes onto the wire
    FrameReader  turns arriving bytes back into frames, however TCP has cut them
    Peer       one connection that sends and receives

docs/wire.md describes the protocol byte by byte.
"""

import argparse
import collections
import enum
import socket
import struct
import sys
import time
import typing
import zlib

MAGIC = b"IVEN"
HEADER = struct.Struct("<4sBIB")  # magic, reserved, payload length, payload type: 10 bytes, little-endian, no padding
START_LENGTH = 5  # magic and reserved byte, which a receiver checks before it waits for the rest
HEARTBEAT = b"\xaf\x00"
HEARTBEAT_PAUSE = 0.2  # seconds of silence around a heartbeat, see Peer.send_heartbeat
LONGEST_PAYLOAD = 0xFFFFFFFF
ENTITIES = str.maketrans(
    {"&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;", "'": "&apos;", "\r": "&cr;", "\n": "&lf;"}
)


class Kind(enum.Enum):
    BINARY = 0
    XML = 1
    HEARTBEAT = None  # two bytes of its own, without header and payload


class Frame(typing.NamedTuple):
    kind: Kind
    payload: bytes = b""

    @property
    def text(self) -> str:
        """The document of an XML frame: UTF-8 up to the first zero byte, or to the end if there is none."""
        return self.payload.split(b"\0", 1)[0].decode("utf-8", "replace")

    def __str__(self) -> str:
        """One line, whatever the payload holds."""
        if self.kind is Kind.XML:
            return "xml " + printable(self.text)
        if self.kind is Kind.BINARY:
            return f"binary {len(self.payload)} bytes, crc32 {zlib.crc32(self.payload):08X}"
        return "heartbeat"


def printable(text: str) -> str:
    """The text with every character that could break or colour a line as a numeric reference."""
    return "".join(c if c.isprintable() else f"&#{ord(c)};" for c in text)


# What goes onto the wire.


def frame(kind: Kind, payload: bytes) -> bytes:
    if not 1 <= len(payload) <= LONGEST_PAYLOAD:
        raise ValueError("a payload has 1 to 4294967295 bytes")  # with 0 a receiver throws away what it holds
    return HEADER.pack(MAGIC, 0, len(payload), kind.value) + payload


def binary_frame(data: bytes) -> bytes:
    return frame(Kind.BINARY, data)


def xml_frame(document: str) -> bytes:
    """The zero byte behind the text belongs to the payload and is counted in its length."""
    if any(c == "\0" or c > "\uffff" for c in document):
        raise ValueError("a document has no character U+0000 and none beyond U+FFFF")
    return frame(Kind.XML, document.encode("utf-8") + b"\0")


TOUCH_FIELDS = (
    "id", "time_stamp", "touch_status", "x", "x_delta", "x_speed", "y", "y_delta", "y_speed",
)  # fmt: skip


def touch_document(**fields: int) -> str:
    """One touch of one finger, with any of TOUCH_FIELDS; what is left out is 0. A touch_status is 1 for a press, 2 for a
    move, 3 for a release and 4 for a wheel step."""
    if not fields.keys() <= set(TOUCH_FIELDS):
        raise ValueError("a touch has the fields " + ", ".join(TOUCH_FIELDS))
    return document("touch_input", **{name: fields.get(name, 0) for name in TOUCH_FIELDS})


def page_document(handle: int, name: str) -> str:
    return document("page_cmd", ope_handle=handle, page_name=name)


def document(element: str, **attributes: typing.Union[int, str]) -> str:
    """The form of the built-in documents. Their header says UTF-16, although UTF-8 goes onto the wire: it is what the
    library writes, and a receiver does not look at it."""
    text = "".join(f' {name}="{escape(str(value))}"' for name, value in attributes.items())
    return f'<?xml version="1.0" encoding="UTF-16"?><root><{element}{text}/></root>'


def escape(value: str) -> str:
    return value.translate(ENTITIES)


# What comes from the wire.


class FrameReader:
    """Reassembles frames. It holds no more than what has arrived: an announced length reserves nothing."""

    def __init__(self):
        self._held = bytearray()

    def feed(self, data: bytes) -> list[Frame]:
        """The frames that these bytes complete, in order."""
        self._held += data
        frames = []
        while (taken := self._take()) is not None:
            frames.append(taken)
        return frames

    @property
    def held(self) -> int:
        """How many bytes wait for the rest of their frame."""
        return len(self._held)

    def _take(self) -> typing.Optional[Frame]:
        if self._held.startswith(HEARTBEAT):
            del self._held[: len(HEARTBEAT)]
            return Frame(Kind.HEARTBEAT)
        if not self._find_start() or len(self._held) < HEADER.size:
            return None
        _, _, length, kind = HEADER.unpack_from(self._held)
        if length == 0:
            self._held.clear()
            return None
        end = HEADER.size + length
        if len(self._held) < end:
            return None
        payload = bytes(memoryview(self._held)[HEADER.size : end])
        del self._held[:end]
        return Frame(Kind.XML if kind == Kind.XML.value else Kind.BINARY, payload)

    def _find_start(self) -> bool:
        """Whether what is held begins with a magic and a reserved byte of 0. Nobody looks for the next magic: what
        begins with another one is thrown away whole. A reserved byte that is not 0 takes its magic with it."""
        while len(self._held) >= START_LENGTH:
            if not self._held.startswith(MAGIC):
                self._held.clear()
            elif self._held[START_LENGTH - 1] == 0:
                return True
            else:
                del self._held[:START_LENGTH]
        return False


# One connection.


class Peer:
    """A connection that sends and receives frames; a context manager that closes it."""

    def __init__(self, connection: socket.socket):
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)  # small frames are not held back
        self.connection = connection
        self._reader = FrameReader()
        self._arrived: collections.deque[Frame] = collections.deque()

    @classmethod
    def connect(cls, address: str, port: int) -> "Peer":
        return cls(socket.create_connection((address, port)))

    @classmethod
    def accept(cls, listener: socket.socket) -> "Peer":
        return cls(listener.accept()[0])

    def __enter__(self) -> "Peer":
        return self

    def __exit__(self, *_) -> None:
        self.close()

    def send(self, data: bytes) -> None:
        """Any bytes, all of them."""
        self.connection.sendall(data)

    def send_touch(self, **fields: int) -> None:
        self.send(xml_frame(touch_document(**fields)))

    def send_page(self, handle: int, name: str) -> None:
        self.send(xml_frame(page_document(handle, name)))

    def send_xml(self, text: str) -> None:
        self.send(xml_frame(text))

    def send_binary(self, data: bytes) -> None:
        self.send(binary_frame(data))

    def send_heartbeat(self) -> None:
        """The library knows a heartbeat only if it receives the two bytes on their own, so they keep their distance."""
        time.sleep(HEARTBEAT_PAUSE)
        self.send(HEARTBEAT)
        time.sleep(HEARTBEAT_PAUSE)

    def receive(self) -> typing.Optional[Frame]:
        """The next frame; None once the other side has closed."""
        while not self._arrived:
            data = self.connection.recv(1 << 20)
            if not data:
                return None
            self._arrived.extend(self._reader.feed(data))
        return self._arrived.popleft()

    def close(self) -> None:
        self.connection.close()

    def reset(self) -> None:
        """Ends the connection at once and loses what is on its way."""
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.connection.close()


def listen(port: int, address: str = "") -> socket.socket:
    """A listening socket; with port 0 the system picks one, see its getsockname. Closing the socket ends it."""
    listener = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)  # the port of an ended server is free at once
    listener.bind((address, port))
    listener.listen(1)
    return listener


# The program.


def say(line: object) -> None:
    print(line, flush=True)


def print_frames(peer: Peer) -> None:
    say("connect")
    try:
        while (arrived := peer.receive()) is not None:
            say(arrived)
    except ConnectionError:
        pass  # a reset ends a connection like a close
    say("disconnect")


def run_server(options: argparse.Namespace) -> None:
    with listen(options.port) as listener:
        say(f"listening on {listener.getsockname()[1]}")
        while True:
            with Peer.accept(listener) as peer:
                print_frames(peer)
            if options.once:
                return


def run_client(options: argparse.Namespace) -> None:
    with Peer.connect(*options.address) as peer:
        for command, values in options.commands:
            COMMANDS[command](peer, *values)
        if options.stay:
            print_frames(peer)


def send_touch(peer: Peer, *fields: str) -> None:
    """Each field is NAME=NUMBER."""
    pairs = (field.split("=") for field in fields)
    peer.send_touch(**{name: int(number) for name, number in pairs})


def send_file(send: typing.Callable[[bytes], None], path: str) -> None:
    with open(path, "rb") as file:
        send(file.read())


def send_heartbeats(peer: Peer, count: str) -> None:
    for _ in range(int(count)):
        peer.send_heartbeat()


COMMANDS = {
    "--touch": send_touch,
    "--page": lambda peer, handle, name: peer.send_page(int(handle), name),
    "--xml": lambda peer, path: send_file(lambda data: peer.send_xml(data.decode("utf-8-sig")), path),
    "--binary": lambda peer, path: send_file(peer.send_binary, path),
    "--heartbeats": send_heartbeats,
}


class KeepOrder(argparse.Action):
    """Collects the commands in the order in which they were given."""

    def __call__(self, parser, namespace, values, option_string=None):
        values = values if isinstance(values, list) else [values]
        namespace.commands = namespace.commands + [(option_string, values)]


def read_address(text: str) -> tuple[str, int]:
    address, _, port = text.rpartition(":")
    return address, int(port)


def read_command_line(arguments: typing.Optional[list[str]] = None) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        description="A peer of the Orlix data transfer. Each frame that arrives is one line: "
        "xml DOCUMENT, binary N bytes, crc32 XXXXXXXX, or heartbeat.",
        epilog="Example: peer.py connect 127.0.0.1:7000 --touch id=1 touch_status=1 x=20 y=30 --page 5 main",
        allow_abbrev=False,
    )
    roles = parser.add_subparsers(required=True, metavar="listen | connect")

    server = roles.add_parser("listen", allow_abbrev=False, help="be the server: print what each client sends")
    server.add_argument("port", type=int, metavar="PORT", help="0 for any free one; the first line says which")
    server.add_argument("--once", action="store_true", help="end when the first client has gone")
    server.set_defaults(run=run_server)

    client = roles.add_parser("connect", allow_abbrev=False, help="be a client: send the commands in their order")
    client.add_argument("address", type=read_address, metavar="ADDRESS:PORT")
    client.add_argument("--touch", nargs="*", action=KeepOrder, metavar="NAME=NUMBER",
                        help="a touch; the names are " + " ".join(TOUCH_FIELDS) + ", each 0 unless given")
    client.add_argument("--page", nargs=2, action=KeepOrder, metavar=("HANDLE", "NAME"), help="a page command")
    client.add_argument("--xml", action=KeepOrder, metavar="FILE", help="a document in UTF-8")
    client.add_argument("--binary", action=KeepOrder, metavar="FILE", help="the bytes of a file")
    client.add_argument("--heartbeats", action=KeepOrder, metavar="N", help="N heartbeats, some time apart")
    client.add_argument("--stay", action="store_true", help="then print what arrives, until the server closes")
    client.set_defaults(run=run_client, commands=[])
    return parser.parse_args(arguments)


def main() -> int:
    options = read_command_line()
    try:
        options.run(options)
    except KeyboardInterrupt:
        pass
    except (OSError, ValueError) as error:
        print(f"peer.py: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
