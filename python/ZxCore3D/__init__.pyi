"""Types of the module, made from the module itself by `tools/MakeStubs.py`."""

import os
from typing import Any, Optional, Sequence, Union, overload

import numpy
import numpy.typing

Buffer = Any  # whatever has the buffer protocol

__version__: str

GL_ALL_ATTRIB_BITS: int
GL_ALPHA_TEST: int
GL_ALWAYS: int
GL_AMBIENT: int
GL_AMBIENT_AND_DIFFUSE: int
GL_ARRAY_BUFFER: int
GL_ARRAY_BUFFER_BINDING: int
GL_ATOMIC_COUNTER_BUFFER: int
GL_ATOMIC_COUNTER_BUFFER_BINDING: int
GL_BACK: int
GL_BLEND: int
GL_BUFFER_ACCESS: int
GL_BUFFER_MAPPED: int
GL_BUFFER_SIZE: int
GL_BUFFER_USAGE: int
GL_BYTE: int
GL_CCW: int
GL_CLAMP: int
GL_CLAMP_TO_BORDER: int
GL_CLAMP_TO_EDGE: int
GL_CLIENT_ALL_ATTRIB_BITS: int
GL_COLOR: int
GL_COLOR_ARRAY: int
GL_COLOR_BUFFER_BIT: int
GL_COLOR_CLEAR_VALUE: int
GL_COLOR_INDEX: int
GL_COLOR_MATERIAL: int
GL_COLOR_MATERIAL_FACE: int
GL_COLOR_MATERIAL_PARAMETER: int
GL_COLOR_WRITEMASK: int
GL_COMPILE: int
GL_CONSTANT_ATTENUATION: int
GL_CULL_FACE: int
GL_CULL_FACE_MODE: int
GL_CURRENT_BIT: int
GL_CURRENT_COLOR: int
GL_CW: int
GL_DEBUG_OUTPUT: int
GL_DECR: int
GL_DECR_WRAP: int
GL_DEPTH_BUFFER_BIT: int
GL_DEPTH_CLEAR_VALUE: int
GL_DEPTH_TEST: int
GL_DEPTH_WRITEMASK: int
GL_DIFFUSE: int
GL_DONT_CARE: int
GL_DOUBLE: int
GL_DOUBLEBUFFER: int
GL_DYNAMIC_DRAW: int
GL_ELEMENT_ARRAY_BUFFER: int
GL_ELEMENT_ARRAY_BUFFER_BINDING: int
GL_EMISSION: int
GL_ENABLE_BIT: int
GL_EQUAL: int
GL_EXP: int
GL_EXP2: int
GL_EXTENSIONS: int
GL_FASTEST: int
GL_FEEDBACK: int
GL_FILL: int
GL_FLAT: int
GL_FLOAT: int
GL_FOG: int
GL_FOG_BIT: int
GL_FOG_COLOR: int
GL_FOG_DENSITY: int
GL_FOG_END: int
GL_FOG_MODE: int
GL_FOG_START: int
GL_FRAMEBUFFER: int
GL_FRAMEBUFFER_BINDING: int
GL_FRONT: int
GL_FRONT_AND_BACK: int
GL_FRONT_FACE: int
GL_FRONT_LEFT: int
GL_GEQUAL: int
GL_GREATER: int
GL_HINT_BIT: int
GL_INCR: int
GL_INCR_WRAP: int
GL_INDEX_ARRAY: int
GL_INT: int
GL_INVALID_ENUM: int
GL_INVALID_OPERATION: int
GL_INVALID_VALUE: int
GL_INVERT: int
GL_KEEP: int
GL_LEQUAL: int
GL_LESS: int
GL_LIGHT0: int
GL_LIGHT1: int
GL_LIGHT2: int
GL_LIGHT3: int
GL_LIGHT4: int
GL_LIGHT5: int
GL_LIGHT6: int
GL_LIGHT7: int
GL_LIGHTING: int
GL_LIGHTING_BIT: int
GL_LIGHT_MODEL_AMBIENT: int
GL_LIGHT_MODEL_COLOR_CONTROL: int
GL_LIGHT_MODEL_LOCAL_VIEWER: int
GL_LIGHT_MODEL_TWO_SIDE: int
GL_LINE: int
GL_LINEAR: int
GL_LINEAR_ATTENUATION: int
GL_LINEAR_MIPMAP_LINEAR: int
GL_LINES: int
GL_LINE_LOOP: int
GL_LINE_SMOOTH: int
GL_LINE_SMOOTH_HINT: int
GL_LINE_STIPPLE: int
GL_LINE_STRIP: int
GL_LUMINANCE: int
GL_LUMINANCE_ALPHA: int
GL_MAX_LIGHTS: int
GL_MAX_TEXTURE_SIZE: int
GL_MAX_VERTEX_ATTRIBS: int
GL_MODELVIEW: int
GL_MODELVIEW_MATRIX: int
GL_MODULATE: int
GL_NEAREST: int
GL_NEVER: int
GL_NICEST: int
GL_NORMALIZE: int
GL_NORMAL_ARRAY: int
GL_NOTEQUAL: int
GL_NO_ERROR: int
GL_ONE: int
GL_ONE_MINUS_SRC_ALPHA: int
GL_OUT_OF_MEMORY: int
GL_PACK_ALIGNMENT: int
GL_PACK_LSB_FIRST: int
GL_PACK_ROW_LENGTH: int
GL_PACK_SKIP_PIXELS: int
GL_PACK_SKIP_ROWS: int
GL_PACK_SWAP_BYTES: int
GL_PERSPECTIVE_CORRECTION_HINT: int
GL_PIXEL_PACK_BUFFER: int
GL_PIXEL_PACK_BUFFER_BINDING: int
GL_PIXEL_UNPACK_BUFFER: int
GL_PIXEL_UNPACK_BUFFER_BINDING: int
GL_POINT: int
GL_POINTS: int
GL_POLYGON: int
GL_POLYGON_BIT: int
GL_POLYGON_MODE: int
GL_POLYGON_OFFSET_FILL: int
GL_POSITION: int
GL_PROJECTION: int
GL_PROJECTION_MATRIX: int
GL_QUADRATIC_ATTENUATION: int
GL_QUADS: int
GL_QUAD_STRIP: int
GL_READ_FRAMEBUFFER_BINDING: int
GL_READ_ONLY: int
GL_READ_WRITE: int
GL_RED: int
GL_RENDER: int
GL_RENDERER: int
GL_RENDER_MODE: int
GL_REPEAT: int
GL_REPLACE: int
GL_RG: int
GL_RGB: int
GL_RGBA: int
GL_RGBA8: int
GL_RGBA_MODE: int
GL_S: int
GL_SCISSOR_TEST: int
GL_SELECT: int
GL_SEPARATE_SPECULAR_COLOR: int
GL_SHADER_STORAGE_BUFFER: int
GL_SHADER_STORAGE_BUFFER_BINDING: int
GL_SHADE_MODEL: int
GL_SHININESS: int
GL_SHORT: int
GL_SINGLE_COLOR: int
GL_SMOOTH: int
GL_SPECULAR: int
GL_SPOT_CUTOFF: int
GL_SPOT_DIRECTION: int
GL_SPOT_EXPONENT: int
GL_SRC_ALPHA: int
GL_STACK_OVERFLOW: int
GL_STACK_UNDERFLOW: int
GL_STATIC_DRAW: int
GL_STENCIL_BITS: int
GL_STENCIL_BUFFER_BIT: int
GL_STENCIL_CLEAR_VALUE: int
GL_STENCIL_FAIL: int
GL_STENCIL_PASS_DEPTH_FAIL: int
GL_STENCIL_PASS_DEPTH_PASS: int
GL_STENCIL_TEST: int
GL_STEREO: int
GL_STREAM_DRAW: int
GL_TEXTURE: int
GL_TEXTURE0: int
GL_TEXTURE1: int
GL_TEXTURE2: int
GL_TEXTURE3: int
GL_TEXTURE4: int
GL_TEXTURE5: int
GL_TEXTURE6: int
GL_TEXTURE7: int
GL_TEXTURE_1D: int
GL_TEXTURE_2D: int
GL_TEXTURE_BIT: int
GL_TEXTURE_BORDER_COLOR: int
GL_TEXTURE_COORD_ARRAY: int
GL_TEXTURE_ENV: int
GL_TEXTURE_ENV_MODE: int
GL_TEXTURE_GEN_MODE: int
GL_TEXTURE_MAG_FILTER: int
GL_TEXTURE_MATRIX: int
GL_TEXTURE_MIN_FILTER: int
GL_TEXTURE_WRAP_S: int
GL_TEXTURE_WRAP_T: int
GL_TRANSFORM_BIT: int
GL_TRIANGLES: int
GL_TRIANGLE_FAN: int
GL_TRIANGLE_STRIP: int
GL_UNPACK_ALIGNMENT: int
GL_UNPACK_LSB_FIRST: int
GL_UNPACK_ROW_LENGTH: int
GL_UNPACK_SKIP_PIXELS: int
GL_UNPACK_SKIP_ROWS: int
GL_UNPACK_SWAP_BYTES: int
GL_UNSIGNED_BYTE: int
GL_UNSIGNED_INT: int
GL_UNSIGNED_SHORT: int
GL_VENDOR: int
GL_VERSION: int
GL_VERTEX_ARRAY: int
GL_VERTEX_ARRAY_BINDING: int
GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING: int
GL_VERTEX_ATTRIB_ARRAY_DIVISOR: int
GL_VERTEX_ATTRIB_ARRAY_ENABLED: int
GL_VERTEX_ATTRIB_ARRAY_INTEGER: int
GL_VERTEX_ATTRIB_ARRAY_NORMALIZED: int
GL_VERTEX_ATTRIB_ARRAY_SIZE: int
GL_VERTEX_ATTRIB_ARRAY_STRIDE: int
GL_VERTEX_ATTRIB_ARRAY_TYPE: int
GL_VIEWPORT: int
GL_VIEWPORT_BIT: int
GL_WRITE_ONLY: int
GL_ZERO: int


class DATA_FORMAT:
    """What a surface's components mean."""
    DATA_FORMAT_NONE: DATA_FORMAT
    DATA_FORMAT_LUMINANCE: DATA_FORMAT
    DATA_FORMAT_LUMINANCE_ALPHA: DATA_FORMAT
    DATA_FORMAT_RED: DATA_FORMAT
    DATA_FORMAT_RG: DATA_FORMAT
    DATA_FORMAT_RGB: DATA_FORMAT
    DATA_FORMAT_RGBA: DATA_FORMAT
    DATA_FORMAT_DEPTH: DATA_FORMAT
    DATA_FORMAT_STENCIL: DATA_FORMAT
    __members__: dict[str, Any]
    def __init__(self, value: int) -> None: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...

DATA_FORMAT_NONE: DATA_FORMAT
DATA_FORMAT_LUMINANCE: DATA_FORMAT
DATA_FORMAT_LUMINANCE_ALPHA: DATA_FORMAT
DATA_FORMAT_RED: DATA_FORMAT
DATA_FORMAT_RG: DATA_FORMAT
DATA_FORMAT_RGB: DATA_FORMAT
DATA_FORMAT_RGBA: DATA_FORMAT
DATA_FORMAT_DEPTH: DATA_FORMAT
DATA_FORMAT_STENCIL: DATA_FORMAT


class DATA_TYPE:
    """The type of a value or component."""
    DATA_TYPE_NONE: DATA_TYPE
    DATA_TYPE_BOOL: DATA_TYPE
    DATA_TYPE_INT8: DATA_TYPE
    DATA_TYPE_UINT8: DATA_TYPE
    DATA_TYPE_INT16: DATA_TYPE
    DATA_TYPE_UINT16: DATA_TYPE
    DATA_TYPE_INT32: DATA_TYPE
    DATA_TYPE_UINT32: DATA_TYPE
    DATA_TYPE_INT64: DATA_TYPE
    DATA_TYPE_UINT64: DATA_TYPE
    DATA_TYPE_FLOAT: DATA_TYPE
    DATA_TYPE_DOUBLE: DATA_TYPE
    DATA_TYPE_REF: DATA_TYPE
    DATA_TYPE_STRING: DATA_TYPE
    __members__: dict[str, Any]
    def __init__(self, value: int) -> None: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...

