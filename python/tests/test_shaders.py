"""Shaders that are written in Python, threads, and the interpreter's lock."""

import gc
import threading

import numpy
import pytest

import ZxCore3D as zx


class Flat(zx.TVertexShaderCPU):
    """The vertex as it is, with a generic attribute in slot 1."""

    def Begin(self):
        self.m_Render.m_VarCount = 2

    def Execute(self, v):
        v[0] = self.m_Render.m_CurVertex
        v[1] = self.m_Render.m_CurAttrib[1]

    def GetAttribLocation(self, name):
        return {"place": 1}.get(name, -1)


class Tint(zx.TFragmentShaderCPU):
    """The colour of uniform 3, even columns alone."""

    def GetUniformLocation(self, name):
        return 3 if name == "tint" else -1

    def Execute(self, v, f):
        f.Color = self.m_Render.m_Uniforms[3]
        return f.X % 2 == 0


def program(vertex=None, fragment=None):
    made = zx.TProgramCPU()
    made.SetShaderV(vertex)
    made.SetShaderF(fragment)
    return made


def test_a_pair_draws(gl, draw):
    pair = program(Flat(), Tint())
    assert pair.GetUniformLocation("tint") == 3
    assert pair.GetUniformLocation("none") == 0xFFFFFFFF
    assert pair.GetAttribLocation("place") == 1
    gl.SetProgram(pair)
    assert gl.GetProgram() is pair
    gl.Uniform(3, 0.2, 0.4, 0.6, 1.0)
    draw()
    color = gl.GetColorSurface().Data
    assert (color[:, ::2] == [51, 102, 153, 255]).all()
    assert (color[:, 1::2] == [0, 0, 0, 255]).all(), "odd columns were discarded"
    gl.SetProgram(None)
    draw()
    assert (color == 255).all()


def test_shaders_live_as_long_as_they_are_installed(gl, draw):
    gl.SetProgram(program(Flat(), Tint()))
    gl.Uniform(3, 1.0, 1.0, 1.0, 1.0)
    gc.collect()
    draw()
    assert (gl.GetColorSurface().Data[:, ::2] == 255).all()


def test_a_shader_taken_out_of_its_program_stays_installed(gl, draw):
    pair = program(Flat(), Tint())
    gl.SetProgram(pair)
    pair.SetShaderF(None)
    assert pair.GetShaderF() is None
    gc.collect()
    gl.Uniform(3, 1.0, 1.0, 1.0, 1.0)
    draw()
    assert (gl.GetColorSurface().Data[:, 1] == [0, 0, 0, 255]).all()


def test_create_begins_with_the_standard_pair(whole):
    gl = zx.TRenderCPU()
    gl.SetProgram(program(None, Tint()))
    assert gl.Create(4, 4)
    assert gl.GetProgram().GetShaderV() is not None
    gc.collect()
    gl.VertexPointer(whole)
    gl.EnableClientState(zx.GL_VERTEX_ARRAY)
    gl.DrawArrays(zx.GL_TRIANGLES, 0, 6)
    assert (gl.GetColorSurface().Data == 255).all()


def test_what_an_installed_shader_knows(gl):
    shader = Tint()
    assert shader.m_Render is None
    gl.SetProgram(program(None, shader))
    assert shader.m_Render is gl
    assert program(None, shader).GetShaderF() is shader
    gl.SetProgram(None)
    assert shader.m_Render is None


def test_interpolated_slots_arrive(gl, whole):
    seen = {}

    class Look(zx.TFragmentShaderCPU):
        def Execute(self, v, f):
            seen[f.X, f.Y] = v
            f.Color = (1, 1, 1, 1)
            return True

    gl.SetProgram(program(Flat(), Look()))
    gl.EnableVertexAttribArray(0)
    gl.EnableVertexAttribArray(1)
    gl.VertexAttribPointer(0, whole)
    gl.VertexAttribPointer(1, whole)
    gl.DrawArrays(zx.GL_TRIANGLES, 0, 6)
    assert len(seen) == 16 * 12
    for (x, y), v in seen.items():
        assert v.shape == (8, 4)
        # The attribute is the place, which runs from -1 to 1 over the picture.
        assert abs(v[1, 0] - ((x + 0.5) / 8 - 1)) < 0.13
        assert abs(v[1, 1] - ((y + 0.5) / 6 - 1)) < 0.17
    assert len({id(v) for v in seen.values()}) == 16 * 12, "arrays that are kept are not used again"


def test_a_shader_writes_its_own_depth(gl, draw):
    class Deep(zx.TFragmentShaderCPU):
        def IsCalcDepth(self):
            return True

        def Execute(self, v, f):
            f.Depth = f.X / 16
            f.Color = (1, 1, 1, 1)
            return True

    gl.SetProgram(program(None, Deep()))
    assert gl.m_CalcDepth
    draw()
    assert (gl.GetDepthSurface().Data == numpy.arange(16) / 16).all()


