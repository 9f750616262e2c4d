#pragma once

#include <cstdint>
#include <string>

/// The one record of the library's life in a process: how often it was brought up, and where it was
/// loaded from.
class ZxModule_Initializer {
public:
  static ZxModule_Initializer& getInst();

  /// Brings the sibling libraries and the time base up on the first call and counts all. The
  /// strings are not read.
  void init(const std::string& name, const std::string& parameters);
  void deinit();
  void local_init();
  void local_deinit() noexcept;

  std::uint64_t m_InitCount = 0;
  std::string m_Name = "ZxCore3D";
  std::string m_FullPath;  ///< as the dynamic loader reports it; kept after the last `deinit`
  std::string m_Directory; ///< up to the last slash, with it
  std::string m_FileName;
  std::string m_Extension = "so"; ///< without the point

  /// Splits a path at its last slash, of either kind, and takes the extension behind the file
  /// name's last point; a name that ends in a point, or has none, has no extension.
  void SetPath(const std::string& path);

private:
  /// Its existence marks that the time base is up.
  struct TLocalState {
    TLocalState();
    ~TLocalState();
  };

  TLocalState* m_LocalState = nullptr;
};
