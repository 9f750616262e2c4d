#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <ZxCore3D/render/TRenderBase.h>

namespace Zx3D {

class TProgramCPU;
class TVertexShaderCPU;
class TFragmentShaderCPU;
struct TRenderEngine;

/// The render context: the state machine of the drawing interface, the owner of the surfaces it
/// draws into, and the pipeline from vertex to pixel, all in plain code on the caller's thread.
///
/// Vertices and fragments are computed in double precision; the depth buffer holds floats, the
/// colour surface bytes. Nothing is deferred: when a call returns, its pixels stand in the surface.
/// Row 0 of a surface is the bottom row of the picture.
///
/// The object is large, since all scratch of the drawing path is a member: drawing allocates
/// nothing. Data members are public for the shaders that callers write; change them through the
/// operations. Their order and sizes are part of what a host is compiled against.
///
/// In this order: the records that the pipeline passes on, life and surfaces, the drawing
/// interface as TZxGL.h describes it, operations of this class alone by group, the steps of the
/// pipeline, and the state as data members.
class ZX_CORE3D_API TRenderCPU : public TRenderBase {
public:
  // --- Records

  /// What travels from a vertex to a fragment: eight slots of four doubles, of which the first
  /// `m_VarCount` are live. Slot 0 is the position; the slot table says what the others hold.
  struct VAR_DATA {
    vec_t_<double, 4> Slots[8]; ///< stale from slot `m_VarCount` on

    /// Slot `i`, unchecked.
    vec_t_<double, 4>& operator[](std::size_t i) { return Slots[i]; }
    const vec_t_<double, 4>& operator[](std::size_t i) const { return Slots[i]; }
  };

  /// What a fragment shader gets beside the interpolated slots, and what it gives back.
  struct FS_DATA {
    vec_t_<double, 4> Color; ///< written by the shader; 0 to 1 is what the colour write expects
    int X;                   ///< pixel column
    int Y;                   ///< pixel row
    bool FrontFacing;        ///< of the last triangle piece; points and lines leave it
    float Depth;             ///< window depth; written by the shader if its `IsCalcDepth` says so
  };

  /// Two ends and their difference: a triangle's edge, a span or a line.
  struct EDGE {
    const VAR_DATA* Begin; ///< the end with the smaller y (edges) or x (spans)
    const VAR_DATA* End;   ///< the other end
    VAR_DATA Delta;        ///< `End` minus `Begin`, live slots only
  };

  /// The surfaces that a context owns.
  struct ZX_CORE3D_API TFrameBuffer {
    int Width = 0;                   ///< pixels
    int Height = 0;                  ///< pixels
    TDataSurface* Color = nullptr;   ///< four bytes a pixel, red first
    TDataSurface* Depth = nullptr;   ///< one float a pixel
    TDataSurface* Stencil = nullptr; ///< one byte a pixel

    TFrameBuffer() = default;
    TFrameBuffer(const TFrameBuffer&) = delete;
    TFrameBuffer& operator=(const TFrameBuffer&) = delete;
    ~TFrameBuffer() { Destroy(); }

    /// Makes the three surfaces, dropping old ones. False for a size below 1, changing nothing, and
    /// when memory is exhausted, leaving none.
    bool Create(int width, int height);
    /// Deletes the surfaces.
    void Destroy();
  };

  struct TTextureHold;

  /// The texture objects that contexts share. The record owns its surfaces; the last context to let
  /// go of it deletes them. Names are not to be made or deleted from two threads at once, and no
  /// texture is to be changed or deleted while another thread draws with it.
  struct TTextureTable {
    std::atomic<std::uint32_t> RefCount{1}; ///< contexts that use the table
    std::vector<TDataSurface*> Surfaces;    ///< index is the texture name; null is a free name

    /// Counts every texture that was deleted, detached, remade or exchanged: a context whose own
    /// count differs looks at what it has bound before it draws.
    std::atomic<std::uint64_t> Changes{0};
    std::vector<TTextureHold*> Holds; ///< by name: who has it bound
  };

  /// A light, as `Lightfv` stores it.
  struct TLight {
    bool Enabled;                    ///< by `EnableLight`
    bool Spot;                       ///< the cutoff is not 180
    vec_t_<double, 4> Position;      ///< eye space; unit length if w is 0
    vec_t_<double, 4> Ambient;       ///< added to whatever the light reaches
    vec_t_<double, 4> Diffuse;       ///< times the cosine of the angle of incidence
    vec_t_<double, 4> Specular;      ///< of the highlight
    vec_t_<double, 3> SpotDirection; ///< eye space, not normalised
    double SpotExponent;             ///< power of the cosine within the cone
    double SpotCutoff;               ///< degrees
    double SpotCutoffRad;            ///< radians
    double ConstantAttenuation;      ///< the divisor's constant
    double LinearAttenuation;        ///< the factor of the distance
    double QuadraticAttenuation;     ///< the factor of its square
  };

  /// A surface, as `Materialfv` stores it.
  struct TMaterial {
    vec_t_<double, 4> Ambient;  ///< answer to ambient light
    vec_t_<double, 4> Diffuse;  ///< answer to diffuse light; its alpha is that of the lit colour
    vec_t_<double, 4> Specular; ///< colour of the highlight
    vec_t_<double, 4> Emission; ///< light of its own
    double Shininess;           ///< power of the highlight, unchecked
  };

  /// Stored and read back; no stage applies it.
  struct TFog {
    std::int32_t Mode;       ///< an enum value, unchecked
    double Density;          ///< of the exponential modes
    double Start;            ///< distance from the eye, of the linear mode
    double End;              ///< distance from the eye, of the linear mode
    vec_t_<double, 4> Color; ///< red, green, blue, alpha
  };

  /// Reads filtered texels from a surface, at coordinates in doubles. Filter, wrap, type and
  /// component count are chosen when they are set, so that sampling is one indirect call.
  class ZX_CORE3D_API TTexSampler {
  public:
    /// Writes the texel at `st` to `*out`.
    using TGetValueFunc = void (TTexSampler::*)(const vec_t_<double, 4>& st,
                                                vec_t_<double, 4>* out);

