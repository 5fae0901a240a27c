"""The tables, in Markdown."""
import os
import platform
import re

from contenders import OPERATIONS, first_line
from measuring import PATIENCE, highest_peak, median_seconds, paired_ratio


def milliseconds(seconds):
    return f"{1000 * seconds:.0f}" if seconds >= 0.0995 else f"{1000 * seconds:.1f}"


def megabytes(size):
    return f"{size / 1e6:.0f}"


def table(head, rows, text_columns=1):
    print("| " + " | ".join(head) + " |")
    print("| " + " | ".join("---" if i < text_columns else "---:" for i in range(len(head))) + " |")
    for row in rows:
        print("| " + " | ".join(row) + " |")
    print()


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        names = [line.split(": ", 1)[1].strip() for line in file if line.startswith("model name")]
    return f"{(names or [platform.machine()])[0]}, {os.cpu_count()} cores"


def system():
    name = "Linux"
    try:
        name = platform.freedesktop_os_release().get("PRETTY_NAME", name)
    except OSError:
        pass
    return name


def package_version(name):
    return first_line(["dpkg-query", "-W", "-f", "${Version}", name])


def machine(contenders, load):
    print(f"- Processor: {processor()}")
    print(f"- System: {system()}")
    print(f"- {load}")
    for contender in contenders:
        version = contender.version() if contender.program else f"{contender.name}: not installed"
        print(f"- {version}")
    libraries = {"libjpeg-turbo": "libjpeg62-turbo", "Qt": "libqt5core5a",
                 "Mesa": "libgl1-mesa-dri"}
    print("- Libraries of the exporter: " + ", ".join(f"{name} {package_version(package)}"
                                      for name, package in libraries.items()))


def method(sizes, rounds):
    """How it was measured; more points may follow."""
    print("- Pictures: the example photographs scaled to "
          + ", ".join(f"{width} x {height}" for width, height in sizes.values()) + ",")
    print(f"""\
  with grain of 4 levels up and down, JPEG of quality 92 with halved chroma
- Rounds: {rounds}, in which the programs take turns in a changing order; those that took more than
  {PATIENCE} times as long as the fastest in the first round sit out the others. Every time is the
  median, every ratio of programs the median of those within a round, every peak the highest. Times
  are those of whole processes, from start to exit, file to file; caches are warm. MB are millions of
  bytes.
- Every program uses as many threads as it does when nobody tells it, and writes baseline JPEG of
  quality 92 with halved chroma and the standard Huffman tables; that these are the same is checked
  in the files. ImageMagick and GraphicsMagick hold 16 bits a channel, the others 8.
- OpenCV and libvips are small programs that use the library as one would for speed,
  `exporter_benchmark_opencv` and `exporter_benchmark_vips`. To build the first one takes Debian's
  libopencv-dev, which is large and needed for nothing else.""")


def target_row(what, measured, limit, at_least=False, unit=""):
    missed = measured < limit if at_least else measured > limit
    verdict = f"missed by {abs(measured - limit) / limit * 100:.1f} %" if missed else "met"
    bound = "at least" if at_least else "at most"
    number = f"{measured:.0f}" if measured >= 100 else f"{measured:.2f}"
    return [what, f"{bound} {limit:g}{unit}", number + unit, verdict]


def cells_beside(own, other):
    """The time of another program, and the ratio of that to one's own."""
    if not other:
        return ["-", "-"]
    return [milliseconds(median_seconds(other)), f"{paired_ratio(other, own):.2f}"]


def times(contenders, samples):
    """One row an operation: the exporter's time, then those of its peers with the ratio."""
    exporter, *peers = [contender.name for contender in contenders]
    head = ["operation", exporter + ", ms"]
    for peer in peers:
        head += [peer + ", ms", "ratio"]
    rows = []
    for operation in OPERATIONS:
        own = samples[operation, exporter]
        row = [operation, milliseconds(median_seconds(own))]
        for peer in peers:
            row += cells_beside(own, samples.get((operation, peer)))
        rows.append(row)
    table(head, rows)


def peaks(contenders, samples):
    names = [contender.name for contender in contenders]
    rows = [[operation] + [megabytes(highest_peak(samples[operation, name]))
                           if (operation, name) in samples else "-" for name in names]
            for operation in OPERATIONS]
    table(["operation"] + [name + ", MB" for name in names], rows)


def differences(contenders, comparison):
    exporter, *peers = [contender.name for contender in contenders]
    rows = []
    for operation in OPERATIONS:
        row = [operation, f"{comparison.changes[operation]:.2f}"]
        for peer in peers:
            difference = comparison.differences.get((operation, peer))
            row.append("-" if difference is None else f"{difference:.2f}")
        rows.append(row)
    table(["operation", f"{exporter}, from the source"]
          + [f"{peer}, from {exporter}" for peer in peers], rows)


def commands(contenders, comparison):
    for operation in OPERATIONS:
        print(f"    # {operation}")
        for contender in contenders:
            for command in comparison.commands.get((operation, contender.name), []):
                words = [strip_folder(word) for word in command]
                print("    " + " ".join(words))
        print()


def strip_folder(word):
    """Names without their folders, and so without where the temporary one was."""
    option, name = re.fullmatch(r"((?:--[a-z-]+=|[a-z]+:)?)(.*)", word).groups()
    return option + os.path.basename(name) if name.startswith("/") else word


def steps(medians, yardstick):
    """Of a profile by Workbench.profile(), or of several."""
    table(["step", "ms", "ratio to libjpeg-turbo"],
          [[name, milliseconds(seconds), f"{seconds / yardstick:.2f}"]
           for name, seconds in medians.items()])


def rates(samples):
    table(["what", "ms a picture", "pictures a second"],
          [[name, milliseconds(median_seconds(samples[key])),
            f"{1 / median_seconds(samples[key]):.2f}"]
           for name, key in (("a process for each", "single"),
                             ("one process for the folder", "folder"))])


def memory(contenders, samples):
    table(["what", "MB"],
          [[contender.name, megabytes(highest_peak(samples[contender.name]))
            if contender.name in samples else "-"] for contender in contenders]
          + [[contenders[0].name + ", a folder", megabytes(highest_peak(samples["folder"]))]])
