#include <algorithm>
#include <functional>
#include <vector>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

using TPointer = TRenderCPU::TVertexAttribPointer;

struct TSubmitted {
  V4 Vertex, Normal, Color, TexCoord, Attribs[8];
};

/// Sees the calls that a draw replays.
class TReplaySpy : public TRenderCPU {
public:
  void Begin(unsigned int mode) override {
    Calls.append("B").append(std::to_string(mode)).append(" ");
    TRenderCPU::Begin(mode);
  }
  void End() override {
    Calls += "E ";
    TRenderCPU::End();
  }
  void Vertex4dv(const double* v) override {
    Calls += "V ";
    TSubmitted s = {{v[0], v[1], v[2], v[3]}, m_CurNormal, m_CurColor, m_CurTexCoord, {}};
    std::copy(m_CurAttrib, m_CurAttrib + 8, s.Attribs);
    Seen.push_back(s);
    TRenderCPU::Vertex4dv(v);
  }

  std::string Calls;
  std::vector<TSubmitted> Seen;
};

bool SamePointer(const TPointer& a, const TPointer& b) {
  return a.Enabled == b.Enabled && a.Size == b.Size && a.Type == b.Type &&
         a.Normalized == b.Normalized && a.Stride == b.Stride &&
         a.EffectiveStride == b.EffectiveStride && a.Pointer == b.Pointer && a.Data == b.Data &&
         a.GetValue == b.GetValue;
}

bool IsZero(const TPointer& p) { return SamePointer(p, TPointer{}); }

/// The component that a fetch of `type` makes of the bytes at `p`.
double Component(unsigned int type, bool normalized, const unsigned char* p) {
  if (type == GL_UNSIGNED_BYTE) {
    return normalized ? *p * 0.00392156862745098 : *p;
  }
  if (type == GL_FLOAT) {
    float v;
    std::memcpy(&v, p, 4);
    return static_cast<double>(v);
  }
  double v;
  std::memcpy(&v, p, 8);
  return v;
}

int SizeOf(unsigned int type) { return type == 0x1401 ? 1 : type == 0x1406 ? 4 : 8; }

constexpr unsigned int kTypes[3] = {0x1401, 0x1406, 0x140A};

/// Every element a number of its own, at an odd address.
std::vector<unsigned char> Data(unsigned int type, int components) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(components * SizeOf(type) + 1));
  for (int i = 0; i < components; ++i) {
    unsigned char* p = bytes.data() + 1 + i * SizeOf(type);
    if (type == 0x1401) {
      *p = static_cast<unsigned char>(3 + 11 * i);
    } else if (type == 0x1406) {
      const float v = 0.1f * static_cast<float>(i + 1);
      std::memcpy(p, &v, 4);
    } else {
      const double v = 0.1 * (i + 1);
      std::memcpy(p, &v, 8);
    }
  }
  return bytes;
}

} // namespace

TEST(VertexArrays, Defaults) {
  THeld<TRenderCPU> r;
  for (const TPointer* p :
       {&r->m_VertexPointer, &r->m_NormalPointer, &r->m_ColorPointer, &r->m_TexCoordPointer}) {
    EXPECT_TRUE(IsZero(*p));
  }
  ASSERT_NE(nullptr, r->m_DefaultVertexArray);
  EXPECT_EQ(r->m_DefaultVertexArray, r->m_VertexArray);
  EXPECT_EQ(0u, r->m_VertexArrayBinding);
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_TRUE(IsZero((*r->m_VertexArray)[i]));
    EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, r->m_CurAttrib[i]));
  }
  EXPECT_TRUE(r->m_VertexArrays.empty());
  EXPECT_TRUE(r->m_ClientAttribStack.empty());
}

