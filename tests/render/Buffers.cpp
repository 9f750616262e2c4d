#include <climits>
#include <functional>
#include <vector>

#include <unistd.h>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

constexpr unsigned int kTargets[6] = {34962, 34963, 35051, 35052, 37568, 37074};

std::vector<unsigned int> Gen(TRenderCPU& r, int n) {
  std::vector<unsigned int> ids(static_cast<std::size_t>(n), 0xABCD);
  r.GenBuffers(n, ids.data());
  return ids;
}

/// Binds to any of the six.
void Bind(TRenderCPU& r, unsigned int target, unsigned int id) {
  if (target == 37568 || target == 37074) {
    r.BindBufferBase(target, 0, id);
  } else {
    r.BindBuffer(target, id);
  }
}

using TBytes = std::vector<unsigned char>;

} // namespace

TEST(Buffers, Defaults) {
  THeld<TRenderCPU> r;
  for (const std::uint32_t binding : r->m_BufferBindings) {
    EXPECT_EQ(0u, binding);
  }
  EXPECT_TRUE(r->m_Buffers.empty());
  Gen(*r, 1);
  const TRenderCPU::TBuffer& buffer = *r->m_Buffers[0];
  EXPECT_EQ(35002u, buffer.Access);
  EXPECT_EQ(35044u, buffer.Usage);
  EXPECT_FALSE(buffer.Mapped);
  EXPECT_TRUE(buffer.Data.empty());
}

TEST(Buffers, GivesOutTheLowestFreeNames) {
  THeld<TRenderCPU> r;
  EXPECT_EQ((std::vector<unsigned int>{1, 2, 3}), Gen(*r, 3));
  unsigned int ids[2] = {1, 3};
  r->DeleteBuffers(2, ids);
  EXPECT_EQ((std::vector<unsigned int>{1, 3, 4}), Gen(*r, 3));
  unsigned int none = 77;
  r->GenBuffers(0, &none);
  r->GenBuffers(-4, &none);
  EXPECT_EQ(77u, none);
}

TEST(Buffers, BindingStoresAnyNameAtFourTargets) {
  THeld<TRenderCPU> r;
  for (const unsigned int target : {34962u, 34963u, 35051u, 35052u}) {
    r->BindBuffer(target, target + 5);
  }
  EXPECT_EQ(34967u, r->m_BufferBindings[0]) << "unchecked";
  EXPECT_EQ(34968u, r->m_BufferBindings[1]);
  EXPECT_EQ(35056u, r->m_BufferBindings[2]);
  EXPECT_EQ(35057u, r->m_BufferBindings[3]);
  EXPECT_EQ(0u, r->GetError());
  for (const unsigned int target :
       {0u, 34961u, 34964u, 35050u, 35053u, 35345u, 37074u, 37567u, 37568u, 37569u}) {
    r->BindBuffer(target, 1);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << target;
  }
  EXPECT_EQ(0u, r->m_BufferBindings[4]);
  EXPECT_EQ(0u, r->m_BufferBindings[5]);
}

TEST(Buffers, BindBufferBaseHasTwoTargetsAndOneIndex) {
  THeld<TRenderCPU> r;
  r->BindBufferBase(37568, 0, 11);
  r->BindBufferBase(37074, 0, 12);
  EXPECT_EQ(11u, r->m_BufferBindings[4]);
  EXPECT_EQ(12u, r->m_BufferBindings[5]);
  EXPECT_EQ(0u, r->GetError());
  for (const unsigned int target : {37568u, 37074u, 34962u, 0u}) {
    r->BindBufferBase(target, 1, 13);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError()) << "the index is looked at first";
  }
  for (const unsigned int target :
       {0u, 34962u, 34963u, 35051u, 35052u, 37073u, 37075u, 37567u, 37569u, 35345u}) {
    r->BindBufferBase(target, 0, 13);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << target;
  }
  EXPECT_EQ(11u, r->m_BufferBindings[4]);
  EXPECT_EQ(12u, r->m_BufferBindings[5]);
}

