"""Variants, attributes, streams and the persistent format."""

import numpy
import pytest

import ZxCore3D as zx


@pytest.mark.parametrize("value, kind, text", [
    (None, 0, None),
    (True, 1, None),
    (5, 6, "int32(5)"),
    (-2**31, 6, None),
    (2**31, 8, None),
    (-2**63, 8, None),
    (2**63, 9, None),
    (2**64 - 1, 9, None),
    (1.5, 11, None),
    ("text", 15, None),
    ("\u00e4\u03b2", 15, None),
    ("x" * 1000, 15, None),
])
def test_values_come_back(value, kind, text):
    variant = zx.TVariant(value)
    assert int(variant.Type) == kind
    assert variant.Get() == value and type(variant.Get()) is type(value)
    if text:
        assert variant.ToString() == text


@pytest.mark.parametrize("code, scalar", [
    (2, numpy.int8(-3)), (3, numpy.uint8(200)), (4, numpy.int16(-300)), (5, numpy.uint16(60000)),
    (7, numpy.uint32(2**32 - 1)), (10, numpy.float32(0.1)), (1, numpy.bool_(True))])
def test_numpy_scalars_keep_their_type(code, scalar):
    variant = zx.TVariant(scalar)
    assert int(variant.Type) == code
    assert variant.Get() == scalar.item()


def test_a_type_can_be_given():
    variant = zx.TVariant()
    assert variant.Set(7, zx.DATA_TYPE_UINT8)
    assert (variant.Get(), int(variant.Type)) == (7, 3)
    assert variant.Get(zx.DATA_TYPE_DOUBLE) == 7.0
    variant.Set(-1, zx.DATA_TYPE_INT64)
    assert variant.Get(zx.DATA_TYPE_UINT32) == 2**32 - 1
    with pytest.raises(TypeError, match="300 is no value of data type 3"):
        variant.Set(300, zx.DATA_TYPE_UINT8)
    with pytest.raises(zx.TZxMessage, match="TVariant::Get failed"):
        zx.TVariant("text").Get(zx.DATA_TYPE_INT32)
    with pytest.raises(OverflowError):
        variant.Set(2**64)


@pytest.mark.parametrize("dtype", [bool, numpy.int8, numpy.uint8, numpy.int16, numpy.uint16,
                                   numpy.int32, numpy.uint32, numpy.int64, numpy.uint64,
                                   numpy.float32, numpy.float64])
def test_arrays_come_back(dtype):
    values = numpy.array([0, 1, 1, 0, 1], dtype)
    variant = zx.TVariant(values)
    assert variant.Count == 5
    out = variant.Get()
    assert out.dtype == values.dtype and (out == values).all()
    variant.Reset()
    assert (out == values).all(), "arrays are copies"
    assert variant.Get() is None


def test_vectors():
    variant = zx.TVariant(numpy.arange(12, dtype=numpy.float32).reshape(3, 4))
    assert variant.Get().shape == (3, 4) and variant.Count == 3
    assert variant.SetVector([1, 2, 3])
    assert variant.Get() == (1, 2, 3)
    assert not variant.SetVector([1, 2, 3, 4, 5])
    with pytest.raises(TypeError):
        variant.SetArray(numpy.zeros((2, 2), int))
    with pytest.raises(TypeError, match="no dict"):
        variant.Set({})


def test_text_forms():
    variant = zx.TVariant()
    assert variant.FromString("int32(5)") and variant.Get() == 5
    assert not variant.FromString("five") and variant.Get() == 5
    assert variant.AsString() == "5"
    assert zx.TVariant(numpy.zeros(2)).AsString() is None
    assert "int32(5)" in repr(variant)


