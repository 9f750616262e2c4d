#pragma once

#include <vector>

#include <ZxBaseKit/TRef.h>
#include <ZxDrawKit/TZxGLBitmap.h>
#include <ZxDrawKit/TZxGLSurface.h>
#include <ZxPixelKit/TDataSurface.h>

#include <ZxCore3D/types/COLORRGBA.h>
#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/MAT3.h>
#include <ZxCore3D/types/MAT4.h>
#include <ZxCore3D/types/vec_t_.h>

namespace Zx3D {

using ::TZxGLBitmap;
using ::TZxGLSurface;

class TProgram;

/// Called on an error: source, type, id and severity are 0, the length is 1, the text is empty, and
/// `user` is what was given to `DebugMessageCallback`. It tells that some error happened, not
/// which.
using TDebugCallback = void (*)(unsigned int source, unsigned int type, unsigned int id,
                                unsigned int severity, int length, const char* text,
                                const void* user);

/// The drawing interface: one virtual operation for each call of an OpenGL 1.x/2.x style context.
///
/// Operations keep OpenGL's names and take its enums by their plain numeric values. What an
/// implementation does not do it reports: by a result, by an error code that `GetError` hands out
/// once, or by a thrown `TZxMessage`. The descriptions below are those of `TRenderCPU`.
///
/// A context belongs to one thread at a time. The order of the operations is part of the interface.
class ZX_CORE3D_API TZxGL : public zx::TRef {
public:
  TZxGL() = default;
  ~TZxGL() override;
  TZxGL(const TZxGL&) = delete;
  TZxGL& operator=(const TZxGL&) = delete;

  /// Makes the context current on `surface`, null meaning its own; false if `DoMakeCurrent`
  /// refuses. Being current is bookkeeping and gates no drawing.
  bool MakeCurrent(TZxGLSurface* surface = nullptr);
  bool IsCurrent() const { return m_Current; }
  void DoneCurrent();

  /// \name Colours, forwarded to the virtual `_Color` operations: hosts call these, implementations
  /// override those.
  /// \{
  void Color3ub(unsigned char r, unsigned char g, unsigned char b) { _Color3ub(r, g, b); }
  void Color3ubv(const unsigned char* v) { _Color3ubv(v); }
  void Color3f(float r, float g, float b) { _Color3f(r, g, b); }
  void Color3fv(const float* v) { _Color3fv(v); }
  void Color3d(double r, double g, double b) { _Color3d(r, g, b); }
  void Color3dv(const double* v) { _Color3dv(v); }
  void Color4ub(unsigned char r, unsigned char g, unsigned char b, unsigned char a) {
    _Color4ub(r, g, b, a);
  }
  void Color4ubv(const unsigned char* v) { _Color4ubv(v); }
  void Color4f(float r, float g, float b, float a) { _Color4f(r, g, b, a); }
  void Color4fv(const float* v) { _Color4fv(v); }
  void Color4d(double r, double g, double b, double a) { _Color4d(r, g, b, a); }
  void Color4dv(const double* v) { _Color4dv(v); }
  void Color(const vec_t_<double, 3>& color) { _Color3dv(&color.x); }
  /// \}

  // --- Life cycle

  /// Gives back surfaces, textures, buffers and shaders. Matrices, lights, switches and the pending
  /// error survive, and `Create` can be called again.
  virtual void Destroy() = 0;

  // --- Targets and clearing

  /// Clears the targets asked for, within the colour mask, the depth mask and the stencil mask.
  /// `GL_INVALID_OPERATION` on a context that isn't created.
  virtual void Clear(bool color, bool depth, bool stencil) = 0;

  /// The byte of each channel is the low byte of the truncation of `c * 255 + 0.5`: nothing is
  /// clamped, 1.5 gives 127. The form with floats in a vector computes in float, the others in
  /// double.
  virtual void ClearColor(float r, float g, float b, float a) = 0;
  virtual void ClearColor(const vec_t_<float, 4>& color) = 0;
  virtual void ClearColor(const vec_t_<double, 4>& color) = 0;

  /// Which channels drawing and clearing may write.
  virtual void ColorMask(unsigned char r, unsigned char g, unsigned char b, unsigned char a) = 0;

  /// The depth that `Clear` writes, as a float and not clamped.
  virtual void ClearDepth(double depth) = 0;

  // --- Depth and stencil

  /// One of the eight comparisons. Another value reports `GL_INVALID_ENUM`, is stored all the same,
  /// and leaves the comparison in force.
  virtual void DepthFunc(unsigned int func) = 0;

  /// Whether depth is written: by `Clear`, and by every fragment, with the depth test off as well.
  virtual void DepthMask(unsigned char on) = 0;

  /// The stencil value that `Clear` writes: the low byte.
  virtual void ClearStencil(int value) = 0;

