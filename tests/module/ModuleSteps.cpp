// The steps of the life cycle, seen from within: a second build of the module's source under other
// names, in which the sibling libraries and the loader's answer are played by this file.

#include <dlfcn.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <boost/uuid/uuid.hpp>
#include <gtest/gtest.h>

#include <ZxCore3D/util/TPerformCounter.h>

namespace {

std::vector<std::string> s_Calls;
std::string s_FailingCall;
const char* s_LoadedFrom = nullptr;
const void* s_AskedFor = nullptr;

void Note(const char* call) {
  s_Calls.emplace_back(call);
  if (s_FailingCall == call) {
    throw std::runtime_error(call);
  }
}

int PlayedDladdr(const void* address, Dl_info* info) {
  s_Calls.emplace_back("dladdr");
  s_AskedFor = address;
  info->dli_fname = s_LoadedFrom;
  return 0; // not looked at
}

int s_TimeBases = 0; // that are up

struct PlayedPerformCounter : TPerformCounter {
  static void Initialize() {
    ++s_TimeBases;
    TPerformCounter::Initialize();
  }
  static void Finalize() {
    --s_TimeBases;
    TPerformCounter::Finalize();
  }
};

} // namespace

#define Init_ZxDrawKit Played_Init_ZxDrawKit
#define Init_ZxPixelKit Played_Init_ZxPixelKit
#define Init_ZxRunKit Played_Init_ZxRunKit
#define Init_ZxBaseKit Played_Init_ZxBaseKit
#define Deinit_ZxDrawKit Played_Deinit_ZxDrawKit
#define Deinit_ZxPixelKit Played_Deinit_ZxPixelKit
#define Deinit_ZxRunKit Played_Deinit_ZxRunKit
#define Deinit_ZxBaseKit Played_Deinit_ZxBaseKit
#define Init_ZxCore3D Played_Init_ZxCore3D
#define Deinit_ZxCore3D Played_Deinit_ZxCore3D
#define IID_IProperties Played_IID_IProperties
#define IID_ICommands Played_IID_ICommands
#define IID_IGeometries Played_IID_IGeometries
#define IID_IObjectHandlers Played_IID_IObjectHandlers
#define ZxModule_Initializer Played_Initializer
#define dladdr PlayedDladdr
#define TPerformCounter PlayedPerformCounter
#include <ZxCore3D/module/ZxModule_Initializer.cpp>
#undef dladdr
#undef TPerformCounter

void Init_ZxDrawKit() { Note("Init_ZxDrawKit"); }
void Init_ZxPixelKit() { Note("Init_ZxPixelKit"); }
void Init_ZxRunKit() { Note("Init_ZxRunKit"); }
void Init_ZxBaseKit() { Note("Init_ZxBaseKit"); }
void Deinit_ZxDrawKit() { Note("Deinit_ZxDrawKit"); }
void Deinit_ZxPixelKit() { Note("Deinit_ZxPixelKit"); }
void Deinit_ZxRunKit() { Note("Deinit_ZxRunKit"); }
void Deinit_ZxBaseKit() { Note("Deinit_ZxBaseKit"); }

namespace {

using TCalls = std::vector<std::string>;

const TCalls s_InitCalls = {"Init_ZxDrawKit", "Init_ZxPixelKit", "Init_ZxRunKit", "Init_ZxBaseKit",
                            "dladdr"};
const TCalls s_DeinitCalls = {"Deinit_ZxDrawKit", "Deinit_ZxPixelKit", "Deinit_ZxRunKit",
                              "Deinit_ZxBaseKit"};

class ModuleSteps : public testing::Test {
protected:
  ModuleSteps() {
    s_Calls.clear();
    s_FailingCall.clear();
    s_LoadedFrom = "/opt/app/ZxCore3D.so";
  }

  static TCalls Take() {
    TCalls calls;
    calls.swap(s_Calls);
    return calls;
  }