def test_the_standard_shaders_can_be_built_upon(gl, draw):
    class Half(zx.TStdVertexShaderCPU):
        def Execute(self, v):
            super().Execute(v)
            v[0, :2] *= 0.5

    class Red(zx.TStdFragmentShaderCPU):
        def Execute(self, v, f):
            kept = super().Execute(v, f)
            f.Color[1:3] = 0
            return kept

    gl.SetProgram(program(Half(), Red()))
    draw()
    color = gl.GetColorSurface().Data
    inner = color[3:9, 4:12]
    assert (inner == [255, 0, 0, 255]).all()
    assert (color[:, :, 0] == 255).sum() == inner.shape[0] * inner.shape[1]


def test_the_standard_shaders_as_they_are(gl, draw):
    gl.SetProgram(program(zx.TStdVertexShaderCPU(), zx.TStdFragmentShaderCPU()))
    draw((0, 1, 0, 1))
    assert (gl.GetColorSurface().Data == [0, 255, 0, 255]).all()
    with pytest.raises(RuntimeError, match="not installed"):
        zx.TStdVertexShaderCPU().Execute(numpy.zeros((8, 4)))


@pytest.mark.parametrize("where", ["Begin", "Execute", "End"])
@pytest.mark.parametrize("mode", [zx.GL_TRIANGLES, zx.GL_LINE_LOOP, zx.GL_POINTS])
def test_what_a_shader_raises_is_raised(gl, draw, whole, where, mode):
    class Broken(Flat):
        pass

    def refuse(self, *_):
        raise LookupError("mine")
    setattr(Broken, where, refuse)
    gl.SetProgram(program(Broken()))
    gl.VertexPointer(whole)
    gl.EnableClientState(zx.GL_VERTEX_ARRAY)
    with pytest.raises(LookupError, match="mine"):
        gl.DrawArrays(mode, 0, 6)
    assert not gl.m_InBeginEnd
    gl.SetProgram(None)
    draw()
    assert (gl.GetColorSurface().Data == 255).all()


def test_what_a_fragment_shader_raises_is_raised(gl, draw):
    class Broken(zx.TFragmentShaderCPU):
        def Execute(self, v, f):
            raise ZeroDivisionError("mine")
    gl.SetProgram(program(None, Broken()))
    with pytest.raises(ZeroDivisionError):
        draw()

    class Silent(zx.TFragmentShaderCPU):
        def Execute(self, v, f):
            pass
    gl.SetProgram(program(None, Silent()))
    with pytest.raises(TypeError, match="returns True, or False"):
        draw()


def test_a_shader_without_its_operations_says_so(gl, draw):
    gl.SetProgram(program(None, zx.TFragmentShaderCPU()))
    with pytest.raises(TypeError, match="no Execute"):
        draw()
    gl.SetProgram(program(zx.TVertexShaderCPU()))
    with pytest.raises(TypeError, match="no Begin"):
        draw()


@pytest.mark.parametrize("operation", [
    lambda gl: gl.Destroy(), lambda gl: gl.SetSize(3, 3), lambda gl: gl.SetProgram(None),
    lambda gl: gl.VertexPointer(numpy.zeros((1, 2))), lambda gl: gl.Begin(zx.GL_POINTS),
    lambda gl: gl.BindColorSurface(None), lambda gl: gl.DeleteTextures([1]),
    lambda gl: gl.DrawArrays(zx.GL_POINTS, 0, 1),
])
def test_a_shader_may_not_change_the_context_that_draws(gl, draw, operation):
    class Meddler(zx.TFragmentShaderCPU):
        def Execute(self, v, f):
            operation(gl)
            return True
    gl.SetProgram(program(None, Meddler()))
    with pytest.raises(RuntimeError, match="the context is drawing"):
        draw()


def test_a_shader_may_read_and_draw_elsewhere(gl, draw, whole):
    other = zx.TRenderCPU()
    other.Create(2, 2)
    other.VertexPointer(whole)
    other.EnableClientState(zx.GL_VERTEX_ARRAY)

    class Nested(zx.TFragmentShaderCPU):
        def Execute(self, v, f):
            assert gl.GetIntegerv(zx.GL_VIEWPORT) == (0, 0, 16, 12)
            assert not gl.IsEnabled(zx.GL_BLEND)
            other.DrawArrays(zx.GL_TRIANGLES, 0, 6)
            f.Color = other.GetColorSurface().Data[0, 0] / 255
            return True
    gl.SetProgram(program(None, Nested()))
    draw()
    assert (gl.GetColorSurface().Data == 255).all()