  /// The test `(ref & mask) func (stored & mask)` on low bytes. `GL_INVALID_ENUM` for an unknown
  /// `func`, which changes nothing.
  virtual void StencilFunc(unsigned int func, int ref, unsigned int mask) = 0;

  /// What happens to the stored value. `GL_INCR` saturates at 255 before masking; `GL_DECR_WRAP`
  /// stops at 0 as `GL_DECR` does. `GL_INVALID_ENUM`, changing nothing, if any of the three is
  /// unknown.
  virtual void StencilOp(unsigned int fail, unsigned int zfail, unsigned int zpass) = 0;

  /// The write mask; its low byte is what counts.
  virtual void StencilMask(unsigned int mask) = 0;

  /// The form with `GL_COLOR_BUFFER_BIT`, `GL_DEPTH_BUFFER_BIT` and `GL_STENCIL_BUFFER_BIT`; other
  /// bits are ignored.
  virtual void Clear(unsigned int mask) = 0;

  // --- Primitives

  /// Starts a primitive mode, points to quads; vertices are drawn as they come. Another mode
  /// reports `GL_INVALID_ENUM`, and the vertices up to `End` draw nothing.
  virtual void Begin(unsigned int mode) = 0;

  /// Closes a line loop and ends the mode; what is incomplete is dropped.
  virtual void End() = 0;

  // --- Switches and attribute stack

  /// Saves the groups of `mask`: current values, polygon, colour material, depth, stencil,
  /// viewport, enables, colour buffer, hint. Other bits save nothing. The stack has no depth limit.
  virtual void PushAttrib(unsigned int mask) = 0;

  /// Restores the top of the stack; on an empty one it reports `GL_INVALID_OPERATION` and stops.
  virtual void PopAttrib() = 0;

  /// Switches a capability. An unknown one reports `GL_INVALID_ENUM` and throws a `TZxMessage`.
  virtual void Enable(unsigned int cap) = 0;
  virtual void Disable(unsigned int cap) = 0;

  /// A capability or client array; an unknown one throws a `TZxMessage` with no error code set.
  virtual bool IsEnabled(unsigned int cap) = 0;

  /// There is no alpha test: reports `GL_INVALID_OPERATION`.
  virtual void AlphaFunc(unsigned int func, float ref) = 0;

  /// Takes every pair; only `GL_SRC_ALPHA`, `GL_ONE_MINUS_SRC_ALPHA` blends, with any other
  /// fragments overwrite.
  virtual void BlendFunc(unsigned int src, unsigned int dst) = 0;

  // --- Points, lines and polygons

  /// Stored and never read: a point is one pixel.
  virtual void PointSize(float size) = 0;

  /// Stored and never read: a line is one pixel wide.
  virtual void LineWidth(float width) = 0;

  /// There is no stipple: reports `GL_INVALID_OPERATION`.
  virtual void LineStipple(int factor, unsigned short pattern) = 0;

  /// Stored for queries (`GL_FRONT_AND_BACK` into the front value alone); triangles are always
  /// filled.
  virtual void PolygonMode(unsigned int face, unsigned int mode) = 0;

  // --- Light model and materials

  /// `GL_LIGHT_MODEL_LOCAL_VIEWER`, `GL_LIGHT_MODEL_TWO_SIDE`, `GL_LIGHT_MODEL_COLOR_CONTROL`
  /// (stored only); the vector forms also take the four values of `GL_LIGHT_MODEL_AMBIENT`. Another
  /// name reports `GL_INVALID_ENUM`.
  virtual void LightModeli(unsigned int pname, int v) = 0;
  virtual void LightModeliv(unsigned int pname, const int* v) = 0;
  virtual void LightModelf(unsigned int pname, float v) = 0;
  virtual void LightModelfv(unsigned int pname, const float* v) = 0;

  /// `GL_SHININESS` of either face or both, unchecked; all else reports `GL_INVALID_ENUM`.
  virtual void Materialf(unsigned int face, unsigned int pname, float v) = 0;

  /// Four values of a colour or one of `GL_SHININESS`. `GL_FRONT_AND_BACK` changes the front
  /// material only. An unknown face or name reports `GL_INVALID_ENUM`.
  virtual void Materialfv(unsigned int face, unsigned int pname, const float* v) = 0;

  /// Which material values follow the current colour while `GL_COLOR_MATERIAL` is on; unchecked.
  virtual void ColorMaterial(unsigned int face, unsigned int mode) = 0;

  // --- Current values

