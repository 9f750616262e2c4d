"""Depth maps and object numbers of a turntable, as a data set for whoever learns or tests with it.

    turntable.py [OUT.npz [FRAMES]]

The archive has, for each frame: `depth` in units of the model from the camera (infinity where there
is nothing), `ids` (0 nothing, 1 the floor, 2 the box, 3 the pyramid), `rgb`, and the camera as
`modelview` and `projection` [row, column].
"""

import sys

import numpy

import ZxCore3D as zx

WIDTH, HEIGHT = 160, 120
NEAR, FAR = 1.0, 12.0


def quads(faces, points):
    """Triangles of quadrilaterals given by the numbers of their corners."""
    corners = numpy.array(faces)
    return numpy.asarray(points, float)[corners[:, [0, 1, 2, 0, 2, 3]].ravel()]


BOX = quads([[0, 1, 3, 2], [4, 6, 7, 5], [0, 4, 5, 1], [2, 3, 7, 6], [0, 2, 6, 4], [1, 5, 7, 3]],
            [[x, y, z] for x in (-1.2, -0.2) for y in (-0.5, 0.5) for z in (0, 1.1)])
PYRAMID = quads([[0, 1, 4, 4], [1, 2, 4, 4], [2, 3, 4, 4], [3, 0, 4, 4]],
                [[0.3, -0.6, 0], [1.5, -0.6, 0], [1.5, 0.6, 0], [0.3, 0.6, 0], [0.9, 0, 1.4]])
FLOOR = quads([[0, 1, 2, 3]], [[-2, -2, 0], [2, -2, 0], [2, 2, 0], [-2, 2, 0]])
OBJECTS = [(1, FLOOR, (0.75, 0.75, 0.7)), (2, BOX, (0.8, 0.3, 0.2)), (3, PYRAMID, (0.2, 0.5, 0.8))]


def frame(gl, exact, angle):
    gl.MatrixMode(zx.GL_MODELVIEW)
    gl.LoadIdentity()
    gl.Translated(0, -0.4, -5)
    gl.Rotated(-65, 1, 0, 0)
    gl.Rotated(angle, 0, 0, 1)
    # Once for the picture, once with the number as the colour, which a draw buffer keeps exactly.
    gl.Clear(zx.GL_COLOR_BUFFER_BIT | zx.GL_DEPTH_BUFFER_BIT)
    for _, points, color in OBJECTS:
        gl.Color3f(*color)
        gl.VertexPointer(points)
        gl.DrawArrays(zx.GL_TRIANGLES, 0, len(points))
    rgb = gl.GetColorSurface().Data[:, :, :3].copy()
    exact.Data[:] = 0
    gl.Clear(zx.GL_DEPTH_BUFFER_BIT)
    gl.SetDrawBuffer(exact)
    for number, points, _ in OBJECTS:
        gl.Color3f(number / 255, 0, 0)
        gl.VertexPointer(points)
        gl.DrawArrays(zx.GL_TRIANGLES, 0, len(points))
    gl.SetDrawBuffer(None)
    ids = numpy.rint(exact.Data[:, :, 0] * 255).astype(numpy.uint8)
    # The buffer has window depth: 0 at the near plane, 1 at the far one, not evenly between.
    window = gl.GetDepthSurface().Data.astype(float)
    depth = NEAR * FAR / (FAR - window * (FAR - NEAR))
    depth[ids == 0] = numpy.inf
    return depth.astype(numpy.float32), ids, rgb, gl.m_ModelView.copy()


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else "turntable.npz"
    frames = int(sys.argv[2]) if len(sys.argv) > 2 else 36
    gl = zx.TRenderCPU(RaiseErrors=True)
    gl.Create(WIDTH, HEIGHT)
    gl.Enable(zx.GL_DEPTH_TEST)
    gl.EnableClientState(zx.GL_VERTEX_ARRAY)
    gl.MatrixMode(zx.GL_PROJECTION)
    gl.Frustum(-0.4, 0.4, -0.3, 0.3, NEAR, FAR)
    exact = zx.TDataSurface()
    exact.Create(WIDTH, HEIGHT, zx.DATA_FORMAT_RGBA, zx.DATA_TYPE_DOUBLE, 4)
    results = [frame(gl, exact, 360 * n / frames) for n in range(frames)]
    depth, ids, rgb, modelview = (numpy.stack(part) for part in zip(*results))
    numpy.savez_compressed(out, depth=depth, ids=ids, rgb=rgb, modelview=modelview,
                           projection=gl.m_Projection)
    print(f"{out}: {frames} frames of {WIDTH} by {HEIGHT}")


if __name__ == "__main__":
    main()
