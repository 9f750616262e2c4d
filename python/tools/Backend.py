"""The build backend: setuptools as the system has it, so that nothing has to be downloaded.

An isolated build sees no packages of the system, and would fetch setuptools and wheel anew.
"""

import sys

for place in ("/usr/lib/python3/dist-packages",):
    if place not in sys.path:
        sys.path.append(place)

from setuptools import build_meta  # noqa: E402
from setuptools.build_meta import *  # noqa: E402,F401,F403


def _nothing(config_settings=None):
    return []


get_requires_for_build_wheel = _nothing
get_requires_for_build_sdist = _nothing
get_requires_for_build_editable = _nothing
prepare_metadata_for_build_wheel = build_meta.prepare_metadata_for_build_wheel
build_wheel = build_meta.build_wheel