DATA_TYPE_NONE: DATA_TYPE
DATA_TYPE_BOOL: DATA_TYPE
DATA_TYPE_INT8: DATA_TYPE
DATA_TYPE_UINT8: DATA_TYPE
DATA_TYPE_INT16: DATA_TYPE
DATA_TYPE_UINT16: DATA_TYPE
DATA_TYPE_INT32: DATA_TYPE
DATA_TYPE_UINT32: DATA_TYPE
DATA_TYPE_INT64: DATA_TYPE
DATA_TYPE_UINT64: DATA_TYPE
DATA_TYPE_FLOAT: DATA_TYPE
DATA_TYPE_DOUBLE: DATA_TYPE
DATA_TYPE_REF: DATA_TYPE
DATA_TYPE_STRING: DATA_TYPE


class FS_DATA:
    """What a fragment shader gets beside the interpolated slots, and what it gives back."""
    @property
    def Color(self) -> numpy.typing.NDArray[Any]:
        """Red, green, blue, alpha, written by the shader; 0 to 1 is what the colour write expects."""
    @Color.setter
    def Color(self, value: Any) -> None: ...
    @property
    def Depth(self) -> float:
        """Window depth; written by the shader if its `IsCalcDepth` says so."""
    @Depth.setter
    def Depth(self, value: Any) -> None: ...
    @property
    def FrontFacing(self) -> bool:
        """Of the last triangle piece; points and lines leave it."""
    @property
    def X(self) -> int:
        """Pixel column."""
    @property
    def Y(self) -> int:
        """Pixel row."""
    def __init__(self) -> None:
        ...


class GLError(Exception):
    """An error code that an operation reported, on a context that raises errors. `Code` is the number."""
    Code: int


class STORE_BLOCK:
    """One open block of the persistent format, held by whoever writes it."""
    @property
    def Pos(self) -> int:
        """Stream position directly behind the block's size field."""
    @property
    def Size(self) -> int:
        """Bytes of payload; 0 until the block ends."""
    def __init__(self) -> None:
        ...


class TAttributable:
    """Gives an object an attribute list that costs one pointer until it is first needed. The object owns the list. Reading never makes one."""
    def CheckAttributesE(self) -> None:
        """Raises `TZxMessage` if there is no list."""
    def ClearAttributes(self) -> None:
        """Deletes the list."""
    def DetachAttributes(self) -> TAttributes:
        """Hands the list, or None, to the caller."""
    def FindAttribute(self, name: str) -> Any:
        """A copy of the value under `name`, or None."""
    def FindAttributeE(self, name: str) -> Any:
        """The same; raises `TZxMessage` where there is none."""
    def QueryAttributes(self) -> TAttributes:
        """A copy of the list; an empty one is made if there is none."""
    def RemoveAttribute(self, name: str) -> bool:
        """Removes the value under `name`; false if there is no list or no such value."""
    def SetAttribute(self, name: str, value: Any) -> bool:
        """Makes the list if needed and stores a value."""
    def SetAttributes(self, attributes: TAttributes) -> None:
        """Makes the list a copy of `attributes`."""
    def Swap(self, other: TAttributable) -> None:
        """Exchanges the two lists."""
    def __init__(self) -> None:
        ...


class TAttributes:
    """Values by name, in the byte order of the names. Values go in and come out as copies."""
    def Clear(self) -> None:
        """Removes all values."""
    def FindValue(self, name: str) -> Any:
        """A copy of the value under `name`, or None."""
    def FindValueE(self, name: str) -> Any:
        """The same; raises `TZxMessage` where there is none."""
    def GetCount(self) -> int:
        """The number of values."""
    def GetValues(self) -> dict:
        """A dictionary of copies, in the order of the names."""
    def RemoveValue(self, name: str) -> bool:
        """Removes the value under `name`; false if there is none."""
    def SetValue(self, name: str, value: Any) -> bool:
        """Stores what a `TVariant` takes under `name`, in place of what is there."""
    @overload
    def __init__(self) -> None:
        """A deep copy."""
    @overload
    def __init__(self, other: TAttributes) -> None:
        """A deep copy."""


class TDataSurface:
    """A surface that owns its pixels.

    Its block comes from `AllocateSurfaceBlock`: behind `DataSize` bytes of pixels lies one row and one pixel of zeroed slack, so that reading one column or row past the end stays inside it."""
    @property
    def Channels(self) -> int:
        """Components of a pixel."""
    def Create(self, width: int, height: int, format: int, type: int, components: int) -> bool:
        """Makes a surface of `width` by `height` pixels with tight rows, all bytes 0, in the place of what was there. False, leaving the surface empty, for sizes, components or a type that can't be, and when memory is exhausted. Raises `RuntimeError` while a context draws into the surface or samples it."""
    @property
    def Data(self) -> numpy.typing.NDArray[Any]:
        """The pixels as a writable array without a copy: rows from the bottom of the picture up, columns, and channels where there is more than one.

        The array stays valid whatever becomes of the surface: pixels that the surface loses by a resize, `Create` or `Destroy` belong to the arrays that look at them from then on."""
    @property
    def DataSize(self) -> int:
        """Bytes that belong to the pixels."""
    @property
    def Depth(self) -> int:
        """Slices, 1 for an image."""
    def Destroy(self) -> None:
        """Empties the surface. Arrays that look at its pixels keep them."""
    @property
    def Format(self) -> DATA_FORMAT:
        """What the components mean."""
    @property
    def Height(self) -> int:
        """Rows."""
    def IsOwner(self) -> bool:
        """Whether the surface owns its pixels."""
    @property
    def PixelStride(self) -> int:
        """Bytes from one pixel to the next."""
    @property
    def RowStride(self) -> int:
        """Bytes from one row to the next."""
    @property
    def SliceStride(self) -> int:
        """Bytes from one slice to the next."""
    def Swap(self, other: TDataSurface) -> None:
        """Exchanges pixels and fields; arrays stay with their pixels."""
    @property
    def Type(self) -> DATA_TYPE:
        """The type of a component."""
    @property
    def Width(self) -> int:
        """Columns."""
    def __array__(self, dtype: Any = ..., copy: Any = ...) -> numpy.typing.NDArray[Any]:
        """The same array, for `numpy.asarray(surface)`."""
    def __init__(self) -> None:
        """An empty surface."""


class TFileStream(TStream):
    """A file as a stream: closed, open for reading, or open for writing. On a closed stream every operation fails, with 0 or false. Names are UTF-8. Mapping works by copying."""
    def Close(self) -> bool:
        """Flushes and closes. False if no file is open or the flush fails."""
    def Create(self, name: Union[str, os.PathLike[str]]) -> bool:
        """Opens a file for writing and empties it, after closing any other. False, and closed, when it can't be made."""
    def Open(self, name: Union[str, os.PathLike[str]]) -> bool:
        """Opens an existing file for reading, after closing any other. False when there is none or it can't be opened: the stream is closed then."""
    def __init__(self) -> None:
        """A closed stream."""


class TFragmentShaderCPU(TShaderCPU):
    """The fragment stage: derive from it and give `Execute`.

    `Execute(v, f)` computes `f.Color` from the interpolated slots `v`, an array of 8 by 4 doubles, and `f.Depth` if `IsCalcDepth()`, which is asked once at installation, returns True. It returns True, or False to discard the fragment. Called once a fragment from Python, it is slow."""
    def IsCalcDepth(self) -> bool:
        """Whether `Execute` writes the depth; asked once, when the shader is installed."""
    def __init__(self) -> None:
        ...


class TFrustum_T:
    """Six planes a, b, c, d."""
    @property
    def Flags(self) -> int:
        """Bit 0x40 is set by `Transform`."""
    @Flags.setter
    def Flags(self, value: Any) -> None: ...
    def GetCone(self) -> numpy.typing.NDArray[Any]:
        """The eight corners."""
    @property
    def Plains(self) -> numpy.typing.NDArray[Any]:
        """The planes, as a copy of 6 by 4."""
    @Plains.setter
    def Plains(self, value: Any) -> None: ...
    def __init__(self) -> None:
        ...


class TFunc1:
    """A function of one variable: derive from it and give `Value(x)`, which returns f(x), or None where f has no value. `Deriv(x, h)` is the central difference unless you give it."""
    def Deriv(self, x: float, h: float) -> Optional[float]:
        """The central difference, or None where the function failed."""
    def Value(self, x: float) -> Optional[float]:
        """f(x), or None where f has no value."""
    def __init__(self) -> None:
        ...


class TImageSurface:
    """A counted image: one raster record, whose block it owns and frees by `free`. An object belongs to one thread at a time; only its count is atomic."""
    @property
    def Channels(self) -> int:
        """Components of a pixel."""
    @property
    def Data(self) -> numpy.typing.NDArray[Any]:
        """The pixels as a writable array without a copy: rows from the bottom of the picture up, columns, and channels where there is more than one.

        The array stays valid whatever becomes of the surface: pixels that the surface loses by a resize, `Create` or `Destroy` belong to the arrays that look at them from then on."""
    @property
    def DataSize(self) -> int:
        """Bytes that belong to the pixels."""
    @property
    def Depth(self) -> int:
        """Slices, 1 for an image."""
    @property
    def Format(self) -> DATA_FORMAT:
        """What the components mean."""
    @property
    def Height(self) -> int:
        """Rows."""
    @property
    def PixelStride(self) -> int:
        """Bytes from one pixel to the next."""
    @property
    def RowStride(self) -> int:
        """Bytes from one row to the next."""
    def SetImage2D(self, w: int, h: int, f: int, t: int, channels: int, data: Any = ...) -> bool:
        """Makes an image of `w` by `h` pixels with tight rows, from `data` or zeroed where the block is new. False when memory is exhausted."""
    @property
    def SliceStride(self) -> int:
        """Bytes from one slice to the next."""
    @property
    def Type(self) -> DATA_TYPE:
        """The type of a component."""
    @property
    def Width(self) -> int:
        """Columns."""
    def __array__(self, dtype: Any = ..., copy: Any = ...) -> numpy.typing.NDArray[Any]:
        """The same array, for `numpy.asarray(surface)`."""
    def __init__(self) -> None:
        """An empty image."""


class TMemoryStream(TStream):
    """A stream over a block of memory: its own, which grows, or a writable buffer that it is given and keeps, within whose size it stays."""
    @staticmethod
    def CalcCapacity(size: int) -> int:
        """The capacity that a write up to `size` bytes grows to."""
    def Close(self) -> None:
        """Lets the block go: the stream is empty then."""
    def GetCapacity(self) -> int:
        """The bytes that the block has room for."""
    def LoadFromFile(self, name: Union[str, os.PathLike[str]]) -> bool:
        """Replaces the content by that of a file; the position becomes 0. False when the file can't be opened (nothing changes then), when the capacity doesn't suffice and can't grow, or when the file ends early: the size is the file's then, and what didn't come is zero."""
    def Reserve(self, capacity: int) -> bool:
        """Makes the capacity at least `capacity` bytes, exactly that many where it grows. False when the stream isn't owning or memory is exhausted."""
    def SaveToFile(self, name: Union[str, os.PathLike[str]]) -> bool:
        """Writes the whole content to a file, whatever the position, which stays."""
    def Swap(self, other: TMemoryStream) -> None:
        """Exchanges everything."""
    def WriteEOL(self) -> bool:
        """Writes `s_EOL`."""
    def WriteString(self, text: str) -> bool:
        """Writes the characters of a text as UTF-8, without a terminator."""
    @overload
    def __init__(self) -> None:
        """An empty stream, which allocates with its first write."""
    @overload
    def __init__(self, data: Buffer) -> None:
        """An empty stream, which allocates with its first write."""
    s_EOL: bytes