TEST(Buffers, EachTargetHasItsOwnBindingPoint) {
  THeld<TRenderCPU> r;
  Gen(*r, 6);
  for (unsigned int i = 0; i < 6; ++i) {
    Bind(*r, kTargets[i], i + 1);
  }
  for (unsigned int i = 0; i < 6; ++i) {
    r->BufferData(kTargets[i], static_cast<long>(10 + i), nullptr, 1000 + i);
    EXPECT_EQ(i + 1, r->m_BufferBindings[i]);
  }
  for (unsigned int i = 0; i < 6; ++i) {
    int size = 0, usage = 0;
    r->GetBufferParameter(kTargets[i], 34660, &size);
    r->GetBufferParameter(kTargets[i], 34661, &usage);
    EXPECT_EQ(static_cast<int>(10 + i), size);
    EXPECT_EQ(static_cast<int>(1000 + i), usage) << "stored unchecked";
    EXPECT_EQ(10u + i, r->m_Buffers[i]->Data.size());
  }
  EXPECT_EQ(0u, r->GetError());
}

TEST(Buffers, DataIsSizedZeroedAndCopied) {
  THeld<TRenderCPU> r;
  Gen(*r, 1);
  r->BindBuffer(GL_ARRAY_BUFFER, 1);
  const unsigned char bytes[4] = {1, 2, 3, 4};
  r->BufferData(GL_ARRAY_BUFFER, 4, bytes, GL_STATIC_DRAW);
  EXPECT_EQ((TBytes{1, 2, 3, 4}), r->m_Buffers[0]->Data);
  r->BufferData(GL_ARRAY_BUFFER, 6, nullptr, GL_STATIC_DRAW);
  EXPECT_EQ((TBytes{1, 2, 3, 4, 0, 0}), r->m_Buffers[0]->Data) << "resized, new bytes 0";
  r->BufferData(GL_ARRAY_BUFFER, 2, nullptr, GL_STATIC_DRAW);
  EXPECT_EQ((TBytes{1, 2}), r->m_Buffers[0]->Data);
  r->BufferData(GL_ARRAY_BUFFER, 0, bytes, GL_STATIC_DRAW);
  EXPECT_TRUE(r->m_Buffers[0]->Data.empty());
  EXPECT_EQ(0u, r->GetError());
  r->BufferData(GL_ARRAY_BUFFER, 3, bytes, GL_STATIC_DRAW);
  r->BufferData(GL_ARRAY_BUFFER, -1, bytes, GL_STREAM_DRAW);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  EXPECT_EQ((TBytes{1, 2, 3}), r->m_Buffers[0]->Data);
  EXPECT_EQ(35044u, r->m_Buffers[0]->Usage);
}

