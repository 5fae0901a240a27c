"""The engine by itself, measured by engine_benchmarks."""
import json
import statistics
import subprocess
import sys

REPETITIONS = 5


def measure(program, smoke):
    """Nanoseconds a pixel, medians, by kind of benchmark, case and what it was done with: a set of
    instructions, a number of threads or a variant of an effect. A dictionary of dictionaries."""
    print("the engine by itself", file=sys.stderr, flush=True)
    options = ["--smoke", "--benchmark_min_time=0"] if smoke else [
        "--benchmark_min_time=0.01", f"--benchmark_repetitions={REPETITIONS}",
        "--benchmark_enable_random_interleaving=true"]
    done = subprocess.run([program, "--benchmark_format=json"] + options, stdout=subprocess.PIPE,
                          check=True)
    values = {}
    # In random order, but numbered as they were registered.
    for result in sorted(json.loads(done.stdout)["benchmarks"],
                         key=lambda result: result["family_index"]):
        if result["run_type"] == "iteration":
            kind, case, way = result["name"].split("/")[:3]
            values.setdefault(kind, {}).setdefault(case, {}).setdefault(way, []).append(
                1e9 / result["items_per_second"])
    return {kind: {case: {way: statistics.median(samples) for way, samples in ways.items()}
                   for case, ways in cases.items()} for kind, cases in values.items()}
