"""The context: life, errors, messages, the debug callback, queries."""

import gc
import weakref

import numpy
import pytest

import ZxCore3D as zx


def test_a_context_without_surfaces_has_no_size():
    gl = zx.TRenderCPU()
    assert gl.GetSize() is None
    assert gl.GetColorSurface() is None
    assert gl.GetProgram() is None
    assert not gl.SetSize(4, 4)


def test_create_once(gl):
    assert gl.GetSize() == (16, 12)
    assert (gl.m_Width, gl.m_Height, gl.m_Created) == (16, 12, True)
    assert not gl.Create(8, 8)
    assert gl.GetSize() == (16, 12)


@pytest.mark.parametrize("width, height", [(0, 10), (10, 0), (-1, 5)])
def test_create_refuses_sizes_below_one(width, height):
    assert not zx.TRenderCPU().Create(width, height)


def test_codes_are_kept_for_get_error(gl):
    gl.DepthFunc(0)
    assert gl.GenLists(5) == 0
    assert gl.GetError() == zx.GL_INVALID_ENUM, "the first code wins"
    assert gl.GetError() == 0


def test_errors_raise_where_one_asks_for_it(gl):
    gl.RaiseErrors = True
    with pytest.raises(zx.GLError, match="^GL_INVALID_ENUM in DepthFunc$") as raised:
        gl.DepthFunc(0)
    assert raised.value.Code == 0x0500
    assert gl.GetError() == 0, "what was raised is not left"
    gl.RaiseErrors = False
    gl.DepthFunc(1)
    assert gl.GetError() == 0x0500


def test_an_older_code_is_not_raised_by_another_operation(gl):
    gl.DepthFunc(0)
    gl.RaiseErrors = True
    gl.DepthFunc(zx.GL_LESS)
    with pytest.raises(zx.GLError, match="GL_INVALID_OPERATION in PopAttrib"):
        gl.PopAttrib()
    assert gl.GetError() == zx.GL_INVALID_ENUM


def test_errors_of_drawing_raise():
    gl = zx.TRenderCPU(RaiseErrors=True)
    gl.Create(4, 4)
    with pytest.raises(zx.GLError, match="GL_INVALID_ENUM in Begin"):
        gl.Begin(zx.GL_POLYGON)
    gl.End()
    gl.VertexPointer(numpy.zeros((3, 2)))
    gl.EnableClientState(zx.GL_VERTEX_ARRAY)
    with pytest.raises(zx.GLError, match="GL_INVALID_ENUM in DrawArrays"):
        gl.DrawArrays(zx.GL_POLYGON, 0, 3)
    assert not gl.m_InBeginEnd


def test_an_index_out_of_range_has_a_code_of_its_own():
    gl = zx.TRenderCPU(RaiseErrors=True)
    with pytest.raises(zx.GLError, match="0xFFFFFFFF in EnableLight"):
        gl.EnableLight(8, True)


def test_messages_are_exceptions_with_their_text(gl):
    with pytest.raises(zx.TZxMessage) as raised:
        gl.Viewport(0, 0, 1, 1)
    assert str(raised.value) == ("@virtual void Zx3D::TRenderCPU::Viewport(int, int, int, int): "
                                 "Under construction!")
    with pytest.raises(zx.TZxMessage) as raised:
        gl.Enable(zx.GL_ALPHA_TEST)
    assert str(raised.value) == "ERROR: TRenderCPU::Enable dont support mode 3008"
    assert gl.GetError() == zx.GL_INVALID_ENUM
    assert gl.GetString(zx.GL_VERSION) == "GL_ARB_texture_non_power_of_two"


def test_debug_callback(gl):
    calls = []
    gl.Enable(zx.GL_DEBUG_OUTPUT)
    assert gl.DebugMessageCallback(lambda *a: calls.append(a), "mine") is True
    gl.DepthFunc(0)
    gl.DepthFunc(1)
    assert calls == [(0, 0, 0, 0, 1, "", "mine")] * 2
    gl.DebugMessageCallback(None)
    gl.DepthFunc(2)
    assert len(calls) == 2
    with pytest.raises(TypeError):
        gl.DebugMessageCallback(3)


def test_what_the_debug_callback_raises_is_raised(gl):
    def refuse(*_):
        raise KeyError("mine")
    gl.Enable(zx.GL_DEBUG_OUTPUT)
    gl.DebugMessageCallback(refuse)
    with pytest.raises(KeyError, match="mine"):
        gl.DepthFunc(0)
    gl.DepthFunc(zx.GL_LESS)