    DATASURFACE* m_Surface = nullptr;                        ///< not owned
    TGetValueFunc m_GetValue = &TTexSampler::GetValueBorder; ///< the function in force
    vec_t_<double, 4> m_BorderColor = {0, 0, 0, 0};          ///< what lies outside
    double m_SurfaceWidth = 0;                               ///< columns; 0 without a surface
    double m_SurfaceHeight = 0;                              ///< rows; 0 without a surface
    std::uint32_t m_FilterMin = 9728; ///< GL_NEAREST or GL_LINEAR, equal to `m_FilterMag`
    std::uint32_t m_FilterMag = 9728; ///< equal to `m_FilterMin`
    std::uint32_t m_WrapS = 10497;    ///< GL_REPEAT, GL_CLAMP, GL_CLAMP_TO_BORDER, GL_CLAMP_TO_EDGE
    std::uint32_t m_WrapT = 10497;    ///< the same values

    /// By filter, wrap S, wrap T, data type, components; the last varies fastest.
    static const std::array<TGetValueFunc, 384> s_GetValueFuncs;

    /// Takes a surface, null for none, that must live as long as it is set. Its block is to have a
    /// row and a pixel of slack, as a `TDataSurface` has: with `GL_REPEAT` one column and row past
    /// the end are read. False if the surface can't be sampled; it then reads as the border colour.
    bool SetSurface(DATASURFACE* surface);
    /// The surface, or null; not owned.
    DATASURFACE* GetSurface() const { return m_Surface; }

    /// False, changing nothing, unless both are the same and GL_NEAREST or GL_LINEAR.
    bool SetFilter(unsigned int min, unsigned int mag);

    /// False, changing nothing, unless both are wrap modes.
    bool SetWrap(unsigned int s, unsigned int t);

    /// Sets the border colour from four components, unclamped.
    void SetBorderColor(const float* color);
    void SetBorderColor(const vec_t_<double, 4>& color) { m_BorderColor = color; }

    /// Chooses the function for the present state; false if there is none, and the border is
    /// chosen.
    bool UpdateGetValueFunc();

    /// \name Sampling at (s, t): all components, or the first ones.
    /// \{
    void GetValue(const vec_t_<double, 4>& st, vec_t_<double, 4>* out) {
      (this->*m_GetValue)(st, out);
    }
    void GetValue(const vec_t_<double, 2>& st, vec_t_<double, 4>* out);
    void GetValue(const vec_t_<double, 2>& st, vec_t_<double, 3>* out);
    void GetValue(const vec_t_<double, 2>& st, vec_t_<double, 2>* out);
    void GetValue(const vec_t_<double, 2>& st, double* out);
    /// \}

    /// The border colour, wherever `st` is.
    void GetValueBorder(const vec_t_<double, 4>& st, vec_t_<double, 4>* out);

    /// The texel that `st` falls into.
    template <unsigned int WrapS, unsigned int WrapT, DATA_TYPE Type, int Components>
    void GetValueWrapNearest2D(const vec_t_<double, 4>& st, vec_t_<double, 4>* out);
    /// The four texels around `st`, weighted.
    template <unsigned int WrapS, unsigned int WrapT, DATA_TYPE Type, int Components>
    void GetValueWrapLinear2D(const vec_t_<double, 4>& st, vec_t_<double, 4>* out);

    /// \name An older nearest path that rounds by adding 0.5; nothing selects it. The surface must
    /// have four bytes or one float a pixel, as the name says; without a surface the border is
    /// read.
    /// \{
    void GetValueClampToBorderNearest4ub2D(const vec_t_<double, 4>& st, vec_t_<double, 4>* out);
    void GetValueClampToEdgeNearest4ub2D(const vec_t_<double, 4>& st, vec_t_<double, 4>* out);
    void GetValueClampToBorderNearest1f2D(const vec_t_<double, 4>& st, vec_t_<double, 4>* out);
    void GetValueClampToEdgeNearest1f2D(const vec_t_<double, 4>& st, vec_t_<double, 4>* out);
    /// \}
  };

  /// A texture unit. The standard stages use unit 0 alone.
  struct TTexUnit {
    bool TexEnabled = false;         ///< `GL_TEXTURE_2D`
    std::uint32_t TexEnvMode = 8448; ///< GL_MODULATE or GL_REPLACE
    TTexSampler Sampler;             ///< the bound texture, filter, wrap and border
    /// For custom shaders: no standard stage applies it.
    MAT4<double> TexMatrix = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    std::vector<MAT4<double>> TexMatrixStack; ///< saved by `PushMatrix`
  };

  /// An array of vertex data and how to fetch from it.
  struct TVertexAttribPointer {
    bool Enabled;                 ///< whether drawing reads it
    std::int32_t Size;            ///< components, 1 to 4
    std::uint32_t Type;           ///< GL_UNSIGNED_BYTE, GL_FLOAT or GL_DOUBLE
    std::uint8_t Normalized;      ///< bytes become 0 to 1
    std::int32_t Stride;          ///< bytes, as it was given
    std::int32_t EffectiveStride; ///< bytes from one element to the next
    const void* Pointer;          ///< as it was given; not owned
    const unsigned char* Data;    ///< element 0: the pointer, or its place in a buffer
    /// Fetches element `index`; missing components are 0, 0 and 1.
    void (*GetValue)(const TVertexAttribPointer* p, unsigned long index, vec_t_<double, 4>* out);
  };
  /// Fetches element `index` of an array.
  using TAttrGetVal = void (*)(const TVertexAttribPointer* p, unsigned long index,
                               vec_t_<double, 4>* out);

  /// The generic arrays of one vertex array object.
  struct TVertexArray {
    TVertexAttribPointer Attribs[8]; ///< by the index of the attribute

    /// Array `i`, unchecked.
    TVertexAttribPointer& operator[](std::size_t i) { return Attribs[i]; }
    const TVertexAttribPointer& operator[](std::size_t i) const { return Attribs[i]; }
  };

  /// An enabled array and the current value that its elements go to.
  struct TAttrValue {
    const TVertexAttribPointer* Pointer; ///< the array
    vec_t_<double, 4>* Value;            ///< where its elements go
  };

  /// A buffer object.
  struct TBuffer {
    std::uint32_t Access = 35002;    ///< GL_READ_WRITE
    std::uint32_t Usage = 35044;     ///< GL_STATIC_DRAW
    bool Mapped = false;             ///< forbids nothing
    std::vector<unsigned char> Data; ///< the bytes
  };

  /// How pixels lie in memory, as `PixelStorei` stores it.
  struct TPixelStore {
    bool SwapBytes = false;      ///< stored only
    bool LsbFirst = false;       ///< stored only
    std::int32_t RowLength = 0;  ///< pixels from row to row; 0: the width
    std::int32_t SkipPixels = 0; ///< before the first
    std::int32_t SkipRows = 0;   ///< before the first
    std::int32_t Alignment = 1;  ///< bytes, of each pixel
  };