def test_slots_have_bounds(gl):
    for name, value in (("m_VarCount", 0), ("m_VarCount", 9), ("m_VarColor", 8),
                        ("m_VarTexCoord", -2), ("m_VarPosition", 1)):
        with pytest.raises(ValueError, match=name):
            setattr(gl, name, value)


# --- Uniforms


def test_uniforms(gl):
    cells = gl.m_Uniforms
    assert cells.shape == (32, 4)
    gl.Uniform(3, 1.5)
    assert cells[3, 0] == 1.5
    gl.Uniform(4, 1.0, 2.0, 3.0, 4.0)
    gl.Uniform(5, numpy.array([5.0, 6.0]))
    gl.Uniform(6, [7.0, 8.0, 9.0])
    assert list(cells[4]) == [1, 2, 3, 4]
    assert list(cells[5, :2]) == [5, 6] and list(cells[6, :3]) == [7, 8, 9]
    gl.Uniform(7, 1, 2, -3)
    assert list(cells[7].view(numpy.int32)[:3]) == [1, 2, -3]
    gl.Uniform(8, 0xFFFFFFFF)
    assert cells[8].view(numpy.uint32)[0] == 0xFFFFFFFF
    gl.Uniform(9, True)
    assert cells[9].view(numpy.uint8)[0] == 1
    matrix = numpy.arange(16.0).reshape(4, 4)
    gl.Uniform(10, matrix)
    assert (cells[10:14] == matrix.T).all(), "column by column"
    gl.Uniform(20, numpy.arange(9.0).reshape(3, 3))
    assert list(cells[20:23].ravel()[:9]) == [0, 3, 6, 1, 4, 7, 2, 5, 8]
    gl.Uniform2(24, [1, 2])
    gl.Uniform3(25, [1, 2, 3])
    gl.Uniform4(26, [1, 2, 3, 4])
    assert list(cells[26]) == [1, 2, 3, 4]


@pytest.mark.parametrize("location", [-1, 0xFFFFFFFF, 32, 1000])
def test_locations_that_are_none_store_nothing(gl, location):
    gl.Uniform(location, 1.0)
    gl.Uniform(30, numpy.ones((4, 4)))
    assert not gl.m_Uniforms.any()


@pytest.mark.parametrize("values", [(), (1, 2, 3, 4, 5), ("text",), (numpy.ones((2, 2)),)])
def test_what_is_no_uniform_is_refused(gl, values):
    with pytest.raises((TypeError, ValueError)):
        gl.Uniform(0, *values)


def test_views_of_the_context_keep_it():
    gl = zx.TRenderCPU()
    cells = gl.m_Uniforms
    gl.Uniform(0, 2.0)
    del gl
    gc.collect()
    assert cells[0, 0] == 2


# --- Threads


def long_draw(context, triangles=300):
    """Draws large triangles in one call, of which 300 take some hundredths of a second or more."""
    points = numpy.tile(numpy.array([[-1, -1], [3, -1], [-1, 3]], numpy.float32), (triangles, 1))
    context.EnableClientState(zx.GL_VERTEX_ARRAY)
    context.VertexPointer(points)
    context.DrawArrays(zx.GL_TRIANGLES, 0, len(points))


def test_others_run_while_a_context_draws():
    gl = zx.TRenderCPU()
    gl.Create(1000, 1000)
    started, done, turns = threading.Event(), threading.Event(), []

    def take_turns():
        while not done.wait(0.001):
            turns.append(None)
            started.set()

    watcher = threading.Thread(target=take_turns)
    watcher.start()
    started.wait()
    # With the lock held a turn or two would fit between the calls, however long a draw is.
    for triangles in (300, 3000, 30000):
        before = len(turns)
        long_draw(gl, triangles)
        during = len(turns) - before
        if during >= 10:
            break
    done.set()
    watcher.join()
    assert during >= 10


def test_a_context_belongs_to_one_thread_at_a_time():
    gl = zx.TRenderCPU()
    gl.Create(2000, 2000)
    refused = []
    for triangles in (300, 3000, 30000):
        drawing = threading.Thread(target=long_draw, args=(gl, triangles))
        drawing.start()
        while drawing.is_alive():
            try:
                gl.Enable(zx.GL_BLEND)
            except RuntimeError as error:
                refused.append(str(error))
        drawing.join()
        if refused:
            break
    assert any("drawing on another thread" in text for text in refused)


def test_contexts_draw_at_the_same_time():
    contexts = [zx.TRenderCPU() for _ in range(3)]
    for context in contexts:
        context.Create(300, 200)
        context.Color3f(1, 1, 1)
    threads = [threading.Thread(target=long_draw, args=(c,)) for c in contexts]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for context in contexts:
        assert (context.GetColorSurface().Data == 255).all()
