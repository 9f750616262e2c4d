"""The examples run, and what they leave is what they promise."""

import subprocess
import sys
from pathlib import Path

import numpy
import pytest

import ZxCore3D as zx

EXAMPLES = Path(__file__).resolve().parent.parent / "examples"


def run(name, *arguments):
    subprocess.run([sys.executable, EXAMPLES / name, *map(str, arguments)], check=True, timeout=120)


def test_thumbnail(tmp_path):
    run("thumbnail.py", tmp_path / "t.png")
    picture = zx.LoadImage(tmp_path / "t.png").Data
    assert picture.shape == (256, 256, 4)
    background = (picture[:, :, :3] == [237, 240, 245]).all(axis=2)
    # A ring: background at the edges and through its hole, and something about it.
    assert background[0].all() and background[-1].all()
    assert background[128, 128] and not background[128, 40] and not background[128, 215]


def test_turntable(tmp_path):
    run("turntable.py", tmp_path / "t.npz", 4)
    data = numpy.load(tmp_path / "t.npz")
    depth, ids = data["depth"], data["ids"]
    assert depth.shape == ids.shape == (4, 120, 160) and data["rgb"].shape == (4, 120, 160, 3)
    assert set(numpy.unique(ids)) == {0, 1, 2, 3}
    assert (numpy.isinf(depth) == (ids == 0)).all()
    assert (depth[ids > 0] > 1).all() and (depth[ids > 0] < 12).all()
    # The floor is a plane: seen through the camera its points lie at height 0.
    for n in range(4):
        rows, columns = numpy.nonzero(ids[n] == 1)
        z = depth[n, rows, columns].astype(float)
        eye = numpy.stack([((columns + 0.5) / 160 * 0.8 - 0.4) * z,
                           ((rows + 0.5) / 120 * 0.6 - 0.3) * z, -z, numpy.ones(len(z))])
        height = (numpy.linalg.inv(data["modelview"][n]) @ eye)[2]
        assert numpy.abs(height).max() < 0.06
    assert (ids[0] != ids[1]).any()


def test_homography(tmp_path):
    run("homography.py", tmp_path / "h.png")
    picture = zx.LoadImage(tmp_path / "h.png").Data
    assert picture.shape == (240, 560, 4)
    straight = picture[:, 320:]
    for y in range(8):
        for x in range(8):
            cell = straight[y * 30 + 10:y * 30 + 20, x * 30 + 10:x * 30 + 20, 0]
            shade = 255 * (0.9 if (x + y) % 2 else 0.35)
            assert (numpy.abs(cell - shade) < 1).all()


@pytest.mark.parametrize("name", ["thumbnail.py", "turntable.py", "homography.py"])
def test_examples_are_short(name):
    assert len((EXAMPLES / name).read_text().splitlines()) < 110
