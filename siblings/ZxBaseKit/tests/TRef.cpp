#include <ZxBaseKit/TRef.h>

#include <thread>
#include <vector>

#include <boost/uuid/uuid.hpp>
#include <gtest/gtest.h>

namespace {

class TWatched : public zx::TRef {
public:
  explicit TWatched(int* deleted) : m_Deleted(deleted) {}
  ~TWatched() override { ++*m_Deleted; }

private:
  int* m_Deleted;
};

} // namespace

TEST(TRef, StartsWithOneAndGoesWithTheLastRelease) {
  int deleted = 0;
  auto* object = new TWatched(&deleted);
  EXPECT_EQ(object->GetRefCount(), 1u);
  EXPECT_EQ(object->AddRef(), 2u);
  EXPECT_EQ(object->AddRef(), 3u);
  EXPECT_EQ(object->Release(), 2u);
  EXPECT_EQ(object->Release(), 1u);
  EXPECT_EQ(deleted, 0);
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_EQ(deleted, 1);
}

TEST(TRef, ACopyIsAnObjectOfItsOwn) {
  int deleted = 0;
  auto* object = new TWatched(&deleted);
  object->AddRef();
  auto* copy = new TWatched(*object);
  EXPECT_EQ(copy->GetRefCount(), 1u);
  *copy = *object;
  EXPECT_EQ(copy->GetRefCount(), 1u);
  copy->Release();
  object->Release();
  object->Release();
  EXPECT_EQ(deleted, 2);
}

TEST(TRef, KnowsNoInterface) {
  auto* object = new zx::TRef;
  void* out = object;
  EXPECT_FALSE(object->QueryInterface(boost::uuids::uuid(), &out));
  EXPECT_EQ(out, nullptr);
  EXPECT_FALSE(object->QueryInterface(boost::uuids::uuid(), nullptr));
  EXPECT_EQ(object->GetRefCount(), 1u);
  object->Release();
}

TEST(TRef, CountsAcrossThreads) {
  int deleted = 0;
  auto* object = new TWatched(&deleted);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    object->AddRef();
    threads.emplace_back([object] {
      for (int round = 0; round < 20000; ++round) {
        object->AddRef();
        object->Release();
      }
      object->Release();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(object->GetRefCount(), 1u);
  EXPECT_EQ(deleted, 0);
  object->Release();
  EXPECT_EQ(deleted, 1);
}
