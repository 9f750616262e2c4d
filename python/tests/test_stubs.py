"""The stubs are those of the module as it stands, and hold the examples against it."""

import subprocess
import sys
from pathlib import Path

import pytest

import ZxCore3D

ROOT = Path(__file__).resolve().parent.parent
STUBS = ROOT / "ZxCore3D" / "__init__.pyi"


def test_the_stubs_are_of_this_module(tmp_path):
    subprocess.run([sys.executable, ROOT / "tools" / "MakeStubs.py", tmp_path / "stubs"], check=True)
    assert (tmp_path / "stubs").read_text() == STUBS.read_text(), \
        "run python/tools/MakeStubs.py python/ZxCore3D/__init__.pyi"


def test_the_stubs_are_installed_with_the_module():
    place = Path(ZxCore3D.__file__).parent
    assert (place / "__init__.pyi").read_text() == STUBS.read_text()
    assert (place / "py.typed").exists()


def test_a_type_checker_takes_the_examples(tmp_path):
    pytest.importorskip("mypy")
    (tmp_path / "wrong.py").write_text("import ZxCore3D as zx\nzx.TRenderCPU().Create('a', 1)\n")
    command = [sys.executable, "-m", "mypy", "--no-error-summary", "--cache-dir", str(tmp_path),
               "--ignore-missing-imports", "--python-executable", sys.executable]
    environment = {"MYPYPATH": str(ROOT), "PATH": "/usr/bin:/bin"}
    good = subprocess.run(command + sorted(map(str, (ROOT / "examples").glob("*.py"))),
                          env=environment, capture_output=True, text=True)
    assert good.returncode == 0, good.stdout
    wrong = subprocess.run(command + [str(tmp_path / "wrong.py")], env=environment,
                           capture_output=True, text=True)
    assert 'incompatible type "str"; expected "int"' in wrong.stdout