  /// One saved piece of state: four doubles or eight 32-bit values.
  struct TAttribData {
    union {
      double Doubles[4];
      std::uint32_t Words[8];
    };
  };

  /// One entry of the attribute stack.
  struct TAttribItem {
    std::uint32_t Mask;            ///< as given to `PushAttrib`
    std::vector<TAttribData> Data; ///< the groups' pieces, in the order of their bits
  };

  /// Whether a depth passes.
  using TDepthCompare = bool (*)(float fragment, float stored);
  /// Whether a stencil value passes.
  using TStencilCompare = bool (*)(unsigned char ref, unsigned char value, unsigned char mask);
  /// Changes the stencil value at `s` within `mask`.
  using TStencilFunction = void (*)(unsigned char* s, unsigned char ref, unsigned char mask);
  /// Blends four bytes of `src` over those at `dst`.
  using TBlendFunction = void (*)(const void* src, void* dst);
  /// The same, for the bytes whose bit is set in `mask`.
  using TBlendMFunction = void (*)(const void* src, void* dst, unsigned char mask);
  /// Stores a colour into a pixel of the draw buffer.
  using TPixelWrite = void (*)(void* dst, const vec_t_<double, 4>& color);
  /// What a submitted vertex calls.
  using TVertexHandler = void (TRenderCPU::*)();

  // --- Life

  /// A context with all defaults, not created: its state can be set, and it draws nothing. Throws
  /// `std::bad_alloc` if memory is exhausted.
  TRenderCPU();
  ~TRenderCPU() override;
  TRenderCPU(const TRenderCPU&) = delete;
  TRenderCPU& operator=(const TRenderCPU&) = delete;

  /// Makes the surfaces, `width` by `height` pixels, all bytes 0, and installs the standard
  /// shaders. `share`, if not null, is a context whose textures this one is to share. False,
  /// leaving the context as it was, if it is created already, a size is below 1, `share` is no
  /// `TRenderCPU`, or memory is exhausted.
  bool Create(int width, int height, TRenderBase* share);

  /// New surfaces of another size; old contents are lost and a bound colour surface is unbound.
  /// False if not created or a size is below 1; when memory is exhausted the context is then no
  /// longer created.
  bool SetSize(int width, int height);

  /// Lets `other` share this context's textures; false if it has textures of its own already, is
  /// this context or is no `TRenderCPU`, or memory is exhausted.
  bool _Share(TRenderBase* other);

  /// Notes an error if none is pending, and calls the debug callback if it is on.
  void _SetError(unsigned int code);

  /// Draws into `surface` in the place of the context's own colour surface; null goes back. It is
  /// not owned, must outlive its binding, and is to have four bytes a pixel. One of another size
  /// reports `GL_INVALID_VALUE` and is bound all the same: pixels outside its block are then not
  /// written. Its owner may exchange its pixels at any time: each primitive goes to those it has.
  /// It may be a surface that is sampled or tested against as well: pixels are then drawn one by
  /// one, from left to right, so that each sees what those before it wrote.
  void BindColorSurface(TDataSurface* surface);

  /// Takes every fragment's colour, unquantised and without mask or blending, in the place of the
  /// colour surface: 1 or 4 floats or doubles a pixel, of the context's size; anything else is
  /// ignored. Null goes back. It is not owned and must outlive its use.
  void SetDrawBuffer(DATASURFACE* surface);

  // --- The drawing interface, described in TZxGL.h

  // --- Life cycle

  void Destroy() override;

  // --- Targets and clearing

  void Clear(bool color, bool depth, bool stencil) override;
  void ClearColor(float r, float g, float b, float a) override;
  void ClearColor(const vec_t_<float, 4>& color) override;
  void ClearColor(const vec_t_<double, 4>& color) override;
  void ColorMask(unsigned char r, unsigned char g, unsigned char b, unsigned char a) override;
  void ClearDepth(double depth) override;

  // --- Depth and stencil

  void DepthFunc(unsigned int func) override;
  void DepthMask(unsigned char on) override;
  void ClearStencil(int value) override;
  void StencilFunc(unsigned int func, int ref, unsigned int mask) override;
  void StencilOp(unsigned int fail, unsigned int zfail, unsigned int zpass) override;
  void StencilMask(unsigned int mask) override;
  void Clear(unsigned int mask) override;

  // --- Primitives

  void Begin(unsigned int mode) override;
  void End() override;

  // --- Switches and attribute stack

  void PushAttrib(unsigned int mask) override;
  void PopAttrib() override;
  void Enable(unsigned int cap) override;
  void Disable(unsigned int cap) override;
  bool IsEnabled(unsigned int cap) override;
  void AlphaFunc(unsigned int func, float ref) override;
  void BlendFunc(unsigned int src, unsigned int dst) override;

  // --- Points, lines and polygons

  void PointSize(float size) override;
  void LineWidth(float width) override;
  void LineStipple(int factor, unsigned short pattern) override;
  void PolygonMode(unsigned int face, unsigned int mode) override;

  // --- Light model and materials

  void LightModeli(unsigned int pname, int v) override;
  void LightModeliv(unsigned int pname, const int* v) override;
  void LightModelf(unsigned int pname, float v) override;
  void LightModelfv(unsigned int pname, const float* v) override;
  void Materialf(unsigned int face, unsigned int pname, float v) override;
  void Materialfv(unsigned int face, unsigned int pname, const float* v) override;
  void ColorMaterial(unsigned int face, unsigned int mode) override;

  // --- Current values

  void _Color3ub(unsigned char r, unsigned char g, unsigned char b) override;
  void _Color3ubv(const unsigned char* v) override;
  void _Color3f(float r, float g, float b) override;
  void _Color3fv(const float* v) override;
  void _Color3d(double r, double g, double b) override;
  void _Color3dv(const double* v) override;
  void _Color4ub(unsigned char r, unsigned char g, unsigned char b, unsigned char a) override;
  void _Color4ubv(const unsigned char* v) override;
  void _Color4f(float r, float g, float b, float a) override;
  void _Color4fv(const float* v) override;
  void _Color4d(double r, double g, double b, double a) override;
  void _Color4dv(const double* v) override;
  void Normal3f(float x, float y, float z) override;
  void Normal3fv(const float* v) override;
  void Normal3d(double x, double y, double z) override;
  void Normal3dv(const double* v) override;
  void TexCoord2f(float s, float t) override;
  void TexCoord2fv(const float* v) override;
  void TexCoord2d(double s, double t) override;
  void TexCoord2dv(const double* v) override;
  void TexCoord3f(float s, float t, float r) override;
  void TexCoord3fv(const float* v) override;
  void TexCoord3d(double s, double t, double r) override;
  void TexCoord3dv(const double* v) override;
  void TexCoord4f(float s, float t, float r, float q) override;
  void TexCoord4fv(const float* v) override;
  void TexCoord4d(double s, double t, double r, double q) override;
  void TexCoord4dv(const double* v) override;

