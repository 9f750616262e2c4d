"""Vertex arrays, indices and buffer objects: types, ranges, and what they keep alive."""

import array
import gc
import weakref

import numpy
import pytest

import ZxCore3D as zx

TRIANGLE = [[-1.0, -1.0, 0.0], [3.0, -1.0, 0.0], [-1.0, 3.0, 0.0]]  # covers the whole picture


def lit(gl):
    """How many pixels are not black."""
    return int((gl.GetColorSurface().Data[:, :, :3].max(axis=2) > 0).sum())


@pytest.fixture
def ready(gl):
    gl.EnableClientState(zx.GL_VERTEX_ARRAY)
    gl.Color3f(1, 1, 1)
    return gl


# --- What is taken


@pytest.mark.parametrize("make", [
    lambda: numpy.array(TRIANGLE, numpy.float32),
    lambda: numpy.array(TRIANGLE, numpy.float64),
    lambda: numpy.array(TRIANGLE, numpy.float32)[:, :2].copy(),
    lambda: numpy.array([p + [9, 9] for p in TRIANGLE], numpy.float32)[:, :3],
    lambda: numpy.array(TRIANGLE[::-1])[::-1],
    lambda: numpy.array(TRIANGLE * 2)[::2],
    lambda: numpy.array([(7, p) for p in TRIANGLE],
                        [("id", numpy.int32), ("at", numpy.float64, 3)])["at"],
    lambda: memoryview(numpy.array(TRIANGLE, numpy.float32)),
])
def test_buffers_of_a_fitting_type_are_taken(ready, make):
    ready.VertexPointer(make())
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(ready) == 16 * 12


def test_flat_buffers_are_taken_with_size_and_type(ready):
    flat = array.array("d", sum(TRIANGLE, []))
    ready.VertexPointer(3, zx.GL_DOUBLE, 0, flat)
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(ready) == 16 * 12


def test_an_explicit_stride_reads_interleaved_numbers(ready):
    interleaved = numpy.array([p + [1, 0, 0] for p in TRIANGLE], numpy.float32)
    ready.VertexPointer(3, zx.GL_FLOAT, 24, interleaved)
    ready.ColorPointer(interleaved[:, 3:])
    ready.EnableClientState(zx.GL_COLOR_ARRAY)
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert (ready.GetColorSurface().Data == [255, 0, 0, 255]).all()


def test_a_window_of_an_array_is_taken_with_its_own_steps(ready):
    wide = numpy.array([p + [9] for p in TRIANGLE], numpy.float32)
    ready.VertexPointer(3, zx.GL_FLOAT, 0, wide[:, :3])
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(ready) == 16 * 12


def test_bytes_are_normalised_colours(ready):
    ready.VertexPointer(numpy.array(TRIANGLE))
    ready.ColorPointer(4, zx.GL_UNSIGNED_BYTE, 0, bytes([255, 51, 0, 255] * 3))
    ready.EnableClientState(zx.GL_COLOR_ARRAY)
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert (ready.GetColorSurface().Data == [255, 51, 0, 255]).all()


# --- What is refused


@pytest.mark.parametrize("wrong, text", [
    (numpy.zeros((3, 3), numpy.int64), "float32, float64 or uint8, not of int64"),
    (numpy.zeros((3, 3), numpy.int8), "not of int8"),
    (numpy.zeros((3, 3), numpy.float16), "not of float16"),
    (numpy.zeros((3, 3), ">f4"), "not of >f4"),
    (numpy.zeros((3, 3), complex), "not of .*Zd"),
    (numpy.zeros((3, 3), object), "float32, float64 or uint8"),
    (TRIANGLE, "not list"),
    (None, ""),
    ("text", "not str"),
    (3.5, "not float"),
    (numpy.zeros((3, 5)), "1 to 4 components, not 5"),
    (numpy.zeros((3, 0)), "1 to 4 components, not 0"),
    (numpy.zeros((2, 3, 3)), "not of 3 dimensions"),
    (numpy.zeros((3, 6))[:, ::2], "side by side"),
    (numpy.broadcast_to(numpy.zeros(3), (5, 3)), "broadcast"),
])
def test_other_buffers_are_refused_clearly(gl, wrong, text):
    for point in (gl.VertexPointer, gl.ColorPointer, gl.TexCoordPointer, gl.NormalPointer,
                  lambda buffer: gl.VertexAttribPointer(1, buffer)):
        with pytest.raises(TypeError, match=text):
            point(wrong)


