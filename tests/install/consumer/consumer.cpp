// A host in C++17 that uses every family of the installed library once, and derives from what is
// made to be derived from. Ends with the number of the first line that did not hold, cut to 1.

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxBaseKit/TZxXIniReader.h>
#include <ZxBaseKit/TZxXIniWriter.h>
#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

namespace {

int s_failures = 0;

void Check(bool holds, const char* what, int line) {
  if (!holds) {
    std::fprintf(stderr, "line %d: %s does not hold\n", line, what);
    ++s_failures;
  }
}

#define CHECK(condition) Check((condition), #condition, __LINE__)

// --- Derived from the installed headers alone

class TFlatVertexShader : public Zx3D::TVertexShaderCPU {
public:
  unsigned int GetUniformLocation(const char*) const override { return 0xFFFFFFFF; }
  unsigned int GetAttribLocation(const char*) const override { return 0xFFFFFFFF; }
  void Begin() override { m_Render->m_VarCount = 1; }
  void End() override {}
  void Execute(Zx3D::TRenderCPU::VAR_DATA* v) override {
    (*v)[0] = m_Render->m_CurVertex;
    (*v)[0].w = 1;
  }
};

class TUniformColor : public Zx3D::TFragmentShaderCPU {
public:
  unsigned int GetUniformLocation(const char* name) const override {
    return std::string(name) == "color" ? 5 : 0xFFFFFFFF;
  }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(Zx3D::TRenderCPU::VAR_DATA*, Zx3D::TRenderCPU::FS_DATA* f) override {
    f->Color = m_Render->m_Uniforms[5];
    return true;
  }
};

class TParabola : public TFunc1 {
public:
  bool Value(double x, double* y) override {
    *y = x * x - 9;
    return true;
  }
};

class TShift : public TZx3DTransform {
public:
  vec_t_<double, 3> TransformPoint(const vec_t_<double, 3>& p) const override {
    return {p.x + 10, p.y, p.z};
  }
};

class TThing : public zx::TRef {};

class TThingCreator : public Zx3D::TCreator {
public:
  TThingCreator() : TCreator("TThing", &Zx3D::TSelfCreatingRef::s_Creator) {}
  zx::TRef* CreateInstance() const override { return new TThing; }
};

class TZeros : public Zx3D::TStream {
public:
  bool IsEOS() override { return false; }
  bool SetEOS() override { return false; }
  long GetPos() const override { return m_Pos; }
  bool SetPos(long position) override {
    m_Pos = position;
    return true;
  }
  long GetSize() const override { return 1L << 40; }
  bool SetSize(long) override { return false; }
  unsigned long _Read(void* data, unsigned long size) override {
    if (size == 0) {
      return 0;
    }
    *static_cast<char*>(data) = 0; // one at a time: ReadAll goes on until it has them all
    ++m_Pos;
    return 1;
  }
  unsigned long _Write(const void*, unsigned long) override { return 0; }
  bool Skip(unsigned long size) override {
    m_Pos += static_cast<long>(size);
    return true;
  }

private:
  long m_Pos = 0;
};

// --- The families

void Render() {
  Zx3D::TRenderCPU gl;
  CHECK(gl.Create(8, 8, nullptr));
  gl.ClearColor(0.0f, 0.0f, 0.0f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.Begin(GL_QUADS);
  gl.Color3f(1, 0, 0);
  gl.Vertex2d(-1, -1), gl.Vertex2d(1, -1), gl.Vertex2d(1, 1), gl.Vertex2d(-1, 1);
  gl.End();
  const TDataSurface* surface = gl.GetColorSurface();
  const unsigned char* pixel = surface->Data + 4 * surface->RowStride + 4 * surface->PixelStride;
  CHECK(pixel[0] == 255 && pixel[1] == 0 && pixel[2] == 0);

  Zx3D::TProgramCPU program;
  TFlatVertexShader* vertex = new TFlatVertexShader;
  TUniformColor* fragment = new TUniformColor;
  program.SetShaderV(vertex);
  program.SetShaderF(fragment);
  vertex->Release();
  fragment->Release();
  gl.SetProgram(&program);
  gl.Uniform(static_cast<int>(program.GetUniformLocation("color")), 0.0f, 1.0f, 0.0f, 1.0f);
  gl.Begin(GL_TRIANGLES);
  gl.Vertex2d(-1, -1), gl.Vertex2d(3, -1), gl.Vertex2d(-1, 3);
  gl.End();
  gl.SetProgram(nullptr);
  CHECK(pixel[0] == 0 && pixel[1] == 255);

  gl.LineStipple(1, 1);
  CHECK(gl.GetError() == GL_INVALID_OPERATION && gl.GetError() == GL_NO_ERROR);
  bool thrown = false;
  try {
    gl.ShadeModel(GL_FLAT);
  } catch (const TZxMessage& message) {
    thrown = std::string(message.what()).find("Under construction!") != std::string::npos;
  }
  CHECK(thrown);

  Zx3D::TRenderCPU::TTexSampler sampler;
  CHECK(sampler.SetSurface(gl.GetColorSurface()));
  vec_t_<double, 4> texel = {};
  sampler.GetValue(vec_t_<double, 2>{0.5, 0.5}, &texel);
  CHECK(texel.y == 255 * 0.00392156862745098);
  CHECK(Zx3D::TRenderCPU::TTexSampler::s_GetValueFuncs.size() == 384);
  CHECK(Zx3D::TRenderCPU::s_AttrGetVals.size() == 16);
  CHECK(g_M4Ed[0] == 1 && g_M4Ef[15] == 1);
  CHECK(SaveImage("consumer.png", nullptr, *surface));
}

void Objects() {
  Zx3D::TVariant value;
  value.Set(-5);
  CHECK(value.Get<long>() == -5 && value.ToString() == "int32(-5)");
  CHECK(Zx3D::TVariant::s_BaseTypeSize[11] == 8);

  Zx3D::TAttributable object;
  object.SetAttribute(std::string("name"), std::string("a text that is longer than the record"));
  CHECK(object.FindAttribute("name")->GetStringLength() == 37);
  Zx3D::TZxNamed named;
  CHECK(named.SetName("front") && named.IsName("front"));

  Zx3D::TMemoryStream stream;
  Zx3D::TObjectWriter writer(&stream, false);
  Zx3D::STORE_BLOCK block;
  CHECK(writer.WriteBlockBegin(&block) && SaveAttribute(&writer, "five", ~0ul, value) &&
        writer.WriteBlockEnd(&block));
  CHECK(stream.SetPos(8));
  Zx3D::TObjectReader reader(&stream, false);
  std::string name;
  Zx3D::TVariant back;
  CHECK(LoadAttribute(&reader, name, back) && name == "five" && back.Get<int>() == -5);
  reader.SetQueryFunc([](void*, Zx3D::QUERYHDR* query) { return query->Id + query->Kind; },
                      nullptr);
  CHECK(reader.FindMaterialByID(100) == 135);
  CHECK(Zx3D::TMemoryStream::s_EOL[1] == '\n');

  CHECK(stream.SaveToFile("consumer.bin"));
  Zx3D::TFileStream file;
  CHECK(file.Open("consumer.bin") && file.GetSize() == stream.GetSize() && file.Close());
  TZeros zeros;
  char bytes[100] = {1};
  CHECK(zeros.ReadAll(bytes, sizeof bytes) && bytes[0] == 0 && zeros.GetPosE() == 100);
  Zx3D::TStdStream adapter(&stream);
  CHECK(static_cast<TZxStream&>(adapter).getSize() == static_cast<unsigned long>(stream.GetSize()));

  static TThingCreator creator;
  CHECK(Zx3D::RegisterCreator(&creator) && Zx3D::GetCreatorByClassName("TThing") == &creator);
  zx::TRef* thing = Zx3D::CreateByClassName("TThing");
  CHECK(dynamic_cast<TThing*>(thing) != nullptr);
  CHECK(thing != nullptr && thing->Release() == 0);
  CHECK(creator.DescendOf(&Zx3D::TSelfCreatingRef::s_Creator) && Zx3D::UnregisterCreator(&creator));
  Zx3D::TZxClassFactory factory;
  CHECK(factory.AddCreator(&creator) && !factory.AddCreator(&creator));

  Zx3D::TImageSurface* image = nullptr;
  CHECK(Zx3D::LoadImage(std::string("consumer.png"), nullptr, &image));
  CHECK(image != nullptr && image->m_Surface.Width == 8);
  if (image != nullptr) {
    image->Release();
  }
}

void Numerics() {
  TMatrixD m(2, 2), inverted(2, 2);
  m.Data[0] = 2, m.Data[1] = 1, m.Data[2] = 0, m.Data[3] = 4;
  CHECK(inverse(m, inverted) && inverted.Data[0] == 0.5 && inverted.Data[3] == 0.25);
  double a[4] = {2, 0, 0, 4}, b[2] = {2, 8}, x[2] = {};
  CHECK(LineSysGauss1(a, 2, b, x) && x[0] == 1 && x[1] == 2);
  TMatrixStr text(1, 1), product(1, 1);
  fill(text, "a");
  mul(text, text, &product);
  CHECK(!product(0, 0).empty());
  TVectorD v(3);
  v.Fill(2);
  CHECK(NormSqr(v) == 12 && !ToString(v).empty());

  const double heights[3] = {0, 1, 2};
  POLYNOM3 cubic[2];
  CHECK(CalcCubeSpline1D(heights, 8, 3, false, cubic) && cubic[0].a == 0);
  const vec_t_<double, 2> from[4] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  const vec_t_<double, 2> to[4] = {{2, 3}, {4, 3}, {4, 5}, {2, 5}};
  MAT3<double> map;
  CHECK(GetProjectiveTransform(from, to, 4, &map) && std::fabs(map[6] - 2) < 1e-9);
  CHECK(!IsSelfIntersected(from, 4));

  const vec_t_<double, 3> flat[3] = {{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}};
  const vec_t_<double, 3> upright[3] = {{0, 0, -1}, {0.25, 0, 1}, {-0.25, 0.25, 1}};
  vec_t_<double, 3> common[6];
  CHECK(IsIntersectTriangles(flat, upright, 1e-9));
  CHECK(GetIntersectTriangles(flat, upright, common, 1e-9) == 2);

  VBOX<double> box({0, 0, 0}, {1, 1, 1}), moved;
  Transform(box, TShift(), &moved);
  CHECK(moved.Min.x == 10 && moved.Max.x == 11);
  TParabola parabola;
  TNewtonSolver newton;
  double root = 0;
  CHECK(newton.Solve(&parabola, 5, 1e-9, 50, &root) && std::fabs(root - 3) < 1e-6);
  CHECK(FloorPow2(100) == 64 && CeilPow2(100) == 128);
  std::vector<vec_t_<int, 3>> cells;
  DrawLine3d({0, 0, 0}, {3, 0, 0}, cells);
  CHECK(!cells.empty());

  TZxXIniWriter writer;
  XIniSaveE(&writer, moved);
  TZxXIniReader reader(writer.GetText());
  VBOX<double> read;
  XIniLoadE(&reader, read);
  CHECK(read.Min.x == 10 && read.Max.z == 1);
}

void Utilities() {
  int number = 0;
  double real = 0;
  CHECK(StringToInt("-12", &number) && number == -12);
  CHECK(StringToFloat("2.5", &real) && real == 2.5);
  char buffer[64];
  CHECK(ExtractFileExt("a/b.png", ~0ul, buffer, sizeof buffer) > 0);
  char word[16];
  const char* next = nullptr;
  CHECK(StringGetWordEx("one two", word, &next) > 0 && std::string(word) == "one");
  TTimeReporter report;
  report.AddTime("drawing", 0.5);
  CHECK(!report.GetReport().empty());
  TPerformCounter counter;
  CHECK(counter.Elapsed() >= 0);
  TEvent event(true);
  CHECK(event.Wait(0) && !event.Wait(0));
}

} // namespace

int main() {
  Init_ZxCore3D();
  CHECK(!(IID_IProperties == IID_ICommands));
  Render();
  Objects();
  Numerics();
  Utilities();
  Deinit_ZxCore3D();
  return s_failures == 0 ? 0 : 1;
}