  // --- Vertices

  void Vertex2i(int x, int y) override;
  void Vertex2iv(const int* v) override;
  void Vertex2f(float x, float y) override;
  void Vertex2fv(const float* v) override;
  void Vertex2d(double x, double y) override;
  void Vertex2dv(const double* v) override;
  void Vertex3i(int x, int y, int z) override;
  void Vertex3iv(const int* v) override;
  void Vertex3f(float x, float y, float z) override;
  void Vertex3fv(const float* v) override;
  void Vertex3d(double x, double y, double z) override;
  void Vertex3dv(const double* v) override;
  void Vertex4f(float x, float y, float z, float w) override;
  void Vertex4fv(const float* v) override;
  void Vertex4d(double x, double y, double z, double w) override;
  void Vertex4dv(const double* v) override;

  // --- Whole-surface operations

  void Viewport(int x, int y, int width, int height) override;
  void Scissor(int x, int y, int width, int height) override;

  // --- Matrices

  void MatrixMode(unsigned int mode) override;
  void PushMatrix() override;
  void PopMatrix() override;
  void LoadIdentity() override;
  void LoadMatrixf(const float* m) override;
  void LoadMatrixd(const double* m) override;
  void MultMatrixf(const float* m) override;
  void MultMatrixd(const double* m) override;
  void Ortho(double left, double right, double bottom, double top, double zNear,
             double zFar) override;
  void Frustum(double left, double right, double bottom, double top, double zNear,
               double zFar) override;
  void Translatef(float x, float y, float z) override;
  void Translated(double x, double y, double z) override;
  void Rotatef(float angle, float x, float y, float z) override;
  void Rotated(double angle, double x, double y, double z) override;
  void Scalef(float x, float y, float z) override;
  void Scaled(double x, double y, double z) override;

  // --- Vertex arrays

  void PushClientAttrib(unsigned int mask) override;
  void PopClientAttrib() override;
  void EnableClientState(unsigned int array) override;
  void DisableClientState(unsigned int array) override;
  void ColorPointer(int size, unsigned int type, int stride, const void* pointer) override;
  void NormalPointer(unsigned int type, int stride, const void* pointer) override;
  void TexCoordPointer(int size, unsigned int type, int stride, const void* pointer) override;
  void VertexPointer(int size, unsigned int type, int stride, const void* pointer) override;
  void DrawArrays(unsigned int mode, int first, int count) override;
  void DrawElements(unsigned int mode, int count, unsigned int type, const void* indices) override;

  // --- Pixels

  void RasterPos2i(int x, int y) override;
  void RasterPos2iv(const int* v) override;
  void RasterPos2f(float x, float y) override;
  void RasterPos2fv(const float* v) override;
  void RasterPos2d(double x, double y) override;
  void RasterPos2dv(const double* v) override;
  void RasterPos3i(int x, int y, int z) override;
  void RasterPos3f(float x, float y, float z) override;
  void RasterPos3fv(const float* v) override;
  void RasterPos3d(double x, double y, double z) override;
  void RasterPos3dv(const double* v) override;
  void RasterPos(const vec_t_<double, 2>& position) override;
  void WindowPos2i(int x, int y) override;
  void PixelZoom(float x, float y) override;
  void DrawPixels(int width, int height, unsigned int format, unsigned int type,
                  const void* pixels) override;
  void ReadPixels(int x, int y, int width, int height, unsigned int format, unsigned int type,
                  void* pixels) override;
  void PixelStorei(unsigned int pname, int v) override;

  // --- Textures

  void TexParameteri(unsigned int target, unsigned int pname, int v) override;
  void TexParameterf(unsigned int target, unsigned int pname, float v) override;
  void TexParameterfv(unsigned int target, unsigned int pname, const float* v) override;
  void GetTexParameteriv(unsigned int target, unsigned int pname, int* out) override;
  void GetTexParameterfv(unsigned int target, unsigned int pname, float* out) override;
  void GetTexLevelParameteriv(unsigned int target, int level, unsigned int pname,
                              int* out) override;
  void GetTexLevelParameterfv(unsigned int target, int level, unsigned int pname,
                              float* out) override;
  void TexImage2D(unsigned int target, int level, int internalformat, int width, int height,
                  int border, unsigned int format, unsigned int type, const void* pixels) override;
  void TexSubImage2D(unsigned int target, int level, int xoffset, int yoffset, int width,
                     int height, unsigned int format, unsigned int type,
                     const void* pixels) override;
  void CopyTexImage2D(unsigned int target, int level, unsigned int internalformat, int x, int y,
                      int width, int height, int border) override;
  void Bitmap(int width, int height, float xorig, float yorig, float xmove, float ymove,
              const unsigned char* bits) override;
  void Bitmap(const TZxGLBitmap& bitmap, float xmove, float ymove) override;

  // --- Display lists

  unsigned int GenLists(int range) override;
  void DeleteLists(unsigned int list, int range) override;
  bool IsList(unsigned int list) override;
  void NewList(unsigned int list, unsigned int mode) override;
  void EndList() override;
  void ListBase(unsigned int base) override;
  void CallList(unsigned int list) override;
  void CallLists(int n, unsigned int type, const void* lists) override;

  // --- Texture objects and buffers

  void GenTextures(int n, unsigned int* ids) override;
  void DeleteTextures(int n, const unsigned int* ids) override;
  bool IsTexture(unsigned int id) override;
  void BindTexture(unsigned int target, unsigned int id) override;
  void GenBuffers(int n, unsigned int* ids) override;
  void DeleteBuffers(int n, unsigned int* ids) override;
  void BindBuffer(unsigned int target, unsigned int id) override;
  void BindBufferBase(unsigned int target, unsigned int index, unsigned int id) override;
  void BufferData(unsigned int target, long size, const void* data, unsigned int usage) override;
  void BufferSubData(unsigned int target, long offset, long size, const void* data) override;
  void* MapBuffer(unsigned int target, unsigned int access) override;
  bool UnmapBuffer(unsigned int target) override;
  void GetBufferParameter(unsigned int target, unsigned int pname, int* out) override;