class TNewtonSolver:
    """Newton's iteration with step halving (Dennis and Schnabel, Numerical Methods for Unconstrained Optimization and Nonlinear Equations, section 6.3)."""
    @property
    def MaxHalvings(self) -> int:
        """The largest number of halvings in one step."""
    @MaxHalvings.setter
    def MaxHalvings(self, value: Any) -> None: ...
    def Solve(self, f: TFunc1, x0: float, eps: float, maxIter: int) -> Optional[float]:
        """Looks for a root of `f` from `x0` on, until |f| isn't above `eps`, for `maxIter` steps. A number means only that `f` could be evaluated all along: check f of it. None when `Value` or `Deriv` failed."""
    def __init__(self) -> None:
        ...


class TObjectReader:
    """Reads the elements of the persistent format (docs/formats.md) from a stream, and hands ids to a host that resolves them. The first failing read ends an operation with false; the position stays where that read left it. Without a stream every read is false.

    Streams are not trusted: no length makes a read take more memory than the bytes that can still come, apart from a constant."""
    def ReadString(self) -> Optional[bytes]:
        """The bytes of a stored string up to its first zero byte; None when the read fails."""
    def SetStream(self, stream: Any) -> None:
        """Goes over to `stream`."""
    def __init__(self, stream: Any = ...) -> None:
        """A reader of `stream`, which it keeps alive."""


class TObjectWriter:
    """Writes the elements of the persistent format (docs/formats.md) onto a stream: sized blocks and padded strings. The first failing write ends an operation with false, and what was written so far stays. Without a stream everything is false."""
    def SetStream(self, stream: Any) -> None:
        """Goes over to `stream`."""
    def WriteBlockBegin(self, block: STORE_BLOCK) -> bool:
        """Begins a block: writes a size of 0 and notes in `*block` where the payload begins."""
    def WriteBlockBeginE(self, block: STORE_BLOCK) -> None:
        """The same; raises `RuntimeError` where that is False."""
    def WriteBlockEnd(self, block: STORE_BLOCK) -> bool:
        """Ends a block: puts the payload's size into the place that was kept for it, and comes back to the end. False if that write fails, and for a record that was never begun."""
    def WriteBlockEndE(self, block: STORE_BLOCK) -> None:
        """The same; raises `RuntimeError` where that is False."""
    def WriteString(self, text: str) -> bool:
        """Writes length, bytes (UTF-8 of a text) and padding."""
    def __init__(self, stream: Any = ...) -> None:
        """A writer onto `stream`, which it keeps alive."""


class TProgramCPU:
    """A pair of shaders, either of which may be missing: the context then runs its standard one.

    A context reads the pair when the program is installed; changing an installed program changes nothing until the next `SetProgram` of another one."""
    def GetAttribLocation(self, name: str) -> int:
        """The vertex shader's answer."""
    def GetShaderF(self) -> Any:
        """The held fragment shader, or None."""
    def GetShaderV(self) -> Any:
        """The held vertex shader, or None."""
    def GetSubroutineIndex(self, shadertype: int, name: str) -> int:
        """0xFFFFFFFF: there are no subroutines."""
    def GetUniformLocation(self, name: str) -> int:
        """The vertex shader's answer if it knows the name, otherwise the fragment shader's."""
    def SetShaderF(self, shader: Any) -> None:
        """Holds a shader by a reference of its own; null takes the held one out."""
    def SetShaderV(self, shader: Any) -> None:
        """Holds a shader by a reference of its own; null takes the held one out."""
    def __init__(self) -> None:
        ...


