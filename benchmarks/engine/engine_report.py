"""The report on the engine, in Markdown."""
import statistics
from dataclasses import dataclass

import nanoseconds
import report
from contenders import ONE_EFFECT, OPERATIONS
from measuring import highest_peak, median_seconds, paired_ratio
from workbench import Workbench

FIVE = "the five together"
# The most that the exporter may take of the fastest peer's time, by the set of instructions.
LIMITS = {"avx2": 0.9, "sse2": 1.0}
FIVE_LIMIT = 0.55
MEMORY_LIMIT = 20
SCALING_LIMIT = 1.7
SMALL_LIMIT = 40
VARIANT_LIMIT = 2
FOLDER_LIMIT = 1.6

# The variant that has nothing besides the effect's own properties.
PLAIN = "opaque"


@dataclass
class Figures:
    """What was measured, see the script `run`."""
    bench: Workbench
    rounds: int
    few_rounds: int
    exporters: dict
    single: object
    contenders: list
    comparison: object
    operations: dict
    small: dict
    rate: dict
    profiles: dict
    nanoseconds: dict
    sets: list

    @property
    def used(self):
        return next(iter(self.exporters))

    def samples(self, megapixels, operation, contender):
        return self.operations[megapixels].get((operation, contender.name))

    def fastest_peer(self, megapixels, operation):
        present = [peer for peer in self.bench.peers if peer.program]
        return min(present, default=None, key=lambda peer: median_seconds(
            self.samples(megapixels, operation, peer)))

    def ratio(self, megapixels, operation, instructions, peer):
        if instructions not in self.exporters or peer is None or peer.program is None:
            return None
        return paired_ratio(
            self.samples(megapixels, operation, self.exporters[instructions]),
            self.samples(megapixels, operation, peer))

    def scaling(self, case):
        ways = self.nanoseconds["engine"][case]
        return ways["1"] / ways["2"]


def print_report(figures, load):
    print_heading(figures, load)
    print_targets(figures)
    for megapixels in figures.operations:
        print_times(figures, megapixels)
    print_memory(figures)
    print_small(figures)
    print_folder(figures)
    print_profiles(figures)
    print_nanoseconds(figures)
    print_differences(figures)


def print_heading(figures, load):
    print("""# The engine on the processor, measured

Made by `benchmarks/engine/run > docs/engine-benchmarks.md`, which takes some minutes. What other
programs took of the processor meanwhile is told below: with much of that, trust the ratios more
than the times.
""")
    if figures.bench.smoke:
        print("A smoke run: tiny pictures, once. These figures mean nothing.\n")
    report.machine([next(iter(figures.exporters.values()))] + figures.bench.peers, load)
    print(f"- Sets of instructions: {', '.join(figures.sets)}; the exporter uses {figures.used}")
    report.method(figures.bench.sizes, figures.rounds)
    print("""\
  The libraries that OpenCV needs take long to load, so its time from `main()` on is told, too.
- Other sets of instructions than the exporter's own choice are measured with
  `exporter_benchmark_tool`, which is the exporter with a choice.
""")


def judged(value, limit, at_least=False):
    """A ratio, and by how much it misses its target."""
    if value is None:
        return "-"
    missed = value < limit if at_least else value > limit
    return f"{value:.2f}" + (f", missed by {abs(value - limit) / limit:.0%}".replace("%", " %")
                             if missed else "")


def print_targets(figures):
    print("""## Targets

The exporter's time as a ratio to that of the fastest peer, and what it may be at most.
""")
    others = [name for name in figures.exporters if name not in LIMITS]
    head = ["megapixels", "operation", "fastest peer"]
    head += [f"{name}, at most {limit:g}" for name, limit in LIMITS.items()] + others
    rows = []
    for megapixels in figures.operations:
        for operation in OPERATIONS:
            peer = figures.fastest_peer(megapixels, operation)
            row = [str(megapixels), operation, peer.name if peer else "-"]
            for name in [*LIMITS, *others]:
                row.append(judged(figures.ratio(megapixels, operation, name, peer),
                                  LIMITS.get(name, float("inf"))))
            rows.append(row)
    report.table(head, rows, text_columns=3)
    report.table(["what", "target", "measured", "verdict"], other_targets(figures), text_columns=4)