  // --- State and queries

  void ShadeModel(unsigned int mode) override;
  void Hint(unsigned int target, unsigned int mode) override;
  void GetBooleanv(unsigned int pname, unsigned char* out) override;
  void GetIntegerv(unsigned int pname, int* out) override;
  void GetFloatv(unsigned int pname, float* out) override;
  void GetDoublev(unsigned int pname, double* out) override;
  void DrawBuffer(unsigned int buffer) override;
  void ReadBuffer(unsigned int buffer) override;

  // --- Selection, framebuffers

  void SelectBuffer(int size, unsigned int* buffer) override;
  void InitNames() override;
  void LoadName(unsigned int name) override;
  void PushName(unsigned int name) override;
  void PopName() override;
  int RenderMode(unsigned int mode) override;
  void BindFramebuffer(unsigned int target, unsigned int id) override;

  // --- Finishing and errors

  void Flush() override;
  void Finish() override;
  unsigned int GetError() override;
  const char* GetString(unsigned int name) override;

  // --- Outlines

  void Polygon(const std::vector<vec_t_<double, 2>>& points, const vec_t_<double, 3>& color,
               double width, const vec_t_<double, 3>& fill, double fillWidth) override;
  void Domain(const std::vector<std::vector<vec_t_<double, 2>>>& contours,
              const vec_t_<double, 3>& color, double width, const vec_t_<double, 3>& fill,
              double fillWidth) override;

  // --- Being current

  bool SwapBuffers(TZxGLSurface* surface) override;
  bool DoMakeCurrent(TZxGLSurface* surface) override;
  void DoDoneCurrent() override;
  bool GetSize(vec_t_<int, 2>* size) const override;

  // --- Switches, fog and multitexture

  void EnableBlend(bool on) override;
  void Fog(unsigned int pname, int v) override;
  void Fog(unsigned int pname, float v) override;
  void Fog(unsigned int pname, const float* v) override;
  void EnableDepthTest(bool on) override;
  void MultiTexCoord2f(unsigned int unit, float s, float t) override;
  void MultiTexCoord2fv(unsigned int unit, const float* v) override;
  void MultiTexCoord2d(unsigned int unit, double s, double t) override;
  void MultiTexCoord2dv(unsigned int unit, const double* v) override;
  void MultiTexCoord3f(unsigned int unit, float s, float t, float r) override;
  void MultiTexCoord3fv(unsigned int unit, const float* v) override;
  void MultiTexCoord3d(unsigned int unit, double s, double t, double r) override;
  void MultiTexCoord3dv(unsigned int unit, const double* v) override;
  void LoadMatrix(const MAT4<float>& m) override;
  void LoadMatrix(const MAT4<double>& m) override;
  void MultMatrix(const MAT4<float>& m) override;
  void MultMatrix(const MAT4<double>& m) override;

  // --- Faces and lights

  void CullFace(unsigned int mode) override;
  void FrontFace(unsigned int mode) override;
  void EnableCullFace(bool on) override;
  void EnableLight(unsigned long index, bool on) override;
  void EnableLighting(bool on) override;
  void Lightf(unsigned int light, unsigned int pname, float v) override;
  void Lightfv(unsigned int light, unsigned int pname, const float* v) override;
  void GetLight(unsigned int light, unsigned int pname, float* out) override;

  // --- Surfaces

  TDataSurface* GetColorSurface() override;
  TDataSurface* GetDepthSurface() override;
  TDataSurface* GetStencilSurface() override;
  void ActiveTexture(unsigned int texture) override;
  bool MoveTexImage2D(unsigned int target, int level, TDataSurface* surface) override;
  void TexEnvi(unsigned int target, unsigned int pname, int v) override;
  void TexEnvf(unsigned int target, unsigned int pname, float v) override;
  void TexGeni(unsigned int coord, unsigned int pname, int v) override;
  void TexGenf(unsigned int coord, unsigned int pname, float v) override;
  void TexGend(unsigned int coord, unsigned int pname, double v) override;
  void TexFilter2D(unsigned int min, unsigned int mag) override;
  void TexWrap2D(unsigned int s, unsigned int t) override;
  void SetPerspectiveCorrectionHint(unsigned int hint) override;
  unsigned int GetPerspectiveCorrectionHint() override;
  bool DebugMessageCallback(TDebugCallback callback, void* user) override;

  // --- Programs, uniforms and attributes

  void SetProgram(TProgram* program) override;
  TProgram* GetProgram() override;
  void Uniform(int location, bool v) override;
  void Uniform(int location, int v) override;
  void Uniform(int location, unsigned int v) override;
  void Uniform(int location, float v) override;
  void Uniform(int location, double v) override;
  void Uniform(int location, int x, int y) override;
  void Uniform(int location, float x, float y) override;
  void Uniform(int location, double x, double y) override;
  void Uniform(int location, int x, int y, int z) override;
  void Uniform(int location, float x, float y, float z) override;
  void Uniform(int location, double x, double y, double z) override;
  void Uniform(int location, int x, int y, int z, int w) override;
  void Uniform(int location, float x, float y, float z, float w) override;
  void Uniform(int location, double x, double y, double z, double w) override;
  void Uniform2(int location, const float* v) override;
  void Uniform3(int location, const float* v) override;
  void Uniform4(int location, const float* v) override;
  void Uniform(int location, const vec_t_<float, 2>& v) override;
  void Uniform(int location, const vec_t_<double, 2>& v) override;
  void Uniform(int location, const vec_t_<float, 3>& v) override;
  void Uniform(int location, const vec_t_<double, 3>& v) override;
  void Uniform(int location, const vec_t_<float, 4>& v) override;
  void Uniform(int location, const vec_t_<double, 4>& v) override;
  void Uniform(int location, const MAT3<float>& m) override;
  void Uniform(int location, const MAT3<double>& m) override;
  void Uniform(int location, const MAT4<float>& m) override;
  void Uniform(int location, const MAT4<double>& m) override;
  void VertexAttrib(int index, float v) override;
  void VertexAttrib(int index, double v) override;
  void VertexAttrib(int index, const vec_t_<float, 2>& v) override;
  void VertexAttrib(int index, const vec_t_<double, 2>& v) override;
  void VertexAttrib(int index, const vec_t_<float, 3>& v) override;
  void VertexAttrib(int index, const vec_t_<double, 3>& v) override;
  void VertexAttrib(int index, const vec_t_<float, 4>& v) override;
  void VertexAttrib(int index, const vec_t_<double, 4>& v) override;
  void EnableVertexAttribArray(unsigned int index) override;
  void DisableVertexAttribArray(unsigned int index) override;
  void VertexAttribPointer(unsigned int index, int size, unsigned int type,
                           unsigned char normalized, int stride, const void* pointer) override;
  void GetVertexAttrib(unsigned int index, unsigned int pname, int* out) override;
  bool IsSupport_SGIS_generate_mipmap() const override;