class TRenderCPU:
    """The render context: the state machine of the drawing interface, the owner of the surfaces it draws into, and the pipeline from vertex to pixel, all in plain code on the caller's thread.

    Vertices and fragments are computed in double precision; the depth buffer holds floats, the colour surface bytes. Nothing is deferred: when a call returns, its pixels stand in the surface. Row 0 of a surface is the bottom row of the picture.

    The object is large, since all scratch of the drawing path is a member: drawing allocates nothing. Data members are public for the shaders that callers write; change them through the operations. Their order and sizes are part of what a host is compiled against.

    In this order: the records that the pipeline passes on, life and surfaces, the drawing interface as TZxGL.h describes it, operations of this class alone by group, the steps of the pipeline, and the state as data members."""
    def ActiveTexture(self, texture: int) -> None:
        """The unit of what follows, from `GL_TEXTURE0` on; unchecked. What works on a unit that does not exist does nothing."""
    def AlphaFunc(self, func: int, ref: float) -> None:
        """There is no alpha test: reports `GL_INVALID_OPERATION`."""
    def AttachTexture(self, surface: TDataSurface) -> int:
        """Hands the pixels of `surface`, which is empty then, to a new texture, copying none; returns its name, or 0. Arrays stay with the pixels they look at."""
    def Begin(self, mode: int) -> None:
        """Starts a primitive mode, points to quads; vertices are drawn as they come. Another mode reports `GL_INVALID_ENUM`, and the vertices up to `End` draw nothing."""
    def BindBuffer(self, target: int, id: int) -> None:
        """Binds to one of the four targets of arrays and pixels; `GL_INVALID_ENUM` for another target."""
    def BindBufferBase(self, target: int, index: int, id: int) -> None:
        """Binds to `GL_ATOMIC_COUNTER_BUFFER` or `GL_SHADER_STORAGE_BUFFER` at index 0."""
    def BindColorSurface(self, surface: Any) -> None:
        """Draws into a `TDataSurface` in the place of the context's own colour surface; None goes back. The context keeps it alive as long as it is bound. It is to have four bytes a pixel. One of another size reports `GL_INVALID_VALUE` and is bound all the same: pixels outside its block are then not written."""
    def BindFramebuffer(self, target: int, id: int) -> None:
        """There is no selection or feedback and there are no framebuffer objects: all report `GL_INVALID_OPERATION`; `RenderMode` returns 0."""
    def BindTexture(self, target: int, id: int) -> None:
        """Binds to the active unit; a name past the table's end changes nothing. A target other than `GL_TEXTURE_2D` throws a `TZxMessage`."""
    def BindVertexArray(self, id: int) -> None:
        """Makes `id` the current vertex array object; 0 is the default one."""
    def BlendFunc(self, src: int, dst: int) -> None:
        """Takes every pair; only `GL_SRC_ALPHA`, `GL_ONE_MINUS_SRC_ALPHA` blends, with any other fragments overwrite."""
    def BufferData(self, target: int, size: Any, data: Any, usage: int) -> None:
        """Sizes the bound buffer to `size` bytes (None: those of `data`), new ones 0, and copies `data` if not None. Arrays that read from the buffer keep the old bytes where these have to move. `GL_INVALID_OPERATION` for an unknown target or an empty binding, `GL_INVALID_VALUE` for a negative size."""
    def BufferSubData(self, target: int, offset: int, data: Any) -> None:
        """Replaces bytes from `offset` by those of `data`; `GL_INVALID_VALUE` outside the buffer."""
    def CallList(self, list: int) -> None:
        """There are no display lists: all report `GL_INVALID_OPERATION`; `GenLists` returns 0, `IsList` false."""
    @overload
    def Clear(self, mask: int) -> None:
        """Clears the targets asked for, within the colour mask, the depth mask and the stencil mask. `GL_INVALID_OPERATION` on a context that isn't created."""
    @overload
    def Clear(self, color: bool, depth: bool, stencil: bool) -> None:
        """Clears the targets asked for, within the colour mask, the depth mask and the stencil mask. `GL_INVALID_OPERATION` on a context that isn't created."""
    @overload
    def ClearColor(self, r: float, g: float, b: float, a: float) -> None:
        """The byte of each channel is the low byte of the truncation of `c * 255 + 0.5`: nothing is clamped, 1.5 gives 127. The form with floats in a vector computes in float, the others in double."""
    @overload
    def ClearColor(self, color: Sequence[float]) -> None:
        """The byte of each channel is the low byte of the truncation of `c * 255 + 0.5`: nothing is clamped, 1.5 gives 127. The form with floats in a vector computes in float, the others in double."""
    def ClearDepth(self, depth: float) -> None:
        """The depth that `Clear` writes, as a float and not clamped."""
    def ClearStencil(self, value: int) -> None:
        """The stencil value that `Clear` writes: the low byte."""
    def Color3d(self, arg0: float, arg1: float, arg2: float) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color3dv(self, v: Sequence[float]) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color3f(self, arg0: float, arg1: float, arg2: float) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color3fv(self, v: Sequence[float]) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color3ub(self, arg0: int, arg1: int, arg2: int) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color3ubv(self, v: Sequence[int]) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color4d(self, arg0: float, arg1: float, arg2: float, arg3: float) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color4dv(self, v: Sequence[float]) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color4f(self, arg0: float, arg1: float, arg2: float, arg3: float) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color4fv(self, v: Sequence[float]) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color4ub(self, arg0: int, arg1: int, arg2: int, arg3: int) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def Color4ubv(self, v: Sequence[int]) -> None:
        """The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three components set alpha to 1."""
    def ColorMask(self, r: int, g: int, b: int, a: int) -> None:
        """Which channels drawing and clearing may write."""
    def ColorMaterial(self, face: int, mode: int) -> None:
        """Which material values follow the current colour while `GL_COLOR_MATERIAL` is on; unchecked."""
    @overload
    def ColorPointer(self, size: int, type: int, stride: int, pointer: Any) -> None:
        """Sets a classic array: `size` components of `type`, `stride` bytes apart (0: as the buffer has them). `pointer` is any buffer of float32, float64 or uint8 (anything else raises `TypeError`), an offset if a buffer object is bound to `GL_ARRAY_BUFFER`, or None. The array reads the buffer's memory, which it keeps alive until it is set again. Unsigned bytes are normalised to 0 to 1. `GL_INVALID_VALUE` for another size or type.

        Alone, `pointer` has the shape (vertices, components) and tells the rest."""
    @overload
    def ColorPointer(self, pointer: Any) -> None:
        """Sets a classic array: `size` components of `type`, `stride` bytes apart (0: as the buffer has them). `pointer` is any buffer of float32, float64 or uint8 (anything else raises `TypeError`), an offset if a buffer object is bound to `GL_ARRAY_BUFFER`, or None. The array reads the buffer's memory, which it keeps alive until it is set again. Unsigned bytes are normalised to 0 to 1. `GL_INVALID_VALUE` for another size or type.

        Alone, `pointer` has the shape (vertices, components) and tells the rest."""
    def CopyTexImage2D(self, target: int, level: int, internalformat: int, x: int, y: int, width: int, height: int, border: int) -> None:
        """Not built: throws "TODO"."""
    def Create(self, width: int, height: int, share: Optional[TRenderCPU] = ...) -> bool:
        """Makes the surfaces, `width` by `height` pixels, all bytes 0, and installs the standard shaders. `share` is a context whose textures this one is to share. False, leaving the context as it was, if it is created already, a size is below 1, or memory is exhausted."""
    def CullFace(self, mode: int) -> None:
        """Stored unchecked; a mode that is not a face culls nothing."""
    def DebugMessageCallback(self, callback: Any, user: Any = ...) -> bool:
        """`callback(source, type, id, severity, length, text, user)` is called with an empty text on every error while `GL_DEBUG_OUTPUT` is on, inside the failing call. What it raises is raised once that call has ended. None takes it away."""
    def DeleteBuffers(self, ids: Sequence[int]) -> None:
        """Frees buffers and clears the binding points that hold them. Arrays that read from them keep the bytes."""
    def DeleteLists(self, list: int, range: int) -> None:
        """There are no display lists: all report `GL_INVALID_OPERATION`; `GenLists` returns 0, `IsList` false."""
    def DeleteTextures(self, ids: Sequence[int]) -> None:
        """Frees textures and unbinds them from this context's units, and from those of every context that shares the table and has them bound."""
    def DeleteVertexArrays(self, ids: Sequence[int]) -> None:
        """Frees vertex array objects; the current one gives way to the default one."""
    def DepthFunc(self, func: int) -> None:
        """One of the eight comparisons. Another value reports `GL_INVALID_ENUM`, is stored all the same, and leaves the comparison in force."""
    def DepthMask(self, on: int) -> None:
        """Whether depth is written: by `Clear`, and by every fragment, with the depth test off as well."""
    def Destroy(self) -> None:
        """Gives back surfaces, textures, buffers and shaders; what was handed out of them stays valid. Matrices, lights, switches and the pending error survive, and `Create` can be called again."""
    def DetachTexture(self, id: int) -> TDataSurface:
        """Takes a texture out of the table, as a surface; None for an unknown name. Samplers that have it bound go on reading it until the next bind, and until then it can't be given other pixels."""
    def Disable(self, cap: int) -> None:
        """Switches a capability. An unknown one reports `GL_INVALID_ENUM` and throws a `TZxMessage`."""
    def DisableClientState(self, array: int) -> None:
        """`GL_VERTEX_ARRAY`, `GL_NORMAL_ARRAY`, `GL_COLOR_ARRAY`, `GL_TEXTURE_COORD_ARRAY`; anything else reports `GL_INVALID_ENUM`."""
    def DisableVertexAttribArray(self, index: int) -> None:
        """Generic array 0 to 7; another index reports 0xFFFFFFFF."""
    def Domain(self, contours: Sequence[Any], color: Sequence[float], width: float, fill: Sequence[float], fillWidth: float) -> None:
        """`Polygon` for each contour."""
    def DoneCurrent(self) -> None:
        """Ends being current."""
    def DrawArrays(self, mode: int, first: int, count: int) -> None:
        """Draws `count` elements of the enabled arrays from `first` on; nothing happens without an enabled array. Raises `IndexError` for elements that an array does not have."""
    def DrawBuffer(self, buffer: int) -> None:
        """`GL_FRONT` does nothing; anything else reports `GL_INVALID_VALUE`."""
    @overload
    def DrawElements(self, mode: int, count: int, type: int, indices: Any) -> None:
        """Draws the elements of the enabled arrays by a contiguous buffer of uint8, uint16 or uint32 indices, or from an offset into the buffer object bound to `GL_ELEMENT_ARRAY_BUFFER`. `GL_INVALID_VALUE` for another type, or None without a buffer object. Raises `TypeError` for a buffer of another type and `IndexError` for elements that an array does not have."""
    @overload
    def DrawElements(self, mode: int, indices: Any) -> None:
        """Draws the elements of the enabled arrays by a contiguous buffer of uint8, uint16 or uint32 indices, or from an offset into the buffer object bound to `GL_ELEMENT_ARRAY_BUFFER`. `GL_INVALID_VALUE` for another type, or None without a buffer object. Raises `TypeError` for a buffer of another type and `IndexError` for elements that an array does not have."""
    def DrawPixels(self, width: int, height: int, format: int, type: int, pixels: Any) -> None:
        """Draws `GL_RGBA`, `GL_UNSIGNED_BYTE` pixels at the window position, with blending and the colour mask. A rectangle that starts inside and runs over the right or upper edge is not cut there: the caller keeps it inside. `GL_INVALID_OPERATION` for other formats or an unfit colour surface.

        `pixels` is a buffer; `ValueError` if it is smaller than what the transfer reads."""
    def Enable(self, cap: int) -> None:
        """Switches a capability. An unknown one reports `GL_INVALID_ENUM` and throws a `TZxMessage`."""
    def EnableBlend(self, on: bool) -> None:
        """`GL_BLEND`."""
    def EnableClientState(self, array: int) -> None:
        """`GL_VERTEX_ARRAY`, `GL_NORMAL_ARRAY`, `GL_COLOR_ARRAY`, `GL_TEXTURE_COORD_ARRAY`; anything else reports `GL_INVALID_ENUM`."""
    def EnableCullFace(self, on: bool) -> None:
        """`GL_CULL_FACE`."""
    def EnableDepthTest(self, on: bool) -> None:
        """`GL_DEPTH_TEST`."""
    def EnableLight(self, index: int, on: bool) -> None:
        """Light 0 to 7. `GL_INVALID_OPERATION` between `Begin` and `End`, 0xFFFFFFFF for another index."""
    def EnableLighting(self, on: bool) -> None:
        """`GL_LIGHTING`. With it on and no light enabled, everything is black with alpha 0."""
    def EnablePolygonOffsetFill(self, on: bool) -> None:
        """`GL_POLYGON_OFFSET_FILL`."""
    def EnableVertexAttribArray(self, index: int) -> None:
        """Generic array 0 to 7; another index reports 0xFFFFFFFF."""
    def End(self) -> None:
        """Closes a line loop and ends the mode; what is incomplete is dropped."""
    def EndList(self) -> None:
        """There are no display lists: all report `GL_INVALID_OPERATION`; `GenLists` returns 0, `IsList` false."""
    def Finish(self) -> None:
        """Nothing to do: work is done when a call returns."""
    def Flush(self) -> None:
        """Nothing to do: work is done when a call returns."""
    @overload
    def Fog(self, pname: int, v: int) -> None:
        """Fog is stored and read back; no stage applies it. `GL_INVALID_VALUE` for an unknown name."""
    @overload
    def Fog(self, pname: int, v: float) -> None:
        """Fog is stored and read back; no stage applies it. `GL_INVALID_VALUE` for an unknown name."""
    @overload
    def Fog(self, pname: int, v: Sequence[float]) -> None:
        """Fog is stored and read back; no stage applies it. `GL_INVALID_VALUE` for an unknown name."""
    def FrontFace(self, mode: int) -> None:
        """`GL_CCW` or `GL_CW`; `GL_INVALID_VALUE` for anything else."""
    def Frustum(self, left: float, right: float, bottom: float, top: float, zNear: float, zFar: float) -> None:
        """The perspective projection. Arguments are not checked."""
    def GenBuffers(self, n: int) -> list[int]:
        """Gives out the `n` lowest free names from 1 on, as a list."""
    def GenLists(self, range: int) -> int:
        """There are no display lists: all report `GL_INVALID_OPERATION`; `GenLists` returns 0, `IsList` false."""
    def GenTextures(self, n: int) -> list[int]:
        """Gives out the `n` lowest free names from 1 on, as a list, each with an empty surface."""
    def GenVertexArrays(self, n: int) -> list[int]:
        """Gives out the `n` lowest free names from 1 on, as a list."""
    def GetBooleanv(self, pname: int) -> None:
        """Not built: reports `GL_INVALID_ENUM`."""
    def GetBufferParameter(self, target: int, pname: int) -> Any:
        """Size, usage, access or the mapped flag; None where an error is reported."""
    def GetColorSurface(self) -> Any:
        """The surface drawn to, as a `TDataSurface`; None on a context that isn't created. After a resize or `Destroy` the object has the old pixels, and belongs to nobody else."""
    def GetDepthFunc(self) -> int:
        """The comparison given last."""
    def GetDepthSurface(self) -> Any:
        """The surface drawn to, as a `TDataSurface`; None on a context that isn't created. After a resize or `Destroy` the object has the old pixels, and belongs to nobody else."""
    def GetDoublev(self, pname: int) -> Any:
        """`GetFloatv` in doubles."""
    def GetError(self) -> int:
        """The first error since the last call, which it clears; 0 if none. 0xFFFFFFFF is an index out of range."""
    def GetFloatv(self, pname: int) -> Any:
        """Colour, fog, clear values and matrices by name: a number, or an array of 4 or 16 floats. None for an unknown name, which reports `GL_INVALID_ENUM`."""
    def GetIntegerv(self, pname: int) -> Any:
        """One integer, or a tuple of two or four, by name; None for an unknown name, which reports `GL_INVALID_ENUM`."""
    def GetLight(self, light: int, pname: int) -> numpy.typing.NDArray[Any]:
        """The stored values as an array of 4 floats, of which those that the name has are set; attenuations stand at the places where `Lightfv` reads them."""
    def GetPerspectiveCorrectionHint(self) -> int:
        """Stored unchecked; `GL_FASTEST` interpolates linearly in the window, anything else with perspective."""
    def GetProgram(self) -> Any:
        """The program in force; None on a context that isn't created."""
    def GetSize(self) -> Any:
        """Width and height of the surfaces; None on a context that isn't created."""
    def GetStencilSurface(self) -> Any:
        """The surface drawn to, as a `TDataSurface`; None on a context that isn't created. After a resize or `Destroy` the object has the old pixels, and belongs to nobody else."""
    def GetString(self, name: int) -> str:
        """"GL_ARB_texture_non_power_of_two" for every name."""
    def GetVertexAttrib(self, index: int, pname: int) -> Any:
        """One integer of a generic array's state; None where an error is reported."""
    def Hint(self, target: int, mode: int) -> None:
        """`GL_PERSPECTIVE_CORRECTION_HINT` only; `GL_INVALID_ENUM` for another target."""
    def InitNames(self) -> None:
        """There is no selection or feedback and there are no framebuffer objects: all report `GL_INVALID_OPERATION`; `RenderMode` returns 0."""
    def IsCurrent(self) -> bool:
        """Whether the context is current."""
    def IsEnabled(self, cap: int) -> bool:
        """A capability or client array; an unknown one throws a `TZxMessage` with no error code set."""
    def IsList(self, list: int) -> bool:
        """There are no display lists: all report `GL_INVALID_OPERATION`; `GenLists` returns 0, `IsList` false."""
    def IsTexture(self, id: int) -> bool:
        """Whether the name has a surface."""
    def LightModelf(self, pname: int, v: float) -> None:
        """`GL_LIGHT_MODEL_LOCAL_VIEWER`, `GL_LIGHT_MODEL_TWO_SIDE`, `GL_LIGHT_MODEL_COLOR_CONTROL` (stored only); the vector forms also take the four values of `GL_LIGHT_MODEL_AMBIENT`. Another name reports `GL_INVALID_ENUM`."""
    def LightModelfv(self, pname: int, v: Sequence[float]) -> None:
        """`GL_LIGHT_MODEL_LOCAL_VIEWER`, `GL_LIGHT_MODEL_TWO_SIDE`, `GL_LIGHT_MODEL_COLOR_CONTROL` (stored only); the vector forms also take the four values of `GL_LIGHT_MODEL_AMBIENT`. Another name reports `GL_INVALID_ENUM`."""
    def LightModeli(self, pname: int, v: int) -> None:
        """`GL_LIGHT_MODEL_LOCAL_VIEWER`, `GL_LIGHT_MODEL_TWO_SIDE`, `GL_LIGHT_MODEL_COLOR_CONTROL` (stored only); the vector forms also take the four values of `GL_LIGHT_MODEL_AMBIENT`. Another name reports `GL_INVALID_ENUM`."""
    def LightModeliv(self, pname: int, v: Sequence[int]) -> None:
        """`GL_LIGHT_MODEL_LOCAL_VIEWER`, `GL_LIGHT_MODEL_TWO_SIDE`, `GL_LIGHT_MODEL_COLOR_CONTROL` (stored only); the vector forms also take the four values of `GL_LIGHT_MODEL_AMBIENT`. Another name reports `GL_INVALID_ENUM`."""
    def Lightf(self, light: int, pname: int, v: float) -> None:
        """One value. Positions and directions of the vector form go to eye space with the modelview matrix of the moment; it reads the linear attenuation from v[1] and the quadratic one from v[2]. `GL_INVALID_OPERATION` between `Begin` and `End`, 0xFFFFFFFF for an unknown light."""
    def Lightfv(self, light: int, pname: int, v: Sequence[float]) -> None:
        """One value. Positions and directions of the vector form go to eye space with the modelview matrix of the moment; it reads the linear attenuation from v[1] and the quadratic one from v[2]. `GL_INVALID_OPERATION` between `Begin` and `End`, 0xFFFFFFFF for an unknown light."""
    def LineStipple(self, factor: int, pattern: int) -> None:
        """There is no stipple: reports `GL_INVALID_OPERATION`."""
    def LineWidth(self, width: float) -> None:
        """Stored and never read: a line is one pixel wide."""
    def ListBase(self, base: int) -> None:
        """There are no display lists: all report `GL_INVALID_OPERATION`; `GenLists` returns 0, `IsList` false."""
    def LoadIdentity(self) -> None:
        """Calls the virtual `LoadMatrix`."""
    def LoadMatrix(self, m: Any) -> None:
        """The one real load; the float form widens and calls the double one.

        An array of 4 by 4 is [row, column]; sixteen values in a row stand column by column."""
    def LoadMatrixd(self, m: Any) -> None:
        """16 values column by column; calls the virtual `LoadMatrix` of doubles.

        An array of 4 by 4 is [row, column]; sixteen values in a row stand column by column."""
    def LoadMatrixf(self, m: Any) -> None:
        """16 values column by column; calls the virtual `LoadMatrix` of doubles.

        An array of 4 by 4 is [row, column]; sixteen values in a row stand column by column."""
    def LoadName(self, name: int) -> None:
        """There is no selection or feedback and there are no framebuffer objects: all report `GL_INVALID_OPERATION`; `RenderMode` returns 0."""
    def MakeCurrent(self) -> bool:
        """Makes the context current; False if it isn't created. Being current gates no drawing."""
    def MapBuffer(self, target: int, access: int) -> Any:
        """The buffer's own bytes as a writable array; None on failure. Mapping forbids nothing, and the array stays valid whatever becomes of the buffer."""
    def Materialf(self, face: int, pname: int, v: float) -> None:
        """`GL_SHININESS` of either face or both, unchecked; all else reports `GL_INVALID_ENUM`."""
    def Materialfv(self, face: int, pname: int, v: Sequence[float]) -> None:
        """Four values of a colour or one of `GL_SHININESS`. `GL_FRONT_AND_BACK` changes the front material only. An unknown face or name reports `GL_INVALID_ENUM`."""
    def MatrixMode(self, mode: int) -> None:
        """`GL_MODELVIEW`, `GL_PROJECTION` or `GL_TEXTURE` (of the active unit). Unchecked: with another value the matrix operations report `GL_INVALID_OPERATION`."""
    def MoveTexImage2D(self, target: int, level: int, surface: TDataSurface) -> bool:
        """Exchanges the bound texture's pixels with those of `surface`, copying none; arrays stay with the pixels they look at. Another target or level raises `TZxMessage`; without a bound texture `GL_INVALID_OPERATION` and False."""
    def MultMatrix(self, m: Any) -> None:
        """The one real multiplication, current * m; the float form widens and calls the double one.

        An array of 4 by 4 is [row, column]; sixteen values in a row stand column by column."""
    def MultMatrixd(self, m: Any) -> None:
        """16 values column by column; calls the virtual `MultMatrix` of doubles, which computes current * m.

        An array of 4 by 4 is [row, column]; sixteen values in a row stand column by column."""
    def MultMatrixf(self, m: Any) -> None:
        """16 values column by column; calls the virtual `MultMatrix` of doubles, which computes current * m.

        An array of 4 by 4 is [row, column]; sixteen values in a row stand column by column."""
    def MultiTexCoord2d(self, unit: int, s: float, t: float) -> None:
        """As `TexCoord`; the unit is ignored, since there is one coordinate."""
    def MultiTexCoord2f(self, unit: int, s: float, t: float) -> None:
        """As `TexCoord`; the unit is ignored, since there is one coordinate."""
    def MultiTexCoord3d(self, unit: int, s: float, t: float, r: float) -> None:
        """As `TexCoord`; the unit is ignored, since there is one coordinate."""
    def MultiTexCoord3f(self, unit: int, s: float, t: float, r: float) -> None:
        """As `TexCoord`; the unit is ignored, since there is one coordinate."""
    def NamedBufferData(self, id: int, size: Any, data: Any, usage: int) -> None:
        """`BufferData` by name."""
    def NewList(self, list: int, mode: int) -> None:
        """There are no display lists: all report `GL_INVALID_OPERATION`; `GenLists` returns 0, `IsList` false."""
    def Normal3d(self, x: float, y: float, z: float) -> None:
        """The current normal's x, y, z. Its default is all zero."""
    def Normal3dv(self, v: Sequence[float]) -> None:
        """The current normal's x, y, z. Its default is all zero."""
    def Normal3f(self, x: float, y: float, z: float) -> None:
        """The current normal's x, y, z. Its default is all zero."""
    def Normal3fv(self, v: Sequence[float]) -> None:
        """The current normal's x, y, z. Its default is all zero."""
    @overload
    def NormalPointer(self, type: int, stride: int, pointer: Any) -> None:
        """`VertexPointer` for normals, which have three components."""
    @overload
    def NormalPointer(self, pointer: Any) -> None:
        """`VertexPointer` for normals, which have three components."""
    def Ortho(self, left: float, right: float, bottom: float, top: float, zNear: float, zFar: float) -> None:
        """The parallel projection. Arguments are not checked."""
    def PixelStorei(self, pname: int, v: int) -> None:
        """Row length, skips and alignment of either direction; the alignment applies to each pixel. `GL_INVALID_ENUM` for an unknown name."""
    def PixelZoom(self, x: float, y: float) -> None:
        """Does nothing."""
    def PointSize(self, size: float) -> None:
        """Stored and never read: a point is one pixel."""
    def Polygon(self, points: Any, color: Sequence[float], width: float, fill: Sequence[float], fillWidth: float) -> None:
        """Draws the outline of a polygon in `color` as a `GL_LINE_LOOP` through `VertexPointer` and `DrawArrays`: `GL_VERTEX_ARRAY` must be enabled. The other arguments are ignored."""
    def PolygonMode(self, face: int, mode: int) -> None:
        """Stored for queries (`GL_FRONT_AND_BACK` into the front value alone); triangles are always filled."""
    def PolygonOffset(self, factor: float, units: float) -> None:
        """`factor` is what is added to the depth of triangles while `GL_POLYGON_OFFSET_FILL` is on; neither the slope nor `units` plays a part."""
    def PopAttrib(self) -> None:
        """Restores the top of the stack; on an empty one it reports `GL_INVALID_OPERATION` and stops."""
    def PopClientAttrib(self) -> None:
        """Restores them; on an empty stack it reports `GL_STACK_UNDERFLOW`."""
    def PopMatrix(self) -> None:
        """Restores the last saved matrix; on an empty stack it does nothing."""
    def PopName(self) -> None:
        """There is no selection or feedback and there are no framebuffer objects: all report `GL_INVALID_OPERATION`; `RenderMode` returns 0."""
    def PushAttrib(self, mask: int) -> None:
        """Saves the groups of `mask`: current values, polygon, colour material, depth, stencil, viewport, enables, colour buffer, hint. Other bits save nothing. The stack has no depth limit."""
    def PushClientAttrib(self, mask: int) -> None:
        """Saves the current vertex array object's eight pointers; `mask` is ignored. The four classic arrays are not saved."""
    def PushMatrix(self) -> None:
        """Saves the current matrix; there is no depth limit."""
    def PushName(self, name: int) -> None:
        """There is no selection or feedback and there are no framebuffer objects: all report `GL_INVALID_OPERATION`; `RenderMode` returns 0."""
    @property
    def RaiseErrors(self) -> bool:
        """Whether an operation that reports an error code raises `GLError`. The code is then not left for `GetError`. Off at first, as the library is."""
    @RaiseErrors.setter
    def RaiseErrors(self, value: Any) -> None: ...
    def RasterPos2d(self, x: float, y: float) -> None:
        """Stored and read by nothing; `WindowPos2i` places `DrawPixels`."""
    def RasterPos2f(self, x: float, y: float) -> None:
        """Stored and read by nothing; `WindowPos2i` places `DrawPixels`."""
    def RasterPos2i(self, x: int, y: int) -> None:
        """Stored and read by nothing; `WindowPos2i` places `DrawPixels`."""
    def RasterPos3d(self, x: float, y: float, z: float) -> None:
        """Stored and read by nothing; `WindowPos2i` places `DrawPixels`."""
    def RasterPos3f(self, x: float, y: float, z: float) -> None:
        """Stored and read by nothing; `WindowPos2i` places `DrawPixels`."""
    def RasterPos3i(self, x: int, y: int, z: int) -> None:
        """Stored and read by nothing; `WindowPos2i` places `DrawPixels`."""
    def ReadBuffer(self, buffer: int) -> None:
        """`GL_FRONT` does nothing; anything else reports `GL_INVALID_VALUE`."""
    def ReadPixels(self, x: int, y: int, width: int, height: int, format: int, type: int, pixels: Buffer) -> None:
        """Reads `GL_RGBA`, `GL_UNSIGNED_BYTE` pixels. The surface is walked with the caller's steps and the caller's memory with the surface's strides, which agree for a full-width read with no padding. Does nothing for other formats or an unfit colour surface.

        `pixels` is a writable buffer of uint8; `ValueError` if it is smaller than what the transfer writes. `GetColorSurface().Data` is the simple way."""
    def RenderMode(self, mode: int) -> int:
        """There is no selection or feedback and there are no framebuffer objects: all report `GL_INVALID_OPERATION`; `RenderMode` returns 0."""
    def Rotated(self, angle: float, x: float, y: float, z: float) -> None:
        """Multiplies by a rotation of `angle` degrees about an axis of any length; a zero axis is the identity."""
    def Rotatef(self, angle: float, x: float, y: float, z: float) -> None:
        """Multiplies by a rotation of `angle` degrees about an axis of any length; a zero axis is the identity."""
    def Scaled(self, x: float, y: float, z: float) -> None:
        """Multiplies by a scale."""
    def Scalef(self, x: float, y: float, z: float) -> None:
        """Multiplies by a scale."""
    def Scissor(self, x: int, y: int, width: int, height: int) -> None:
        """Accepted for the whole surface, (0, 0, width, height); anything else throws "Under construction!"."""
    def SetDrawBuffer(self, surface: Any) -> None:
        """Takes every fragment's colour, unquantised and without mask or blending, in the place of the colour surface: a `TDataSurface` of 1 or 4 floats or doubles a pixel, of the context's size; anything else is ignored. None goes back."""
    def SetPerspectiveCorrectionHint(self, hint: int) -> None:
        """Stored unchecked; `GL_FASTEST` interpolates linearly in the window, anything else with perspective."""
    def SetProgram(self, program: Any) -> None:
        """Installs the shaders that the program holds now, and keeps them alive; None restores the standard pair."""
    def SetSize(self, width: int, height: int) -> bool:
        """New surfaces of another size; a bound colour surface is unbound. What was handed out of the old ones keeps the old pixels. False if not created or a size is below 1; when memory is exhausted the context is then no longer created."""
    def ShadeModel(self, mode: int) -> None:
        """`GL_SMOOTH` is accepted; `GL_FLAT` throws "Under construction!"; another value reports `GL_INVALID_ENUM`."""
    def StencilFunc(self, func: int, ref: int, mask: int) -> None:
        """The test `(ref & mask) func (stored & mask)` on low bytes. `GL_INVALID_ENUM` for an unknown `func`, which changes nothing."""
    def StencilMask(self, mask: int) -> None:
        """The write mask; its low byte is what counts."""
    def StencilOp(self, fail: int, zfail: int, zpass: int) -> None:
        """What happens to the stored value. `GL_INCR` saturates at 255 before masking; `GL_DECR_WRAP` stops at 0 as `GL_DECR` does. `GL_INVALID_ENUM`, changing nothing, if any of the three is unknown."""
    def TexCoord2d(self, s: float, t: float) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord2dv(self, v: Sequence[float]) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord2f(self, s: float, t: float) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord2fv(self, v: Sequence[float]) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord3d(self, s: float, t: float, r: float) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord3dv(self, v: Sequence[float]) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord3f(self, s: float, t: float, r: float) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord3fv(self, v: Sequence[float]) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord4d(self, s: float, t: float, r: float, q: float) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord4dv(self, v: Sequence[float]) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord4f(self, s: float, t: float, r: float, q: float) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    def TexCoord4fv(self, v: Sequence[float]) -> None:
        """The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q)."""
    @overload
    def TexCoordPointer(self, size: int, type: int, stride: int, pointer: Any) -> None:
        """Sets a classic array: `size` components of `type`, `stride` bytes apart (0: as the buffer has them). `pointer` is any buffer of float32, float64 or uint8 (anything else raises `TypeError`), an offset if a buffer object is bound to `GL_ARRAY_BUFFER`, or None. The array reads the buffer's memory, which it keeps alive until it is set again. Unsigned bytes are normalised to 0 to 1. `GL_INVALID_VALUE` for another size or type.

        Alone, `pointer` has the shape (vertices, components) and tells the rest."""
    @overload
    def TexCoordPointer(self, pointer: Any) -> None:
        """Sets a classic array: `size` components of `type`, `stride` bytes apart (0: as the buffer has them). `pointer` is any buffer of float32, float64 or uint8 (anything else raises `TypeError`), an offset if a buffer object is bound to `GL_ARRAY_BUFFER`, or None. The array reads the buffer's memory, which it keeps alive until it is set again. Unsigned bytes are normalised to 0 to 1. `GL_INVALID_VALUE` for another size or type.

        Alone, `pointer` has the shape (vertices, components) and tells the rest."""
    def TexEnvf(self, target: int, pname: int, v: float) -> None:
        """Not built: report `GL_INVALID_VALUE`."""
    def TexEnvi(self, target: int, pname: int, v: int) -> None:
        """`GL_TEXTURE_ENV`, `GL_TEXTURE_ENV_MODE`, `GL_MODULATE` or `GL_REPLACE`; anything else reports `GL_INVALID_VALUE`."""
    def TexFilter2D(self, min: int, mag: int) -> None:
        """Sets both filters of the active unit; ignored unless they are equal and `GL_NEAREST` or `GL_LINEAR`."""
    def TexGend(self, coord: int, pname: int, v: float) -> None:
        """Not built: report `GL_INVALID_VALUE`."""
    def TexGenf(self, coord: int, pname: int, v: float) -> None:
        """Not built: report `GL_INVALID_VALUE`."""
    def TexGeni(self, coord: int, pname: int, v: int) -> None:
        """Not built: report `GL_INVALID_VALUE`."""
    @overload
    def TexImage2D(self, target: int, level: int, internalformat: int, width: int, height: int, border: int, format: int, type: int, pixels: Any) -> None:
        """Makes the bound texture anew from a buffer of pixels in rows from the bottom up, of `type` (anything else raises `TypeError`); None leaves it zeroed. The pixels are copied. `internalformat` must equal `format`, `level` and `border` be 0. `GL_INVALID_VALUE` if not, `GL_INVALID_OPERATION` between `Begin` and `End` or for a format or type without a mapping."""
    @overload
    def TexImage2D(self, target: int, pixels: Any) -> None:
        """Makes the bound texture anew from a buffer of pixels in rows from the bottom up, of `type` (anything else raises `TypeError`); None leaves it zeroed. The pixels are copied. `internalformat` must equal `format`, `level` and `border` be 0. `GL_INVALID_VALUE` if not, `GL_INVALID_OPERATION` between `Begin` and `End` or for a format or type without a mapping."""
    def TexParameterf(self, target: int, pname: int, v: float) -> None:
        """Filter, wrap and (vector form) border colour of the active unit. Either wrap name sets both axes, either filter name both filters. Between `Begin` and `End` `GL_INVALID_OPERATION`; a target other than `GL_TEXTURE_2D` throws a `TZxMessage`."""
    def TexParameterfv(self, target: int, pname: int, v: Sequence[float]) -> None:
        """Filter, wrap and (vector form) border colour of the active unit. Either wrap name sets both axes, either filter name both filters. Between `Begin` and `End` `GL_INVALID_OPERATION`; a target other than `GL_TEXTURE_2D` throws a `TZxMessage`."""
    def TexParameteri(self, target: int, pname: int, v: int) -> None:
        """Filter, wrap and (vector form) border colour of the active unit. Either wrap name sets both axes, either filter name both filters. Between `Begin` and `End` `GL_INVALID_OPERATION`; a target other than `GL_TEXTURE_2D` throws a `TZxMessage`."""
    def TexSubImage2D(self, target: int, level: int, xoffset: int, yoffset: int, width: int, height: int, format: int, type: int, pixels: Any) -> None:
        """Replaces a part of the bound texture by a buffer of pixels; type and format must be those of the texture. What lies outside it is cut."""
    def TexWrap2D(self, s: int, t: int) -> None:
        """Sets the wrap of each axis of the active unit; ignored unless both are known."""
    def Translated(self, x: float, y: float, z: float) -> None:
        """Multiplies by a translation."""
    def Translatef(self, x: float, y: float, z: float) -> None:
        """Multiplies by a translation."""
    def Uniform(self, location: int, *args: Any) -> None:
        """Stores into the cell `location` of the uniforms, 32 bytes each: a bool as a byte, 1 to 4 integers as 32 bits each, 1 to 4 numbers or a vector as doubles, a matrix [row, column] of 3 by 3 or 4 by 4 column by column, running on into the next cells. A location outside the 32 cells stores nothing, nor does a matrix that would run past the last."""
    def Uniform2(self, location: int, v: Sequence[float]) -> None:
        """Stores into the cell `location` of the uniforms, 32 bytes each: floats and doubles as doubles, integers as 32 bits, a bool as a byte; matrices run on into the next cells. A location outside the 32 cells stores nothing, nor does a matrix that would run past the last."""
    def Uniform3(self, location: int, v: Sequence[float]) -> None:
        """Stores into the cell `location` of the uniforms, 32 bytes each: floats and doubles as doubles, integers as 32 bits, a bool as a byte; matrices run on into the next cells. A location outside the 32 cells stores nothing, nor does a matrix that would run past the last."""
    def Uniform4(self, location: int, v: Sequence[float]) -> None:
        """Stores into the cell `location` of the uniforms, 32 bytes each: floats and doubles as doubles, integers as 32 bits, a bool as a byte; matrices run on into the next cells. A location outside the 32 cells stores nothing, nor does a matrix that would run past the last."""
    def UnmapBuffer(self, target: int) -> bool:
        """False on failure."""
    def Vertex2d(self, arg0: float, arg1: float) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex2dv(self, v: Sequence[float]) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex2f(self, arg0: float, arg1: float) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex2fv(self, v: Sequence[float]) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex2i(self, arg0: int, arg1: int) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex2iv(self, v: Sequence[int]) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex3d(self, arg0: float, arg1: float, arg2: float) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex3dv(self, v: Sequence[float]) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex3f(self, arg0: float, arg1: float, arg2: float) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex3fv(self, v: Sequence[float]) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex3i(self, arg0: int, arg1: int, arg2: int) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex3iv(self, v: Sequence[int]) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex4d(self, arg0: float, arg1: float, arg2: float, arg3: float) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex4dv(self, v: Sequence[float]) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex4f(self, arg0: float, arg1: float, arg2: float, arg3: float) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def Vertex4fv(self, v: Sequence[float]) -> None:
        """Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in force. The standard vertex shader takes w as 1 whatever it is."""
    def VertexAttrib(self, index: int, *args: Any) -> None:
        """Sets generic attribute `index`, missing components being 0 and w 1. Index 0 submits a vertex through `Vertex4dv`; an index outside 0 to 7 stores nothing."""
    @overload
    def VertexAttribPointer(self, index: int, size: int, type: int, normalized: int, stride: int, pointer: Any) -> None:
        """`VertexPointer` for generic array 0 to 7 of the current vertex array object; another index reports 0xFFFFFFFF. Unsigned bytes are read as they are unless `normalized`."""
    @overload
    def VertexAttribPointer(self, index: int, pointer: Any, normalized: bool = ...) -> None:
        """`VertexPointer` for generic array 0 to 7 of the current vertex array object; another index reports 0xFFFFFFFF. Unsigned bytes are read as they are unless `normalized`."""
    @overload
    def VertexPointer(self, size: int, type: int, stride: int, pointer: Any) -> None:
        """Sets a classic array: `size` components of `type`, `stride` bytes apart (0: as the buffer has them). `pointer` is any buffer of float32, float64 or uint8 (anything else raises `TypeError`), an offset if a buffer object is bound to `GL_ARRAY_BUFFER`, or None. The array reads the buffer's memory, which it keeps alive until it is set again. Unsigned bytes are normalised to 0 to 1. `GL_INVALID_VALUE` for another size or type.

        Alone, `pointer` has the shape (vertices, components) and tells the rest."""
    @overload
    def VertexPointer(self, pointer: Any) -> None:
        """Sets a classic array: `size` components of `type`, `stride` bytes apart (0: as the buffer has them). `pointer` is any buffer of float32, float64 or uint8 (anything else raises `TypeError`), an offset if a buffer object is bound to `GL_ARRAY_BUFFER`, or None. The array reads the buffer's memory, which it keeps alive until it is set again. Unsigned bytes are normalised to 0 to 1. `GL_INVALID_VALUE` for another size or type.

        Alone, `pointer` has the shape (vertices, components) and tells the rest."""
    def Viewport(self, x: int, y: int, width: int, height: int) -> None:
        """Accepted for the whole surface, (0, 0, width, height); anything else throws "Under construction!"."""
    def WindowPos2i(self, x: int, y: int) -> None:
        """The window position of the lower-left corner of `DrawPixels`."""
    def _Share(self, other: TRenderCPU) -> bool:
        """Lets `other` share this context's textures; false if it has textures of its own already, is this context or is no `TRenderCPU`, or memory is exhausted."""
    def __init__(self, RaiseErrors: bool = ...) -> None:
        """A context without surfaces."""
    @property
    def m_CalcDepth(self) -> bool:
        """The fragment shader's `IsCalcDepth`."""
    @property
    def m_Created(self) -> bool:
        """Whether the context has surfaces."""
    @property
    def m_CurAttrib(self) -> numpy.typing.NDArray[Any]:
        """The current generic attributes."""
    @property
    def m_CurColor(self) -> numpy.typing.NDArray[Any]:
        """The current colour."""
    @property
    def m_CurNormal(self) -> numpy.typing.NDArray[Any]:
        """The current normal."""
    @property
    def m_CurTexCoord(self) -> numpy.typing.NDArray[Any]:
        """The current texture coordinate."""
    @property
    def m_CurVertex(self) -> numpy.typing.NDArray[Any]:
        """The vertex submitted last."""
    @property
    def m_Height(self) -> int:
        """Rows of the surfaces."""
    @property
    def m_InBeginEnd(self) -> bool:
        """Whether a primitive mode is open."""
    @property
    def m_ModelView(self) -> numpy.typing.NDArray[Any]:
        """The modelview matrix [row, column], read-only."""
    @property
    def m_ModelViewProjection(self) -> numpy.typing.NDArray[Any]:
        """Projection times modelview [row, column], read-only."""
    @property
    def m_Projection(self) -> numpy.typing.NDArray[Any]:
        """The projection matrix [row, column], read-only."""
    @property
    def m_Uniforms(self) -> numpy.typing.NDArray[Any]:
        """The cells of the uniforms, as doubles; integers stand raw at the start of a cell."""
    @property
    def m_VarBackColor(self) -> int:
        """Slot of the back colour; -1 is none."""
    @m_VarBackColor.setter
    def m_VarBackColor(self, value: Any) -> None: ...
    @property
    def m_VarBackSecondary(self) -> int:
        """Slot of the back specular colour; -1 is none."""
    @m_VarBackSecondary.setter
    def m_VarBackSecondary(self, value: Any) -> None: ...
    @property
    def m_VarColor(self) -> int:
        """Slot of the front colour; -1 is none."""
    @m_VarColor.setter
    def m_VarColor(self, value: Any) -> None: ...
    @property
    def m_VarCount(self) -> int:
        """Live slots of a record."""
    @m_VarCount.setter
    def m_VarCount(self, value: Any) -> None: ...
    @property
    def m_VarPosition(self) -> int:
        """Slot of the position."""
    @m_VarPosition.setter
    def m_VarPosition(self, value: Any) -> None: ...
    @property
    def m_VarSecondary(self) -> int:
        """Slot of the front specular colour; -1 is none."""
    @m_VarSecondary.setter
    def m_VarSecondary(self, value: Any) -> None: ...
    @property
    def m_VarTexCoord(self) -> int:
        """Slot of the texture coordinate; -1 is none."""
    @m_VarTexCoord.setter
    def m_VarTexCoord(self, value: Any) -> None: ...
    @property
    def m_Width(self) -> int:
        """Columns of the surfaces."""


