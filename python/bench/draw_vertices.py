"""Draws 100,000 vertices from NumPy, and the same from C++ in turns; prints the ratio of the times.

    draw_vertices.py PROGRAM [ROUNDS]

PROGRAM is `DrawVertices.cpp`, built. Both draw the same arrays and must leave the same pixels. Times are
those of the processor, since others may use the machine.
"""

import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy

import ZxCore3D as zx

SIZE, DRAWS = 512, 15


def digest(pixels):
    total = 0
    for byte in pixels.tobytes():
        total = (total * 31 + byte) & 0xFFFFFFFF
    return total


def from_python(vertices, colors, indices):
    gl = zx.TRenderCPU()
    gl.Create(SIZE, SIZE)
    gl.Enable(zx.GL_DEPTH_TEST)
    gl.EnableClientState(zx.GL_VERTEX_ARRAY)
    gl.EnableClientState(zx.GL_COLOR_ARRAY)
    best = 1e9
    for _ in range(DRAWS):
        begin = time.process_time()
        gl.Clear(zx.GL_COLOR_BUFFER_BIT | zx.GL_DEPTH_BUFFER_BIT)
        gl.VertexPointer(vertices)
        gl.ColorPointer(colors)
        if len(indices) == 0:
            gl.DrawArrays(zx.GL_TRIANGLES, 0, len(vertices))
        else:
            gl.DrawElements(zx.GL_TRIANGLES, indices)
        best = min(best, time.process_time() - begin)
    return best, digest(gl.GetColorSurface().Data)


def main():
    program, rounds = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 7
    generator = numpy.random.default_rng(5)
    centers = generator.uniform(-0.9, 0.9, (33333, 1, 3))
    vertices = (centers + generator.uniform(-0.01, 0.01, (33333, 3, 3))).reshape(-1, 3)
    vertices = numpy.concatenate([vertices, [[0, 0, 0]]]).astype(numpy.float32)
    colors = generator.uniform(0, 1, vertices.shape).astype(numpy.float32)
    kinds = {"arrays": numpy.zeros(0, numpy.uint32),
             "elements": numpy.arange(99999, dtype=numpy.uint32)}
    with tempfile.TemporaryDirectory() as place:
        for kind, indices in kinds.items():
            names = [str(Path(place) / name) for name in ("vertices", "colors", "indices")]
            for name, values in zip(names, (vertices, colors, indices)):
                values.tofile(name)
            python, native = [], []
            for _ in range(rounds):
                best, pixels = from_python(vertices, colors, indices)
                python.append(best)
                out = subprocess.run([program, *names, str(SIZE), str(DRAWS)], check=True,
                                     capture_output=True, text=True).stdout.split()
                native.append(float(out[0]))
                assert int(out[1]) == pixels, "the pixels differ"
            print(f"{kind}: {len(vertices)} vertices, best of {rounds} rounds of {DRAWS}: "
                  f"Python {min(python) * 1e3:.3f} ms, C++ {min(native) * 1e3:.3f} ms, "
                  f"ratio {min(python) / min(native):.3f}")


if __name__ == "__main__":
    main()