def other_targets(figures):
    rows = []
    peers = {peer.name: peer for peer in figures.bench.peers}
    for megapixels in figures.operations:
        ratio = figures.ratio(megapixels, FIVE, "avx2", peers["OpenCV"])
        if ratio is not None:
            rows.append(report.target_row(f"{FIVE}, {megapixels} megapixels, avx2, as a ratio to "
                                          "OpenCV", ratio, FIVE_LIMIT))
    for megapixels in figures.operations:
        more = [more_memory(figures, megapixels, operation, peers["libvips"])
                for operation in OPERATIONS]
        if None not in more:
            rows.append(report.target_row(
                f"peak memory beyond that of libvips, {megapixels} megapixels, the worst of the "
                "operations", max(more), MEMORY_LIMIT, unit=" MB"))
    for name, case in (("HSV", "HSV"), ("blur, radius 16", "Blur, radius 16"),
                       (FIVE, "five effects, file to file")):
        rows.append(report.target_row(
            f"{name}: the engine's rate on two threads as a ratio to that on one",
            figures.scaling(case), SCALING_LIMIT, at_least=True))
    for operation in (ONE_EFFECT, FIVE):
        own = figures.exporters[figures.used]
        ratio = paired_ratio(figures.samples(12, operation, figures.single),
                             figures.samples(12, operation, own))
        rows.append(report.target_row(f"{operation}, 12 megapixels, file to file, the same ratio",
                                      ratio, SCALING_LIMIT, at_least=True))
    own = figures.exporters[figures.used]
    rows.append(report.target_row("1 megapixel with one effect, start to finish",
                                  1000 * median_seconds(figures.small[own.name]), SMALL_LIMIT,
                                  unit=" ms"))
    rows.append(report.target_row(
        f"{figures.bench.folder_count} pictures in a folder: rate as a ratio to that of single "
        "exports", paired_ratio(figures.rate["single"], figures.rate["folder"]), FOLDER_LIMIT,
        at_least=True))
    for effect in ("Blur, radius 16", "Sharpen, radius 2"):
        variants = figures.nanoseconds["variant"][effect]
        for name in (slowest(variants, together=False), slowest(variants, together=True)):
            rows.append(report.target_row(f"{effect}: {name}, as a ratio to the plain effect",
                                          variants[name] / variants[PLAIN], VARIANT_LIMIT))
    return rows


def more_memory(figures, megapixels, operation, peer):
    if peer.program is None:
        return None
    own = figures.samples(megapixels, operation, figures.exporters[figures.used])
    return (highest_peak(own)
            - highest_peak(figures.samples(megapixels, operation, peer))) / 1e6


def slowest(variants, together):
    """The slowest of those that have several things besides the effect's own properties, or one."""
    return max((name for name in variants if (", " in name) == together), key=variants.get)


def from_main(samples):
    """What the program has measured itself."""
    return statistics.median(float(sample.output) / 1000 for sample in samples)


def print_times(figures, megapixels):
    print(f"## {megapixels} megapixels, file to file\n")
    present = [contender for contender in figures.contenders if contender.program]
    head = ["operation"]
    for contender in present:
        head.append(contender.name + ", ms")
        if contender.name == "OpenCV":
            head.append("from main(), ms")
    rows = []
    for operation in OPERATIONS:
        row = [operation]
        for contender in present:
            samples = figures.samples(megapixels, operation, contender)
            row.append(report.milliseconds(median_seconds(samples)))
            if contender.name == "OpenCV":
                row.append(report.milliseconds(from_main(samples)))
        rows.append(row)
    report.table(head, rows)


def print_memory(figures):
    for megapixels, samples in figures.operations.items():
        print(f"## Peak memory, {megapixels} megapixels\n")
        report.peaks([contender for contender in figures.contenders if contender.program], samples)


def print_small(figures):
    print(f"## 1 megapixel\n\nStart to finish with one effect, {ONE_EFFECT}.\n")
    report.table(["what", "ms", "MB"],
                 [[name, report.milliseconds(median_seconds(samples)),
                   report.megabytes(highest_peak(samples))]
                  for name, samples in figures.small.items()])


