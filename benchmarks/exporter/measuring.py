"""Running programs, and what they took."""
import os
import random
import resource
import statistics
import subprocess
import sys
import time
from dataclasses import dataclass


@dataclass
class Sample:
    seconds: float
    # Bytes; of several commands, that of the largest. Never less than this script takes itself,
    # about 20 MB, since a process begins as a part of the one that starts it.
    peak: int
    output: str = ""


def run(commands, folder, environment=None):
    """Runs them one after the other; the first that fails ends the benchmark. `folder` is for
    scratch files, `environment` what is set besides."""
    whole_environment = {**os.environ, **(environment or {})}
    total, peak, text = 0.0, 0, ""
    with open(os.path.join(folder, "output"), "w+b") as output, \
            open(os.path.join(folder, "errors"), "w+b") as errors:
        for command in commands:
            start = time.perf_counter()
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=errors, env=whole_environment)
            try:
                _, status, usage = os.wait4(process.pid, 0)
            except BaseException:  # such as a signal: nothing may write on into the folder
                process.kill()
                process.wait()
                raise
            total += time.perf_counter() - start
            process.returncode = os.waitstatus_to_exitcode(status)
            peak = max(peak, usage.ru_maxrss * 1024)
            if process.returncode != 0:
                errors.seek(0)
                sys.exit(f"exit code {process.returncode} of {' '.join(command)}\n"
                         + errors.read().decode(errors="replace"))
        output.seek(0)
        text = output.read().decode(errors="replace")
    return Sample(total, peak, text)


# A program that took so many times as long as the fastest in the first round needs no more.
PATIENCE = 5


def take_turns(what, rounds, measurements, patience=None):
    """Calls every function of the dictionary once a round, in an order that changes; a list of what
    it returned for each. With `patience` the slow ones sit out after the first round."""
    samples = {name: [] for name in measurements}
    order = list(measurements)
    shuffle = random.Random(1).shuffle
    for i in range(rounds):
        print(f"{what}: round {i + 1} of {rounds}", file=sys.stderr, flush=True)
        shuffle(order)
        for name in order:
            samples[name].append(measurements[name]())
        if patience is not None and i == 0:
            medians = {name: median_seconds(samples[name]) for name in order}
            order = [name for name in order if medians[name] <= patience * min(medians.values())]
    return samples


def paired_ratio(samples, others):
    """The median of the ratios within a round, for the rounds that both have."""
    return statistics.median(one.seconds / other.seconds for one, other in zip(samples, others))


def median_seconds(samples):
    return statistics.median(sample.seconds for sample in samples)


def highest_peak(samples):
    return max(sample.peak for sample in samples)


class Load:
    """Who used the processor since this was made."""

    def __init__(self):
        self.start = self.now()

    @staticmethod
    def now():
        # user, nice, system, idle, iowait, irq, softirq, steal
        with open("/proc/stat", encoding="ascii") as file:
            ticks = [int(field) for field in file.readline().split()[1:9]]
        per_second = os.sysconf("SC_CLK_TCK")
        idle, stolen, total = ticks[3] + ticks[4], ticks[7], sum(ticks)
        own = sum(usage.ru_utime + usage.ru_stime
                  for usage in map(resource.getrusage,
                                   (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)))
        return {"total": total / per_second, "busy": (total - idle - stolen) / per_second,
                "stolen": stolen / per_second, "own": own}

    def text(self):
        now = self.now()
        spent = {name: now[name] - self.start[name] for name in now}
        total = max(spent["total"], 1e-9)
        own = spent["own"] / total
        others = max(0.0, (spent["busy"] - spent["own"]) / total)
        stolen = spent["stolen"] / total
        line = (f"Processor time during the run: the programs measured {own:.0%}, other programs "
                f"{others:.0%}, other virtual machines {stolen:.0%}")
        if others + stolen > 0.1:
            line += ". The machine was shared: the times are too long, by how much is unknown"
        return line.replace("%", " %")
