#include "Context.h"

#include <algorithm>

#include "Pins.h"
#include "Shaders.h"

namespace zxpy {

namespace {

// All contexts there are. Under the interpreter's lock.
std::vector<TContext*>& Contexts() {
  static auto* const contexts = new std::vector<TContext*>;
  return *contexts;
}

} // namespace

TContext::TContext() { Contexts().push_back(this); }

TContext::~TContext() {
  Destroy();
  std::vector<TContext*>& all = Contexts();
  all.erase(std::find(all.begin(), all.end(), this));
}

void TContext::CheckThread(const char* operation) const {
  if (m_Thread != std::this_thread::get_id()) {
    throw std::runtime_error(std::string(operation) +
                             ": the context is drawing on another thread; a context belongs to one "
                             "thread at a time");
  }
}

void TContext::CheckIdle(const char* operation) const {
  if (m_Busy) {
    CheckThread(operation);
    throw std::runtime_error(
        std::string(operation) +
        ": the context is drawing; a shader or callback may only read from it");
  }
}

void TContext::CheckTextures(const char* operation) const {
  for (const TContext* other : Contexts()) {
    if (other != this && other->m_Busy && GL.m_Textures != nullptr &&
        other->GL.m_Textures == GL.m_Textures) {
      throw std::runtime_error(std::string(operation) +
                               ": another context is drawing with these textures");
    }
  }
}

bool TContext::IsInUse(const DATASURFACE* surface) {
  return std::any_of(Contexts().begin(), Contexts().end(), [surface](const TContext* context) {
    const TRenderCPU& gl = context->GL;
    return gl.m_ColorSurface == surface || gl.m_DepthSurface == surface ||
           gl.m_StencilSurface == surface || gl.m_DrawBuffer == surface ||
           (gl.m_FrameBuffer != nullptr && gl.m_FrameBuffer->Color == surface) ||
           std::any_of(gl.m_TexUnits, gl.m_TexUnits + 8,
                       [surface](const auto& unit) { return unit.Sampler.m_Surface == surface; });
  });
}

void TContext::Redirect(const TDataSurface* old, TDataSurface* fresh) {
  for (TContext* context : Contexts()) {
    if (context->GL.m_ColorSurface == old) {
      context->GL.m_ColorSurface = fresh;
    }
    if (context->GL.m_DrawBuffer == old) {
      context->GL.m_DrawBuffer = fresh;
    }
  }
}

py::object ContextObject(const TRenderCPU* render) {
  for (TContext* context : Contexts()) {
    if (&context->GL == render) {
      return py::cast(context, py::return_value_policy::reference);
    }
  }
  return py::none();
}

// --- Life

bool TContext::Create(int width, int height, TContext* share) {
  CheckIdle("Create");
  if (share != nullptr) {
    share->CheckIdle("Create");
  }
  const bool made = Watch(
      "Create", [&] { return GL.Create(width, height, share != nullptr ? &share->GL : nullptr); });
  // A created context begins with the standard pair, whatever was installed before.
  if (Program.ptr() != nullptr && Program.cast<Zx3D::TProgramCPU*>() != GL.m_Program) {
    Program = ShaderV = ShaderF = py::object();
  }
  if (GL.m_DefaultVertexArray == nullptr && !GL.m_Created) {
    Arrays.clear(); // it failed for want of memory, and took everything down
  }
  return made;
}

// The surfaces are about to go: what looks at them keeps their pixels.
void TContext::DropSurfaces() {
  if (GL.m_FrameBuffer == nullptr) {
    return;
  }
  TRenderCPU::TFrameBuffer& buffer = *GL.m_FrameBuffer;
  for (TDataSurface* surface : {buffer.Color, buffer.Depth, buffer.Stencil}) {
    const auto found = m_Surfaces.find(surface);
    if (found != m_Surfaces.end()) {
      if (const std::shared_ptr<TSurface> object = found->second.lock()) {
        object->TakeOver();
      }
      m_Surfaces.erase(found);
    }
    if (surface != nullptr) {
      SaveBlock(surface, false);
    }
  }
}

bool TContext::SetSize(int width, int height) {
  CheckIdle("SetSize");
  if (!GL.m_Created || width < 1 || height < 1) {
    return false;
  }
  TRenderCPU::TFrameBuffer probe;
  if (!probe.Create(width, height)) {
    Destroy(); // as a failing resize does, but with all that arrays look at kept
    return false;
  }
  probe.Destroy();
  DropSurfaces();
  const bool made = GL.SetSize(width, height);
  ColorSurface = py::object();
  if (!made) {
    Arrays.clear();
  }
  return made;
}

void TContext::Destroy() {
  CheckIdle("Destroy");
  DropSurfaces();
  for (unsigned int id = 1; id <= GL.m_Buffers.size(); ++id) {
    SaveBuffer(id, false);
  }
  // Textures that only this context uses go with it.
  if (GL.m_Textures != nullptr && GL.m_Textures->RefCount.load() == 1) {
    for (TDataSurface* surface : GL.m_Textures->Surfaces) {
      if (surface != nullptr) {
        SaveBlock(surface, false);
      }
    }
  }
  const auto isGone = [this](const auto& entry) {
    return entry.first != &GL.m_VertexPointer && entry.first != &GL.m_NormalPointer &&
           entry.first != &GL.m_ColorPointer && entry.first != &GL.m_TexCoordPointer;
  };
  for (auto it = Arrays.begin(); it != Arrays.end();) {
    it = isGone(*it) ? Arrays.erase(it) : std::next(it);
  }
  GL.Destroy();
  Program = ShaderV = ShaderF = py::object();
  if (GL.m_ColorSurface == nullptr) { // a context without surfaces of its own keeps what is bound
    ColorSurface = py::object();
  }
}

void TContext::SaveBuffer(unsigned int id, bool copy) {
  if (id == 0 || id > GL.m_Buffers.size() || GL.m_Buffers[id - 1] == nullptr) {
    return;
  }
  std::vector<unsigned char>& bytes = GL.m_Buffers[id - 1]->Data;
  SaveBlock(&bytes);
  std::shared_ptr<std::vector<unsigned char>> kept;
  const auto keep = [&](TArraySource& source) {
    if (source.Buffer != id || source.Owner != nullptr) {
      return;
    }
    if (kept == nullptr) {
      std::vector<unsigned char> left = copy ? bytes : std::vector<unsigned char>();
      kept = std::make_shared<std::vector<unsigned char>>(std::move(bytes));
      bytes = std::move(left);
    }
    source.Owner = kept;
  };
  for (auto& entry : Arrays) {
    keep(entry.second);
  }
  for (auto& sources : ArrayStack) {
    for (TArraySource& source : sources) {
      keep(source);
    }
  }
}

// --- Programs

void TContext::SetProgram(const py::object& program) {
  Zx3D::TProgramCPU* const p = program.is_none() ? nullptr : program.cast<Zx3D::TProgramCPU*>();
  const py::object shaderV = p != nullptr ? PythonShader(p->GetShaderV()) : py::object();
  const py::object shaderF = p != nullptr ? PythonShader(p->GetShaderF()) : py::object();
  Zx3D::TProgramCPU* const before = GL.m_Program;
  Run("SetProgram", [&] { GL.SetProgram(p); });
  if (GL.m_Program == before) {
    return; // installed already: the shaders are those of its installation
  }
  Program = program.is_none() ? py::object() : program;
  ShaderV = shaderV;
  ShaderF = shaderF;
}

// --- Surfaces

py::object TContext::SurfaceOf(TDataSurface* surface) {
  if (surface == nullptr) {
    return py::none();
  }
  if (ColorSurface.ptr() != nullptr && surface == RecordOf(ColorSurface)) {
    return ColorSurface;
  }
  std::weak_ptr<TSurface>& known = m_Surfaces[surface];
  std::shared_ptr<TSurface> object = known.lock();
  if (object == nullptr) {
    object = std::make_shared<TSurface>(surface);
    known = object;
  }
  return py::cast(object);
}

// --- The debug callback

// Runs inside the failing operation: what the callback raises waits until that one has ended.
void TContext::OnDebugMessage(unsigned int source, unsigned int type, unsigned int id,
                              unsigned int severity, int length, const char* text,
                              const void* user) {
  const py::gil_scoped_acquire lock;
  auto* const self = static_cast<TContext*>(const_cast<void*>(user));
  try {
    self->DebugCallback(source, type, id, severity, length, text, self->DebugUser);
  } catch (...) {
    if (self->m_CallbackError == nullptr) {
      self->m_CallbackError = std::current_exception();
    }
  }
}

bool TContext::SetDebugCallback(py::object callback, py::object user) {
  CheckIdle("DebugMessageCallback");
  if (!callback.is_none() && PyCallable_Check(callback.ptr()) == 0) {
    throw py::type_error("DebugMessageCallback takes a function or None");
  }
  const bool set = GL.DebugMessageCallback(callback.is_none() ? nullptr : OnDebugMessage, this);
  DebugCallback = std::move(callback);
  DebugUser = std::move(user);
  return set;
}

// --- Cycles

int TContext::Traverse(visitproc visit, void* arg) const {
  for (const py::object* held :
       {&Program, &ShaderV, &ShaderF, &ColorSurface, &DrawBuffer, &DebugCallback, &DebugUser}) {
    Py_VISIT(held->ptr());
  }
  return 0;
}

void TContext::Clear() {
  GL.SetProgram(nullptr);
  GL.BindColorSurface(nullptr);
  GL.SetDrawBuffer(nullptr);
  GL.DebugMessageCallback(nullptr, nullptr);
  for (py::object* held :
       {&Program, &ShaderV, &ShaderF, &ColorSurface, &DrawBuffer, &DebugCallback, &DebugUser}) {
    // Taken out first: what goes may look at the context.
    const py::object gone = std::exchange(*held, py::object());
  }
}

} // namespace zxpy
