#include <vector>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

std::vector<unsigned int> Gen(TRenderCPU& r, int n) {
  std::vector<unsigned int> ids(static_cast<std::size_t>(n), 0xABCD);
  r.GenVertexArrays(n, ids.data());
  return ids;
}

bool IsEmpty(const TRenderCPU::TVertexArray& array) {
  const TRenderCPU::TVertexArray zero = {};
  return std::memcmp(&array, &zero, sizeof(zero)) == 0;
}

} // namespace

TEST(VertexArrayObjects, GivesOutTheLowestFreeNames) {
  THeld<TRenderCPU> r;
  EXPECT_EQ((std::vector<unsigned int>{1, 2, 3}), Gen(*r, 3));
  for (const TRenderCPU::TVertexArray* array : r->m_VertexArrays) {
    EXPECT_TRUE(IsEmpty(*array));
  }
  unsigned int ids[2] = {1, 3};
  r->DeleteVertexArrays(2, ids);
  EXPECT_EQ((std::vector<unsigned int>{1, 3, 4}), Gen(*r, 3));
  unsigned int none = 77;
  r->GenVertexArrays(0, &none);
  r->GenVertexArrays(-1, &none);
  EXPECT_EQ(77u, none);
}

TEST(VertexArrayObjects, HoldTheGenericArraysAndNotTheClassicOnes) {
  THeld<TRenderCPU> r;
  Gen(*r, 2);
  r->BindVertexArray(2);
  EXPECT_EQ(2u, r->m_VertexArrayBinding);
  EXPECT_EQ(r->m_VertexArrays[1], r->m_VertexArray);
  r->VertexAttribPointer(4, 3, GL_FLOAT, 0, 0, nullptr);
  r->EnableVertexAttribArray(4);
  r->VertexPointer(2, GL_FLOAT, 0, nullptr);
  r->EnableClientState(GL_VERTEX_ARRAY);
  int out = 0;
  r->GetIntegerv(GL_VERTEX_ARRAY_BINDING, &out);
  EXPECT_EQ(2, out);
  r->BindVertexArray(0);
  EXPECT_EQ(r->m_DefaultVertexArray, r->m_VertexArray);
  EXPECT_TRUE(IsEmpty(*r->m_VertexArray));
  EXPECT_TRUE(r->m_VertexPointer.Enabled);
  r->BindVertexArray(2);
  EXPECT_TRUE((*r->m_VertexArray)[4].Enabled);
  EXPECT_EQ(3, (*r->m_VertexArray)[4].Size);
}

TEST(VertexArrayObjects, AnUnknownNameIsStoredAndMeansTheDefault) {
  THeld<TRenderCPU> r;
  Gen(*r, 2);
  unsigned int two = 2;
  r->DeleteVertexArrays(1, &two);
  for (const unsigned int id : {2u, 3u, 999u, 0xFFFFFFFFu}) {
    r->BindVertexArray(1);
    r->BindVertexArray(id);
    EXPECT_EQ(id, r->m_VertexArrayBinding);
    EXPECT_EQ(r->m_DefaultVertexArray, r->m_VertexArray);
  }
  EXPECT_EQ(0u, r->GetError());
}

TEST(VertexArrayObjects, DeletingTheBoundOneFallsBackOnTheDefault) {
  THeld<TRenderCPU> r;
  Gen(*r, 2);
  r->BindVertexArray(1);
  unsigned int ids[4] = {2, 0, 99, 0xFFFFFFFF};
  r->DeleteVertexArrays(4, ids);
  EXPECT_EQ(1u, r->m_VertexArrayBinding) << "another one";
  ids[0] = 1;
  r->DeleteVertexArrays(1, ids);
  EXPECT_EQ(0u, r->m_VertexArrayBinding);
  EXPECT_EQ(r->m_DefaultVertexArray, r->m_VertexArray);
  r->DeleteVertexArrays(1, ids);
  r->DeleteVertexArrays(-1, ids);
  EXPECT_EQ(0u, r->GetError());
}