def test_a_type_that_the_buffer_has_not_is_refused(gl):
    with pytest.raises(TypeError, match="float32, which is not the type given"):
        gl.VertexPointer(3, zx.GL_DOUBLE, 0, numpy.zeros((3, 3), numpy.float32))
    with pytest.raises(TypeError, match="contiguous"):
        gl.VertexPointer(2, zx.GL_DOUBLE, 0, numpy.zeros((3, 3)).T)
    with pytest.raises(TypeError, match="negative"):
        gl.VertexPointer(2, zx.GL_DOUBLE, -16, numpy.zeros((3, 2)))
    with pytest.raises(TypeError, match="3 components, not 2"):
        gl.NormalPointer(numpy.zeros((3, 2)))
    assert gl.GetError() == 0


def test_sizes_and_types_that_do_not_exist_are_reported(gl):
    gl.VertexPointer(5, zx.GL_FLOAT, 0, numpy.zeros((3, 3), numpy.float32))
    assert gl.GetError() == zx.GL_INVALID_VALUE
    gl.VertexPointer(3, zx.GL_SHORT, 0, numpy.zeros((3, 3), numpy.float32))
    assert gl.GetError() == zx.GL_INVALID_VALUE
    gl.VertexAttribPointer(8, numpy.zeros((3, 3)))
    assert gl.GetError() == 0xFFFFFFFF


def test_a_refused_array_leaves_the_one_before(ready):
    ready.VertexPointer(numpy.array(TRIANGLE))
    with pytest.raises(TypeError):
        ready.VertexPointer(numpy.zeros((1, 3), int))
    ready.VertexPointer(5, zx.GL_FLOAT, 0, numpy.zeros((1, 3), numpy.float32))
    gc.collect()
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(ready) == 16 * 12


# --- Ranges


@pytest.mark.parametrize("first, count, element", [(0, 4, 3), (1, 3, 3), (-1, 2, -1), (3, 1, 3),
                                                   (2**31 - 1, 2, 2**31)])
def test_elements_that_an_array_has_not_are_refused(ready, first, count, element):
    ready.VertexPointer(numpy.array(TRIANGLE))
    with pytest.raises(IndexError, match=f"element {element} .* array of 3"):
        ready.DrawArrays(zx.GL_TRIANGLES, first, count)
    assert lit(ready) == 0


def test_the_shortest_enabled_array_counts(ready):
    ready.VertexPointer(numpy.array(TRIANGLE))
    ready.ColorPointer(numpy.zeros((2, 3)))
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)  # it isn't enabled yet
    ready.EnableClientState(zx.GL_COLOR_ARRAY)
    with pytest.raises(IndexError):
        ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)


def test_a_stride_shortens_an_array(ready):
    ready.VertexPointer(2, zx.GL_DOUBLE, 40, numpy.zeros(11))
    ready.DrawArrays(zx.GL_POINTS, 0, 2)
    with pytest.raises(IndexError, match="array of 2"):
        ready.DrawArrays(zx.GL_POINTS, 0, 3)


def test_without_an_enabled_array_nothing_happens(gl):
    gl.DrawArrays(zx.GL_TRIANGLES, 0, 300)
    gl.DrawElements(zx.GL_TRIANGLES, numpy.zeros(3, numpy.uint8))
    assert gl.GetError() == 0 and lit(gl) == 0


@pytest.mark.parametrize("dtype", [numpy.uint8, numpy.uint16, numpy.uint32])
def test_indices(ready, dtype):
    ready.VertexPointer(numpy.array([[9, 9, 9]] + TRIANGLE))
    indices = numpy.array([1, 2, 3], dtype)
    ready.DrawElements(zx.GL_TRIANGLES, indices)
    assert lit(ready) == 16 * 12
    with pytest.raises(IndexError, match="element 4"):
        ready.DrawElements(zx.GL_TRIANGLES, indices + dtype(1))
    code = {1: zx.GL_UNSIGNED_BYTE, 2: zx.GL_UNSIGNED_SHORT, 4: zx.GL_UNSIGNED_INT}
    ready.Clear(zx.GL_COLOR_BUFFER_BIT)
    ready.DrawElements(zx.GL_TRIANGLES, 3, code[indices.itemsize], indices)
    assert lit(ready) == 16 * 12
    with pytest.raises(IndexError, match="fewer indices"):
        ready.DrawElements(zx.GL_TRIANGLES, 4, code[indices.itemsize], indices)


