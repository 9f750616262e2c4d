// Files and devices that fail under the library: a disk that is full, a file that shrinks while it
// is read, a descriptor that the host has closed, signals while a pipe is read.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/object/TFileStream.h>
#include <ZxCore3D/object/TMemoryStream.h>
#include <ZxCore3D/object/TObjectReader.h>
#include <ZxCore3D/object/TObjectWriter.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>
#include <ZxPixelKit/TDataSurface.h>

using namespace Zx3D;
namespace fs = std::filesystem;

namespace {

class HostileFiles : public testing::Test {
protected:
  void SetUp() override {
    m_Folder =
        fs::temp_directory_path() / ("zx_hostile_" + std::to_string(getpid()) + "_" +
                                     testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(m_Folder);
  }
  void TearDown() override { fs::remove_all(m_Folder); }

  std::string Name(const std::string& name) const { return (m_Folder / name).string(); }

  static void Put(const std::string& name, const std::vector<char>& bytes) {
    std::ofstream(name, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }

  /// Bytes that tell their place.
  static std::vector<char> Counting(std::size_t size) {
    std::vector<char> bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
      bytes[i] = static_cast<char>(i * 7 + i / 251);
    }
    return bytes;
  }

  /// A surface whose compressed form is no smaller than a tenth of it.
  static void MakeNoise(TDataSurface* surface, DATA_TYPE type, int side) {
    ASSERT_TRUE(surface->Create(side, side, DATA_FORMAT_RGB, type, 3));
    std::uint32_t state = 1;
    for (unsigned long i = 0; i < surface->DataSize; ++i) {
      state = state * 1664525u + 1013904223u;
      surface->Data[i] =
          static_cast<std::uint8_t>(type == DATA_TYPE_FLOAT && i % 4 == 3 ? 0x3F : state >> 24);
    }
  }

  /// Ends with 0 if `body` is true in a process of its own.
  static void InAProcess(const std::function<bool()>& body) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      _exit(body() ? 0 : 1);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
  }

