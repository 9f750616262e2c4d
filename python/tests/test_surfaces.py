"""Surfaces as arrays: views, what keeps them, image files."""

import gc

import numpy
import pytest

import ZxCore3D as zx


def test_views_are_the_surface_itself(gl, draw):
    color = gl.GetColorSurface().Data
    depth = gl.GetDepthSurface().Data
    stencil = gl.GetStencilSurface().Data
    assert (color.shape, color.dtype) == ((12, 16, 4), numpy.uint8)
    assert (depth.shape, depth.dtype) == ((12, 16), numpy.float32)
    assert (stencil.shape, stencil.dtype) == ((12, 16), numpy.uint8)
    draw((1, 0.2, 0, 1))
    assert (color == [255, 51, 0, 255]).all(), "what is drawn is seen at once"
    color[3, 5] = [1, 2, 3, 4]
    assert list(gl.GetColorSurface().Data[3, 5]) == [1, 2, 3, 4]
    assert color.base is not None and not color.flags.owndata


def test_row_0_is_the_bottom_row(gl):
    gl.Color3f(1, 1, 1)
    gl.Begin(zx.GL_POINTS)
    gl.Vertex2f(-0.99, -0.99)
    gl.End()
    assert list(gl.GetColorSurface().Data[0, 0]) == [255, 255, 255, 255]


def test_asarray_is_the_view(gl):
    array = numpy.asarray(gl.GetColorSurface())
    array[:] = 7
    assert (gl.GetColorSurface().Data == 7).all()
    assert numpy.asarray(gl.GetDepthSurface(), dtype=numpy.float64).dtype == numpy.float64


def test_a_written_depth_is_tested_against(gl, draw):
    gl.Enable(zx.GL_DEPTH_TEST)
    gl.GetDepthSurface().Data[:, 8:] = 0  # nearer than anything
    draw()
    lit = gl.GetColorSurface().Data[:, :, 0] == 255
    assert lit[:, :8].all() and not lit[:, 8:].any()


def test_a_view_outlives_a_resize(gl, draw):
    draw()
    view = gl.GetColorSurface().Data
    surface = gl.GetColorSurface()
    assert gl.SetSize(100, 80)
    assert gl.GetColorSurface().Data.shape == (80, 100, 4)
    assert (view == 255).all() and view.shape == (12, 16, 4)
    view[:] = 9
    assert not gl.GetColorSurface().Data.any(), "the new surface is another block"
    assert (surface.Width, surface.Height) == (16, 12)
    assert (surface.Data == 9).all(), "the object has the old pixels"


@pytest.mark.parametrize("keep_object", [False, True])
def test_a_view_outlives_destroy_and_the_context(draw, gl, keep_object):
    draw()
    surface = gl.GetColorSurface()
    views = [surface.Data, gl.GetDepthSurface().Data, gl.GetStencilSurface().Data]
    if not keep_object:
        surface = None
    gl.Destroy()
    assert gl.GetColorSurface() is None
    churn = [numpy.full((12, 16, 4), i, numpy.uint8) for i in range(100)]
    assert (views[0] == 255).all()
    assert (views[1] == views[1][0, 0]).all()
    assert not views[2].any()
    assert surface is None or (surface.Data == 255).all()
    del churn


def test_a_view_outlives_a_context_that_is_collected(whole):
    gl = zx.TRenderCPU()
    gl.Create(32, 32)
    view = gl.GetColorSurface().Data
    view[:] = 3
    del gl
    gc.collect()
    churn = [bytearray(32 * 32 * 4) for _ in range(50)]
    assert (view == 3).all()
    del churn