TEST(Buffers, SubDataStaysInside) {
  THeld<TRenderCPU> r;
  Gen(*r, 1);
  r->BindBuffer(GL_ARRAY_BUFFER, 1);
  r->BufferData(GL_ARRAY_BUFFER, 4, nullptr, GL_STATIC_DRAW);
  const unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  r->BufferSubData(GL_ARRAY_BUFFER, 1, 2, bytes);
  EXPECT_EQ((TBytes{0, 1, 2, 0}), r->m_Buffers[0]->Data);
  r->BufferSubData(GL_ARRAY_BUFFER, 2, 2, bytes);
  EXPECT_EQ((TBytes{0, 1, 1, 2}), r->m_Buffers[0]->Data);
  r->BufferSubData(GL_ARRAY_BUFFER, 4, 0, bytes);
  EXPECT_EQ(0u, r->GetError());
  const long max = 0x7FFFFFFFFFFFFFFF;
  const struct {
    long Offset, Size;
  } refused[] = {{0, 5},  {1, 4},   {4, 1},   {5, 0},     {-1, 2},    {0, -1},
                 {2, -1}, {max, 1}, {1, max}, {max, max}, {-max, max}};
  for (const auto& row : refused) {
    r->BufferSubData(GL_ARRAY_BUFFER, row.Offset, row.Size, bytes);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError()) << row.Offset << " " << row.Size;
  }
  r->BufferSubData(GL_ARRAY_BUFFER, 0, 2, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  r->BufferSubData(GL_ARRAY_BUFFER, 0, 0, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  EXPECT_EQ((TBytes{0, 1, 1, 2}), r->m_Buffers[0]->Data);
}

TEST(Buffers, MappingHandsOutTheStorage) {
  THeld<TRenderCPU> r;
  Gen(*r, 1);
  r->BindBuffer(GL_ARRAY_BUFFER, 1);
  r->BufferData(GL_ARRAY_BUFFER, 4, nullptr, GL_STATIC_DRAW);
  void* data = r->MapBuffer(GL_ARRAY_BUFFER, 35001);
  EXPECT_EQ(r->m_Buffers[0]->Data.data(), data);
  EXPECT_EQ(35001u, r->m_Buffers[0]->Access);
  EXPECT_TRUE(r->m_Buffers[0]->Mapped);
  int out[2] = {55, 56};
  r->GetBufferParameter(GL_ARRAY_BUFFER, 35003, out);
  EXPECT_EQ(35001, out[0]);
  r->GetBufferParameter(GL_ARRAY_BUFFER, 35004, out);
  EXPECT_EQ(1, out[0]);
  EXPECT_EQ(56, out[1]);

  // Nothing refuses to work on a mapped buffer.
  const unsigned char bytes[2] = {7, 8};
  r->BufferSubData(GL_ARRAY_BUFFER, 0, 2, bytes);
  EXPECT_EQ(7, static_cast<unsigned char*>(data)[0]);
  EXPECT_EQ(data, r->MapBuffer(GL_ARRAY_BUFFER, 35000));
  EXPECT_EQ(35000u, r->m_Buffers[0]->Access);

  EXPECT_TRUE(r->UnmapBuffer(GL_ARRAY_BUFFER));
  EXPECT_FALSE(r->m_Buffers[0]->Mapped);
  EXPECT_EQ(35000u, r->m_Buffers[0]->Access);
  EXPECT_TRUE(r->UnmapBuffer(GL_ARRAY_BUFFER)) << "whether it was mapped or not";
  EXPECT_EQ(0u, r->GetError());
}

TEST(Buffers, ParametersAreFour) {
  THeld<TRenderCPU> r;
  Gen(*r, 1);
  r->BindBuffer(GL_ARRAY_BUFFER, 1);
  int out = 55;
  for (const unsigned int name : {0u, 34659u, 34662u, 35002u, 35005u}) {
    r->GetBufferParameter(GL_ARRAY_BUFFER, name, &out);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
  }
  EXPECT_EQ(55, out);
  r->GetBufferParameter(GL_ARRAY_BUFFER, 35003, &out);
  EXPECT_EQ(35002, out);
  r->GetBufferParameter(GL_ARRAY_BUFFER, 35004, &out);
  EXPECT_EQ(0, out);
}

TEST(Buffers, AnUnknownTargetOrAnEmptyPointIsAnInvalidOperation) {
  THeld<TRenderCPU> r;
  const unsigned char bytes[2] = {1, 2};
  const auto check = [&](unsigned int target) {
    int out = 55;
    r->BufferData(target, 2, bytes, GL_STATIC_DRAW);
    EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r->GetError()) << target;
    r->BufferSubData(target, 0, 2, bytes);
    EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r->GetError()) << target;
    EXPECT_EQ(nullptr, r->MapBuffer(target, 35000));
    EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r->GetError()) << target;
    EXPECT_FALSE(r->UnmapBuffer(target));
    EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r->GetError()) << target;
    r->GetBufferParameter(target, 34660, &out);
    EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r->GetError()) << target;
    EXPECT_EQ(55, out);
  };
  for (const unsigned int target : kTargets) {
    check(target);
  }
  Gen(*r, 1);
  for (const unsigned int target : kTargets) {
    Bind(*r, target, 1);
  }
  for (const unsigned int target :
       {0u, 34961u, 34964u, 35050u, 35053u, 37073u, 37075u, 37567u, 37569u}) {
    check(target);
  }
}