def print_folder(figures):
    own = figures.exporters[figures.used]
    print(f"## A folder\n\n{figures.bench.folder_count} pictures of 12 megapixels with one effect; "
          f"the single exports are of the same\npictures. Rounds: {figures.few_rounds}.\n")
    report.rates(figures.rate)
    print("Peak memory; that of single exports is above.\n")
    report.table(["what", "MB"], [
        [f"{figures.bench.folder_count} pictures of 12 megapixels",
         report.megabytes(highest_peak(figures.rate["folder"]))],
        [f"{figures.bench.large_folder_count} pictures of 24 megapixels",
         report.megabytes(highest_peak(figures.rate["large"]))],
        ["one picture of 24 megapixels",
         report.megabytes(highest_peak(figures.samples(24, ONE_EFFECT, own)))]])


def print_profiles(figures):
    print(f"""\
## Where the time goes

Steps of an export, in milliseconds, by `exporter_engine_profile`, which does one
after the other with whole pictures in between. The exporter does them at the same time, bands of
rows in between: with two threads it cannot be faster than half the sum, nor than start and end,
reading, writing and the longer one of decoding and encoding. Rounds: {figures.few_rounds}.
""")
    steps = [("process started and ended", "start and end"), ("effects read", "effects read"),
             ("file read", "file read"), ("decoded", "decoded"), ("drawn", "drawn, 1 thread"),
             ("encoded", "encoded"), ("written", "written")]
    rows = []
    for (megapixels, operation), profile in figures.profiles.items():
        whole = sum(profile[1].values())
        own = figures.samples(megapixels, operation, figures.exporters[figures.used])
        single = figures.samples(megapixels, operation, figures.single)
        rows.append([str(megapixels), operation] + [report.milliseconds(profile[1][name]) for name, _ in steps]
                    + [report.milliseconds(whole), report.milliseconds(profile[2]["drawn"]),
                       report.milliseconds(median_seconds(single)),
                       report.milliseconds(median_seconds(own))])
    report.table(["megapixels", "operation"] + [title for _, title in steps]
                 + ["sum", "drawn, 2 threads", "exporter, 1 thread", "exporter"], rows,
                 text_columns=2)


def number(value):
    return f"{value:.2f}"


def print_nanoseconds(figures):
    values = figures.nanoseconds
    print(f"""\
## The engine by itself

By `engine_benchmarks` with {figures.used}: nanoseconds a pixel, medians of {nanoseconds.REPETITIONS} runs in random order.
Pictures of 12 megapixels come from memory row by row, and the rows of the result are dropped.
""")
    report.table(["effects", "1 thread", "2 threads", "ratio"],
                 [[case, number(ways["1"]), number(ways["2"]), number(ways["1"] / ways["2"])]
                  for case, ways in values["engine"].items()])
    print("""\
Processor time of one effect on one thread, on 4 megapixels, with what an effect may have besides
its own properties; in brackets the ratio to an opaque picture without any of it.
""")
    effects = list(values["variant"])
    variants = list(values["variant"][effects[0]])
    plain = {effect: values["variant"][effect][PLAIN] for effect in effects}
    report.table(["variant"] + effects,
                 [[variant] + [f"{number(values['variant'][effect][variant])} "
                               f"({number(values['variant'][effect][variant] / plain[effect])})"
                               for effect in effects] for variant in variants])
    print("Processor time of the kernels alone, on rows that stay in the cache, by the set of "
          "instructions.\n")
    report.table(["kernel"] + figures.sets,
                 [[case] + [number(ways[name]) for name in figures.sets]
                  for case, ways in values["kernel"].items()])


def print_differences(figures):
    print("""\
## Results and commands

How far the results differ, on 1 megapixel, as the mean difference in levels of 255. Each program
has its own formula for HSV and sharpening. GraphicsMagick has no table for each channel; it takes
the same one as a Hald table of 64 levels.
""")
    report.differences(figures.contenders, figures.comparison)
    print("Commands, without folders; exporter_benchmark_tool is told its instructions by the "
          "environment\nvariable KORVEL_BENCHMARK_INSTRUCTIONS.\n")
    report.commands(figures.contenders, figures.comparison)