  /// The current colour. Bytes are multiplied by the float nearest to 1/255 in float; three
  /// components set alpha to 1.
  virtual void _Color3ub(unsigned char r, unsigned char g, unsigned char b) = 0;
  virtual void _Color3ubv(const unsigned char* v) = 0;
  virtual void _Color3f(float r, float g, float b) = 0;
  virtual void _Color3fv(const float* v) = 0;
  virtual void _Color3d(double r, double g, double b) = 0;
  virtual void _Color3dv(const double* v) = 0;
  virtual void _Color4ub(unsigned char r, unsigned char g, unsigned char b, unsigned char a) = 0;
  virtual void _Color4ubv(const unsigned char* v) = 0;
  virtual void _Color4f(float r, float g, float b, float a) = 0;
  virtual void _Color4fv(const float* v) = 0;
  virtual void _Color4d(double r, double g, double b, double a) = 0;
  virtual void _Color4dv(const double* v) = 0;

  /// The current normal's x, y, z. Its default is all zero.
  virtual void Normal3f(float x, float y, float z) = 0;
  virtual void Normal3fv(const float* v) = 0;
  virtual void Normal3d(double x, double y, double z) = 0;
  virtual void Normal3dv(const double* v) = 0;

  /// The current texture coordinate: (s, t, 0, 1), (s, t, r, 1) or (s, t, r, q).
  virtual void TexCoord2f(float s, float t) = 0;
  virtual void TexCoord2fv(const float* v) = 0;
  virtual void TexCoord2d(double s, double t) = 0;
  virtual void TexCoord2dv(const double* v) = 0;
  virtual void TexCoord3f(float s, float t, float r) = 0;
  virtual void TexCoord3fv(const float* v) = 0;
  virtual void TexCoord3d(double s, double t, double r) = 0;
  virtual void TexCoord3dv(const double* v) = 0;
  virtual void TexCoord4f(float s, float t, float r, float q) = 0;
  virtual void TexCoord4fv(const float* v) = 0;
  virtual void TexCoord4d(double s, double t, double r, double q) = 0;
  virtual void TexCoord4dv(const double* v) = 0;

  // --- Vertices

  /// Stores the current vertex, missing components being 0 and w 1, and submits it to the mode in
  /// force. The standard vertex shader takes w as 1 whatever it is.
  virtual void Vertex2i(int x, int y) = 0;
  virtual void Vertex2iv(const int* v) = 0;
  virtual void Vertex2f(float x, float y) = 0;
  virtual void Vertex2fv(const float* v) = 0;
  virtual void Vertex2d(double x, double y) = 0;
  virtual void Vertex2dv(const double* v) = 0;
  virtual void Vertex3i(int x, int y, int z) = 0;
  virtual void Vertex3iv(const int* v) = 0;
  virtual void Vertex3f(float x, float y, float z) = 0;
  virtual void Vertex3fv(const float* v) = 0;
  virtual void Vertex3d(double x, double y, double z) = 0;
  virtual void Vertex3dv(const double* v) = 0;
  virtual void Vertex4f(float x, float y, float z, float w) = 0;
  virtual void Vertex4fv(const float* v) = 0;
  virtual void Vertex4d(double x, double y, double z, double w) = 0;
  virtual void Vertex4dv(const double* v) = 0;

  // --- Whole-surface operations

  /// Accepted for the whole surface, (0, 0, width, height); anything else throws "Under
  /// construction!".
  virtual void Viewport(int x, int y, int width, int height) = 0;
  virtual void Scissor(int x, int y, int width, int height) = 0;

  // --- Matrices

  /// `GL_MODELVIEW`, `GL_PROJECTION` or `GL_TEXTURE` (of the active unit). Unchecked: with another
  /// value the matrix operations report `GL_INVALID_OPERATION`.
  virtual void MatrixMode(unsigned int mode) = 0;

  /// Saves the current matrix; there is no depth limit.
  virtual void PushMatrix() = 0;

  /// Restores the last saved matrix; on an empty stack it does nothing.
  virtual void PopMatrix() = 0;

  /// Calls the virtual `LoadMatrix`.
  virtual void LoadIdentity() = 0;

  /// 16 values column by column; calls the virtual `LoadMatrix` of doubles.
  virtual void LoadMatrixf(const float* m) = 0;
  virtual void LoadMatrixd(const double* m) = 0;

  /// 16 values column by column; calls the virtual `MultMatrix` of doubles, which computes current
  /// * m.
  virtual void MultMatrixf(const float* m) = 0;
  virtual void MultMatrixd(const double* m) = 0;

  /// The parallel projection. Arguments are not checked.
  virtual void Ortho(double left, double right, double bottom, double top, double zNear,
                     double zFar) = 0;

  /// The perspective projection. Arguments are not checked.
  virtual void Frustum(double left, double right, double bottom, double top, double zNear,
                       double zFar) = 0;

  /// Multiplies by a translation.
  virtual void Translatef(float x, float y, float z) = 0;
  virtual void Translated(double x, double y, double z) = 0;