TEST(VertexArrayObjects, ClientAttributesArePushedAndPopped) {
  THeld<TRenderCPU> r;
  r->VertexAttribPointer(1, 3, GL_FLOAT, 0, 0, nullptr);
  r->EnableClientState(GL_NORMAL_ARRAY);
  r->PushClientAttrib(0); // the mask is ignored
  ASSERT_EQ(1u, r->m_ClientAttribStack.size());
  r->VertexAttribPointer(1, 2, GL_DOUBLE, 0, 0, nullptr);
  r->EnableVertexAttribArray(1);
  r->DisableClientState(GL_NORMAL_ARRAY);
  r->PushClientAttrib(0xFFFFFFFF);
  r->DisableVertexAttribArray(1);
  r->PopClientAttrib();
  EXPECT_TRUE((*r->m_VertexArray)[1].Enabled);
  EXPECT_EQ(2, (*r->m_VertexArray)[1].Size);
  r->PopClientAttrib();
  EXPECT_FALSE((*r->m_VertexArray)[1].Enabled);
  EXPECT_EQ(3, (*r->m_VertexArray)[1].Size);
  EXPECT_FALSE(r->m_NormalPointer.Enabled) << "the classic arrays are not saved";
  EXPECT_EQ(0u, r->GetError());
  r->PopClientAttrib();
  EXPECT_EQ(unsigned{GL_STACK_UNDERFLOW}, r->GetError());
  EXPECT_EQ(3, (*r->m_VertexArray)[1].Size);
}

TEST(VertexArrayObjects, APopGoesIntoTheCurrentObject) {
  THeld<TRenderCPU> r;
  Gen(*r, 1);
  r->EnableVertexAttribArray(6);
  r->PushClientAttrib(1);
  r->BindVertexArray(1);
  r->PopClientAttrib();
  EXPECT_TRUE((*r->m_VertexArrays[0])[6].Enabled);
  EXPECT_EQ(1u, r->m_VertexArrayBinding) << "the binding is not saved";
}

TEST(VertexArrayObjects, TheClientStackHasNoDepthLimit) {
  THeld<TRenderCPU> r;
  for (int i = 0; i < 5000; ++i) {
    r->VertexAttribPointer(0, 1, GL_FLOAT, 0, i + 1, nullptr);
    r->PushClientAttrib(0);
  }
  for (int i = 4999; i >= 0; --i) {
    r->PopClientAttrib();
    ASSERT_EQ(i + 1, (*r->m_VertexArray)[0].Stride);
  }
}

TEST(VertexArrayObjects, DestroyFreesThem) {
  TScene s(2, 2);
  Gen(*s, 3);
  s->BindVertexArray(2);
  s->Destroy();
  EXPECT_TRUE(s->m_VertexArrays.empty());
  EXPECT_EQ(nullptr, s->m_DefaultVertexArray);
  EXPECT_EQ(nullptr, s->m_VertexArray);
  EXPECT_EQ(0u, s->m_VertexArrayBinding);
}

TEST(VertexArrayObjects, WithoutATableTheOperationsDoNothing) {
  TScene s(2, 2);
  s->PushClientAttrib(0);
  s->Destroy();
  ASSERT_TRUE(s->Create(2, 2, nullptr));
  EXPECT_EQ(nullptr, s->m_DefaultVertexArray) << "only the constructor makes it";
  int out = 55;
  TRenderCPU::TAttrValue values[12];
  s->VertexAttribPointer(0, 2, GL_FLOAT, 0, 0, nullptr);
  s->EnableVertexAttribArray(0);
  s->DisableVertexAttribArray(0);
  s->GetVertexAttrib(0, 34338, &out);
  s->PushClientAttrib(0);
  s->PopClientAttrib();
  s->PopClientAttrib();
  s->BindVertexArray(0);
  s->BindVertexArray(7);
  s->DrawArrays(GL_POINTS, 0, 1);
  EXPECT_EQ(0u, s->_PrepareAttrValues(values, 12));
  EXPECT_EQ(55, out);
  DrawFullQuad(*s);
  EXPECT_EQ(4, s.Painted()) << "immediate drawing works";
}