def test_attributes():
    attributes = zx.TAttributes()
    assert attributes.SetValue("b", 1) and attributes.SetValue("a", "text")
    assert attributes.GetCount() == 2
    assert list(attributes.GetValues()) == ["a", "b"], "in the order of the names"
    found = attributes.FindValue("b")
    assert attributes.RemoveValue("b") and not attributes.RemoveValue("b")
    assert found.Get() == 1, "a copy stays"
    assert attributes.FindValue("b") is None
    with pytest.raises(zx.TZxMessage) as raised:
        attributes.FindValueE("b")
    assert str(raised.value) == 'Value "b" not found'
    copy = zx.TAttributes(attributes)
    attributes.Clear()
    assert copy.GetCount() == 1 and attributes.GetCount() == 0


def test_attributable():
    thing = zx.TAttributable()
    with pytest.raises(zx.TZxMessage, match="Attribute list is NULL"):
        thing.CheckAttributesE()
    assert thing.FindAttribute("x") is None
    assert thing.SetAttribute("x", 2.5)
    thing.CheckAttributesE()
    assert thing.FindAttributeE("x").Get() == 2.5
    taken = thing.DetachAttributes()
    assert taken.FindValue("x").Get() == 2.5
    assert thing.DetachAttributes() is None
    thing.SetAttributes(taken)
    assert thing.RemoveAttribute("x") and not thing.RemoveAttribute("x")


def test_names():
    named = zx.TZxNamed()
    assert named.SetName("n" * 31) and not named.SetName("n" * 32)
    assert named.GetName() == "n" * 31
    assert named.IsName("n" * 31) and not named.IsName("n")


# --- Streams


def test_a_memory_stream():
    stream = zx.TMemoryStream()
    assert stream.WriteAll(b"one") and stream.WriteString("two") and stream.WriteEOL()
    assert (stream.GetPos(), stream.GetSize()) == (8, 8)
    assert stream.IsEOS() and stream.SetPos(0)
    assert stream.ReadAll(3) == b"one"
    assert stream.ReadLine() == b"two"
    assert stream.ReadLine() is None and stream.ReadAll(1) is None
    with pytest.raises(zx.TZxMessage, match="TStream::ReadAll failed!"):
        stream.ReadAllE(1)
    with pytest.raises(zx.TZxMessage, match="TStream::SetPosE failed!"):
        stream.SetPosE(1 << 40)
    assert zx.TMemoryStream.s_EOL == b"\r\n"
    assert stream.WriteAll(numpy.arange(3, dtype=numpy.uint8))


def test_no_length_takes_memory_by_itself():
    stream = zx.TMemoryStream()
    stream.WriteAll(b"abc")
    stream.SetPos(0)
    assert stream.ReadAll(1 << 60) is None
    stream.SetPos(0)
    assert stream._Read(1 << 60) == b"abc"
    stream.SetPos(0)
    assert stream.ReadLine(1 << 60) == b"abc"


def test_a_stream_over_a_buffer_of_ones_own():
    memory = bytearray(b"0123456789")
    stream = zx.TMemoryStream(memory)
    stream.SetPos(4)
    assert stream.WriteAll(b"abc")
    assert memory == b"0123abc789"
    assert not stream.WriteAll(b"too long") and memory == b"0123abc789"
    with pytest.raises(BufferError):
        memory.append(1)
    other = zx.TMemoryStream()
    other.Swap(stream)
    del stream
    assert other.SetPos(0) and other.ReadAll(4) == b"0123"
    other.Close()
    memory.append(1)
    with pytest.raises((BufferError, TypeError)):
        zx.TMemoryStream(b"not writable")


def test_files(tmp_path):
    stream = zx.TFileStream()
    assert not stream.Open(tmp_path / "none")
    assert stream.Create(tmp_path / "f") and stream.WriteAll(b"bytes") and stream.Close()
    assert stream.Open(tmp_path / "f")
    assert stream.ReadAll(5) == b"bytes" and stream.IsEOS()
    memory = zx.TMemoryStream()
    assert memory.LoadFromFile(tmp_path / "f") and memory.SaveToFile(tmp_path / "g")
    assert (tmp_path / "g").read_bytes() == b"bytes"