  /// Multiplies by a rotation of `angle` degrees about an axis of any length; a zero axis is the
  /// identity.
  virtual void Rotatef(float angle, float x, float y, float z) = 0;
  virtual void Rotated(double angle, double x, double y, double z) = 0;

  /// Multiplies by a scale.
  virtual void Scalef(float x, float y, float z) = 0;
  virtual void Scaled(double x, double y, double z) = 0;

  // --- Vertex arrays

  /// Saves the current vertex array object's eight pointers; `mask` is ignored. The four classic
  /// arrays are not saved.
  virtual void PushClientAttrib(unsigned int mask) = 0;

  /// Restores them; on an empty stack it reports `GL_STACK_UNDERFLOW`.
  virtual void PopClientAttrib() = 0;

  /// `GL_VERTEX_ARRAY`, `GL_NORMAL_ARRAY`, `GL_COLOR_ARRAY`, `GL_TEXTURE_COORD_ARRAY`; anything
  /// else reports `GL_INVALID_ENUM`.
  virtual void EnableClientState(unsigned int array) = 0;
  virtual void DisableClientState(unsigned int array) = 0;

  /// A classic array: `size` components of `GL_UNSIGNED_BYTE`, `GL_FLOAT` or `GL_DOUBLE`, `stride`
  /// bytes apart (0: tight). Unsigned bytes are normalised to 0 to 1. With a buffer bound to
  /// `GL_ARRAY_BUFFER`, `pointer` is an offset into it, resolved now: reallocating or deleting the
  /// buffer afterwards leaves the array dangling, which is the caller's duty to avoid.
  /// `GL_INVALID_VALUE` for another size or type.
  virtual void ColorPointer(int size, unsigned int type, int stride, const void* pointer) = 0;
  virtual void NormalPointer(unsigned int type, int stride, const void* pointer) = 0;
  virtual void TexCoordPointer(int size, unsigned int type, int stride, const void* pointer) = 0;
  virtual void VertexPointer(int size, unsigned int type, int stride, const void* pointer) = 0;

  /// Replays `count` elements from `first` through the virtual `Begin`, `Vertex4dv` and `End`.
  /// Nothing happens without an enabled array that has data, or with a count below 1. The range is
  /// the caller's duty. Elements that lie in a surface which is being drawn into may be read before
  /// or after it is written.
  virtual void DrawArrays(unsigned int mode, int first, int count) = 0;

  /// The same by indices of `GL_UNSIGNED_BYTE`, `GL_UNSIGNED_SHORT` or `GL_UNSIGNED_INT`, from
  /// memory or from the buffer bound to `GL_ELEMENT_ARRAY_BUFFER` at the offset `indices`.
  /// `GL_INVALID_VALUE` for another type, or null indices without a buffer. A buffer that does not
  /// hold `count` indices from the offset on is passed over. Indices beyond the data are the
  /// caller's duty to avoid.
  virtual void DrawElements(unsigned int mode, int count, unsigned int type,
                            const void* indices) = 0;

  // --- Pixels

  /// Stored and read by nothing; `WindowPos2i` places `DrawPixels`.
  virtual void RasterPos2i(int x, int y) = 0;
  virtual void RasterPos2iv(const int* v) = 0;
  virtual void RasterPos2f(float x, float y) = 0;
  virtual void RasterPos2fv(const float* v) = 0;
  virtual void RasterPos2d(double x, double y) = 0;
  virtual void RasterPos2dv(const double* v) = 0;
  virtual void RasterPos3i(int x, int y, int z) = 0;
  virtual void RasterPos3f(float x, float y, float z) = 0;
  virtual void RasterPos3fv(const float* v) = 0;
  virtual void RasterPos3d(double x, double y, double z) = 0;
  virtual void RasterPos3dv(const double* v) = 0;
  virtual void RasterPos(const vec_t_<double, 2>& position) = 0;

  /// The window position of the lower-left corner of `DrawPixels`.
  virtual void WindowPos2i(int x, int y) = 0;

  /// Does nothing.
  virtual void PixelZoom(float x, float y) = 0;

  /// Draws `GL_RGBA`, `GL_UNSIGNED_BYTE` pixels at the window position, with blending and the
  /// colour mask. A rectangle that starts inside and runs over the right or upper edge is not cut
  /// there: the caller keeps it inside. `GL_INVALID_OPERATION` for other formats or an unfit colour
  /// surface.
  virtual void DrawPixels(int width, int height, unsigned int format, unsigned int type,
                          const void* pixels) = 0;

  /// Reads `GL_RGBA`, `GL_UNSIGNED_BYTE` pixels. The surface is walked with the caller's steps and
  /// the caller's memory with the surface's strides, which agree for a full-width read with no
  /// padding. Does nothing for other formats or an unfit colour surface.
  virtual void ReadPixels(int x, int y, int width, int height, unsigned int format,
                          unsigned int type, void* pixels) = 0;