class TSaveImageHint:
    """What a caller may say about an image file; passed through where it is not read."""
    @property
    def Compression(self) -> int:
        """PNG compression effort, 0 (none) to 9 (smallest); -1 leaves it to the library."""
    @Compression.setter
    def Compression(self, value: Any) -> None: ...
    @property
    def Quality(self) -> int:
        """JPEG quality, 1 (smallest) to 100 (nearly exact); any other number stands for 95."""
    @Quality.setter
    def Quality(self, value: Any) -> None: ...
    def __init__(self) -> None:
        ...


class TShaderCPU:
    """Base of the stages that a caller can replace. Locations are small integers that a shader hands out by its own rule; 0xFFFFFFFF is no location."""
    def GetUniformLocation(self, name: str) -> int:
        """A location by name; 0xFFFFFFFF is no location. A shader of yours may return -1."""
    @property
    def m_Render(self) -> Any:
        """The context in which the shader is installed; None outside."""


class TStdFragmentShaderCPU(TFragmentShaderCPU):
    """The fixed-function fragment stage: the face's colour, one texture by unit 0's mode, the specular colour, a clamp to 0 to 1. Fog is not applied."""
    def Begin(self) -> None:
        ...
    def End(self) -> None:
        ...
    def Execute(self, v: numpy.typing.NDArray[Any], f: FS_DATA) -> bool:
        """Computes one fragment; always True."""
    def __init__(self) -> None:
        ...