  ZxModule_Initializer m_Module;
};

TEST_F(ModuleSteps, StartsWithItsNameAlone) {
  EXPECT_EQ(0u, m_Module.m_InitCount);
  EXPECT_EQ("ZxCore3D", m_Module.m_Name);
  EXPECT_EQ("", m_Module.m_FullPath);
  EXPECT_EQ("", m_Module.m_Directory);
  EXPECT_EQ("", m_Module.m_FileName);
  EXPECT_EQ("so", m_Module.m_Extension);
}

TEST_F(ModuleSteps, DeinitAloneDoesNothing) {
  m_Module.deinit();
  EXPECT_EQ(0u, m_Module.m_InitCount);
  EXPECT_TRUE(Take().empty());
}

TEST_F(ModuleSteps, FirstInitAndLastDeinitReachTheSiblings) {
  m_Module.init("", "");
  EXPECT_EQ(s_InitCalls, Take());
  EXPECT_EQ(1u, m_Module.m_InitCount);
  EXPECT_EQ(reinterpret_cast<const void*>(&Init_ZxCore3D), s_AskedFor);
  m_Module.init("", "");
  m_Module.init("ignored", "ignored");
  EXPECT_EQ(3u, m_Module.m_InitCount);
  m_Module.deinit();
  m_Module.deinit();
  EXPECT_EQ(1u, m_Module.m_InitCount);
  EXPECT_TRUE(Take().empty());
  m_Module.deinit();
  EXPECT_EQ(s_DeinitCalls, Take()); // in the order of the start, not the reverse
  EXPECT_EQ(0u, m_Module.m_InitCount);
  m_Module.deinit();
  EXPECT_TRUE(Take().empty());
  EXPECT_EQ("ZxCore3D", m_Module.m_Name);
}

TEST_F(ModuleSteps, PathFieldsStayUntilTheNextStart) {
  m_Module.init("", "");
  m_Module.deinit();
  EXPECT_EQ("/opt/app/ZxCore3D.so", m_Module.m_FullPath);
  EXPECT_EQ("/opt/app/", m_Module.m_Directory);
  s_LoadedFrom = "/usr/lib/libZxCore3D.so.1";
  m_Module.init("", "");
  EXPECT_EQ("/usr/lib/libZxCore3D.so.1", m_Module.m_FullPath);
  EXPECT_EQ("/usr/lib/", m_Module.m_Directory);
  EXPECT_EQ("libZxCore3D.so.1", m_Module.m_FileName);
  EXPECT_EQ("1", m_Module.m_Extension);
  m_Module.init("", ""); // a nested one looks at nothing
  s_LoadedFrom = "/else/where";
  EXPECT_EQ("/usr/lib/", m_Module.m_Directory);
  m_Module.deinit();
  m_Module.deinit();
}

TEST_F(ModuleSteps, SplitsThePath) {
  const struct {
    const char *Path, *Directory, *FileName, *Extension;
  } rows[] = {
      {"/opt/app/ZxCore3D.so", "/opt/app/", "ZxCore3D.so", "so"},
      {"ZxCore3D.so", "", "ZxCore3D.so", "so"},
      {"/a.b/lib", "/a.b/", "lib", ""},
      {"/a/lib.", "/a/", "lib.", ""},
      {"/a/lib.x.", "/a/", "lib.x.", ""},
      {"/a/lib.x.y", "/a/", "lib.x.y", "y"},
      {"C:\\dir\\lib.dll", "C:\\dir\\", "lib.dll", "dll"},
      {"/a\\b/c.so", "/a\\b/", "c.so", "so"},
      {"/a/b\\c.so", "/a/b\\", "c.so", "so"},
      {"/a/", "/a/", "", ""},
      {".", "", ".", ""},
      {".so", "", ".so", "so"},
      {"", "", "", ""},
  };
  for (const auto& row : rows) {
    s_LoadedFrom = row.Path;
    m_Module.init("", "");
    EXPECT_EQ(row.Path, m_Module.m_FullPath);
    EXPECT_EQ(row.Directory, m_Module.m_Directory) << row.Path;
    EXPECT_EQ(row.FileName, m_Module.m_FileName) << row.Path;
    EXPECT_EQ(row.Extension, m_Module.m_Extension) << row.Path;
    m_Module.deinit();
  }
}

TEST_F(ModuleSteps, ANullNameIsALogicError) {
  s_LoadedFrom = nullptr;
  try {
    m_Module.init("", "");
    ADD_FAILURE() << "nothing thrown";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ("basic_string::_M_construct null not valid", error.what());
  }
  EXPECT_EQ(0u, m_Module.m_InitCount);
  EXPECT_EQ(s_InitCalls, Take()); // nothing is rolled back
  s_LoadedFrom = "/a/b.so";
  m_Module.init("", "");
  EXPECT_EQ(s_InitCalls, Take()); // from the first step again
  EXPECT_EQ(1u, m_Module.m_InitCount);
  m_Module.deinit();
}

TEST_F(ModuleSteps, AFailingSiblingLeavesTheCountAtZero) {
  s_FailingCall = "Init_ZxRunKit";
  EXPECT_THROW(m_Module.init("", ""), std::runtime_error);
  EXPECT_EQ(0u, m_Module.m_InitCount);
  EXPECT_EQ((TCalls{"Init_ZxDrawKit", "Init_ZxPixelKit", "Init_ZxRunKit"}), Take());
  EXPECT_EQ("", m_Module.m_FullPath);
  m_Module.deinit(); // the count is 0: the others stay up
  EXPECT_TRUE(Take().empty());
  s_FailingCall.clear();
  m_Module.init("", "");
  EXPECT_EQ(s_InitCalls, Take());
  m_Module.deinit();
}

TEST_F(ModuleSteps, TheTimeBaseStartsWithTheModule) {
  TPerformCounter::s_tFreq = 7;
  m_Module.init("", "");
  EXPECT_EQ(1000000000, TPerformCounter::s_tFreq);
  m_Module.deinit();
  EXPECT_EQ(1000000000, TPerformCounter::s_tFreq);
}

TEST_F(ModuleSteps, TheLastDeinitTakesTheTimeBaseDown) {
  for (int start = 0; start < 2; ++start) {
    EXPECT_EQ(0, s_TimeBases);
    m_Module.init("", "");
    m_Module.init("", "");
    EXPECT_EQ(1, s_TimeBases);
    m_Module.deinit();
    EXPECT_EQ(1, s_TimeBases);
    m_Module.deinit();
  }
  EXPECT_EQ(0, s_TimeBases);
}

TEST_F(ModuleSteps, EntryPointsShareOneInstance) {
  Init_ZxCore3D();
  EXPECT_EQ(1u, ZxModule_Initializer::getInst().m_InitCount);
  EXPECT_EQ(s_InitCalls, Take());
  EXPECT_EQ(&ZxModule_Initializer::getInst(), &ZxModule_Initializer::getInst());
  Deinit_ZxCore3D();
  EXPECT_EQ(0u, ZxModule_Initializer::getInst().m_InitCount);
  EXPECT_EQ(s_DeinitCalls, Take());
}

TEST(ModuleLayout, HoldsACountFiveStringsAndAPointer) {
  EXPECT_EQ(8u + 5u * sizeof(std::string) + 8u, sizeof(ZxModule_Initializer));
}

} // namespace