TEST(VertexArrays, EveryPointerChoosesItsFetchFunctionAndItsStride) {
  std::size_t row = 0;
  for (const int family : {0, 1, 2, 3}) {
    const unsigned int type = kTypes[family < 2 ? 0 : family - 1];
    for (int size = 1; size <= 4; ++size, ++row) {
      for (const int stride : {0, 1, 40, -16}) {
        THeld<TRenderCPU> r;
        TPointer p = {};
        p.Enabled = stride == 40;
        const unsigned char normalized = family == 1 ? 7 : 0;
        const char memory = 0;
        r->_VertexAttribPointer(&p, size, type, normalized, stride, &memory);
        EXPECT_EQ(0u, r->GetError());
        EXPECT_EQ(stride == 40, p.Enabled) << "not touched";
        EXPECT_EQ(size, p.Size);
        EXPECT_EQ(type, p.Type);
        EXPECT_EQ(normalized, p.Normalized);
        EXPECT_EQ(stride, p.Stride);
        EXPECT_EQ(stride != 0 ? stride : size * SizeOf(type), p.EffectiveStride);
        EXPECT_EQ(&memory, p.Pointer);
        EXPECT_EQ(static_cast<const void*>(&memory), p.Data);
        EXPECT_EQ(TRenderCPU::s_AttrGetVals[row], p.GetValue);
      }
    }
  }
  EXPECT_EQ(16u, row);
  ASSERT_EQ(16u, TRenderCPU::s_AttrGetVals.size());
}

TEST(VertexArrays, TheFlagOfNormalisationCountsForBytesOnly) {
  THeld<TRenderCPU> r;
  TPointer p = {};
  r->_VertexAttribPointer(&p, 2, GL_FLOAT, 1, 0, nullptr);
  EXPECT_EQ(TRenderCPU::s_AttrGetVals[9], p.GetValue);
  EXPECT_EQ(1, p.Normalized);
  r->_VertexAttribPointer(&p, 2, GL_DOUBLE, 1, 0, nullptr);
  EXPECT_EQ(TRenderCPU::s_AttrGetVals[13], p.GetValue);
}

TEST(VertexArrays, FetchFunctionsFillInWhatIsMissing) {
  std::size_t row = 0;
  for (const int family : {0, 1, 2, 3}) {
    const unsigned int type = kTypes[family < 2 ? 0 : family - 1];
    for (int size = 1; size <= 4; ++size, ++row) {
      const std::vector<unsigned char> bytes = Data(type, 16);
      for (const int stride : {size * SizeOf(type), SizeOf(type), 2 * SizeOf(type)}) {
        TPointer p = {};
        p.EffectiveStride = stride;
        p.Data = bytes.data() + 1;
        for (unsigned long index = 0; index < 4; ++index) {
          V4 expected = {0, 0, 0, 1};
          for (int c = 0; c < size; ++c) {
            expected[static_cast<std::size_t>(c)] = Component(
                type, family == 1, p.Data + stride * static_cast<int>(index) + c * SizeOf(type));
          }
          V4 out = {-9, -9, -9, -9};
          TRenderCPU::s_AttrGetVals[row](&p, index, &out);
          EXPECT_TRUE(SameVec(expected, out)) << row << " " << index;
        }
      }
    }
  }
}

TEST(VertexArrays, ANegativeStrideWalksBackwards) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(2, 2, nullptr));
  const double v[3] = {10, 20, 30};
  r->VertexPointer(1, GL_DOUBLE, -8, v + 2);
  r->EnableClientState(GL_VERTEX_ARRAY);
  r->DrawArrays(GL_POINTS, 0, 3);
  ASSERT_EQ(3u, r->Seen.size());
  EXPECT_EQ(30, r->Seen[0].Vertex.x);
  EXPECT_EQ(20, r->Seen[1].Vertex.x);
  EXPECT_EQ(10, r->Seen[2].Vertex.x);
}

TEST(VertexArrays, OtherSizesAndTypesAreRefusedAndStoreNothing) {
  const char memory = 0;
  const std::vector<std::pair<int, unsigned int>> refused = {
      {0, 0x1406}, {5, 0x1406}, {-1, 0x1406}, {0x80E1, 0x1401}, {2, 0x1400},
      {2, 0x1402}, {2, 0x1403}, {2, 0x1404},  {2, 0x1405},      {2, 0x1407},
      {2, 0x1408}, {2, 0x1409}, {2, 0x140B},  {2, 0},           {0, 0x1402}};
  const std::vector<std::function<void(TRenderCPU&, int, unsigned int)>> setters = {
      [&](TRenderCPU& r, int n, unsigned int t) { r.VertexPointer(n, t, 12, &memory); },
      [&](TRenderCPU& r, int n, unsigned int t) { r.ColorPointer(n, t, 12, &memory); },
      [&](TRenderCPU& r, int n, unsigned int t) { r.TexCoordPointer(n, t, 12, &memory); },
      [&](TRenderCPU& r, int n, unsigned int t) { r.VertexAttribPointer(3, n, t, 0, 12, &memory); },
      [&](TRenderCPU& r, int, unsigned int t) { r.NormalPointer(t, 12, &memory); }};
  for (std::size_t i = 0; i < setters.size(); ++i) {
    THeld<TRenderCPU> r;
    TPointer* const targets[5] = {&r->m_VertexPointer, &r->m_ColorPointer, &r->m_TexCoordPointer,
                                  &(*r->m_VertexArray)[3], &r->m_NormalPointer};
    setters[i](*r, 2, GL_DOUBLE);
    const TPointer before = *targets[i];
    EXPECT_EQ(12, before.Stride);
    for (const auto& [size, type] : refused) {
      if (i == 4 && type == GL_FLOAT) {
        continue; // a normal has no size of its own
      }
      if (i == 4 && type == GL_UNSIGNED_BYTE) {
        continue;
      }
      setters[i](*r, size, type);
      EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError()) << i << ": " << size << " " << type;
      EXPECT_TRUE(SamePointer(before, *targets[i])) << i;
    }
  }
}