@pytest.mark.parametrize("wrong", [numpy.zeros(3, numpy.int64), numpy.zeros(3, numpy.int32),
                                   numpy.zeros(3), [0, 1, 2], numpy.zeros(6, numpy.uint8)[::2]])
def test_other_indices_are_refused(ready, wrong):
    ready.VertexPointer(numpy.array(TRIANGLE))
    with pytest.raises(TypeError, match="DrawElements takes"):
        ready.DrawElements(zx.GL_TRIANGLES, wrong)


def test_index_errors_of_the_interface(ready):
    ready.VertexPointer(numpy.array(TRIANGLE))
    ready.DrawElements(zx.GL_TRIANGLES, 3, zx.GL_UNSIGNED_INT, None)
    assert ready.GetError() == zx.GL_INVALID_VALUE
    ready.DrawElements(zx.GL_TRIANGLES, 3, zx.GL_INT, numpy.zeros(3, numpy.uint32))
    assert ready.GetError() == zx.GL_INVALID_VALUE
    with pytest.raises(TypeError, match="not the type given"):
        ready.DrawElements(zx.GL_TRIANGLES, 3, zx.GL_UNSIGNED_INT, numpy.zeros(3, numpy.uint16))


# --- What they keep alive


def test_arrays_live_until_they_are_set_again(ready):
    class Array(numpy.ndarray):
        """One that can be watched."""

    points = numpy.array(TRIANGLE).view(Array)
    gone = weakref.ref(points)
    ready.VertexPointer(points)
    del points
    gc.collect()
    assert gone() is not None
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(ready) == 16 * 12
    ready.VertexPointer(numpy.zeros((1, 3)))
    assert gone() is None


def test_none_lets_an_array_go(ready):
    ready.VertexPointer(numpy.array(TRIANGLE))
    ready.VertexPointer(3, zx.GL_FLOAT, 0, None)
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(ready) == 0


def test_memory_that_is_read_can_not_be_resized(ready):
    points = bytearray(9)
    ready.VertexPointer(3, zx.GL_UNSIGNED_BYTE, 0, points)
    with pytest.raises(BufferError):
        points.append(1)


def test_arrays_are_read_and_not_copied(ready):
    points = numpy.zeros((3, 3))
    ready.VertexPointer(points)
    points[:] = TRIANGLE
    ready.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(ready) == 16 * 12


def test_saved_client_state_keeps_its_arrays(gl):
    gl.EnableVertexAttribArray(0)
    gl.VertexAttribPointer(0, numpy.array(TRIANGLE))
    gl.PushClientAttrib(0)
    gl.VertexAttribPointer(0, numpy.zeros((1, 3)))
    gc.collect()
    churn = [numpy.zeros((3, 3)) for _ in range(100)]
    gl.PopClientAttrib()
    gl.Color3f(1, 1, 1)
    gl.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(gl) == 16 * 12
    del churn
    gl.PopClientAttrib()
    assert gl.GetError() == zx.GL_STACK_UNDERFLOW


def test_vertex_array_objects_have_arrays_of_their_own(gl):
    first, second = gl.GenVertexArrays(2)
    assert (first, second) == (1, 2)
    for name, points in ((first, TRIANGLE), (second, [[5, 5, 5]])):
        gl.BindVertexArray(name)
        gl.EnableVertexAttribArray(0)
        gl.VertexAttribPointer(0, numpy.array(points, float))
    gl.BindVertexArray(first)
    gl.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(gl) == 16 * 12
    gl.BindVertexArray(second)
    with pytest.raises(IndexError, match="array of 1"):
        gl.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    gl.DeleteVertexArrays([second, first])
    gl.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert gl.GetIntegerv(zx.GL_VERTEX_ARRAY_BINDING) == 0
    assert gl.GetVertexAttrib(0, zx.GL_VERTEX_ATTRIB_ARRAY_ENABLED) == 0


