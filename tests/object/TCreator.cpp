#include <ZxCore3D/object/TCreator.h>

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/object/TZxClassFactory.h>

using namespace Zx3D;

namespace {

class TNamedCreator : public TCreator {
public:
  explicit TNamedCreator(const char* name, TCreator* parent = nullptr) : TCreator(name, parent) {}
  zx::TRef* CreateInstance() const override { return new zx::TRef; }
};

// Two creators that can be each other's parent.
class TRingCreator : public TCreator {
public:
  explicit TRingCreator(TCreator* parent) : TCreator("ring", parent) {}
  zx::TRef* CreateInstance() const override { return nullptr; }
  void Become(const TRingCreator& other) { *this = other; }
};

} // namespace

TEST(Creator, TheLibraryRegistersNothing) {
  EXPECT_EQ(GetCreatorByClassName("TSelfCreatingRef"), nullptr);
  EXPECT_EQ(CreateByClassName("TSelfCreatingRef"), nullptr);
  EXPECT_STREQ(TSelfCreatingRef::s_Creator.GetClassName(), "TSelfCreatingRef");
  EXPECT_EQ(TSelfCreatingRef::s_Creator.GetParent(), nullptr);
}

TEST(Creator, SelfCreatingRefsAreMadeByName) {
  ASSERT_TRUE(RegisterCreator(&TSelfCreatingRef::s_Creator));
  EXPECT_EQ(GetCreatorByClassName("TSelfCreatingRef"), &TSelfCreatingRef::s_Creator);
  zx::TRef* object = CreateByClassName("TSelfCreatingRef");
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->GetRefCount(), 1u);
  const auto* self = dynamic_cast<TSelfCreatingRef*>(object);
  ASSERT_NE(self, nullptr);
  EXPECT_EQ(self->GetCreator(), &TSelfCreatingRef::s_Creator);
  EXPECT_EQ(self->GetClassName(), TSelfCreatingRef::s_Creator.GetClassName());
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_TRUE(UnregisterCreator(&TSelfCreatingRef::s_Creator));
  EXPECT_EQ(CreateByClassName("TSelfCreatingRef"), nullptr);
}

TEST(Creator, ASelfCreatorTakesItsParent) {
  TNamedCreator parent("parent");
  TSelfCreatingRef::TSelfCreator child(&parent);
  EXPECT_STREQ(child.GetClassName(), "TSelfCreatingRef");
  EXPECT_EQ(child.GetParent(), &parent);
  EXPECT_TRUE(child.DescendOf(&parent));
  TSelfCreatingRef* object = child.CreateInstance();
  EXPECT_EQ(object->GetRefCount(), 1u);
  EXPECT_EQ(object->GetCreator(), &TSelfCreatingRef::s_Creator);
  object->Release();
}

TEST(Creator, TheFirstRegistrationStays) {
  TNamedCreator first("same");
  TNamedCreator second("same");
  EXPECT_FALSE(RegisterCreator(nullptr));
  EXPECT_TRUE(RegisterCreator(&first));
  EXPECT_FALSE(RegisterCreator(&first));
  EXPECT_FALSE(RegisterCreator(&second));
  EXPECT_EQ(GetCreatorByClassName("same"), &first);
  // The name decides, not the creator.
  EXPECT_TRUE(UnregisterCreator(&second));
  EXPECT_EQ(GetCreatorByClassName("same"), nullptr);
  EXPECT_FALSE(UnregisterCreator(&first));
  EXPECT_FALSE(UnregisterCreator(nullptr));
}

TEST(Creator, NamesHaveUpTo63Characters) {
  const std::string longest(63, 'n');
  TNamedCreator fits(longest.c_str());
  EXPECT_EQ(fits.GetClassName(), longest);
  TNamedCreator cut((longest + "x").c_str());
  EXPECT_EQ(cut.GetClassName(), longest);
  ASSERT_TRUE(RegisterCreator(&fits));
  EXPECT_FALSE(RegisterCreator(&cut));
  EXPECT_EQ(GetCreatorByClassName(longest.c_str()), &fits);
  EXPECT_EQ(GetCreatorByClassName((longest + "x").c_str()), nullptr);
  EXPECT_TRUE(UnregisterCreator(&fits));
  TNamedCreator nameless(nullptr);
  EXPECT_STREQ(nameless.GetClassName(), "");
}

TEST(Creator, NullNamesRaiseLogicError) {
  for (auto* call :
       {+[] { GetCreatorByClassName(nullptr); }, +[] { CreateByClassName(nullptr); }}) {
    try {
      call();
      FAIL();
    } catch (const std::logic_error& error) {
      EXPECT_STREQ(error.what(), "basic_string::_M_construct null not valid");
    }
  }
}

