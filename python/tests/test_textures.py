"""Textures and pixel transfer: types, sizes, sharing, and what they keep alive."""

import gc

import numpy
import pytest

import ZxCore3D as zx


@pytest.fixture
def textured(gl, whole):
    """Draws texture 1 over the whole picture."""
    (name,) = gl.GenTextures(1)
    gl.BindTexture(zx.GL_TEXTURE_2D, name)
    gl.Enable(zx.GL_TEXTURE_2D)
    gl.TexEnvi(zx.GL_TEXTURE_ENV, zx.GL_TEXTURE_ENV_MODE, zx.GL_REPLACE)
    gl.EnableClientState(zx.GL_VERTEX_ARRAY)
    gl.EnableClientState(zx.GL_TEXTURE_COORD_ARRAY)
    gl.VertexPointer(whole)
    gl.TexCoordPointer((whole + 1) / 2)
    return gl


def drawn(gl):
    gl.Clear(zx.GL_COLOR_BUFFER_BIT)
    gl.DrawArrays(zx.GL_TRIANGLES, 0, 6)
    return gl.GetColorSurface().Data


def test_an_array_tells_all_of_a_texture(textured):
    texels = numpy.zeros((12, 16, 4), numpy.uint8)
    texels[:, :, 0] = numpy.arange(16) * 16
    texels[:, :, 1] = numpy.arange(12)[:, None] * 20
    texels[:, :, 3] = 255
    textured.TexImage2D(zx.GL_TEXTURE_2D, texels)
    assert (drawn(textured) == texels).all(), "a texel a pixel, row 0 at the bottom"


@pytest.mark.parametrize("dtype, code", [(numpy.uint8, zx.GL_UNSIGNED_BYTE),
                                         (numpy.float32, zx.GL_FLOAT),
                                         (numpy.float64, zx.GL_DOUBLE)])
def test_types_of_texels(textured, dtype, code):
    full = 255 if dtype == numpy.uint8 else 1
    texels = numpy.full((2, 3, 3), full, dtype)
    textured.TexImage2D(zx.GL_TEXTURE_2D, 0, zx.GL_RGB, 3, 2, 0, zx.GL_RGB, code, texels)
    assert textured.GetError() == 0
    assert (drawn(textured)[:, :, :3] == 255).all()


def test_texels_are_copied(textured):
    texels = numpy.full((2, 2, 4), 255, numpy.uint8)
    textured.TexImage2D(zx.GL_TEXTURE_2D, texels)
    texels[:] = 0
    assert (drawn(textured) == 255).all()


def test_what_is_no_texture_is_refused(textured):
    with pytest.raises(TypeError, match="not list"):
        textured.TexImage2D(zx.GL_TEXTURE_2D, [[1, 2], [3, 4]])
    with pytest.raises(TypeError, match="not of int64"):
        textured.TexImage2D(zx.GL_TEXTURE_2D, numpy.zeros((2, 2), int))
    with pytest.raises(TypeError, match="complex"):
        textured.TexImage2D(zx.GL_TEXTURE_2D, numpy.zeros((2, 2), complex))
    with pytest.raises(TypeError, match="channels"):
        textured.TexImage2D(zx.GL_TEXTURE_2D, numpy.zeros((2, 2, 5), numpy.uint8))
    with pytest.raises(TypeError, match="not the type given"):
        textured.TexImage2D(zx.GL_TEXTURE_2D, 0, zx.GL_RGBA, 2, 2, 0, zx.GL_RGBA,
                            zx.GL_UNSIGNED_BYTE, numpy.zeros((2, 2, 4), numpy.float32))
    with pytest.raises(ValueError, match="15 values are too few for 2 by 2"):
        textured.TexImage2D(zx.GL_TEXTURE_2D, 0, zx.GL_RGBA, 2, 2, 0, zx.GL_RGBA,
                            zx.GL_UNSIGNED_BYTE, bytes(15))


def test_errors_of_the_interface(gl):
    gl.TexImage2D(zx.GL_TEXTURE_2D, numpy.zeros((2, 2), numpy.uint8))
    assert gl.GetError() == zx.GL_INVALID_VALUE, "nothing is bound"
    with pytest.raises(zx.TZxMessage, match="dont support type 3552"):
        gl.TexImage2D(zx.GL_TEXTURE_1D, numpy.zeros((2, 2), numpy.uint8))
    with pytest.raises(zx.TZxMessage, match="TODO"):
        gl.CopyTexImage2D(zx.GL_TEXTURE_2D, 0, zx.GL_RGBA, 0, 0, 1, 1, 0)


def test_a_part_of_a_texture(textured):
    textured.TexImage2D(zx.GL_TEXTURE_2D, numpy.zeros((12, 16, 4), numpy.uint8))
    textured.TexSubImage2D(zx.GL_TEXTURE_2D, 0, 4, 2, 3, 2, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE,
                           numpy.full((2, 3, 4), 200, numpy.uint8))
    expected = numpy.zeros((12, 16, 4), numpy.uint8)
    expected[2:4, 4:7] = 200
    assert (drawn(textured) == expected).all()
    with pytest.raises(ValueError, match="too few"):
        textured.TexSubImage2D(zx.GL_TEXTURE_2D, 0, 0, 0, 3, 3, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE,
                               numpy.zeros((2, 3, 4), numpy.uint8))


def surface_of(value, size=2):
    surface = zx.TDataSurface()
    surface.Create(size, size, zx.DATA_FORMAT_RGBA, zx.DATA_TYPE_UINT8, 4)
    surface.Data[:] = value
    return surface


