"""The operations, and for each program the commands that come nearest to them, file to file."""
import json
import math
import os
import shutil
import struct
import subprocess
import zlib

QUALITY = 92

BRIGHTNESS, CONTRAST = 0.1, 0.2
# The exporter's formula: gain * (colour + brightness - 0.5) + 0.5.
GAIN = 1.0159 * (CONTRAST + 1) / (1.0159 - CONTRAST)
OFFSET = GAIN * (BRIGHTNESS - 0.5) + 0.5
BLACK, WHITE = -OFFSET / GAIN, (1 - OFFSET) / GAIN

HUE, SATURATION = 0.3, 0.1  # a hue of 1 is half a turn

BLUR_RADIUS = 16
BLUR_SIGMA = (BLUR_RADIUS + 1) / 3.333333

SHARPEN_RADIUS, STRENGTH = 2, 0.5
SHARPEN_SIGMA = math.sqrt(((2 * SHARPEN_RADIUS + 1) ** 2 - 1) / 12)  # that of the box

TABLE_EXPONENTS = 0.85, 1.0, 1.15  # warmer lights

EFFECTS = {
    "brightness/contrast": {"effectId": "ko.orvanto.imageeffect.BrightnessContrast",
                            "brightness": BRIGHTNESS, "contrast": CONTRAST},
    "HSV": {"effectId": "ko.orvanto.imageeffect.HSV", "hue": HUE, "saturation": SATURATION},
    "blur, radius 16": {"effectId": "ko.orvanto.imageeffect.Blur", "radius": BLUR_RADIUS},
    "sharpen": {"effectId": "ko.orvanto.imageeffect.Sharpen", "radius": SHARPEN_RADIUS,
                "strength": STRENGTH},
    "table": {"effectId": "ko.orvanto.imageeffect.LUT", "table": "table.png"},
}
ONE_EFFECT = "brightness/contrast"
# To the names of the effects that it takes.
OPERATIONS = {"copy": [], **{name: [name] for name in EFFECTS},
              "the five together": list(EFFECTS)}


def write_tables(folder):
    """Every form in which one of the programs wants a table, and the stacks."""
    levels = [bytes(round(255 * (level / 255) ** exponent) for exponent in TABLE_EXPONENTS)
              for level in range(256)]

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    def write(name, data):
        with open(os.path.join(folder, name), "wb") as file:
            file.write(data)

    write("table.png", b"\x89PNG\r\n\x1a\n"
          + chunk(b"IHDR", struct.pack(">IIBBBBB", 256, 1, 8, 2, 0, 0, 0))
          + chunk(b"IDAT", zlib.compress(b"\0" + b"".join(levels))) + chunk(b"IEND", b""))
    steps = 64
    red, green, blue = ([round(255 * (i / (steps - 1)) ** exponent) for i in range(steps)]
                        for exponent in TABLE_EXPONENTS)
    write("hald.ppm", b"P6\n512 512\n255\n"
          + bytes(level for b in blue for g in green for r in red for level in (r, g, b)))
    for operation in OPERATIONS:
        stack = [EFFECTS[name] for name in OPERATIONS[operation]]
        write(stack_name(operation), json.dumps(stack).encode())


def stack_name(operation):
    return operation.replace("/", "-").replace(",", "").replace(" ", "-") + ".json"


def first_line(command):
    try:
        done = subprocess.run(command, capture_output=True, text=True, errors="replace",
                              check=False)
        return ((done.stdout + done.stderr).splitlines() or ["unknown"])[0].strip()
    except OSError:
        return "unknown"


class Contender:
    """`program` is None where it is not installed; `folder` holds what write_tables() wrote."""

    environment = {}

    def __init__(self, name, program, folder):
        self.name, self.program, self.folder = name, program, folder

    def path(self, name):
        return os.path.join(self.folder, name)

    def version(self):
        return first_line([self.program, "--version"])


class Exporter(Contender):
    """`arguments` say how it works; `instructions` are the set that exporter_benchmark_tool is to
    use."""

    def __init__(self, name, program, folder, arguments, instructions=None):
        super().__init__(name, program, folder)
        self.arguments = arguments
        if instructions:
            self.environment = {"KORVEL_BENCHMARK_INSTRUCTIONS": instructions}

    def options(self, operation):
        return [self.program] + self.arguments + ["--effects=" + self.path(stack_name(operation))]

    def commands(self, operation, source, target):
        return [self.options(operation) + ["--source=" + source, "--target=" + target]]


class Magick(Contender):
    """ImageMagick and GraphicsMagick, which parted when most of this was there already."""

    def __init__(self, name, program, folder, first, level, table):
        super().__init__(name, program, folder)
        self.start = [program] + first
        self.version_arguments = ["version"] if first else ["-version"]
        self.steps = {
            "brightness/contrast": ["-level", level],
            "HSV": ["-modulate", f"100,{100 * (1 + SATURATION):g},{100 * (1 + HUE):g}"],
            "blur, radius 16": ["-blur", f"{BLUR_RADIUS}x{BLUR_SIGMA:g}"],
            "sharpen": ["-unsharp", f"{SHARPEN_RADIUS}x{SHARPEN_SIGMA:g}+{STRENGTH:g}+0"],
            "table": table,
        }

    def version(self):
        return first_line([self.program] + self.version_arguments).removeprefix("Version: ")

    def commands(self, operation, source, target):
        steps = [word for name in OPERATIONS[operation] for word in self.steps[name]]
        return [self.start + [source] + steps
                + ["-sampling-factor", "2x2", "-quality", str(QUALITY),
                   "-define", "jpeg:optimize-coding=false", target]]


class Library(Contender):
    """A program of the benchmark's own, see PeerSteps.h."""

    def commands(self, operation, source, target):
        steps = {
            "brightness/contrast": f"linear:{GAIN:.6g}:{255 * OFFSET:.6g}",
            "HSV": f"hsv:{HUE / 2:g}:{1 + SATURATION:g}",
            "blur, radius 16": f"blur:{BLUR_RADIUS}:{BLUR_SIGMA:.6g}",
            "sharpen": f"sharpen:{SHARPEN_RADIUS}:{STRENGTH:g}",
            "table": "table:" + self.path("table.png"),
        }
        return [[self.program, source, target] + [steps[name] for name in OPERATIONS[operation]]]


def all_peers(bin_folder, folder):
    """Those beside which the exporter is measured, installed or not."""
    def own(name):
        return shutil.which(os.path.join(bin_folder, name))

    # Debian's name, behind which nothing else can stand.
    convert = shutil.which("convert-im6.q16") or shutil.which("convert")
    black, white = f"{100 * BLACK:.2f}%", f"{100 * WHITE:.2f}%"
    return [
        Library("OpenCV", own("exporter_benchmark_opencv"), folder),
        Library("libvips", own("exporter_benchmark_vips"), folder),
        Magick("GraphicsMagick", shutil.which("gm"), folder, ["convert"], f"{black},1,{white}",
               ["-hald-clut", os.path.join(folder, "hald.ppm")]),
        Magick("ImageMagick", convert, folder, [], f"{black},{white},1",
               [os.path.join(folder, "table.png"), "-clut"]),
    ]
