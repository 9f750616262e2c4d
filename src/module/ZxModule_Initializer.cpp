#include <ZxCore3D/module/private/ZxModule_Initializer.h>

#include <dlfcn.h>
#include <stdexcept>

#include <ZxBaseKit/Module.h>
#include <ZxDrawKit/Module.h>
#include <ZxPixelKit/Module.h>
#include <ZxRunKit/Module.h>

#include <ZxCore3D/module/Module.h>
#include <ZxCore3D/util/TPerformCounter.h>

constinit const boost::uuids::uuid IID_IProperties = {{0xf4, 0xb1, 0x28, 0xd5, 0x96, 0x41, 0x89,
                                                       0x41, 0x94, 0x5c, 0x88, 0x4a, 0x67, 0xba,
                                                       0xdd, 0x21}};
constinit const boost::uuids::uuid IID_ICommands = {{0xf4, 0xb1, 0x28, 0xd5, 0x96, 0x41, 0x89, 0x41,
                                                     0x94, 0x5c, 0x88, 0x4a, 0x67, 0xba, 0xdd,
                                                     0x22}};
constinit const boost::uuids::uuid IID_IGeometries = {{0xf4, 0xb1, 0x28, 0xd5, 0x96, 0x41, 0x89,
                                                       0x41, 0x94, 0x5c, 0x88, 0x4a, 0x67, 0xba,
                                                       0xdd, 0x23}};
constinit const boost::uuids::uuid IID_IObjectHandlers = {{0xf4, 0xb1, 0x28, 0xd5, 0x96, 0x41, 0x89,
                                                           0x41, 0x94, 0x5c, 0x88, 0x4a, 0x67, 0xba,
                                                           0xdd, 0x24}};

void Init_ZxCore3D() { ZxModule_Initializer::getInst().init(std::string(), std::string()); }

void Deinit_ZxCore3D() { ZxModule_Initializer::getInst().deinit(); }

ZxModule_Initializer& ZxModule_Initializer::getInst() {
  static ZxModule_Initializer s_Instance;
  return s_Instance;
}

void ZxModule_Initializer::SetPath(const std::string& path) {
  m_FullPath = path;
  const std::size_t slash = path.find_last_of("/\\");
  const std::size_t nameAt = slash == std::string::npos ? 0 : slash + 1;
  m_Directory = path.substr(0, nameAt);
  m_FileName = path.substr(nameAt);
  const std::size_t point = m_FileName.rfind('.');
  m_Extension = point == std::string::npos ? std::string() : m_FileName.substr(point + 1);
}

void ZxModule_Initializer::init(const std::string&, const std::string&) {
  if (m_InitCount != 0) {
    ++m_InitCount;
    return;
  }
  Init_ZxDrawKit();
  Init_ZxPixelKit();
  Init_ZxRunKit();
  Init_ZxBaseKit();
  Dl_info info = {};
  dladdr(reinterpret_cast<const void*>(&Init_ZxCore3D), &info);
  if (info.dli_fname == nullptr) {
    throw std::logic_error("basic_string::_M_construct null not valid");
  }
  SetPath(info.dli_fname);
  local_init();
  m_InitCount = 1;
}

void ZxModule_Initializer::deinit() {
  if (m_InitCount == 0 || --m_InitCount > 0) {
    return;
  }
  local_deinit();
  // In the order of `init`, not the reverse.
  Deinit_ZxDrawKit();
  Deinit_ZxPixelKit();
  Deinit_ZxRunKit();
  Deinit_ZxBaseKit();
}

ZxModule_Initializer::TLocalState::TLocalState() { TPerformCounter::Initialize(); }

ZxModule_Initializer::TLocalState::~TLocalState() { TPerformCounter::Finalize(); }

void ZxModule_Initializer::local_init() { m_LocalState = new TLocalState; }

// The pointer stays as it is: the count keeps this from running twice, the next start overwrites
// it.
void ZxModule_Initializer::local_deinit() noexcept { delete m_LocalState; }