  using TZxGL::Color;

  /// The current colour from a record of floats.
  void Color(const COLORRGBA_F& color) { TZxGL::Color4fv(&color.r); }

  // --- State without a slot of its own

  /// The comparison as it was last given, rejected values included.
  unsigned int GetDepthFunc() const { return m_DepthFunc; }

  /// `factor` is what is added to the depth of triangles while `GL_POLYGON_OFFSET_FILL` is on;
  /// neither the slope nor `units` plays a part.
  void PolygonOffset(float factor, float units);
  /// `GL_POLYGON_OFFSET_FILL`.
  void EnablePolygonOffsetFill(bool on);

  /// Whether light 0 to 7 is on; another index reports 0xFFFFFFFF.
  bool _IsEnableLight(int index);
  /// `Enable` and `Disable` in one.
  void _Enable(unsigned int cap, bool on);
  /// What `IsEnabled` returns and throws.
  bool _IsEnabled(unsigned int cap);
  /// `GL_TEXTURE_2D` of a unit, 0 to 7.
  void _EnableTexture2D(int unit, bool on);
  /// `EnableClientState` and `DisableClientState` in one.
  void _EnableClientState(unsigned int array, bool on);
  /// Chooses the blend routines for the present factors and switch.
  void _UpdateBlendFunc();
  /// Each of four bytes becomes (dst * (255 - a) + src * a) / 255, truncated, with a the alpha of
  /// `src`. The second leaves the bytes alone whose bit in `mask` is 0.
  static void _Blend_SrcA_1_SrcA_RGBAub(const void* src, void* dst);
  static void _BlendM_SrcA_1_SrcA_RGBAub(const void* src, void* dst, unsigned char mask);

  // --- Programs

  /// Null means the default program, of the two standard shaders.
  void _SetProgram(TProgramCPU* program);
  /// Installs a shader alone, whatever the program holds; null means the standard one. A reference
  /// is held, and the one on the old shader let go.
  void _SetVertexShader(TVertexShaderCPU* shader);
  void _SetFragmentShader(TFragmentShaderCPU* shader);

  // --- Textures

  /// Gives out `n` free names, lowest first; with `create` each gets an empty surface, without it
  /// the caller must fill the entries at once. Throws `std::bad_alloc`, having given out none.
  void _GenTextures(int n, bool create, unsigned int* ids);

  /// Hands a surface made by `new` to the texture table, which then owns it; returns its name, or
  /// 0. When `std::bad_alloc` is thrown it is still the caller's.
  unsigned int AttachTexture(TDataSurface* surface);

  /// Takes a surface out of the table: the caller then owns it. Samplers that have it bound go on
  /// reading it, as it is then, until the next bind: it must live until then, unless nothing that
  /// reads them is drawn. Null for an unknown name.
  TDataSurface* DetachTexture(unsigned int id);
  /// Lets go of the texture table; the last context to do so deletes its surfaces.
  void _ClearTextures();

  // --- Buffers and vertex arrays

  /// The fetch functions: unsigned bytes, normalised ones, floats, doubles; of each, 1 to 4
  /// components.
  static const std::array<TAttrGetVal, 16> s_AttrGetVals;

  /// Sets an array, with the buffer that is bound now. `GL_INVALID_VALUE`, changing nothing, for a
  /// size outside 1 to 4 or an unsupported type.
  void _VertexAttribPointer(TVertexAttribPointer* p, int size, unsigned int type,
                            unsigned char normalized, int stride, const void* pointer);
  /// Lists the enabled arrays in `out`, at most `max`; returns how many.
  unsigned long _PrepareAttrValues(TAttrValue* out, unsigned long max);
  /// As `BufferData` and its like, for the buffer `id`.
  void NamedBufferData(unsigned int id, int size, const void* data, unsigned int usage);
  void NamedBufferSubData(unsigned int id, long offset, int size, const void* data);
  void* MapNamedBuffer(unsigned int id, unsigned int access);
  bool UnmapNamedBuffer(unsigned int id);
  /// Gives out the lowest free names of vertex array objects. Throws `std::bad_alloc`, having given
  /// out none, as `GenBuffers` and `GenTextures` do.
  void GenVertexArrays(int n, unsigned int* ids);
  /// Makes `id` the current vertex array object; 0 is the default one.
  void BindVertexArray(unsigned int id);
  /// Frees vertex array objects; the current one gives way to the default.
  void DeleteVertexArrays(int n, unsigned int* ids);
  /// Frees all vertex array objects.
  void _ClearVertexArrays();
  /// Frees all buffers.
  void _ClearBuffers();

  // --- The road of a primitive

  /// \name One routine for each mode, called when a vertex is submitted.
  /// \{
  void UnknownVertex();
  void PointsVertex();
  void LinesVertex();
  void LineLoopVertex();
  void LineStripVertex();
  void TrianglesVertex();
  void TriangleStripVertex();
  void TriangleFunVertex();
  void QuadsVertex();
  /// \}

  /// Copies the live slots, as one block and slot by slot.
  void CopyVar(VAR_DATA& to, const VAR_DATA& from);
  void Set(VAR_DATA& to, const VAR_DATA& from);

  /// \name Clipping in clip space, in place: one, two or three records, from `plane` (0 to 5) on.
  /// \{
  void ClipAndRasterizePoint(VAR_DATA* v);
  void ClipAndRasterizeLine(VAR_DATA* v, int plane);
  void ClipAndRasterizeTriangle(VAR_DATA* v, int plane);
  /// \}

  /// a = (b - a) * t + a in every live slot.
  void Mix(VAR_DATA& a, const VAR_DATA& b, double t);

  /// \name Rasterisation of clipped records, which are changed in place.
  /// \{
  void RasterizeTriangle(VAR_DATA* v);
  void RasterizeLine(VAR_DATA* v);
  void RasterizePixel(int x, int y, const EDGE* e, double t);
  /// \}

  /// Sets both ends, ordered by y (an edge) or x (a span), and their difference.
  void SetEdge(EDGE* e, VAR_DATA* a, VAR_DATA* b);
  void SetSpan(EDGE* e, VAR_DATA* a, VAR_DATA* b);