TEST(VertexArrays, ClassicBytesAreNormalisedAndGenericOnesAsAsked) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(2, 2, nullptr));
  const unsigned char bytes[4] = {255, 0, 51, 102};
  r->VertexPointer(4, GL_UNSIGNED_BYTE, 0, bytes);
  r->NormalPointer(GL_UNSIGNED_BYTE, 0, bytes);
  r->ColorPointer(4, GL_UNSIGNED_BYTE, 0, bytes);
  r->TexCoordPointer(4, GL_UNSIGNED_BYTE, 0, bytes);
  r->VertexAttribPointer(5, 4, GL_UNSIGNED_BYTE, 0, 0, bytes);
  r->VertexAttribPointer(6, 4, GL_UNSIGNED_BYTE, 1, 0, bytes);
  for (const unsigned int array : {32884u, 32885u, 32886u, 32888u}) {
    r->EnableClientState(array);
  }
  r->EnableVertexAttribArray(5);
  r->EnableVertexAttribArray(6);
  r->DrawArrays(GL_POINTS, 0, 1);
  ASSERT_EQ(1u, r->Seen.size());
  const double k = 0.00392156862745098;
  const V4 normalised = {255 * k, 0, 51 * k, 102 * k};
  EXPECT_TRUE(SameVec(normalised, r->Seen[0].Vertex));
  EXPECT_TRUE(SameVec(V4{255 * k, 0, 51 * k, 1}, r->Seen[0].Normal));
  EXPECT_TRUE(SameVec(normalised, r->Seen[0].Color));
  EXPECT_TRUE(SameVec(normalised, r->Seen[0].TexCoord));
  EXPECT_TRUE(SameVec(V4{255, 0, 51, 102}, r->Seen[0].Attribs[5]));
  EXPECT_TRUE(SameVec(normalised, r->Seen[0].Attribs[6]));
  EXPECT_NE(0, r->m_VertexPointer.Normalized);
  EXPECT_EQ(0u, r->GetError());
}

TEST(VertexArrays, ClassicFloatsAreNotNormalised) {
  THeld<TRenderCPU> r;
  r->VertexPointer(2, GL_FLOAT, 0, nullptr);
  r->NormalPointer(GL_DOUBLE, 0, nullptr);
  EXPECT_EQ(0, r->m_VertexPointer.Normalized);
  EXPECT_EQ(8, r->m_VertexPointer.EffectiveStride);
  EXPECT_EQ(0, r->m_NormalPointer.Normalized);
  EXPECT_EQ(3, r->m_NormalPointer.Size);
  EXPECT_EQ(24, r->m_NormalPointer.EffectiveStride);
}

