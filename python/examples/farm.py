"""Draws a turntable, or a list of models, on many processes or machines with Dask.

    farm.py MODEL --frames 500 --out DIR --workers 4          scheduler and workers on this machine
    farm.py --list FILE --out DIR --scheduler tcp://HOST:8786 on the cluster at hand
    farm.py MODEL --frames 100 --out DIR --scaling 1,2,4      a table of time against workers

Each picture is one task, which runs `zxrender` in a process of its own. A task that fails is tried
again, and what a dying worker had is drawn by another. DIR receives the pictures, `digests.json` with
the SHA-256 of each, and a contact sheet.
"""

import argparse
import hashlib
import json
import os
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy
from distributed import Client, as_completed

import ZxCore3D as zx

RETRIES = 3


def draw(program, model, size, azimuth):
    """One picture, on a worker: its bytes, their digest, and the seconds it took."""
    begin = time.perf_counter()
    with tempfile.TemporaryDirectory() as place:
        out = Path(place) / "picture.png"
        done = subprocess.run([program, model, "-o", out, "-s", size, "-c", f"{azimuth:.6f},20"],
                              capture_output=True, text=True, timeout=600)
        if done.returncode != 0:
            raise RuntimeError(done.stderr.strip() or f"{program} ended with {done.returncode}")
        data = out.read_bytes()
    return data, hashlib.sha256(data).hexdigest(), time.perf_counter() - begin


# Scheduler and workers get the task itself: they need zxrender, and not this file. What belongs to the main program
# is sent by value; a module registered for that is not seen by newer versions of Dask where tasks are nested.
draw.__module__ = "__main__"


class Cluster:
    """A scheduler and workers of one task each, as processes on the loopback address."""

    def __init__(self, workers):
        self.Place = tempfile.TemporaryDirectory()
        note = str(Path(self.Place.name) / "scheduler.json")
        self.Scheduler = self._start("dask_scheduler", "--host", "127.0.0.1", "--port", "0",
                                     "--no-dashboard", "--scheduler-file", note)
        while not Path(note).exists():
            if self.Scheduler.poll() is not None:
                raise RuntimeError("the scheduler did not start")
            time.sleep(0.05)
        self.Workers = [self._start("dask_worker", "--scheduler-file", note, "--nworkers", "1",
                                    "--nthreads", "1", "--no-nanny", "--no-dashboard",
                                    "--host", "127.0.0.1", "--local-directory", self.Place.name)
                        for _ in range(workers)]
        self.Client = Client(scheduler_file=note, timeout=60)
        self.Client.wait_for_workers(workers, timeout=120)

    def _start(self, command, *arguments):
        return subprocess.Popen([sys.executable, "-m", f"distributed.cli.{command}", *arguments],
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.Client.close()
        for process in [*self.Workers, self.Scheduler]:
            process.send_signal(signal.SIGTERM)
        for process in [*self.Workers, self.Scheduler]:
            try:
                process.wait(20)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self.Place.cleanup()


def bar(done, total):
    if sys.stderr.isatty():
        filled = 40 * done // total
        print(f"\r[{'#' * filled}{'.' * (40 - filled)}] {done}/{total}", end="", file=sys.stderr,
              flush=True)


def run(client, tasks, program, size, finished=lambda name: None):
    """Draws all tasks: a dictionary of name to (bytes, digest, seconds), and one of failures."""
    futures = {client.submit(draw, program, str(model), size, azimuth, key=f"{name}-{time.time_ns()}",
                             retries=RETRIES, pure=False): name
               for name, (model, azimuth) in tasks.items()}
    results, failures = {}, {}
    for count, future in enumerate(as_completed(list(futures)), 1):
        name = futures.pop(future)
        error = future.exception()
        if error is None:
            results[name] = future.result()
        else:
            failures[name] = str(error)
        future.release()
        finished(name)
        bar(count, len(tasks))
    return results, failures


def contact_sheet(pictures, columns=10, edge=96):
    """All pictures side by side, the first one at the top left."""
    rows = -(-len(pictures) // columns)
    sheet = numpy.full((rows * edge, columns * edge, 3), 255, numpy.uint8)
    for n, data in enumerate(pictures):
        stream = zx.TMemoryStream()
        stream.WriteAll(data)
        stream.SetPos(0)
        picture = zx.LoadImage(stream).Data[:, :, :3]
        step = -(-max(picture.shape[:2]) // edge)
        height, width = picture.shape[0] // step, picture.shape[1] // step
        blocks = picture[:height * step, :width * step].reshape(height, step, width, step, 3)
        small = numpy.rint(blocks.mean(axis=(1, 3)))
        bottom, left = (rows - 1 - n // columns) * edge, n % columns * edge
        sheet[bottom:bottom + height, left:left + width] = small
    return sheet


def tasks_of(options):
    if options.list:
        lines = Path(options.list).read_bytes().split(b"\n")  # as zxrender --list reads them
        models = [os.fsdecode(line.removesuffix(b"\r")) for line in lines]
        models = [model for model in models if model and not model.startswith("#")]
        return {f"{n:04d}_{Path(model).stem}": (Path(model).absolute(), 30.0)
                for n, model in enumerate(models)}
    model = Path(options.model).absolute()
    return {f"{model.stem}_{n:04d}": (model, 360 * n / options.frames) for n in range(options.frames)}


def write(out, results):
    out.mkdir(parents=True, exist_ok=True)
    names = sorted(results)
    for name in names:
        (out / f"{name}.png").write_bytes(results[name][0])
    digests = {name: results[name][1] for name in names}
    (out / "digests.json").write_text(json.dumps(digests, indent=1) + "\n")
    return zx.SaveImage(out / "contact_sheet.png", contact_sheet([results[n][0] for n in names]))


def scaling(options, tasks):
    first = None
    print("| workers | seconds | pictures a second | speed-up |\n|---|---|---|---|")
    for count in map(int, options.scaling.split(",")):
        with Cluster(count) as cluster:
            begin = time.perf_counter()
            run(cluster.Client, tasks, options.program, options.size)
            seconds = time.perf_counter() - begin
        first = first or seconds
        print(f"| {count} | {seconds:.1f} | {len(tasks) / seconds:.1f} | {first / seconds:.2f} |")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("model", nargs="?")
    parser.add_argument("--list", help="a file with a model's name on each line")
    parser.add_argument("--frames", type=int, default=500)
    parser.add_argument("--size", default="320x240")
    parser.add_argument("--out", default="farm-out")
    parser.add_argument("--workers", type=int, default=os.cpu_count() or 1)
    parser.add_argument("--scheduler", help="the address of a running scheduler")
    parser.add_argument("--scaling", help="numbers of workers to take the time with")
    parser.add_argument("--program", default="zxrender")
    options = parser.parse_args()
    if bool(options.model) == bool(options.list):
        parser.error("give a model or a list of models")
    tasks = tasks_of(options)
    if options.scaling:
        scaling(options, tasks)
        return 0
    if options.scheduler:
        with Client(options.scheduler) as client:
            results, failures = run(client, tasks, options.program, options.size)
    else:
        with Cluster(options.workers) as cluster:
            results, failures = run(cluster.Client, tasks, options.program, options.size)
    for name, error in sorted(failures.items()):
        print(f"{name}: {error}", file=sys.stderr)
    if results:
        write(Path(options.out), results)
    print(f"\n{len(results)} pictures in {options.out}, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
