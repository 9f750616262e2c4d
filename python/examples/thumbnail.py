"""A thumbnail of a mesh that is nothing but NumPy arrays: vertices, normals, colours, indices.

    thumbnail.py [OUT.png]
"""

import sys

import numpy

import ZxCore3D as zx

SIZE = 256
SAMPLES = 4  # each way: drawn this much larger and averaged


def torus(rings=96, sides=48, radius=1.0, tube=0.42):
    """Vertices, normals, colours and triangles of a torus about the z axis."""
    u, v = numpy.meshgrid(numpy.arange(rings) * 2 * numpy.pi / rings,
                          numpy.arange(sides) * 2 * numpy.pi / sides, indexing="ij")
    normals = numpy.stack([numpy.cos(u) * numpy.cos(v), numpy.sin(u) * numpy.cos(v), numpy.sin(v)], 2)
    centers = numpy.stack([numpy.cos(u), numpy.sin(u), 0 * u], 2) * radius
    colors = 0.5 + 0.5 * numpy.cos(u[..., None] + numpy.array([0, 2.1, 4.2]))
    corner = numpy.arange(rings * sides).reshape(rings, sides)
    right, up = numpy.roll(corner, -1, 0), numpy.roll(corner, -1, 1)
    both = numpy.roll(right, -1, 1)
    triangles = numpy.stack([corner, right, both, corner, both, up], 2).reshape(-1, 3)
    return ((centers + tube * normals).reshape(-1, 3), normals.reshape(-1, 3),
            colors.reshape(-1, 3), triangles.astype(numpy.uint32))


def main():
    vertices, normals, colors, triangles = torus()
    gl = zx.TRenderCPU(RaiseErrors=True)
    gl.Create(SIZE * SAMPLES, SIZE * SAMPLES)
    gl.ClearColor(0.93, 0.94, 0.96, 1)
    gl.Clear(zx.GL_COLOR_BUFFER_BIT | zx.GL_DEPTH_BUFFER_BIT)
    gl.Enable(zx.GL_DEPTH_TEST)
    gl.Enable(zx.GL_LIGHTING)
    gl.Enable(zx.GL_COLOR_MATERIAL)
    gl.Enable(zx.GL_NORMALIZE)
    gl.MatrixMode(zx.GL_PROJECTION)
    gl.Frustum(-0.5, 0.5, -0.5, 0.5, 1.4, 20)
    gl.MatrixMode(zx.GL_MODELVIEW)
    gl.Lightfv(zx.GL_LIGHT0, zx.GL_POSITION, [0.4, 0.8, 1, 0])
    gl.Enable(zx.GL_LIGHT0)
    gl.Translated(0, 0, -4.6)
    gl.Rotated(-55, 1, 0, 0)

    gl.VertexPointer(vertices)
    gl.NormalPointer(normals)
    gl.ColorPointer(colors)
    for kind in (zx.GL_VERTEX_ARRAY, zx.GL_NORMAL_ARRAY, zx.GL_COLOR_ARRAY):
        gl.EnableClientState(kind)
    gl.DrawElements(zx.GL_TRIANGLES, triangles)

    # The surface is an array: averaging it is one line.
    pixels = gl.GetColorSurface().Data.reshape(SIZE, SAMPLES, SIZE, SAMPLES, 4)
    small = numpy.rint(pixels.mean(axis=(1, 3))).astype(numpy.uint8)
    return zx.SaveImage(sys.argv[1] if len(sys.argv) > 1 else "thumbnail.png", small)


if __name__ == "__main__":
    sys.exit(not main())