TEST(VertexArrays, GenericArraysHaveEightIndices) {
  THeld<TRenderCPU> r;
  for (unsigned int i = 0; i < 8; ++i) {
    r->VertexAttribPointer(i, 2, GL_FLOAT, 0, 8, nullptr);
    r->EnableVertexAttribArray(i);
    EXPECT_TRUE((*r->m_VertexArray)[i].Enabled);
    EXPECT_EQ(2, (*r->m_VertexArray)[i].Size);
    r->DisableVertexAttribArray(i);
    EXPECT_FALSE((*r->m_VertexArray)[i].Enabled);
  }
  EXPECT_EQ(0u, r->GetError());
  int out = 55;
  for (const unsigned int i : {8u, 9u, 0x80000000u, 0xFFFFFFFFu}) {
    r->VertexAttribPointer(i, 2, GL_FLOAT, 0, 8, nullptr);
    EXPECT_EQ(kNoSuchIndex, r->GetError());
    r->VertexAttribPointer(i, 0, 1, 0, 8, nullptr);
    EXPECT_EQ(kNoSuchIndex, r->GetError()) << "before the values are looked at";
    r->EnableVertexAttribArray(i);
    EXPECT_EQ(kNoSuchIndex, r->GetError());
    r->DisableVertexAttribArray(i);
    EXPECT_EQ(kNoSuchIndex, r->GetError());
    r->GetVertexAttrib(i, 34338, &out);
    EXPECT_EQ(kNoSuchIndex, r->GetError());
    r->GetVertexAttrib(i, 34338, nullptr);
    EXPECT_EQ(kNoSuchIndex, r->GetError()) << "before the pointer is looked at";
  }
  EXPECT_EQ(55, out);
}

TEST(VertexArrays, GetVertexAttribAnswersEightNames) {
  THeld<TRenderCPU> r;
  r->VertexAttribPointer(4, 3, GL_UNSIGNED_BYTE, 9, 0, nullptr);
  r->EnableVertexAttribArray(4);
  const struct {
    unsigned int Name;
    int Value;
  } rows[] = {{34338, 1}, {34339, 3}, {34340, 0}, {34341, 0x1401},
              {34922, 9}, {34975, 0}, {35069, 0}, {35070, 0}};
  for (const auto& row : rows) {
    int out[2] = {55, 56};
    r->GetVertexAttrib(4, row.Name, out);
    EXPECT_EQ(row.Value, out[0]) << row.Name;
    EXPECT_EQ(56, out[1]);
    EXPECT_EQ(0u, r->GetError());
    r->GetVertexAttrib(4, row.Name, nullptr);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  }
  for (const unsigned int name :
       {0u, 34337u, 34342u, 34373u, 34921u, 34923u, 34974u, 34976u, 35068u, 35071u}) {
    int out = 55;
    r->GetVertexAttrib(4, name, &out);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
    EXPECT_EQ(55, out);
  }
  r->GetVertexAttrib(4, 0, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError()) << "before the name is looked at";
}

TEST(VertexArrays, ClientStatesAreFour) {
  THeld<TRenderCPU> r;
  const struct {
    unsigned int Name;
    TPointer TRenderCPU::*Record;
  } rows[] = {{32884, &TRenderCPU::m_VertexPointer},
              {32885, &TRenderCPU::m_NormalPointer},
              {32886, &TRenderCPU::m_ColorPointer},
              {32888, &TRenderCPU::m_TexCoordPointer}};
  for (const auto& row : rows) {
    r->EnableClientState(row.Name);
    EXPECT_TRUE(((*r).*row.Record).Enabled);
    r->DisableClientState(row.Name);
    EXPECT_FALSE(((*r).*row.Record).Enabled);
    r->_EnableClientState(row.Name, true);
    EXPECT_TRUE(((*r).*row.Record).Enabled);
    r->_EnableClientState(row.Name, false);
    EXPECT_FALSE(((*r).*row.Record).Enabled);
  }
  EXPECT_EQ(0u, r->GetError());
  for (const unsigned int name : {0u, 32883u, 32887u, 32889u, 32890u}) {
    r->EnableClientState(name);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
    r->DisableClientState(name);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
  }
  for (const auto& row : rows) {
    EXPECT_FALSE(((*r).*row.Record).Enabled);
  }
}