def test_an_outline_leaves_its_points_set(ready):
    corners = [[-0.9, -0.9], [0.9, -0.9], [0.9, 0.9]]
    ready.Polygon(corners, (1, 1, 1), 1, (0, 0, 0), 0)
    outline = lit(ready)
    assert outline > 20
    gc.collect()
    churn = [numpy.zeros((3, 2)) for _ in range(100)]
    ready.Clear(zx.GL_COLOR_BUFFER_BIT)
    ready.DrawArrays(zx.GL_LINE_LOOP, 0, 3)
    assert lit(ready) == outline
    del churn
    ready.Clear(zx.GL_COLOR_BUFFER_BIT)
    ready.Domain([corners, numpy.array(corners) * 0.5], (1, 1, 1), 1, (0, 0, 0), 0)
    assert lit(ready) > outline
    with pytest.raises(TypeError, match="points"):
        ready.Polygon([1, 2, 3], (1, 1, 1), 1, (0, 0, 0), 0)


# --- Buffer objects


@pytest.fixture
def buffered(ready):
    """The triangle in a buffer object."""
    (name,) = ready.GenBuffers(1)
    ready.BindBuffer(zx.GL_ARRAY_BUFFER, name)
    ready.BufferData(zx.GL_ARRAY_BUFFER, None, numpy.array(TRIANGLE), zx.GL_STATIC_DRAW)
    ready.VertexPointer(3, zx.GL_DOUBLE, 0, 0)
    return ready


def test_a_buffer_object_is_read_by_offset(buffered):
    buffered.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(buffered) == 16 * 12
    assert buffered.GetBufferParameter(zx.GL_ARRAY_BUFFER, zx.GL_BUFFER_SIZE) == 72
    buffered.VertexPointer(3, zx.GL_DOUBLE, 0, 24)
    with pytest.raises(IndexError, match="array of 2"):
        buffered.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    buffered.VertexPointer(3, zx.GL_DOUBLE, 0, 1000)
    with pytest.raises(IndexError, match="array of 0"):
        buffered.DrawArrays(zx.GL_TRIANGLES, 0, 1)


def test_with_a_buffer_object_an_offset_is_wanted(buffered):
    with pytest.raises(TypeError, match="an offset is wanted, not ndarray"):
        buffered.VertexPointer(3, zx.GL_DOUBLE, 0, numpy.zeros((3, 3)))
    with pytest.raises(TypeError, match="buffer object is bound"):
        buffered.VertexPointer(numpy.zeros((3, 3)))
    buffered.BindBuffer(zx.GL_ARRAY_BUFFER, 0)
    with pytest.raises(TypeError, match="not int"):
        buffered.VertexPointer(3, zx.GL_DOUBLE, 0, 0)


def test_arrays_keep_the_bytes_of_a_deleted_buffer(buffered):
    buffered.DeleteBuffers([1])
    churn = [bytearray(72) for _ in range(1000)]
    buffered.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(buffered) == 16 * 12
    del churn


def test_arrays_keep_the_bytes_that_have_to_move(buffered):
    buffered.BufferData(zx.GL_ARRAY_BUFFER, 1 << 20, None, zx.GL_STATIC_DRAW)
    churn = [bytearray(72) for _ in range(1000)]
    buffered.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(buffered) == 16 * 12
    del churn


def test_new_bytes_of_the_same_size_are_seen(buffered):
    buffered.BufferData(zx.GL_ARRAY_BUFFER, None, numpy.full(9, 5.0), zx.GL_STATIC_DRAW)
    buffered.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(buffered) == 0
    buffered.BufferSubData(zx.GL_ARRAY_BUFFER, 0, numpy.array(TRIANGLE))
    buffered.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(buffered) == 16 * 12


