// Array draws at their edges: fetching functions of a caller's own, counts below 1, buffers without
// contents.

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

using TPointer = TRenderCPU::TVertexAttribPointer;

constexpr unsigned int kModes[] = {GL_POINTS,    GL_LINES,          GL_LINE_LOOP,    GL_LINE_STRIP,
                                   GL_TRIANGLES, GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN, GL_QUADS};

const float s_Corners[8] = {-0.75f, -0.75f, 0.75f, -0.75f, 0.75f, 0.75f, -0.75f, 0.75f};

void SetCorners(TRenderCPU& r) {
  r.VertexPointer(2, GL_FLOAT, 0, s_Corners);
  r.EnableClientState(GL_VERTEX_ARRAY);
}

/// An offset into a buffer, as the draw calls take it.
const void* Offset(std::uintptr_t bytes) { return reinterpret_cast<const void*>(bytes); }

// --- A caller's own fetching function

std::vector<unsigned long> s_Fetched;

/// Where the call number `n` puts its vertex: no two calls give the same.
V4 PlaceOf(std::size_t n) {
  return {0.9 - 0.11 * static_cast<double>(n * 7 % 17),
          -0.9 + 0.13 * static_cast<double>(n * 5 % 13), 0, 1};
}

void FetchByCall(const TPointer*, unsigned long index, V4* out) {
  *out = PlaceOf(s_Fetched.size());
  s_Fetched.push_back(index);
}

template <class TIndex> void ExpectAFetchForEachIndex(unsigned int type) {
  // Few elements that come again and again, a thousand apart as well.
  std::vector<TIndex> indices;
  std::vector<unsigned long> elements;
  for (unsigned int i = 0; i < 60; ++i) {
    const unsigned int element = i % 5 + (sizeof(TIndex) > 1 && i % 3 == 0 ? 1024 : 0);
    indices.push_back(static_cast<TIndex>(element));
    elements.push_back(element);
  }
  for (const unsigned int mode : kModes) {
    SCOPED_TRACE(mode);
    const TScene drawn(32, 32);
    SetCorners(*drawn);
    drawn->m_VertexPointer.GetValue = FetchByCall;
    s_Fetched.clear();
    drawn->DrawElements(mode, static_cast<int>(indices.size()), type, indices.data());
    EXPECT_EQ(elements, s_Fetched);

    const TScene expected(32, 32);
    expected->Begin(mode);
    for (std::size_t n = 0; n < indices.size(); ++n) {
      expected->m_CurAttrib[0] = PlaceOf(n);
      expected->Vertex4dv(&expected->m_CurAttrib[0].x);
    }
    expected->End();
    EXPECT_TRUE(EverythingLeft(*expected) == EverythingLeft(*drawn));
    EXPECT_GT(drawn.Painted(), 0);
  }
}

TEST(OwnFetch, IsCalledForEveryVertexOfDrawElements) {
  ExpectAFetchForEachIndex<std::uint8_t>(GL_UNSIGNED_BYTE);
  ExpectAFetchForEachIndex<std::uint16_t>(GL_UNSIGNED_SHORT);
  ExpectAFetchForEachIndex<std::uint32_t>(GL_UNSIGNED_INT);
}

TEST(OwnFetch, IsCalledForEveryVertexOfDrawArrays) {
  for (const unsigned int mode : kModes) {
    const TScene s(32, 32);
    SetCorners(*s);
    s->m_VertexPointer.GetValue = FetchByCall;
    s_Fetched.clear();
    s->DrawArrays(mode, 3, 40);
    ASSERT_EQ(40u, s_Fetched.size());
    for (unsigned long i = 0; i < 40; ++i) {
      EXPECT_EQ(3 + i, s_Fetched[i]);
    }
  }
}

// Beside arrays that are fetched by the functions of the table.
TEST(OwnFetch, OfOneArrayAmongOthers) {
  const TScene s(32, 32);
  SetCorners(*s);
  s->ColorPointer(2, GL_FLOAT, 0, s_Corners);
  s->EnableClientState(GL_COLOR_ARRAY);
  s->m_ColorPointer.GetValue = FetchByCall;
  const std::uint8_t indices[] = {0, 1, 2, 2, 1, 0, 0, 1, 2, 0, 2, 3};
  s_Fetched.clear();
  s->DrawElements(GL_TRIANGLES, 12, GL_UNSIGNED_BYTE, indices);
  EXPECT_EQ((std::vector<unsigned long>{0, 1, 2, 2, 1, 0, 0, 1, 2, 0, 2, 3}), s_Fetched);
}

// It may make its values out of nothing.
TEST(OwnFetch, NeedsNoData) {
  const TScene s(32, 32);
  s->VertexPointer(2, GL_FLOAT, 0, nullptr);
  s->EnableClientState(GL_VERTEX_ARRAY);
  s->m_VertexPointer.GetValue = FetchByCall;
  s_Fetched.clear();
  s->DrawArrays(GL_TRIANGLES, 0, 9);
  EXPECT_EQ(9u, s_Fetched.size());
  EXPECT_GT(s.Painted(), 0);
}

void FetchAndTint(const TPointer* p, unsigned long index, V4* out) {
  static constexpr double kReds[3] = {0.25, 0.5, 1};
  auto* const render = static_cast<TRenderCPU*>(const_cast<void*>(p->Pointer));
  render->m_CurColor = {kReds[s_Fetched.size() % 3], 0, 0, 1};
  *out = {s_Corners[index % 4 * 2], s_Corners[index % 4 * 2 + 1], 0, 1};
  s_Fetched.push_back(index);
}

