"""A homography from points: the map of a sheet's corners to where a picture shows them.

    homography.py [OUT.png]

Draws the sheet in perspective, finds the map from marked points, and writes the picture beside the
sheet that was straightened by it.
"""

import sys

import numpy

import ZxCore3D as zx

WIDTH, HEIGHT = 320, 240
CELLS = 8


def photograph():
    """A picture of a chequered sheet from (0, 0) to (8, 8), and what it went through."""
    gl = zx.TRenderCPU(RaiseErrors=True)
    gl.Create(WIDTH, HEIGHT)
    gl.ClearColor(0.2, 0.25, 0.3, 1)
    gl.Clear(zx.GL_COLOR_BUFFER_BIT | zx.GL_DEPTH_BUFFER_BIT)
    gl.MatrixMode(zx.GL_PROJECTION)
    gl.Frustum(-0.4, 0.4, -0.3, 0.3, 1, 50)
    gl.MatrixMode(zx.GL_MODELVIEW)
    gl.Translated(0.5, 0.3, -15)
    gl.Rotated(-50, 1, 0.3, 0.2)
    gl.Translated(-4, -4, 0)
    for y in range(CELLS):
        for x in range(CELLS):
            shade = 0.9 if (x + y) % 2 else 0.35
            gl.Color3f(shade, shade * (0.6 + 0.05 * x), shade * (0.6 + 0.05 * y))
            gl.Begin(zx.GL_QUADS)
            for corner in ((x, y), (x + 1, y), (x + 1, y + 1), (x, y + 1)):
                gl.Vertex2d(*corner)
            gl.End()
    return gl.GetColorSurface().Data, gl.m_ModelViewProjection


def seen(points, matrix):
    """Where points of the sheet lie in the picture, in pixels."""
    clip = numpy.c_[points, numpy.zeros(len(points)), numpy.ones(len(points))] @ matrix.T
    return (clip[:, :2] / clip[:, 3:] + 1) / 2 * [WIDTH, HEIGHT]


def main():
    picture, matrix = photograph()
    marks = numpy.array([[0, 0], [8, 0], [8, 8], [0, 8], [4, 4], [2, 6.0]])
    # Marked by hand one is off by a fraction of a pixel.
    noise = numpy.random.default_rng(1).normal(0, 0.2, marks.shape)
    h = zx.GetProjectiveTransform(marks, seen(marks, matrix) + noise)
    print(numpy.array2string(h, precision=5, suppress_small=True))

    grid = numpy.stack(numpy.meshgrid(*[(numpy.arange(HEIGHT) + 0.5) * CELLS / HEIGHT] * 2), 2)
    mapped = numpy.c_[grid.reshape(-1, 2), numpy.ones(HEIGHT * HEIGHT)] @ h.T
    x, y = (mapped[:, :2] / mapped[:, 2:]).astype(int).T
    straight = picture[y.clip(0, HEIGHT - 1), x.clip(0, WIDTH - 1)].reshape(HEIGHT, HEIGHT, 4)
    both = numpy.concatenate([picture, straight], axis=1)
    return zx.SaveImage(sys.argv[1] if len(sys.argv) > 1 else "homography.png", both)


if __name__ == "__main__":
    sys.exit(not main())