class TStdVertexShaderCPU(TVertexShaderCPU):
    """The fixed-function vertex stage: clip position, lighting by vertex with primary and specular colour of both faces, one texture coordinate. Colours are not clamped here."""
    def Begin(self) -> None:
        """Fills the slot table by lighting, two-sided lighting and the texture switch of unit 0."""
    def End(self) -> None:
        ...
    def Execute(self, v: numpy.typing.NDArray[Any]) -> None:
        """Computes one vertex."""
    def __init__(self) -> None:
        ...


class TStream:
    """A stream of bytes with a position. One stream belongs to one thread at a time. Failures are results; the operations that end in `E` raise `TZxMessage` instead.

    Derive from it and give `IsEOS`, `SetEOS`, `GetPos`, `SetPos`, `GetSize`, `SetSize`, `Skip`, `_Read(size)`, which returns up to `size` bytes, and `_Write(data)`, which returns how many it took."""
    def GetPos(self) -> int:
        """The position, in bytes from the beginning."""
    def GetPosE(self) -> int:
        """`GetPos`, under the name of the throwing forms: it never throws."""
    def GetSize(self) -> int:
        """The length in bytes."""
    def IsEOS(self) -> bool:
        """True when nothing is left to read at the position."""
    def ReadAll(self, size: int) -> Any:
        """Exactly `size` bytes, or None when the stream ends before; what was read stays read."""
    def ReadAllE(self, size: int) -> bytes:
        """The same; raises `TZxMessage` where that is None."""
    def ReadLine(self, bufferSize: int = ...) -> Any:
        """A line without its end, of at most `bufferSize - 1` bytes; None at the end of the stream and for a stream that knows no lines."""
    def SetEOS(self) -> bool:
        """Cuts the stream at the position."""
    def SetPos(self, position: int) -> bool:
        """Moves to `position`, in bytes from the beginning."""
    def SetPosE(self, position: int) -> bool:
        """`SetPos`; throws a `TZxMessage` "TStream::SetPosE failed!" where that is false."""
    def SetSize(self, size: int) -> bool:
        """Cuts or grows the stream to `size` bytes."""
    def Skip(self, size: int) -> bool:
        """Moves the position `size` bytes on."""
    def SupportMap(self) -> bool:
        """Whether `Map` works without copying."""
    def WriteAll(self, data: Buffer) -> bool:
        """Writes all bytes of a buffer; False when the stream takes no more."""
    def _Read(self, size: int) -> Any:
        """One read of up to `size` bytes; empty at the end, None when the device fails."""
    def _Write(self, data: Buffer) -> int:
        """One write: the count that was written."""
    def __init__(self) -> None:
        ...


