#pragma once

#include <array>
#include <exception>
#include <functional>
#include <thread>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "Common.h"
#include "Surfaces.h"

namespace zxpy {

using Zx3D::TRenderCPU;

/// Where a vertex array reads from, and who keeps it there.
struct TArraySource {
  std::shared_ptr<void> Owner; ///< of memory; null for a buffer object that still has its bytes
  unsigned int Buffer = 0;     ///< the buffer object's name
  std::int64_t Count = 0;      ///< elements that can be read
};

/// What Python calls `TRenderCPU`: a context and all that has to stay alive for it. The context is
/// a member and not a base, since the library draws arrays directly only with its own class.
class TContext {
public:
  TContext();
  ~TContext();
  TContext(const TContext&) = delete;
  TContext& operator=(const TContext&) = delete;

  TRenderCPU GL;
  bool RaiseErrors = false;

  // What is installed or bound, as Python knows it; null references where it is not Python's.
  py::object Program;
  py::object ShaderV;
  py::object ShaderF;
  py::object ColorSurface;
  py::object DrawBuffer;
  py::object DebugCallback;
  py::object DebugUser;

  std::unordered_map<const TRenderCPU::TVertexAttribPointer*, TArraySource> Arrays;
  std::vector<std::array<TArraySource, 8>> ArrayStack;

  /// Runs an operation under the interpreter's lock. Raises what it reported if `RaiseErrors` is
  /// on, and what the debug callback raised.
  template <class F> auto Run(const char* operation, F&& f) {
    CheckIdle(operation);
    return Watch(operation, f);
  }

  /// The same for an operation that only reads: shaders and callbacks may call it while drawing.
  template <class F> auto Read(const char* operation, F&& f) {
    if (m_Busy) {
      CheckThread(operation);
      return f();
    }
    return Watch(operation, f);
  }

  /// The same for an operation that draws: without the lock, unless Python's own shaders run.
  template <class F> auto Draw(const char* operation, F&& f) {
    CheckIdle(operation);
    return Watch(operation, [this, &f] {
      const TDrawing drawing(this);
      if (HasPythonShader()) {
        return f();
      }
      const py::gil_scoped_release release;
      return f();
    });
  }

  /// Raises `RuntimeError` while the context draws.
  void CheckIdle(const char* operation) const;

  bool HasPythonShader() const { return ShaderV.ptr() != nullptr || ShaderF.ptr() != nullptr; }

  bool Create(int width, int height, TContext* share);
  bool SetSize(int width, int height);
  void Destroy();

  /// Installs a program, or the standard one; keeps its shaders alive as long as they are
  /// installed.
  void SetProgram(const py::object& program);

  /// The context's own surfaces as Python objects, one object for each as long as it is alive.
  py::object SurfaceOf(TDataSurface* surface);

  /// Raises `RuntimeError` while another context draws with the same textures.
  void CheckTextures(const char* operation) const;

  /// To be called before a buffer's bytes move or go: what reads from them keeps them.
  void SaveBuffer(unsigned int id, bool copy);

  bool SetDebugCallback(py::object callback, py::object user);

  int Traverse(visitproc visit, void* arg) const;
  void Clear();

  /// Whether a context draws into a surface or samples it.
  static bool IsInUse(const DATASURFACE* surface);

  /// Lets the contexts that draw into `old` draw into `fresh`, which has the same pixels.
  static void Redirect(const TDataSurface* old, TDataSurface* fresh);

private:
  class TDrawing {
  public:
    explicit TDrawing(TContext* context) : m_Context(context) {
      context->m_Busy = true;
      context->m_Thread = std::this_thread::get_id();
    }
    ~TDrawing() { m_Context->m_Busy = false; }
    TDrawing(const TDrawing&) = delete;
    TDrawing& operator=(const TDrawing&) = delete;

  private:
    TContext* m_Context;
  };

  // Takes errors that are pending aside, so that what is raised is what this operation reported.
  class TPendingError {
  public:
    explicit TPendingError(TContext* context)
        : m_Context(context), m_Aside(context->RaiseErrors ? context->GL.m_Error : 0) {
      if (m_Context->RaiseErrors) {
        m_Context->GL.m_Error = 0;
      }
    }
    ~TPendingError() {
      if (m_Aside != 0) {
        m_Context->GL.m_Error = m_Aside;
      }
    }
    TPendingError(const TPendingError&) = delete;
    TPendingError& operator=(const TPendingError&) = delete;
    unsigned int Take() const {
      const unsigned int code = m_Context->GL.m_Error;
      m_Context->GL.m_Error = 0;
      return code;
    }

  private:
    TContext* m_Context;
    unsigned int m_Aside;
  };

  template <class F> auto Watch(const char* operation, F&& f) {
    const TPendingError pending(this);
    if constexpr (std::is_void_v<decltype(f())>) {
      f();
      Finish(operation, pending);
    } else {
      auto result = f();
      Finish(operation, pending);
      return result;
    }
  }

  void Finish(const char* operation, const TPendingError& pending) {
    if (m_CallbackError != nullptr) {
      std::rethrow_exception(std::exchange(m_CallbackError, nullptr));
    }
    if (RaiseErrors && GL.m_Error != 0) {
      RaiseGLError(pending.Take(), operation);
    }
  }

  void CheckThread(const char* operation) const;
  void DropSurfaces();
  static void OnDebugMessage(unsigned int source, unsigned int type, unsigned int id,
                             unsigned int severity, int length, const char* text, const void* user);

  std::unordered_map<const TDataSurface*, std::weak_ptr<TSurface>> m_Surfaces;
  std::exception_ptr m_CallbackError;
  std::thread::id m_Thread;
  bool m_Busy = false;
};

using TContextClass = py::class_<TContext>;

/// The Python object of a context by the library's own.
py::object ContextObject(const TRenderCPU* render);

// The parts of the class, by family.
void BindState(TContextClass& c);
void BindVertices(TContextClass& c);
void BindMatrices(TContextClass& c);
void BindArrays(TContextClass& c);
void BindBufferObjects(TContextClass& c);
void BindTextures(TContextClass& c);
void BindFields(TContextClass& c);

/// Defines an operation of the drawing interface as it is.
template <class R, class... A, class... X>
void Def(TContextClass& c, const char* name, R (TRenderCPU::*method)(A...), const X&... extra) {
  c.def(
      name,
      [name, method](TContext& self, A... a) {
        return self.Run(name, [&] { return (self.GL.*method)(a...); });
      },
      Doc(std::string("TRenderCPU::") + name), extra...);
}

/// The same for an operation that draws.
template <class R, class... A, class... X>
void DefDraw(TContextClass& c, const char* name, R (TRenderCPU::*method)(A...), const X&... extra) {
  c.def(
      name,
      [name, method](TContext& self, A... a) {
        return self.Draw(name, [&] { return (self.GL.*method)(a...); });
      },
      Doc(std::string("TRenderCPU::") + name), extra...);
}

/// The same for an operation that only reads.
template <class R, class... A, class... X>
void DefRead(TContextClass& c, const char* name, R (TRenderCPU::*method)(A...), const X&... extra) {
  c.def(
      name,
      [name, method](TContext& self, A... a) {
        return self.Read(name, [&] { return (self.GL.*method)(a...); });
      },
      Doc(std::string("TRenderCPU::") + name), extra...);
}

} // namespace zxpy
