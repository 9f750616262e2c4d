#include <ZxCore3D/object/TVariant.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Zx3D::TVariant;

int s_Alive = 0;

class TCounted : public zx::TRef {
public:
  TCounted() { ++s_Alive; }
  ~TCounted() override {
    --s_Alive;
    if (Watched != nullptr) {
      SeenTag = Watched->Type;
      SeenRef = Watched->GetRef() != nullptr;
    }
  }
  TVariant* Watched = nullptr;
  TVariant Inner;
  static inline unsigned int SeenTag = 99;
  static inline bool SeenRef = true;
};

TEST(TVariantReference, HoldsOneCount) {
  TCounted* const ref = new TCounted;
  {
    TVariant v(ref);
    EXPECT_EQ(v.Type, 14U);
    EXPECT_EQ(v.GetRef(), ref);
    EXPECT_EQ(ref->GetRefCount(), 2U) << "GetRef adds none";
    EXPECT_TRUE(v.Set(ref));
    EXPECT_EQ(ref->GetRefCount(), 2U) << "already held";
    TVariant copy(v);
    EXPECT_EQ(ref->GetRefCount(), 3U);
    TVariant assigned;
    assigned.Set("a rather long text that lives on the heap", ~0UL);
    assigned = v;
    EXPECT_EQ(ref->GetRefCount(), 4U);
    copy.Reset();
    EXPECT_EQ(ref->GetRefCount(), 3U);
    EXPECT_EQ(copy.Type, 0U);
    EXPECT_EQ(copy.GetRef(), nullptr);
    assigned.Set(5);
    EXPECT_EQ(ref->GetRefCount(), 2U);
    v.Swap(copy);
    EXPECT_EQ(ref->GetRefCount(), 2U);
    EXPECT_EQ(copy.GetRef(), ref);
    EXPECT_EQ(v.Type, 0U);
  }
  EXPECT_EQ(ref->GetRefCount(), 1U) << "the destructors let go";
  EXPECT_EQ(s_Alive, 1);
  ref->Release();
  EXPECT_EQ(s_Alive, 0);
}

TEST(TVariantReference, ANullPointerEmpties) {
  const TVariant none(static_cast<zx::TRef*>(nullptr));
  EXPECT_EQ(none.Type, 0U);
  TCounted* const ref = new TCounted;
  TVariant v(ref);
  ref->Release();
  EXPECT_TRUE(v.Set(static_cast<zx::TRef*>(nullptr)));
  EXPECT_EQ(v.Type, 0U);
  EXPECT_EQ(s_Alive, 0);
  v.Set(7);
  EXPECT_TRUE(v.Set(nullptr));
  EXPECT_EQ(v.Type, 0U);
}

TEST(TVariantReference, AnotherObjectTakesTheFirstOnesPlace) {
  TCounted* const first = new TCounted;
  TCounted* const second = new TCounted;
  TVariant v(first);
  first->Release();
  EXPECT_TRUE(v.Set(second));
  EXPECT_EQ(v.GetRef(), second);
  EXPECT_EQ(s_Alive, 1);
  EXPECT_EQ(second->GetRefCount(), 2U);
  second->Release();
}

TEST(TVariantReference, KeepsTheCountFieldAsItWas) {
  TCounted* const ref = new TCounted;
  TVariant v;
  v.Set("abc", 3);
  v.Set(ref);
  EXPECT_EQ(v.Count, 3U);
  ref->Release();
}

TEST(TVariantReference, EverySetterLetsGo) {
  const int ints[2] = {1, 2};
  const float floats[2] = {1, 2};
  const std::string text(50, 'x');
  const auto check = [](auto set) {
    TCounted* const ref = new TCounted;
    TVariant v(ref);
    ref->Release();
    EXPECT_EQ(s_Alive, 1);
    EXPECT_TRUE(set(v));
    EXPECT_EQ(s_Alive, 0);
    EXPECT_NE(v.Type, 14U);
  };
  check([](TVariant& v) { return v.Set(true); });
  check([](TVariant& v) { return v.Set(1.5); });
  check([](TVariant& v) { return v.Set("short", 5); });
  check([&](TVariant& v) { return v.Set(text); });
  check([&](TVariant& v) { return v.SetVector(ints, 2); });
  check([&](TVariant& v) { return v.SetVector(nullptr, 2); });
  check([&](TVariant& v) { return v.SetArray(floats, 2); });
  check([](TVariant& v) { return v.SetArray(DATA_TYPE_INT8, 500, nullptr, 0); });
  check([](TVariant& v) { return v.FromString("<none>"); });
  check([](TVariant& v) { return v.FromString("int32(5)"); });
  check([](TVariant& v) { return v = TVariant(), true; });
}

// The object's destructor meets a variant that is empty already.
TEST(TVariantReference, IsEmptyBeforeItLetsGo) {
  TCounted* const ref = new TCounted;
  TVariant v(ref);
  ref->Watched = &v;
  ref->Release();
  v.Reset();
  EXPECT_EQ(TCounted::SeenTag, 0U);
  EXPECT_FALSE(TCounted::SeenRef);
}

// An object that only a variant inside it holds goes with that variant's Reset.
TEST(TVariantReference, MayBeTheLastHoldOnItsOwnObject) {
  for (const bool null : {false, true}) {
    TCounted* const ref = new TCounted;
    ref->Inner.Set(ref);
    ref->Release();
    EXPECT_EQ(s_Alive, 1);
    if (null) {
      ref->Inner.Set(static_cast<zx::TRef*>(nullptr));
    } else {
      ref->Inner.Reset();
    }
    EXPECT_EQ(s_Alive, 0);
  }
}

// The source of a copy may go with what the target lets go of.
TEST(TVariantReference, TakesValuesOutOfTheObjectItHolds) {
  const std::vector<double> reals(20, 0.5);
  const int ints[] = {1, 2, 3};
  std::vector<TVariant> values(7);
  values[0].Set(5);
  values[1].Set("short", 5);
  values[2].Set(std::string(80, 'y'));
  values[3].SetArray(reals.data(), 2);
  values[4].SetArray(reals.data(), 20);
  values[5].SetVector(ints, 3);
  for (const TVariant& value : values) {
    TCounted* const ref = new TCounted;
    ref->Inner = value;
    TVariant v(ref);
    ref->Release();
    v = ref->Inner;
    EXPECT_EQ(s_Alive, 0);
    EXPECT_EQ(v.Type, value.Type);
    EXPECT_EQ(v.ToString(), value.ToString());
    EXPECT_EQ(v.GetArrayDataSize(), value.GetArrayDataSize());
  }
  TCounted* const ref = new TCounted;
  ref->Inner.Set("inside", 6);
  TVariant v(ref);
  ref->Release();
  EXPECT_TRUE(v.Set(ref->Inner.GetStringPtr(), 6));
  EXPECT_STREQ(v.GetStringPtr(), "inside");
}

} // namespace