class TVariant:
    """A tagged value: nothing, a scalar, a short vector of integers, a counted array or a text. Arrays are copied in and out."""
    def AsString(self) -> Optional[str]:
        """The value alone as text; None where there is no such form."""
    @property
    def Count(self) -> int:
        """1 for a scalar or a vector, the length of a text, the number of elements of an array."""
    def FromString(self, text: str) -> bool:
        """Reads the form that `ToString` writes for scalars, strings and the empty variant. False, with the value kept, for any other text. Integers are cut to their width without a range check."""
    @overload
    def Get(self) -> Any:
        """The value in Python's own form; arrays are copies."""
    @overload
    def Get(self, type: int) -> Any:
        """The value in Python's own form; arrays are copies."""
    def GetArrayDataSize(self) -> int:
        """An array's size in bytes; 0 for anything else and for base codes above 13."""
    def GetStringLength(self) -> int:
        """The string's length with embedded zeros; 0 for anything but a string."""
    def Reset(self) -> None:
        """Makes the variant empty."""
    @overload
    def Set(self, value: Any) -> bool:
        """Stores None, a bool, an int (as int32, int64 or uint64, the first that holds it), a float (as a double), a NumPy scalar of its type, a text, bytes, an array of scalars or of vectors of 1 to 4 floats, or another variant. Raises `TypeError` for anything else."""
    @overload
    def Set(self, value: Any, type: int) -> bool:
        """Stores None, a bool, an int (as int32, int64 or uint64, the first that holds it), a float (as a double), a NumPy scalar of its type, a text, bytes, an array of scalars or of vectors of 1 to 4 floats, or another variant. Raises `TypeError` for anything else."""
    def SetArray(self, values: Any) -> bool:
        """Stores a counted array."""
    def SetVector(self, values: Sequence[int]) -> bool:
        """Stores a vector of 1 to 4 integers; False for another number."""
    def Swap(self, other: TVariant) -> None:
        """Exchanges two values."""
    def ToString(self) -> str:
        """The value with its type as text, such as int32(5); empty where there is no text form."""
    @property
    def Type(self) -> DATA_TYPE:
        """The tag."""
    @overload
    def __init__(self) -> None:
        """The empty variant."""
    @overload
    def __init__(self, value: Any) -> None:
        """The empty variant."""


class TVertexShaderCPU(TShaderCPU):
    """The vertex stage: derive from it and give `Begin` and `Execute`.

    `Begin()` must fill the slot table of `self.m_Render` (`m_VarColor` and so on) with `m_VarCount`, 1 to 8. `Execute(v)` must fill the live slots of the record `v`, an array of 8 by 4 doubles; slot 0 is the clip-space position. Current values (`m_CurVertex`, `m_CurAttrib`, ...) and uniforms (`m_Uniforms`) are those of `self.m_Render`. Called once a vertex from Python, it is slow."""
    def GetAttribLocation(self, name: str) -> int:
        """A location by name; 0xFFFFFFFF is no location. A shader of yours may return -1."""
    def __init__(self) -> None:
        ...


class TZx3DTransform:
    """A map of points: derive from it and give `TransformPoint(point)`, which returns the image."""
    def __init__(self) -> None:
        ...


class TZxMessage(Exception):
    """What the library throws: for what was not built, and from operations whose names end in `E`. Its text is the message's."""


class TZxNamed:
    """A name of at most 31 characters inside a record of fixed size."""
    def GetName(self) -> Any:
        """The name."""
    def IsName(self, name: str) -> bool:
        """Compares exactly."""
    def SetName(self, name: str) -> bool:
        """Takes up to 31 bytes of UTF-8; False, with the old name kept, for more."""
    def Swap(self, other: TZxNamed) -> None:
        """Exchanges two names."""
    def __init__(self) -> None:
        """The empty name."""


class VBOX:
    """An axis-aligned box."""
    def Expand(self, p: Sequence[float]) -> None:
        """Grows it to hold `p`."""
    @property
    def Flag(self) -> bool:
        """Carried along; nothing reads it."""
    @Flag.setter
    def Flag(self, value: Any) -> None: ...
    def IsEmpty(self) -> bool:
        """Whether it is marked empty."""
    @property
    def Max(self) -> list[float]:
        """The greatest coordinates."""
    @Max.setter
    def Max(self, value: Any) -> None: ...
    @property
    def Min(self) -> list[float]:
        """The least coordinates."""
    @Min.setter
    def Min(self, value: Any) -> None: ...
    def SetEmpty(self) -> None:
        """Marks it empty; the other values stay."""
    def __init__(self) -> None:
        """What holds nothing: the least value above the greatest."""


class VRECT:
    """An axis-aligned rectangle."""
    def Expand(self, p: Sequence[float]) -> None:
        """Grows it to hold `p`."""
    @property
    def Flag(self) -> bool:
        """Carried along; nothing reads it."""
    @Flag.setter
    def Flag(self, value: Any) -> None: ...
    def IsEmpty(self) -> bool:
        """Whether it is marked empty."""
    @property
    def Max(self) -> list[float]:
        """The greatest coordinates."""
    @Max.setter
    def Max(self, value: Any) -> None: ...
    @property
    def Min(self) -> list[float]:
        """The least coordinates."""
    @Min.setter
    def Min(self, value: Any) -> None: ...
    def SetEmpty(self) -> None:
        """Marks it empty; the other values stay."""
    def __init__(self) -> None:
        """What holds nothing: the least value above the greatest."""


class VSPHERE:
    """A sphere."""
    @property
    def Center(self) -> list[float]:
        """The centre."""
    @Center.setter
    def Center(self, value: Any) -> None: ...
    def IsEmpty(self) -> bool:
        """Whether it is marked empty."""
    @property
    def Radius(self) -> float:
        """The radius."""
    @Radius.setter
    def Radius(self, value: Any) -> None: ...
    def SetEmpty(self) -> None:
        """Marks it empty; the centre stays."""
    def __init__(self, Center: Sequence[float] = ..., Radius: float = ...) -> None:
        ...


def CalcCubeSpline1D(y: numpy.typing.NDArray[Any], closed: bool) -> Any:
    """The interpolating cubic spline with uniform knots: an array of a, b, c, d for each segment, in a parameter from 0 to 1; None for fewer than 2 values."""

def CalcCubeSpline2D(p: numpy.typing.NDArray[Any], closed: bool) -> Any:
    """The same for points of 2 coordinates: (coordinate, segment, 4)."""

def CalcCubeSpline3D(p: numpy.typing.NDArray[Any], closed: bool) -> Any:
    """The same for points of 3 coordinates: (coordinate, segment, 4)."""

def CalcCubeSplineXY(p: numpy.typing.NDArray[Any], startType: int, startValue: float, endType: int, endValue: float) -> Any:
    """The spline y(x) through the points: an array of a, b, c, d for each segment, in absolute x. A type of 1 gives the first derivative at that end, 2 the second. None for fewer than 2 points, another type, or equal neighbours in x."""

def CeilPow2(n: int) -> int:
    """`n` if it is a power of two, otherwise the next one. Above 2^63 there is none: the result is 1. 1 for 0."""

def CrossPlains(a: Sequence[float], b: Sequence[float], c: Sequence[float]) -> Optional[list[float]]:
    """The point common to three planes a, b, c, d; None when the determinant is exactly 0."""

def DataFormatFromGL(glFormat: int) -> DATA_FORMAT:
    """The `DATA_FORMAT` of an OpenGL pixel format (GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RED, GL_RG, GL_RGB, GL_RGBA); `DATA_FORMAT_NONE` if it has none."""

def DataTypeFromGL(glType: int) -> DATA_TYPE:
    """The `DATA_TYPE` of an OpenGL type enum (GL_BYTE to GL_UNSIGNED_INT, GL_FLOAT, GL_DOUBLE); `DATA_TYPE_NONE` if it has none."""

