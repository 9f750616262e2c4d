#pragma once

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include <ZxBaseKit/TZxMessage.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

// The page docs/interface.md: what each operation says of itself, and what the library answers.

namespace interface_page {

/// An operation as its declaration stands in the header.
struct TOperation {
  std::string Section;
  std::string Name;
  std::string Signature;
  std::string Doc;
  int Comment; ///< which of the header's comments `Doc` is; a family shares one
};

/// The virtual operations of the header's text, in order.
std::vector<TOperation> ReadOperations(const std::string& header);

/// A call on a context of its own, freshly created.
struct TProbe {
  const char* Call;
  std::function<std::string(Zx3D::TRenderCPU&)> Run;
};

struct TRow {
  const char* Name;
  std::vector<TProbe> Probes;
};

/// One entry for each operation, in the order of the header.
std::vector<TRow> StateRows();
std::vector<TRow> VertexRows();
std::vector<TRow> ResourceRows();
std::vector<TRow> LateRows();

std::string ErrorName(unsigned int code);
std::string TextOf(const void* result);
std::string TextOf(const char* result);
std::string TextOf(bool result);
std::string TextOf(int result);
std::string TextOf(unsigned int result);

/// How a call reports: the thrown text, the error code, or that it was accepted, and its result.
template <class TCall> std::string AnswerOf(Zx3D::TRenderCPU& r, TCall call) {
  std::string answer;
  try {
    if constexpr (std::is_void_v<decltype(call())>) {
      call();
    } else if constexpr (std::is_pointer_v<decltype(call())> &&
                         !std::is_same_v<decltype(call()), const char*>) {
      answer = TextOf(static_cast<const void*>(call()));
    } else {
      answer = TextOf(call());
    }
  } catch (const TZxMessage& message) {
    answer = "throws \"" + message.GetText() + "\"";
  }
  const unsigned int error = r.m_Error;
  if (error != 0) {
    answer += (answer.empty() ? "" : ", ") + ErrorName(error);
  }
  return answer.empty() ? "accepted" : answer;
}

} // namespace interface_page

/// A call as it is written and what comes of it; `f4`, `d16` and so on are arrays of so many
/// values.
#define ZX_CALL(...)                                                                               \
  TProbe {                                                                                         \
#__VA_ARGS__, [](Zx3D::TRenderCPU & r) { return AnswerOf(r, [&] { return r.__VA_ARGS__; }); }  \
  }
