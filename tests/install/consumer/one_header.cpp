// What a program needs to use the library comes with one header: messages, image files, surfaces,
// the text format, counted objects.

#include <ZxCore3D/ZxCore3D.h>

namespace {

unsigned s_Traces = 0;

bool Draw() {
  Zx3D::TRenderCPU gl;
  if (!gl.Create(16, 16, nullptr)) {
    return false;
  }
  gl.ClearColor(1.0f, 0.0f, 0.0f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT);
  DATASURFACE loaded = {};
  if (!SaveImage("one_header.png", nullptr, *gl.GetColorSurface()) ||
      !LoadImage(std::string("one_header.png"), nullptr, &loaded)) {
    return false;
  }
  const bool red = loaded.Width == 16 && loaded.Data[0] == 255 && loaded.Data[1] == 0;
  FreeDataSurfaceData(loaded);
  return red && ds::Fill(*gl.GetColorSurface(), "\1\2\3\4", 4);
}

bool Catch() {
  ZxSetTraceSink([](const TZxMessage&, void*) { ++s_Traces; }, nullptr);
  bool caught = false;
  try {
    Zx3D::TAttributes().FindValueE("gone");
  } catch (const TZxMessage& message) {
    caught = std::string(message.what()) == "Value \"gone\" not found";
  }
  ZxSetTraceSink(nullptr, nullptr);
  return caught && s_Traces == 1;
}

bool Text() {
  TZxXIniWriter writer;
  XIniSaveE(&writer, VBOX<double>({1, 2, 3}, {4, 5, 6}));
  TZxXIniReader reader(writer.GetText());
  VBOX<double> box;
  XIniLoadE(&reader, box);
  return box.Max.y == 5 && Zentrix::ssprintf("%d", 5) == "5";
}

class TThing : public zx::TRef {};

bool Hold() {
  TThing* const thing = new TThing;
  { const Zx3D::TVariant variant(thing); }
  return thing->Release() == 0;
}

} // namespace

int main() {
  Init_ZxCore3D();
  const bool all = Draw() && Catch() && Text() && Hold();
  Deinit_ZxCore3D();
  return all ? 0 : 1;
}
