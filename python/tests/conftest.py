import numpy
import pytest

import ZxCore3D as zx


@pytest.fixture
def gl():
    """A context of 16 by 12 pixels, cleared to black."""
    context = zx.TRenderCPU()
    assert context.Create(16, 12)
    context.ClearColor(0, 0, 0, 1)
    context.Clear(zx.GL_COLOR_BUFFER_BIT | zx.GL_DEPTH_BUFFER_BIT | zx.GL_STENCIL_BUFFER_BIT)
    return context


@pytest.fixture
def whole():
    """Two triangles that cover the whole picture."""
    return numpy.array([[-1, -1], [1, -1], [1, 1], [-1, -1], [1, 1], [-1, 1]], numpy.float32)


@pytest.fixture
def draw(gl, whole):
    """Draws the whole picture in the current colour."""
    def cover(color=(1, 1, 1, 1)):
        gl.Color4f(*color)
        gl.VertexPointer(whole)
        gl.EnableClientState(zx.GL_VERTEX_ARRAY)
        gl.DrawArrays(zx.GL_TRIANGLES, 0, 6)
    return cover
