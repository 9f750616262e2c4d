#include <ZxCore3D/object/TObjectReader.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>

#include <ZxCore3D/object/TStream.h>
#include <ZxCore3D/object/private/ObjectAccess.h>
#include <ZxCore3D/object/private/StreamAccess.h>

namespace Zx3D {

TObjectReader::TObjectReader() : TObjectReader(nullptr, false) {}

TObjectReader::TObjectReader(TStream* stream, bool own)
    : m_Stream(stream), m_Owned(own && stream != nullptr), m_QueryContext(nullptr),
      m_QueryFunc(nullptr), m_Scratch(nullptr), m_ScratchCapacity(0), m_Reserved(false) {}

TObjectReader::~TObjectReader() {
  if (m_Owned) {
    delete m_Stream;
  }
  std::free(m_Scratch);
}

void TObjectReader::SetStream(TStream* stream, bool own) {
  if (stream != m_Stream) {
    if (m_Owned) {
      delete m_Stream;
    }
    m_Stream = stream;
  }
  m_Owned = own && stream != nullptr;
}

void TObjectReader::SetQueryFunc(TQueryFunc function, void* context) {
  m_QueryFunc = function;
  m_QueryContext = context;
}

unsigned long TObjectReader::Query(QUERYHDR* query) {
  return m_QueryFunc != nullptr ? m_QueryFunc(m_QueryContext, query) : 0;
}

unsigned long TObjectReader::FindItemByID(unsigned long id, unsigned long kind) {
  QUERYHDR query{QUERY_FIND_ITEM, kind, id};
  return Query(&query);
}

unsigned long TObjectReader::FindObjectByID(unsigned long id) {
  return FindItemByID(id, ITEM_OBJECT);
}

unsigned long TObjectReader::FindGeometryByID(unsigned long id) {
  return FindItemByID(id, ITEM_GEOMETRY);
}

unsigned long TObjectReader::FindControllerByID(unsigned long id) {
  return FindItemByID(id, ITEM_CONTROLLER);
}

unsigned long TObjectReader::FindShaderByID(unsigned long id) {
  return FindItemByID(id, ITEM_SHADER);
}

unsigned long TObjectReader::FindProgramByID(unsigned long id) {
  return FindItemByID(id, ITEM_PROGRAM);
}

unsigned long TObjectReader::FindTechniqueByID(unsigned long id) {
  return FindItemByID(id, ITEM_TECHNIQUE);
}

unsigned long TObjectReader::FindMaterialByID(unsigned long id) {
  return FindItemByID(id, ITEM_MATERIAL);
}

unsigned long TObjectReader::FindTextureByID(unsigned long id) {
  return FindItemByID(id, ITEM_TEXTURE);
}

bool TObjectReader::ReserveTmp(unsigned long size) {
  if (m_ScratchCapacity >= size) {
    return true;
  }
  void* scratch = std::realloc(m_Scratch, size);
  if (scratch == nullptr) {
    return false;
  }
  m_Scratch = scratch;
  m_ScratchCapacity = size;
  return true;
}

bool TObjectReader::_Read(void* data, unsigned long size) {
  return m_Stream != nullptr && m_Stream->ReadAll(data, size);
}

bool TObjectReader::_ReadPadding(unsigned long length) {
  unsigned char dropped[4];
  return _Read(dropped, GetPadding(length));
}

void TObjectReader::_SkipWidePadding(unsigned long length) {
  if (length % 2 != 0) {
    m_Stream->SetPos(m_Stream->GetPos() + 2);
  }
}

bool TObjectReader::ReadStringLen(unsigned long* length) {
  std::uint32_t stored = 0;
  if (length == nullptr || !_Read(&stored, sizeof stored)) {
    return false;
  }
  *length = stored;
  return true;
}

bool TObjectReader::ReadStringData(char* text, unsigned long length) {
  if (text == nullptr || !_Read(text, length)) {
    return false;
  }
  text[length] = 0;
  return _ReadPadding(length);
}

bool TObjectReader::ReadStringData(wchar_t* text, unsigned long length) {
  if (text == nullptr || length > LONG_MAX / 2 || !_Read(text, 2 * length)) {
    return false;
  }
  text[length] = 0;
  _SkipWidePadding(length);
  return true;
}

bool TObjectReader::ReadString(char* text, unsigned long size) {
  unsigned long length = 0;
  return ReadStringLen(&length) && length < size && ReadStringData(text, length);
}

bool TObjectReader::ReadString(wchar_t* text, unsigned long size) {
  unsigned long length = 0;
  return ReadStringLen(&length) && length < size && ReadStringData(text, length);
}

const char* TObjectReader::_ReadText(unsigned long length) {
  const bool arrived = ReadGrowing(*m_Stream, length, [this](unsigned long size) {
    return ReserveTmp(size + 1) ? static_cast<unsigned char*>(m_Scratch) : nullptr;
  });
  if (!arrived) {
    return nullptr;
  }
  auto* text = static_cast<char*>(m_Scratch);
  text[length] = 0;
  return _ReadPadding(length) ? text : nullptr;
}

bool TObjectReader::ReadString(std::string* text) {
  unsigned long length = 0;
  if (text == nullptr || !ReadStringLen(&length)) {
    return false;
  }
  try {
    if (length <= kScratchMax) {
      const char* stored = _ReadText(length);
      if (stored == nullptr) {
        return false;
      }
      text->assign(stored);
      return true;
    }
    std::string stored;
    const auto reserve = [&stored](unsigned long size) {
      stored.resize(size);
      return reinterpret_cast<unsigned char*>(stored.data());
    };
    if (!ReadGrowing(*m_Stream, length, reserve) || !_ReadPadding(length)) {
      return false;
    }
    stored.resize(std::strlen(stored.c_str()));
    text->swap(stored);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool TObjectReader::ReadString(std::wstring* text) {
  unsigned long length = 0;
  if (text == nullptr || !ReadStringLen(&length)) {
    return false;
  }
  constexpr unsigned long wide = sizeof(wchar_t);
  try {
    if (wide * length + wide <= kScratchMax) {
      const auto reserve = [this](unsigned long size) {
        return ReserveTmp(2 * size + wide) ? static_cast<unsigned char*>(m_Scratch) : nullptr;
      };
      if (!ReadGrowing(*m_Stream, 2 * length, reserve)) {
        return false;
      }
      // The units fill half of the elements; the others and the terminator are 0.
      std::memset(static_cast<unsigned char*>(m_Scratch) + 2 * length, 0, 2 * length + wide);
      _SkipWidePadding(length);
      text->assign(static_cast<const wchar_t*>(m_Scratch));
      return true;
    }
    std::wstring stored;
    const auto reserve = [&stored](unsigned long size) {
      stored.resize((size + wide - 1) / wide);
      return reinterpret_cast<unsigned char*>(stored.data());
    };
    if (!ReadGrowing(*m_Stream, 2 * length, reserve)) {
      return false;
    }
    _SkipWidePadding(length);
    stored.resize(std::wcslen(stored.c_str()));
    text->swap(stored);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

} // namespace Zx3D
