"""Pictures, programs and ways of running them that the reports have in common."""
import argparse
import os
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile

from contenders import ONE_EFFECT, all_peers, write_tables
from measuring import Sample, highest_peak, run

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PHOTOGRAPHS = ["mountains", "friends", "room"]


def sizes_of(smoke):
    if smoke:
        return {1: (120, 90), 12: (160, 120), 24: (200, 150)}
    return {1: (1152, 864), 12: (4000, 3000), 24: (6000, 4000)}


def build(target):
    for command in (["cmake", "--preset", "release", "-DKORVEL_BUILD_BENCHMARKS=ON"],
                    ["cmake", "--build", "--preset", "release", "--target", target]):
        subprocess.run(command, cwd=ROOT, stdout=sys.stderr, check=True)
    return os.path.join(ROOT, "build", "release", "bin")


class Workbench:
    """`folder` is for everything that is made."""

    def __init__(self, folder, bin_folder, smoke):
        self.folder, self.bin_folder, self.smoke = folder, bin_folder, smoke
        self.pictures = self.program("exporter_benchmark_pictures")
        self.sizes = sizes_of(smoke)
        self.folder_count, self.large_folder_count = (6, 4) if smoke else (40, 12)
        self.peers = all_peers(bin_folder, folder)
        write_tables(folder)

    def program(self, name):
        return os.path.join(self.bin_folder, name)

    def path(self, name):
        return os.path.join(self.folder, name)

    def picture(self, megapixels, photograph=PHOTOGRAPHS[0]):
        return self.path(f"{photograph}-{megapixels}mp.jpg")

    def make_pictures(self):
        for megapixels, (width, height) in self.sizes.items():
            for photograph in PHOTOGRAPHS if megapixels > 1 else PHOTOGRAPHS[:1]:
                source = os.path.join(ROOT, "examples", "photographs", photograph + ".jpg")
                run([[self.pictures, "make", source, str(width), str(height),
                      self.picture(megapixels, photograph)]], self.folder)
        self.link_folder("many", self.folder_count, 12)
        self.link_folder("large", self.large_folder_count, 24)

    def link_folder(self, name, count, megapixels):
        os.mkdir(self.path(name))
        for i in range(count):
            source = self.picture(megapixels, PHOTOGRAPHS[i % len(PHOTOGRAPHS)])
            os.link(source, self.path(f"{name}/{i:02}.jpg"))

    def export(self, contender, operation, source):
        return run(contender.commands(operation, source, self.path("target.jpg")), self.folder,
                   contender.environment)

    def export_folder(self, exporter, name):
        """A sample of which the time is that of one picture."""
        out = self.path("out")
        count = len(os.listdir(self.path(name)))
        done = run([exporter.options(ONE_EFFECT)
                    + ["--target-dir=" + out, self.path(name) + "/"]], self.folder)
        if len(os.listdir(out)) != count:
            sys.exit("the folder run left pictures out")
        shutil.rmtree(out)
        return Sample(done.seconds / count, done.peak)

    def export_singly(self, exporter):
        """The pictures of which the folder consists, a process each."""
        samples = [self.export(exporter, ONE_EFFECT, self.picture(12, photograph))
                   for photograph in PHOTOGRAPHS]
        return Sample(statistics.mean(sample.seconds for sample in samples),
                      highest_peak(samples))

    def profile(self, command):
        """The steps that a program prints, by name, in seconds, and what was before and after."""
        done = run([command], self.folder)
        steps = {name: float(milliseconds) / 1000 for milliseconds, name in
                 (line.split(" ", 1) for line in done.output.splitlines())}
        steps["process started and ended"] = done.seconds - sum(steps.values())
        return steps


def median_steps(profiles):
    """Of several results of Workbench.profile()."""
    return {name: statistics.median(profile[name] for profile in profiles)
            for name in profiles[0]}


def positive(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("at least 1")
    return number


def run_report(description, target, rounds, make_report):
    """The main program: make_report(workbench, rounds) prints the report."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--rounds", type=positive, default=rounds)
    parser.add_argument("--smoke", action="store_true")
    parser.add_argument("--bin", help="a folder that holds the programs")
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    bin_folder = os.path.abspath(options.bin) if options.bin else build(target)
    missing = [peer.name for peer in all_peers(bin_folder, "") if peer.program is None]
    if missing:
        print("goes without " + ", ".join(missing) + "; on Debian: apt-get install imagemagick "
              "libvips-tools graphicsmagick libopencv-dev, then build again", file=sys.stderr)
    try:
        with tempfile.TemporaryDirectory(prefix="exporter-benchmark-") as folder:
            make_report(Workbench(folder, bin_folder, options.smoke),
                        1 if options.smoke else options.rounds)
    except KeyboardInterrupt:
        sys.exit(130)
