"""Whether what the programs wrote is the same kind of file and nearly the same picture: only then
their times can be compared."""
import os
import struct
import sys

from contenders import OPERATIONS
from measuring import run


def jpeg_traits(name):
    """What decides how much work a JPEG is to write."""
    with open(name, "rb") as file:
        data = file.read()
    if data[:2] != b"\xff\xd8" or data[-2:] != b"\xff\xd9":
        sys.exit(f"{name} is no complete JPEG")
    frame, quantisation, huffman = None, {}, {}
    at = 2
    while data[at + 1] != 0xDA:
        marker, length = data[at + 1], struct.unpack(">H", data[at + 2:at + 4])[0]
        body = data[at + 4:at + 2 + length]
        at += 2 + length
        if marker == 0xDB:
            while body:
                size = 65 if body[0] < 16 else 129
                quantisation[body[0]], body = body[1:size], body[size:]
        elif marker == 0xC4:
            while body:
                size = 17 + sum(body[1:17])
                huffman[body[0]], body = body[1:size], body[size:]
        elif marker in (0xC0, 0xC1, 0xC2):
            height, width, channels = struct.unpack(">HHB", body[1:6])
            frame = marker, width, height, [body[7 + 3 * i] for i in range(channels)]
    return {"kind, size and sampling": frame, "quantisation": quantisation,
            "Huffman tables": huffman}


class Comparison:
    """Everything once on one picture, which warms the caches, too."""

    def __init__(self, contenders, pictures_program, source, folder):
        self.changes = {}  # by operation: from the source, by the exporter
        self.differences = {}  # by operation and contender: from the exporter's result
        self.commands = {}  # by operation and contender
        self.pictures_program, self.folder = pictures_program, folder
        for operation in OPERATIONS:
            targets = {}
            for contender in contenders:
                target = os.path.join(folder, contender.name.replace(", ", "-") + ".jpg")
                commands = contender.commands(operation, source, target)
                run(commands, folder, contender.environment)
                targets[contender.name] = target
                self.commands[operation, contender.name] = commands
            self.compare(operation, source, targets)

    def compare(self, operation, source, targets):
        exporter, *peers = targets
        change = self.difference(source, targets[exporter])
        self.changes[operation] = change
        expected = jpeg_traits(targets[exporter])
        # Formulas differ, those of HSV and sharpening the most. A picture with the effect left out
        # would be as far away as the change.
        limit = 0.75 * change if OPERATIONS[operation] else 0.5
        if bool(OPERATIONS[operation]) != (change > 0.5):
            sys.exit(f"{operation}: the exporter changed the picture by {change} levels")
        for peer in peers:
            for trait, value in jpeg_traits(targets[peer]).items():
                if value != expected[trait]:
                    sys.exit(f"{operation}: {peer} writes other {trait}: {value}, "
                             f"not {expected[trait]}")
            difference = self.difference(targets[exporter], targets[peer])
            if difference > limit:
                sys.exit(f"{operation}: the result of {peer} is {difference} levels from the "
                         "exporter's")
            self.differences[operation, peer] = difference

    def difference(self, one, other):
        return float(run([[self.pictures_program, "difference", one, other]], self.folder).output)