  /// out = Delta * t + Begin in every live slot.
  void Value(const EDGE& e, double t, VAR_DATA* out);

  /// The rows that two edges have in common, `a` being the long one.
  void DrawSpansBetweenEdges(EDGE* a, EDGE* b, FS_DATA* fs);

  /// One row.
  void DrawSpan(EDGE* span, int y, FS_DATA* fs);

  // --- Pixel transfer

  /// `DrawPixels` and `ReadPixels` after their checks: four bytes a pixel on both sides.
  void _DrawPixels_RGBAub_RGBAub(int width, int height, const void* pixels);
  void _ReadPixels_RGBAub_RGBAub(int x, int y, int width, int height, void* pixels);

  // --- State
  //
  // "Stored only" is what can be read back and changes no pixel.

  /// \name Switches and what the stages of a fragment read
  /// \{
  bool m_Created = false;                 ///< between `Create` and `Destroy`
  bool m_ReservedFlag = false;            ///< kept by the attribute stack, read by nothing else
  bool m_DepthMask = true;                ///< `DepthMask`
  bool m_BlendEnabled = false;            ///< `GL_BLEND`
  std::uint32_t m_BlendSrc;               ///< `BlendFunc`, the source factor
  std::uint32_t m_BlendDst;               ///< `BlendFunc`, the destination factor
  TBlendFunction m_BlendFunc = nullptr;   ///< null: no blending
  TBlendMFunction m_BlendFuncM = nullptr; ///< for a partial colour mask; null: no blending
  float m_PointSize = 1.0f;               ///< stored only
  float m_LineWidth = 1.0f;               ///< stored only
  bool m_Normalize = false;               ///< `GL_NORMALIZE`
  bool m_CullFaceEnabled = false;         ///< `GL_CULL_FACE`
  std::uint32_t m_CullFaceMode;           ///< `CullFace`
  bool m_FrontFaceCCW = true;             ///< `FrontFace(GL_CCW)`
  bool m_DepthTest = false;               ///< `GL_DEPTH_TEST`
  std::int32_t m_EnabledLightCount = 0;   ///< lights that are on
  bool m_Lighting = false;                ///< `GL_LIGHTING`
  bool m_FogEnabled = false;              ///< `GL_FOG`, stored only
  bool m_PolygonOffsetFill = false;       ///< `GL_POLYGON_OFFSET_FILL`
  float m_PolygonOffsetFactor = 0.0f;     ///< added to depths
  float m_PolygonOffsetUnits = 1.0f;      ///< stored only
  std::uint32_t m_PolygonModeFront;       ///< stored only
  std::uint32_t m_PolygonModeBack;        ///< stored only
  bool m_CalcDepth = false;               ///< the fragment shader's `IsCalcDepth`
  std::uint32_t m_PerspectiveHint;        ///< `GL_FASTEST` interpolates without perspective
  bool m_StencilTest = false;             ///< `GL_STENCIL_TEST`
  std::uint32_t m_StencilFunc;            ///< `StencilFunc`, the comparison
  std::int32_t m_StencilRef = 0;          ///< its reference; the low byte counts
  std::uint32_t m_StencilValueMask = 0xFFFFFFFF; ///< its mask; the low byte counts
  std::uint32_t m_StencilFail;                   ///< `StencilOp`, when the stencil test fails
  std::uint32_t m_StencilZFail;                  ///< when the depth test fails
  std::uint32_t m_StencilZPass;                  ///< when both pass
  std::uint32_t m_StencilWriteMask = 0xFFFFFFFF; ///< `StencilMask`; the low byte counts
  TStencilCompare m_StencilCompare;              ///< the comparison in force
  TStencilFunction m_StencilFailOp;              ///< the operation in force
  TStencilFunction m_StencilZFailOp;             ///< likewise
  TStencilFunction m_StencilZPassOp;             ///< likewise
  std::uint8_t m_ColorMask = 15;                 ///< bit 0 red to bit 3 alpha
  bool m_InBeginEnd = false;                     ///< between `Begin` and `End`
  std::uint32_t m_MatrixMode;                    ///< `MatrixMode`, unchecked
  /// \}

  /// \name Surfaces and what clears them
  /// \{
  int m_Width = 0;                              ///< of the surfaces, and of the viewport
  int m_Height = 0;                             ///< likewise
  unsigned char m_ClearColor[4] = {0, 0, 0, 0}; ///< red, green, blue, alpha
  float m_ClearDepth = 1.0f;                    ///< unclamped
  unsigned char m_ClearStencil = 0;             ///< what `Clear` writes
  TZxGLSurface* m_CurrentSurface = nullptr;     ///< not owned
  TFrameBuffer* m_FrameBuffer = nullptr;        ///< owned
  TDataSurface* m_ColorSurface = nullptr;       ///< the frame buffer's, or a bound one
  TDataSurface* m_DepthSurface = nullptr;       ///< the frame buffer's
  TDataSurface* m_StencilSurface = nullptr;     ///< the frame buffer's
  /// \}

  /// \name Mode of the primitive, and shading
  /// \{
  std::uint32_t m_PrimitiveMode = 0xFFFFFFFF; ///< all ones outside `Begin` and `End`
  std::uint32_t m_ShadeModel;                 ///< always `GL_SMOOTH`
  /// \}

  /// \name Uniforms and current values
  /// \{
  vec_t_<double, 4> m_Uniforms[32] = {}; ///< cells of 32 bytes; integers stand raw at the start

  vec_t_<double, 4> m_CurAttrib[8] = {};          ///< the generic attributes
  vec_t_<double, 4> m_CurVertex = {0, 0, 0, 0};   ///< the vertex last given
  vec_t_<double, 4> m_CurNormal = {0, 0, 0, 0};   ///< x, y, z; w is 0
  vec_t_<double, 4> m_CurColor = {1, 1, 1, 1};    ///< unclamped
  vec_t_<double, 4> m_CurTexCoord = {0, 0, 0, 0}; ///< s, t, r, q
  /// \}

  /// \name The classic arrays
  /// \{
  TVertexAttribPointer m_VertexPointer = {};   ///< the classic array of positions
  TVertexAttribPointer m_NormalPointer = {};   ///< that of normals
  TVertexAttribPointer m_ColorPointer = {};    ///< that of colours
  TVertexAttribPointer m_TexCoordPointer = {}; ///< that of texture coordinates
  /// \}

