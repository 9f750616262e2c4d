// Copies of one reference variant live on several threads: the count in the object is atomic.

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/object/TAttributes.h>
#include <ZxCore3D/object/TVariant.h>

using namespace Zx3D;

namespace {

std::atomic<int> s_Destroyed{0};

class TCounted : public zx::TRef {
public:
  ~TCounted() override { ++s_Destroyed; }
};

constexpr int kThreads = 4;
constexpr int kRounds = 20000;

/// Copies, moves, sets and lets go; each thread works on variants of its own.
void CopyAndLetGo(const TVariant& source) {
  std::vector<TVariant> copies(4);
  TAttributes list;
  for (int round = 0; round < kRounds; ++round) {
    TVariant copy(source);
    copies[static_cast<std::size_t>(round % 4)] = copy;
    TVariant moved(std::move(copy));
    copies[static_cast<std::size_t>((round + 1) % 4)].Set(source.GetRef());
    moved.Swap(copies[0]);
    if (round % 16 == 0) {
      list.SetValue("ref", source);
      list.RemoveValue("ref");
      copies[2].Reset();
      copies[3].Set(round);
    }
  }
}

TEST(VariantThreads, CopiesOfAReferenceKeepItsCount) {
  s_Destroyed = 0;
  TCounted* const ref = new TCounted;
  {
    const TVariant source(ref);
    std::vector<TVariant> sources(kThreads, source);
    EXPECT_EQ(ref->GetRefCount(), 2u + kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back(CopyAndLetGo, std::cref(sources[static_cast<std::size_t>(i)]));
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    EXPECT_EQ(ref->GetRefCount(), 2u + kThreads);
  }
  EXPECT_EQ(ref->GetRefCount(), 1u);
  EXPECT_EQ(s_Destroyed, 0);
  ref->Release();
  EXPECT_EQ(s_Destroyed, 1);
}

TEST(VariantThreads, TheLastOfTheThreadsDestroysTheObjectOnce) {
  s_Destroyed = 0;
  for (int round = 0; round < 200; ++round) {
    TCounted* const ref = new TCounted;
    std::vector<TVariant> held(kThreads, TVariant(ref));
    ref->Release();
    std::vector<std::thread> threads;
    for (TVariant& variant : held) {
      threads.emplace_back([&variant] { variant.Reset(); });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    ASSERT_EQ(s_Destroyed, round + 1);
  }
}

} // namespace