TEST(Buffers, ABoundNameWithoutABufferReadsNothing) {
  THeld<TRenderCPU> r;
  r->BindBuffer(GL_ARRAY_BUFFER, 999);
  const unsigned char bytes[2] = {1, 2};
  int out = 55;
  r->BufferData(GL_ARRAY_BUFFER, 2, bytes, GL_STATIC_DRAW);
  r->BufferSubData(GL_ARRAY_BUFFER, 0, 2, bytes);
  EXPECT_EQ(nullptr, r->MapBuffer(GL_ARRAY_BUFFER, 35000));
  EXPECT_FALSE(r->UnmapBuffer(GL_ARRAY_BUFFER));
  r->GetBufferParameter(GL_ARRAY_BUFFER, 34660, &out);
  EXPECT_EQ(55, out);
  r->VertexPointer(1, GL_FLOAT, 0, nullptr); // the sanitizers look on
}

TEST(Buffers, TheNamedFormsWorkById) {
  THeld<TRenderCPU> r;
  Gen(*r, 2);
  const unsigned char bytes[4] = {1, 2, 3, 4};
  r->NamedBufferData(2, 4, bytes, 35040);
  EXPECT_EQ((TBytes{1, 2, 3, 4}), r->m_Buffers[1]->Data);
  EXPECT_EQ(35040u, r->m_Buffers[1]->Usage);
  r->NamedBufferSubData(2, 2, 2, bytes);
  EXPECT_EQ((TBytes{1, 2, 1, 2}), r->m_Buffers[1]->Data);
  EXPECT_EQ(0u, r->GetError());
  r->NamedBufferSubData(2, 3, 2, bytes);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  r->NamedBufferSubData(2, -1, 1, bytes);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  r->NamedBufferSubData(2, 0, -1, bytes);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  r->NamedBufferSubData(2, 0, 1, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  r->NamedBufferData(2, -1, bytes, 35040);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  EXPECT_EQ(r->m_Buffers[1]->Data.data(), r->MapNamedBuffer(2, 35000));
  EXPECT_TRUE(r->m_Buffers[1]->Mapped);
  EXPECT_EQ(35000u, r->m_Buffers[1]->Access);
  EXPECT_TRUE(r->UnmapNamedBuffer(2));
  EXPECT_FALSE(r->m_Buffers[1]->Mapped);
  EXPECT_TRUE(r->m_Buffers[0]->Data.empty());
}

TEST(Buffers, ASizeBeyondAnIntIsTheLargestInt) {
  constexpr long kSize = 1L << 31;
  const long available = sysconf(_SC_AVPHYS_PAGES) * sysconf(_SC_PAGESIZE);
  if (available < 2 * kSize) {
    GTEST_SKIP() << "too little memory for a buffer of 2 GiB";
  }
  TScene s;
  unsigned int id = 0;
  s->GenBuffers(1, &id);
  s->BindBuffer(GL_ARRAY_BUFFER, id);
  s->BufferData(GL_ARRAY_BUFFER, kSize, nullptr, GL_STATIC_DRAW);
  int size = 0;
  s->GetBufferParameter(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
  EXPECT_EQ(INT_MAX, size);
  EXPECT_EQ(0u, s->GetError());
}

TEST(Buffers, TheNamedFormsDoNothingForAnUnknownId) {
  THeld<TRenderCPU> r;
  Gen(*r, 2);
  unsigned int two = 2;
  r->DeleteBuffers(1, &two);
  const unsigned char bytes[4] = {1, 2, 3, 4};
  for (const unsigned int id : {0u, 2u, 3u, 0xFFFFFFFFu}) {
    r->NamedBufferData(id, 4, bytes, 35040);
    r->NamedBufferSubData(id, 0, 2, bytes);
    EXPECT_EQ(nullptr, r->MapNamedBuffer(id, 35000));
    r->UnmapNamedBuffer(id);
  }
  EXPECT_TRUE(r->m_Buffers[0]->Data.empty());
}

TEST(Buffers, DeletingClearsEveryPointThatHoldsTheName) {
  THeld<TRenderCPU> r;
  Gen(*r, 2);
  for (const unsigned int target : kTargets) {
    Bind(*r, target, target == 35051 ? 2 : 1);
  }
  unsigned int ids[4] = {1, 0, 99, 0xFFFFFFFF};
  r->DeleteBuffers(4, ids);
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(i == 2 ? 2u : 0u, r->m_BufferBindings[i]);
  }
  EXPECT_EQ(nullptr, r->m_Buffers[0]);
  r->BindBuffer(GL_ARRAY_BUFFER, 77); // a name that was never given out
  ids[0] = 77;
  r->DeleteBuffers(1, ids);
  EXPECT_EQ(0u, r->m_BufferBindings[0]) << "the points first, whether the entry exists or not";
  r->DeleteBuffers(1, ids);
  r->DeleteBuffers(-1, ids);
  EXPECT_EQ(0u, r->GetError());
}

TEST(Buffers, APointerIsResolvedWhenItIsSet) {
  THeld<TRenderCPU> r;
  Gen(*r, 2);
  r->BindBuffer(GL_ARRAY_BUFFER, 1);
  r->BufferData(GL_ARRAY_BUFFER, 64, nullptr, GL_STATIC_DRAW);
  const unsigned char* base = r->m_Buffers[0]->Data.data();
  r->VertexPointer(2, GL_FLOAT, 0, reinterpret_cast<const void*>(8));
  r->NormalPointer(GL_FLOAT, 0, reinterpret_cast<const void*>(16));
  r->VertexAttribPointer(3, 1, GL_FLOAT, 0, 0, nullptr);
  EXPECT_EQ(reinterpret_cast<const void*>(8), r->m_VertexPointer.Pointer);
  EXPECT_EQ(base + 8, r->m_VertexPointer.Data);
  EXPECT_EQ(base + 16, r->m_NormalPointer.Data);
  EXPECT_EQ(base, (*r->m_VertexArray)[3].Data);
  r->BindBuffer(GL_ARRAY_BUFFER, 0);
  EXPECT_EQ(base + 8, r->m_VertexPointer.Data) << "once set, the binding plays no part";
  unsigned int one = 1;
  r->DeleteBuffers(1, &one);
  EXPECT_EQ(base + 8, r->m_VertexPointer.Data) << "pointers are not touched";
}

TEST(Buffers, DrawElementsFromABuffer) {
  TScene s(4, 4);
  Gen(*s, 2);
  const float positions[6] = {-0.75f, -0.75f, 0.25f, 0.25f, 0.75f, 0.75f};
  s->BindBuffer(GL_ARRAY_BUFFER, 2);
  s->BufferData(GL_ARRAY_BUFFER, sizeof(positions), positions, GL_STATIC_DRAW);
  s->VertexPointer(2, GL_FLOAT, 0, nullptr);
  s->EnableClientState(GL_VERTEX_ARRAY);
  const unsigned short indices[3] = {2, 0, 1};
  s->BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 1);
  s->BufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof(indices), indices, GL_STATIC_DRAW);
  s->DrawElements(GL_POINTS, 1, GL_UNSIGNED_SHORT, nullptr); // from the buffer's beginning
  EXPECT_EQ(0u, s->GetError());
  EXPECT_EQ(1, s.Painted());
  EXPECT_NE(kClear, s.Color(3, 3));
  s.Reset();
  s->DrawElements(GL_POINTS, 2, GL_UNSIGNED_SHORT, reinterpret_cast<const void*>(2));
  EXPECT_EQ(2, s.Painted());
  EXPECT_NE(kClear, s.Color(0, 0));
  EXPECT_EQ(kClear, s.Color(3, 3));
}

TEST(Buffers, AreAContextsOwn) {
  TScene a(2, 2);
  TScene b(2, 2, a.Get());
  Gen(*a, 3);
  EXPECT_TRUE(b->m_Buffers.empty());
  EXPECT_EQ((std::vector<unsigned int>{1}), Gen(*b, 1));
}

TEST(Buffers, DestroyFreesThemAndKeepsTheBindings) {
  TScene s(2, 2);
  Gen(*s, 3);
  s->BindBuffer(GL_ARRAY_BUFFER, 2);
  s->BufferData(GL_ARRAY_BUFFER, 100, nullptr, GL_STATIC_DRAW);
  s->Destroy();
  EXPECT_TRUE(s->m_Buffers.empty());
  EXPECT_EQ(2u, s->m_BufferBindings[0]) << "bound names survive";
  s->BufferData(GL_ARRAY_BUFFER, 100, nullptr, GL_STATIC_DRAW); // the sanitizers look on
}