  fs::path m_Folder;
};

constexpr const char* kEndings[] = {".png", ".bmp", ".tga", ".jpg", ".hdr"};

DATA_TYPE TypeOf(const std::string& ending) {
  return ending == ".hdr" ? DATA_TYPE_FLOAT : DATA_TYPE_UINT8;
}

// --- A full disk

// What does not fit is told at the latest when the stream is closed.
TEST_F(HostileFiles, AFullDiskIsToldToWhoWrites) {
  for (const std::size_t size : {1ul, 1000ul, 100000ul, 5000000ul}) {
    const std::vector<char> bytes = Counting(size);
    TFileStream stream;
    ASSERT_TRUE(stream.Create("/dev/full"));
    const bool written = stream.WriteAll(bytes.data(), bytes.size());
    EXPECT_FALSE(written && stream.Close()) << size;
    stream.Close();

    TFileStream other;
    ASSERT_TRUE(other.Create("/dev/full"));
    TObjectWriter writer(&other, false);
    STORE_BLOCK block;
    bool done = writer.WriteBlockBegin(&block);
    done = done && writer.WriteString(std::string(size, 't')) && writer.WriteBlockEnd(&block);
    EXPECT_FALSE(done && other.Close()) << size;
    TMemoryStream memory;
    ASSERT_TRUE(memory.WriteAll(bytes.data(), bytes.size()));
    EXPECT_FALSE(memory.SaveToFile("/dev/full")) << size;
    EXPECT_EQ(static_cast<long>(size), memory.GetSize()) << "what it holds stays";
  }
}

TEST_F(HostileFiles, AnImageOnAFullDisk) {
  for (const std::string ending : kEndings) {
    for (const int side : {1, 200}) {
      SCOPED_TRACE(ending + ", " + std::to_string(side));
      TDataSurface surface;
      MakeNoise(&surface, TypeOf(ending), side);
      const std::string name = Name("full" + ending);
      fs::create_symlink("/dev/full", name);
      TZxMessage reason;
      EXPECT_FALSE(SaveImage(name, nullptr, surface, &reason));
      EXPECT_EQ(std::string(std::strerror(ENOSPC)), reason.GetText());
      EXPECT_TRUE(fs::exists("/dev/full")) << "a device is not removed";
      fs::remove(name);
    }
  }
}

// A plain file that could not be completed is removed; a stream says so when it is closed.
TEST_F(HostileFiles, AFileThatMayNotGrow) {
  for (const std::string ending : kEndings) {
    SCOPED_TRACE(ending);
    TDataSurface surface;
    MakeNoise(&surface, TypeOf(ending), 200);
    const std::string name = Name("limited" + ending);
    InAProcess([&] {
      std::signal(SIGXFSZ, SIG_IGN);
      const rlimit limit = {4096, 4096};
      return setrlimit(RLIMIT_FSIZE, &limit) == 0 && !SaveImage(name, nullptr, surface);
    });
    EXPECT_FALSE(fs::exists(name));
  }
  const std::string name = Name("limited");
  InAProcess([&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {4096, 4096};
    const std::vector<char> bytes = Counting(10000);
    TFileStream stream;
    return setrlimit(RLIMIT_FSIZE, &limit) == 0 && stream.Create(name) &&
           !(stream.WriteAll(bytes.data(), bytes.size()) && stream.Close());
  });
  EXPECT_LE(fs::file_size(name), 4096u);
}

// --- A file that shrinks

TEST_F(HostileFiles, AStreamOfAFileThatShrinks) {
  const std::vector<char> bytes = Counting(200000);
  const std::string name = Name("shrinks");
  for (const long left : {0l, 5l, 10l, 60000l, 100009l}) {
    Put(name, bytes);
    TFileStream stream;
    ASSERT_TRUE(stream.Open(name));
    std::vector<char> got(200000);
    ASSERT_TRUE(stream.ReadAll(got.data(), 10));
    ASSERT_EQ(0, truncate(name.c_str(), left));
    EXPECT_FALSE(stream.ReadAll(got.data() + 10, 100000)) << "the end comes before";
    EXPECT_EQ(left, stream.GetSize());
    // What came is what was there, and nothing of it is made up.
    const auto known = static_cast<std::size_t>(std::max(left, 10l));
    EXPECT_TRUE(std::equal(got.begin(), got.begin() + static_cast<long>(known), bytes.begin()));
    EXPECT_FALSE(stream.ReadAll(got.data(), 200000));
    EXPECT_TRUE(stream.Close());
  }
}

TEST_F(HostileFiles, AReaderOfAFileThatShrinks) {
  const std::string name = Name("object");
  {
    TFileStream stream;
    ASSERT_TRUE(stream.Create(name));
    TObjectWriter writer(&stream, false);
    ASSERT_TRUE(writer.WriteString("first"));
    ASSERT_TRUE(writer.WriteString(std::string(500000, 'l')));
    ASSERT_TRUE(stream.Close());
  }
  TFileStream stream;
  ASSERT_TRUE(stream.Open(name));
  TObjectReader reader(&stream, false);
  std::string text;
  ASSERT_TRUE(reader.ReadString(&text));
  ASSERT_EQ(0, truncate(name.c_str(), 40000));
  EXPECT_FALSE(reader.ReadString(&text));
  EXPECT_EQ("first", text);
}

// Another process shortens and restores the file all the time: what is loaded is a beginning of it,
// or nothing.
TEST_F(HostileFiles, LoadingWhileTheFileChangesItsSize) {
  const std::vector<char> bytes = Counting(300000);
  const std::string name = Name("changes");
  Put(name, bytes);
  TDataSurface surface;
  MakeNoise(&surface, DATA_TYPE_UINT8, 64);
  const std::string picture = Name("changes.png");
  ASSERT_TRUE(SaveImage(picture, nullptr, surface));
  std::vector<char> png(fs::file_size(picture));
  std::ifstream(picture, std::ios::binary).read(png.data(), static_cast<long>(png.size()));

  std::atomic<bool> stop{false};
  std::thread other([&] {
    const int file = open(name.c_str(), O_WRONLY);
    const int image = open(picture.c_str(), O_WRONLY);
    for (long i = 0; !stop; ++i) {
      const long cut = i * 7919 % 300000;
      EXPECT_EQ(0, ftruncate(file, cut));
      EXPECT_GT(pwrite(file, bytes.data() + cut, bytes.size() - static_cast<std::size_t>(cut), cut),
                0);
      const long part = i * 7919 % static_cast<long>(png.size());
      EXPECT_EQ(0, ftruncate(image, part));
      EXPECT_GT(pwrite(image, png.data() + part, png.size() - static_cast<std::size_t>(part), part),
                0);
    }
    close(file);
    close(image);
  });
  int loaded = 0;
  for (int i = 0; i < 300; ++i) {
    TMemoryStream memory;
    if (memory.LoadFromFile(name)) {
      std::vector<char> got(static_cast<std::size_t>(memory.GetSize()));
      ASSERT_LE(got.size(), bytes.size());
      ASSERT_TRUE(memory.ReadAll(got.data(), got.size()));
      // A hole that the writer has not filled yet reads as zeros; no byte is anything else.
      for (std::size_t k = 0; k < got.size(); ++k) {
        ASSERT_TRUE(got[k] == bytes[k] || got[k] == 0) << k;
      }
      ++loaded;
    }
    TDataSurface back;
    if (LoadImage(picture, nullptr, &back)) {
      ASSERT_EQ(surface.DataSize, back.DataSize);
      ASSERT_EQ(0, std::memcmp(surface.Data, back.Data, back.DataSize));
    }
  }
  stop = true;
  other.join();
  EXPECT_GT(loaded, 0);
}

// --- A descriptor that is closed behind the library's back

std::set<int> OpenDescriptors() {
  std::set<int> open;
  for (int i = 0; i < 256; ++i) {
    if (fcntl(i, F_GETFD) >= 0) {
      open.insert(i);
    }
  }
  return open;
}

TEST_F(HostileFiles, ADescriptorThatTheHostHasClosed) {
  const std::vector<char> bytes = Counting(1000000);
  const std::string name = Name("closed");
  Put(name, bytes);
  for (const bool write : {false, true}) {
    SCOPED_TRACE(write);
    const std::set<int> before = OpenDescriptors();
    TFileStream stream;
    ASSERT_TRUE(write ? stream.Create(name) : stream.Open(name));
    std::set<int> after = OpenDescriptors();
    for (const int known : before) {
      after.erase(known);
    }
    ASSERT_EQ(1u, after.size());
    close(*after.begin());
    std::vector<char> got(bytes.size());
    if (write) {
      EXPECT_FALSE(stream.WriteAll(bytes.data(), bytes.size()));
    } else {
      EXPECT_FALSE(stream.ReadAll(got.data(), got.size()));
      EXPECT_FALSE(stream.SetPos(10));
    }
    stream.Close();
    EXPECT_TRUE(write ? stream.Create(name) : stream.Open(name)) << "and can be opened again";
  }
}

// A host that runs without standard input, output and error: files get their numbers.
TEST_F(HostileFiles, WithoutStandardStreams) {
  const std::vector<char> bytes = Counting(50000);
  const std::string name = Name("numbers");
  const std::string picture = Name("numbers.png");
  TDataSurface surface;
  MakeNoise(&surface, DATA_TYPE_UINT8, 20);
  InAProcess([&] {
    for (int i = 0; i < 3; ++i) {
      close(i);
    }
    TFileStream out;
    std::vector<char> got(bytes.size());
    if (!out.Create(name) || !out.WriteAll(bytes.data(), bytes.size()) || !out.Close()) {
      return false;
    }
    TFileStream in;
    TDataSurface back;
    return in.Open(name) && in.ReadAll(got.data(), got.size()) && got == bytes && in.Close() &&
           SaveImage(picture, nullptr, surface) && LoadImage(picture, nullptr, &back) &&
           std::memcmp(surface.Data, back.Data, back.DataSize) == 0;
  });
}

// --- Signals

std::atomic<int> s_Signals{0};

/// While it lives, a signal comes each millisecond whose handler does not have calls restarted. It
/// goes to the thread that made this.
class TSignals {
public:
  TSignals() {
    struct sigaction action = {};
    action.sa_handler = [](int) { ++s_Signals; };
    sigaction(SIGUSR1, &action, &m_Before);
    m_Sender = std::thread([this, target = pthread_self()] {
      while (!m_Stop) {
        pthread_kill(target, SIGUSR1);
        usleep(500);
      }
    });
  }
  ~TSignals() {
    m_Stop = true;
    m_Sender.join();
    sigaction(SIGUSR1, &m_Before, nullptr);
  }

private:
  std::atomic<bool> m_Stop{false};
  std::thread m_Sender;
  struct sigaction m_Before = {};
};

/// Writes bytes into a pipe in small parts, with pauses.
std::thread WriteSlowly(const std::string& pipe, const std::vector<char>& bytes, std::size_t part) {
  return std::thread([pipe, bytes, part] {
    usleep(5000); // the reader waits for somebody who writes
    const int file = open(pipe.c_str(), O_WRONLY);
    for (std::size_t at = 0; at < bytes.size(); at += part) {
      const std::size_t count = std::min(part, bytes.size() - at);
      EXPECT_EQ(static_cast<ssize_t>(count), write(file, bytes.data() + at, count));
      usleep(1500);
    }
    close(file);
  });
}

TEST_F(HostileFiles, SignalsWhileAPipeIsRead) {
  const std::string pipe = Name("pipe");
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  const std::vector<char> bytes = Counting(100000);
  s_Signals = 0;
  std::thread writer = WriteSlowly(pipe, bytes, 2000);
  std::vector<char> got(bytes.size());
  {
    const TSignals signals;
    TFileStream stream;
    EXPECT_TRUE(stream.Open(pipe));
    EXPECT_TRUE(stream.ReadAll(got.data(), got.size()));
    char more = 0;
    EXPECT_FALSE(stream.ReadAll(&more, 1)) << "the end";
  }
  writer.join();
  EXPECT_GT(s_Signals, 20);
  EXPECT_TRUE(got == bytes);
}

TEST_F(HostileFiles, SignalsWhileAnImageComesThroughAPipe) {
  for (const std::string ending : kEndings) {
    SCOPED_TRACE(ending);
    TDataSurface surface;
    MakeNoise(&surface, TypeOf(ending), 100);
    const std::string name = Name("image" + ending);
    ASSERT_TRUE(SaveImage(name, nullptr, surface));
    TDataSurface expected;
    ASSERT_TRUE(LoadImage(name, nullptr, &expected));
    std::vector<char> bytes(fs::file_size(name));
    std::ifstream(name, std::ios::binary).read(bytes.data(), static_cast<long>(bytes.size()));
    const std::string pipe = Name("pipe" + ending);
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    s_Signals = 0;
    std::thread writer = WriteSlowly(pipe, bytes, 1500);
    TDataSurface back;
    TZxMessage reason;
    {
      const TSignals signals;
      EXPECT_TRUE(LoadImage(pipe, nullptr, &back, &reason)) << reason.GetText();
    }
    if (back.Data == nullptr) { // lets the writer go
      std::ifstream(pipe, std::ios::binary).ignore(1 << 30);
    }
    writer.join();
    EXPECT_GT(s_Signals, 0);
    ASSERT_EQ(expected.DataSize, back.DataSize);
    EXPECT_EQ(0, std::memcmp(expected.Data, back.Data, back.DataSize));
  }
}

TEST_F(HostileFiles, SignalsWhileAnImageGoesIntoAPipe) {
  for (const std::string ending : kEndings) {
    SCOPED_TRACE(ending);
    TDataSurface surface;
    MakeNoise(&surface, TypeOf(ending), 200); // more than a pipe holds
    const std::string name = Name("image" + ending);
    ASSERT_TRUE(SaveImage(name, nullptr, surface));
    std::vector<char> expected(fs::file_size(name));
    std::ifstream(name, std::ios::binary).read(expected.data(), static_cast<long>(expected.size()));
    const std::string pipe = Name("pipe" + ending);
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    s_Signals = 0;
    std::vector<char> got;
    std::thread reader([&] {
      const int file = open(pipe.c_str(), O_RDONLY);
      // The writer waits before the full pipe until a signal has come.
      for (int i = 0; i < 20000 && s_Signals == 0; ++i) {
        usleep(500);
      }
      char part[4096];
      for (ssize_t count = 1; count > 0;) {
        usleep(1500);
        count = read(file, part, sizeof part);
        got.insert(got.end(), part, part + std::max<ssize_t>(count, 0));
      }
      close(file);
    });
    TZxMessage reason;
    {
      const TSignals signals;
      EXPECT_TRUE(SaveImage(pipe, nullptr, surface, &reason)) << reason.GetText();
    }
    reader.join();
    EXPECT_GT(s_Signals, 0);
    EXPECT_TRUE(got == expected);
  }
}

} // namespace