def test_integers_by_name(gl):
    assert gl.GetIntegerv(zx.GL_VIEWPORT) == (0, 0, 16, 12)
    assert gl.GetIntegerv(zx.GL_MAX_LIGHTS) == 8
    assert gl.GetIntegerv(zx.GL_POLYGON_MODE) == (zx.GL_FILL, zx.GL_FILL)
    gl.ColorMask(1, 0, 1, 0)
    assert gl.GetIntegerv(zx.GL_COLOR_WRITEMASK) == (1, 0, 1, 0)
    assert gl.GetIntegerv(zx.GL_RGBA_MODE) is None
    assert gl.GetError() == zx.GL_INVALID_ENUM


def test_floats_by_name(gl):
    gl.ClearColor(0.5, 0, 1, 1)
    clear = gl.GetDoublev(zx.GL_COLOR_CLEAR_VALUE)
    assert list(clear) == [128 / 255.0, 0, 1, 1], "0.5 * 255 + 0.5 is 128"
    gl.ClearDepth(0.25)
    assert gl.GetFloatv(zx.GL_DEPTH_CLEAR_VALUE) == 0.25
    gl.Translated(1, 2, 3)
    column_by_column = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1]
    assert list(gl.GetDoublev(zx.GL_MODELVIEW_MATRIX)) == column_by_column
    assert gl.GetDoublev(zx.GL_VIEWPORT) is None
    assert gl.GetError() == zx.GL_INVALID_ENUM


def test_lights_read_as_many_values_as_their_name_has(gl):
    gl.Lightfv(zx.GL_LIGHT0, zx.GL_DIFFUSE, [0.25, 0.5, 0.75, 1])
    assert list(gl.GetLight(zx.GL_LIGHT0, zx.GL_DIFFUSE)) == [0.25, 0.5, 0.75, 1]
    with pytest.raises(ValueError, match="4 values"):
        gl.Lightfv(zx.GL_LIGHT0, zx.GL_POSITION, [1, 2, 3])
    with pytest.raises(ValueError, match="3 values"):
        gl.Lightfv(zx.GL_LIGHT0, zx.GL_QUADRATIC_ATTENUATION, [1])
    with pytest.raises(ValueError):
        gl.Materialfv(zx.GL_FRONT, zx.GL_DIFFUSE, [1, 2])


def test_matrices_are_row_and_column(gl):
    matrix = numpy.arange(16.0).reshape(4, 4)
    gl.LoadMatrix(matrix)
    assert (gl.m_ModelView == matrix).all()
    gl.LoadMatrixd(matrix.T.ravel())
    assert (gl.m_ModelView == matrix).all()
    other = numpy.array([[1, 0, 0, 5], [0, 2, 0, 0], [0, 0, 1, 0], [0, 0, 0, 1.0]])
    gl.MultMatrix(other)
    assert (gl.m_ModelView == matrix @ other).all(), "small whole numbers are exact"
    with pytest.raises(TypeError, match="4 by 4"):
        gl.LoadMatrix(numpy.eye(3))
    with pytest.raises(ValueError, match="read-only"):
        gl.m_ModelView[0, 0] = 1


def test_a_cycle_of_context_and_shader_is_collected():
    class Shader(zx.TFragmentShaderCPU):
        def Execute(self, v, f):
            return True

    gl = zx.TRenderCPU()
    gl.Create(4, 4)
    shader = Shader()
    shader.owner = gl
    program = zx.TProgramCPU()
    program.SetShaderF(shader)
    gl.SetProgram(program)
    gone = weakref.ref(shader)
    del gl, shader, program
    gc.collect()
    assert gone() is None


def test_constants_are_those_of_opengl():
    assert (zx.GL_TRIANGLES, zx.GL_RGBA, zx.GL_UNSIGNED_BYTE) == (4, 0x1908, 0x1401)
    assert (zx.GL_COLOR_BUFFER_BIT, zx.GL_DEPTH_BUFFER_BIT) == (0x4000, 0x100)
    assert int(zx.DATA_TYPE_DOUBLE) == 11 and int(zx.DATA_FORMAT_RGBA) == 6
    assert zx.DATA_TYPE(3) == zx.DATA_TYPE_UINT8


def test_everything_is_described():
    missing = []
    for name, value in vars(zx).items():
        if name.startswith("_") or isinstance(value, (int, str)):
            continue
        if isinstance(value, type) and not hasattr(value, "__members__"):
            missing += [f"{name}.{n}" for n, v in vars(value).items()
                        if not n.startswith("_") and not isinstance(v, bytes) and not (v.__doc__ or "").strip()]
        if not (value.__doc__ or "").strip():
            missing.append(name)
    assert not missing


def test_names_are_those_of_the_library():
    snakes = [name for name in vars(zx) if "_" in name.strip("_") and name.islower()]
    assert sorted(snakes) == ["mul_mtm", "mul_mtv", "outer_dot"], "which are the library's own"