TEST(Creator, DescentIsWalkedToTheRoot) {
  TNamedCreator root("root");
  TNamedCreator middle("middle", &root);
  TNamedCreator leaf("leaf", &middle);
  TNamedCreator sibling("sibling", &middle);
  EXPECT_TRUE(leaf.DescendOf(&leaf));
  EXPECT_TRUE(leaf.DescendOf(&middle));
  EXPECT_TRUE(leaf.DescendOf(&root));
  EXPECT_FALSE(leaf.DescendOf(&sibling));
  EXPECT_FALSE(root.DescendOf(&leaf));
  EXPECT_FALSE(leaf.DescendOf(nullptr));
}

TEST(Creator, ARingOfParentsEnds) {
  TNamedCreator stranger("stranger");
  for (int length = 1; length <= 9; ++length) {
    std::vector<TRingCreator> ring(static_cast<std::size_t>(length), TRingCreator(nullptr));
    for (int i = 0; i < length; ++i) {
      ring[static_cast<std::size_t>(i)].Become(
          TRingCreator(&ring[static_cast<std::size_t>((i + 1) % length)]));
    }
    TNamedCreator tail("tail", &ring[0]);
    TNamedCreator tip("tip", &tail);
    EXPECT_FALSE(tip.DescendOf(&stranger)) << length;
    for (const TRingCreator& member : ring) {
      EXPECT_TRUE(tip.DescendOf(&member)) << length;
      EXPECT_FALSE(member.DescendOf(&tip)) << length;
    }
  }
}

TEST(Creator, IsARecordWithOneVirtualOperation) {
  static_assert(std::is_trivially_destructible_v<TNamedCreator>);
  EXPECT_EQ(sizeof(TNamedCreator), sizeof(void*) + sizeof(TCreator*) + 64);
  EXPECT_EQ(sizeof(TSelfCreatingRef), sizeof(zx::TRef));
}

TEST(ClassFactory, NumbersFromOneAndNeverReuses) {
  TNamedCreator one("one");
  TNamedCreator two("two");
  TZxClassFactory factory;
  EXPECT_FALSE(factory.RemoveCreator(&one));
  EXPECT_FALSE(factory.RemoveCreator(nullptr));
  EXPECT_FALSE(factory.AddCreator(nullptr));
  EXPECT_TRUE(factory.AddCreator(&one));
  EXPECT_TRUE(factory.AddCreator(&two));
  EXPECT_FALSE(factory.AddCreator(&one));
  EXPECT_TRUE(factory.RemoveCreator(&one));
  EXPECT_FALSE(factory.RemoveCreator(&one));
  EXPECT_TRUE(factory.AddCreator(&one));
  EXPECT_FALSE(factory.AddCreator(&one));
}

TEST(ClassFactory, KeepsIdsInItsRecord) {
  // The record as it lies in memory: next id, creator to id, id to creator.
  struct TRecord {
    unsigned long NextId;
    std::map<TCreator*, unsigned long> ByCreator;
    std::map<unsigned long, TCreator*> ById;
  };
  static_assert(sizeof(TRecord) == sizeof(TZxClassFactory));
  TNamedCreator one("one");
  TNamedCreator two("two");
  TZxClassFactory factory;
  const void* const volatile place = &factory;
  const auto& record = *static_cast<const TRecord*>(place);
  EXPECT_EQ(record.NextId, 1u);
  factory.AddCreator(&one);
  factory.AddCreator(&two);
  EXPECT_EQ(record.ByCreator.at(&one), 1u);
  EXPECT_EQ(record.ByCreator.at(&two), 2u);
  factory.RemoveCreator(&one);
  EXPECT_EQ(record.ByCreator.count(&one), 0u);
  EXPECT_EQ(record.ById.at(1), &one);
  EXPECT_EQ(record.NextId, 3u);
  factory.AddCreator(&one);
  EXPECT_EQ(record.ByCreator.at(&one), 3u);
  EXPECT_EQ(record.ById.at(1), &one);
  EXPECT_EQ(record.ById.at(3), &one);
  EXPECT_EQ(record.NextId, 4u);
}

namespace {

bool s_AskAtExit = false;

// Constructed before the registry, and so destroyed after it.
struct TLast {
  ~TLast() {
    if (s_AskAtExit) {
      static TNamedCreator creator("kept");
      const bool refused = !UnregisterCreator(&creator) && !RegisterCreator(&creator) &&
                           GetCreatorByClassName("kept") == nullptr &&
                           CreateByClassName("kept") == nullptr;
      std::_Exit(refused ? 7 : 8);
    }
  }
};
__attribute__((init_priority(101))) TLast s_Last;

} // namespace

TEST(CreatorDeathTest, NothingIsFoundAfterTheRegistrysEndAtExit) {
  EXPECT_EXIT(
      {
        static TNamedCreator kept("kept");
        s_AskAtExit = RegisterCreator(&kept);
        std::exit(0);
      },
      testing::ExitedWithCode(7), "");
}