  /// \name The current primitive: scratch of the pipeline
  /// \{
  VAR_DATA m_VarEdgeA = {};    ///< the values on the major edge at the current row
  VAR_DATA m_VarEdgeB = {};    ///< the same on the minor edge
  VAR_DATA m_VarFragment = {}; ///< the values at the fragment
  EDGE m_Edges[3] = {};        ///< of the current triangle
  EDGE m_Span = {};            ///< the current row or line
  VAR_DATA m_VarSaved[4] = {}; ///< copies that survive clipping
  VAR_DATA m_VarCur[4] = {};   ///< the primitive being assembled
  int m_StripIndex = -1;       ///< ring position of a triangle strip
  int m_VertexIndex = -1;      ///< number of the last vertex since `Begin`
  int m_Pending = 0;           ///< how many records of `m_VarCur` are filled
  /// \}

  /// \name The slot table: filled by the vertex shader's `Begin`. -1 is no slot.
  /// \{
  int m_VarPosition = 0;       ///< always slot 0
  int m_VarColor = 0;          ///< primary colour of the front
  int m_VarSecondary = -1;     ///< secondary colour of the front
  int m_VarBackColor = -1;     ///< primary colour of the back; -1: that of the front
  int m_VarBackSecondary = -1; ///< secondary colour of the back; -1: that of the front
  int m_VarTexCoord = -1;      ///< texture coordinate
  int m_VarCount = 0;          ///< live slots, 1 to 8 while vertices are submitted
  /// \}

  /// \name The current fragment
  /// \{
  FS_DATA m_Fragment; ///< the one record of all fragments
  /// \}

  /// \name Matrices
  /// \{
  MAT4<double> m_ModelView;           ///< the model-view matrix
  MAT4<double> m_Projection;          ///< the projection
  MAT4<double> m_ModelViewProjection; ///< their product, kept up to date
  /// \}

  /// \name Fog, materials and lights
  /// \{
  TFog m_Fog;                            ///< stored only
  std::uint32_t m_ColorMaterialFace;     ///< `ColorMaterial`, unchecked
  std::uint32_t m_ColorMaterialMode;     ///< likewise
  bool m_ColorMaterial = false;          ///< `GL_COLOR_MATERIAL`
  TMaterial m_MaterialFront;             ///< of faces towards the viewer
  TMaterial m_MaterialBack;              ///< of faces away from it, in two-sided lighting
  bool m_LightModelLocalViewer = false;  ///< `GL_LIGHT_MODEL_LOCAL_VIEWER`
  bool m_LightModelTwoSide = false;      ///< `GL_LIGHT_MODEL_TWO_SIDE`
  bool m_LightModelColorControl = false; ///< stored only
  vec_t_<double, 4> m_LightModelAmbient = {0.2, 0.2, 0.2, 1.0}; ///< light without a source
  TLight m_Lights[8];                                           ///< `GL_LIGHT0` to `GL_LIGHT7`
  int m_EnabledLights[8] = {};                                  ///< rebuilt by `Begin`, ascending
  /// \}

  /// \name Texture units
  /// \{
  std::int32_t m_ActiveTexture = 0; ///< the unit that calls act on
  TTexUnit m_TexUnits[8];           ///< `GL_TEXTURE0` to `GL_TEXTURE7`
  /// \}

  /// \name Array objects, buffers and stacks
  /// \{
  TVertexArray* m_DefaultVertexArray = nullptr; ///< owned
  TVertexArray* m_VertexArray = nullptr;        ///< the current one
  std::uint32_t m_VertexArrayBinding = 0;       ///< its name; 0 for the default one
  std::uint32_t m_BufferBindings[6] = {}; ///< array, element array, pack, unpack, atomic, storage
  std::vector<MAT4<double>> m_ModelViewStack;    ///< saved by `PushMatrix`
  std::vector<MAT4<double>> m_ProjectionStack;   ///< likewise
  std::vector<TAttribItem> m_AttribStack;        ///< saved by `PushAttrib`
  std::vector<TVertexArray> m_ClientAttribStack; ///< saved by `PushClientAttrib`
  std::vector<TVertexArray*> m_VertexArrays;     ///< name n is entry n - 1
  std::vector<TBuffer*> m_Buffers;               ///< name n is entry n - 1
  /// \}

  /// \name Shaders and programs, one reference held on each
  /// \{
  TVertexShaderCPU* m_StdVertexShader = nullptr;     ///< made by `Create`
  TFragmentShaderCPU* m_StdFragmentShader = nullptr; ///< made by `Create`
  TVertexShaderCPU* m_VertexShader = nullptr;        ///< what vertices run
  TFragmentShaderCPU* m_FragmentShader = nullptr;    ///< what fragments run
  TProgramCPU* m_Program = nullptr;                  ///< the installed program
  TProgramCPU* m_DefaultProgram = nullptr;           ///< of the two standard shaders
  /// \}

  /// \name Draw buffer, depth comparison and pixel transfer
  /// \{
  DATASURFACE* m_DrawBuffer = nullptr; ///< not owned
  TPixelWrite m_PixelWrite = nullptr;  ///< the draw buffer's writer; null: no draw buffer
  TDepthCompare m_DepthCompare;        ///< the comparison in force
  std::uint32_t m_DepthFunc;           ///< as it was last given
  TPixelStore m_PixelPack;             ///< of `ReadPixels`
  TPixelStore m_PixelUnpack;           ///< of `DrawPixels`
  /// \}

  /// \name Errors, positions and what a vertex calls
  /// \{
  std::uint32_t m_Error = 0;                    ///< what `GetError` will return
  vec_t_<double, 4> m_RasterPos = {0, 0, 0, 0}; ///< stored only
  vec_t_<int, 2> m_WindowPos = {0, 0};          ///< lower left corner of `DrawPixels`, in pixels
  int m_LastPixelX = -1;                        ///< the pixel that a line drew last
  int m_LastPixelY = -1;                        ///< -1 at the start of each `Begin`
  TTextureTable* m_Textures = nullptr;          ///< null until it is needed; shared by count
  TVertexHandler m_VertexHandler = &TRenderCPU::UnknownVertex; ///< what a vertex calls
  TDebugCallback m_DebugCallback = nullptr;                    ///< told of each error
  void* m_DebugUserParam = nullptr;                            ///< handed to it; not owned
  bool m_DebugOutput = false;                                  ///< `GL_DEBUG_OUTPUT`
  /// \}

private:
  TRenderEngine* m_Engine; ///< owned: what drawing needs and no host sees
};

} // namespace Zx3D