def test_a_view_outlives_its_surface():
    surface = zx.TDataSurface()
    assert surface.Create(5, 4, zx.DATA_FORMAT_RGBA, zx.DATA_TYPE_FLOAT, 4)
    view = surface.Data
    view[:] = 2.5
    assert surface.Create(50, 40, zx.DATA_FORMAT_RGBA, zx.DATA_TYPE_UINT8, 4)
    assert (view == 2.5).all() and view.shape == (4, 5, 4)
    other = surface.Data
    surface.Destroy()
    assert surface.Width == 0 and surface.Data.size == 0
    del surface
    assert not other.any()


def test_views_go_with_their_pixels_when_surfaces_are_exchanged():
    a, b = zx.TDataSurface(), zx.TDataSurface()
    a.Create(2, 2, zx.DATA_FORMAT_LUMINANCE, zx.DATA_TYPE_UINT8, 1)
    b.Create(3, 3, zx.DATA_FORMAT_LUMINANCE, zx.DATA_TYPE_UINT8, 1)
    view = a.Data
    a.Swap(b)
    view[:] = 5
    assert (b.Data == 5).all() and a.Width == 3
    b.Destroy()
    assert (view == 5).all()


@pytest.mark.parametrize("arguments", [(0, 4, 6, 3, 4), (4, 4, 6, 0, 4), (4, 4, 6, 3, 0)])
def test_create_refuses_what_can_not_be(arguments):
    surface = zx.TDataSurface()
    assert not surface.Create(*arguments)
    assert surface.Width == 0


def test_drawing_into_a_surface_of_ones_own(gl, draw):
    target = zx.TDataSurface()
    target.Create(16, 12, zx.DATA_FORMAT_RGBA, zx.DATA_TYPE_UINT8, 4)
    gl.BindColorSurface(target)
    draw()
    assert (target.Data == 255).all()
    assert gl.GetColorSurface() is target
    with pytest.raises(RuntimeError, match="a context draws into this surface"):
        target.Destroy()
    with pytest.raises(RuntimeError):
        gl.GetDepthSurface().Create(1, 1, 13, 10, 1)
    view = target.Data
    del target  # the context keeps it
    gc.collect()
    draw((0, 0, 0, 0))
    assert not view.any()
    gl.BindColorSurface(None)
    assert list(gl.GetColorSurface().Data[0, 0]) == [0, 0, 0, 255]


def test_a_surface_can_be_changed_once_it_is_unbound(gl):
    target = zx.TDataSurface()
    target.Create(16, 12, zx.DATA_FORMAT_RGBA, zx.DATA_TYPE_UINT8, 4)
    gl.BindColorSurface(target)
    gl.SetSize(8, 8)  # which unbinds it
    assert gl.GetColorSurface() is not target
    target.Destroy()


def test_a_surface_of_another_size_reports(gl):
    target = zx.TDataSurface()
    target.Create(4, 4, zx.DATA_FORMAT_RGBA, zx.DATA_TYPE_UINT8, 4)
    gl.BindColorSurface(target)
    assert gl.GetError() == zx.GL_INVALID_VALUE


def test_a_context_draws_into_the_surface_of_another(gl, draw):
    other = zx.TRenderCPU()
    other.Create(16, 12)
    gl.BindColorSurface(other.GetColorSurface())
    draw()
    view = other.GetColorSurface().Data
    assert (view == 255).all()
    other.SetSize(5, 5)
    draw((0, 0, 0, 0))
    assert not view.any(), "it goes on drawing into the pixels that the other let go"
    other.Destroy()
    del other
    gc.collect()
    draw()
    assert (view == 255).all()


def test_a_draw_buffer_takes_exact_colours(gl, draw):
    exact = zx.TDataSurface()
    exact.Create(16, 12, zx.DATA_FORMAT_RGBA, zx.DATA_TYPE_DOUBLE, 4)
    gl.SetDrawBuffer(exact)
    draw((0.125, 0.25, 0.5, 1))
    assert (exact.Data == [0.125, 0.25, 0.5, 1]).all()
    view = exact.Data
    del exact
    gc.collect()
    draw((1, 1, 1, 1))
    assert (view == 1).all()
    gl.SetDrawBuffer(None)
    wrong = zx.TDataSurface()
    wrong.Create(3, 3, zx.DATA_FORMAT_RGBA, zx.DATA_TYPE_DOUBLE, 4)
    gl.SetDrawBuffer(wrong)  # ignored
    wrong.Destroy()


