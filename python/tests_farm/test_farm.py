"""The farm with a real scheduler and real workers: an accident in the middle changes no picture.

The environment names the program (`ZX_RENDER`) and the model (`ZX_MODEL`).
"""

import json
import os
import subprocess
import sys
from pathlib import Path

import numpy
import pytest

EXAMPLES = Path(__file__).resolve().parent.parent / "examples"
sys.path.insert(0, str(EXAMPLES))

import farm  # noqa: E402

import ZxCore3D as zx  # noqa: E402

PROGRAM = os.environ.get("ZX_RENDER", "zxrender")
MODEL = os.environ.get("ZX_MODEL", "/usr/share/assimp/models/Collada/duck.dae")
FRAMES = 24
TASKS = {f"frame_{n:02d}": (MODEL, 360 * n / FRAMES) for n in range(FRAMES)}


@pytest.fixture(scope="module")
def undisturbed():
    with farm.Cluster(1) as cluster:
        results, failures = farm.run(cluster.Client, TASKS, PROGRAM, "96x72")
    assert not failures
    return results


def test_an_accident_changes_no_picture(undisturbed):
    seen = []
    with farm.Cluster(2) as cluster:
        def accident(name):
            seen.append(name)
            if len(seen) == FRAMES // 3:
                cluster.Workers[0].kill()
                cluster.Workers[0].wait()
        results, failures = farm.run(cluster.Client, TASKS, PROGRAM, "96x72", accident)
        assert cluster.Workers[0].returncode == -9 and cluster.Workers[1].poll() is None
        assert len(cluster.Client.scheduler_info()["workers"]) == 1
    assert not failures and sorted(results) == sorted(TASKS)
    for name, (data, digest, _) in results.items():
        assert data == undisturbed[name][0]
        assert digest == undisturbed[name][1]
    assert len({digest for _, digest, _ in results.values()}) == FRAMES, "no frame is another's"


def test_what_is_written(undisturbed, tmp_path):
    assert farm.write(tmp_path, undisturbed)
    digests = json.loads((tmp_path / "digests.json").read_text())
    assert sorted(digests) == sorted(TASKS)
    for name in TASKS:
        assert (tmp_path / f"{name}.png").read_bytes() == undisturbed[name][0]
    sheet = zx.LoadImage(tmp_path / "contact_sheet.png").Data
    assert sheet.shape == (3 * 96, 960, 3)
    first = zx.LoadImage(tmp_path / "frame_00.png").Data
    assert (sheet[2 * 96:2 * 96 + 72, :96] == first[:, :, :3]).all(), "at the top left"
    assert (sheet[:96, 4 * 96:] == 255).all(), "nothing behind the last of 24"


def test_the_sheet_shows_averages(tmp_path):
    stripes = numpy.zeros((4, 192, 3), numpy.uint8)  # columns of 200 and 0, twice as wide as a field
    stripes[:, ::2] = 200
    assert zx.SaveImage(tmp_path / "stripes.png", stripes)
    sheet = farm.contact_sheet([(tmp_path / "stripes.png").read_bytes()], columns=1, edge=96)
    assert sheet.shape == (96, 96, 3)
    assert (sheet[:2] == 100).all() and (sheet[2:] == 255).all()


def test_the_cluster_at_hand_takes_tasks(undisturbed, tmp_path):
    with farm.Cluster(1) as cluster:
        address = cluster.Client.scheduler.address
        done = subprocess.run([sys.executable, EXAMPLES / "farm.py", MODEL, "--frames", "3",
                               "--out", tmp_path / "out", "--scheduler", address,
                               "--program", PROGRAM, "--size", "96x72"],
                              capture_output=True, text=True, timeout=300)
        assert done.returncode == 0, done.stderr
        assert "3 pictures" in done.stdout and "0 failures" in done.stdout
        assert len(cluster.Client.scheduler_info()["workers"]) == 1, "it is left as it was"
    # Frame 1 of 3 is frame 8 of 24: 120 degrees.
    stem = Path(MODEL).stem
    assert (tmp_path / "out" / f"{stem}_0001.png").read_bytes() == undisturbed["frame_08"][0]


def test_the_table_of_time():
    done = subprocess.run([sys.executable, EXAMPLES / "farm.py", MODEL, "--frames", "2",
                           "--scaling", "2,1", "--program", PROGRAM, "--size", "32x32"],
                          capture_output=True, text=True, timeout=300)
    assert done.returncode == 0, done.stderr
    head, line, *rows = done.stdout.splitlines()
    assert head == "| workers | seconds | pictures a second | speed-up |" and len(rows) == 2
    cells = [row.strip("| ").split(" | ") for row in rows]
    assert [row[0] for row in cells] == ["2", "1"] and cells[0][3] == "1.00"


def test_the_bar_is_for_terminals(capsys, monkeypatch):
    farm.bar(3, 4)
    assert capsys.readouterr() == ("", "")
    monkeypatch.setattr(sys.stderr, "isatty", lambda: True)
    farm.bar(3, 4)
    assert capsys.readouterr().err == f"\r[{'#' * 30}{'.' * 10}] 3/4"


def test_one_bad_model_does_not_stop_the_others(tmp_path):
    (tmp_path / "bad.obj").write_text("no model")
    # The form of zxrender's lists: comments, empty lines, line ends of either kind.
    (tmp_path / "list").write_bytes(
        f"# models\n\n{MODEL}\r\n{tmp_path / 'bad.obj'}\n{MODEL}".encode())
    done = subprocess.run([sys.executable, EXAMPLES / "farm.py", "--list", tmp_path / "list",
                           "--out", tmp_path / "out", "--workers", "2", "--program", PROGRAM,
                           "--size", "64x64"], capture_output=True, text=True, timeout=300)
    assert done.returncode == 1
    assert "2 pictures" in done.stdout and "1 failures" in done.stdout
    assert "0001_bad:" in done.stderr
    assert len(list((tmp_path / "out").glob("0*.png"))) == 2