// The same element a second time with another colour.
TEST(OwnFetch, MayChangeTheStateForItsVertex) {
  const TScene s(16, 16);
  s->VertexPointer(2, GL_FLOAT, 0, s.Get());
  s->EnableClientState(GL_VERTEX_ARRAY);
  s->m_VertexPointer.GetValue = FetchAndTint;
  const std::uint8_t indices[] = {0, 0, 0};
  s_Fetched.clear();
  s->DrawElements(GL_POINTS, 3, GL_UNSIGNED_BYTE, indices);
  // The last of the three, at -0.75: column and row 2 of 16.
  EXPECT_EQ((TPixel{255, 0, 0, 255}), s.Color(2, 2));
}

// --- Counts below 1

class TBeginSpy : public TRenderCPU {
public:
  void Begin(unsigned int mode) override {
    ++Begins;
    TRenderCPU::Begin(mode);
  }

  int Begins = 0;
};

TEST(ArrayCounts, BelowOneDoNothing) {
  const std::uint32_t indices[4] = {0, 1, 2, 3};
  for (const int count : {0, -1, -3, -4, -96, -1000, INT_MIN + 1, INT_MIN}) {
    for (const unsigned int mode : kModes) {
      SCOPED_TRACE(std::to_string(mode) + ", " + std::to_string(count));
      const TScene s(16, 16);
      SetCorners(*s);
      const std::vector<std::uint8_t> before = EverythingLeft(*s);
      s->DrawArrays(mode, 0, count);
      s->DrawElements(mode, count, GL_UNSIGNED_INT, indices);
      EXPECT_TRUE(before == EverythingLeft(*s));

      TBeginSpy spy;
      ASSERT_TRUE(spy.Create(16, 16, nullptr));
      SetCorners(spy);
      spy.DrawArrays(mode, 0, count);
      spy.DrawElements(mode, count, GL_UNSIGNED_INT, indices);
      EXPECT_EQ(0, spy.Begins);
      EXPECT_EQ(0u, spy.GetError());
    }
  }
}

// --- Buffers without contents

unsigned int BoundBuffer(TRenderCPU& r, unsigned int target) {
  unsigned int id = 0;
  r.GenBuffers(1, &id);
  r.BindBuffer(target, id);
  return id;
}

TEST(ArrayBuffers, AnElementBufferNeverFilledIsPassedOver) {
  for (const unsigned int type : {GL_UNSIGNED_BYTE, GL_UNSIGNED_SHORT, GL_UNSIGNED_INT}) {
    for (const std::uintptr_t offset : {0, 1, 4, 4096}) {
      TBeginSpy r;
      ASSERT_TRUE(r.Create(16, 16, nullptr));
      SetCorners(r);
      BoundBuffer(r, GL_ELEMENT_ARRAY_BUFFER);
      const std::vector<std::uint8_t> before = EverythingLeft(r);
      r.DrawElements(GL_TRIANGLES, 3, type, Offset(offset));
      EXPECT_EQ(0, r.Begins);
      EXPECT_TRUE(before == EverythingLeft(r));
    }
  }
}

TEST(ArrayBuffers, ABadIndexTypeIsReportedAllTheSame) {
  const TScene s(16, 16);
  SetCorners(*s);
  BoundBuffer(*s, GL_ELEMENT_ARRAY_BUFFER);
  s->DrawElements(GL_TRIANGLES, 3, GL_FLOAT, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
}

// Up to the last index that the buffer holds and not beyond.
TEST(ArrayBuffers, IndicesPastTheEndOfTheirBufferAreNotRead) {
  const std::uint16_t indices[6] = {0, 1, 2, 0, 2, 3};
  // From an odd offset they are 256 times as great.
  const std::vector<float> corners(std::size_t{2} * (3 * 256 + 1));
  const auto begins = [&indices, &corners](int count, std::uintptr_t offset) {
    TBeginSpy r;
    EXPECT_TRUE(r.Create(16, 16, nullptr));
    SetCorners(r);
    r.VertexPointer(2, GL_FLOAT, 0, corners.data());
    BoundBuffer(r, GL_ELEMENT_ARRAY_BUFFER);
    r.BufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof indices, indices, GL_STATIC_DRAW);
    r.DrawElements(GL_TRIANGLES, count, GL_UNSIGNED_SHORT, Offset(offset));
    EXPECT_EQ(0u, r.GetError());
    return r.Begins;
  };
  EXPECT_EQ(1, begins(6, 0));
  EXPECT_EQ(1, begins(3, 6));
  EXPECT_EQ(1, begins(5, 1));
  EXPECT_EQ(0, begins(7, 0));
  EXPECT_EQ(0, begins(6, 1));
  EXPECT_EQ(0, begins(1, 12));
  EXPECT_EQ(0, begins(1, 13));
  EXPECT_EQ(0, begins(INT_MAX, 0));
  EXPECT_EQ(0, begins(1, UINTPTR_MAX));
}

TEST(ArrayBuffers, AnArrayOfABufferNeverFilledHasNoData) {
  for (const std::uintptr_t offset : {0, 12, 4096}) {
    TBeginSpy r;
    ASSERT_TRUE(r.Create(16, 16, nullptr));
    BoundBuffer(r, GL_ARRAY_BUFFER);
    r.VertexPointer(2, GL_FLOAT, 0, Offset(offset));
    r.EnableClientState(GL_VERTEX_ARRAY);
    r.DrawArrays(GL_TRIANGLES, 0, 3);
    EXPECT_EQ(0, r.Begins) << offset;
    EXPECT_EQ(Offset(offset), r.m_VertexPointer.Pointer);
  }
}

} // namespace
