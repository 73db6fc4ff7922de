#!/usr/bin/env python3
"""touch_model.py RECORDING WIDTH HEIGHT: what orlix-host --play RECORDING --fast prints for a surface of that size (0 for
one without a size), worked out from the description of the recordings and of touch tracking, without the library."""
import re
import sys

AXIS = re.compile(r"^A: *([0-9a-fA-F]+) +(-?\d+) +(-?\d+)")
EVENT = re.compile(r"^E: *(\d+)\.(\d{6}) +([0-9a-fA-F]+) +([0-9a-fA-F]+) +(-?\d+) *$")
HISTORY = 100


def read(path):
    """The axes' ranges by code, and the events as (microseconds, type, code, value)."""
    ranges, events = {}, []
    with open(path, encoding="utf-8") as file:
        for line in file:
            line = line.split("#")[0].rstrip()
            if match := AXIS.match(line):
                ranges[int(match[1], 16)] = (int(match[2]), int(match[3]))
            elif match := EVENT.match(line):
                events.append((int(match[1]) * 10**6 + int(match[2]), int(match[3], 16), int(match[4], 16),
                               int(match[5])))
    return ranges, events


def changes(ranges, events):
    """What each frame did, as (microseconds since the first event, change, slot, x, y) in the device's own range."""
    slots = ranges.get(0x2F, (0, 0))[1] + 1
    now = [{"id": -1, "x": ranges[0x35][0], "y": ranges[0x36][0]} for _ in range(slots)]
    before = [dict(slot) for slot in now]
    names = {0x35: "x", 0x36: "y", 0x39: "id"}
    current = 0
    for time, kind, code, value in events:
        if (kind, code) == (3, 0x2F):
            current = value
        elif kind == 3 and code in names:
            now[current][names[code]] = value
        elif (kind, code) == (0, 0):
            for number, (old, new) in enumerate(zip(before, now)):
                passed = time - events[0][0]
                if old["id"] != new["id"]:
                    if old["id"] != -1:
                        place = new if new["id"] == -1 else old
                        yield passed, "release", number, place["x"], place["y"]
                    if new["id"] != -1:
                        yield passed, "press", number, new["x"], new["y"]
                elif new["id"] != -1 and old != new:
                    yield passed, "move", number, new["x"], new["y"]
            before = [dict(slot) for slot in now]


def speed(points, axis):
    if len(points) < 2:
        return 0
    passed = points[-1][2] - points[0][2]
    if passed <= 0:
        return 0
    way = (points[-1][axis] - points[0][axis]) * 200
    return max(-1000, min(1000, abs(way) // passed * (1 if way >= 0 else -1)))


def lines(path, width, height):
    ranges, events = read(path)

    def scale(value, code, size):
        low, high = ranges[code]
        return (value - low) * (size or high - low + 1) // (high - low + 1)

    tracks = {}
    for passed, change, slot, raw_x, raw_y in changes(ranges, events):
        x, y, time = scale(raw_x, 0x35, width), scale(raw_y, 0x36, height), 1 + passed // 1000
        if change == "press":
            if slot not in tracks:
                tracks[slot] = [(x, y), [(x, y, time)]]
                yield f"press id={slot} x={x} y={y} dx=0 dy=0 vx=0 vy=0 t={time}"
            continue
        if slot not in tracks:
            continue
        start, points = tracks[slot]
        points.append((x, y, time))
        del points[:-HISTORY]
        offsets = f"dx={x - start[0]} dy={y - start[1]}"
        if change == "move":
            yield f"move id={slot} x={x} y={y} {offsets} vx=0 vy=0 t={time}"
        else:
            yield f"release id={slot} x={x} y={y} {offsets} vx={speed(points, 0)} vy={speed(points, 1)} t={time}"
            del tracks[slot]


if __name__ == "__main__":
    for text in lines(sys.argv[1], int(sys.argv[2]), int(sys.argv[3])):
        print(text)
