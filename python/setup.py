"""Builds the library and the module with CMake and puts both into the package."""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
VERSION = re.search(r"project\(ZxCore3D VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())


class CMakeBuild(build_ext):
    def get_source_files(self):
        return []

    def build_extension(self, ext):
        build = ROOT / "build" / "python"
        package = Path(self.get_ext_fullpath(ext.name)).resolve().parent
        jobs = os.environ.get("JOBS") or str(os.cpu_count() or 1)
        subprocess.run(
            ["cmake", "-S", ROOT, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
             "-DZX_BUILD_TESTS=OFF", "-DZX_BUILD_TOOLS=OFF", "-DZX_BUILD_PYTHON=ON",
             "-DZX_PYTHON_INSTALL_DIR=.", f"-DPython_EXECUTABLE={sys.executable}"], check=True)
        subprocess.run(["cmake", "--build", build, "-j", jobs], check=True)
        stage = build / "stage"
        subprocess.run(["cmake", "--install", build, "--strip", "--prefix", stage], check=True)
        package.mkdir(parents=True, exist_ok=True)
        for module in (stage / "ZxCore3D").glob("_ZxCore3D*.so"):
            shutil.copy2(module, self.get_ext_fullpath(ext.name))
        # The libraries travel with the module, which looks for them beside itself.
        for library in stage.glob("lib/**/lib*.so.1"):
            shutil.copy2(library, package / library.name)


setup(
    version=VERSION.group(1),
    packages=["ZxCore3D"],
    package_data={"ZxCore3D": ["*.pyi", "py.typed"]},
    ext_modules=[Extension("ZxCore3D._ZxCore3D", [])],
    cmdclass={"build_ext": CMakeBuild},
)