def test_pixels_move_without_a_copy(textured):
    surface = surface_of(50)
    view = surface.Data
    assert textured.MoveTexImage2D(zx.GL_TEXTURE_2D, 0, surface)
    assert surface.Width == 0, "it has what the texture had"
    assert (drawn(textured) == 50).all()
    view[:] = 70
    assert (drawn(textured) == 70).all(), "the view is of the texture now"
    with pytest.raises(zx.TZxMessage, match="Unexpected Level 1"):
        textured.MoveTexImage2D(zx.GL_TEXTURE_2D, 1, surface)


@pytest.mark.parametrize("let_go", [
    lambda gl: gl.DeleteTextures([1]),
    lambda gl: gl.TexImage2D(zx.GL_TEXTURE_2D, numpy.zeros((3, 3), numpy.uint8)),
    lambda gl: gl.Destroy(),
])
def test_a_view_of_a_texture_outlives_it(textured, let_go):
    surface = surface_of(50)
    view = surface.Data
    textured.MoveTexImage2D(zx.GL_TEXTURE_2D, 0, surface)
    let_go(textured)
    churn = [surface_of(1) for _ in range(50)]
    assert (view == 50).all()
    del churn


def test_a_failing_image_leaves_texture_and_view(textured):
    surface = surface_of(50)
    view = surface.Data
    textured.MoveTexImage2D(zx.GL_TEXTURE_2D, 0, surface)
    textured.TexImage2D(zx.GL_TEXTURE_2D, 1, zx.GL_RGBA, 2, 2, 0, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE,
                        None)
    assert textured.GetError() == zx.GL_INVALID_VALUE
    assert (drawn(textured) == 50).all() and (view == 50).all()


def test_textures_are_attached_and_detached(textured):
    surface = surface_of(90)
    name = textured.AttachTexture(surface)
    assert name == 2 and surface.Width == 0
    textured.BindTexture(zx.GL_TEXTURE_2D, name)
    assert (drawn(textured) == 90).all()
    taken = textured.DetachTexture(name)
    assert (taken.Data == 90).all()
    assert (drawn(textured) == 90).all(), "it is read until the next bind"
    with pytest.raises(RuntimeError, match="samples it"):
        taken.Destroy()
    del taken
    gc.collect()
    assert (drawn(textured) == 90).all(), "whatever Python does with it"
    textured.BindTexture(zx.GL_TEXTURE_2D, 1)
    assert textured.DetachTexture(77) is None


def test_shared_textures(textured):
    other = zx.TRenderCPU()
    assert other.Create(16, 12, textured)
    textured.TexImage2D(zx.GL_TEXTURE_2D, numpy.full((2, 2, 4), 30, numpy.uint8))
    assert other.IsTexture(1)
    other.DeleteTextures([1])
    drawn(textured)
    assert not textured.IsTexture(1)


def test_filters_and_wraps(textured):
    textured.TexImage2D(zx.GL_TEXTURE_2D, numpy.array([[0, 255]], numpy.uint8))
    assert set(numpy.unique(drawn(textured)[:, :, 0])) == {0, 255}
    textured.TexParameteri(zx.GL_TEXTURE_2D, zx.GL_TEXTURE_MIN_FILTER, zx.GL_LINEAR)
    assert len(numpy.unique(drawn(textured)[:, :, 0])) > 2
    textured.TexParameteri(zx.GL_TEXTURE_2D, zx.GL_TEXTURE_MIN_FILTER, zx.GL_LINEAR_MIPMAP_LINEAR)
    assert textured.GetError() == zx.GL_INVALID_ENUM
    with pytest.raises(ValueError, match="4 values"):
        textured.TexParameterfv(zx.GL_TEXTURE_2D, zx.GL_TEXTURE_BORDER_COLOR, [1, 1])


# --- Pixel transfer


def test_draw_pixels(gl):
    pixels = numpy.arange(3 * 5 * 4, dtype=numpy.uint8).reshape(3, 5, 4)
    gl.WindowPos2i(2, 4)
    gl.DrawPixels(5, 3, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE, pixels)
    assert (gl.GetColorSurface().Data[4:7, 2:7] == pixels).all()
    with pytest.raises(ValueError, match="bytes 0 to 60 of a buffer of 59"):
        gl.DrawPixels(5, 3, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE, pixels.tobytes()[:59])
    gl.PixelStorei(zx.GL_UNPACK_ALIGNMENT, 8)
    with pytest.raises(ValueError, match="bytes 0 to 116"):
        gl.DrawPixels(5, 3, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE, pixels)
    gl.PixelStorei(zx.GL_UNPACK_ALIGNMENT, 1)
    gl.PixelStorei(zx.GL_UNPACK_SKIP_ROWS, -1)
    with pytest.raises(ValueError, match="bytes -20"):
        gl.DrawPixels(5, 3, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE, pixels)


def test_read_pixels(gl, draw):
    draw((1, 0, 0, 1))
    out = numpy.zeros((12, 16, 4), numpy.uint8)
    gl.ReadPixels(0, 0, 16, 12, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE, out)
    assert (out == gl.GetColorSurface().Data).all()
    with pytest.raises(ValueError, match="a buffer of 100"):
        gl.ReadPixels(0, 0, 16, 12, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE, bytearray(100))
    with pytest.raises((BufferError, TypeError)):
        gl.ReadPixels(0, 0, 16, 12, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE, bytes(768))
    with pytest.raises(TypeError, match="uint8"):
        gl.ReadPixels(0, 0, 16, 12, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE, numpy.zeros(768))