def test_a_mapped_buffer_is_a_view(buffered):
    view = buffered.MapBuffer(zx.GL_ARRAY_BUFFER, zx.GL_READ_WRITE)
    assert (view.view(float).reshape(3, 3) == TRIANGLE).all()
    view[:] = 0
    assert buffered.UnmapBuffer(zx.GL_ARRAY_BUFFER)
    buffered.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(buffered) == 0
    view[0] = 7
    buffered.BufferData(zx.GL_ARRAY_BUFFER, 1 << 20, None, zx.GL_STATIC_DRAW)
    buffered.DeleteBuffers([1])
    churn = [bytearray(72) for _ in range(1000)]
    assert view[0] == 7 and not view[1:].any()
    del churn


def test_destroy_leaves_views_and_arrays_sound(buffered):
    view = buffered.MapBuffer(zx.GL_ARRAY_BUFFER, zx.GL_READ_WRITE)
    buffered.BindBuffer(zx.GL_ARRAY_BUFFER, 0)
    buffered.Destroy()
    assert (view.view(float).reshape(3, 3) == TRIANGLE).all()
    assert buffered.Create(16, 12)
    buffered.DrawArrays(zx.GL_TRIANGLES, 0, 3)
    assert lit(buffered) == 16 * 12


def test_indices_in_a_buffer_object(ready):
    ready.VertexPointer(numpy.array(TRIANGLE))
    (name,) = ready.GenBuffers(1)
    ready.BindBuffer(zx.GL_ELEMENT_ARRAY_BUFFER, name)
    ready.BufferData(zx.GL_ELEMENT_ARRAY_BUFFER, None, numpy.array([9, 0, 1, 2], numpy.uint16),
                     zx.GL_STATIC_DRAW)
    ready.DrawElements(zx.GL_TRIANGLES, 3, zx.GL_UNSIGNED_SHORT, 2)
    assert lit(ready) == 16 * 12
    with pytest.raises(IndexError, match="element 9"):
        ready.DrawElements(zx.GL_TRIANGLES, 3, zx.GL_UNSIGNED_SHORT, 0)
    with pytest.raises(IndexError, match="fewer indices"):
        ready.DrawElements(zx.GL_TRIANGLES, 4, zx.GL_UNSIGNED_SHORT, 2)
    with pytest.raises(TypeError, match="offset"):
        ready.DrawElements(zx.GL_TRIANGLES, 3, zx.GL_UNSIGNED_SHORT, numpy.zeros(3, numpy.uint16))


def test_buffer_errors(ready):
    ready.BufferData(zx.GL_ARRAY_BUFFER, 16, None, zx.GL_STATIC_DRAW)
    assert ready.GetError() == zx.GL_INVALID_OPERATION
    assert ready.MapBuffer(zx.GL_ARRAY_BUFFER, zx.GL_READ_WRITE) is None
    ready.GetError()
    ready.BindBuffer(zx.GL_ARRAY_BUFFER, ready.GenBuffers(1)[0])
    ready.BufferData(zx.GL_ARRAY_BUFFER, -1, None, zx.GL_STATIC_DRAW)
    assert ready.GetError() == zx.GL_INVALID_VALUE
    ready.BufferSubData(zx.GL_ARRAY_BUFFER, 0, b"12345")
    assert ready.GetError() == zx.GL_INVALID_VALUE
    with pytest.raises(ValueError, match="fewer bytes"):
        ready.BufferData(zx.GL_ARRAY_BUFFER, 6, b"12345", zx.GL_STATIC_DRAW)


# --- Immediate mode


def test_vertices_one_by_one(gl):
    gl.Begin(zx.GL_TRIANGLES)
    gl.Color3ub(255, 0, 0)
    gl.Vertex3fv(TRIANGLE[0])
    gl.Vertex3dv(numpy.array(TRIANGLE[1]))
    assert lit(gl) == 0
    gl.Vertex3i(-1, 3, 0)
    assert lit(gl) == 16 * 12, "drawn as soon as it is whole"
    gl.End()
    with pytest.raises(TypeError):
        gl.Vertex3fv([1, 2])


def test_attribute_0_submits_a_vertex(gl):
    gl.Begin(zx.GL_POINTS)
    gl.VertexAttrib(1, 0.5)
    assert lit(gl) == 0
    gl.VertexAttrib(0, (0.01, 0.01))
    gl.End()
    assert lit(gl) == 1
    assert list(gl.m_CurAttrib[1]) == [0.5, 0, 0, 1]