  /// Row length, skips and alignment of either direction; the alignment applies to each pixel.
  /// `GL_INVALID_ENUM` for an unknown name.
  virtual void PixelStorei(unsigned int pname, int v) = 0;

  // --- Textures

  /// Filter, wrap and (vector form) border colour of the active unit. Either wrap name sets both
  /// axes, either filter name both filters. Between `Begin` and `End` `GL_INVALID_OPERATION`; a
  /// target other than `GL_TEXTURE_2D` throws a `TZxMessage`.
  virtual void TexParameteri(unsigned int target, unsigned int pname, int v) = 0;
  virtual void TexParameterf(unsigned int target, unsigned int pname, float v) = 0;
  virtual void TexParameterfv(unsigned int target, unsigned int pname, const float* v) = 0;

  /// Not built: report `GL_INVALID_ENUM`.
  virtual void GetTexParameteriv(unsigned int target, unsigned int pname, int* out) = 0;
  virtual void GetTexParameterfv(unsigned int target, unsigned int pname, float* out) = 0;
  virtual void GetTexLevelParameteriv(unsigned int target, int level, unsigned int pname,
                                      int* out) = 0;
  virtual void GetTexLevelParameterfv(unsigned int target, int level, unsigned int pname,
                                      float* out) = 0;

  /// Makes the bound texture anew from tightly packed `pixels` (null leaves it zeroed).
  /// `internalformat` must equal `format`, `level` and `border` be 0. `GL_INVALID_VALUE` if not,
  /// `GL_INVALID_OPERATION` between `Begin` and `End` or for a format or type without a mapping.
  virtual void TexImage2D(unsigned int target, int level, int internalformat, int width, int height,
                          int border, unsigned int format, unsigned int type,
                          const void* pixels) = 0;

  /// Replaces a part of the bound texture; type and format must be those of the texture. What lies
  /// outside it is cut.
  virtual void TexSubImage2D(unsigned int target, int level, int xoffset, int yoffset, int width,
                             int height, unsigned int format, unsigned int type,
                             const void* pixels) = 0;

  /// Not built: throws "TODO".
  virtual void CopyTexImage2D(unsigned int target, int level, unsigned int internalformat, int x,
                              int y, int width, int height, int border) = 0;

  /// Not built: report `GL_INVALID_VALUE`.
  virtual void Bitmap(int width, int height, float xorig, float yorig, float xmove, float ymove,
                      const unsigned char* bits) = 0;
  virtual void Bitmap(const TZxGLBitmap& bitmap, float xmove, float ymove) = 0;

  // --- Display lists

  /// There are no display lists: all report `GL_INVALID_OPERATION`; `GenLists` returns 0, `IsList`
  /// false.
  virtual unsigned int GenLists(int range) = 0;
  virtual void DeleteLists(unsigned int list, int range) = 0;
  virtual bool IsList(unsigned int list) = 0;
  virtual void NewList(unsigned int list, unsigned int mode) = 0;
  virtual void EndList() = 0;
  virtual void ListBase(unsigned int base) = 0;
  virtual void CallList(unsigned int list) = 0;
  virtual void CallLists(int n, unsigned int type, const void* lists) = 0;

  // --- Texture objects and buffers

  /// Gives out the lowest free names from 1 on, each with an empty surface.
  virtual void GenTextures(int n, unsigned int* ids) = 0;

  /// Frees textures and unbinds them from this context's units, and from those of every context
  /// that shares the table and has them bound.
  virtual void DeleteTextures(int n, const unsigned int* ids) = 0;

  /// Whether the name has a surface.
  virtual bool IsTexture(unsigned int id) = 0;

  /// Binds to the active unit; a name past the table's end changes nothing. A target other than
  /// `GL_TEXTURE_2D` throws a `TZxMessage`.
  virtual void BindTexture(unsigned int target, unsigned int id) = 0;

  /// Gives out the lowest free names from 1 on.
  virtual void GenBuffers(int n, unsigned int* ids) = 0;

  /// Frees buffers and clears the binding points that hold them. Arrays set from them dangle.
  virtual void DeleteBuffers(int n, unsigned int* ids) = 0;

  /// Binds to one of the four targets of arrays and pixels; `GL_INVALID_ENUM` for another target.
  virtual void BindBuffer(unsigned int target, unsigned int id) = 0;

  /// Binds to `GL_ATOMIC_COUNTER_BUFFER` or `GL_SHADER_STORAGE_BUFFER` at index 0.
  virtual void BindBufferBase(unsigned int target, unsigned int index, unsigned int id) = 0;