TEST(VertexArrays, ActiveArraysAreListedInAFixedOrder) {
  THeld<TRenderCPU> r;
  TRenderCPU::TAttrValue values[12];
  const double data[4] = {};
  EXPECT_EQ(0u, r->_PrepareAttrValues(values, 12));
  r->VertexPointer(4, GL_DOUBLE, 0, data);
  r->NormalPointer(GL_DOUBLE, 0, data);
  r->ColorPointer(4, GL_DOUBLE, 0, data);
  r->TexCoordPointer(4, GL_DOUBLE, 0, data);
  for (unsigned int i = 0; i < 8; ++i) {
    r->VertexAttribPointer(i, 4, GL_DOUBLE, 0, 0, data);
  }
  EXPECT_EQ(0u, r->_PrepareAttrValues(values, 12)) << "none is enabled";
  for (const unsigned int array : {32884u, 32885u, 32886u, 32888u}) {
    r->EnableClientState(array);
  }
  for (unsigned int i = 0; i < 8; ++i) {
    r->EnableVertexAttribArray(i);
  }
  ASSERT_EQ(12u, r->_PrepareAttrValues(values, 12));
  const TPointer* const pointers[4] = {&r->m_VertexPointer, &r->m_NormalPointer, &r->m_ColorPointer,
                                       &r->m_TexCoordPointer};
  V4* const targets[4] = {&r->m_CurAttrib[0], &r->m_CurNormal, &r->m_CurColor, &r->m_CurTexCoord};
  for (std::size_t i = 0; i < 12; ++i) {
    EXPECT_EQ(i < 4 ? pointers[i] : &(*r->m_VertexArray)[i - 4], values[i].Pointer) << i;
    EXPECT_EQ(i < 4 ? targets[i] : &r->m_CurAttrib[i - 4], values[i].Value) << i;
  }
  EXPECT_EQ(5u, r->_PrepareAttrValues(values, 5));
  EXPECT_EQ(0u, r->_PrepareAttrValues(values, 0));
  r->DisableClientState(GL_NORMAL_ARRAY);
  r->DisableVertexAttribArray(0);
  EXPECT_EQ(10u, r->_PrepareAttrValues(values, 12));
  EXPECT_EQ(&r->m_ColorPointer, values[1].Pointer);
  EXPECT_EQ(&(*r->m_VertexArray)[1], values[3].Pointer);
}

TEST(VertexArrays, AnEnabledArrayThatWasNeverSetIsPassedOver) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(4, 4, nullptr));
  r->EnableClientState(GL_VERTEX_ARRAY);
  r->EnableVertexAttribArray(2);
  r->DrawArrays(GL_POINTS, 0, 1);
  EXPECT_EQ("", r->Calls);
  EXPECT_EQ(0u, r->GetError());
}

TEST(VertexArrays, DrawArraysReplaysTheVirtualCalls) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(4, 4, nullptr));
  const double positions[8] = {0, 1, 2, 3, 4, 5, 6, 7};
  const float colors[12] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  r->VertexPointer(2, GL_DOUBLE, 0, positions);
  r->ColorPointer(3, GL_FLOAT, 0, colors);
  r->EnableClientState(GL_VERTEX_ARRAY);
  r->EnableClientState(GL_COLOR_ARRAY);
  r->DrawArrays(GL_LINES, 1, 3);
  EXPECT_EQ("B1 V V V E ", r->Calls);
  ASSERT_EQ(3u, r->Seen.size());
  for (std::size_t i = 0; i < 3; ++i) {
    const double d = static_cast<double>(i) + 1;
    EXPECT_TRUE(SameVec(V4{2 * d, 2 * d + 1, 0, 1}, r->Seen[i].Vertex));
    EXPECT_TRUE(SameVec(V4{3 * d, 3 * d + 1, 3 * d + 2, 1}, r->Seen[i].Color));
  }
  EXPECT_TRUE(SameVec(V4{6, 7, 0, 1}, r->m_CurVertex)) << "current values are written";
  EXPECT_TRUE(SameVec(V4{9, 10, 11, 1}, r->m_CurColor));
}

TEST(VertexArrays, NothingToDrawCallsNothing) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(4, 4, nullptr));
  const double positions[2] = {};
  const unsigned char index[1] = {};
  r->DrawArrays(GL_POINTS, 0, 1);
  r->DrawElements(GL_POINTS, 1, GL_UNSIGNED_BYTE, index);
  EXPECT_EQ("", r->Calls) << "no array is enabled";
  r->VertexPointer(2, GL_DOUBLE, 0, positions);
  r->EnableClientState(GL_VERTEX_ARRAY);
  r->DrawArrays(GL_POINTS, 0, 0);
  r->DrawElements(GL_POINTS, 0, GL_UNSIGNED_BYTE, index);
  r->DrawElements(GL_POINTS, 0, 1, nullptr);
  EXPECT_EQ("", r->Calls) << "a count of 0";
  EXPECT_EQ(0u, r->GetError());
}

