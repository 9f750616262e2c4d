"""ZxCore3D: a software renderer, image files, attributes and streams, numerics and geometry."""

from . import _ZxCore3D

__doc__ = _ZxCore3D.__doc__
__version__ = _ZxCore3D.__version__

globals().update({name: value for name, value in vars(_ZxCore3D).items()
                  if not name.startswith("__")})
del globals()["_ZxCore3D"]