  /// Sizes the bound buffer to `size` bytes, new ones 0, and copies `data` if not null.
  /// `GL_INVALID_OPERATION` for an unknown target or an empty binding, `GL_INVALID_VALUE` for a
  /// negative size.
  virtual void BufferData(unsigned int target, long size, const void* data, unsigned int usage) = 0;

  /// Replaces `size` bytes from `offset`; `GL_INVALID_VALUE` outside the buffer or without data.
  virtual void BufferSubData(unsigned int target, long offset, long size, const void* data) = 0;

  /// The buffer's own storage; null on failure. Mapping forbids nothing.
  virtual void* MapBuffer(unsigned int target, unsigned int access) = 0;

  /// False on failure.
  virtual bool UnmapBuffer(unsigned int target) = 0;

  /// Size, usage, access or the mapped flag.
  virtual void GetBufferParameter(unsigned int target, unsigned int pname, int* out) = 0;

  // --- State and queries

  /// `GL_SMOOTH` is accepted; `GL_FLAT` throws "Under construction!"; another value reports
  /// `GL_INVALID_ENUM`.
  virtual void ShadeModel(unsigned int mode) = 0;

  /// `GL_PERSPECTIVE_CORRECTION_HINT` only; `GL_INVALID_ENUM` for another target.
  virtual void Hint(unsigned int target, unsigned int mode) = 0;

  /// Not built: reports `GL_INVALID_ENUM`.
  virtual void GetBooleanv(unsigned int pname, unsigned char* out) = 0;

  /// One to four integers by name; `GL_INVALID_VALUE` for a null `out`, `GL_INVALID_ENUM` for an
  /// unknown name.
  virtual void GetIntegerv(unsigned int pname, int* out) = 0;

  /// Colour, fog, clear values and matrices by name; `GL_INVALID_ENUM` for an unknown name.
  virtual void GetFloatv(unsigned int pname, float* out) = 0;
  virtual void GetDoublev(unsigned int pname, double* out) = 0;

  /// `GL_FRONT` does nothing; anything else reports `GL_INVALID_VALUE`.
  virtual void DrawBuffer(unsigned int buffer) = 0;
  virtual void ReadBuffer(unsigned int buffer) = 0;

  // --- Selection, framebuffers

  /// There is no selection or feedback and there are no framebuffer objects: all report
  /// `GL_INVALID_OPERATION`; `RenderMode` returns 0.
  virtual void SelectBuffer(int size, unsigned int* buffer) = 0;
  virtual void InitNames() = 0;
  virtual void LoadName(unsigned int name) = 0;
  virtual void PushName(unsigned int name) = 0;
  virtual void PopName() = 0;
  virtual int RenderMode(unsigned int mode) = 0;
  virtual void BindFramebuffer(unsigned int target, unsigned int id) = 0;

  // --- Finishing and errors

  /// Nothing to do: work is done when a call returns.
  virtual void Flush() = 0;
  virtual void Finish() = 0;

  /// The first error since the last call, which it clears; 0 if none. 0xFFFFFFFF is an index out of
  /// range.
  virtual unsigned int GetError() = 0;

  /// "GL_ARB_texture_non_power_of_two" for every name.
  virtual const char* GetString(unsigned int name) = 0;

  // --- Outlines

  /// Draws the outline of a polygon in `color` as a `GL_LINE_LOOP` through `VertexPointer` and
  /// `DrawArrays`: `GL_VERTEX_ARRAY` must be enabled. The other arguments are ignored.
  virtual void Polygon(const std::vector<vec_t_<double, 2>>& points, const vec_t_<double, 3>& color,
                       double width, const vec_t_<double, 3>& fill, double fillWidth) = 0;

  /// `Polygon` for each contour.
  virtual void Domain(const std::vector<std::vector<vec_t_<double, 2>>>& contours,
                      const vec_t_<double, 3>& color, double width, const vec_t_<double, 3>& fill,
                      double fillWidth) = 0;

  // --- Being current

  /// True; there is no second buffer.
  virtual bool SwapBuffers(TZxGLSurface* surface) = 0;

  /// Stores the surface, which nothing in drawing reads; false on a context that isn't created.
  virtual bool DoMakeCurrent(TZxGLSurface* surface) = 0;

  /// Forgets the surface.
  virtual void DoDoneCurrent() = 0;

  /// Width and height of the surfaces; false on a context that isn't created.
  virtual bool GetSize(vec_t_<int, 2>* size) const = 0;

  // --- Switches, fog and multitexture

  /// `GL_BLEND`.
  virtual void EnableBlend(bool on) = 0;

  /// Fog is stored and read back; no stage applies it. `GL_INVALID_VALUE` for an unknown name.
  virtual void Fog(unsigned int pname, int v) = 0;
  virtual void Fog(unsigned int pname, float v) = 0;
  virtual void Fog(unsigned int pname, const float* v) = 0;