def test_fill_and_copy():
    surface = zx.TDataSurface()
    surface.Create(3, 2, zx.DATA_FORMAT_RGB, zx.DATA_TYPE_UINT8, 3)
    assert zx.ds.Fill(surface, bytes([1, 2, 3]))
    assert (surface.Data == [1, 2, 3]).all()
    assert not zx.ds.Fill(surface, b"12345678")
    picture = numpy.arange(18, dtype=numpy.uint8).reshape(2, 3, 3)
    assert zx.ds.Copy(picture, surface)
    assert (surface.Data == picture).all()
    assert not zx.ds.Copy(picture.astype(numpy.float32), surface)
    with pytest.raises(TypeError, match="TDataSurface"):
        zx.ds.Copy(picture, [1])


# --- Image files


@pytest.mark.parametrize("channels", [1, 2, 3, 4])
@pytest.mark.parametrize("dtype", [numpy.uint8, numpy.uint16])
def test_a_picture_comes_back(tmp_path, channels, dtype):
    generator = numpy.random.default_rng(channels)
    shape = (7, 5) if channels == 1 else (7, 5, channels)
    picture = generator.integers(0, numpy.iinfo(dtype).max, shape, dtype)
    name = tmp_path / "picture.png"
    assert zx.SaveImage(name, picture)
    loaded = zx.LoadImage(name)
    assert loaded.Channels == channels
    assert (loaded.Data == picture).all()
    assert (zx.LoadImage(str(name)).Data == picture).all(), "a name may be a text too"


def test_an_array_that_is_not_in_rows_is_saved_as_it_reads(tmp_path):
    picture = numpy.arange(60, dtype=numpy.uint8).reshape(5, 4, 3)[::-1, ::2]
    assert zx.SaveImage(tmp_path / "p.png", None, picture)
    assert (zx.LoadImage(tmp_path / "p.png").Data == picture).all()


def test_a_hint_changes_the_file_and_not_the_picture(tmp_path):
    picture = numpy.zeros((64, 64, 3), numpy.uint8)
    hint = zx.TSaveImageHint()
    hint.Compression = 0
    assert zx.SaveImage(tmp_path / "large.png", hint, picture)
    assert zx.SaveImage(tmp_path / "small.png", picture)
    assert (tmp_path / "large.png").stat().st_size > 64 * 64 * 3
    assert (tmp_path / "small.png").stat().st_size < 1000


def test_what_can_not_be_saved_or_loaded(tmp_path, gl):
    assert not zx.SaveImage(tmp_path / "no" / "such.png", gl.GetColorSurface())
    assert not zx.SaveImage(tmp_path / "depth.png", gl.GetDepthSurface())
    assert not (tmp_path / "depth.png").exists()
    assert zx.LoadImage(tmp_path / "none.png") is None
    (tmp_path / "text.png").write_text("no picture")
    assert zx.LoadImage(tmp_path / "text.png") is None
    with pytest.raises(TypeError):
        zx.SaveImage(tmp_path / "x.png", "picture")
    with pytest.raises(ValueError, match="shape"):
        zx.SaveImage(tmp_path / "x.png", numpy.zeros(5, numpy.uint8))
    with pytest.raises(ValueError, match="channels"):
        zx.SaveImage(tmp_path / "x.png", numpy.zeros((2, 2, 5), numpy.uint8))