class Bytes(zx.TStream):
    """A stream that is written in Python."""

    def __init__(self, data=b"", step=3):
        super().__init__()
        self.Data, self.Pos, self.Step = bytearray(data), 0, step

    def IsEOS(self):
        return self.Pos >= len(self.Data)

    def SetEOS(self):
        del self.Data[self.Pos:]
        return True

    def GetPos(self):
        return self.Pos

    def SetPos(self, position):
        self.Pos = position
        return True

    def GetSize(self):
        return len(self.Data)

    def SetSize(self, size):
        return False

    def Skip(self, size):
        self.Pos += size
        return True

    def _Read(self, size):
        data = bytes(self.Data[self.Pos:self.Pos + min(size, self.Step)])
        self.Pos += len(data)
        return data

    def _Write(self, data):
        taken = min(len(data), self.Step)
        self.Data[self.Pos:self.Pos + taken] = data[:taken]
        self.Pos += taken
        return taken


def test_a_stream_that_is_written_in_python():
    stream = Bytes()
    assert stream.WriteAll(b"0123456789")
    stream.SetPos(0)
    assert stream.ReadAll(10) == b"0123456789", "by as many reads as it takes"
    assert stream.SetPosE(1)
    writer = zx.TObjectWriter(Bytes())
    assert writer.WriteString("abc")


def test_a_picture_from_a_stream_in_python(tmp_path):
    picture = numpy.arange(12, dtype=numpy.uint8).reshape(3, 4)
    zx.SaveImage(tmp_path / "p.png", picture)
    stream = Bytes((tmp_path / "p.png").read_bytes(), 1000)
    assert (zx.LoadImage(stream).Data == picture).all()


def test_what_a_stream_raises_is_raised():
    class Broken(Bytes):
        def _Read(self, size):
            raise LookupError("mine")
    with pytest.raises(LookupError, match="mine"):
        Broken(b"abc").ReadAll(2)
    with pytest.raises(LookupError):
        zx.LoadImage(Broken(b"abc"))

    class Lavish(Bytes):
        def _Read(self, size):
            return bytes(size + 1)
    with pytest.raises(ValueError, match="more bytes"):
        Lavish(b"abc").ReadAll(2)


# --- The persistent format


def test_stored_values_come_back():
    stream = zx.TMemoryStream()
    writer = zx.TObjectWriter(stream)
    values = [None, True, -5, 2**40, 2.5, "text", "x" * 100, numpy.arange(5, dtype=numpy.float64)]
    for number, value in enumerate(values):
        assert zx.SaveAttribute(writer, f"name{number}", zx.TVariant(value))
    stream.SetPos(0)
    reader = zx.TObjectReader(stream)
    for number, value in enumerate(values):
        name, variant = zx.LoadAttribute(reader)
        assert name == f"name{number}"
        same = variant.Get() == value
        assert same.all() if isinstance(value, numpy.ndarray) else same
    assert zx.LoadAttribute(reader) is None


def test_the_bytes_of_a_string_and_a_block():
    stream = zx.TMemoryStream()
    writer = zx.TObjectWriter(stream)
    block = zx.STORE_BLOCK()
    assert writer.WriteBlockBegin(block)
    assert writer.WriteString("abcde")
    writer.WriteBlockEndE(block)
    size = block.Size
    stream.SetPos(0)
    data = stream.ReadAll(stream.GetSize())
    assert data[:block.Pos] == size.to_bytes(block.Pos, "little")
    assert data[-8:] == b"abcde\0\0\0", "padded to a multiple of four"
    stream.SetPos(block.Pos)
    assert zx.TObjectReader(stream).ReadString() == b"abcde"
    with pytest.raises(RuntimeError):
        zx.TObjectWriter().WriteBlockBeginE(block)


def test_readers_and_writers_keep_their_streams():
    writer = zx.TObjectWriter(Bytes())
    for _ in range(100):
        Bytes(bytes(100))
    assert writer.WriteString("abc")
    assert zx.LoadVariant(zx.TObjectReader()) is None