  /// `GL_DEPTH_TEST`.
  virtual void EnableDepthTest(bool on) = 0;

  /// As `TexCoord`; the unit is ignored, since there is one coordinate.
  virtual void MultiTexCoord2f(unsigned int unit, float s, float t) = 0;
  virtual void MultiTexCoord2fv(unsigned int unit, const float* v) = 0;
  virtual void MultiTexCoord2d(unsigned int unit, double s, double t) = 0;
  virtual void MultiTexCoord2dv(unsigned int unit, const double* v) = 0;
  virtual void MultiTexCoord3f(unsigned int unit, float s, float t, float r) = 0;
  virtual void MultiTexCoord3fv(unsigned int unit, const float* v) = 0;
  virtual void MultiTexCoord3d(unsigned int unit, double s, double t, double r) = 0;
  virtual void MultiTexCoord3dv(unsigned int unit, const double* v) = 0;

  /// The one real load; the float form widens and calls the double one.
  virtual void LoadMatrix(const MAT4<float>& m) = 0;
  virtual void LoadMatrix(const MAT4<double>& m) = 0;

  /// The one real multiplication, current * m; the float form widens and calls the double one.
  virtual void MultMatrix(const MAT4<float>& m) = 0;
  virtual void MultMatrix(const MAT4<double>& m) = 0;

  // --- Faces and lights

  /// Stored unchecked; a mode that is not a face culls nothing.
  virtual void CullFace(unsigned int mode) = 0;

  /// `GL_CCW` or `GL_CW`; `GL_INVALID_VALUE` for anything else.
  virtual void FrontFace(unsigned int mode) = 0;

  /// `GL_CULL_FACE`.
  virtual void EnableCullFace(bool on) = 0;

  /// Light 0 to 7. `GL_INVALID_OPERATION` between `Begin` and `End`, 0xFFFFFFFF for another index.
  virtual void EnableLight(unsigned long index, bool on) = 0;

  /// `GL_LIGHTING`. With it on and no light enabled, everything is black with alpha 0.
  virtual void EnableLighting(bool on) = 0;

  /// One value. Positions and directions of the vector form go to eye space with the modelview
  /// matrix of the moment; it reads the linear attenuation from v[1] and the quadratic one from
  /// v[2]. `GL_INVALID_OPERATION` between `Begin` and `End`, 0xFFFFFFFF for an unknown light.
  virtual void Lightf(unsigned int light, unsigned int pname, float v) = 0;
  virtual void Lightfv(unsigned int light, unsigned int pname, const float* v) = 0;

  /// Stored values as floats, attenuations at the places where `Lightfv` reads them.
  /// `GL_SPOT_CUTOFF` wants a legal cutoff in `out[0]` first.
  virtual void GetLight(unsigned int light, unsigned int pname, float* out) = 0;

  // --- Surfaces

  /// The surface drawn to; not to be freed. The colour surface may be a bound one.
  virtual TDataSurface* GetColorSurface() = 0;
  virtual TDataSurface* GetDepthSurface() = 0;
  virtual TDataSurface* GetStencilSurface() = 0;

  /// The unit of what follows, from `GL_TEXTURE0` on; unchecked. What works on a unit that does not
  /// exist does nothing.
  virtual void ActiveTexture(unsigned int texture) = 0;

  /// Exchanges the bound texture's surface with `surface`, copying no pixels. Another target or
  /// level throws a `TZxMessage`; without a bound texture `GL_INVALID_OPERATION` and false.
  virtual bool MoveTexImage2D(unsigned int target, int level, TDataSurface* surface) = 0;

  /// `GL_TEXTURE_ENV`, `GL_TEXTURE_ENV_MODE`, `GL_MODULATE` or `GL_REPLACE`; anything else reports
  /// `GL_INVALID_VALUE`.
  virtual void TexEnvi(unsigned int target, unsigned int pname, int v) = 0;

  /// Not built: report `GL_INVALID_VALUE`.
  virtual void TexEnvf(unsigned int target, unsigned int pname, float v) = 0;
  virtual void TexGeni(unsigned int coord, unsigned int pname, int v) = 0;
  virtual void TexGenf(unsigned int coord, unsigned int pname, float v) = 0;
  virtual void TexGend(unsigned int coord, unsigned int pname, double v) = 0;

  /// Sets both filters of the active unit; ignored unless they are equal and `GL_NEAREST` or
  /// `GL_LINEAR`.
  virtual void TexFilter2D(unsigned int min, unsigned int mag) = 0;

  /// Sets the wrap of each axis of the active unit; ignored unless both are known.
  virtual void TexWrap2D(unsigned int s, unsigned int t) = 0;