TEST(VertexArrays, AModeIsBeginsToJudge) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(4, 4, nullptr));
  const double positions[4] = {};
  r->VertexPointer(2, GL_DOUBLE, 0, positions);
  r->EnableClientState(GL_VERTEX_ARRAY);
  r->DrawArrays(9, 0, 2);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError());
  EXPECT_EQ("B9 V V E ", r->Calls);
}

TEST(VertexArrays, WithANormalArrayAloneTheStalePositionIsSubmitted) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(4, 4, nullptr));
  r->m_CurAttrib[0] = {0.1, 0.2, 0.3, 0.4};
  const double normals[6] = {1, 2, 3, 4, 5, 6};
  r->NormalPointer(GL_DOUBLE, 0, normals);
  r->EnableClientState(GL_NORMAL_ARRAY);
  r->DrawArrays(GL_POINTS, 0, 2);
  ASSERT_EQ(2u, r->Seen.size());
  for (std::size_t i = 0; i < 2; ++i) {
    const double d = 3 * static_cast<double>(i);
    EXPECT_TRUE(SameVec(V4{0.1, 0.2, 0.3, 0.4}, r->Seen[i].Vertex));
    EXPECT_TRUE(SameVec(V4{d + 1, d + 2, d + 3, 1}, r->Seen[i].Normal));
  }
}

TEST(VertexArrays, TheGenericPositionWins) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(4, 4, nullptr));
  const double classic[1] = {5}, generic[1] = {6}, third[1] = {7};
  r->VertexPointer(1, GL_DOUBLE, 0, classic);
  r->VertexAttribPointer(0, 1, GL_DOUBLE, 0, 0, generic);
  r->VertexAttribPointer(3, 1, GL_DOUBLE, 0, 0, third);
  r->EnableClientState(GL_VERTEX_ARRAY);
  r->EnableVertexAttribArray(3);
  r->DrawArrays(GL_POINTS, 0, 1);
  r->EnableVertexAttribArray(0);
  r->DrawArrays(GL_POINTS, 0, 1);
  ASSERT_EQ(2u, r->Seen.size());
  EXPECT_EQ(5, r->Seen[0].Vertex.x);
  EXPECT_EQ(7, r->Seen[0].Attribs[3].x);
  EXPECT_EQ(6, r->Seen[1].Vertex.x);
}

TEST(VertexArrays, DrawElementsReadsIndicesOfThreeWidths) {
  const struct {
    unsigned int Type;
    std::vector<unsigned char> Bytes; // 2, 0, 258 or 3
    double Third;
  } rows[] = {{0x1401, {2, 0, 3}, 3},
              {0x1403, {2, 0, 0, 0, 2, 1}, 258},
              {0x1405, {2, 0, 0, 0, 0, 0, 0, 0, 2, 1, 0, 0}, 258}};
  for (const auto& row : rows) {
    std::vector<double> numbered(400);
    for (std::size_t i = 0; i < 400; ++i) {
      numbered[i] = static_cast<double>(i);
    }
    THeld<TReplaySpy> r;
    ASSERT_TRUE(r->Create(4, 4, nullptr));
    r->VertexPointer(1, GL_DOUBLE, 0, numbered.data());
    r->EnableClientState(GL_VERTEX_ARRAY);
    r->DrawElements(GL_TRIANGLES, 3, row.Type, row.Bytes.data());
    EXPECT_EQ("B4 V V V E ", r->Calls);
    ASSERT_EQ(3u, r->Seen.size());
    EXPECT_EQ(2, r->Seen[0].Vertex.x);
    EXPECT_EQ(0, r->Seen[1].Vertex.x);
    EXPECT_EQ(row.Third, r->Seen[2].Vertex.x);
  }
}

TEST(VertexArrays, DrawElementsRefusals) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(4, 4, nullptr));
  const double positions[4] = {};
  const unsigned int indices[2] = {0, 1};
  r->VertexPointer(1, GL_DOUBLE, 0, positions);
  r->EnableClientState(GL_VERTEX_ARRAY);
  r->DrawElements(GL_POINTS, 2, GL_UNSIGNED_INT, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  for (const unsigned int type : {0u, 0x1400u, 0x1402u, 0x1404u, 0x1406u, 0x140Au}) {
    r->DrawElements(GL_POINTS, 2, type, indices);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError()) << type;
  }
  EXPECT_EQ("", r->Calls);
}