def DrawLine3d(start: Sequence[int], end: Sequence[int], thickness: Optional[int] = ...) -> numpy.typing.NDArray[Any]:
    """The cells of the straight line from `start` to `end`, both included; with a thickness each is a block of `2 h + 1` by `2 h + 1` across the dominant axis, h being half of it."""

def FloorPow10(v: float) -> float:
    """A power of ten near `v`, found by repeated scaling in double arithmetic, whose rounding shows. It isn't the largest power of ten not above `v`: values from 1 to 10 **inclusive** give 1.0; 100 gives 10.0, 101 gives 99.99999999999999, 1000 gives 999.9999999999998. 0 and NaN give 1.0, a negative value gives a NaN, infinity gives infinity."""

def FloorPow2(n: int) -> int:
    """The largest power of two not above `n`; 1 for 0."""

def GetAffineTransform(src: numpy.typing.NDArray[Any], dst: numpy.typing.NDArray[Any]) -> Any:
    """The least-squares affine map of points of 3 coordinates, as a matrix [row, column] of 4 by 4. None only when the determinant of the normal matrix is exactly 0: coplanar points usually give a meaningless matrix."""

def GetFormatComponents(glFormat: int) -> int:
    """Components of a pixel of an OpenGL format: one for GL_LUMINANCE and GL_RED, two for GL_LUMINANCE_ALPHA and GL_RG, three for GL_RGB, four for GL_RGBA; 0 if it has no mapping."""

def GetIntersectTriangles(a: numpy.typing.NDArray[Any], b: numpy.typing.NDArray[Any], eps: float) -> numpy.typing.NDArray[Any]:
    """The common part of the triangles: no point, one point, the 2 ends of a segment, or, of coplanar triangles, the 1 to 6 vertices of a polygon."""

def GetProjectiveTransform(src: numpy.typing.NDArray[Any], dst: numpy.typing.NDArray[Any]) -> Any:
    """The least-squares projective map of the points `src` to `dst`: a matrix [row, column] of 3 by 3 for points of 2 coordinates (at least 4), of 4 by 4 for 3 coordinates (at least 5), whose last element is 1. None when there are too few or they lie too nearly on a line or plane.

    One linear solve of the raw coordinates: nothing is centred or scaled, and coordinates of the order of 0.001 are refused."""

def GetTypeSize(type: int) -> int:
    """Bytes of one component of a `DATA_TYPE` or of an OpenGL type; 0 for none."""

def IsIntersectTriangles(a: numpy.typing.NDArray[Any], b: numpy.typing.NDArray[Any], eps: float) -> bool:
    """Whether the triangles `a` and `b`, three points each, meet. `eps` decides only when two planes count as parallel."""

def IsSelfIntersected(p: numpy.typing.NDArray[Any]) -> bool:
    """Whether the closed polygon crosses, touches or folds back on itself."""

def LineSysGauss1(a: numpy.typing.NDArray[Any], b: numpy.typing.NDArray[Any]) -> Any:
    """Solves `a x = b`: x, or None when a pivot column is exactly zero. There is no tolerance."""

def LineSysGauss2(a: numpy.typing.NDArray[Any], b: numpy.typing.NDArray[Any]) -> Any:
    """`LineSysGauss1` with full pivoting."""

def LoadAttribute(reader: TObjectReader) -> Any:
    """Reads an attribute as a pair of name and `TVariant`; None when that fails."""

@overload
def LoadImage(name: Union[str, os.PathLike[str]], RaiseErrors: bool = ...) -> TDataSurface:
    """Loads an image file (PNG, JPEG, BMP, TGA, PBM, PGM, PPM, Radiance HDR, told by its contents), or what a stream holds from its position on, row 0 being the bottom row. None when it can't be read or is no sound image; with `RaiseErrors` a `TZxMessage` says why instead."""
@overload
def LoadImage(stream: TStream, RaiseErrors: bool = ...) -> TDataSurface:
    """Loads an image file (PNG, JPEG, BMP, TGA, PBM, PGM, PPM, Radiance HDR, told by its contents), or what a stream holds from its position on, row 0 being the bottom row. None when it can't be read or is no sound image; with `RaiseErrors` a `TZxMessage` says why instead."""

def LoadVariant(reader: TObjectReader) -> Any:
    """Reads a variant; None when that fails."""

def Norm(v: numpy.typing.NDArray[Any]) -> float:
    """The square root of `NormSqr`."""

def NormSqr(v: numpy.typing.NDArray[Any]) -> float:
    """The sum of squares, added up in ascending order from 0.0."""

def Polynom3_TransX(p: Sequence[float], t: float) -> list[float]:
    """The polynomial q(x) = p(x - t)."""

def RoundPow2(n: int) -> int:
    """The power of two nearest to `n`, on a tie the upper one; 0 for 0. From 2^63 + 2^62 the upper one doesn't fit and the result is 1, as `CeilPow2` has it."""

def SaveAttribute(writer: TObjectWriter, name: str, value: TVariant) -> bool:
    """Writes an attribute: the name (`~0` measures) as a narrow string, then the variant. A reader takes names of up to 31 bytes."""

@overload
def SaveImage(name: Union[str, os.PathLike[str]], hint: TSaveImageHint, surface: Any, RaiseErrors: bool = ...) -> bool:
    """Saves pixels, row 0 as the bottom row of the picture, as the kind that the name's ending tells: .png (1 to 4 components of uint8 or uint16), .jpg, .bmp, .tga (uint8), .hdr (float32). They are a `TDataSurface`, a `TImageSurface` or an array of (rows, columns) or (rows, columns, channels). False when they can't be stored so or the file can't be written; with `RaiseErrors` a `TZxMessage` says why instead."""
@overload
def SaveImage(name: Union[str, os.PathLike[str]], surface: Any, RaiseErrors: bool = ...) -> bool:
    """Saves pixels, row 0 as the bottom row of the picture, as the kind that the name's ending tells: .png (1 to 4 components of uint8 or uint16), .jpg, .bmp, .tga (uint8), .hdr (float32). They are a `TDataSurface`, a `TImageSurface` or an array of (rows, columns) or (rows, columns, channels). False when they can't be stored so or the file can't be written; with `RaiseErrors` a `TZxMessage` says why instead."""

def SaveVariant(writer: TObjectWriter, value: TVariant) -> bool:
    """Writes a variant: its tag, then its data. False for tags without a stored form (references, vectors of anything but int32, arrays of vectors)."""

def SetCone(f: TFrustum_T, corners: numpy.typing.NDArray[Any]) -> None:
    """Sets the six planes of `f` from eight corners in the order of `GetCone`; the flags stay. Each plane is the one through three corners: 045, 125, 014, 236, 031, 457. Corners on a line give non-finite planes.

    Corner 5 does not lie on plane 0 in the sense of `GetCone`: plane 0 comes out as the plane of corners 0, 1, 4, 5, which is plane 2 with the opposite normal. Set from corners, a frustum is therefore open on that side, and `GetCone` does not give corners 0, 3, 4 and 7 back."""

def Sinex(x: float) -> float:
    """A sine stretched so that it rises all along a period: from -2 at -pi through -1, 0 and 1 to 2 at pi. It orders angles without an arc function. Outside [-pi, pi) the angle is reduced first, by up to 2^31 periods; angles beyond that give no meaningful value."""

def SolveGauss(a: numpy.typing.NDArray[Any], b: numpy.typing.NDArray[Any], tol: float = ...) -> Any:
    """Solves `a x = b` by partial pivoting: x, or None.

    Beware: `tol` is compared with the position of the row in which the pivot was found and not with its magnitude. With 0 nothing ever fails: a singular matrix gives infinities and NaNs. `LineSysGauss1` tells."""

def ToString(m: numpy.typing.NDArray[Any]) -> str:
    """A vector or a matrix as text, by 16 decimals."""

@overload
def Transform(f: TFrustum_T, t: TZx3DTransform) -> TFrustum_T:
    """Maps a frustum by its eight corners."""
@overload
def Transform(b: VBOX, t: TZx3DTransform) -> VBOX:
    """Maps a frustum by its eight corners."""
@overload
def Transform(s: VSPHERE, steps: int, t: TZx3DTransform) -> VSPHERE:
    """Maps a frustum by its eight corners."""

class Zx3D:
    """What has another meaning in the namespace Zx3D."""
    @overload
    @staticmethod
    def LoadImage(name: Union[str, os.PathLike[str]], RaiseErrors: bool = ...) -> Any:
        """`LoadImage` into a `TImageSurface`."""
    @overload
    @staticmethod
    def LoadImage(stream: TStream, RaiseErrors: bool = ...) -> Any:
        """`LoadImage` into a `TImageSurface`."""


def _SinCos(x: float) -> tuple:
    """The sine of `x` and its cosine."""

def abs(m: numpy.typing.NDArray[Any]) -> numpy.typing.NDArray[Any]:
    """A matrix with the sign bits cleared, those of NaNs too."""

def add(l: numpy.typing.NDArray[Any], r: numpy.typing.NDArray[Any]) -> None:
    """`l += r`, in place: two matrices or two vectors of one shape."""

def diff(l: numpy.typing.NDArray[Any], r: numpy.typing.NDArray[Any]) -> Any:
    """`l - r`; None if the shapes differ."""

def dot(a: numpy.typing.NDArray[Any], b: numpy.typing.NDArray[Any]) -> float:
    """The sum of products, added up in ascending order from 0.0."""

class ds:
    """Operations on surfaces."""
    @staticmethod
    def Copy(source: Any, to: Any) -> bool:
        """Copies the pixels that both surfaces have, from (0, 0) on. `source` may be an array. False, with nothing copied, when type or channel count differ."""
    @staticmethod
    def Fill(surface: Any, value: Any) -> bool:
        """Sets every pixel to the bytes of `value`, which are those of one pixel. False, with nothing written, when they are not or the surface has no pixels."""


def equal(a: numpy.typing.NDArray[Any], b: numpy.typing.NDArray[Any], tol: float) -> bool:
    """False if the shapes differ or a pair differs by more than `tol`; a NaN equals everything."""

def fill(m: numpy.typing.NDArray[Any], value: float) -> None:
    """Sets every element, in place."""

def inverse(m: numpy.typing.NDArray[Any]) -> Any:
    """The inverse by Gauss-Jordan elimination with partial pivoting; None when a pivot's magnitude is 1e-9 or less."""

def lsm(a: numpy.typing.NDArray[Any], b: numpy.typing.NDArray[Any]) -> Any:
    """Least squares by the normal equations: the x that minimises the length of `a x - b`; None when the normal matrix can't be inverted."""

def max(m: numpy.typing.NDArray[Any]) -> float:
    """The largest element; otherwise as `min`."""

def min(m: numpy.typing.NDArray[Any]) -> float:
    """The smallest element; raises `TZxMessage` without elements. A NaN in the first element is the result; NaNs elsewhere are ignored."""

def mul(l: numpy.typing.NDArray[Any], r: numpy.typing.NDArray[Any]) -> numpy.typing.NDArray[Any]:
    """The matrix product, or that of a matrix and a vector; each element is added up from 0.0 in ascending order, without fused multiply-add. Raises `TZxMessage` for two matrices that don't fit."""

def mul_mtm(a: numpy.typing.NDArray[Any]) -> numpy.typing.NDArray[Any]:
    """The product of the transpose of `a` with `a`."""

def mul_mtv(a: numpy.typing.NDArray[Any], v: numpy.typing.NDArray[Any]) -> numpy.typing.NDArray[Any]:
    """The transpose of `a` times `v`."""

def outer_dot(a: numpy.typing.NDArray[Any], b: numpy.typing.NDArray[Any]) -> numpy.typing.NDArray[Any]:
    """The matrix of `a[y] * b[x]`."""

def sub(l: numpy.typing.NDArray[Any], r: numpy.typing.NDArray[Any]) -> numpy.typing.NDArray[Any]:
    """`l - r` of two vectors."""

def summ(m: numpy.typing.NDArray[Any]) -> float:
    """The sum of all elements in index order from 0.0."""

def transpose(m: numpy.typing.NDArray[Any]) -> numpy.typing.NDArray[Any]:
    """The transpose."""