  /// Stored unchecked; `GL_FASTEST` interpolates linearly in the window, anything else with
  /// perspective.
  virtual void SetPerspectiveCorrectionHint(unsigned int hint) = 0;
  virtual unsigned int GetPerspectiveCorrectionHint() = 0;

  /// `callback` is called with an empty text on every error while `GL_DEBUG_OUTPUT` is on, inside
  /// the failing call. Always true. Null takes it away.
  virtual bool DebugMessageCallback(TDebugCallback callback, void* user) = 0;

  // --- Programs, uniforms and attributes

  /// Installs the shaders that the program holds now; null restores the standard pair.
  /// `GL_INVALID_VALUE` for a program that is no `TProgramCPU`.
  virtual void SetProgram(TProgram* program) = 0;

  /// The program in force, without a reference.
  virtual TProgram* GetProgram() = 0;

  /// Stores into the cell `location` of the uniforms, 32 bytes each: floats and doubles as doubles,
  /// integers as 32 bits, a bool as a byte; matrices run on into the next cells. A location outside
  /// the 32 cells stores nothing, nor does a matrix that would run past the last.
  virtual void Uniform(int location, bool v) = 0;
  virtual void Uniform(int location, int v) = 0;
  virtual void Uniform(int location, unsigned int v) = 0;
  virtual void Uniform(int location, float v) = 0;
  virtual void Uniform(int location, double v) = 0;
  virtual void Uniform(int location, int x, int y) = 0;
  virtual void Uniform(int location, float x, float y) = 0;
  virtual void Uniform(int location, double x, double y) = 0;
  virtual void Uniform(int location, int x, int y, int z) = 0;
  virtual void Uniform(int location, float x, float y, float z) = 0;
  virtual void Uniform(int location, double x, double y, double z) = 0;
  virtual void Uniform(int location, int x, int y, int z, int w) = 0;
  virtual void Uniform(int location, float x, float y, float z, float w) = 0;
  virtual void Uniform(int location, double x, double y, double z, double w) = 0;
  virtual void Uniform2(int location, const float* v) = 0;
  virtual void Uniform3(int location, const float* v) = 0;
  virtual void Uniform4(int location, const float* v) = 0;
  virtual void Uniform(int location, const vec_t_<float, 2>& v) = 0;
  virtual void Uniform(int location, const vec_t_<double, 2>& v) = 0;
  virtual void Uniform(int location, const vec_t_<float, 3>& v) = 0;
  virtual void Uniform(int location, const vec_t_<double, 3>& v) = 0;
  virtual void Uniform(int location, const vec_t_<float, 4>& v) = 0;
  virtual void Uniform(int location, const vec_t_<double, 4>& v) = 0;
  virtual void Uniform(int location, const MAT3<float>& m) = 0;
  virtual void Uniform(int location, const MAT3<double>& m) = 0;
  virtual void Uniform(int location, const MAT4<float>& m) = 0;
  virtual void Uniform(int location, const MAT4<double>& m) = 0;

  /// Sets generic attribute `index`, missing components being 0 and w 1. Index 0 submits a vertex
  /// through `Vertex4dv`; an index outside 0 to 7 stores nothing.
  virtual void VertexAttrib(int index, float v) = 0;
  virtual void VertexAttrib(int index, double v) = 0;
  virtual void VertexAttrib(int index, const vec_t_<float, 2>& v) = 0;
  virtual void VertexAttrib(int index, const vec_t_<double, 2>& v) = 0;
  virtual void VertexAttrib(int index, const vec_t_<float, 3>& v) = 0;
  virtual void VertexAttrib(int index, const vec_t_<double, 3>& v) = 0;
  virtual void VertexAttrib(int index, const vec_t_<float, 4>& v) = 0;
  virtual void VertexAttrib(int index, const vec_t_<double, 4>& v) = 0;

  /// Generic array 0 to 7; another index reports 0xFFFFFFFF.
  virtual void EnableVertexAttribArray(unsigned int index) = 0;
  virtual void DisableVertexAttribArray(unsigned int index) = 0;

  /// A generic array of the current vertex array object; see `VertexPointer`. Index above 7 reports
  /// 0xFFFFFFFF.
  virtual void VertexAttribPointer(unsigned int index, int size, unsigned int type,
                                   unsigned char normalized, int stride, const void* pointer) = 0;

  /// One integer of a generic array's state.
  virtual void GetVertexAttrib(unsigned int index, unsigned int pname, int* out) = 0;

  /// False.
  virtual bool IsSupport_SGIS_generate_mipmap() const = 0;

protected:
  TZxGLSurface* m_Surface = nullptr; ///< the context's own surface, one reference held

private:
  bool m_Current = false;
};

} // namespace Zx3D

using Zx3D::TZxGL;