TEST(VertexArrays, VertexAttribFillsInAndSubmitsForIndexZero) {
  THeld<TReplaySpy> r;
  ASSERT_TRUE(r->Create(4, 4, nullptr));
  const std::vector<std::function<void(int)>> forms = {
      [&](int i) { r->VertexAttrib(i, 0.1f); },
      [&](int i) { r->VertexAttrib(i, 0.1); },
      [&](int i) {
        r->VertexAttrib(i, vec_t_<float, 2>{0.1f, 0.2f});
      },
      [&](int i) {
        r->VertexAttrib(i, V2{0.1, 0.2});
      },
      [&](int i) {
        r->VertexAttrib(i, vec_t_<float, 3>{0.1f, 0.2f, 0.3f});
      },
      [&](int i) {
        r->VertexAttrib(i, V3{0.1, 0.2, 0.3});
      },
      [&](int i) {
        r->VertexAttrib(i, vec_t_<float, 4>{0.1f, 0.2f, 0.3f, 0.4f});
      },
      [&](int i) {
        r->VertexAttrib(i, V4{0.1, 0.2, 0.3, 0.4});
      }};
  const float f[4] = {0.1f, 0.2f, 0.3f, 0.4f};
  const double d[4] = {0.1, 0.2, 0.3, 0.4};
  for (std::size_t form = 0; form < forms.size(); ++form) {
    V4 expected = {0, 0, 0, 1};
    for (std::size_t c = 0; c <= form / 2; ++c) {
      expected[c] = form % 2 == 0 ? static_cast<double>(f[c]) : d[c];
    }
    for (int i = 0; i < 8; ++i) {
      r->Calls.clear();
      r->m_CurAttrib[i] = {-9, -9, -9, -9};
      forms[form](i);
      EXPECT_TRUE(SameVec(expected, r->m_CurAttrib[i])) << form << " " << i;
      EXPECT_EQ(i == 0 ? "V " : "", r->Calls);
    }
    EXPECT_TRUE(SameVec(expected, r->Seen.back().Vertex));
    EXPECT_TRUE(SameVec(expected, r->m_CurVertex));
    const std::vector<V4> before(r->m_CurAttrib, r->m_CurAttrib + 8);
    r->Calls.clear();
    for (const int i : {-1, 8, 1000000, -2147483647}) {
      forms[form](i);
    }
    EXPECT_EQ(before, std::vector<V4>(r->m_CurAttrib, r->m_CurAttrib + 8));
    EXPECT_EQ("", r->Calls);
  }
}

TEST(VertexArrays, ArraysDrawTheSamePixelsAsCalls) {
  TRandom random(61);
  std::vector<float> vertices(60 * 3), colors(60 * 4);
  for (float& v : vertices) {
    v = static_cast<float>(random.Between(-1.5, 1.5));
  }
  for (float& c : colors) {
    c = static_cast<float>(random.Between(0, 1));
  }
  std::vector<unsigned short> indices;
  for (int i = 0; i < 90; ++i) {
    indices.push_back(static_cast<unsigned short>(random.Below(60)));
  }
  for (unsigned int mode = 0; mode < 8; ++mode) {
    TScene calls(33, 21), arrays(33, 21), elements(33, 21), indexed(33, 21);
    calls->Begin(mode);
    for (std::size_t i = 0; i < 60; ++i) {
      calls->_Color4fv(&colors[4 * i]);
      calls->Vertex3fv(&vertices[3 * i]);
    }
    calls->End();
    indexed->Begin(mode);
    for (const unsigned short i : indices) {
      indexed->_Color4fv(&colors[4u * i]);
      indexed->Vertex3fv(&vertices[3u * i]);
    }
    indexed->End();
    for (TScene* s : {&arrays, &elements}) {
      (*s)->VertexPointer(3, GL_FLOAT, 0, vertices.data());
      (*s)->ColorPointer(4, GL_FLOAT, 0, colors.data());
      (*s)->EnableClientState(GL_VERTEX_ARRAY);
      (*s)->EnableClientState(GL_COLOR_ARRAY);
    }
    arrays->DrawArrays(mode, 0, 60);
    elements->DrawElements(mode, 90, GL_UNSIGNED_SHORT, indices.data());
    EXPECT_EQ(AllBytes(*calls), AllBytes(*arrays)) << mode;
    EXPECT_EQ(AllBytes(*indexed), AllBytes(*elements)) << mode;
    EXPECT_GT(calls.Painted(), 10);
  }
}