def test_exceptions_say_why(tmp_path, gl):
    none = tmp_path / "none.png"
    with pytest.raises(zx.TZxMessage) as told:
        zx.LoadImage(none, RaiseErrors=True)
    assert str(told.value) == f"{none}: No such file or directory"
    with pytest.raises(zx.TZxMessage, match="none.png: No such file"):
        zx.Zx3D.LoadImage(none, RaiseErrors=True)
    with pytest.raises(zx.TZxMessage) as told:
        zx.LoadImage(zx.TMemoryStream(), RaiseErrors=True)
    assert str(told.value) == "is empty"
    with pytest.raises(zx.TZxMessage, match="^is empty$"):
        zx.Zx3D.LoadImage(zx.TMemoryStream(), RaiseErrors=True)
    odd = tmp_path / "%1% %2%.png"
    odd.write_text("no picture")
    with pytest.raises(zx.TZxMessage) as told:
        zx.LoadImage(odd, RaiseErrors=True)
    assert str(told.value) == f"{odd}: of no known image kind"
    with pytest.raises(zx.TZxMessage, match="such.png: No such file"):
        zx.SaveImage(tmp_path / "no" / "such.png", gl.GetColorSurface(), RaiseErrors=True)
    with pytest.raises(zx.TZxMessage, match="x.xyz: "):
        zx.SaveImage(tmp_path / "x.xyz", None, gl.GetColorSurface(), RaiseErrors=True)
    assert zx.SaveImage(tmp_path / "x.png", gl.GetColorSurface(), RaiseErrors=True)
    assert zx.LoadImage(tmp_path / "x.png", RaiseErrors=True).Channels == 4


@pytest.mark.parametrize("ending", ["png", "bmp", "tga", "jpg"])
def test_the_ending_tells_the_kind(tmp_path, ending):
    picture = numpy.full((9, 8, 3), (200, 100, 50), numpy.uint8)
    name = tmp_path / f"p.{ending}"
    assert zx.SaveImage(name, picture)
    loaded = zx.LoadImage(name).Data
    assert numpy.abs(loaded.astype(int) - picture).max() <= (3 if ending == "jpg" else 0)


def test_the_hint_sets_the_quality_of_a_jpeg(tmp_path):
    noise = numpy.random.default_rng(1).integers(0, 255, (64, 64, 3), numpy.uint8)
    hint = zx.TSaveImageHint()
    assert hint.Quality == -1
    sizes = []
    for hint.Quality in (10, 100):
        assert zx.SaveImage(tmp_path / "q.jpg", hint, noise)
        sizes.append((tmp_path / "q.jpg").stat().st_size)
    assert 2 * sizes[0] < sizes[1]


def test_loading_from_a_stream(tmp_path):
    picture = numpy.arange(12, dtype=numpy.uint8).reshape(3, 4)
    zx.SaveImage(tmp_path / "p.png", picture)
    stream = zx.TMemoryStream()
    assert stream.LoadFromFile(tmp_path / "p.png")
    assert (zx.LoadImage(stream).Data == picture).all()
    assert zx.LoadImage(zx.TMemoryStream()) is None


def test_image_surfaces(tmp_path):
    picture = numpy.arange(24, dtype=numpy.uint8).reshape(2, 3, 4)
    zx.SaveImage(tmp_path / "p.png", picture)
    image = zx.Zx3D.LoadImage(tmp_path / "p.png")
    view = image.Data
    assert (view == picture).all()
    assert image.SetImage2D(5, 1, zx.DATA_FORMAT_LUMINANCE, zx.DATA_TYPE_FLOAT, 1,
                            numpy.arange(5, dtype=numpy.float32))
    assert list(image.Data[0]) == [0, 1, 2, 3, 4]
    assert (view == picture).all(), "the old pixels are the view's"
    del image
    gc.collect()
    assert (view == picture).all()
    assert zx.Zx3D.LoadImage(tmp_path / "none.png") is None
    with pytest.raises(ValueError, match="as large"):
        zx.TImageSurface().SetImage2D(5, 5, 1, 3, 1, numpy.zeros(24, numpy.uint8))
