#include <ZxCore3D/object/TFileStream.h>

#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/object/TMemoryStream.h>

#include "CommaLocale.h"
#include "object/FailingMalloc.h"
#include "object/Streams.h"

using namespace Zx3D;
using zx_test::Bytes;
using zx_test::Hex;
namespace fs = std::filesystem;

class TFileStreamTest : public testing::Test {
protected:
  void SetUp() override {
    m_Folder =
        fs::temp_directory_path() / ("zx_stream_" + std::to_string(getpid()) + "_" +
                                     testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(m_Folder);
  }
  void TearDown() override { fs::remove_all(m_Folder); }

  std::string Name(const char* name) const { return (m_Folder / name).string(); }

  std::string Put(const char* name, const std::string& content) const {
    std::ofstream(Name(name), std::ios::binary) << content;
    return Name(name);
  }

  static std::string Contents(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }

  fs::path m_Folder;
};

TEST_F(TFileStreamTest, AClosedStreamFailsEverywhere) {
  TFileStream stream;
  char byte = 'x';
  EXPECT_EQ(stream._Read(&byte, 1), 0u);
  EXPECT_EQ(stream._Write(&byte, 1), 0u);
  EXPECT_EQ(stream.GetPos(), 0);
  EXPECT_EQ(stream.GetPosE(), 0);
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_FALSE(stream.SetPos(0));
  EXPECT_FALSE(stream.Skip(0));
  EXPECT_FALSE(stream.IsEOS());
  EXPECT_FALSE(stream.SetEOS());
  EXPECT_FALSE(stream.SetSize(0));
  EXPECT_FALSE(stream.Close());
  EXPECT_FALSE(stream.ReadAll(&byte, 1));
  EXPECT_FALSE(stream.WriteAll(&byte, 1));
  EXPECT_TRUE(stream.ReadAll(&byte, 0));
  EXPECT_TRUE(stream.WriteAll(&byte, 0));
  EXPECT_FALSE(stream.SupportMap());
}

TEST_F(TFileStreamTest, OpenReads) {
  TFileStream stream;
  ASSERT_TRUE(stream.Open(Put("in", "abcdef")));
  EXPECT_EQ(stream.GetSize(), 6);
  EXPECT_EQ(stream.GetPos(), 0);
  EXPECT_FALSE(stream.IsEOS());
  char text[8] = {};
  EXPECT_TRUE(stream.ReadAll(text, 4));
  EXPECT_STREQ(text, "abcd");
  EXPECT_EQ(stream.GetPos(), 4);
  EXPECT_TRUE(stream.SetPos(1));
  EXPECT_TRUE(stream.Skip(3));
  EXPECT_EQ(stream.GetPos(), 4);
  EXPECT_EQ(stream._Read(text, 8), 2u);
  EXPECT_EQ(text[0], 'e');
  EXPECT_TRUE(stream.IsEOS());
  EXPECT_EQ(stream._Read(text, 8), 0u);
  EXPECT_FALSE(stream.ReadAll(text, 1));
  EXPECT_FALSE(stream.SetPos(-1));
  EXPECT_FALSE(stream.Skip(~0UL));
  char line[8];
  EXPECT_FALSE(stream.ReadLine(line, sizeof line, nullptr));
  EXPECT_TRUE(stream.Close());
  EXPECT_FALSE(stream.Close());
}

TEST_F(TFileStreamTest, OpenOfAMissingFileLeavesTheStreamClosed) {
  TFileStream stream;
  ASSERT_TRUE(stream.Open(Put("in", "abc")));
  EXPECT_FALSE(stream.Open(Name("missing")));
  EXPECT_FALSE(stream.Close());
  EXPECT_FALSE(stream.Open(std::string()));
  EXPECT_FALSE(stream.Open(std::string("a\0b", 3)));
  EXPECT_FALSE(stream.Open(m_Folder.string())); // a directory
  EXPECT_FALSE(stream.Create(Name("no/such/folder")));
  EXPECT_FALSE(stream.Close());
  EXPECT_FALSE(fs::exists(Name("missing")));
}

TEST_F(TFileStreamTest, CreateEmptiesAndWrites) {
  const std::string name = Put("out", "old contents");
  TFileStream stream;
  ASSERT_TRUE(stream.Create(name));
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_TRUE(stream.WriteAll("hello", 5));
  EXPECT_EQ(stream.GetPos(), 5);
  EXPECT_TRUE(stream.SetPos(1));
  EXPECT_EQ(stream._Write("E", 1), 1u);
  EXPECT_TRUE(stream.Close());
  EXPECT_EQ(Contents(name), "hEllo");
}

TEST_F(TFileStreamTest, TheDestructorFlushes) {
  const std::string name = Name("out");
  {
    TFileStream stream;
    ASSERT_TRUE(stream.Create(name));
    stream.WriteAll("hi", 2);
  }
  EXPECT_EQ(Contents(name), "hi");
}

TEST_F(TFileStreamTest, NamesAreUtf8) {
  const std::string name = Name("gr\xC3\xBC\xC3\x9F\x65");
  TFileStream stream;
  ASSERT_TRUE(stream.Create(name));
  EXPECT_TRUE(stream.WriteAll("x", 1));
  EXPECT_TRUE(stream.Close());
  EXPECT_TRUE(fs::exists(name));
}

// Names are bytes to the system; no locale has a say in what they are.
TEST_F(TFileStreamTest, NamesAreUtf8InEveryLocale) {
  const char* const names[] = {"gr\u00FC\u00DFe", "gru\u0308\u00DFe", "\u0416\u20AC\U0001D11E",
                               "\u65E5\u672C.x"};
  const auto check = [&](const std::string& locale) {
    for (const char* each : names) {
      const std::string name = Name((locale + each).c_str());
      TFileStream stream;
      ASSERT_TRUE(stream.Create(name)) << name;
      EXPECT_TRUE(stream.WriteAll("x", 1));
      EXPECT_TRUE(stream.Close());
      EXPECT_EQ(Contents(name), "x");
      EXPECT_TRUE(stream.Open(name));
      EXPECT_EQ(stream.GetSize(), 1);
      TMemoryStream memory;
      EXPECT_TRUE(memory.LoadFromFile(name));
      EXPECT_TRUE(memory.SaveToFile(name + "2"));
      EXPECT_EQ(Contents(name + "2"), "x");
    }
  };
  check("C");
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  check("comma");
}

// What has no positions says so by its results, and prints nothing.
TEST_F(TFileStreamTest, DevicesAreSilent) {
  const std::string pipe = Name("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int other = open(pipe.c_str(), O_RDWR | O_CLOEXEC); // so that no opening waits
  ASSERT_GE(other, 0);
  testing::internal::CaptureStderr();
  for (const std::string& name : {std::string("/dev/null"), std::string("/dev/zero"),
                                  std::string("/dev/full"), std::string("/dev/ptmx"), pipe}) {
    for (const bool write : {false, true}) {
      TFileStream stream;
      if (!(write ? stream.Create(name) : stream.Open(name))) {
        continue;
      }
      char byte = 'x';
      EXPECT_FALSE(stream.SetPos(0)) << name;
      EXPECT_FALSE(stream.SetPos(5)) << name;
      EXPECT_THROW(stream.SetPosE(5), TZxMessage) << name;
      EXPECT_FALSE(stream.Skip(0)) << name;
      EXPECT_FALSE(stream.Skip(5)) << name;
      EXPECT_FALSE(stream.SetSize(0)) << name;
      stream.SetEOS();
      stream.GetSize();
      stream.GetPos();
      stream.IsEOS();
      if (write) {
        stream._Write(&byte, 1);
      } else if (name == "/dev/zero") {
        EXPECT_EQ(stream._Read(&byte, 1), 1u);
        EXPECT_EQ(byte, 0);
        void* data = nullptr;
        stream.Unmap(stream.Map(0, 1, true, false, &data));
      }
      stream.Close();
    }
  }
  TMemoryStream memory;
  memory.WriteAll("abc", 3);
  memory.SaveToFile("/dev/null");
  memory.LoadFromFile("/dev/null");
  TFileStream file;
  ASSERT_TRUE(file.Open(Put("in", "abc")));
  EXPECT_FALSE(file.SetPos(LONG_MAX)); // further than a file can reach
  EXPECT_TRUE(file.SetPos(2));
  for (const unsigned long size : {~0UL, ~0UL - 1, ~0UL - 2, 0UL + LONG_MAX, LONG_MAX - 1UL}) {
    EXPECT_FALSE(file.Skip(size)) << size; // 2 and so many wrap, or pass the greatest position
    EXPECT_EQ(file.GetPos(), 2) << size;
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  close(other);
}

// From a position above 0 the sum of the two wraps.
TEST_F(TFileStreamTest, WritesThatWrapFailAndWriteNothing) {
  const std::string name = Name("out");
  TFileStream stream;
  ASSERT_TRUE(stream.Create(name));
  ASSERT_TRUE(stream.WriteAll("ab", 2));
  for (const unsigned long size : {~0UL, ~0UL - 1, 1UL + LONG_MAX}) {
    EXPECT_FALSE(stream.WriteAll("x", size)) << size;
    EXPECT_EQ(stream.GetPos(), 2) << size;
  }
  EXPECT_TRUE(stream.Close());
  EXPECT_EQ(Contents(name), "ab");
  ASSERT_TRUE(stream.Open(name));
  ASSERT_TRUE(stream.SetPos(1));
  char byte = 0;
  EXPECT_FALSE(stream.ReadAll(&byte, ~0UL));
  EXPECT_EQ(byte, 0);
}

TEST_F(TFileStreamTest, SetPosKeepsWhatWasWritten) {
  const std::string name = Name("out");
  TFileStream stream;
  ASSERT_TRUE(stream.Create(name));
  EXPECT_TRUE(stream.WriteAll("abcdef", 6));
  EXPECT_TRUE(stream.SetPos(2));
  EXPECT_TRUE(stream.WriteAll("XY", 2));
  EXPECT_EQ(stream.GetPos(), 4);
  EXPECT_TRUE(stream.SetPos(8)); // behind the end
  EXPECT_TRUE(stream.WriteAll("z", 1));
  EXPECT_TRUE(stream.SetPos(0));
  EXPECT_TRUE(stream.WriteAll("0", 1));
  EXPECT_TRUE(stream.Close());
  EXPECT_EQ(Contents(name), std::string("0bXYef\0\0z", 9));
}

TEST_F(TFileStreamTest, TheOtherModeAnswersMinusOneAndNoLoopTakesItForACount) {
  testing::internal::CaptureStderr();
  TFileStream stream;
  ASSERT_TRUE(stream.Open(Put("in", "abc")));
  EXPECT_EQ(stream._Write("x", 1), ~0UL);
  EXPECT_FALSE(stream.WriteAll("x", 1));
  ASSERT_TRUE(stream.Create(Name("out")));
  char byte = 0;
  EXPECT_EQ(stream._Read(&byte, 1), ~0UL);
  EXPECT_FALSE(stream.ReadAll(&byte, 1));
  void* data = nullptr;
  EXPECT_EQ(stream.Map(0, 1, true, false, &data), nullptr);
  EXPECT_FALSE(stream.SetPos(-5));
  EXPECT_FALSE(stream.Open(std::string("a\0b", 3)));
  EXPECT_FALSE(stream.Create(std::string()));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); // nothing is printed
}

TEST_F(TFileStreamTest, SetSizeAndSetEOS) {
  const std::string name = Name("out");
  TFileStream stream;
  ASSERT_TRUE(stream.Create(name));
  stream.WriteAll("abcdef", 6);
  EXPECT_TRUE(stream.SetSize(4));
  EXPECT_EQ(stream.GetPos(), 4); // was above
  EXPECT_EQ(stream.GetSize(), 4);
  stream.SetPos(1);
  EXPECT_TRUE(stream.SetSize(8));
  EXPECT_EQ(stream.GetPos(), 1); // was below
  EXPECT_EQ(stream.GetSize(), 8);
  EXPECT_FALSE(stream.SetSize(-1));
  stream.SetPos(3);
  EXPECT_TRUE(stream.SetEOS());
  EXPECT_TRUE(stream.Close());
  EXPECT_EQ(Contents(name), "abc");
  ASSERT_TRUE(stream.Open(name));
  EXPECT_FALSE(stream.SetEOS()); // a file that is open for reading
  EXPECT_EQ(stream.GetSize(), 3);
}

TEST_F(TFileStreamTest, MapsByCopying) {
  TFileStream stream;
  ASSERT_TRUE(stream.Open(Put("in", "abcdef")));
  void* data = nullptr;
  void* handle = stream.Map(2, 3, true, false, &data);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(std::memcmp(data, "cde", 3), 0);
  EXPECT_EQ(stream.GetPos(), 5);
  EXPECT_TRUE(stream.Unmap(handle));
  EXPECT_EQ(stream.Map(4, 3, true, false, &data), nullptr);
  EXPECT_EQ(stream.GetPos(), 5);
}

TEST_F(TFileStreamTest, LoadFromFileReplacesTheContents) {
  TMemoryStream stream;
  stream.WriteAll("0123456789", 10);
  EXPECT_FALSE(stream.LoadFromFile(Name("missing")));
  EXPECT_EQ(stream.GetSize(), 10);
  EXPECT_EQ(stream.GetPos(), 10);
  EXPECT_TRUE(stream.LoadFromFile(Put("in", "abc")));
  EXPECT_EQ(stream.GetPos(), 0);
  EXPECT_EQ(stream.GetSize(), 3);
  EXPECT_EQ(stream.GetCapacity(), 1039u);
  char text[4] = {};
  EXPECT_TRUE(stream.ReadAll(text, 3));
  EXPECT_STREQ(text, "abc");
  EXPECT_TRUE(stream.LoadFromFile(Put("empty", "")));
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_EQ(stream.GetPos(), 0);

  TMemoryStream fresh;
  const std::string large(100000, 'q');
  EXPECT_TRUE(fresh.LoadFromFile(Put("large", large)));
  EXPECT_EQ(fresh.GetCapacity(), 100000u); // exactly
  std::string back(100000, 0);
  EXPECT_TRUE(fresh.ReadAll(back.data(), back.size()));
  EXPECT_EQ(back, large);

  unsigned char block[2] = {1, 2};
  TMemoryStream attached(block, 2, false);
  EXPECT_FALSE(attached.LoadFromFile(Name("in")));
  EXPECT_EQ(attached.GetSize(), 2);
  EXPECT_EQ(block[0], 1);
  TMemoryStream room(block, 0, 2, false);
  EXPECT_TRUE(room.LoadFromFile(Put("two", "xy")));
  EXPECT_EQ(block[0], 'x');
}

TEST_F(TFileStreamTest, SaveToFileWritesAllWhateverThePosition) {
  const std::string name = Put("out", "something longer than that");
  TMemoryStream stream;
  stream.WriteAll("abcdef", 6);
  stream.SetPos(3);
  EXPECT_TRUE(stream.SaveToFile(name));
  EXPECT_EQ(Contents(name), "abcdef");
  EXPECT_EQ(stream.GetPos(), 3);
  TMemoryStream empty;
  EXPECT_TRUE(empty.SaveToFile(name));
  EXPECT_EQ(Contents(name), "");
  EXPECT_FALSE(stream.SaveToFile(Name("no/such/folder")));
}

TEST_F(TFileStreamTest, SaveToAFullDeviceIsFalse) {
  TMemoryStream stream;
  ASSERT_TRUE(stream.WriteAll(std::string(1000, 'x').data(), 1000));
  EXPECT_FALSE(stream.SaveToFile("/dev/full"));
}

TEST_F(TFileStreamTest, EveryFailingAllocationIsFalseAndLeaksNothing) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const std::string in = Put("in", std::string(5000, 'i'));
  { // what the file layer keeps for good is made here
    TMemoryStream warm;
    ASSERT_TRUE(warm.LoadFromFile(in));
  }
  unsigned long failed = 0;
  for (unsigned long at = 1;; ++at) {
    TMemoryStream stream;
    bool loaded = false;
    bool came = false;
    bool thrown = false;
    long left = 0;
    {
      zx_test::TMallocWatch watch(at);
      try {
        loaded = stream.LoadFromFile(in);
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      stream.Close();
      left = watch.LiveBlocks();
      came = watch.Failed();
    }
    EXPECT_FALSE(thrown) << at;
    EXPECT_LE(left, 0) << at;
    if (!came) {
      EXPECT_TRUE(loaded);
      break;
    }
    failed += loaded ? 0 : 1;
  }
  EXPECT_GT(failed, 0u);
}

TEST_F(TFileStreamTest, EveryFailingAllocationOfASaveIsFalseOrWritesAll) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const std::string out = Name("out");
  TMemoryStream stream;
  ASSERT_TRUE(stream.WriteString("abcdefgh", ~0UL));
  // The file layer makes a record of its own for each thread at the first use, and does not survive
  // failing in that.
  ASSERT_TRUE(stream.SaveToFile(out));
  for (unsigned long at = 1;; ++at) {
    bool saved = false;
    bool came = false;
    bool thrown = false;
    long left = 0;
    {
      zx_test::TMallocWatch watch(at);
      try {
        saved = stream.SaveToFile(out);
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      left = watch.LiveBlocks();
      came = watch.Failed();
    }
    EXPECT_FALSE(thrown) << at;
    EXPECT_LE(left, 0) << at;
    if (saved) {
      EXPECT_EQ(Contents(out), "abcdefgh") << at;
    }
    if (!came) {
      EXPECT_TRUE(saved);
      break;
    }
  }
}

TEST_F(TFileStreamTest, ADeviceWithoutPositionsStaysWhereItIs) {
  const std::string pipe = Name("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK); // so that the writer need not wait
  ASSERT_GE(reader, 0);
  TFileStream stream;
  ASSERT_TRUE(stream.Create(pipe));
  EXPECT_TRUE(stream.WriteAll("abc", 3));
  EXPECT_FALSE(stream.SetPos(0));
  EXPECT_FALSE(stream.SetPos(3));
  EXPECT_FALSE(stream.SetSize(1));
  EXPECT_TRUE(stream.WriteAll("d", 1));
  EXPECT_TRUE(stream.Close());
  char got[8] = "";
  EXPECT_EQ(read(reader, got, sizeof got), 4);
  EXPECT_STREQ(got, "abcd");
  close(reader);
}

// What is still to be written must be written before the position moves.
TEST_F(TFileStreamTest, APositionIsNotLeftBeforeItsBytesAreWritten) {
  const std::string name = Name("limited");
  const auto old = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit small = {4, limit.rlim_max};
  TFileStream stream;
  ASSERT_TRUE(stream.Create(name));
  EXPECT_TRUE(stream.WriteAll("abcdefgh", 8)); // waits in the buffer
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  EXPECT_FALSE(stream.SetPos(0));
  EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  std::signal(SIGXFSZ, old);
  stream.Close();
}
